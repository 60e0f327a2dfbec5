#include "TestSupport.h"
#include "actions/Actions.h"
#include "app/ContextTracker.h"
#include "config/BarConfig.h"
#include "platform/DesktopEntryFile.h"
#include "platform/Platform.h"
#include "platform/desktopshell/KWinFrontScript.h"
#include "platform/desktopshell/SessionFrontApplication.h"
#include "platform/fake/FakePlatform.h"
#include "platform/freedesktop/DesktopEntriesModule.h"

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
        calls += u"loadScript %1 %2"_s.arg(path, plugin);
        return 0;
    }
    bool unloadScript(const QString& plugin)
    {
        calls += u"unloadScript "_s + plugin;
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
    void run() { m_kwin.calls += u"run"_s; }

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
    const QString folder = qEnvironmentVariable("XDG_DATA_HOME") + u"/applications"_s;
    QVERIFY(QDir().mkpath(folder));
    const QString text = u"[Desktop Entry]\nType=Application\nName=%1\nExec=%2/record.sh %3 %U\n%4"_s.arg(
        name, m_home, tag, extra);
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
    DesktopEntriesModule::setFolder(QStringLiteral(DESKTOP_ENTRIES_MODULE_DIR));
    m_record = m_home + u"/record.txt"_s;
    QVERIFY(writeAll(m_home + u"/record.sh"_s, u"#!/bin/sh\necho \"$*\" >> '%1'\n"_s.arg(m_record).toUtf8()));
    QVERIFY(QFile::setPermissions(m_home + u"/record.sh"_s,
                                  QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    writeEntry(u"org.example.Recorder.desktop"_s, u"Fancy Recorder"_s, u"recorder"_s);
    writeEntry(u"org.example.Browser.desktop"_s, u"Web Browser"_s, u"browser"_s,
               u"MimeType=x-scheme-handler/https;\n"_s);
    writeEntry(u"org.example.Editor.desktop"_s, u"Text Editor"_s, u"editor"_s, u"MimeType=text/plain;\n"_s);
    writeEntry(u"org.example.Files.desktop"_s, u"Files"_s, u"files"_s, u"MimeType=inode/directory;\n"_s);
    QVERIFY(writeAll(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/mimeapps.list"_s,
                     "[Default Applications]\n"
                     "x-scheme-handler/https=org.example.Browser.desktop\n"
                     "text/plain=org.example.Editor.desktop\n"
                     "inode/directory=org.example.Files.desktop\n"));

    const QString bin = m_home + u"/bin"_s;
    QVERIFY(QDir().mkpath(bin));
    QVERIFY(QFile::link(m_home + u"/record.sh"_s, bin + u"/plain-tool"_s));
    qputenv("PATH", (bin + QLatin1Char(':') + qEnvironmentVariable("PATH")).toLocal8Bit());

    m_platform = createDesktopPlatform();
}

void TestDesktopLaunch::applicationsResolveByPathIdNameRoleAndPath()
{
    Launcher& launcher = m_platform->launcher();
    const QString file = m_home + u"/letter.txt"_s;
    QVERIFY(writeAll(file, "Dear"));
    const QString entryPath =
        qEnvironmentVariable("XDG_DATA_HOME") + u"/applications/org.example.Recorder.desktop"_s;

    QVERIFY(launcher.launchApplication(u"fancy RECORDER"_s, {}));             // by name, any case
    QVERIFY(launcher.launchApplication(u"org.example.Recorder"_s, {file}));   // by id, with a file
    QVERIFY(launcher.launchApplication(u"org.example.Editor.desktop"_s, {})); // by full id
    QVERIFY(launcher.launchApplication(u"Safari"_s, {}));                     // the default browser
    QVERIFY(launcher.launchApplication(entryPath, {}));                       // by path
    QVERIFY(launcher.launchApplication(u"plain-tool"_s, {u"x"_s}));           // on PATH
    QVERIFY(!launcher.launchApplication(u"No Such Application"_s, {}));
    // A FIFO under a desktop entry's name is no entry: refused at once, never read, which would hang.
    const QString fifo = m_home + u"/x.desktop"_s;
    QCOMPARE(::mkfifo(QFile::encodeName(fifo).constData(), 0644), 0);
    QVERIFY(!launcher.launchApplication(fifo, {}));
    QTRY_COMPARE_WITH_TIMEOUT(recorded().size(), 6, 10000);
    QStringList lines = recorded();
    lines.sort();
    QCOMPARE(lines, (QStringList{u"browser"_s, u"editor"_s, u"recorder"_s, u"recorder"_s,
                                 u"recorder "_s + file, u"x"_s}));
}

void TestDesktopLaunch::documentsAndAddressesOpenInTheirDefaults()
{
    Actions actions(*m_platform);
    const QString file = m_home + u"/notes.txt"_s;
    QVERIFY(writeAll(file, "text"));
    actions.run(button(QString(), u"open"_s, u"~/notes.txt"_s));
    actions.run(button(QString(), u"url"_s, u"  example.org/path "_s));
    QTRY_COMPARE_WITH_TIMEOUT(recorded().size(), 2, 10000);
    QStringList lines = recorded();
    lines.sort();
    QCOMPARE(lines, (QStringList{u"browser https://example.org/path"_s, u"editor "_s + file}));
}

void TestDesktopLaunch::shellCommandsRunInTheLoginShellWithoutBlocking()
{
    qputenv("SHELL", "/bin/bash");
    QVERIFY(writeAll(m_home + u"/.profile"_s, "export VANTRIL_PROFILE_MARK=from-the-profile\n"));
    Actions actions(*m_platform);
    actions.run(button(QString(), u"shell"_s, u"echo \"$VANTRIL_PROFILE_MARK\" > \"$HOME/shell-out.txt\""_s));
    QTRY_COMPARE_WITH_TIMEOUT(readAll(m_home + u"/shell-out.txt"_s), QByteArray("from-the-profile\n"), 10000);

    QElapsedTimer clock;
    clock.start();
    // exec: the shell itself must not wait, holding the test runner's output open, for 30 s.
    actions.run(button(QString(), u"shell"_s, u"exec sleep 30 >/dev/null 2>&1"_s));
    QVERIFY2(clock.elapsed() < 1000, "a long command must not hold up the bar");
}

void TestDesktopLaunch::newFoldersAreNumberedAndRevealed()
{
    const QString desktop = m_home + u"/Schreibtisch"_s;
    QVERIFY(QDir().mkpath(desktop));
    QVERIFY(writeAll(qEnvironmentVariable("XDG_CONFIG_HOME") + u"/user-dirs.dirs"_s,
                     "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"));
    QCOMPARE(m_platform->fileManager().desktopFolder(), desktop);

    Actions actions(*m_platform);
    ButtonSpec newFolder;
    newFolder.action = u"newFolder"_s;
    // No file manager on the bus: the folder that holds the new one is opened instead.
    actions.run(newFolder);
    QVERIFY(QFileInfo(desktop + u"/untitled folder"_s).isDir());
    QTRY_COMPARE_WITH_TIMEOUT(recorded(), QStringList{u"files "_s + desktop}, 10000);

    // With one, it is asked to show the new folder selected.
    FakeFileManager fileManager;
    QDBusConnection bus = QDBusConnection::sessionBus();
    QVERIFY(bus.registerObject(u"/org/freedesktop/FileManager1"_s, &fileManager,
                               QDBusConnection::ExportAllSlots));
    QVERIFY(bus.registerService(u"org.freedesktop.FileManager1"_s));
    actions.run(newFolder);
    QVERIFY(QFileInfo(desktop + u"/untitled folder 2"_s).isDir());
    QTRY_COMPARE_WITH_TIMEOUT(fileManager.shown,
                              QStringList{QUrl::fromLocalFile(desktop + u"/untitled folder 2"_s).toString()},
                              10000);
}

void TestDesktopLaunch::launchAtLoginEntryStartsTheProgramWhereverItIs_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("exec"); // as written after "Exec=", the program's path following the folder
    QTest::addColumn<bool>("glibStartsIt");
    QTest::newRow("plain") << u"plain"_s << u"\"%1/plain/vantril\""_s << true;
    QTest::newRow("spaces") << u"my programs"_s << u"\"%1/my programs/vantril\""_s << true;
    QTest::newRow("shell specials") << u"$HOME `id` \"q\" 'single' ;|&<>*?#()"_s
                                    << QStringLiteral("\"%1/\\\\$HOME \\\\`id\\\\` \\\\\"q\\\\\" "
                                                      "'single' ;|&<>*?#()/vantril\"")
                                    << true;
    QTest::newRow("backslashes") << u"back\\slash"_s << u"\"%1/back\\\\\\\\slash/vantril\""_s << true;
    // GLib looks for the program before it undoes "%%", finds none, and refuses the whole entry, so GNOME
    // would not start this one; the line still follows the rules, which other desktops read correctly.
    QTest::newRow("percent signs") << u"100% %U %f"_s << u"\"%1/100%% %%U %%f/vantril\""_s << false;
    QTest::newRow("not ASCII") << u"Programme für Ärger"_s << u"\"%1/Programme für Ärger/vantril\""_s << true;
}

void TestDesktopLaunch::launchAtLoginEntryStartsTheProgramWhereverItIs()
{
    QFETCH(QString, folder);
    QFETCH(QString, exec);
    QFETCH(bool, glibStartsIt);
    const QString base = m_home + u"/launch"_s;
    const QString program = base + QLatin1Char('/') + folder + u"/vantril"_s;
    QVERIFY(QDir().mkpath(base + QLatin1Char('/') + folder));
    // It says how many arguments it got: a field code left in the line or a path split in two adds some.
    QVERIFY(writeAll(program, u"#!/bin/sh\necho \"started with $#\" >> '%1'\n"_s.arg(m_record).toUtf8()));
    QVERIFY(QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));

    const QString line = desktopEntryExecArgument(program);
    QCOMPARE(line, exec.arg(base));
    const QString entry = base + u"/vantril.desktop"_s;
    QVERIFY(writeAll(
        entry, (u"[Desktop Entry]\nType=Application\nName=Vantril\nExec="_s + line + u"\n"_s).toUtf8()));
    const QString validator = QStandardPaths::findExecutable(u"desktop-file-validate"_s);
    if (!validator.isEmpty()) {
        QProcess validate;
        validate.start(validator, {entry});
        QVERIFY(validate.waitForFinished(30000));
        QVERIFY2(validate.exitCode() == 0, validate.readAllStandardOutput().constData());
    }
    if (!glibStartsIt)
        return;
    QVERIFY(m_platform->launcher().launchApplication(entry, {}));
    QTRY_COMPARE_WITH_TIMEOUT(recorded(), QStringList{u"started with 0"_s}, 10000);
}

namespace {

/// Calls the bar's object as KWin's script or the GNOME Shell extension does, from `connection`.
void report(const QString& connection, const QString& method, const QStringList& arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(u"io.github.vantril.Vantril"_s, u"/FrontApplication"_s,
                                                       u"io.github.vantril.FrontApplication"_s, method);
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

    const QString kwin = u"kwin"_s;
    const QString shell = u"gnome-shell"_s;
    const QString recorder = u"org.example.Recorder"_s;
    QTest::newRow("KWin, a native window by its desktop file")
        << QStringList{kwin, recorder, u"org.example.recorder"_s, QString(), u"0"_s} << recorder << recorder;
    // KWin sends the class in lower case.
    QTest::newRow("KWin, an X11 window by its class")
        << QStringList{kwin, QString(), u"mytool"_s, u"vantril-test-tool"_s, u"0"_s} << u"mytool"_s
        << u"MyTool"_s;
    QTest::newRow("GNOME Shell, the desktop file with its suffix")
        << QStringList{shell, recorder + u".desktop"_s, recorder, QString(), u"0"_s} << recorder << recorder;
    QTest::newRow("GNOME Shell, a window no desktop file is found for")
        << QStringList{shell, QString(), u"MyTool"_s, QString(), u"not a pid"_s} << u"MyTool"_s
        << u"MyTool"_s;
    QTest::newRow("the bar's own window") << QStringList{kwin, QString(), u"vantril"_s, u"vantril"_s,
                                                         QString::number(QCoreApplication::applicationPid())}
                                          << QString() << QString();
    QTest::newRow("a window that names nothing")
        << QStringList{shell, QString(), QString(), QString(), u"0"_s} << QString() << QString();
    QTest::newRow("a sender that is no desktop shell")
        << QStringList{u"xdotool"_s, recorder, recorder, QString(), u"0"_s} << QString() << QString();
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

    report(u"shell"_s, u"WindowActivated"_s, sent);
    // A report that is sure to count, so that the one before it has been handled once this one is.
    report(u"shell"_s, u"WindowActivated"_s, {u"gnome-shell"_s, QString(), u"Last"_s, QString(), u"0"_s});
    QTRY_VERIFY_WITH_TIMEOUT(!adopted.isEmpty() && adopted.last().id == u"Last", 10000);
    QCOMPARE(adopted.size(), id.isEmpty() ? 1 : 2);
    if (id.isEmpty())
        return;
    QCOMPARE(adopted.first().id, id);
    // The set is chosen as for an X11 window.
    BarConfig cfg;
    cfg.appSets = QList<AppSet>{{u"MyTool"_s, u"Tool"_s, {}}, {u"org.example.Recorder"_s, u"Recorder"_s, {}}};
    const auto index = AppContext::setFor(cfg, ContextTracker::contextOf(adopted.first()));
    QVERIFY(index);
    QCOMPARE(cfg.appSets->at(*index).app, set);
}

void TestDesktopLaunch::desktopShellReportsRuleWhileTheyCome()
{
    FakeKWin kwin;
    FakeKWinScript script(kwin);
    {
        QDBusConnection bus = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"kwin"_s);
        QVERIFY(bus.registerObject(u"/Scripting"_s, &kwin, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerObject(u"/0"_s, &script, QDBusConnection::ExportAllSlots));
        QVERIFY(bus.registerService(u"org.kde.KWin"_s));
    }
    const QString path = KWinFrontScript::installedPath();
    QVERIFY2(path.endsWith(u"/share/vantril/kwin/front-application.js"_s), qPrintable(path));
    FakePlatform x11;
    x11.front = named(u"X11App"_s);
    auto front = std::make_unique<SessionFrontApplication>(x11.frontApplication(), true, path);
    QCOMPARE(front->reach().detail, u"reported by a KWin script"_s);
    QList<ApplicationIdentity> adopted;
    front->watch([&adopted](const ApplicationIdentity& app) { adopted += app; });
    const QString plugin = u"vantril-front-application"_s;
    QTRY_COMPARE_WITH_TIMEOUT(
        kwin.calls,
        (QStringList{u"unloadScript "_s + plugin, u"loadScript %1 %2"_s.arg(path, plugin), u"run"_s}), 10000);

    // Until the first report, X11 windows are followed.
    x11.activated(named(u"X11Before"_s));
    QCOMPARE(adopted.size(), 1);
    QCOMPARE(front->current().value_or(ApplicationIdentity()).id, u"X11App"_s);

    // GNOME Shell reports; meanwhile X11 is not heard; it is again once GNOME Shell leaves the bus.
    const auto reportFrom = [](const QString& connection, const QString& source, const QString& windowClass) {
        report(connection, u"WindowActivated"_s, {source, QString(), windowClass, QString(), u"0"_s});
    };
    reportFrom(u"shell"_s, u"gnome-shell"_s, u"Native"_s);
    QTRY_COMPARE_WITH_TIMEOUT(adopted.size(), 2, 10000);
    QCOMPARE(front->current().value_or(ApplicationIdentity()).id, u"Native"_s);
    QCOMPARE(front->reach().detail, u"reported by the GNOME Shell extension vantril@vantril.github.io"_s);
    x11.activated(named(u"X11Muted"_s));
    QCOMPARE(adopted.size(), 2);
    QDBusConnection::disconnectFromBus(u"shell"_s);
    QTRY_COMPARE_WITH_TIMEOUT(adopted.size(), 3, 10000);
    QCOMPARE(adopted.last().id, u"X11App"_s);
    QCOMPARE(front->current().value_or(ApplicationIdentity()).id, u"X11App"_s);

    // KWin's script the same way, until it says it stops.
    reportFrom(u"kwin"_s, u"kwin"_s, u"Konsole"_s);
    QTRY_COMPARE_WITH_TIMEOUT(adopted.size(), 4, 10000);
    QCOMPARE(front->reach().detail, u"reported by a KWin script"_s);
    report(u"kwin"_s, u"ReportsEnded"_s, {u"kwin"_s});
    QTRY_COMPARE_WITH_TIMEOUT(adopted.size(), 5, 10000);
    QCOMPARE(adopted.last().id, u"X11App"_s);

    // A bar that quits takes its script out of KWin.
    front.reset();
    QTRY_COMPARE_WITH_TIMEOUT(kwin.calls.size(), 4, 10000);
    QCOMPARE(kwin.calls.last(), u"unloadScript "_s + plugin);
    QDBusConnection::disconnectFromBus(u"kwin"_s);
}

QTEST_MAIN(TestDesktopLaunch)
#include "tst_desktoplaunch.moc"
