#include "config/Editing.h"

#include <QTest>

class TestEditing : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void lookupFollowsSearchOrder();
    void detachTakesOnlyTheFirstMatch();
    void replaceOverwritesInPlace();
    void uniqueTitleLooksEverywhereItShould();
    void isContextLooksOnlyInApplicationSets();
};

namespace {

ButtonSpec button(const QString& title, const QString& symbol = QString())
{
    ButtonSpec spec;
    spec.title = title;
    spec.symbol = symbol;
    spec.action = QStringLiteral("open");
    return spec;
}

ButtonSpec stack(const QString& title, QList<ButtonSpec> members)
{
    ButtonSpec spec = button(title);
    spec.action = QStringLiteral("group");
    spec.children = std::move(members);
    return spec;
}

/// Titles appear in several places on purpose, each copy marked by its symbol.
BarConfig sample()
{
    BarConfig config;
    config.buttons = {
        button(QStringLiteral("A"), QStringLiteral("top")),
        stack(QStringLiteral("S1"), {button(QStringLiteral("B"), QStringLiteral("s1")),
                                     stack(QStringLiteral("Inner"), {button(QStringLiteral("Deep"))})}),
        stack(QStringLiteral("S2"), {button(QStringLiteral("B"), QStringLiteral("s2")),
                                     button(QStringLiteral("C"), QStringLiteral("s2"))}),
        button(QStringLiteral("Notes")),
    };
    config.appSets = QList<AppSet>{
        {QStringLiteral("x"),
         QStringLiteral("X"),
         {button(QStringLiteral("C"), QStringLiteral("set")),
          button(QStringLiteral("A"), QStringLiteral("set")),
          stack(QStringLiteral("SetStack"), {button(QStringLiteral("Hidden"))})}},
        {QStringLiteral("y"), QStringLiteral("Y"), {button(QStringLiteral("D"), QStringLiteral("set2"))}},
    };
    return config;
}

QString symbolOf(const std::optional<ButtonSpec>& spec)
{
    return spec ? spec->symbol : QStringLiteral("<none>");
}

} // namespace

void TestEditing::lookupFollowsSearchOrder()
{
    const BarConfig config = sample();
    QCOMPARE(symbolOf(Editing::button(config, QStringLiteral("A"))), QStringLiteral("top"));
    QCOMPARE(symbolOf(Editing::button(config, QStringLiteral("B"))), QStringLiteral("s1"));
    QCOMPARE(symbolOf(Editing::button(config, QStringLiteral("C"))), QStringLiteral("s2"));
    QCOMPARE(symbolOf(Editing::button(config, QStringLiteral("D"))), QStringLiteral("set2"));
    // Two levels down, and inside stacks of application sets, nothing is searched.
    QVERIFY(!Editing::button(config, QStringLiteral("Deep")));
    QVERIFY(!Editing::button(config, QStringLiteral("Hidden")));
    QVERIFY(!Editing::button(config, QStringLiteral("a")));
    QVERIFY(Editing::button(config, QStringLiteral("Inner")));
}

void TestEditing::detachTakesOnlyTheFirstMatch()
{
    BarConfig config = sample();
    QCOMPARE(symbolOf(Editing::detach(config, QStringLiteral("C"))), QStringLiteral("s2"));
    QCOMPARE(symbolOf(Editing::detach(config, QStringLiteral("C"))), QStringLiteral("set"));
    QVERIFY(!Editing::detach(config, QStringLiteral("C")));
    QCOMPARE(config.buttons.at(2).children->size(), 1);
    QCOMPARE(config.appSets->first().buttons.first().title, QStringLiteral("A"));

    QCOMPARE(symbolOf(Editing::detach(config, QStringLiteral("A"))), QStringLiteral("top"));
    QCOMPARE(config.buttons.first().title, QStringLiteral("S1"));
    QVERIFY(!Editing::detach(config, QStringLiteral("Deep")));

    // A stack leaves with its members.
    const auto s1 = Editing::detach(config, QStringLiteral("S1"));
    QCOMPARE(s1->children->size(), 2);
    QVERIFY(!Editing::button(config, QStringLiteral("Inner")));
}

void TestEditing::replaceOverwritesInPlace()
{
    BarConfig config = sample();
    ButtonSpec changed = button(QStringLiteral("B renamed"), QStringLiteral("new"));
    QVERIFY(Editing::replace(config, QStringLiteral("B"), changed));
    QCOMPARE(config.buttons.at(1).children->at(0), changed);
    QCOMPARE(config.buttons.at(2).children->at(0).title, QStringLiteral("B")); // the second copy is untouched
    QVERIFY(!Editing::replace(config, QStringLiteral("Nobody"), changed));
    QVERIFY(!Editing::replace(config, QStringLiteral("Hidden"), changed));
    const BarConfig before = config;
    QVERIFY(!Editing::replace(config, QStringLiteral("Deep"), changed));
    QCOMPARE(config, before);
}

void TestEditing::uniqueTitleLooksEverywhereItShould()
{
    const BarConfig config = sample();
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Fresh")), QStringLiteral("Fresh"));
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("A")), QStringLiteral("A 2"));
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("D")),
             QStringLiteral("D 2")); // application sets count
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Inner")), QStringLiteral("Inner 2"));
    // Titles deeper than a stack's members are not collected.
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Deep")), QStringLiteral("Deep"));
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Hidden")), QStringLiteral("Hidden"));
    // Matching is exact.
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("notes")), QStringLiteral("notes"));

    BarConfig numbered = config;
    numbered.buttons.append(button(QStringLiteral("Notes 2")));
    numbered.buttons.append(button(QStringLiteral("Notes 3")));
    QCOMPARE(Editing::uniqueTitle(numbered, QStringLiteral("Notes")), QStringLiteral("Notes 4"));
    QCOMPARE(Editing::uniqueTitle(numbered, QStringLiteral("Notes 2")), QStringLiteral("Notes 2 2"));

    // Excluding a button's own old title lets it keep that title, but not take another's.
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("Notes"), QStringLiteral("Notes")),
             QStringLiteral("Notes"));
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("A"), QStringLiteral("Notes")),
             QStringLiteral("A 2"));
    // A title used twice stays taken after excluding it once? No: the exclusion removes the title itself.
    QCOMPARE(Editing::uniqueTitle(config, QStringLiteral("B"), QStringLiteral("B")), QStringLiteral("B"));
}

void TestEditing::isContextLooksOnlyInApplicationSets()
{
    const BarConfig config = sample();
    QVERIFY(Editing::isContext(config, QStringLiteral("C")));
    QVERIFY(Editing::isContext(config, QStringLiteral("A")));
    QVERIFY(Editing::isContext(config, QStringLiteral("SetStack")));
    QVERIFY(!Editing::isContext(config, QStringLiteral("Hidden")));
    QVERIFY(!Editing::isContext(config, QStringLiteral("Notes")));
    QVERIFY(!Editing::isContext(BarConfig(), QStringLiteral("A")));
}

QTEST_APPLESS_MAIN(TestEditing)
#include "tst_editing.moc"
