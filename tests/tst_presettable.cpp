#include "actions/KeyCombo.h"
#include "config/Presets.h"

#include <QSet>
#include <QTest>

class TestPresetTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void presetsInMenuOrder();
    void sampleButtons_data();
    void sampleButtons();
    void everyButtonIsAPlainKeysButton();
    void everyArgumentParses();
    void titlesAreUniqueAcrossTheTable();
    void noPresetRepeatsAShortcut();
};

void TestPresetTable::presetsInMenuOrder()
{
    struct Expected
    {
        QString name;
        QString bundleID;
        qsizetype buttons;
    };
    const QList<Expected> expected = {
        {QStringLiteral("Mail"), QStringLiteral("com.apple.mail"), 8},
        {QStringLiteral("Safari"), QStringLiteral("com.apple.Safari"), 9},
        {QStringLiteral("Finder"), QStringLiteral("com.apple.finder"), 9},
        {QStringLiteral("Terminal"), QStringLiteral("com.apple.Terminal"), 7},
        {QStringLiteral("Messages"), QStringLiteral("com.apple.MobileSMS"), 6},
        {QStringLiteral("Photos"), QStringLiteral("com.apple.Photos"), 9},
        {QStringLiteral("Excel"), QStringLiteral("com.microsoft.Excel"), 8},
        {QStringLiteral("Word"), QStringLiteral("com.microsoft.Word"), 8},
        {QStringLiteral("Final Cut Pro"), QStringLiteral("com.apple.FinalCut"), 12},
        {QStringLiteral("Music"), QStringLiteral("com.apple.Music"), 8},
    };

    const QList<AppPreset>& presets = Presets::all();
    QCOMPARE(presets.size(), expected.size());
    for (qsizetype i = 0; i < expected.size(); ++i) {
        QCOMPARE(presets[i].name, expected[i].name);
        // Bundle ids are matched exactly against the running application, so their case matters.
        QCOMPARE(presets[i].bundleID, expected[i].bundleID);
        QCOMPARE(presets[i].buttons.size(), expected[i].buttons);
    }
}

void TestPresetTable::sampleButtons_data()
{
    QTest::addColumn<QString>("preset");
    QTest::addColumn<int>("position");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("symbol");
    QTest::addColumn<QString>("keys");

    // First and last of each end of the table, plus the ones that lean on unusual key names.
    QTest::newRow("first of all") << QStringLiteral("Mail") << 0 << QStringLiteral("New Message")
                                  << QStringLiteral("square.and.pencil") << QStringLiteral("cmd+n");
    QTest::newRow("two modifiers") << QStringLiteral("Mail") << 5 << QStringLiteral("Archive")
                                   << QStringLiteral("archivebox") << QStringLiteral("ctrl+cmd+a");
    QTest::newRow("bracket") << QStringLiteral("Safari") << 4 << QStringLiteral("Go Back")
                             << QStringLiteral("chevron.backward") << QStringLiteral("cmd+[");
    QTest::newRow("delete") << QStringLiteral("Finder") << 3 << QStringLiteral("Move to Bin")
                            << QStringLiteral("trash") << QStringLiteral("cmd+delete");
    QTest::newRow("period") << QStringLiteral("Finder") << 8 << QStringLiteral("Hidden Files")
                            << QStringLiteral("eye.slash") << QStringLiteral("shift+cmd+.");
    QTest::newRow("minus") << QStringLiteral("Terminal") << 6 << QStringLiteral("Smaller")
                           << QStringLiteral("textformat.size.smaller") << QStringLiteral("cmd+-");
    QTest::newRow("space with modifiers")
        << QStringLiteral("Messages") << 5 << QStringLiteral("Emoji") << QStringLiteral("face.smiling")
        << QStringLiteral("ctrl+cmd+space");
    QTest::newRow("bare return") << QStringLiteral("Photos") << 4 << QStringLiteral("Edit Photo")
                                 << QStringLiteral("slider.horizontal.3") << QStringLiteral("return");
    QTest::newRow("option") << QStringLiteral("Word") << 3 << QStringLiteral("Heading 1")
                            << QStringLiteral("textformat.size") << QStringLiteral("opt+cmd+1");
    QTest::newRow("bare letter") << QStringLiteral("Final Cut Pro") << 1 << QStringLiteral("Blade Tool")
                                 << QStringLiteral("scissors") << QStringLiteral("b");
    QTest::newRow("last of all") << QStringLiteral("Music") << 7 << QStringLiteral("Up Next")
                                 << QStringLiteral("list.bullet.indent") << QStringLiteral("opt+cmd+u");
}

void TestPresetTable::sampleButtons()
{
    QFETCH(QString, preset);
    QFETCH(int, position);
    QFETCH(QString, title);
    QFETCH(QString, symbol);
    QFETCH(QString, keys);

    const AppPreset* found = nullptr;
    for (const AppPreset& candidate : Presets::all()) {
        if (candidate.name == preset) {
            found = &candidate;
            break;
        }
    }
    QVERIFY(found);
    QVERIFY(position < found->buttons.size());
    const ButtonSpec& button = found->buttons.at(position);
    QCOMPARE(button.title, title);
    QCOMPARE(button.symbol, symbol);
    QCOMPARE(button.argument.value_or(QString()), keys);
}

void TestPresetTable::everyButtonIsAPlainKeysButton()
{
    // Matching preset buttons against a document relies on them having nothing beyond action and argument.
    for (const AppPreset& preset : Presets::all()) {
        for (const ButtonSpec& button : preset.buttons) {
            const QByteArray where = (preset.name + QLatin1String(" / ") + button.title).toUtf8();
            QVERIFY2(!button.title.isEmpty(), where.constData());
            QVERIFY2(!button.symbol.isEmpty(), where.constData());
            QVERIFY2(button.title.trimmed() == button.title, where.constData());
            QVERIFY2(button.action == QLatin1String("keys"), where.constData());
            QVERIFY2(button.argument.has_value() && !button.argument->isEmpty(), where.constData());
            QVERIFY2(!button.color, where.constData());
            QVERIFY2(!button.iconPath, where.constData());
            QVERIFY2(!button.locked, where.constData());
            QVERIFY2(!button.children, where.constData());
            QVERIFY2(!button.isGroup(), where.constData());
        }
    }
}

void TestPresetTable::everyArgumentParses()
{
    for (const AppPreset& preset : Presets::all()) {
        for (const ButtonSpec& button : preset.buttons) {
            const QByteArray where = (preset.name + QLatin1String(" / ") + button.title +
                                      QLatin1String(": ") + button.argument.value_or(QString()))
                                         .toUtf8();
            QVERIFY2(KeyCombo::parse(button.argument.value_or(QString())), where.constData());
        }
    }
}

void TestPresetTable::titlesAreUniqueAcrossTheTable()
{
    QSet<QString> seen;
    for (const AppPreset& preset : Presets::all()) {
        for (const ButtonSpec& button : preset.buttons) {
            const QByteArray where = (preset.name + QLatin1String(" / ") + button.title).toUtf8();
            QVERIFY2(!seen.contains(button.title), where.constData());
            seen.insert(button.title);
        }
    }
    QCOMPARE(seen.size(), 84);
}

void TestPresetTable::noPresetRepeatsAShortcut()
{
    // Two buttons of one preset sending the same keys would make one of them pointless, and merging
    // skips buttons whose action and argument are already present, so the second would never arrive.
    for (const AppPreset& preset : Presets::all()) {
        QList<KeyCombo> combos;
        for (const ButtonSpec& button : preset.buttons) {
            const auto combo = KeyCombo::parse(button.argument.value_or(QString()));
            QVERIFY(combo);
            const QByteArray where = (preset.name + QLatin1String(" / ") + button.title).toUtf8();
            QVERIFY2(!combos.contains(*combo), where.constData());
            combos.append(*combo);
        }
    }
}

QTEST_APPLESS_MAIN(TestPresetTable)
#include "tst_presettable.moc"
