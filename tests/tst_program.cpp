#include "TestSupport.h"
#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigReader.h"

#include <QDir>
#include <QProcess>
#include <QTest>

/// The real binary, started the way a user or a script starts it.
class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parseKeysNeedsNoDisplay();
    void startupAppliesCommandsInOrder();
    void brokenFileIsReportedAndKept();
};

namespace {

struct Outcome
{
    int status = -1;
    QString out;
    QString err;
};

Outcome runProgram(const QStringList& arguments, const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(QStringLiteral(VANTRIL_BINARY), arguments);
    if (!process.waitForFinished(30000))
        process.kill();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError())};
}

QProcessEnvironment cleanEnvironment(const TempConfigDir& dir)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "VANTRIL_RESTORE", "VANTRIL_PRESET",
                             "VANTRIL_REMOVE_PRESET", "VANTRIL_CONTEXT_APP"})
        environment.remove(QString::fromUtf8(name));
    environment.insert(QStringLiteral("VANTRIL_CONFIG_DIR"), dir.path());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), dir.file(QStringLiteral("xdg")));
    return environment;
}

} // namespace

void TestProgram::parseKeysNeedsNoDisplay()
{
    TempConfigDir dir;
    const auto environment = cleanEnvironment(dir);
    const Outcome valid = runProgram({QStringLiteral("--parse-keys"), QStringLiteral("cmd+v")}, environment);
    QCOMPARE(valid.status, 0);
    QCOMPARE(valid.out, QStringLiteral("keyCode=9 flags=1048576 carbon=256\n"));
    const Outcome invalid = runProgram({QStringLiteral("--parse-keys"), QStringLiteral("cmd")}, environment);
    QCOMPARE(invalid.status, 0);
    QCOMPARE(invalid.out, QStringLiteral("invalid\n"));
    QVERIFY(entries(dir.path()).isEmpty()); // nothing was loaded or written
}

void TestProgram::startupAppliesCommandsInOrder()
{
    TempConfigDir dir;
    auto environment = cleanEnvironment(dir);

    // First launch: the defaults are written and a launch backup is taken.
    QCOMPARE(runProgram({}, environment).status, 0);
    QCOMPARE(readAll(dir.buttonsJson()), Config::encoded(Config::defaults()));
    QCOMPARE(Config::backupFiles().size(), 1);
    // Launches within one second share a backup name, so the one to restore gets its own.
    const QString saved = QStringLiteral("buttons-2020-01-01-000000.json");
    QVERIFY(QFile::copy(Config::backupFiles().first(), QDir(dir.backups()).filePath(saved)));

    // A script adds presets; names that are not presets and empty items are skipped.
    environment.insert(QStringLiteral("VANTRIL_PRESET"), QStringLiteral(",Mail,,Nope, Music"));
    QCOMPARE(runProgram({}, environment).status, 0);
    auto config = ConfigReader::decode(readAll(dir.buttonsJson()));
    QVERIFY(config);
    QCOMPARE(config->appSets->size(), 2);
    QCOMPARE(config->appSets->at(0).name, QStringLiteral("Mail"));
    QCOMPARE(config->appSets->at(1).name, QStringLiteral("Music"));

    // Restore runs before the presets, and removing a preset before adding one.
    environment.insert(QStringLiteral("VANTRIL_RESTORE"), saved);
    environment.insert(QStringLiteral("VANTRIL_REMOVE_PRESET"), QStringLiteral("Mail"));
    environment.insert(QStringLiteral("VANTRIL_PRESET"), QStringLiteral("Finder"));
    QCOMPARE(runProgram({}, environment).status, 0);
    config = ConfigReader::decode(readAll(dir.buttonsJson()));
    QCOMPARE(config->appSets->size(), 1);
    QCOMPARE(config->appSets->first().name, QStringLiteral("Finder"));
    QCOMPARE(config->buttons, Config::defaults().buttons);

    // Commands that do not apply change nothing.
    const QByteArray before = readAll(dir.buttonsJson());
    environment.insert(QStringLiteral("VANTRIL_RESTORE"), QStringLiteral("buttons-1999-01-01-000000.json"));
    environment.insert(QStringLiteral("VANTRIL_REMOVE_PRESET"), QStringLiteral("Nope"));
    environment.insert(QStringLiteral("VANTRIL_PRESET"), QStringLiteral("Finder"));
    QCOMPARE(runProgram({}, environment).status, 0);
    QCOMPARE(readAll(dir.buttonsJson()), before);
}

void TestProgram::brokenFileIsReportedAndKept()
{
    TempConfigDir dir;
    QVERIFY(writeAll(dir.buttonsJson(), "{ oops"));
    const Outcome outcome = runProgram({}, cleanEnvironment(dir));
    QCOMPARE(outcome.status, 0);
    QCOMPARE(outcome.err, QStringLiteral("buttons.json was unreadable and there is no backup; "
                                         "using defaults without overwriting it\n"));
    QCOMPARE(readAll(dir.buttonsJson()), QByteArray("{ oops"));
    const QStringList kept = entries(dir.backups());
    QCOMPARE(kept.size(), 1);
    QVERIFY(kept.first().startsWith(QStringLiteral("invalid-")));

    const Outcome check = runProgram({QStringLiteral("--check")}, cleanEnvironment(dir));
    QCOMPARE(check.status, 1);
    QVERIFY(check.out.startsWith(QStringLiteral("line 1, column ")));
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
