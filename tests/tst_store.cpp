// Where the configuration lives on disk and how it changes there: loading and recovery, atomic saves,
// the backups beside it, and the document whose every change is saved, backed up and can be undone.

#include "TestSupport.h"
#include "app/StartupCommands.h"
#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigDocument.h"
#include "config/ConfigReader.h"
#include "config/ConfigWatcher.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QLocale>
#include <QRandomGenerator>
#include <QScopeGuard>
#include <QTest>
#include <atomic>
#include <csignal>
#include <random>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>

class TestStore : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folderFollowsEnvironment_data();
    void folderFollowsEnvironment();
    void loadingWithoutABackup_data();
    void loadingWithoutABackup();
    void recoveryOverwritesOnlyWhatIsKept_data();
    void recoveryOverwritesOnlyWhatIsKept();
    void saveIsAtomicAndKeepsLinksAndPermissions();
    void unusableFolderFallsBackToDefaults();

    void stampAndDateAreInverse();
    void listsRegularBackupsNewestFirst();
    void throttleHoldsUnforcedSnapshotsForFiveMinutes();
    void identicalBytesAreNeverBackedUpTwice();
    void unreadableFileIsKeptAsInvalidCopy();
    void troubleInBackupsFolderLosesNothing_data();
    void troubleInBackupsFolderLosesNothing();
    void keepsFortyBesideNotesAndInvalidCopies();
    void restoreListLabelsAndLimits();
    void watcherFollowsOnlyRealHandEdits_data();
    void watcherFollowsOnlyRealHandEdits();

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

const QDateTime noon(QDate(2025, 3, 14), QTime(12, 0, 0));

const QDateTime t0(QDate(2025, 3, 14), QTime(9, 15, 0));

QByteArray document(int buttons)
{
    QByteArray text = R"({"buttons":[)";
    for (int i = 0; i < buttons; ++i)
        text += (i ? "," : "") + QByteArray(R"({"title":"b)") + QByteArray::number(i) +
                R"(","symbol":"","action":"open"})";
    return text + "]}";
}

QStringList backupNames()
{
    QStringList names;
    for (const QString& path : Config::backupFiles())
        names.append(QFileInfo(path).fileName());
    return names;
}

/// A clock the test moves by hand.
struct ManualClock
{
    QDateTime now{QDate(2025, 3, 14), QTime(9, 15, 0)};
    Clock clock()
    {
        return [this] { return now; };
    }
};

/// The i-th of a series of documents; their sizes vary, so a file cut off part-way shows.
BarConfig numbered(int i, int size = 0)
{
    BarConfig config;
    for (int b = 0; b <= (size ? size - 1 : i % 9); ++b)
        config.buttons.append(button(u"Document %1, button %2"_s.arg(i).arg(b)));
    return config;
}

/// What a row does to the configuration folder before the step under test.
using Trouble = std::function<void(const TempConfigDir&)>;

} // namespace

Q_DECLARE_METATYPE(Trouble)

void TestStore::folderFollowsEnvironment_data()
{
    QTest::addColumn<QVariant>("own"); // VANTRIL_CONFIG_DIR, invalid: unset
    QTest::addColumn<QVariant>("xdg"); // XDG_CONFIG_HOME, invalid: unset
    QTest::addColumn<QString>("folder");
    const QString home = QDir::homePath();
    QTest::newRow("neither") << QVariant() << QVariant() << home + u"/.config/vantril"_s;
    QTest::newRow("XDG") << QVariant() << QVariant(u"/tmp/xdg-somewhere"_s)
                         << u"/tmp/xdg-somewhere/vantril"_s;
    // A relative XDG_CONFIG_HOME is invalid by the base-directory rules and is ignored.
    QTest::newRow("relative XDG") << QVariant() << QVariant(u"relative/dir"_s)
                                  << home + u"/.config/vantril"_s;
    QTest::newRow("own before XDG") << QVariant(u"/srv/bar config/~x"_s) << QVariant(u"/tmp/xdg"_s)
                                    << u"/srv/bar config/~x"_s;
    QTest::newRow("own, relative") << QVariant(u"sub/dir"_s) << QVariant()
                                   << QDir::current().absoluteFilePath(u"sub/dir"_s);
    // Set but empty is still set: the current folder, not the default.
    QTest::newRow("own, empty") << QVariant(QString()) << QVariant() << QDir::currentPath();
}

void TestStore::folderFollowsEnvironment()
{
    QFETCH(QVariant, own);
    QFETCH(QVariant, xdg);
    QFETCH(QString, folder);
    TempConfigDir restoresTheOwnFolder;
    const QByteArray xdgBefore = qgetenv("XDG_CONFIG_HOME");
    const bool xdgWasSet = qEnvironmentVariableIsSet("XDG_CONFIG_HOME");
    const auto restore = qScopeGuard(
        [&] { xdgWasSet ? qputenv("XDG_CONFIG_HOME", xdgBefore) : qunsetenv("XDG_CONFIG_HOME"); });
    for (const auto& [name, value] :
         {std::pair{"VANTRIL_CONFIG_DIR", own}, std::pair{"XDG_CONFIG_HOME", xdg}}) {
        if (value.isValid())
            qputenv(name, value.toString().toLocal8Bit());
        else
            qunsetenv(name);
    }
    QCOMPARE(Config::dir(), folder);
    QCOMPARE(Config::buttonsPath(), folder + u"/buttons.json"_s);
    QCOMPARE(Config::backupsDir(), folder + u"/backups"_s);
}

void TestStore::loadingWithoutABackup_data()
{
    QTest::addColumn<QByteArray>("file"); // buttons.json before the start; "-": none
    QTest::addColumn<bool>("readable");
    const QByteArray valid =
        "  {\"buttons\":[{\"title\":\"X\",\"symbol\":\"\",\"action\":\"open\",\"unknown\":1}]}\n";
    QTest::newRow("first launch writes the defaults") << QByteArray("-") << true;
    QTest::newRow("valid file is read, not written") << valid << true;
    QTest::newRow("zero bytes") << QByteArray() << false;
    QTest::newRow("not json") << QByteArray("buttons = [files, apps]") << false;
    QTest::newRow("missing symbol") << QByteArray(R"({"buttons":[{"title":"a","action":"open"}]})") << false;
}

void TestStore::loadingWithoutABackup()
{
    QFETCH(QByteArray, file);
    QFETCH(bool, readable);
    TempConfigDir dir;
    // A folder that is not there yet is made, parents and all.
    const QString folder = dir.file(u"a/b/c"_s);
    qputenv("VANTRIL_CONFIG_DIR", folder.toLocal8Bit());
    if (file != "-")
        QVERIFY(QDir().mkpath(folder) && writeAll(folder + u"/buttons.json"_s, file));
    StderrCapture log;
    const BarConfig config = Config::load(noon);
    const QByteArray after = file == "-" ? Config::encoded(Config::defaults()) : file;
    QCOMPARE(config, ConfigReader::decode(after).value_or(Config::defaults()));
    QCOMPARE(readAll(folder + u"/buttons.json"_s), after);
    if (readable) {
        QCOMPARE(entries(folder), QStringList{u"buttons.json"_s}); // no backups folder yet
        QCOMPARE(log.text(), QString());
        return;
    }
    QCOMPARE(log.text(), u"buttons.json was unreadable and there is no backup; "
                         "using defaults without overwriting it\n"_s);
    QCOMPARE(filesUnder(folder + u"/backups"_s),
             (QMap<QString, QByteArray>{{u"invalid-2025-03-14-120000.json"_s, file}}));
}

void TestStore::recoveryOverwritesOnlyWhatIsKept_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<bool>("replaced");       // buttons.json now holds the backup's bytes
    QTest::addColumn<QStringList>("invalid"); // the "invalid-" copies made or kept of the broken file

    const QString kept = u"invalid-2025-03-13-090000.json"_s;
    const QString made = u"invalid-2025-03-14-120000.json"_s;
    const auto keepBroken = [](const TempConfigDir& dir) {
        QVERIFY(writeAll(dir.backups() + u"/invalid-2025-03-13-090000.json"_s, "{broken"));
    };
    const auto readOnlyBackups = [](const TempConfigDir& dir) {
        QVERIFY(QFile::setPermissions(dir.backups(), QFile::ReadOwner | QFile::ExeOwner));
    };
    QTest::newRow("copy made") << Trouble([](const TempConfigDir&) {}) << true << QStringList{made};
    QTest::newRow("read-only backups folder") << Trouble(readOnlyBackups) << false << QStringList{};
    QTest::newRow("unreadable file") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QFile::setPermissions(dir.buttonsJson(), QFile::WriteOwner));
    }) << false << QStringList{};
    // A start that meets the same broken bytes again adds no second copy, and the one there is enough.
    QTest::newRow("same bytes kept before") << Trouble(keepBroken) << true << QStringList{kept};
    QTest::newRow("same bytes kept, read-only folder") << Trouble([=](const TempConfigDir& dir) {
        keepBroken(dir);
        readOnlyBackups(dir);
    }) << true << QStringList{kept};
    QTest::newRow("buttons.json is a folder") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QFile::remove(dir.buttonsJson()) && QDir().mkpath(dir.buttonsJson()));
    }) << false << QStringList{};
    QTest::newRow("buttons.json is a FIFO") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QFile::remove(dir.buttonsJson()));
        QCOMPARE(::mkfifo(QFile::encodeName(dir.buttonsJson()).constData(), 0600), 0);
    }) << false << QStringList{};
}

void TestStore::recoveryOverwritesOnlyWhatIsKept()
{
    QFETCH(Trouble, trouble);
    QFETCH(bool, replaced);
    QFETCH(QStringList, invalid);
    TempConfigDir dir;
    QVERIFY(QDir().mkpath(dir.backups()));
    // The newest backup is broken too, and "invalid-" copies are never restored: the good one before them,
    // with a layout of its own, is.
    const QByteArray good = "{ \"buttons\" : [ {\"title\":\"Good\",\"symbol\":\"\",\"action\":\"open\"} ] }";
    const QMap<QString, QByteArray> backups = {{u"buttons-2025-03-10-080000.json"_s, document(3)},
                                               {u"buttons-2025-03-12-080000.json"_s, good},
                                               {u"buttons-2025-03-13-080000.json"_s, "{broken"},
                                               {u"invalid-2025-03-13-100000.json"_s, document(4)}};
    for (auto it = backups.begin(); it != backups.end(); ++it)
        QVERIFY(writeAll(dir.backups() + u'/' + it.key(), it.value()));
    QVERIFY(writeAll(dir.buttonsJson(), "{broken"));
    trouble(dir);
    const bool wasFile = QFileInfo(dir.buttonsJson()).isFile();

    StderrCapture log;
    const int code = inChild(dir.path(), [&] {
        const Config::Loaded loaded = Config::loadDocument(noon);
        const bool known = loaded.knownBytes == std::optional<QByteArray>(good);
        return loaded.config.buttons.first().title == u"Good"_s && known == replaced ? 0 : 1;
    });
    QCOMPARE(code, 0);
    QCOMPARE(log.text(), u"buttons.json was unreadable; restored the newest backup "
                         "buttons-2025-03-12-080000.json\n"_s);
    openUp(dir.path());
    QCOMPARE(QFileInfo(dir.buttonsJson()).isFile(), wasFile);
    if (wasFile) // the backup's own bytes, not re-encoded
        QCOMPARE(readAll(dir.buttonsJson()), replaced ? good : QByteArray("{broken"));
    // No regular backup is added, and only copies of the broken file.
    QMap<QString, QByteArray> left = filesUnder(dir.backups());
    for (auto it = backups.begin(); it != backups.end(); ++it)
        QCOMPARE(left.take(it.key()), it.value());
    QCOMPARE(left.keys(), invalid);
    for (const QByteArray& copy : left)
        QCOMPARE(copy, QByteArray("{broken"));
}

void TestStore::saveIsAtomicAndKeepsLinksAndPermissions()
{
    TempConfigDir dir;
    const QString realFile = dir.file(u"dotfiles/buttons.json"_s);
    QVERIFY(QDir().mkpath(dir.file(u"dotfiles"_s)));
    QVERIFY(writeAll(realFile, document(1)));
    QVERIFY(QFile::setPermissions(realFile, QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(QFile::link(realFile, dir.buttonsJson()));

    BarConfig changed = Config::defaults();
    Config::save(changed);
    QVERIFY(QFileInfo(dir.buttonsJson()).isSymLink());
    QCOMPARE(readAll(realFile), Config::encoded(changed));
    QCOMPARE(QFile::permissions(realFile) & 0x7777,
             QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    // Nothing else is left behind in either folder.
    QCOMPARE(entries(dir.path()), (QStringList{u"buttons.json"_s, u"dotfiles"_s}));
    QCOMPARE(entries(dir.file(u"dotfiles"_s)), QStringList{u"buttons.json"_s});
}

void TestStore::unusableFolderFallsBackToDefaults()
{
    TempConfigDir dir;
    QVERIFY(writeAll(dir.file(u"plainfile"_s), "x"));
    qputenv("VANTRIL_CONFIG_DIR", dir.file(u"plainfile/inside"_s).toLocal8Bit());
    StderrCapture log;
    QCOMPARE(Config::load(noon), Config::defaults());
    Config::save(Config::defaults()); // fails quietly
    QCOMPARE(log.text(), QString());
    QCOMPARE(readAll(dir.file(u"plainfile"_s)), QByteArray("x"));
}

void TestStore::stampAndDateAreInverse()
{
    QCOMPARE(Config::stamp(t0), u"2025-03-14-091500"_s);
    QCOMPARE(Config::date(u"/x/buttons-2025-03-14-091500.json"_s), std::optional<QDateTime>(t0));
    // The first eight characters are dropped whatever they are.
    QCOMPARE(Config::date(u"invalid-2025-03-14-091500.json"_s), std::optional<QDateTime>(t0));
    for (const char* name :
         {"buttons-notes.json", "buttons-2025-3-14-091500.json", "buttons-2025-04-31-091500.json",
          "buttons-2025-03-14-091500x.json", "buttons-2025-03-14-251500.json", "buttons-.json"})
        QVERIFY2(!Config::date(QString::fromUtf8(name)), name);
}

void TestStore::listsRegularBackupsNewestFirst()
{
    TempConfigDir dir;
    QVERIFY(Config::backupFiles().isEmpty()); // no folder at all
    QVERIFY(QDir().mkpath(dir.backups()));
    for (const char* name : {"buttons-2025-01-01-000000.json", "buttons-2025-02-01-000000.json",
                             "invalid-2025-03-01-000000.json", "buttons-2025-02-01-000000.json.bak",
                             "Buttons-2025-04-01-000000.json", "buttons-2024-12-31-235959.JSON", "notes.txt"})
        QVERIFY(writeAll(dir.backups() + QLatin1Char('/') + QString::fromUtf8(name), "x"));
    QCOMPARE(backupNames(),
             (QStringList{u"buttons-2025-02-01-000000.json"_s, u"buttons-2025-01-01-000000.json"_s}));
    QCOMPARE(Config::backupFiles().first(), dir.backups() + u"/buttons-2025-02-01-000000.json"_s);
}

void TestStore::throttleHoldsUnforcedSnapshotsForFiveMinutes()
{
    TempConfigDir dir;
    QVERIFY(!Config::snapshot(false, t0)); // no buttons.json yet
    QVERIFY(!QDir(dir.backups()).exists());

    QVERIFY(writeAll(dir.buttonsJson(), document(1)));
    QVERIFY(Config::snapshot(false, t0));
    QVERIFY(writeAll(dir.buttonsJson(), document(2)));
    QVERIFY(!Config::snapshot(false, t0.addSecs(299)));
    QVERIFY(Config::snapshot(true, t0.addSecs(299))); // forced ignores the throttle
    QVERIFY(writeAll(dir.buttonsJson(), document(3)));
    QVERIFY(!Config::snapshot(false, t0.addSecs(299 + 299)));
    QVERIFY(Config::snapshot(false, t0.addSecs(299 + 300)));
    QCOMPARE(backupNames(),
             (QStringList{u"buttons-2025-03-14-092459.json"_s, u"buttons-2025-03-14-091959.json"_s,
                          u"buttons-2025-03-14-091500.json"_s}));
    QCOMPARE(readAll(Config::backupFiles().last()), document(1));

    // A stamp in the future blocks unforced snapshots until five minutes after it.
    QVERIFY(writeAll(dir.backups() + u"/buttons-2025-03-14-120000.json"_s, document(9)));
    QVERIFY(writeAll(dir.buttonsJson(), document(4)));
    QVERIFY(!Config::snapshot(false, t0.addSecs(3600)));
    QVERIFY(!Config::snapshot(false, QDateTime(t0.date(), QTime(12, 4, 59))));
    QVERIFY(Config::snapshot(false, QDateTime(t0.date(), QTime(12, 5, 0))));

    // Two snapshots in the same second share a name: the second replaces the first.
    const QDateTime later(t0.date(), QTime(13, 0, 0));
    QVERIFY(writeAll(dir.buttonsJson(), document(5)));
    QVERIFY(Config::snapshot(true, later.addMSecs(100)));
    const qsizetype count = Config::backupFiles().size();
    QVERIFY(writeAll(dir.buttonsJson(), document(6)));
    QVERIFY(Config::snapshot(true, later.addMSecs(900)));
    QCOMPARE(Config::backupFiles().size(), count);
    QCOMPARE(readAll(Config::backupFiles().first()), document(6));
}

void TestStore::identicalBytesAreNeverBackedUpTwice()
{
    TempConfigDir dir;
    QVERIFY(writeAll(dir.buttonsJson(), document(1)));
    QVERIFY(Config::snapshot(true, t0));
    QVERIFY(!Config::snapshot(true, t0.addSecs(3600)));
    // Same meaning, different bytes: a new backup.
    QVERIFY(writeAll(dir.buttonsJson(), document(1) + "\n"));
    QVERIFY(Config::snapshot(true, t0.addSecs(7200)));
}

void TestStore::unreadableFileIsKeptAsInvalidCopy()
{
    TempConfigDir dir;
    QVERIFY(writeAll(dir.buttonsJson(), "{\"buttons\": 1}"));
    QVERIFY(!Config::snapshot(true, t0));
    QVERIFY(writeAll(dir.buttonsJson(), "{\"buttons\": 2}"));
    QVERIFY(!Config::snapshot(false, t0.addSecs(2)));
    // Other broken bytes in the same second do not replace a copy, which is never deleted.
    QVERIFY(writeAll(dir.buttonsJson(), "{\"buttons\": 3}"));
    QVERIFY(!Config::keepCopy(t0.addSecs(2)));
    QCOMPARE(entries(dir.backups()),
             (QStringList{u"invalid-2025-03-14-091500.json"_s, u"invalid-2025-03-14-091502.json"_s}));
    QCOMPARE(readAll(dir.backups() + u"/invalid-2025-03-14-091502.json"_s), QByteArray("{\"buttons\": 2}"));
}

void TestStore::troubleInBackupsFolderLosesNothing_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<int>("folderMode");       // the backups folder's permissions, 0: left alone
    QTest::addColumn<qint64>("fileSizeLimit"); // negative: none
    QTest::addColumn<bool>("written");

    const Trouble none = [](const TempConfigDir&) {};
    const int readOnly = QFile::ReadOwner | QFile::ExeOwner;
    const int notListable = QFile::WriteOwner | QFile::ExeOwner;
    // A copy that does not fit must not push the oldest of forty out.
    QTest::newRow("file-size limit, forty backups") << Trouble([](const TempConfigDir& dir) {
        for (int i = 0; i < 38; ++i)
            QVERIFY(writeAll(dir.backups() + u"/buttons-2025-03-13-%1.json"_s.arg(i, 6, 10, QLatin1Char('0')),
                             document(10 + i)));
    }) << 0 << qint64(16) << false;
    QTest::newRow("read-only folder") << none << readOnly << qint64(-1) << false;
    QTest::newRow("writable, not listable") << none << notListable << qint64(-1) << true;
    // Named as the newest, with a stamp in the future that would hold back every unforced snapshot.
    QTest::newRow("folder named like a backup") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QDir().mkpath(dir.backups() + u"/buttons-2099-01-01-000000.json/x"_s));
    }) << 0 << qint64(-1) << true;
    QTest::newRow("FIFO named like a backup") << Trouble([](const TempConfigDir& dir) {
        const QString fifo = dir.backups() + u"/buttons-2099-01-01-000000.json"_s;
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    }) << 0 << qint64(-1) << true;
    QTest::newRow("backups is a file") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QDir(dir.backups()).removeRecursively() && writeAll(dir.backups(), "mine"));
    }) << 0 << qint64(-1) << false;
}

void TestStore::troubleInBackupsFolderLosesNothing()
{
    QFETCH(Trouble, trouble);
    QFETCH(int, folderMode);
    QFETCH(qint64, fileSizeLimit);
    QFETCH(bool, written);
    TempConfigDir dir;
    QVERIFY(QDir().mkpath(dir.backups()));
    QVERIFY(writeAll(dir.backups() + u"/buttons-2025-03-14-080000.json"_s, document(1)));
    QVERIFY(writeAll(dir.backups() + u"/buttons-2025-03-14-081000.json"_s, document(2)));
    QVERIFY(writeAll(dir.buttonsJson(), document(3)));
    trouble(dir);
    const QMap<QString, QByteArray> before = filesUnder(dir.path());
    if (folderMode)
        QVERIFY(QFile::setPermissions(dir.backups(), QFile::Permissions(folderMode)));

    QCOMPARE(inChild(
                 dir.path(), [] { return Config::snapshot(false, t0) ? 1 : 0; }, fileSizeLimit),
             written ? 1 : 0);
    openUp(dir.path());
    QMap<QString, QByteArray> after = filesUnder(dir.path());
    if (written)
        QCOMPARE(after.take(u"backups/buttons-2025-03-14-091500.json"_s), document(3));
    QCOMPARE(after, before);
}

void TestStore::keepsFortyBesideNotesAndInvalidCopies()
{
    TempConfigDir dir;
    QVERIFY(QDir().mkpath(dir.backups()));
    const QString invalid = dir.backups() + u"/invalid-2000-01-01-000000.json"_s;
    QVERIFY(writeAll(invalid, "x"));
    // A notes file written by hand sorts as the newest backup.
    const QString notes = dir.backups() + u"/buttons-notes.json"_s;
    QVERIFY(writeAll(notes, document(1)));
    QVERIFY(writeAll(dir.buttonsJson(), document(1)));

    QVERIFY(!Config::snapshot(true, t0)); // identical to the "newest"
    QVERIFY(writeAll(dir.buttonsJson(), document(2)));
    QVERIFY(Config::snapshot(false, t0)); // no time in its name, so no throttle
    QVERIFY(writeAll(dir.buttonsJson(), document(3)));
    QVERIFY(Config::snapshot(false, t0.addSecs(10))); // still compared with the notes, never throttled
    QCOMPARE(backupNames().first(), u"buttons-notes.json"_s);

    for (int i = 0; i < 45; ++i) {
        QVERIFY(writeAll(dir.buttonsJson(), document(10 + i)));
        QVERIFY(Config::snapshot(true, t0.addSecs(100 + i)));
    }
    // The oldest went; the notes sort first, so they are never pruned, and invalid copies do not count.
    QCOMPARE(Config::backupFiles().size(), Config::maxBackups);
    QCOMPARE(backupNames().last(), u"buttons-2025-03-14-091646.json"_s);
    QVERIFY(QFile::exists(notes) && QFile::exists(invalid));
    const QList<BackupInfo> infos = Config::backupInfos();
    QCOMPARE(infos.size(), Config::maxListedBackups - 1); // and the notes are never offered for restoring
    QVERIFY(
        std::none_of(infos.begin(), infos.end(), [&](const BackupInfo& info) { return info.id == notes; }));
}

void TestStore::restoreListLabelsAndLimits()
{
    TempConfigDir dir;
    QVERIFY(Config::backupInfos().isEmpty());
    QVERIFY(QDir().mkpath(dir.backups()));
    const QString folder = dir.backups() + QLatin1Char('/');
    // Stacks count with their direct members, sets with their buttons; deeper levels do not count.
    const QByteArray mixed = R"({"buttons":[
        {"title":"s","symbol":"","action":"group","children":[
            {"title":"a","symbol":"","action":"open"},
            {"title":"g","symbol":"","action":"group","children":[{"title":"deep","symbol":"","action":"x"}]}]},
        {"title":"b","symbol":"","action":"open"}],
      "appSets":[{"app":"x","name":"X","buttons":[
            {"title":"c","symbol":"","action":"group","children":[{"title":"d","symbol":"","action":"x"}]}]},
        {"app":"y","name":"Y","buttons":[]}]})";
    QVERIFY(writeAll(folder + u"buttons-2025-03-14-091500.json"_s, mixed));
    QVERIFY(writeAll(folder + u"buttons-2025-03-14-091400.json"_s, document(1)));
    QVERIFY(writeAll(folder + u"buttons-2025-03-14-091300.json"_s, "not json"));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    const QList<BackupInfo> infos = Config::backupInfos();
    QCOMPARE(infos.size(), 2);
    QCOMPARE(infos.at(0).id, folder + u"buttons-2025-03-14-091500.json"_s);
    QCOMPARE(infos.at(0).label, u"14 Mar 2025, 09:15 — 5 buttons"_s);
    QCOMPARE(infos.at(1).label, u"14 Mar 2025, 09:14 — 1 buttons"_s);

    // The label follows the user's language.
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QVERIFY(Config::backupInfos().at(0).label.startsWith(u"14 März 2025, 09:15"_s));
    QLocale::setDefault(QLocale::c());

    // Only the newest fifteen files are looked at, even when some of them are unreadable.
    for (int i = 0; i < 20; ++i) {
        const QString name = u"buttons-2025-04-01-%1.json"_s.arg(i, 6, 10, QLatin1Char('0'));
        QVERIFY(writeAll(folder + name, i % 5 == 0 ? QByteArray("{") : document(2)));
    }
    const QList<BackupInfo> newest = Config::backupInfos();
    QCOMPARE(newest.size(), 12); // 15 files, 3 of them broken
    QVERIFY(newest.first().id.endsWith(u"buttons-2025-04-01-000019.json"_s));
    QVERIFY(newest.last().id.endsWith(u"buttons-2025-04-01-000006.json"_s));
}

void TestStore::commitSavesBacksUpAndRecordsUndo()
{
    TempConfigDir dir;
    ManualClock time;
    ConfigDocument document(Config::load(time.now), time.clock());
    int rebuilds = 0;
    QObject::connect(&document, &ConfigDocument::changed, [&] { ++rebuilds; });
    QVERIFY(!document.canUndo());

    document.cfg().buttons.append(button(u"One"_s));
    document.commit();
    QCOMPARE(rebuilds, 1);
    QVERIFY(document.canUndo());
    QCOMPARE(ConfigReader::decode(readAll(Config::buttonsPath())), std::optional(document.cfg()));
    QCOMPARE(document.lastSaved(), document.cfg());
    // The backup holds the state before the change.
    QCOMPARE(Config::backupFiles().size(), 1);
    QCOMPARE(readAll(Config::backupFiles().first()), Config::encoded(Config::defaults()));

    // Within five minutes: saved, but no new backup.
    time.now = time.now.addSecs(120);
    document.cfg().buttons.append(button(u"Two"_s));
    document.commit();
    QCOMPARE(Config::backupFiles().size(), 1);
    // Five minutes after the first backup: the state after the first commit is backed up.
    time.now = time.now.addSecs(180);
    document.commit(); // an unchanged document still commits
    QCOMPARE(Config::backupFiles().size(), 2);
    QCOMPARE(document.history().size(), 3);
    QCOMPARE(rebuilds, 3);
}

void TestStore::historyHoldsThirtyAndUndoWalksBack()
{
    TempConfigDir dir;
    ManualClock time;
    ConfigDocument document(Config::load(time.now), time.clock());
    for (int i = 1; i <= 31; ++i) {
        document.cfg().hotkey = u"ctrl+%1"_s.arg(i);
        document.commit();
    }
    QCOMPARE(document.history().size(), ConfigDocument::maxHistory);
    QCOMPARE(document.history().first().hotkey, std::optional<QString>(u"ctrl+1"_s));

    int rebuilds = 0;
    QObject::connect(&document, &ConfigDocument::changed, [&] { ++rebuilds; });
    document.undo();
    QCOMPARE(document.cfg().hotkey, std::optional<QString>(u"ctrl+30"_s));
    QCOMPARE(document.lastSaved(), document.cfg());
    QCOMPARE(ConfigReader::decode(readAll(Config::buttonsPath())).value_or(BarConfig()).hotkey,
             std::optional<QString>(u"ctrl+30"_s));
    for (int i = 0; i < 29; ++i)
        document.undo();
    QVERIFY(!document.canUndo());
    QCOMPARE(document.cfg().hotkey, std::optional<QString>(u"ctrl+1"_s));
    QCOMPARE(rebuilds, 30);
    document.undo(); // nothing left: no change, no save, no rebuild
    QCOMPARE(rebuilds, 30);
    QCOMPARE(document.cfg().hotkey, std::optional<QString>(u"ctrl+1"_s));
}

void TestStore::emptyApplicationSetsAreDroppedOnCommit()
{
    TempConfigDir dir;
    BarConfig start = Config::defaults();
    start.appSets = QList<AppSet>{
        {u"a"_s, u"A"_s, {button(u"x"_s)}}, {u"b"_s, u"B"_s, {}}, {u"c"_s, u"C"_s, {button(u"y"_s)}}};
    ConfigDocument document(start);
    document.commit();
    QCOMPARE(document.cfg().appSets->size(), 2);
    QCOMPARE(document.cfg().appSets->at(1).app, u"c"_s);

    document.cfg().appSets->first().buttons.clear();
    document.cfg().appSets->last().buttons.clear();
    document.commit();
    QVERIFY(!document.cfg().appSets);
    QVERIFY(!readAll(Config::buttonsPath()).contains("appSets"));

    // Undo brings back the state as it was saved, sets included, without tidying again.
    document.undo();
    QCOMPARE(document.cfg().appSets->size(), 2);
}

void TestStore::restoreKeepsCurrentFileAndIsUndoable()
{
    TempConfigDir dir;
    ManualClock time;
    ConfigDocument document(Config::load(time.now), time.clock());
    QVERIFY(Config::snapshot(true, time.now)); // the launch backup
    document.cfg().buttons.removeLast();
    document.commit();
    const QByteArray current = readAll(Config::buttonsPath());

    const QString older = Config::backupFiles().first();
    QVERIFY(!document.restore(dir.file(u"missing.json"_s)));
    QVERIFY(writeAll(dir.file(u"bad.json"_s), "{}"));
    QVERIFY(!document.restore(dir.file(u"bad.json"_s)));
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

void TestStore::restoreTakesOnlyABackupName_data()
{
    QTest::addColumn<QString>("name"); // "@" stands for the temporary configuration folder
    QTest::addColumn<bool>("restored");
    QTest::newRow("file name") << u"buttons-2025-03-13-080000.json"_s << true;
    QTest::newRow("parent folder") << u"../elsewhere.json"_s << false;
    QTest::newRow("absolute path") << u"@/elsewhere.json"_s << false;
    QTest::newRow("subfolder") << u"sub/buttons-2025-03-13-080000.json"_s << false;
    QTest::newRow("dot") << u"."_s << false;
    QTest::newRow("dot dot") << u".."_s << false;
}

void TestStore::restoreTakesOnlyABackupName()
{
    QFETCH(QString, name);
    QFETCH(bool, restored);
    TempConfigDir dir;
    ConfigDocument document(Config::loadDocument());
    const QByteArray other = Config::encoded(numbered(1));
    QVERIFY(QDir().mkpath(dir.backups() + u"/sub"_s));
    for (const char* path :
         {"backups/buttons-2025-03-13-080000.json", "backups/sub/buttons-2025-03-13-080000.json",
          "elsewhere.json", "backups/elsewhere.json"})
        QVERIFY(writeAll(dir.file(QString::fromUtf8(path)), other));

    QProcessEnvironment environment;
    environment.insert(u"VANTRIL_RESTORE"_s, name.replace(QLatin1Char('@'), dir.path()));
    StartupCommands::applyConfigCommands(document, environment);
    QCOMPARE(document.cfg(), restored ? numbered(1) : Config::defaults());
    QCOMPARE(document.history().size(), restored ? 1 : 0);
}

void TestStore::failedSaveLeavesDiskAlone_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<qint64>("fileSizeLimit"); // negative: none
    const Trouble none = [](const TempConfigDir&) {};
    QTest::newRow("read-only folder") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QFile::setPermissions(dir.path(), QFile::ReadOwner | QFile::ExeOwner));
    }) << qint64(-1);
    QTest::newRow("folder named by a file") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(writeAll(dir.file(u"plain"_s), "mine"));
        qputenv("VANTRIL_CONFIG_DIR", QFile::encodeName(dir.file(u"plain"_s)));
    }) << qint64(-1);
    QTest::newRow("buttons.json is a folder") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QFile::remove(dir.buttonsJson()) && QDir().mkpath(dir.buttonsJson()));
        QVERIFY(writeAll(dir.buttonsJson() + u"/notes"_s, "mine"));
    }) << qint64(-1);
    // Neither the backup nor the document fits: on Qt's buffered writes both became cut-off files.
    QTest::newRow("file-size limit") << none << qint64(16);
    // The backup of the small old document fits, the new one does not.
    QTest::newRow("file-size limit after the backup") << none << qint64(1000);
}

void TestStore::failedSaveLeavesDiskAlone()
{
    QFETCH(Trouble, trouble);
    QFETCH(qint64, fileSizeLimit);
    TempConfigDir dir;
    ManualClock time;
    QVERIFY(Config::save(numbered(1, 1)));
    QVERIFY(QDir().mkpath(dir.backups()));
    QVERIFY(writeAll(dir.backups() + u"/buttons-2025-03-13-080000.json"_s, "{\"buttons\":[]}"));
    ConfigDocument document(Config::loadDocument(time.now), time.clock());
    trouble(dir);
    const QMap<QString, QByteArray> before = filesUnder(dir.path());

    StderrCapture log;
    const BarConfig changed = numbered(2, 30);
    const int code = inChild(
        dir.path(),
        [&] {
            int rebuilds = 0;
            QObject::connect(&document, &ConfigDocument::changed, [&] { ++rebuilds; });
            document.cfg() = changed;
            document.commit();
            // What the user sees and edits further is the new document, saved or not.
            const bool kept = document.cfg() == changed && document.lastSaved() == changed;
            return kept && document.history().size() == 1 && rebuilds == 1 ? 0 : 1;
        },
        fileSizeLimit);
    QCOMPARE(code, 0);
    QCOMPARE(log.text(), QString());
    openUp(dir.path());
    QMap<QString, QByteArray> after = filesUnder(dir.path());
    // A backup of the old document may have been written; if so, it is whole.
    const QString backup = u"backups/buttons-2025-03-14-091500.json"_s;
    if (after.contains(backup))
        QCOMPARE(after.take(backup), Config::encoded(numbered(1, 1)));
    QCOMPARE(after, before);
}

void TestStore::bytesNotWrittenHereAreKeptFirst_data()
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

void TestStore::bytesNotWrittenHereAreKeptFirst()
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

void TestStore::killedAtAnyInstantLeavesOldOrNewDocument()
{
    // A dozen kills here; VANTRIL_KILLS=200 for a long run.
    const int kills =
        qEnvironmentVariableIsSet("VANTRIL_KILLS") ? qEnvironmentVariableIntValue("VANTRIL_KILLS") : 12;
    TempConfigDir dir;
    QVERIFY(Config::save(numbered(0)));
    const quint32 seed = QRandomGenerator::system()->generate();
    std::mt19937 random(seed);
    const QDateTime start(QDate(2025, 3, 14), QTime(9, 0, 0));
    // The newest commit the child finished, shared with it so that the kill cannot lose the count.
    void* shared =
        ::mmap(nullptr, sizeof(std::atomic_int), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    QVERIFY(shared != MAP_FAILED);
    const auto unmap = qScopeGuard([&] { ::munmap(shared, sizeof(std::atomic_int)); });
    auto* const committed = new (shared) std::atomic_int(0);
    qint64 spanUs = 0;
    for (int kill = 0; kill < kills; ++kill) {
        const int newest = committed->load(); // the newest document known to be on disk
        const pid_t pid = ::fork();
        if (pid == 0) {
            int i = newest + 1;
            // Five minutes between commits, so that each one writes a backup too and prunes old ones.
            ConfigDocument document(Config::loadDocument(), [&] { return start.addSecs(301 * i); });
            for (;; ++i) {
                document.cfg() = numbered(i);
                document.commit();
                committed->store(i);
            }
        }
        if (spanUs == 0) {
            // The first run measures how long a commit takes here; later kills land anywhere in a few.
            QElapsedTimer running;
            running.start();
            while (committed->load() < newest + 10 && running.elapsed() < 60000)
                std::this_thread::sleep_for(std::chrono::microseconds(50));
            spanUs = std::max<qint64>(1000, running.nsecsElapsed() / 1000 / 10 * 4);
        } else {
            // This wait is the random instant of the kill, not a wait for anything.
            std::this_thread::sleep_for(
                std::chrono::microseconds(std::uniform_int_distribution<qint64>(0, spanUs)(random)));
        }
        ::kill(pid, SIGKILL);
        ::waitpid(pid, nullptr, 0);

        const int reported = committed->load();
        if (kill == 0)
            QVERIFY2(reported >= newest + 10, "fewer than ten commits in a minute");

        // The commit after the last one counted may have finished before the kill, or not.
        const QByteArray onDisk = readAll(dir.buttonsJson());
        const bool next = onDisk == Config::encoded(numbered(reported + 1));
        const QByteArray where = u"kill %1 of %2, seed %3"_s.arg(kill + 1).arg(kills).arg(seed).toUtf8();
        QVERIFY2(next || onDisk == Config::encoded(numbered(reported)), where.constData());
        for (const QString& name : entries(dir.backups()))
            QVERIFY2(ConfigReader::decode(readAll(dir.backups() + QLatin1Char('/') + name)),
                     QByteArray(where + ' ' + name.toUtf8()).constData());
        committed->store(next ? reported + 1 : reported);
    }
}

void TestStore::lockAllMarksEveryDepthAndUnlockRemovesTheKey()
{
    TempConfigDir dir;
    BarConfig start = Config::defaults();
    ButtonSpec inner = button(u"inner"_s, u"group"_s);
    inner.children = QList<ButtonSpec>{button(u"deepest"_s)};
    (*start.buttons[0].children)[0] = inner;
    start.buttons[1].locked = false;
    start.appSets = QList<AppSet>{{u"a"_s, u"A"_s, {button(u"x"_s)}}};
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

void TestStore::presetsCommitOnlyWhenSomethingChanged()
{
    TempConfigDir dir;
    ConfigDocument document(Config::defaults());
    int beeps = 0;
    QObject::connect(&document, &ConfigDocument::refused, [&] { ++beeps; });

    document.addPreset(u"No Such Preset"_s);
    document.removePreset(u"Mail"_s); // no set for it: nothing, not even a beep
    QCOMPARE(document.history().size(), 0);
    QCOMPARE(beeps, 0);

    document.addPreset(u"Mail"_s);
    QCOMPARE(document.history().size(), 1);
    QCOMPARE(document.cfg().appSets->first().buttons.size(), 8);
    document.addPreset(u"Mail"_s); // everything already there
    QCOMPARE(document.history().size(), 1);

    document.cfg().appSets->first().buttons[0].locked = true;
    document.removePreset(u"Mail"_s);
    QCOMPARE(document.history().size(), 2);
    QCOMPARE(document.cfg().appSets->first().buttons.size(), 1); // the locked one stays
    document.removePreset(u"Mail"_s);                            // nothing left to remove
    QCOMPARE(beeps, 1);
    QCOMPARE(document.history().size(), 2);

    document.cfg().appSets->first().buttons[0].locked.reset();
    document.removePreset(u"Mail"_s);
    QVERIFY(!document.cfg().appSets); // the emptied set disappears
}

void TestStore::watcherFollowsOnlyRealHandEdits_data()
{
    QTest::addColumn<QList<QByteArray>>("writes"); // one after another, in place
    QTest::addColumn<bool>("renamedOver");         // the last one replaces the file, as editors save
    QTest::addColumn<int>("reloads");

    QList<QByteArray> burst;
    for (int i = 3; i <= 12; ++i)
        burst.append(document(i));
    const QByteArray shown = Config::encoded(*ConfigReader::decode(document(2)));
    QTest::newRow("a burst of ten writes") << burst << false << 1;
    QTest::newRow("the program's own save") << QList<QByteArray>{shown} << false << 0;
    QTest::newRow("layout only") << QList<QByteArray>{"  " + document(2) + "\n"} << false << 0;
    QTest::newRow("does not decode") << QList<QByteArray>{"{ \"buttons\": ["} << false << 0;
    QTest::newRow("renamed over") << QList<QByteArray>{document(4)} << true << 1;
    QTest::newRow("written into the replacement") << QList<QByteArray>{document(4), document(5)} << true << 1;
}

void TestStore::watcherFollowsOnlyRealHandEdits()
{
    QFETCH(QList<QByteArray>, writes);
    QFETCH(bool, renamedOver);
    QFETCH(int, reloads);
    TempConfigDir dir;
    QVERIFY(writeAll(dir.buttonsJson(), document(2)));
    BarConfig current = *ConfigReader::decode(document(2));
    QList<int> reloaded; // the number of buttons of each document handed on
    ConfigWatcher watcher([&]() -> const BarConfig& { return current; });
    QObject::connect(&watcher, &ConfigWatcher::edited, [&](const BarConfig& edited) {
        reloaded.append(int(edited.buttons.size()));
        current = edited;
    });
    watcher.start();

    QElapsedTimer burst;
    burst.start();
    for (qsizetype i = 0; i < writes.size(); ++i) {
        if (renamedOver && i == 0) {
            const QString temporary = dir.file(u".buttons.json.edit"_s);
            QVERIFY(writeAll(temporary, writes[i]));
            QVERIFY(::rename(QFile::encodeName(temporary).constData(),
                             QFile::encodeName(dir.buttonsJson()).constData()) == 0);
            // The replacement is watched in its turn once the first change has been seen.
            QTRY_COMPARE_WITH_TIMEOUT(reloaded.size(), 1, 10000);
            burst.restart();
        } else {
            QVERIFY(writeAll(dir.buttonsJson(), writes[i]));
        }
    }
    const bool stalled = burst.elapsed() >= ConfigWatcher::debounceMs / 2;
    if (reloads > 0)
        QTRY_VERIFY_WITH_TIMEOUT(!reloaded.isEmpty() &&
                                     reloaded.last() == ConfigReader::decode(writes.last())->buttons.size(),
                                 10000);
    // Long enough for any later reload to have come.
    QTest::qWait(3 * ConfigWatcher::debounceMs);
    if (!stalled)
        QCOMPARE(reloaded.size(), reloads + (renamedOver && writes.size() > 1 ? 1 : 0));
}

QTEST_GUILESS_MAIN(TestStore)
#include "tst_store.moc"
