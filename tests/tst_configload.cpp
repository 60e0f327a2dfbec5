#include "TestSupport.h"
#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigReader.h"

#include <QDir>
#include <QFile>
#include <QTest>
#include <sys/stat.h>

class TestConfigLoad : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void folderFollowsEnvironment();
    void firstLaunchWritesDefaults();
    void validFileIsReadWithoutWriting();
    void unreadableFileWithoutBackupsIsLeftAlone_data();
    void unreadableFileWithoutBackupsIsLeftAlone();
    void unreadableFileRestoresNewestGoodBackup();
    void recoveryOverwritesOnlyWhatIsKept_data();
    void recoveryOverwritesOnlyWhatIsKept();
    void saveIsAtomicAndKeepsLinksAndPermissions();
    void unusableFolderFallsBackToDefaults();
};

namespace {

const QDateTime noon(QDate(2025, 3, 14), QTime(12, 0, 0));

/// Sets or unsets one environment variable for the scope.
class EnvGuard
{
public:
    EnvGuard(const char* name, const std::optional<QByteArray>& value)
        : m_name(name)
        , m_old(qgetenv(name))
        , m_wasSet(qEnvironmentVariableIsSet(name))
    {
        if (value)
            qputenv(name, *value);
        else
            qunsetenv(name);
    }
    ~EnvGuard()
    {
        if (m_wasSet)
            qputenv(m_name, m_old);
        else
            qunsetenv(m_name);
    }

private:
    const char* m_name;
    QByteArray m_old;
    bool m_wasSet;
};

QByteArray goodDocument(const char* title)
{
    return QByteArray(R"({"buttons":[{"title":")") + title + R"(","symbol":"","action":"open"}]})";
}

/// What a row does to the configuration folder after a broken buttons.json and a good backup are in place.
using Trouble = std::function<void(const TempConfigDir&)>;

} // namespace

Q_DECLARE_METATYPE(Trouble)

void TestConfigLoad::folderFollowsEnvironment()
{
    const QString home = QDir::homePath();
    {
        EnvGuard config("VANTRIL_CONFIG_DIR", std::nullopt);
        EnvGuard xdg("XDG_CONFIG_HOME", std::nullopt);
        QCOMPARE(Config::dir(), home + QStringLiteral("/.config/vantril"));
    }
    {
        EnvGuard config("VANTRIL_CONFIG_DIR", std::nullopt);
        EnvGuard xdg("XDG_CONFIG_HOME", QByteArray("/tmp/xdg-somewhere"));
        QCOMPARE(Config::dir(), QStringLiteral("/tmp/xdg-somewhere/vantril"));
    }
    {
        // A relative XDG_CONFIG_HOME is invalid by the base-directory rules and is ignored.
        EnvGuard config("VANTRIL_CONFIG_DIR", std::nullopt);
        EnvGuard xdg("XDG_CONFIG_HOME", QByteArray("relative/dir"));
        QCOMPARE(Config::dir(), home + QStringLiteral("/.config/vantril"));
    }
    {
        EnvGuard config("VANTRIL_CONFIG_DIR", QByteArray("/srv/bar config/~x"));
        EnvGuard xdg("XDG_CONFIG_HOME", QByteArray("/tmp/xdg"));
        QCOMPARE(Config::dir(), QStringLiteral("/srv/bar config/~x"));
        QCOMPARE(Config::buttonsPath(), QStringLiteral("/srv/bar config/~x/buttons.json"));
        QCOMPARE(Config::backupsDir(), QStringLiteral("/srv/bar config/~x/backups"));
    }
    {
        EnvGuard config("VANTRIL_CONFIG_DIR", QByteArray("sub/dir"));
        QCOMPARE(Config::dir(), QDir::current().absoluteFilePath(QStringLiteral("sub/dir")));
    }
    {
        // Set but empty is still set: the current folder, not the default.
        EnvGuard config("VANTRIL_CONFIG_DIR", QByteArray(""));
        QCOMPARE(Config::dir(), QDir::currentPath());
    }
}

void TestConfigLoad::firstLaunchWritesDefaults()
{
    TempConfigDir dir;
    const QString nested = dir.file(QStringLiteral("a/b/c"));
    qputenv("VANTRIL_CONFIG_DIR", nested.toLocal8Bit());
    StderrCapture log;
    QCOMPARE(Config::load(noon), Config::defaults());
    QCOMPARE(readAll(nested + QStringLiteral("/buttons.json")), Config::encoded(Config::defaults()));
    QCOMPARE(entries(nested), QStringList{QStringLiteral("buttons.json")}); // no backups folder yet
    QCOMPARE(log.text(), QString());
}

void TestConfigLoad::validFileIsReadWithoutWriting()
{
    TempConfigDir dir;
    const QByteArray text =
        "  {\"buttons\":[{\"title\":\"X\",\"symbol\":\"\",\"action\":\"open\",\"unknown\":1}]}\n";
    QVERIFY(writeAll(dir.buttonsJson(), text));
    StderrCapture log;
    const BarConfig config = Config::load(noon);
    QCOMPARE(config.buttons.size(), 1);
    QCOMPARE(config.buttons.first().title, QStringLiteral("X"));
    QCOMPARE(readAll(dir.buttonsJson()), text);
    QCOMPARE(entries(dir.path()), QStringList{QStringLiteral("buttons.json")});
    QCOMPARE(log.text(), QString());
}

void TestConfigLoad::unreadableFileWithoutBackupsIsLeftAlone_data()
{
    QTest::addColumn<QByteArray>("broken");
    QTest::newRow("zero bytes") << QByteArray();
    QTest::newRow("not json") << QByteArray("buttons = [files, apps]");
    QTest::newRow("missing symbol") << QByteArray(R"({"buttons":[{"title":"a","action":"open"}]})");
}

void TestConfigLoad::unreadableFileWithoutBackupsIsLeftAlone()
{
    QFETCH(QByteArray, broken);
    TempConfigDir dir;
    QVERIFY(writeAll(dir.buttonsJson(), broken));
    StderrCapture log;
    QCOMPARE(Config::load(noon), Config::defaults());
    QCOMPARE(log.text(), QStringLiteral("buttons.json was unreadable and there is no backup; "
                                        "using defaults without overwriting it\n"));
    QCOMPARE(readAll(dir.buttonsJson()), broken);
    QCOMPARE(entries(dir.backups()), QStringList{QStringLiteral("invalid-2025-03-14-120000.json")});
    QCOMPARE(readAll(dir.backups() + QStringLiteral("/invalid-2025-03-14-120000.json")), broken);
}

void TestConfigLoad::unreadableFileRestoresNewestGoodBackup()
{
    TempConfigDir dir;
    QVERIFY(QDir().mkpath(dir.backups()));
    // The newest backup is broken too; the one before it is good and has its own layout.
    const QByteArray good = "{ \"buttons\" : [ {\"title\":\"Old\",\"symbol\":\"\",\"action\":\"open\"} ] }";
    QVERIFY(
        writeAll(dir.backups() + QStringLiteral("/buttons-2025-03-10-080000.json"), goodDocument("Oldest")));
    QVERIFY(writeAll(dir.backups() + QStringLiteral("/buttons-2025-03-12-080000.json"), good));
    QVERIFY(writeAll(dir.backups() + QStringLiteral("/buttons-2025-03-13-080000.json"), "{broken"));
    QVERIFY(
        writeAll(dir.backups() + QStringLiteral("/invalid-2025-03-13-090000.json"), goodDocument("Invalid")));
    QVERIFY(writeAll(dir.buttonsJson(), "[]"));

    StderrCapture log;
    const BarConfig config = Config::load(noon);
    QCOMPARE(config.buttons.first().title, QStringLiteral("Old"));
    QCOMPARE(log.text(), QStringLiteral("buttons.json was unreadable; restored the newest backup "
                                        "buttons-2025-03-12-080000.json\n"));
    QCOMPARE(readAll(dir.buttonsJson()), good); // the backup's own bytes, not re-encoded
    QCOMPARE(readAll(dir.backups() + QStringLiteral("/invalid-2025-03-14-120000.json")), QByteArray("[]"));
    QCOMPARE(Config::backupFiles().size(), 3); // no regular backup was added
}

void TestConfigLoad::recoveryOverwritesOnlyWhatIsKept_data()
{
    QTest::addColumn<Trouble>("trouble");
    QTest::addColumn<bool>("replaced");       // buttons.json now holds the backup's bytes
    QTest::addColumn<QStringList>("invalid"); // the "invalid-" copies afterwards

    const QString kept = QStringLiteral("invalid-2025-03-13-090000.json");
    const QString made = QStringLiteral("invalid-2025-03-14-120000.json");
    const auto keepBroken = [](const TempConfigDir& dir) {
        QVERIFY(writeAll(dir.backups() + QStringLiteral("/invalid-2025-03-13-090000.json"), "{broken"));
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

void TestConfigLoad::recoveryOverwritesOnlyWhatIsKept()
{
    QFETCH(Trouble, trouble);
    QFETCH(bool, replaced);
    QFETCH(QStringList, invalid);
    TempConfigDir dir;
    QVERIFY(QDir().mkpath(dir.backups()));
    const QByteArray good = goodDocument("Good");
    const QString backup = dir.backups() + QStringLiteral("/buttons-2025-03-12-080000.json");
    QVERIFY(writeAll(backup, good));
    QVERIFY(writeAll(dir.buttonsJson(), "{broken"));
    trouble(dir);
    const bool wasFile = QFileInfo(dir.buttonsJson()).isFile();

    StderrCapture log;
    const int code = inChild(dir.path(), [&] {
        const Config::Loaded loaded = Config::loadDocument(noon);
        const bool known = loaded.knownBytes == std::optional<QByteArray>(good);
        return loaded.config.buttons.first().title == QStringLiteral("Good") && known == replaced ? 0 : 1;
    });
    QCOMPARE(code, 0);
    QCOMPARE(log.text(), QStringLiteral("buttons.json was unreadable; restored the newest backup "
                                        "buttons-2025-03-12-080000.json\n"));
    openUp(dir.path());
    QCOMPARE(QFileInfo(dir.buttonsJson()).isFile(), wasFile);
    if (wasFile)
        QCOMPARE(readAll(dir.buttonsJson()), replaced ? good : QByteArray("{broken"));
    QStringList left = entries(dir.backups());
    left.removeOne(QFileInfo(backup).fileName());
    QCOMPARE(left, invalid);
    for (const QString& name : invalid)
        QCOMPARE(readAll(dir.backups() + QLatin1Char('/') + name), QByteArray("{broken"));
}

void TestConfigLoad::saveIsAtomicAndKeepsLinksAndPermissions()
{
    TempConfigDir dir;
    const QString realFile = dir.file(QStringLiteral("dotfiles/buttons.json"));
    QVERIFY(QDir().mkpath(dir.file(QStringLiteral("dotfiles"))));
    QVERIFY(writeAll(realFile, goodDocument("Linked")));
    QVERIFY(QFile::setPermissions(realFile, QFile::ReadOwner | QFile::WriteOwner));
    QVERIFY(QFile::link(realFile, dir.buttonsJson()));

    BarConfig changed = Config::defaults();
    Config::save(changed);
    QVERIFY(QFileInfo(dir.buttonsJson()).isSymLink());
    QCOMPARE(readAll(realFile), Config::encoded(changed));
    QCOMPARE(QFile::permissions(realFile) & 0x7777,
             QFile::ReadOwner | QFile::WriteOwner | QFile::ReadUser | QFile::WriteUser);
    // Nothing else is left behind in either folder.
    QCOMPARE(entries(dir.path()), (QStringList{QStringLiteral("buttons.json"), QStringLiteral("dotfiles")}));
    QCOMPARE(entries(dir.file(QStringLiteral("dotfiles"))), QStringList{QStringLiteral("buttons.json")});
}

void TestConfigLoad::unusableFolderFallsBackToDefaults()
{
    TempConfigDir dir;
    QVERIFY(writeAll(dir.file(QStringLiteral("plainfile")), "x"));
    qputenv("VANTRIL_CONFIG_DIR", dir.file(QStringLiteral("plainfile/inside")).toLocal8Bit());
    StderrCapture log;
    QCOMPARE(Config::load(noon), Config::defaults());
    Config::save(Config::defaults()); // fails quietly
    QCOMPARE(log.text(), QString());
    QCOMPARE(readAll(dir.file(QStringLiteral("plainfile"))), QByteArray("x"));
}

QTEST_APPLESS_MAIN(TestConfigLoad)
#include "tst_configload.moc"
