#include "TestSupport.h"
#include "app/StartupCommands.h"
#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigDocument.h"
#include "config/ConfigReader.h"

#include <QElapsedTimer>
#include <QRandomGenerator>
#include <QTest>
#include <csignal>
#include <poll.h>
#include <random>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

class TestDocument : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void commitSavesBacksUpAndRecordsUndo();
    void historyHoldsThirtyAndUndoWalksBack();
    void emptyApplicationSetsAreDroppedOnCommit();
    void restoreKeepsCurrentFileAndIsUndoable();
    void restoreTakesOnlyABackupName_data();
    void restoreTakesOnlyABackupName();
    void failedSaveLeavesDiskAlone_data();
    void failedSaveLeavesDiskAlone();
    void bytesNotWrittenHereAreKeptFirst_data();
    void bytesNotWrittenHereAreKeptFirst();
    void killedAtAnyInstantLeavesOldOrNewDocument();
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

/// The i-th of a series of documents; their sizes vary, so a file cut off part-way shows.
BarConfig numbered(int i, int size = 0)
{
    BarConfig config;
    for (int b = 0; b <= (size ? size - 1 : i % 9); ++b)
        config.buttons.append(button(QStringLiteral("Document %1, button %2").arg(i).arg(b)));
    return config;
}

/// What a row does to the configuration folder before the save.
using Trouble = std::function<void(const TempConfigDir&)>;

/// Every report a child wrote into the pipe until `count` have come or the pipe is closed or the deadline
/// passes; the newest one, if any, is left in `newest`.
int readReports(int fd, int count, int deadlineMs, int& newest)
{
    QElapsedTimer waited;
    waited.start();
    int got = 0;
    while (got < count) {
        pollfd ready{fd, POLLIN, 0};
        if (::poll(&ready, 1, int(std::max<qint64>(0, deadlineMs - waited.elapsed()))) <= 0)
            break;
        int reports[1024];
        const ssize_t size = ::read(fd, reports, sizeof reports);
        if (size <= 0)
            break;
        got += int(size / sizeof(int));
        newest = reports[size / sizeof(int) - 1];
    }
    return got;
}

} // namespace

Q_DECLARE_METATYPE(Trouble)

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

void TestDocument::restoreTakesOnlyABackupName_data()
{
    QTest::addColumn<QString>("name"); // "@" stands for the temporary configuration folder
    QTest::addColumn<bool>("restored");
    QTest::newRow("file name") << QStringLiteral("buttons-2025-03-13-080000.json") << true;
    QTest::newRow("parent folder") << QStringLiteral("../elsewhere.json") << false;
    QTest::newRow("absolute path") << QStringLiteral("@/elsewhere.json") << false;
    QTest::newRow("subfolder") << QStringLiteral("sub/buttons-2025-03-13-080000.json") << false;
    QTest::newRow("dot") << QStringLiteral(".") << false;
    QTest::newRow("dot dot") << QStringLiteral("..") << false;
}

void TestDocument::restoreTakesOnlyABackupName()
{
    QFETCH(QString, name);
    QFETCH(bool, restored);
    TempConfigDir dir;
    ConfigDocument document(Config::loadDocument());
    const QByteArray other = Config::encoded(numbered(1));
    QVERIFY(QDir().mkpath(dir.backups() + QStringLiteral("/sub")));
    for (const char* path :
         {"backups/buttons-2025-03-13-080000.json", "backups/sub/buttons-2025-03-13-080000.json",
          "elsewhere.json", "backups/elsewhere.json"})
        QVERIFY(writeAll(dir.file(QString::fromUtf8(path)), other));

    QProcessEnvironment environment;
    environment.insert(QStringLiteral("VANTRIL_RESTORE"), name.replace(QLatin1Char('@'), dir.path()));
    StartupCommands::applyConfigCommands(document, environment);
    QCOMPARE(document.cfg(), restored ? numbered(1) : Config::defaults());
    QCOMPARE(document.history().size(), restored ? 1 : 0);
}

void TestDocument::failedSaveLeavesDiskAlone_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<qint64>("fileSizeLimit"); // negative: none
    const Trouble none = [](const TempConfigDir&) {};
    QTest::newRow("read-only folder") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner));
    }) << qint64(-1);
    QTest::newRow("folder named by a file") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(writeAll(dir.file(QStringLiteral("plain")), "mine"));
        qputenv("VANTRIL_CONFIG_DIR", QFile::encodeName(dir.file(QStringLiteral("plain"))));
    }) << qint64(-1);
    QTest::newRow("buttons.json is a folder") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QFile::remove(dir.buttonsJson()) && QDir().mkpath(dir.buttonsJson()));
        QVERIFY(writeAll(dir.buttonsJson() + QStringLiteral("/notes"), "mine"));
    }) << qint64(-1);
    // Neither the backup nor the document fits: on Qt's buffered writes both became cut-off files.
    QTest::newRow("file-size limit") << none << qint64(16);
    // The backup of the small old document fits, the new one does not.
    QTest::newRow("file-size limit after the backup") << none << qint64(1000);
}

void TestDocument::failedSaveLeavesDiskAlone()
{
    QFETCH(Trouble, trouble);
    QFETCH(qint64, fileSizeLimit);
    TempConfigDir dir;
    ManualClock time;
    QVERIFY(Config::save(numbered(1, 1)));
    QVERIFY(QDir().mkpath(dir.backups()));
    QVERIFY(writeAll(dir.backups() + QStringLiteral("/buttons-2025-03-13-080000.json"), "{\"buttons\":[]}"));
    ConfigDocument document(Config::loadDocument(time.now), time.clock());
    trouble(dir);
    const QMap<QString, QByteArray> before = filesUnder(dir.path());

    StderrCapture log;
    const BarConfig changed = numbered(2, 30);
    const int code = inChild(
        dir.path(),
        [&] {
            int rebuilds = 0;
            document.setAfterChange([&] { ++rebuilds; });
            document.cfg() = changed;
            document.commit();
            // What the user sees and edits further is the new document, saved or not.
            return document.cfg() == changed && document.lastSaved() == changed &&
                           document.history().size() == 1 && rebuilds == 1
                       ? 0
                       : 1;
        },
        fileSizeLimit);
    QCOMPARE(code, 0);
    QCOMPARE(log.text(), QString());
    openUp(dir.path());
    QMap<QString, QByteArray> after = filesUnder(dir.path());
    // A backup of the old document may have been written; if so, it is whole.
    const QString backup = QStringLiteral("backups/buttons-2025-03-14-091500.json");
    if (after.contains(backup))
        QCOMPARE(after.take(backup), Config::encoded(numbered(1, 1)));
    QCOMPARE(after, before);
}

void TestDocument::bytesNotWrittenHereAreKeptFirst_data()
{
    QTest::addColumn<QByteArray>("foreign"); // put into buttons.json; empty: the file is left as saved
    QTest::addColumn<bool>("reload");        // the hand edit is shown before the change
    QTest::addColumn<bool>("undo");          // the change is an undo rather than a commit
    QTest::addColumn<int>("fileMode");
    QTest::addColumn<int>("backupsMode");
    QTest::addColumn<bool>("kept"); // a new backup holds the foreign bytes
    QTest::addColumn<bool>("saved");

    const QByteArray edit =
        "{\"buttons\": [{\"title\": \"By hand\", \"symbol\": \"\", \"action\": \"open\"}]}";
    const int readWrite = QFile::ReadOwner | QFile::WriteOwner;
    const int folder = readWrite | QFile::ExeOwner;
    const int readOnly = QFile::ReadOwner | QFile::ExeOwner;
    // The program's own bytes: the five-minute throttle holds.
    QTest::newRow("own bytes") << QByteArray() << false << false << readWrite << folder << false << true;
    QTest::newRow("hand edit, commit") << edit << true << false << readWrite << folder << true << true;
    // The history does not hold the hand edit, so an undo would otherwise drop it without a trace.
    QTest::newRow("hand edit, undo") << edit << true << true << readWrite << folder << true << true;
    QTest::newRow("layout only, not reloaded") << Config::encoded(numbered(2)) + "\n"
                                               << false << false << readWrite << folder << true << true;
    QTest::newRow("does not decode") << QByteArray("{by hand") << false << false << readWrite << folder
                                     << true << true;
    QTest::newRow("unreadable") << edit << false << false << int(QFile::WriteOwner) << folder << false
                                << false;
    QTest::newRow("read-only backups") << edit << false << false << readWrite << readOnly << false << false;
}

void TestDocument::bytesNotWrittenHereAreKeptFirst()
{
    QFETCH(QByteArray, foreign);
    QFETCH(bool, reload);
    QFETCH(bool, undo);
    QFETCH(int, fileMode);
    QFETCH(int, backupsMode);
    QFETCH(bool, kept);
    QFETCH(bool, saved);
    TempConfigDir dir;
    ManualClock time;
    QVERIFY(Config::save(numbered(1)));
    ConfigDocument document(Config::loadDocument(time.now), time.clock());
    document.cfg() = numbered(2);
    document.commit(); // backs up the first document and starts the five-minute throttle
    time.now = time.now.addSecs(10);
    if (!foreign.isEmpty())
        QVERIFY(writeAll(dir.buttonsJson(), foreign));
    const QByteArray onDisk = readAll(dir.buttonsJson());
    const QMap<QString, QByteArray> before = filesUnder(dir.backups());
    QVERIFY(QFile::setPermissions(dir.buttonsJson(), QFile::Permissions(fileMode)));
    QVERIFY(QFile::setPermissions(dir.backups(), QFile::Permissions(backupsMode)));

    const BarConfig expected = undo ? numbered(1) : numbered(3);
    QCOMPARE(inChild(dir.path(),
                     [&] {
                         if (reload)
                             document.adoptExternal(ConfigReader::decode(foreign).value());
                         if (undo)
                             document.undo();
                         else {
                             document.cfg() = numbered(3);
                             document.commit();
                         }
                         return document.cfg() == expected ? 0 : 1;
                     }),
             0);
    openUp(dir.path());
    QCOMPARE(readAll(dir.buttonsJson()), saved ? Config::encoded(expected) : onDisk);
    QMap<QString, QByteArray> added = filesUnder(dir.backups());
    for (auto it = before.begin(); it != before.end(); ++it)
        QCOMPARE(added.take(it.key()), it.value());
    QCOMPARE(added.values(), kept ? QList<QByteArray>{foreign} : QList<QByteArray>{});
}

void TestDocument::killedAtAnyInstantLeavesOldOrNewDocument()
{
    // A dozen kills here; VANTRIL_KILLS=200 for a long run.
    const int kills =
        qEnvironmentVariableIsSet("VANTRIL_KILLS") ? qEnvironmentVariableIntValue("VANTRIL_KILLS") : 12;
    TempConfigDir dir;
    QVERIFY(Config::save(numbered(0)));
    const quint32 seed = QRandomGenerator::system()->generate();
    std::mt19937 random(seed);
    const QDateTime start(QDate(2025, 3, 14), QTime(9, 0, 0));
    int newest = 0; // the newest document known to be on disk
    qint64 spanUs = 0;
    for (int kill = 0; kill < kills; ++kill) {
        int reports[2];
        QCOMPARE(::pipe(reports), 0);
        const int first = newest + 1;
        const pid_t pid = ::fork();
        if (pid == 0) {
            ::close(reports[0]);
            int i = first;
            // Five minutes between commits, so that each one writes a backup too and prunes old ones.
            ConfigDocument document(Config::loadDocument(), [&] { return start.addSecs(301 * i); });
            for (;; ++i) {
                document.cfg() = numbered(i);
                document.commit();
                if (::write(reports[1], &i, sizeof i) != sizeof i)
                    ::_exit(1);
            }
        }
        ::close(reports[1]);
        int reported = newest;
        int calibration = 0;
        if (spanUs == 0) {
            // The first run measures how long a commit takes here; later kills land anywhere in a few.
            QElapsedTimer running;
            running.start();
            calibration = readReports(reports[0], 10, 60000, reported);
            spanUs = std::max<qint64>(1000, running.nsecsElapsed() / 1000 / 10 * 4);
        } else {
            // This wait is the random instant of the kill, not a wait for anything.
            std::this_thread::sleep_for(
                std::chrono::microseconds(std::uniform_int_distribution<qint64>(0, spanUs)(random)));
        }
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);
        readReports(reports[0], INT_MAX, 60000, reported);
        ::close(reports[0]);
        if (kill == 0)
            QVERIFY2(calibration >= 10, "fewer than ten commits in a minute");

        // The commit after the last one reported may have finished before the kill, or not.
        const QByteArray onDisk = readAll(dir.buttonsJson());
        const bool next = onDisk == Config::encoded(numbered(reported + 1));
        const QByteArray where =
            QStringLiteral("kill %1 of %2, seed %3").arg(kill + 1).arg(kills).arg(seed).toUtf8();
        QVERIFY2(next || onDisk == Config::encoded(numbered(reported)), where.constData());
        for (const QString& name : entries(dir.backups()))
            QVERIFY2(ConfigReader::decode(readAll(dir.backups() + QLatin1Char('/') + name)),
                     QByteArray(where + ' ' + name.toUtf8()).constData());
        newest = next ? reported + 1 : reported;
    }
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
