#include "config/ConfigReader.h"

#include <QTest>

class TestReader : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void minimalButtonHasEveryOptionalAbsent();
    void nullOptionalsReadAsAbsentAndUnknownKeysAreIgnored();
    void anyLayoutAndKeyOrderIsAccepted();
    void childrenNestAtAnyDepth();
    void rejectsMissingRequiredKeys_data();
    void rejectsMissingRequiredKeys();
    void rejectsWrongTypes_data();
    void rejectsWrongTypes();
    void rejectsBrokenJson_data();
    void rejectsBrokenJson();
    void survivesHostileInput();
};

namespace {

QByteArray doc(const char* buttons)
{
    return QByteArray(R"({"buttons": [)") + buttons + "]}";
}

} // namespace

void TestReader::minimalButtonHasEveryOptionalAbsent()
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

void TestReader::nullOptionalsReadAsAbsentAndUnknownKeysAreIgnored()
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

void TestReader::anyLayoutAndKeyOrderIsAccepted()
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

void TestReader::childrenNestAtAnyDepth()
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

void TestReader::rejectsMissingRequiredKeys_data()
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
}

void TestReader::rejectsMissingRequiredKeys()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    const auto result = ConfigReader::read(json);
    QVERIFY(!result.config);
    QCOMPARE(result.error, error);
}

void TestReader::rejectsWrongTypes_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("error");
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
}

void TestReader::rejectsWrongTypes()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, error);
    const auto result = ConfigReader::read(json);
    QVERIFY(!result.config);
    QCOMPARE(result.error, error);
}

void TestReader::rejectsBrokenJson_data()
{
    QTest::addColumn<QByteArray>("json");
    QTest::addColumn<QString>("where");
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

void TestReader::rejectsBrokenJson()
{
    QFETCH(QByteArray, json);
    QFETCH(QString, where);
    const auto result = ConfigReader::read(json);
    QVERIFY(!result.config);
    QVERIFY2(result.error.startsWith(where), qPrintable(result.error));
}

void TestReader::survivesHostileInput()
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

QTEST_APPLESS_MAIN(TestReader)
#include "tst_reader.moc"
