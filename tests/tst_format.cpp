// The buttons.json document: its model, how it is read and written, and what it refuses.

#include "TestSupport.h"
#include "config/BarConfig.h"
#include "config/Config.h"
#include "config/ConfigReader.h"
#include "config/ConfigWriter.h"

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

    void acceptsAnyLayoutKeyOrderNullsAndUnknownKeys();
    void childrenNestAtAnyDepth();
    void rejectsWhatIsNoDocument_data();
    void rejectsWhatIsNoDocument();
    void survivesHostileInput();

    void exampleDocumentIsWrittenByteForByte();
    void keepsAbsentFalseAndEmptyApart();
    void escapesStrings_data();
    void escapesStrings();
    void roundTripsEverything();
};

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
    QCOMPARE(button(u"t"_s, kind).tintName(), color);
}

void TestFormat::tintFollowsColorThenStackMemberThenKind()
{
    ButtonSpec red = button(u"t"_s, u"app"_s);
    red.color = u"red"_s;
    QCOMPARE(red.tint(), ChipColor::Red);

    ButtonSpec stack = button(u"t"_s, u"group"_s);
    QCOMPARE(stack.tint(), ChipColor::White); // no children at all
    stack.children = QList<ButtonSpec>();
    QCOMPARE(stack.tint(), ChipColor::White); // an empty stack
    stack.children = QList<ButtonSpec>{button(u"t"_s, u"url"_s), button(u"t"_s, u"app"_s)};
    QCOMPARE(stack.tint(), ChipColor::Green); // first member's kind
    (*stack.children)[0].color = u"red"_s;
    QCOMPARE(stack.tint(), ChipColor::Red); // first member's own colour
    stack.color = u"purple"_s;
    QCOMPARE(stack.tint(), ChipColor::Purple); // the stack's own colour wins

    // Only one level: a first member that is a stack counts as white, whatever it holds.
    ButtonSpec inner = button(u"t"_s, u"group"_s);
    inner.children = QList<ButtonSpec>{button(u"t"_s, u"app"_s)};
    ButtonSpec outer = button(u"t"_s, u"group"_s);
    outer.children = QList<ButtonSpec>{inner};
    QCOMPARE(outer.tint(), ChipColor::White);

    // A member colour only matters for stacks.
    ButtonSpec notAStack = button(u"t"_s, u"url"_s);
    notAStack.children = QList<ButtonSpec>{button(u"t"_s, u"app"_s)};
    QCOMPARE(notAStack.tint(), ChipColor::Green);
}

void TestFormat::colorNamesAreExact()
{
    // Red, green, purple and white are the tints above.
    QCOMPARE(ButtonSpec::colorNamed(u"orange"_s), ChipColor::Orange);
    QCOMPARE(ButtonSpec::colorNamed(u"yellow"_s), ChipColor::Yellow);
    for (const char* name : {"cyan", "blue", "Red", "Cyan", " red", ""})
        QCOMPARE(ButtonSpec::colorNamed(QString::fromUtf8(name)), ChipColor::Cyan);
}

void TestFormat::equalityComparesEveryField()
{
    const ButtonSpec base = button(u"t"_s, u"open"_s);
    auto differs = [&](auto change) {
        ButtonSpec other = base;
        change(other);
        return other != base;
    };
    QVERIFY(differs([](ButtonSpec& b) { b.symbol = u"x"_s; }));
    QVERIFY(differs([](ButtonSpec& b) { b.argument = QString(); }));
    QVERIFY(differs([](ButtonSpec& b) { b.iconPath = u"i"_s; }));
    QVERIFY(differs([](ButtonSpec& b) { b.locked = false; }));
    QVERIFY(differs([](ButtonSpec& b) { b.children = QList<ButtonSpec>(); }));
}

void TestFormat::builtInTitlesAreUnique()
{
    // Titles are identities: the built-in buttons must not clash, at any depth.
    QStringList all;
    for (const ButtonSpec& top : Config::defaults().buttons)
        all += QStringList{top.title} + titles(top.children.value_or(QList<ButtonSpec>()));
    QCOMPARE(all.removeDuplicates(), 0);
}

namespace {

QByteArray doc(const char* buttons)
{
    return QByteArray(R"({"buttons": [)") + buttons + "]}";
}

} // namespace

void TestFormat::acceptsAnyLayoutKeyOrderNullsAndUnknownKeys()
{
    const auto config = ConfigReader::decode(R"({
        "buttons": [{"title":"A","symbol":"s","action":"x","argument":null,"color":null,"iconPath":null,
                     "locked":null,"children":null,"Title":5,"id":"other","extra":{"deep":[1,2]}}],
        "appSets": null, "hotkey": null, "barPosition": [1, 2], "version": 3})");
    QVERIFY(config);
    // Null reads as absent, as a button without those keys has them.
    QCOMPARE(config->buttons, QList<ButtonSpec>{ButtonSpec::make(u"A"_s, u"s"_s, u"x"_s)});
    QVERIFY(!config->appSets);
    QVERIFY(!config->hotkey);

    const auto withFalse = ConfigReader::decode(doc(R"({"title":"A","symbol":"s","action":"x","locked":false,
                                                        "children":[]})"));
    QVERIFY(withFalse);
    QCOMPARE(withFalse->buttons.first().locked, std::optional<bool>(false));
    QCOMPARE(withFalse->buttons.first().children, std::optional<QList<ButtonSpec>>(QList<ButtonSpec>()));

    const auto result = ConfigReader::read("\xEF\xBB\xBF{\"hotkey\":\"ctrl+opt+b\",\"appSets\":[{\"name\":"
                                           "\"Mail\",\"buttons\":[],\"app\":\"m\"}],"
                                           "\"buttons\":[{\"action\":\"url\",\"argument\":\"https:\\/\\/"
                                           "x\",\"title\":\"\\u00e9\",\"symbol\":\"\"}]}");
    QVERIFY2(result.config, qPrintable(result.error));
    const auto& reordered = result.config;
    QCOMPARE(reordered->hotkey, std::optional<QString>(u"ctrl+opt+b"_s));
    QCOMPARE(reordered->appSets->size(), 1);
    QCOMPARE(reordered->appSets->first().app, u"m"_s);
    QCOMPARE(reordered->buttons.first().argument, std::optional<QString>(u"https://x"_s));
    QCOMPARE(reordered->buttons.first().title, u"é"_s);
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
    QCOMPARE(at->title, u"leaf"_s);

    // One bad value deep inside rejects the whole document.
    const auto broken = ConfigReader::read(doc(
        R"({"title":"a","symbol":"","action":"group","children":[{"title":"b","symbol":"","action":"group",
            "children":[{"title":"c","action":"open"}]}]})"));
    QVERIFY(!broken.config);
    QCOMPARE(broken.error, u"buttons[0].children[0].children[0]: missing required key \"symbol\""_s);
}

void TestFormat::rejectsWhatIsNoDocument_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
    QTest::newRow("no buttons") << QByteArray(R"({"hotkey":"ctrl+b"})")
                                << u"document: missing required key \"buttons\""_s;
    QTest::newRow("keys are case-sensitive")
        << QByteArray(R"({"Buttons":[]})") << u"document: missing required key \"buttons\""_s;
    QTest::newRow("no title") << doc(R"({"symbol":"","action":"open"})")
                              << u"buttons[0]: missing required key \"title\""_s;
    QTest::newRow("no symbol in second button")
        << doc(R"({"title":"a","symbol":"","action":"open"},{"title":"b","action":"open"})")
        << u"buttons[1]: missing required key \"symbol\""_s;
    QTest::newRow("no action") << doc(R"({"title":"a","symbol":""})")
                               << u"buttons[0]: missing required key \"action\""_s;
    QTest::newRow("set without app") << QByteArray(R"({"buttons":[],"appSets":[{"name":"n","buttons":[]}]})")
                                     << u"appSets[0]: missing required key \"app\""_s;
    QTest::newRow("set without buttons") << QByteArray(R"({"buttons":[],"appSets":[{"app":"a","name":"n"}]})")
                                         << u"appSets[0]: missing required key \"buttons\""_s;
    QTest::newRow("set button without title")
        << QByteArray(
               R"({"buttons":[],"appSets":[{"app":"a","name":"n","buttons":[{"symbol":"","action":"x"}]}]})")
        << u"appSets[0].buttons[0]: missing required key \"title\""_s;
    QTest::newRow("number title") << doc(R"({"title":1,"symbol":"","action":"open"})")
                                  << u"buttons[0].title: expected a string, found a number"_s;
    QTest::newRow("null title") << doc(R"({"title":null,"symbol":"","action":"open"})")
                                << u"buttons[0].title: expected a string, found null"_s;
    QTest::newRow("number is not a boolean") << doc(R"({"title":"a","symbol":"","action":"open","locked":1})")
                                             << u"buttons[0].locked: expected a boolean, found a number"_s;
    QTest::newRow("boolean argument") << doc(R"({"title":"a","symbol":"","action":"open","argument":true})")
                                      << u"buttons[0].argument: expected a string, found a boolean"_s;
    QTest::newRow("object children") << doc(R"({"title":"a","symbol":"","action":"group","children":{}})")
                                     << QStringLiteral(
                                            "buttons[0].children: expected an array, found an object");
    QTest::newRow("button is a string")
        << doc(R"("Files")") << u"buttons[0]: expected an object, found a string"_s;
    QTest::newRow("number hotkey") << QByteArray(R"({"buttons":[],"hotkey":3})")
                                   << u"hotkey: expected a string, found a number"_s;
    QTest::newRow("object appSets") << QByteArray(R"({"buttons":[],"appSets":{}})")
                                    << u"appSets: expected an array, found an object"_s;
    QTest::newRow("array document") << QByteArray("[]") << u"document: expected an object, found an array"_s;
    // Broken JSON is placed by line and column; the parser's own words follow.
    QTest::newRow("empty") << QByteArray() << u"line 1, column 1: "_s;
    QTest::newRow("whitespace") << QByteArray(" \n ") << u"line 2, column 2: "_s;
    QTest::newRow("trailing comma") << QByteArray("{\n  \"buttons\": [],\n}") << u"line 3, column 2: "_s;
    QTest::newRow("invalid utf-8") << QByteArray("{\"buttons\": [], \"hotkey\": \"\xff\xfe\"}")
                                   << u"line 1, "_s;
    QTest::newRow("bare scalar") << QByteArray("42") << u"line 1, "_s;
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
    QVERIFY(!ConfigReader::decode(QByteArray(200000, '[')));
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
    return ConfigWriter::write(barOf({spec}));
}

} // namespace

void TestFormat::exampleDocumentIsWrittenByteForByte()
{
    ButtonSpec files = stackOf(
        u"Files"_s, {ButtonSpec::make(u"Downloads"_s, u"arrow.down.circle"_s, u"open"_s, u"~/Downloads"_s)});
    files.symbol = u"folder"_s;
    ButtonSpec terminal = ButtonSpec::make(u"Terminal"_s, u"terminal"_s, u"app"_s, u"Terminal"_s);
    terminal.color = u"white"_s;
    terminal.locked = true;
    BarConfig config;
    config.appSets =
        QList<AppSet>{{u"com.apple.Terminal"_s,
                       u"Terminal"_s,
                       {ButtonSpec::make(u"Clear Screen"_s, u"xmark.rectangle"_s, u"keys"_s, u"cmd+k"_s)}}};
    config.buttons = {files, terminal};
    config.hotkey = u"ctrl+cmd+space"_s;

    QCOMPARE(ConfigWriter::write(config), QByteArray(exampleText));
    // Reading the text back and writing it again changes nothing.
    const auto reread = ConfigReader::decode(exampleText);
    QVERIFY(reread);
    QCOMPARE(*reread, config);
    QCOMPARE(ConfigWriter::write(*reread), QByteArray(exampleText));
}

void TestFormat::keepsAbsentFalseAndEmptyApart()
{
    ButtonSpec bare = button(u"A"_s);
    QCOMPARE(withButton(bare),
             QByteArray("{\n  \"buttons\" : [\n    {\n      \"action\" : \"open\",\n"
                        "      \"symbol\" : \"\",\n      \"title\" : \"A\"\n    }\n  ]\n}"));

    ButtonSpec unlocked = bare;
    unlocked.locked = false;
    QVERIFY(withButton(unlocked).contains("\"locked\" : false,"));

    ButtonSpec emptyStack = bare;
    emptyStack.children = QList<ButtonSpec>();
    QVERIFY(withButton(emptyStack).contains("\"children\" : [\n\n      ],\n"));

    ButtonSpec emptyTexts = bare;
    emptyTexts.argument = QString();
    emptyTexts.color = QString();
    emptyTexts.iconPath = QString();
    const QByteArray text = withButton(emptyTexts);
    QVERIFY(text.contains("\"argument\" : \"\",") && text.contains("\"color\" : \"\",") &&
            text.contains("\"iconPath\" : \"\","));
    QCOMPARE(ConfigReader::decode(text)->buttons.first(), emptyTexts);

    BarConfig empty;
    QCOMPARE(ConfigWriter::write(empty), QByteArray("{\n  \"buttons\" : [\n\n  ]\n}"));

    BarConfig emptySets;
    emptySets.appSets = QList<AppSet>();
    emptySets.hotkey = QString();
    QCOMPARE(ConfigWriter::write(emptySets),
             QByteArray("{\n  \"appSets\" : [\n\n  ],\n  \"buttons\" : [\n\n  ],\n  \"hotkey\" : \"\"\n}"));

    BarConfig emptySet;
    emptySet.appSets = QList<AppSet>{{u"a"_s, u"n"_s, {}}};
    QCOMPARE(ConfigWriter::write(emptySet), QByteArray("{\n  \"appSets\" : [\n    {\n      \"app\" : \"a\",\n"
                                                       "      \"buttons\" : [\n\n      ],\n"
                                                       "      \"name\" : \"n\"\n    }\n  ],\n"
                                                       "  \"buttons\" : [\n\n  ]\n}"));
}

void TestFormat::escapesStrings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("written");
    QTest::newRow("quote and backslash") << u"say \"hi\" \\ bye"_s << QByteArray(R"("say \"hi\" \\ bye")");
    QTest::newRow("slash") << u"~/a/b"_s << QByteArray(R"("~\/a\/b")");
    QTest::newRow("short escapes") << u"\b\f\n\r\t"_s << QByteArray(R"("\b\f\n\r\t")");
    QTest::newRow("other controls") << QString::fromUtf8("\x01\x1f\x0b", 3)
                                    << QByteArray(R"("\u0001\u001f\u000b")");
    QTest::newRow("nul") << QString(QChar(0)) << QByteArray(R"("\u0000")");
    QTest::newRow("del stays raw") << u"\x7f"_s << QByteArray("\"\x7f\"");
    QTest::newRow("non-ascii stays raw") << u"Grüße — 📁"_s << QByteArray("\"Grüße — 📁\"");
    QTest::newRow("line separators stay raw") << u"a\u2028b\u2029"_s << QByteArray("\"a\u2028b\u2029\"");
    // Halves of a pair on their own have no UTF-8 form; they must not come back as "?".
    QTest::newRow("lone high surrogate") << QString(QChar(0xd83d)) + u'x' << QByteArray(R"("\ud83dx")");
    QTest::newRow("lone low surrogate at the end")
        << u'x' + QString(QChar(0xdcc1)) << QByteArray(R"("x\udcc1")");
    QTest::newRow("byte order mark first") << u"\ufeffa"_s << QByteArray(R"("\ufeffa")");
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
    ButtonSpec deep = button(u"deep"_s, u"mystery-kind"_s);
    deep.iconPath = u"/icons/a.png"_s;
    ButtonSpec middle = button(u"middle"_s, u"group"_s);
    middle.children = QList<ButtonSpec>{deep};
    middle.locked = false;
    ButtonSpec top = button(u"top"_s, u"group"_s);
    top.children = QList<ButtonSpec>{middle, button(u"sibling"_s)};
    top.color = u"Blue"_s;
    BarConfig config = barOf({top});
    config.appSets = QList<AppSet>{{u"x"_s, u"X"_s, {button(u"s"_s)}}, {u"x"_s, u"X again"_s, {}}};
    const QByteArray text = ConfigWriter::write(config);
    QVERIFY(!text.endsWith('\n'));
    const auto back = ConfigReader::decode(text);
    QVERIFY(back);
    QCOMPARE(*back, config);
}

QTEST_APPLESS_MAIN(TestFormat)
#include "tst_format.moc"
