#include "TestSupport.h"
#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigDocument.h"
#include "config/ConfigReader.h"

#include <QTest>

class TestDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commitSavesBacksUpAndRecordsUndo();
    void historyHoldsThirtyAndUndoWalksBack();
    void emptyApplicationSetsAreDroppedOnCommit();
    void restoreKeepsCurrentFileAndIsUndoable();
    void lockAllMarksEveryDepthAndUnlockRemovesTheKey();
    void presetsCommitOnlyWhenSomethingChanged();
};

namespace {

/// A clock the test moves by hand.
struct ManualClock
{
    QDateTime now{QDate(2025, 3, 14), QTime(9, 15, 0)};
    Clock clock()
    {
        return [this] { return now; };
    }
};

ButtonSpec button(const QString& title, const QString& action = QStringLiteral("open"))
{
    ButtonSpec spec;
    spec.title = title;
    spec.action = action;
    return spec;
}

BarConfig loadedFromDisk()
{
    return ConfigReader::decode(readAll(Config::buttonsPath())).value_or(BarConfig());
}

} // namespace

void TestDocument::commitSavesBacksUpAndRecordsUndo()
{
    TempConfigDir dir;
    ManualClock time;
    ConfigDocument document(Config::load(time.now), time.clock());
    int rebuilds = 0;
    document.setAfterChange([&] { ++rebuilds; });
    QVERIFY(!document.canUndo());

    document.cfg().buttons.append(button(QStringLiteral("One")));
    document.commit();
    QCOMPARE(rebuilds, 1);
    QVERIFY(document.canUndo());
    QCOMPARE(loadedFromDisk(), document.cfg());
    QCOMPARE(document.lastSaved(), document.cfg());
    // The backup holds the state before the change.
    QCOMPARE(Config::backupFiles().size(), 1);
    QCOMPARE(readAll(Config::backupFiles().first()), Config::encoded(Config::defaults()));

    // Within five minutes: saved, but no new backup.
    time.now = time.now.addSecs(120);
    document.cfg().buttons.append(button(QStringLiteral("Two")));
    document.commit();
    QCOMPARE(Config::backupFiles().size(), 1);
    // Five minutes after the first backup: the state after the first commit is backed up.
    time.now = time.now.addSecs(180);
    document.commit(); // an unchanged document still commits
    QCOMPARE(Config::backupFiles().size(), 2);
    QCOMPARE(document.history().size(), 3);
    QCOMPARE(rebuilds, 3);
}

void TestDocument::historyHoldsThirtyAndUndoWalksBack()
{
    TempConfigDir dir;
    ManualClock time;
    ConfigDocument document(Config::load(time.now), time.clock());
    for (int i = 1; i <= 31; ++i) {
        document.cfg().hotkey = QStringLiteral("ctrl+%1").arg(i);
        document.commit();
    }
    QCOMPARE(document.history().size(), ConfigDocument::maxHistory);
    QCOMPARE(document.history().first().hotkey, std::optional<QString>(QStringLiteral("ctrl+1")));

    int rebuilds = 0;
    document.setAfterChange([&] { ++rebuilds; });
    document.undo();
    QCOMPARE(document.cfg().hotkey, std::optional<QString>(QStringLiteral("ctrl+30")));
    QCOMPARE(document.lastSaved(), document.cfg());
    QCOMPARE(loadedFromDisk().hotkey, std::optional<QString>(QStringLiteral("ctrl+30")));
    for (int i = 0; i < 29; ++i)
        document.undo();
    QVERIFY(!document.canUndo());
    QCOMPARE(document.cfg().hotkey, std::optional<QString>(QStringLiteral("ctrl+1")));
    QCOMPARE(rebuilds, 30);
    document.undo(); // nothing left: no change, no save, no rebuild
    QCOMPARE(rebuilds, 30);
    QCOMPARE(document.cfg().hotkey, std::optional<QString>(QStringLiteral("ctrl+1")));
}

void TestDocument::emptyApplicationSetsAreDroppedOnCommit()
{
    TempConfigDir dir;
    BarConfig start = Config::defaults();
    start.appSets = QList<AppSet>{{QStringLiteral("a"), QStringLiteral("A"), {button(QStringLiteral("x"))}},
                                  {QStringLiteral("b"), QStringLiteral("B"), {}},
                                  {QStringLiteral("c"), QStringLiteral("C"), {button(QStringLiteral("y"))}}};
    ConfigDocument document(start);
    document.commit();
    QCOMPARE(document.cfg().appSets->size(), 2);
    QCOMPARE(document.cfg().appSets->at(1).app, QStringLiteral("c"));

    document.cfg().appSets->first().buttons.clear();
    document.cfg().appSets->last().buttons.clear();
    document.commit();
    QVERIFY(!document.cfg().appSets);
    QVERIFY(!readAll(Config::buttonsPath()).contains("appSets"));

    // Undo brings back the state as it was saved, sets included, without tidying again.
    document.undo();
    QCOMPARE(document.cfg().appSets->size(), 2);
}

void TestDocument::restoreKeepsCurrentFileAndIsUndoable()
{
    TempConfigDir dir;
    ManualClock time;
    ConfigDocument document(Config::load(time.now), time.clock());
    QVERIFY(Config::snapshot(true, time.now)); // the launch backup
    document.cfg().buttons.removeLast();
    document.commit();
    const QByteArray current = readAll(Config::buttonsPath());

    const QString older = Config::backupFiles().first();
    QVERIFY(!document.restore(dir.file(QStringLiteral("missing.json"))));
    QVERIFY(writeAll(dir.file(QStringLiteral("bad.json")), "{}"));
    QVERIFY(!document.restore(dir.file(QStringLiteral("bad.json"))));
    QCOMPARE(document.history().size(), 1);

    time.now = time.now.addSecs(5);
    QVERIFY(document.restore(older));
    QCOMPARE(document.cfg(), Config::defaults());
    QCOMPARE(readAll(Config::buttonsPath()), Config::encoded(Config::defaults()));
    // The state being replaced was backed up first, once.
    QCOMPARE(Config::backupFiles().size(), 2);
    QCOMPARE(readAll(Config::backupFiles().first()), current);
    document.undo();
    QCOMPARE(document.cfg().buttons.size(), 2);
}

void TestDocument::lockAllMarksEveryDepthAndUnlockRemovesTheKey()
{
    TempConfigDir dir;
    BarConfig start = Config::defaults();
    ButtonSpec inner = button(QStringLiteral("inner"), QStringLiteral("group"));
    inner.children = QList<ButtonSpec>{button(QStringLiteral("deepest"))};
    (*start.buttons[0].children)[0] = inner;
    start.buttons[1].locked = false;
    start.appSets = QList<AppSet>{{QStringLiteral("a"), QStringLiteral("A"), {button(QStringLiteral("x"))}}};
    ConfigDocument document(start);

    document.lockAll(true);
    const BarConfig& locked = document.cfg();
    QVERIFY(locked.buttons[0].isLocked() && locked.buttons[1].isLocked());
    QVERIFY(locked.buttons[0].children->at(0).isLocked());
    QVERIFY(locked.buttons[0].children->at(0).children->at(0).isLocked());
    QVERIFY(locked.appSets->first().buttons.first().isLocked());
    QCOMPARE(document.history().size(), 1);

    document.lockAll(false);
    QVERIFY(!readAll(Config::buttonsPath()).contains("locked"));
}

void TestDocument::presetsCommitOnlyWhenSomethingChanged()
{
    TempConfigDir dir;
    ConfigDocument document(Config::defaults());
    int beeps = 0;
    document.setBeep([&] { ++beeps; });

    document.addPreset(QStringLiteral("No Such Preset"));
    document.removePreset(QStringLiteral("Mail")); // no set for it: nothing, not even a beep
    QCOMPARE(document.history().size(), 0);
    QCOMPARE(beeps, 0);

    document.addPreset(QStringLiteral("Mail"));
    QCOMPARE(document.history().size(), 1);
    QCOMPARE(document.cfg().appSets->first().buttons.size(), 8);
    document.addPreset(QStringLiteral("Mail")); // everything already there
    QCOMPARE(document.history().size(), 1);

    document.cfg().appSets->first().buttons[0].locked = true;
    document.removePreset(QStringLiteral("Mail"));
    QCOMPARE(document.history().size(), 2);
    QCOMPARE(document.cfg().appSets->first().buttons.size(), 1); // the locked one stays
    document.removePreset(QStringLiteral("Mail"));               // nothing left to remove
    QCOMPARE(beeps, 1);
    QCOMPARE(document.history().size(), 2);

    document.cfg().appSets->first().buttons[0].locked.reset();
    document.removePreset(QStringLiteral("Mail"));
    QVERIFY(!document.cfg().appSets); // the emptied set disappears
}

QTEST_APPLESS_MAIN(TestDocument)
#include "tst_document.moc"
