#include "actions/KeyCombo.h"

#include <QTest>

namespace {

constexpr quint64 superFlags = 0x100000;
constexpr quint64 shiftFlags = 0x20000;
constexpr quint64 altFlags = 0x80000;
constexpr quint64 controlFlags = 0x40000;
constexpr quint32 superCarbon = 0x100;
constexpr quint32 shiftCarbon = 0x200;
constexpr quint32 altCarbon = 0x800;
constexpr quint32 controlCarbon = 0x1000;

} // namespace

// Lets a failed comparison show what was parsed instead of two opaque values.
char* toString(const KeyCombo& combo)
{
    return QTest::toString(QStringLiteral("key %1 flags 0x%2 carbon 0x%3")
                               .arg(combo.keyCode)
                               .arg(combo.flags, 0, 16)
                               .arg(combo.carbon, 0, 16));
}

class TestKeyCombo : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // The name table.
    void tableHasExactlyTheKnownNames();
    void everyNameParsesAloneToItsCode_data();
    void everyNameParsesAloneToItsCode();

    // Modifiers.
    void modifiersSetBothMasks_data();
    void modifiersSetBothMasks();

    // Spelling freedom that must not change the meaning.
    void equivalentSpellings_data();
    void equivalentSpellings();

    // Text that must not produce a combination.
    void invalidText_data();
    void invalidText();
};

void TestKeyCombo::tableHasExactlyTheKnownNames()
{
    const auto& codes = KeyCombo::codes();
    QCOMPARE(codes.size(), 76);
    QVERIFY(!codes.contains(QStringLiteral("+")));
    // Every name must be reachable through parse, which lower-cases and splits at "+" and padding.
    for (auto it = codes.cbegin(); it != codes.cend(); ++it) {
        const QString& name = it.key();
        QVERIFY2(!name.isEmpty(), "empty key name");
        QVERIFY2(name == name.toLower(), qPrintable(name));
        QVERIFY2(!name.contains(u'+') && !name.contains(u' ') && !name.contains(u'\t'), qPrintable(name));
    }
    // Built once: callers may hold on to the reference.
    QCOMPARE(&KeyCombo::codes(), &codes);
}

void TestKeyCombo::everyNameParsesAloneToItsCode_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("code");

    const QList<std::pair<const char*, int>> expected = {
        {"a", 0},          {"s", 1},       {"d", 2},        {"f", 3},
        {"h", 4},          {"g", 5},       {"z", 6},        {"x", 7},
        {"c", 8},          {"v", 9},       {"b", 11},       {"q", 12},
        {"w", 13},         {"e", 14},      {"r", 15},       {"y", 16},
        {"t", 17},         {"o", 31},      {"u", 32},       {"i", 34},
        {"p", 35},         {"l", 37},      {"j", 38},       {"k", 40},
        {"n", 45},         {"m", 46},      {"1", 18},       {"2", 19},
        {"3", 20},         {"4", 21},      {"6", 22},       {"5", 23},
        {"9", 25},         {"7", 26},      {"8", 28},       {"0", 29},
        {"=", 24},         {"-", 27},      {"]", 30},       {"[", 33},
        {"'", 39},         {";", 41},      {"\\", 42},      {",", 43},
        {"/", 44},         {".", 47},      {"`", 50},       {"return", 36},
        {"enter", 36},     {"tab", 48},    {"space", 49},   {"delete", 51},
        {"backspace", 51}, {"escape", 53}, {"esc", 53},     {"forwarddelete", 117},
        {"home", 115},     {"end", 119},   {"pageup", 116}, {"pagedown", 121},
        {"left", 123},     {"right", 124}, {"down", 125},   {"up", 126},
        {"f1", 122},       {"f2", 120},    {"f3", 99},      {"f4", 118},
        {"f5", 96},        {"f6", 97},     {"f7", 98},      {"f8", 100},
        {"f9", 101},       {"f10", 109},   {"f11", 103},    {"f12", 111},
    };
    QCOMPARE(expected.size(), 76);
    for (const auto& [name, code] : expected)
        QTest::newRow(name) << QString::fromLatin1(name) << code;
}

void TestKeyCombo::everyNameParsesAloneToItsCode()
{
    QFETCH(QString, name);
    QFETCH(int, code);

    QCOMPARE(int(KeyCombo::codes().value(name, 0xffff)), code);

    const auto combo = KeyCombo::parse(name);
    QVERIFY(combo);
    QCOMPARE(int(combo->keyCode), code);
    QCOMPARE(combo->flags, quint64(0));
    QCOMPARE(combo->carbon, quint32(0));

    // Case is irrelevant to the name, including for the named keys.
    const auto upper = KeyCombo::parse(name.toUpper());
    QVERIFY(upper);
    QCOMPARE(*upper, *combo);
}

void TestKeyCombo::modifiersSetBothMasks_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("key");
    QTest::addColumn<quint64>("flags");
    QTest::addColumn<quint32>("carbon");

    QTest::newRow("cmd+v") << QStringLiteral("cmd+v") << 9 << quint64(1048576) << quint32(256);
    QTest::newRow("command") << QStringLiteral("command+v") << 9 << superFlags << superCarbon;
    QTest::newRow("shift") << QStringLiteral("shift+a") << 0 << shiftFlags << shiftCarbon;
    QTest::newRow("opt") << QStringLiteral("opt+a") << 0 << altFlags << altCarbon;
    QTest::newRow("option") << QStringLiteral("option+a") << 0 << altFlags << altCarbon;
    QTest::newRow("alt+f4") << QStringLiteral("alt+f4") << 118 << altFlags << altCarbon;
    QTest::newRow("ctrl") << QStringLiteral("ctrl+a") << 0 << controlFlags << controlCarbon;
    QTest::newRow("control") << QStringLiteral("control+a") << 0 << controlFlags << controlCarbon;
    QTest::newRow("ctrl+opt+space, mixed case")
        << QStringLiteral("Ctrl+Opt+Space") << 49 << quint64(786432) << quint32(6144);
    QTest::newRow("all four") << QStringLiteral("ctrl+opt+shift+cmd+z") << 6
                              << (superFlags | shiftFlags | altFlags | controlFlags)
                              << (superCarbon | shiftCarbon | altCarbon | controlCarbon);
    QTest::newRow("padded with spaces") << QStringLiteral(" shift + tab ") << 48 << shiftFlags << shiftCarbon;
    QTest::newRow("padded with tabs")
        << QStringLiteral("\tctrl\t+\tc\t") << 8 << controlFlags << controlCarbon;
    QTest::newRow("backslash key") << QStringLiteral("ctrl+\\") << 42 << controlFlags << controlCarbon;
    QTest::newRow("minus key") << QStringLiteral("cmd+-") << 27 << superFlags << superCarbon;
}

void TestKeyCombo::modifiersSetBothMasks()
{
    QFETCH(QString, text);
    QFETCH(int, key);
    QFETCH(quint64, flags);
    QFETCH(quint32, carbon);

    const auto combo = KeyCombo::parse(text);
    QVERIFY(combo);
    QCOMPARE(int(combo->keyCode), key);
    QCOMPARE(combo->flags, flags);
    QCOMPARE(combo->carbon, carbon);
}

void TestKeyCombo::equivalentSpellings_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("same");

    QTest::newRow("key first") << QStringLiteral("v+cmd") << QStringLiteral("cmd+v");
    QTest::newRow("key between modifiers") << QStringLiteral("shift+t+cmd") << QStringLiteral("cmd+shift+t");
    QTest::newRow("doubled separator") << QStringLiteral("cmd++v") << QStringLiteral("cmd+v");
    QTest::newRow("leading and trailing separator") << QStringLiteral("+cmd+v+") << QStringLiteral("cmd+v");
    QTest::newRow("super") << QStringLiteral("super+l") << QStringLiteral("cmd+l");
    QTest::newRow("meta") << QStringLiteral("meta+l") << QStringLiteral("cmd+l");
    QTest::newRow("win") << QStringLiteral("win+l") << QStringLiteral("cmd+l");
    QTest::newRow("upper case") << QStringLiteral("CMD+SHIFT+PAGEDOWN")
                                << QStringLiteral("cmd+shift+pagedown");
    QTest::newRow("repeated modifiers") << QStringLiteral("ctrl+k+control+ctrl") << QStringLiteral("ctrl+k");
    QTest::newRow("every name of super")
        << QStringLiteral("cmd+super+meta+win+command+k") << QStringLiteral("cmd+k");
    QTest::newRow("mixed padding") << QStringLiteral(" \t cmd \t+ \tup\t ") << QStringLiteral("cmd+up");
}

void TestKeyCombo::equivalentSpellings()
{
    QFETCH(QString, text);
    QFETCH(QString, same);

    const auto reference = KeyCombo::parse(same);
    QVERIFY(reference);
    const auto combo = KeyCombo::parse(text);
    QVERIFY(combo);
    QCOMPARE(*combo, *reference);
}

void TestKeyCombo::invalidText_data()
{
    QTest::addColumn<QString>("text");

    QTest::newRow("empty") << QString();
    QTest::newRow("only separators") << QStringLiteral("+++");
    QTest::newRow("lone plus") << QStringLiteral("+");
    QTest::newRow("only a modifier") << QStringLiteral("cmd");
    QTest::newRow("only modifiers") << QStringLiteral("ctrl+shift");
    QTest::newRow("two keys") << QStringLiteral("a+b");
    QTest::newRow("two keys after modifier") << QStringLiteral("cmd+a+b");
    QTest::newRow("same key twice") << QStringLiteral("cmd+a+a");
    // The split drops empty pieces before trimming, so a piece of bare padding is a piece of its own.
    QTest::newRow("blank piece") << QStringLiteral("cmd+ +v");
    QTest::newRow("only padding") << QStringLiteral(" ");
    QTest::newRow("newline before key") << QStringLiteral("cmd+\nv");
    QTest::newRow("newline after key") << QStringLiteral("cmd+v\n");
    QTest::newRow("carriage return") << QStringLiteral("\rcmd+v");
    QTest::newRow("non-breaking space") << QStringLiteral("cmd+\u00a0v");
    QTest::newRow("space inside a word") << QStringLiteral("page up");
    QTest::newRow("other separator") << QStringLiteral("cmd-v");
    QTest::newRow("f13") << QStringLiteral("cmd+F13");
    QTest::newRow("keypad digit") << QStringLiteral("cmd+numpad1");
    QTest::newRow("plus spelled out") << QStringLiteral("cmd+plus");
    QTest::newRow("non-latin letter") << QStringLiteral("cmd+\u00e9");
}

void TestKeyCombo::invalidText()
{
    QFETCH(QString, text);
    QVERIFY(!KeyCombo::parse(text));
}

QTEST_APPLESS_MAIN(TestKeyCombo)
#include "tst_keycombo.moc"
