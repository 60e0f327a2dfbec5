#include "config/ConfigReader.h"
#include "config/ConfigWriter.h"

#include <QTest>

class TestWriter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void exampleDocumentIsWrittenByteForByte();
    void keepsAbsentFalseAndEmptyApart();
    void emptyListsAndDocumentLayout();
    void escapesStrings_data();
    void escapesStrings();
    void roundTripsEverything();
};

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

ButtonSpec button(const QString& title, const QString& action = QStringLiteral("open"))
{
    ButtonSpec spec;
    spec.title = title;
    spec.action = action;
    return spec;
}

QByteArray withButton(const ButtonSpec& spec)
{
    BarConfig config;
    config.buttons = {spec};
    return ConfigWriter::write(config);
}

} // namespace

void TestWriter::exampleDocumentIsWrittenByteForByte()
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

void TestWriter::keepsAbsentFalseAndEmptyApart()
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

void TestWriter::emptyListsAndDocumentLayout()
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

void TestWriter::escapesStrings_data()
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

void TestWriter::escapesStrings()
{
    QFETCH(QString, text);
    QFETCH(QByteArray, written);
    ButtonSpec spec = button(text);
    const QByteArray document = withButton(spec);
    QVERIFY2(document.contains(QByteArray("\"title\" : " + written + "\n")), document.constData());
    QCOMPARE(ConfigReader::decode(document)->buttons.first().title, text);
}

void TestWriter::roundTripsEverything()
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

QTEST_APPLESS_MAIN(TestWriter)
#include "tst_writer.moc"
