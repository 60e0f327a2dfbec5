#include "actions/KeyCombo.h"
#include "config/Presets.h"

#include <QSet>
#include <QTest>

class TestPresetTable : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void presetsInMenuOrder();
    void everyButtonIsAPlainKeysButton();
    void everyArgumentParses();
    void titlesAreUniqueAcrossTheTable();
    void everyPresetHasAnApplicationOfItsOwn();
    void linuxApplicationsUseControlNotSuper();
};

namespace {

/// The seed's presets for the other platform come first; the ones after them are for Linux applications.
constexpr qsizetype seedPresets = 10;

} // namespace

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
    QCOMPARE(expected.size(), seedPresets);
    QVERIFY(presets.size() > seedPresets);
    for (qsizetype i = 0; i < expected.size(); ++i) {
        QCOMPARE(presets[i].name, expected[i].name);
        // Bundle ids are matched exactly against the running application, so their case matters.
        QCOMPARE(presets[i].bundleID, expected[i].bundleID);
        QCOMPARE(presets[i].buttons.size(), expected[i].buttons);
    }
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
}

void TestPresetTable::everyPresetHasAnApplicationOfItsOwn()
{
    // Two presets of one application would fill one set, and the menus could not tell them apart.
    QSet<QString> names;
    QSet<QString> applications;
    for (const AppPreset& preset : Presets::all()) {
        QVERIFY2(!names.contains(preset.name), qPrintable(preset.name));
        QVERIFY2(!applications.contains(preset.bundleID), qPrintable(preset.bundleID));
        // Desktop-entry ids are compared without their ".desktop".
        QVERIFY2(!preset.bundleID.endsWith(QLatin1String(".desktop")), qPrintable(preset.bundleID));
        names.insert(preset.name);
        applications.insert(preset.bundleID);
        QVERIFY2(!preset.buttons.isEmpty(), qPrintable(preset.name));
    }
}

void TestPresetTable::linuxApplicationsUseControlNotSuper()
{
    // Linux applications bind Control; a combination carried over from the other platform's Command
    // would press Super, which the desktop itself takes.
    const QList<AppPreset>& presets = Presets::all();
    for (qsizetype i = seedPresets; i < presets.size(); ++i) {
        for (const ButtonSpec& button : presets[i].buttons) {
            const auto combo = KeyCombo::parse(button.argument.value_or(QString()));
            const QByteArray where = (presets[i].name + QLatin1String(" / ") + button.title).toUtf8();
            QVERIFY2(combo && !(combo->flags & KeyCombo::SuperFlag), where.constData());
        }
    }
}

QTEST_APPLESS_MAIN(TestPresetTable)
#include "tst_presettable.moc"
