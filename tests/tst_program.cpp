#include "TestSupport.h"

#include <QFileInfo>
#include <QProcess>
#include <QTest>

/// The real binary, started the way a user or a script starts it.
class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void parseKeysNeedsNoDisplay();
    void withoutDisplayItSaysSoAndStops();
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

void TestProgram::withoutDisplayItSaysSoAndStops()
{
    TempConfigDir dir;
    const Outcome outcome = runProgram({}, cleanEnvironment(dir));
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.err.count(QLatin1Char('\n')), 1);
    QVERIFY2(outcome.err.startsWith(QStringLiteral("vantril: no X display")), qPrintable(outcome.err));

    auto unreachable = cleanEnvironment(dir);
    unreachable.insert(QStringLiteral("DISPLAY"), QStringLiteral(":4711"));
    const Outcome refused = runProgram({}, unreachable);
    QCOMPARE(refused.status, 1);
    QCOMPARE(refused.err, QStringLiteral("vantril: cannot open the X display \":4711\"\n"));

    // Hiding or ending a bar that does not run needs no display, and makes nothing for it.
    auto absent = cleanEnvironment(dir);
    absent.insert(QStringLiteral("VANTRIL_CONFIG_DIR"), dir.file(QStringLiteral("absent")));
    for (const auto& environment : {absent, cleanEnvironment(dir)}) {
        for (const QString& word : {QStringLiteral("--hide"), QStringLiteral("--quit")}) {
            const Outcome done = runProgram({word}, environment);
            QCOMPARE(done.status, 0);
            QCOMPARE(done.err, QString());
        }
    }
    QVERIFY(!QFileInfo::exists(dir.file(QStringLiteral("absent"))));
    QVERIFY(!QFileInfo::exists(dir.file(QStringLiteral("vantril.lock"))));
    const Outcome untitled = runProgram({QStringLiteral("--open")}, cleanEnvironment(dir));
    QCOMPARE(untitled.status, 1);
    QCOMPARE(untitled.err, QStringLiteral("vantril: --open needs the title of a button\n"));

    // The command line still works without one.
    const Outcome check = runProgram({QStringLiteral("--check"), dir.file(QStringLiteral("missing.json"))},
                                     cleanEnvironment(dir));
    QCOMPARE(check.status, 1);
    QVERIFY(check.out.contains(QStringLiteral("cannot read")));
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
