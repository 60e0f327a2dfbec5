#include "TestSupport.h"

#include <QProcess>
#include <QTest>

/// The real binary, started the way a user or a script starts it.
class TestProgram : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void withoutDisplay_data();
    void withoutDisplay();
};

void TestProgram::withoutDisplay_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("display"); // DISPLAY, empty: unset
    QTest::addColumn<QString>("folder");  // the configuration folder within the temporary one
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("out"); // ending in "…": one line that begins so
    QTest::addColumn<QString>("err");
    const auto row = [](const QString& name, const QStringList& arguments, const char* display, int status,
                        const char* out, const char* err, const char* folder = "") {
        QTest::newRow(qPrintable(name))
            << arguments << QString::fromUtf8(display) << QString::fromUtf8(folder) << status
            << QString::fromUtf8(out) << QString::fromUtf8(err);
    };
    // The command line works without a display.
    row(u"keys parsed"_s, {u"--parse-keys"_s, u"cmd+v"_s}, "", 0, "keyCode=9 flags=1048576 carbon=256\n", "");
    row(u"no display"_s, {}, "", 1, "", "vantril: no X display…");
    row(u"a display that cannot be opened"_s, {}, ":4711", 1, "",
        "vantril: cannot open the X display \":4711\"\n");
    row(u"--open without a title"_s, {u"--open"_s}, "", 1, "",
        "vantril: --open needs the title of a button\n");
    // Hiding or ending a bar that does not run needs no display either.
    for (const QString& word : {u"--hide"_s, u"--quit"_s}) {
        row(word, {word}, "", 0, "", "");
        row(word + u", folder not there"_s, {word}, "", 0, "", "", "absent");
    }
}

void TestProgram::withoutDisplay()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, display);
    QFETCH(QString, folder);
    QFETCH(int, status);
    QFETCH(QString, out);
    QFETCH(QString, err);
    TempConfigDir dir;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "VANTRIL_RESTORE", "VANTRIL_PRESET",
                             "VANTRIL_REMOVE_PRESET", "VANTRIL_CONTEXT_APP"})
        environment.remove(QString::fromUtf8(name));
    if (!display.isEmpty())
        environment.insert(u"DISPLAY"_s, display);
    environment.insert(u"VANTRIL_CONFIG_DIR"_s, dir.file(folder));
    environment.insert(u"XDG_CONFIG_HOME"_s, dir.file(u"xdg"_s));
    QProcess process;
    process.setProcessEnvironment(environment);
    process.setWorkingDirectory(dir.path());
    process.start(QStringLiteral(VANTRIL_BINARY), arguments);
    QVERIFY(process.waitForFinished(30000));
    QCOMPARE(process.exitStatus(), QProcess::NormalExit);
    QCOMPARE(process.exitCode(), status);
    const auto matches = [](const QString& got, const QString& wanted) {
        return wanted.endsWith(u'…') ? got.startsWith(wanted.chopped(1)) && got.count(u'\n') == 1
                                     : got == wanted;
    };
    const QString said = QString::fromUtf8(process.readAllStandardOutput());
    const QString complained = QString::fromUtf8(process.readAllStandardError());
    QVERIFY2(matches(said, out), qPrintable(said));
    QVERIFY2(matches(complained, err), qPrintable(complained));
    // Nothing was loaded, written or locked for it.
    QCOMPARE(entries(dir.path()), QStringList());
}

QTEST_GUILESS_MAIN(TestProgram)
#include "tst_program.moc"
