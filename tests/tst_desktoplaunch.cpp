#include "TestSupport.h"
#include "actions/Actions.h"
#include "app/ContextTracker.h"
#include "config/BarConfig.h"
#include "platform/DesktopEntryFile.h"
#include "platform/Platform.h"
#include "platform/desktopshell/KWinFrontScript.h"
#include "platform/desktopshell/SessionFrontApplication.h"
#include "platform/fake/FakePlatform.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
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

/// Stands in for KWin's scripting interface and the one script it loads (at /0, as KWin 5 exports it).
class FakeKWin : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.kwin.Scripting")

public:
    QStringList calls;

public Q_SLOTS:
    int loadScript(const QString& path, const QString& plugin)
    {
        calls += QStringLiteral("loadScript %1 %2").arg(path, plugin);
        return 0;
    }
    bool unloadScript(const QString& plugin)
    {
        calls += QStringLiteral("unloadScript ") + plugin;
        return true;
    }
};

class FakeKWinScript : public QObject
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.kwin.Script")

public:
    explicit FakeKWinScript(FakeKWin& kwin)
        : m_kwin(kwin)
    {}

public Q_SLOTS:
    void run() { m_kwin.calls += QStringLiteral("run"); }

private:
    FakeKWin& m_kwin;
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
    void desktopShellReportsNameTheFrontApplication_data();
    void desktopShellReportsNameTheFrontApplication();
    void desktopShellReportsRuleWhileTheyCome();

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
    actions.run(button(QString(), QStringLiteral("open"), QStringLiteral("~/notes.txt")));
    actions.run(button(QString(), QStringLiteral("url"), QStringLiteral("  example.org/path ")));
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
    actions.run(button(QString(), QStringLiteral("shell"),
                       QStringLiteral("echo \"$VANTRIL_PROFILE_MARK\" > \"$HOME/shell-out.txt\"")));
    QTRY_COMPARE_WITH_TIMEOUT(readAll(m_home + QStringLiteral("/shell-out.txt")),
                              QByteArray("from-the-profile\n"), 10000);

    QElapsedTimer clock;
    clock.start();
    // exec: the shell itself must not wait, holding the test runner's output open, for 30 s.
    actions.run(button(QString(), QStringLiteral("shell"), QStringLiteral("exec sleep 30 >/dev/null 2>&1")));
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

namespace {

/// Calls the bar's object as KWin's script or the GNOME Shell extension does, from `connection`.
void report(const QString& connection, const QString& method, const QStringList& arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("io.github.vantril.Vantril"), QStringLiteral("/FrontApplication"),
        QStringLiteral("io.github.vantril.FrontApplication"), method);
    for (const QString& argument : arguments)
        call << argument;
    QDBusConnection::connectToBus(QDBusConnection::SessionBus, connection).asyncCall(call);
}

ApplicationIdentity named(const QString& windowClass)
{
    ApplicationIdentity app;
    app.id = app.name = app.windowClass = windowClass;
    return app;
}

} // namespace

void TestDesktopLaunch::desktopShellReportsNameTheFrontApplication_data()
{
    // source, app id, window class, instance, pid: what KWin's script or the extension sends.
    QTest::addColumn<QStringList>("sent");
    QTest::addColumn<QString>("id"); // of the application adopted; empty when none is
    QTest::addColumn<QString>("set");

    const QString kwin = QStringLiteral("kwin");
    const QString shell = QStringLiteral("gnome-shell");
    const QString recorder = QStringLiteral("org.example.Recorder");
    QTest::newRow("KWin, a native window by its desktop file")
        << QStringList{kwin, recorder, QStringLiteral("org.example.recorder"), QString(), QStringLiteral("0")}
        << recorder << recorder;
    // KWin sends the class in lower case.
    QTest::newRow("KWin, an X11 window by its class")
        << QStringList{kwin, QString(), QStringLiteral("mytool"), QStringLiteral("vantril-test-tool"),
                       QStringLiteral("0")}
        << QStringLiteral("mytool") << QStringLiteral("MyTool");
    QTest::newRow("GNOME Shell, the desktop file with its suffix")
        << QStringList{shell, recorder + QStringLiteral(".desktop"), recorder, QString(), QStringLiteral("0")}
        << recorder << recorder;
    QTest::newRow("GNOME Shell, a window no desktop file is found for")
        << QStringList{shell, QString(), QStringLiteral("MyTool"), QString(), QStringLiteral("not a pid")}
        << QStringLiteral("MyTool") << QStringLiteral("MyTool");
    QTest::newRow("the bar's own window")
        << QStringList{kwin, QString(), QStringLiteral("vantril"), QStringLiteral("vantril"),
                       QString::number(QCoreApplication::applicationPid())}
        << QString() << QString();
    QTest::newRow("a window that names nothing")
        << QStringList{shell, QString(), QString(), QString(), QStringLiteral("0")} << QString() << QString();
    QTest::newRow("a sender that is no desktop shell")
        << QStringList{QStringLiteral("xdotool"), recorder, recorder, QString(), QStringLiteral("0")}
        << QString() << QString();
}

void TestDesktopLaunch::desktopShellReportsNameTheFrontApplication()
{
    QFETCH(QStringList, sent);
    QFETCH(QString, id);
    QFETCH(QString, set);
    FakePlatform x11;
    SessionFrontApplication front(x11.frontApplication(), false, QString());
    QList<ApplicationIdentity> adopted;
    front.watch([&adopted](const ApplicationIdentity& app) { adopted += app; });

    report(QStringLiteral("shell"), QStringLiteral("WindowActivated"), sent);
    // A report that is sure to count, so that the one before it has been handled once this one is.
    report(
        QStringLiteral("shell"), QStringLiteral("WindowActivated"),
        {QStringLiteral("gnome-shell"), QString(), QStringLiteral("Last"), QString(), QStringLiteral("0")});
    QTRY_VERIFY_WITH_TIMEOUT(!adopted.isEmpty() && adopted.last().id == u"Last", 10000);
    QCOMPARE(adopted.size(), id.isEmpty() ? 1 : 2);
    if (id.isEmpty())
        return;
    QCOMPARE(adopted.first().id, id);
    // The set is chosen as for an X11 window.
    BarConfig cfg;
    cfg.appSets = QList<AppSet>{{QStringLiteral("MyTool"), QStringLiteral("Tool"), {}},
                                {QStringLiteral("org.example.Recorder"), QStringLiteral("Recorder"), {}}};
    const auto index = AppContext::setFor(cfg, ContextTracker::contextOf(adopted.first()));
    QVERIFY(index);
    QCOMPARE(cfg.appSets->at(*index).app, set);
}

void TestDesktopLaunch::desktopShellReportsRuleWhileTheyCome()
{
    FakeKWin kwin;
    FakeKWinScript script(kwin);
    {
        QDBusConnection bus =
            QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("kwin"));
        QVERIFY(bus.registerObject(QStringLiteral("/Scripting"), &kwin, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerObject(QStringLiteral("/0"), &script, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(QStringLiteral("org.kde.KWin")));
    }
    const QString path = KWinFrontScript::installedPath();
    QVERIFY2(path.endsWith(QStringLiteral("/share/vantril/kwin/front-application.js")), qPrintable(path));
    FakePlatform x11;
    x11.front = named(QStringLiteral("X11App"));
    auto front = std::make_unique<SessionFrontApplication>(x11.frontApplication(), true, path);
    QCOMPARE(front->reach().detail, QStringLiteral("reported by a KWin script"));
    QList<ApplicationIdentity> adopted;
    front->watch([&adopted](const ApplicationIdentity& app) { adopted += app; });
    const QString plugin = QStringLiteral("vantril-front-application");
    QTRY_COMPARE_WITH_TIMEOUT(
        kwin.calls,
        (QStringList{QStringLiteral("unloadScript ") + plugin,
                     QStringLiteral("loadScript %1 %2").arg(path, plugin), QStringLiteral("run")}),
        10000);

    // Until the first report, X11 windows are followed.
    x11.activated(named(QStringLiteral("X11Before")));
    QCOMPARE(adopted.size(), 1);
    QCOMPARE(front->current().value_or(ApplicationIdentity()).id, QStringLiteral("X11App"));

    // GNOME Shell reports; meanwhile X11 is not heard; it is again once GNOME Shell leaves the bus.
    const auto reportFrom = [](const QString& connection, const QString& source, const QString& windowClass) {
        report(connection, QStringLiteral("WindowActivated"),
               {source, QString(), windowClass, QString(), QStringLiteral("0")});
    };
    reportFrom(QStringLiteral("shell"), QStringLiteral("gnome-shell"), QStringLiteral("Native"));
    QTRY_COMPARE_WITH_TIMEOUT(adopted.size(), 2, 10000);
    QCOMPARE(front->current().value_or(ApplicationIdentity()).id, QStringLiteral("Native"));
    QCOMPARE(front->reach().detail,
             QStringLiteral("reported by the GNOME Shell extension vantril@vantril.github.io"));
    x11.activated(named(QStringLiteral("X11Muted")));
    QCOMPARE(adopted.size(), 2);
    QDBusConnection::disconnectFromBus(QStringLiteral("shell"));
    QTRY_COMPARE_WITH_TIMEOUT(adopted.size(), 3, 10000);
    QCOMPARE(adopted.last().id, QStringLiteral("X11App"));
    QCOMPARE(front->current().value_or(ApplicationIdentity()).id, QStringLiteral("X11App"));

    // KWin's script the same way, until it says it stops.
    reportFrom(QStringLiteral("kwin"), QStringLiteral("kwin"), QStringLiteral("Konsole"));
    QTRY_COMPARE_WITH_TIMEOUT(adopted.size(), 4, 10000);
    QCOMPARE(front->reach().detail, QStringLiteral("reported by a KWin script"));
    report(QStringLiteral("kwin"), QStringLiteral("ReportsEnded"), {QStringLiteral("kwin")});
    QTRY_COMPARE_WITH_TIMEOUT(adopted.size(), 5, 10000);
    QCOMPARE(adopted.last().id, QStringLiteral("X11App"));

    // A bar that quits takes its script out of KWin.
    front.reset();
    QTRY_COMPARE_WITH_TIMEOUT(kwin.calls.size(), 4, 10000);
    QCOMPARE(kwin.calls.last(), QStringLiteral("unloadScript ") + plugin);
    QDBusConnection::disconnectFromBus(QStringLiteral("kwin"));
}

QTEST_MAIN(TestDesktopLaunch)
#include "tst_desktoplaunch.moc"
