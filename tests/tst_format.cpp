// The buttons.json document: its model, how it is read and written, and what it refuses.

#include "TestSupport.h"
#include "config/BarConfig.h"
#include "config/Config.h"
#include "config/ConfigReader.h"
#include "config/ConfigWriter.h"

#include <QSet>
#include <QTest>

class TestFormat : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void defaultColorsByKind_data();
    void defaultColorsByKind();
    void tintFollowsColorThenStackMemberThenKind();
    void colorNamesAreExact();
    void equalityComparesEveryField();
    void builtInTitlesAreUnique();

private Q_SLOTS:
    void minimalButtonHasEveryOptionalAbsent();
    void nullOptionalsReadAsAbsentAndUnknownKeysAreIgnored();
    void anyLayoutAndKeyOrderIsAccepted();
    void childrenNestAtAnyDepth();
    void rejectsWhatIsNoDocument_data();
    void rejectsWhatIsNoDocument();
    void survivesHostileInput();

private Q_SLOTS:
    void exampleDocumentIsWrittenByteForByte();
    void keepsAbsentFalseAndEmptyApart();
    void emptyListsAndDocumentLayout();
    void escapesStrings_data();
    void escapesStrings();
    void roundTripsEverything();
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

void TestFormat::defaultColorsByKind_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("color");
    // Kinds are matched exactly; anything unknown is white.
    const std::pair<const char*, const char*> rows[] = {
        {"app", "orange"}, {"Open", "white"}, {"", "white"}, {"newfolder", "white"}, {"mystery", "white"}};
    for (const auto& [kind, color] : rows)
        QTest::newRow(kind) << QString::fromUtf8(kind) << QString::fromUtf8(color);
}

void TestFormat::defaultColorsByKind()
{
    QFETCH(QString, kind);
    QFETCH(QString, color);
    QCOMPARE(ButtonSpec::defaultColor(kind), color);
    QCOMPARE(make(kind).tintName(), color);
}

void TestFormat::tintFollowsColorThenStackMemberThenKind()
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

void TestFormat::colorNamesAreExact()
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

void TestFormat::equalityComparesEveryField()
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

void TestFormat::builtInTitlesAreUnique()
{
    // Titles are identities: the built-in buttons must not clash, at any depth.
    QStringList titles;
    for (const ButtonSpec& top : Config::defaults().buttons) {
        titles.append(top.title);
        for (const ButtonSpec& member : top.children.value_or(QList<ButtonSpec>()))
            titles.append(member.title);
    }
    QCOMPARE(QSet<QString>(titles.begin(), titles.end()).size(), titles.size());
}

namespace {

QByteArray doc(const char* buttons)
{
    return QByteArray(R"({"buttons": [)") + buttons + "]}";
}

} // namespace

void TestFormat::minimalButtonHasEveryOptionalAbsent()
{
    const auto config = ConfigReader::decode(doc(R"({"title":"A","symbol":"","action":"open"})"));
    QVERIFY(config);
    QCOMPARE(config->buttons.size(), 1);
    const ButtonSpec& button = config->buttons.first();
    QCOMPARE(button.title, QStringLiteral("A"));
    QCOMPARE(button.symbol, QString());
    QCOMPARE(button.action, QStringLiteral("open"));
    QVERIFY(!button.argument && !button.color && !button.iconPath && !button.locked && !button.children);
    QVERIFY(!config->appSets);
    QVERIFY(!config->hotkey);
}

void TestFormat::nullOptionalsReadAsAbsentAndUnknownKeysAreIgnored()
{
    const auto config = ConfigReader::decode(R"({
        "buttons": [{"title":"A","symbol":"s","action":"x","argument":null,"color":null,"iconPath":null,
                     "locked":null,"children":null,"Title":5,"id":"other","extra":{"deep":[1,2]}}],
        "appSets": null, "hotkey": null, "barPosition": [1, 2], "version": 3})");
    QVERIFY(config);
    const ButtonSpec& button = config->buttons.first();
    QCOMPARE(button.title, QStringLiteral("A"));
    QVERIFY(!button.argument && !button.color && !button.iconPath && !button.locked && !button.children);
    QVERIFY(!config->appSets);
    QVERIFY(!config->hotkey);

    const auto withFalse = ConfigReader::decode(doc(R"({"title":"A","symbol":"s","action":"x","locked":false,
                                                        "children":[]})"));
    QVERIFY(withFalse);
    QCOMPARE(withFalse->buttons.first().locked, std::optional<bool>(false));
    QCOMPARE(withFalse->buttons.first().children, std::optional<QList<ButtonSpec>>(QList<ButtonSpec>()));
}

void TestFormat::anyLayoutAndKeyOrderIsAccepted()
{
    const auto result = ConfigReader::read("\xEF\xBB\xBF{\"hotkey\":\"ctrl+opt+b\",\"appSets\":[{\"name\":"
                                           "\"Mail\",\"buttons\":[],\"app\":\"m\"}],"
                                           "\"buttons\":[{\"action\":\"url\",\"argument\":\"https:\\/\\/"
                                           "x\",\"title\":\"\\u00e9\",\"symbol\":\"\"}]}");
    QVERIFY2(result.config, qPrintable(result.error));
    const auto& config = result.config;
    QCOMPARE(config->hotkey, std::optional<QString>(QStringLiteral("ctrl+opt+b")));
    QCOMPARE(config->appSets->size(), 1);
    QCOMPARE(config->appSets->first().app, QStringLiteral("m"));
    QCOMPARE(config->buttons.first().argument, std::optional<QString>(QStringLiteral("https://x")));
    QCOMPARE(config->buttons.first().title, QStringLiteral("é"));
}

void TestFormat::childrenNestAtAnyDepth()
{
    QByteArray inner = R"({"title":"leaf","symbol":"","action":"open"})";
    for (int depth = 0; depth < 100; ++depth)
        inner = R"({"title":"g)" + QByteArray::number(depth) +
                R"(","symbol":"","action":"group","children":[)" + inner + "]}";
    const auto config = ConfigReader::decode(doc(inner.constData()));
    QVERIFY(config);
    const ButtonSpec* at = &config->buttons.first();
    int depth = 0;
    while (at->children) {
        at = &at->children->first();
        ++depth;
    }
    QCOMPARE(depth, 100);
    QCOMPARE(at->title, QStringLiteral("leaf"));

    // One bad value deep inside rejects the whole document.
    const auto broken = ConfigReader::read(doc(
        R"({"title":"a","symbol":"","action":"group","children":[{"title":"b","symbol":"","action":"group",
            "children":[{"title":"c","action":"open"}]}]})"));
    QVERIFY(!broken.config);
    QCOMPARE(broken.error,
             QStringLiteral("buttons[0].children[0].children[0]: missing required key \"symbol\""));
}

void TestFormat::rejectsWhatIsNoDocument_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    QTest::newRow("no buttons") << QByteArray(R"({"hotkey":"ctrl+b"})")
                                << QStringLiteral("document: missing required key \"buttons\"");
    QTest::newRow("keys are case-sensitive")
        << QByteArray(R"({"Buttons":[]})") << QStringLiteral("document: missing required key \"buttons\"");
    QTest::newRow("no title") << doc(R"({"symbol":"","action":"open"})")
                              << QStringLiteral("buttons[0]: missing required key \"title\"");
    QTest::newRow("no symbol in second button")
        << doc(R"({"title":"a","symbol":"","action":"open"},{"title":"b","action":"open"})")
        << QStringLiteral("buttons[1]: missing required key \"symbol\"");
    QTest::newRow("no action") << doc(R"({"title":"a","symbol":""})")
                               << QStringLiteral("buttons[0]: missing required key \"action\"");
    QTest::newRow("set without app") << QByteArray(R"({"buttons":[],"appSets":[{"name":"n","buttons":[]}]})")
                                     << QStringLiteral("appSets[0]: missing required key \"app\"");
    QTest::newRow("set without buttons") << QByteArray(R"({"buttons":[],"appSets":[{"app":"a","name":"n"}]})")
                                         << QStringLiteral("appSets[0]: missing required key \"buttons\"");
    QTest::newRow("set button without title")
        << QByteArray(
               R"({"buttons":[],"appSets":[{"app":"a","name":"n","buttons":[{"symbol":"","action":"x"}]}]})")
        << QStringLiteral("appSets[0].buttons[0]: missing required key \"title\"");
    QTest::newRow("number title") << doc(R"({"title":1,"symbol":"","action":"open"})")
                                  << QStringLiteral("buttons[0].title: expected a string, found a number");
    QTest::newRow("null title") << doc(R"({"title":null,"symbol":"","action":"open"})")
                                << QStringLiteral("buttons[0].title: expected a string, found null");
    QTest::newRow("null buttons") << QByteArray(R"({"buttons":null})")
                                  << QStringLiteral("buttons: expected an array, found null");
    QTest::newRow("number is not a boolean")
        << doc(R"({"title":"a","symbol":"","action":"open","locked":1})")
        << QStringLiteral("buttons[0].locked: expected a boolean, found a number");
    QTest::newRow("string is not a boolean")
        << doc(R"({"title":"a","symbol":"","action":"open","locked":"true"})")
        << QStringLiteral("buttons[0].locked: expected a boolean, found a string");
    QTest::newRow("boolean argument")
        << doc(R"({"title":"a","symbol":"","action":"open","argument":true})")
        << QStringLiteral("buttons[0].argument: expected a string, found a boolean");
    QTest::newRow("object children") << doc(R"({"title":"a","symbol":"","action":"group","children":{}})")
                                     << QStringLiteral(
                                            "buttons[0].children: expected an array, found an object");
    QTest::newRow("button is a string")
        << doc(R"("Files")") << QStringLiteral("buttons[0]: expected an object, found a string");
    QTest::newRow("number hotkey") << QByteArray(R"({"buttons":[],"hotkey":3})")
                                   << QStringLiteral("hotkey: expected a string, found a number");
    QTest::newRow("object appSets") << QByteArray(R"({"buttons":[],"appSets":{}})")
                                    << QStringLiteral("appSets: expected an array, found an object");
    QTest::newRow("array document") << QByteArray("[]")
                                    << QStringLiteral("document: expected an object, found an array");
    // Broken JSON is placed by line and column; the parser's own words follow.
    QTest::newRow("empty") << QByteArray() << QStringLiteral("line 1, column 1: ");
    QTest::newRow("whitespace") << QByteArray(" \n ") << QStringLiteral("line 2, column 2: ");
    QTest::newRow("trailing comma") << QByteArray("{\n  \"buttons\": [],\n}")
                                    << QStringLiteral("line 3, column 2: ");
    QTest::newRow("unterminated") << QByteArray("{\"buttons\": [\n{\"title\": \"a")
                                  << QStringLiteral("line 2, ");
    QTest::newRow("garbage after") << QByteArray("{\"buttons\": []} x") << QStringLiteral("line 1, ");
    QTest::newRow("invalid utf-8") << QByteArray("{\"buttons\": [], \"hotkey\": \"\xff\xfe\"}")
                                   << QStringLiteral("line 1, ");
    QTest::newRow("bare scalar") << QByteArray("42") << QStringLiteral("line 1, ");
}

void TestFormat::rejectsWhatIsNoDocument()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    const auto result = ConfigReader::read(json);
    QVERIFY(!result.config);
    // An error that ends in a blank is where the message begins.
    QVERIFY2(error.endsWith(u' ') ? result.error.startsWith(error) : result.error == error,
             qPrintable(result.error));
}

void TestFormat::survivesHostileInput()
{
    // Deeper than the parser accepts: simply unreadable, never a crash.
    for (const int depth : {1000, 5000, 100000}) {
        QByteArray nested = R"({"buttons":[)";
        for (int i = 0; i < depth; ++i)
            nested += R"({"title":"a","symbol":"","action":"group","children":[)";
        for (int i = 0; i < depth; ++i)
            nested += "]}";
        nested += "]}";
        const auto result = ConfigReader::read(nested);
        if (depth > 1000)
            QVERIFY(!result.config);
        QVERIFY(result.config || !result.error.isEmpty());
    }
    QByteArray arrays(200000, '[');
    QVERIFY(!ConfigReader::decode(arrays));
    QVERIFY(!ConfigReader::decode(QByteArray("{\"buttons\":[\0]}", 15)));
    QVERIFY(!ConfigReader::decode(QByteArray(1 << 20, '\0')));
}

namespace {

// The reference layout, as the program writes it.
const char* const exampleText = R"({
  "appSets" : [
    {
      "app" : "com.apple.Terminal",
      "buttons" : [
        {
          "action" : "keys",
          "argument" : "cmd+k",
          "symbol" : "xmark.rectangle",
          "title" : "Clear Screen"
        }
      ],
      "name" : "Terminal"
    }
  ],
  "buttons" : [
    {
      "action" : "group",
      "children" : [
        {
          "action" : "open",
          "argument" : "~\/Downloads",
          "symbol" : "arrow.down.circle",
          "title" : "Downloads"
        }
      ],
      "symbol" : "folder",
      "title" : "Files"
    },
    {
      "action" : "app",
      "argument" : "Terminal",
      "color" : "white",
      "locked" : true,
      "symbol" : "terminal",
      "title" : "Terminal"
    }
  ],
  "hotkey" : "ctrl+cmd+space"
})";

QByteArray withButton(const ButtonSpec& spec)
{
    BarConfig config;
    config.buttons = {spec};
    return ConfigWriter::write(config);
}

} // namespace

void TestFormat::exampleDocumentIsWrittenByteForByte()
{
    ButtonSpec clear = button(QStringLiteral("Clear Screen"), QStringLiteral("keys"));
    clear.symbol = QStringLiteral("xmark.rectangle");
    clear.argument = QStringLiteral("cmd+k");
    ButtonSpec downloads = button(QStringLiteral("Downloads"));
    downloads.symbol = QStringLiteral("arrow.down.circle");
    downloads.argument = QStringLiteral("~/Downloads");
    ButtonSpec files = button(QStringLiteral("Files"), QStringLiteral("group"));
    files.symbol = QStringLiteral("folder");
    files.children = QList<ButtonSpec>{downloads};
    ButtonSpec terminal = button(QStringLiteral("Terminal"), QStringLiteral("app"));
    terminal.symbol = QStringLiteral("terminal");
    terminal.argument = QStringLiteral("Terminal");
    terminal.color = QStringLiteral("white");
    terminal.locked = true;

    BarConfig config;
    config.appSets =
        QList<AppSet>{{QStringLiteral("com.apple.Terminal"), QStringLiteral("Terminal"), {clear}}};
    config.buttons = {files, terminal};
    config.hotkey = QStringLiteral("ctrl+cmd+space");

    QCOMPARE(ConfigWriter::write(config), QByteArray(exampleText));
    // Reading the text back and writing it again changes nothing.
    const auto reread = ConfigReader::decode(exampleText);
    QVERIFY(reread);
    QCOMPARE(*reread, config);
    QCOMPARE(ConfigWriter::write(*reread), QByteArray(exampleText));
}

void TestFormat::keepsAbsentFalseAndEmptyApart()
{
    ButtonSpec bare = button(QStringLiteral("A"));
    QCOMPARE(withButton(bare),
             QByteArray("{\n  \"buttons\" : [\n    {\n      \"action\" : \"open\",\n"
                        "      \"symbol\" : \"\",\n      \"title\" : \"A\"\n    }\n  ]\n}"));

    ButtonSpec unlocked = bare;
    unlocked.locked = false;
    QVERIFY(withButton(unlocked).contains("\"locked\" : false,"));
    QVERIFY(!withButton(bare).contains("locked"));

    ButtonSpec emptyStack = bare;
    emptyStack.children = QList<ButtonSpec>();
    QVERIFY(withButton(emptyStack).contains("\"children\" : [\n\n      ],\n"));
    QVERIFY(!withButton(bare).contains("children"));

    ButtonSpec emptyTexts = bare;
    emptyTexts.argument = QString();
    emptyTexts.color = QString();
    emptyTexts.iconPath = QString();
    const QByteArray text = withButton(emptyTexts);
    QVERIFY(text.contains("\"argument\" : \"\",") && text.contains("\"color\" : \"\",") &&
            text.contains("\"iconPath\" : \"\","));
    QCOMPARE(ConfigReader::decode(text)->buttons.first(), emptyTexts);
}

void TestFormat::emptyListsAndDocumentLayout()
{
    BarConfig empty;
    QCOMPARE(ConfigWriter::write(empty), QByteArray("{\n  \"buttons\" : [\n\n  ]\n}"));

    BarConfig emptySets;
    emptySets.appSets = QList<AppSet>();
    emptySets.hotkey = QString();
    QCOMPARE(ConfigWriter::write(emptySets),
             QByteArray("{\n  \"appSets\" : [\n\n  ],\n  \"buttons\" : [\n\n  ],\n  \"hotkey\" : \"\"\n}"));

    BarConfig emptySet;
    emptySet.appSets = QList<AppSet>{{QStringLiteral("a"), QStringLiteral("n"), {}}};
    QCOMPARE(ConfigWriter::write(emptySet), QByteArray("{\n  \"appSets\" : [\n    {\n      \"app\" : \"a\",\n"
                                                       "      \"buttons\" : [\n\n      ],\n"
                                                       "      \"name\" : \"n\"\n    }\n  ],\n"
                                                       "  \"buttons\" : [\n\n  ]\n}"));
}

void TestFormat::escapesStrings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("quote and backslash")
        << QStringLiteral("say \"hi\" \\ bye") << QByteArray(R"("say \"hi\" \\ bye")");
    QTest::newRow("slash") << QStringLiteral("~/a/b") << QByteArray(R"("~\/a\/b")");
    QTest::newRow("short escapes") << QStringLiteral("\b\f\n\r\t") << QByteArray(R"("\b\f\n\r\t")");
    QTest::newRow("other controls") << QString::fromUtf8("\x01\x1f\x0b", 3)
                                    << QByteArray(R"("\u0001\u001f\u000b")");
    QTest::newRow("nul") << QString(QChar(0)) << QByteArray(R"("\u0000")");
    QTest::newRow("del stays raw") << QStringLiteral("\x7f") << QByteArray("\"\x7f\"");
    QTest::newRow("non-ascii stays raw") << QStringLiteral("Grüße — 📁") << QByteArray("\"Grüße — 📁\"");
    QTest::newRow("line separators stay raw")
        << QStringLiteral("a\u2028b\u2029") << QByteArray("\"a\u2028b\u2029\"");
    // Halves of a pair on their own have no UTF-8 form; they must not come back as "?".
    QTest::newRow("lone high surrogate") << QString(QChar(0xd83d)) + u'x' << QByteArray(R"("\ud83dx")");
    QTest::newRow("lone low surrogate at the end")
        << u'x' + QString(QChar(0xdcc1)) << QByteArray(R"("x\udcc1")");
    QTest::newRow("byte order mark first") << QStringLiteral("\ufeffa") << QByteArray(R"("\ufeffa")");
    QTest::newRow("pair in the wrong order")
        << QString(QChar(0xde00)) + QChar(0xd83d) << QByteArray(R"("\ude00\ud83d")");
}

void TestFormat::escapesStrings()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, written);
    ButtonSpec spec = button(text);
    const QByteArray document = withButton(spec);
    QVERIFY2(document.contains(QByteArray("\"title\" : " + written + "\n")), document.constData());
    QCOMPARE(ConfigReader::decode(document)->buttons.first().title, text);
}

void TestFormat::roundTripsEverything()
{
    ButtonSpec deep = button(QStringLiteral("deep"), QStringLiteral("mystery-kind"));
    deep.iconPath = QStringLiteral("/icons/a.png");
    ButtonSpec middle = button(QStringLiteral("middle"), QStringLiteral("group"));
    middle.children = QList<ButtonSpec>{deep};
    middle.locked = false;
    ButtonSpec top = button(QStringLiteral("top"), QStringLiteral("group"));
    top.children = QList<ButtonSpec>{middle, button(QStringLiteral("sibling"))};
    top.color = QStringLiteral("Blue");
    BarConfig config;
    config.buttons = {top};
    config.appSets = QList<AppSet>{{QStringLiteral("x"), QStringLiteral("X"), {button(QStringLiteral("s"))}},
                                   {QStringLiteral("x"), QStringLiteral("X again"), {}}};
    const QByteArray text = ConfigWriter::write(config);
    QVERIFY(!text.endsWith('\n'));
    const auto back = ConfigReader::decode(text);
    QVERIFY(back);
    QCOMPARE(*back, config);
}

QTEST_APPLESS_MAIN(TestFormat)
#include "tst_format.moc"
