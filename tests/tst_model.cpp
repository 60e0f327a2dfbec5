#include "config/BarConfig.h"
#include "config/Config.h"

#include <QTest>

class TestModel : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaultColorsByKind_data();
    void defaultColorsByKind();
    void tintFollowsColorThenStackMemberThenKind();
    void colorNamesAreExact();
    void equalityComparesEveryField();
    void defaultsHoldTwoStacksAndHelp();
};

namespace {

ButtonSpec make(const QString& action, std::optional<QString> color = {})
{
    ButtonSpec spec;
    spec.title = QStringLiteral("t");
    spec.action = action;
    spec.color = std::move(color);
    return spec;
}

} // namespace

void TestModel::defaultColorsByKind_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("color");
    const std::pair<const char*, const char*> rows[] = {
        {"open", "cyan"},      {"app", "orange"},        {"url", "green"},   {"folder", "cyan"},
        {"newFolder", "cyan"}, {"shortcut", "purple"},   {"keys", "yellow"}, {"paste", "yellow"},
        {"shell", "white"},    {"applescript", "white"}, {"group", "white"}, {"Open", "white"},
        {"", "white"},         {"newfolder", "white"},
    };
    for (const auto& [kind, color] : rows)
        QTest::newRow(kind) << QString::fromUtf8(kind) << QString::fromUtf8(color);
}

void TestModel::defaultColorsByKind()
{
    QFETCH(QString, kind);
    QFETCH(QString, color);
    QCOMPARE(ButtonSpec::defaultColor(kind), color);
    QCOMPARE(make(kind).tintName(), color);
}

void TestModel::tintFollowsColorThenStackMemberThenKind()
{
    QCOMPARE(make(QStringLiteral("app"), QStringLiteral("red")).tint(), ChipColor::Red);

    ButtonSpec stack = make(QStringLiteral("group"));
    QCOMPARE(stack.tint(), ChipColor::White); // no children at all
    stack.children = QList<ButtonSpec>();
    QCOMPARE(stack.tint(), ChipColor::White); // an empty stack
    stack.children = QList<ButtonSpec>{make(QStringLiteral("url")), make(QStringLiteral("app"))};
    QCOMPARE(stack.tint(), ChipColor::Green); // first member's kind
    (*stack.children)[0].color = QStringLiteral("red");
    QCOMPARE(stack.tint(), ChipColor::Red); // first member's own colour
    stack.color = QStringLiteral("purple");
    QCOMPARE(stack.tint(), ChipColor::Purple); // the stack's own colour wins

    // Only one level: a first member that is a stack counts as white, whatever it holds.
    ButtonSpec inner = make(QStringLiteral("group"));
    inner.children = QList<ButtonSpec>{make(QStringLiteral("app"))};
    ButtonSpec outer = make(QStringLiteral("group"));
    outer.children = QList<ButtonSpec>{inner};
    QCOMPARE(outer.tint(), ChipColor::White);

    // A member colour only matters for stacks.
    ButtonSpec notAStack = make(QStringLiteral("url"));
    notAStack.children = QList<ButtonSpec>{make(QStringLiteral("app"))};
    QCOMPARE(notAStack.tint(), ChipColor::Green);
}

void TestModel::colorNamesAreExact()
{
    QCOMPARE(ButtonSpec::colorNamed(QStringLiteral("orange")), ChipColor::Orange);
    QCOMPARE(ButtonSpec::colorNamed(QStringLiteral("green")), ChipColor::Green);
    QCOMPARE(ButtonSpec::colorNamed(QStringLiteral("purple")), ChipColor::Purple);
    QCOMPARE(ButtonSpec::colorNamed(QStringLiteral("yellow")), ChipColor::Yellow);
    QCOMPARE(ButtonSpec::colorNamed(QStringLiteral("white")), ChipColor::White);
    for (const char* name : {"cyan", "blue", "Red", "Cyan", " red", ""})
        QCOMPARE(ButtonSpec::colorNamed(QString::fromUtf8(name)), ChipColor::Cyan);
    QCOMPARE(make(QStringLiteral("mystery")).tint(), ChipColor::White);
}

void TestModel::equalityComparesEveryField()
{
    const ButtonSpec base = make(QStringLiteral("open"));
    auto differs = [&](auto change) {
        ButtonSpec other = base;
        change(other);
        return other != base;
    };
    QVERIFY(differs([](ButtonSpec& b) { b.symbol = QStringLiteral("x"); }));
    QVERIFY(differs([](ButtonSpec& b) { b.argument = QString(); }));
    QVERIFY(differs([](ButtonSpec& b) { b.iconPath = QStringLiteral("i"); }));
    QVERIFY(differs([](ButtonSpec& b) { b.locked = false; }));
    QVERIFY(differs([](ButtonSpec& b) { b.children = QList<ButtonSpec>(); }));

    BarConfig a;
    BarConfig b;
    QCOMPARE(a, b);
    b.appSets = QList<AppSet>();
    QVERIFY(a != b); // an empty list is not the same as no list
}

void TestModel::defaultsHoldTwoStacksAndHelp()
{
    const BarConfig& config = Config::defaults();
    QVERIFY(!config.appSets && !config.hotkey);
    QCOMPARE(config.buttons.size(), 3);
    const ButtonSpec& files = config.buttons.at(0);
    const ButtonSpec& apps = config.buttons.at(1);
    const ButtonSpec& help = config.buttons.at(2);
    QCOMPARE(files.title, QStringLiteral("Files"));
    QCOMPARE(files.children->size(), 4);
    QCOMPARE(files.children->at(0).argument, std::optional<QString>(QStringLiteral("~/Downloads")));
    QCOMPARE(files.children->at(3).action, QStringLiteral("newFolder"));
    QVERIFY(!files.children->at(3).argument);
    QCOMPARE(apps.title, QStringLiteral("Apps"));
    QCOMPARE(apps.symbol, QStringLiteral("square.grid.2x2"));
    QCOMPARE(apps.children->size(), 5);
    QCOMPARE(apps.children->at(4).argument, std::optional<QString>(QStringLiteral("Terminal")));
    QCOMPARE(help.action, QStringLiteral("url"));
    QCOMPARE(help.color, std::optional<QString>(QStringLiteral("white")));
    QVERIFY(help.argument->startsWith(QStringLiteral("https://")));
    QVERIFY(!help.children);
    for (const ButtonSpec& top : config.buttons) {
        QVERIFY(!top.locked && !top.iconPath);
        if (top.children) {
            for (const ButtonSpec& member : *top.children)
                QVERIFY(!member.color && !member.locked && !member.iconPath && !member.children);
        }
    }
    QCOMPARE(files.tint(), ChipColor::Cyan); // its first member opens a folder
    QCOMPARE(apps.tint(), ChipColor::Orange);
}

QTEST_APPLESS_MAIN(TestModel)
#include "tst_model.moc"
