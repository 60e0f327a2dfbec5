#include "TestSupport.h"
#include "actions/Actions.h"
#include "config/BarConfig.h"
#include "platform/DesktopEntryFile.h"
#include "platform/Platform.h"

#include <QDBusConnection>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>
#include <sys/stat.h>

/// Stands in for a file manager on the test's private session bus.
class FakeFileManager : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.FileManager1")

public:
    QStringList shown;

public Q_SLOTS:
    void ShowItems(const QStringList& uris, const QString&) { shown += uris; }
};

/// Launching through hand-made desktop entries and MIME defaults in the temporary XDG folders of the
/// test session; every entry runs a script that records how it was started.
class TestDesktopLaunch : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init() { QFile::remove(m_record); }
    void applicationsResolveByPathIdNameRoleAndPath();
    void documentsAndAddressesOpenInTheirDefaults();
    void shellCommandsRunInTheLoginShellWithoutBlocking();
    void newFoldersAreNumberedAndRevealed();
    void launchAtLoginEntryStartsTheProgramWhereverItIs_data();
    void launchAtLoginEntryStartsTheProgramWhereverItIs();

private:
    void writeEntry(const QString& id, const QString& name, const QString& tag, const QString& extra = {});
    QStringList recorded() const;
    QString m_home;
    QString m_record;
    std::unique_ptr<Platform> m_platform;
};

void TestDesktopLaunch::writeEntry(const QString& id, const QString& name, const QString& tag,
                                   const QString& extra)
{
    const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/applications");
    QVERIFY(QDir().mkpath(folder));
    const QString text =
        QStringLiteral("[Desktop Entry]\nType=Application\nName=%1\nExec=%2/record.sh %3 %U\n%4")
            .arg(name, m_home, tag, extra);
    QVERIFY(writeAll(folder + QLatin1Char('/') + id, text.toUtf8()));
}

QStringList TestDesktopLaunch::recorded() const
{
    return QString::fromUtf8(readAll(m_record)).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

void TestDesktopLaunch::initTestCase()
{
    // The session script gives every test a fresh home and XDG folders; never run this against real ones.
    m_home = QDir::homePath();
    QVERIFY2(m_home.startsWith(QDir::tempPath()), "run through tests/x11/with-x-session.sh");
    m_record = m_home + QStringLiteral("/record.txt");
    QVERIFY(writeAll(m_home + QStringLiteral("/record.sh"),
                     QStringLiteral("#!/bin/sh\necho \"$*\" >> '%1'\n").arg(m_record).toUtf8()));
    QVERIFY(QFile::setPermissions(m_home + QStringLiteral("/record.sh"),
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    writeEntry(QStringLiteral("org.example.Recorder.desktop"), QStringLiteral("Fancy Recorder"),
               QStringLiteral("recorder"));
    writeEntry(QStringLiteral("org.example.Browser.desktop"), QStringLiteral("Web Browser"),
               QStringLiteral("browser"), QStringLiteral("MimeType=x-scheme-handler/https;\n"));
    writeEntry(QStringLiteral("org.example.Editor.desktop"), QStringLiteral("Text Editor"),
               QStringLiteral("editor"), QStringLiteral("MimeType=text/plain;\n"));
    writeEntry(QStringLiteral("org.example.Files.desktop"), QStringLiteral("Files"), QStringLiteral("files"),
               QStringLiteral("MimeType=inode/directory;\n"));
    QVERIFY(writeAll(qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/mimeapps.list"),
                     "[Default Applications]\n"
                     "x-scheme-handler/https=org.example.Browser.desktop\n"
                     "text/plain=org.example.Editor.desktop\n"
                     "inode/directory=org.example.Files.desktop\n"));

    const QString bin = m_home + QStringLiteral("/bin");
    QVERIFY(QDir().mkpath(bin));
    QVERIFY(QFile::link(m_home + QStringLiteral("/record.sh"), bin + QStringLiteral("/plain-tool")));
    qputenv("PATH", (bin + QLatin1Char(':') + qEnvironmentVariable("PATH")).toLocal8Bit());

    m_platform = createDesktopPlatform();
}

void TestDesktopLaunch::applicationsResolveByPathIdNameRoleAndPath()
{
    Launcher& launcher = m_platform->launcher();
    const QString file = m_home + QStringLiteral("/letter.txt");
    QVERIFY(writeAll(file, "Dear"));
    const QString entryPath =
        qEnvironmentVariable("XDG_DATA_HOME") + QStringLiteral("/applications/org.example.Recorder.desktop");

    QVERIFY(launcher.launchApplication(QStringLiteral("fancy RECORDER"), {}));           // by name, any case
    QVERIFY(launcher.launchApplication(QStringLiteral("org.example.Recorder"), {file})); // by id, with a file
    QVERIFY(launcher.launchApplication(QStringLiteral("org.example.Editor.desktop"), {})); // by full id
    QVERIFY(launcher.launchApplication(QStringLiteral("Safari"), {})); // the default browser
    QVERIFY(launcher.launchApplication(entryPath, {}));                // by path
    QVERIFY(launcher.launchApplication(QStringLiteral("plain-tool"), {QStringLiteral("x")})); // on PATH
    QVERIFY(!launcher.launchApplication(QStringLiteral("No Such Application"), {}));
    // A FIFO under a desktop entry's name is no entry: refused at once, never read, which would hang.
    const QString fifo = m_home + QStringLiteral("/x.desktop");
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0644), 0);
    QVERIFY(!launcher.launchApplication(fifo, {}));
    QTRY_COMPARE_WITH_TIMEOUT(recorded().size(), 6, 10000);
    QStringList lines = recorded();
    lines.sort();
    QCOMPARE(lines, (QStringList{QStringLiteral("browser"), QStringLiteral("editor"),
                                 QStringLiteral("recorder"), QStringLiteral("recorder"),
                                 QStringLiteral("recorder ") + file, QStringLiteral("x")}));
}

void TestDesktopLaunch::documentsAndAddressesOpenInTheirDefaults()
{
    Actions actions(*m_platform);
    const QString file = m_home + QStringLiteral("/notes.txt");
    QVERIFY(writeAll(file, "text"));
    ButtonSpec open;
    open.action = QStringLiteral("open");
    open.argument = QStringLiteral("~/notes.txt");
    actions.run(open);
    ButtonSpec url;
    url.action = QStringLiteral("url");
    url.argument = QStringLiteral("  example.org/path ");
    actions.run(url);
    QTRY_COMPARE_WITH_TIMEOUT(recorded().size(), 2, 10000);
    QStringList lines = recorded();
    lines.sort();
    QCOMPARE(lines, (QStringList{QStringLiteral("browser https://example.org/path"),
                                 QStringLiteral("editor ") + file}));
}

void TestDesktopLaunch::shellCommandsRunInTheLoginShellWithoutBlocking()
{
    qputenv("SHELL", "/bin/bash");
    QVERIFY(writeAll(m_home + QStringLiteral("/.profile"), "export VANTRIL_PROFILE_MARK=from-the-profile\n"));
    Actions actions(*m_platform);
    ButtonSpec shell;
    shell.action = QStringLiteral("shell");
    shell.argument = QStringLiteral("echo \"$VANTRIL_PROFILE_MARK\" > \"$HOME/shell-out.txt\"");
    actions.run(shell);
    QTRY_COMPARE_WITH_TIMEOUT(readAll(m_home + QStringLiteral("/shell-out.txt")),
                              QByteArray("from-the-profile\n"), 10000);

    QElapsedTimer clock;
    clock.start();
    // exec: the shell itself must not wait, holding the test runner's output open, for 30 s.
    shell.argument = QStringLiteral("exec sleep 30 >/dev/null 2>&1");
    actions.run(shell);
    QVERIFY2(clock.elapsed() < 1000, "a long command must not hold up the bar");
}

void TestDesktopLaunch::newFoldersAreNumberedAndRevealed()
{
    const QString desktop = m_home + QStringLiteral("/Schreibtisch");
    QVERIFY(QDir().mkpath(desktop));
    QVERIFY(writeAll(qEnvironmentVariable("XDG_CONFIG_HOME") + QStringLiteral("/user-dirs.dirs"),
                     "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"));
    QCOMPARE(m_platform->fileManager().desktopFolder(), desktop);

    Actions actions(*m_platform);
    ButtonSpec newFolder;
    newFolder.action = QStringLiteral("newFolder");
    // No file manager on the bus: the folder that holds the new one is opened instead.
    actions.run(newFolder);
    QVERIFY(QFileInfo(desktop + QStringLiteral("/untitled folder")).isDir());
    QTRY_COMPARE_WITH_TIMEOUT(recorded(), QStringList{QStringLiteral("files ") + desktop}, 10000);

    // With one, it is asked to show the new folder selected.
    FakeFileManager fileManager;
    QDBusConnection bus = QDBusConnection::sessionBus();
    QVERIFY(bus.registerObject(QStringLiteral("/org/freedesktop/FileManager1"), &fileManager,
                               QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(QStringLiteral("org.freedesktop.FileManager1")));
    actions.run(newFolder);
    QVERIFY(QFileInfo(desktop + QStringLiteral("/untitled folder 2")).isDir());
    QTRY_COMPARE_WITH_TIMEOUT(
        fileManager.shown,
        QStringList{QUrl::fromLocalFile(desktop + QStringLiteral("/untitled folder 2")).toString()}, 10000);
}

void TestDesktopLaunch::launchAtLoginEntryStartsTheProgramWhereverItIs_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("exec"); // as written after "Exec=", the program's path following the folder
    QTest::addColumn<bool>("glibStartsIt");
    QTest::newRow("plain") << QStringLiteral("plain") << QStringLiteral("\"%1/plain/vantril\"") << true;
    QTest::newRow("spaces") << QStringLiteral("my programs") << QStringLiteral("\"%1/my programs/vantril\"")
                            << true;
    QTest::newRow("shell specials") << QStringLiteral("$HOME `id` \"q\" 'single' ;|&<>*?#()")
                                    << QStringLiteral("\"%1/\\\\$HOME \\\\`id\\\\` \\\\\"q\\\\\" "
                                                      "'single' ;|&<>*?#()/vantril\"")
                                    << true;
    QTest::newRow("backslashes") << QStringLiteral("back\\slash")
                                 << QStringLiteral("\"%1/back\\\\\\\\slash/vantril\"") << true;
    // GLib looks for the program before it undoes "%%", finds none, and refuses the whole entry, so GNOME
    // would not start this one; the line still follows the rules, which other desktops read correctly.
    QTest::newRow("percent signs") << QStringLiteral("100% %U %f")
                                   << QStringLiteral("\"%1/100%% %%U %%f/vantril\"") << false;
    QTest::newRow("not ASCII") << QStringLiteral("Programme für Ärger")
                               << QStringLiteral("\"%1/Programme für Ärger/vantril\"") << true;
}

void TestDesktopLaunch::launchAtLoginEntryStartsTheProgramWhereverItIs()
{
    QFETCH(QString, folder);
    QFETCH(QString, exec);
    QFETCH(bool, glibStartsIt);
    const QString base = m_home + QStringLiteral("/launch");
    const QString program = base + QLatin1Char('/') + folder + QStringLiteral("/vantril");
    QVERIFY(QDir().mkpath(base + QLatin1Char('/') + folder));
    // It says how many arguments it got: a field code left in the line or a path split in two adds some.
    QVERIFY(writeAll(program,
                     QStringLiteral("#!/bin/sh\necho \"started with $#\" >> '%1'\n").arg(m_record).toUtf8()));
    QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    const QString line = desktopEntryExecArgument(program);
    QCOMPARE(line, exec.arg(base));
    const QString entry = base + QStringLiteral("/vantril.desktop");
    QVERIFY(writeAll(entry, (QStringLiteral("[Desktop Entry]\nType=Application\nName=Vantril\nExec=") + line +
                             QStringLiteral("\n"))
                                .toUtf8()));
    const QString validator = QStandardPaths::findExecutable(QStringLiteral("desktop-file-validate"));
    if (!validator.isEmpty()) {
        QProcess validate;
        validate.start(validator, {entry});
        QVERIFY(validate.waitForFinished(30000));
        QVERIFY2(validate.exitCode() == 0, validate.readAllStandardOutput().constData());
    }
    if (!glibStartsIt)
        return;
    QVERIFY(m_platform->launcher().launchApplication(entry, {}));
    QTRY_COMPARE_WITH_TIMEOUT(recorded(), QStringList{QStringLiteral("started with 0")}, 10000);
}

QTEST_MAIN(TestDesktopLaunch)
#include "tst_desktoplaunch.moc"
