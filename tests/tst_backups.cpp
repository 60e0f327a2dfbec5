#include "TestSupport.h"
#include "config/Backups.h"
#include "config/Config.h"

#include <QDir>
#include <QLocale>
#include <QTest>
#include <sys/stat.h>

class TestBackups : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void stampAndDateAreInverse();
    void listsRegularBackupsNewestFirst();
    void throttleHoldsUnforcedSnapshotsForFiveMinutes();
    void identicalBytesAreNeverBackedUpTwice();
    void unreadableFileIsKeptAsInvalidCopy();
    void troubleInBackupsFolderLosesNothing_data();
    void troubleInBackupsFolderLosesNothing();
    void keepsFortyNewestAndNeverCountsInvalidOnes();
    void handWrittenNotesFileIsNewestButNeverBlocks();
    void restoreListLabelsAndLimits();
};

namespace {

const QDateTime t0(QDate(2025, 3, 14), QTime(9, 15, 0));

QByteArray document(int buttons)
{
    QByteArray text = R"({"buttons":[)";
    for (int i = 0; i < buttons; ++i)
        text += (i ? "," : "") + QByteArray(R"({"title":"b)") + QByteArray::number(i) +
                R"(","symbol":"","action":"open"})";
    return text + "]}";
}

/// What a row does to a folder holding buttons.json and two good backups.
using Trouble = std::function<void(const TempConfigDir&)>;

QStringList backupNames()
{
    QStringList names;
    for (const QString& path : Config::backupFiles())
        names.append(QFileInfo(path).fileName());
    return names;
}

} // namespace

Q_DECLARE_METATYPE(Trouble)

void TestBackups::stampAndDateAreInverse()
{
    QCOMPARE(Config::stamp(t0), QStringLiteral("2025-03-14-091500"));
    QCOMPARE(Config::date(QStringLiteral("/x/buttons-2025-03-14-091500.json")), std::optional<QDateTime>(t0));
    // The first eight characters are dropped whatever they are.
    QCOMPARE(Config::date(QStringLiteral("invalid-2025-03-14-091500.json")), std::optional<QDateTime>(t0));
    for (const char* name :
         {"buttons-notes.json", "buttons-2025-3-14-091500.json", "buttons-2025-04-31-091500.json",
          "buttons-2025-03-14-091500x.json", "buttons-2025-03-14-251500.json", "buttons-.json"})
        QVERIFY2(!Config::date(QString::fromUtf8(name)), name);
}

void TestBackups::listsRegularBackupsNewestFirst()
{
    TempConfigDir dir;
    QVERIFY(Config::backupFiles().isEmpty()); // no folder at all
    QVERIFY(QDir().mkpath(dir.backups()));
    for (const char* name : {"buttons-2025-01-01-000000.json", "buttons-2025-02-01-000000.json",
                             "invalid-2025-03-01-000000.json", "buttons-2025-02-01-000000.json.bak",
                             "Buttons-2025-04-01-000000.json", "buttons-2024-12-31-235959.JSON", "notes.txt"})
        QVERIFY(writeAll(dir.backups() + QLatin1Char('/') + QString::fromUtf8(name), "x"));
    QCOMPARE(backupNames(), (QStringList{QStringLiteral("buttons-2025-02-01-000000.json"),
                                         QStringLiteral("buttons-2025-01-01-000000.json")}));
    QCOMPARE(Config::backupFiles().first(),
             dir.backups() + QStringLiteral("/buttons-2025-02-01-000000.json"));
}

void TestBackups::throttleHoldsUnforcedSnapshotsForFiveMinutes()
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
    QCOMPARE(backupNames(), (QStringList{QStringLiteral("buttons-2025-03-14-092459.json"),
                                         QStringLiteral("buttons-2025-03-14-091959.json"),
                                         QStringLiteral("buttons-2025-03-14-091500.json")}));
    QCOMPARE(readAll(Config::backupFiles().last()), document(1));

    // A stamp in the future blocks unforced snapshots until five minutes after it.
    QVERIFY(writeAll(dir.backups() + QStringLiteral("/buttons-2025-03-14-120000.json"), document(9)));
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

void TestBackups::identicalBytesAreNeverBackedUpTwice()
{
    TempConfigDir dir;
    QVERIFY(writeAll(dir.buttonsJson(), document(1)));
    QVERIFY(Config::snapshot(true, t0));
    QVERIFY(!Config::snapshot(true, t0.addSecs(3600)));
    QVERIFY(!Config::snapshot(false, t0.addSecs(7200)));
    QCOMPARE(Config::backupFiles().size(), 1);

    // Same meaning, different bytes: a new backup.
    QVERIFY(writeAll(dir.buttonsJson(), document(1) + "\n"));
    QVERIFY(Config::snapshot(true, t0.addSecs(7200)));
    QCOMPARE(Config::backupFiles().size(), 2);
}

void TestBackups::unreadableFileIsKeptAsInvalidCopy()
{
    TempConfigDir dir;
    QVERIFY(writeAll(dir.buttonsJson(), "{\"buttons\": 1}"));
    QVERIFY(!Config::snapshot(true, t0));
    QVERIFY(!Config::snapshot(false, t0.addSecs(1))); // the same bytes again: no second copy
    QVERIFY(writeAll(dir.buttonsJson(), "{\"buttons\": 2}"));
    QVERIFY(!Config::snapshot(false, t0.addSecs(2)));
    // Other broken bytes in the same second do not replace a copy, which is never deleted.
    QVERIFY(writeAll(dir.buttonsJson(), "{\"buttons\": 3}"));
    QVERIFY(!Config::keepCopy(t0.addSecs(2)));
    QCOMPARE(entries(dir.backups()), (QStringList{QStringLiteral("invalid-2025-03-14-091500.json"),
                                                  QStringLiteral("invalid-2025-03-14-091502.json")}));
    QCOMPARE(readAll(dir.backups() + QStringLiteral("/invalid-2025-03-14-091502.json")),
             QByteArray("{\"buttons\": 2}"));
    QVERIFY(Config::backupFiles().isEmpty());
}

void TestBackups::troubleInBackupsFolderLosesNothing_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<int>("folderMode");       // the backups folder's permissions, 0: left alone
    QTest::addColumn<qint64>("fileSizeLimit"); // negative: none
    QTest::addColumn<bool>("written");

    const Trouble none = [](const TempConfigDir&) {};
    const int readOnly = QFile::ReadOwner | QFile::ExeOwner;
    const int notListable = QFile::WriteOwner | QFile::ExeOwner;
    QTest::newRow("file-size limit") << none << 0 << qint64(16) << false;
    // A copy that does not fit must not push the oldest of forty out.
    QTest::newRow("file-size limit, forty backups") << Trouble([](const TempConfigDir& dir) {
        for (int i = 0; i < 38; ++i)
            QVERIFY(writeAll(
                dir.backups() + QStringLiteral("/buttons-2025-03-13-%1.json").arg(i, 6, 10, QLatin1Char('0')),
                document(10 + i)));
    }) << 0 << qint64(16) << false;
    QTest::newRow("read-only folder") << none << readOnly << qint64(-1) << false;
    QTest::newRow("writable, not listable") << none << notListable << qint64(-1) << true;
    // Named as the newest, with a stamp in the future that would hold back every unforced snapshot.
    QTest::newRow("folder named like a backup") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QDir().mkpath(dir.backups() + QStringLiteral("/buttons-2099-01-01-000000.json/x")));
    }) << 0 << qint64(-1) << true;
    QTest::newRow("FIFO named like a backup") << Trouble([](const TempConfigDir& dir) {
        const QString fifo = dir.backups() + QStringLiteral("/buttons-2099-01-01-000000.json");
        QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0600), 0);
    }) << 0 << qint64(-1) << true;
    QTest::newRow("backups is a file") << Trouble([](const TempConfigDir& dir) {
        QVERIFY(QDir(dir.backups()).removeRecursively() && writeAll(dir.backups(), "mine"));
    }) << 0 << qint64(-1) << false;
}

void TestBackups::troubleInBackupsFolderLosesNothing()
{
    QFETCH(Trouble, trouble);
    QFETCH(int, folderMode);
    QFETCH(qint64, fileSizeLimit);
    QFETCH(bool, written);
    TempConfigDir dir;
    QVERIFY(QDir().mkpath(dir.backups()));
    QVERIFY(writeAll(dir.backups() + QStringLiteral("/buttons-2025-03-14-080000.json"), document(1)));
    QVERIFY(writeAll(dir.backups() + QStringLiteral("/buttons-2025-03-14-081000.json"), document(2)));
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
        QCOMPARE(after.take(QStringLiteral("backups/buttons-2025-03-14-091500.json")), document(3));
    QCOMPARE(after, before);
}

void TestBackups::keepsFortyNewestAndNeverCountsInvalidOnes()
{
    TempConfigDir dir;
    QVERIFY(QDir().mkpath(dir.backups()));
    QVERIFY(writeAll(dir.backups() + QStringLiteral("/invalid-2000-01-01-000000.json"), "x"));
    for (int i = 0; i < 41; ++i) {
        QVERIFY(writeAll(dir.buttonsJson(), document(i + 1)));
        QVERIFY(Config::snapshot(true, t0.addSecs(i)));
    }
    const QStringList names = backupNames();
    QCOMPARE(names.size(), Config::maxBackups);
    QCOMPARE(names.first(), QStringLiteral("buttons-2025-03-14-091540.json"));
    QCOMPARE(names.last(), QStringLiteral("buttons-2025-03-14-091501.json")); // the oldest went
    QVERIFY(QFile::exists(dir.backups() + QStringLiteral("/invalid-2000-01-01-000000.json")));
}

void TestBackups::handWrittenNotesFileIsNewestButNeverBlocks()
{
    TempConfigDir dir;
    QVERIFY(QDir().mkpath(dir.backups()));
    const QString notes = dir.backups() + QStringLiteral("/buttons-notes.json");
    QVERIFY(writeAll(notes, document(1)));
    QVERIFY(writeAll(dir.buttonsJson(), document(1)));

    QVERIFY(!Config::snapshot(true, t0)); // identical to the "newest"
    QVERIFY(writeAll(dir.buttonsJson(), document(2)));
    QVERIFY(Config::snapshot(false, t0)); // no time in its name, so no throttle
    QVERIFY(writeAll(dir.buttonsJson(), document(3)));
    QVERIFY(Config::snapshot(false, t0.addSecs(10))); // still compared with the notes, never throttled
    QCOMPARE(backupNames().first(), QStringLiteral("buttons-notes.json"));

    for (int i = 0; i < 45; ++i) {
        QVERIFY(writeAll(dir.buttonsJson(), document(10 + i)));
        QVERIFY(Config::snapshot(true, t0.addSecs(100 + i)));
    }
    QCOMPARE(Config::backupFiles().size(), Config::maxBackups);
    QVERIFY(QFile::exists(notes)); // it sorts first, so it is never pruned
    const QList<BackupInfo> infos = Config::backupInfos();
    QCOMPARE(infos.size(), Config::maxListedBackups - 1); // and it is never offered for restoring
    QVERIFY(
        std::none_of(infos.begin(), infos.end(), [&](const BackupInfo& info) { return info.id == notes; }));
}

void TestBackups::restoreListLabelsAndLimits()
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
    QVERIFY(writeAll(folder + QStringLiteral("buttons-2025-03-14-091500.json"), mixed));
    QVERIFY(writeAll(folder + QStringLiteral("buttons-2025-03-14-091400.json"), document(1)));
    QVERIFY(writeAll(folder + QStringLiteral("buttons-2025-03-14-091300.json"), "not json"));
    QLocale::setDefault(QLocale(QLocale::English, QLocale::UnitedKingdom));
    const QList<BackupInfo> infos = Config::backupInfos();
    QCOMPARE(infos.size(), 2);
    QCOMPARE(infos.at(0).id, folder + QStringLiteral("buttons-2025-03-14-091500.json"));
    QCOMPARE(infos.at(0).label, QStringLiteral("14 Mar 2025, 09:15 — 5 buttons"));
    QCOMPARE(infos.at(1).label, QStringLiteral("14 Mar 2025, 09:14 — 1 buttons"));

    // The label follows the user's language.
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    QVERIFY(Config::backupInfos().at(0).label.startsWith(QStringLiteral("14 März 2025, 09:15")));
    QLocale::setDefault(QLocale::c());

    // Only the newest fifteen files are looked at, even when some of them are unreadable.
    for (int i = 0; i < 20; ++i) {
        const QString name = QStringLiteral("buttons-2025-04-01-%1.json").arg(i, 6, 10, QLatin1Char('0'));
        QVERIFY(writeAll(folder + name, i % 5 == 0 ? QByteArray("{") : document(2)));
    }
    const QList<BackupInfo> newest = Config::backupInfos();
    QCOMPARE(newest.size(), 12); // 15 files, 3 of them broken
    QVERIFY(newest.first().id.endsWith(QStringLiteral("buttons-2025-04-01-000019.json")));
    QVERIFY(newest.last().id.endsWith(QStringLiteral("buttons-2025-04-01-000006.json")));
}

QTEST_APPLESS_MAIN(TestBackups)
#include "tst_backups.moc"
