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
    environment.insert(u"VANTRIL_CONFIG_DIR"_s, dir.path());
    environment.insert(u"XDG_CONFIG_HOME"_s, dir.file(u"xdg"_s));
    return environment;
}

} // namespace

void TestProgram::parseKeysNeedsNoDisplay()
{
    TempConfigDir dir;
    const auto environment = cleanEnvironment(dir);
    const Outcome valid = runProgram({u"--parse-keys"_s, u"cmd+v"_s}, environment);
    QCOMPARE(valid.status, 0);
    QCOMPARE(valid.out, u"keyCode=9 flags=1048576 carbon=256\n"_s);
    const Outcome invalid = runProgram({u"--parse-keys"_s, u"cmd"_s}, environment);
    QCOMPARE(invalid.status, 0);
    QCOMPARE(invalid.out, u"invalid\n"_s);
    QVERIFY(entries(dir.path()).isEmpty()); // nothing was loaded or written
}

void TestProgram::withoutDisplayItSaysSoAndStops()
{
    TempConfigDir dir;
    const Outcome outcome = runProgram({}, cleanEnvironment(dir));
    QCOMPARE(outcome.status, 1);
    QCOMPARE(outcome.err.count(QLatin1Char('\n')), 1);
    QVERIFY2(outcome.err.startsWith(u"vantril: no X display"_s), qPrintable(outcome.err));

    auto unreachable = cleanEnvironment(dir);
    unreachable.insert(u"DISPLAY"_s, u":4711"_s);
    const Outcome refused = runProgram({}, unreachable);
    QCOMPARE(refused.status, 1);
    QCOMPARE(refused.err, u"vantril: cannot open the X display \":4711\"\n"_s);

    // Hiding or ending a bar that does not run needs no display, and makes nothing for it.
    auto absent = cleanEnvironment(dir);
    absent.insert(u"VANTRIL_CONFIG_DIR"_s, dir.file(u"absent"_s));
    for (const auto& environment : {absent, cleanEnvironment(dir)}) {
        for (const QString& word : {u"--hide"_s, u"--quit"_s}) {
            const Outcome done = runProgram({word}, environment);
            QCOMPARE(done.status, 0);
            QCOMPARE(done.err, QString());
        }
    }
    QVERIFY(!QFileInfo::exists(dir.file(u"absent"_s)));
    QVERIFY(!QFileInfo::exists(dir.file(u"vantril.lock"_s)));
    const Outcome untitled = runProgram({u"--open"_s}, cleanEnvironment(dir));
    QCOMPARE(untitled.status, 1);
    QCOMPARE(untitled.err, u"vantril: --open needs the title of a button\n"_s);

    // The command line still works without one.
    const Outcome check = runProgram({u"--check"_s, dir.file(u"missing.json"_s)}, cleanEnvironment(dir));
    QCOMPARE(check.status, 1);
    QVERIFY(check.out.contains(u"cannot read"_s));
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
