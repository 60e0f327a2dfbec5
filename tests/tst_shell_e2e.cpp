// The real program's shell against a real X server and window manager (openbox unless VANTRIL_TEST_WM
// names another): hiding and showing the bar by pointer, hot key and command line, one bar per
// configuration folder, its menu, its tray icon and its update check, observed
// from the outside with xprop, xdotool, xset and the server's own answers. Runs inside
// tests/x11/with-x-session.sh; every test starts its own copy of the program with folders of its own.
// Screenshots of the menus and of the update window are saved to $VANTRIL_TEST_SCREENSHOTS when set.

#include "BarLayout.h"
#include "RunningBar.h"
#include "TestSupport.h"
#include "app/InstancePaths.h"
#include "app/MenuModel.h"
#include "app/UpdateVerdict.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QLabel>
#include <QMessageBox>
#include <QRegion>
#include <QRegularExpression>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <xcb/shape.h>

namespace {

/// How long the pointer may be away before the bar has faded out, and resting on its place before it
/// is back: ten ticks of 150 ms and a 200 ms fade, two ticks and a fade, with room for a busy machine.
constexpr int hideWithinMs = 2000;
constexpr int showWithinMs = 2000;

bool numLockOn()
{
    return QRegularExpression(QStringLiteral("Num Lock:\\s+on\\b"))
        .match(output(QStringLiteral("xset"), {QStringLiteral("q")}))
        .hasMatch();
}

/// One of the window's shapes, in window coordinates.
QRegion shapeOf(xcb_window_t window, xcb_shape_kind_t kind)
{
    const auto reply = adopt(xcb_shape_get_rectangles_reply(
        connection(), xcb_shape_get_rectangles(connection(), window, kind), nullptr));
    QRegion region;
    if (!reply)
        return region;
    const xcb_rectangle_t* rectangles = xcb_shape_get_rectangles_rectangles(reply.get());
    for (int i = 0; i < xcb_shape_get_rectangles_rectangles_length(reply.get()); ++i)
        region += QRect(rectangles[i].x, rectangles[i].y, rectangles[i].width, rectangles[i].height);
    return region;
}

std::optional<xcb_window_t> selectionOwner(const QByteArray& selection)
{
    const auto reply = adopt(xcb_get_selection_owner_reply(
        connection(), xcb_get_selection_owner(connection(), atom(selection)), nullptr));
    if (!reply || reply->owner == XCB_NONE)
        return std::nullopt;
    return reply->owner;
}

/// Visible windows of process `pid` somewhere inside a window of process `host`: icons embedded in a tray.
QList<xcb_window_t> embeddedWindows(qint64 pid, qint64 host)
{
    const xcb_atom_t pidAtom = atom(QByteArrayLiteral("_NET_WM_PID"));
    QList<xcb_window_t> found;
    std::function<void(xcb_window_t, bool)> walk = [&](xcb_window_t window, bool inside) {
        const auto owner = cardinal(window, pidAtom);
        if (inside && owner == quint32(pid) && attributesOf(window).value_or(Attributes{}).viewable)
            found.append(window);
        for (const xcb_window_t child : childWindows(window))
            walk(child, inside || owner == quint32(host));
    };
    walk(rootWindow(), false);
    return found;
}

/// Hidden as auto-hide and the hot key hide: faded out, letting every click through, and where no
/// compositor makes the fade visible, cut away to nothing.
bool fullyHidden(quintptr bar)
{
    const QString opacity = windowProperty(bar, QStringLiteral("_NET_WM_WINDOW_OPACITY")).trimmed();
    if (opacity != QStringLiteral("_NET_WM_WINDOW_OPACITY(CARDINAL) = 0"))
        return false;
    const auto window = static_cast<xcb_window_t>(bar);
    const QRect inside(QPoint(0, 0), screenRect(window).size());
    return !inside.isEmpty() && shapeOf(window, XCB_SHAPE_SK_INPUT).isEmpty() &&
           (isCompositing() || !shapeOf(window, XCB_SHAPE_SK_BOUNDING).intersects(inside));
}

/// Shown: opaque, drawn and taking clicks over its middle.
bool fullyShown(quintptr bar)
{
    const QString opacity = windowProperty(bar, QStringLiteral("_NET_WM_WINDOW_OPACITY")).trimmed();
    if (!opacity.endsWith(QStringLiteral("not found.")) &&
        opacity != QStringLiteral("_NET_WM_WINDOW_OPACITY(CARDINAL) = 4294967295"))
        return false;
    const auto window = static_cast<xcb_window_t>(bar);
    const QRect inside(QPoint(0, 0), screenRect(window).size());
    return !inside.isEmpty() && shapeOf(window, XCB_SHAPE_SK_INPUT).contains(inside.center()) &&
           shapeOf(window, XCB_SHAPE_SK_BOUNDING).contains(inside.center());
}

/// A command line run to its end: what it printed, and how long it took.
struct Ran
{
    int status = -1;
    QString out;
    QString err;
    qint64 ms = 0;
};

Ran run(const TestHome& home, const QStringList& arguments)
{
    QProcess process;
    process.setProcessEnvironment(home.environment(withoutFrontApp()));
    QElapsedTimer clock;
    clock.start();
    process.start(QStringLiteral(VANTRIL_BINARY), arguments);
    const bool ended = process.waitForFinished(windowTimeoutMs);
    const qint64 ms = clock.elapsed();
    if (!ended) {
        process.kill();
        process.waitForFinished();
    }
    return {ended && process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            QString::fromUtf8(process.readAllStandardOutput()),
            QString::fromUtf8(process.readAllStandardError()), ms};
}

/// Bars on screen, whichever process shows them.
int barsShown()
{
    const QList<quintptr> windows = topLevelWindows();
    return int(std::count_if(windows.begin(), windows.end(), [](quintptr window) {
        return windowName(window) == QStringLiteral("Vantril") && isViewable(window);
    }));
}

/// Whether the open flyout of `vantril` hangs above the chip titled `title` of `config`.
bool flyoutOn(RunningBar& vantril, const QString& title, const BarConfig& config = Config::defaults())
{
    const auto flyout = vantril.shownFlyout();
    const QRectF chip = layoutOf(config).chips.value(title);
    const QRect barFrame = frameOf(vantril.bar());
    if (!flyout || chip.isEmpty())
        return false;
    const QRect frame = frameOf(*flyout);
    return qAbs(frame.x() + frame.width() / 2.0 - (barFrame.x() + chip.center().x())) <= 2 &&
           frame.bottom() + 1 == barFrame.y() - 4;
}

/// A tiny HTTP server for the update feed: one fixed answer to every request, and the requests it saw.
class FeedServer : public QObject
{
public:
    explicit FeedServer(QByteArray body)
        : m_body(std::move(body))
    {
        connect(&m_server, &QTcpServer::newConnection, this, [this] {
            while (QTcpSocket* socket = m_server.nextPendingConnection()) {
                connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
                connect(socket, &QTcpSocket::readyRead, this, [this, socket] { serve(socket); });
            }
        });
    }

    bool listen(quint16 port) { return m_server.listen(QHostAddress::LocalHost, port); }
    QStringList requests() const { return m_requests; }

private:
    void serve(QTcpSocket* socket)
    {
        QByteArray& pending = m_pending[socket];
        pending += socket->readAll();
        if (!pending.contains("\r\n\r\n"))
            return;
        m_requests.append(QString::fromLatin1(pending.left(pending.indexOf("\r\n"))));
        m_pending.remove(socket);
        socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: " +
                      QByteArray::number(m_body.size()) + "\r\nConnection: close\r\n\r\n" + m_body);
        socket->disconnectFromHost();
    }

    QTcpServer m_server;
    QByteArray m_body;
    QHash<QTcpSocket*, QByteArray> m_pending;
    QStringList m_requests;
};

} // namespace

class TestShellEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void autoHideLetsClicksThroughAndRestBringsItBack();
    void hotKeyTogglesAlsoWithNumLock();
    void editedHotKeyReplacesTheOldOne();
    void commandsReachTheRunningBar();
    void commandsStartTheBarWhenNoneRuns();
    void oneBarPerFolderAfterACrashBesideOthersAndWithoutALock();
    void barMenuTogglesLaunchAtLoginAndQuits();
    void trayIconOpensTheMenuAndGoesAway();
    void updateCheckReportsTheNewerVersion();

private:
    std::unique_ptr<TestHome> m_home;
    int m_defaultWidth = 0;
};

void TestShellEndToEnd::initTestCase()
{
    QVERIFY(onSessionScreen());
    useProgramIconTheme();
    m_defaultWidth = layoutOf(Config::defaults()).width;
    QVERIFY2(!numLockOn(), "Num Lock is on before any test turned it on");
}

void TestShellEndToEnd::init()
{
    m_home = std::make_unique<TestHome>();
    QVERIFY(m_home->isValid());
    // Away from where the bar will be, so that nothing is hovered or rested on by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
}

void TestShellEndToEnd::cleanup()
{
    // The lock state belongs to the server, which the next test shares.
    if (numLockOn()) {
        keys({QStringLiteral("Num_Lock")});
        waitFor([] { return !numLockOn(); }, 5000);
    }
    m_home.reset();
}

void TestShellEndToEnd::autoHideLetsClicksThroughAndRestBringsItBack()
{
    QVERIFY(QDir().mkpath(QFileInfo(m_home->preferencesFile()).absolutePath()));
    QVERIFY(writeAll(m_home->preferencesFile(), "[General]\nautoHide=true\n"));

    // A window across the bottom of the screen, under where the bar will be, that records the clicks
    // reaching it. Started first, so that the bar is mapped above it.
    const QRect area = workArea();
    const QRect band(area.x(), area.bottom() + 1 - 200, area.width(), 200);
    const QString presses = m_home->path(QStringLiteral("presses.txt"));
    TestProcess probe(QStringLiteral(CLICKPROBE_BINARY),
                      {presses, QString::number(band.x()), QString::number(band.y()),
                       QString::number(band.width()), QString::number(band.height())});
    const auto probeWindow = probe.waitForWindow(QStringLiteral("clickprobe"));
    QVERIFY2(probeWindow, "the click probe did not appear");
    QVERIFY2(placeWindow(*probeWindow, band), qPrintable(describe(frameOf(*probeWindow))));

    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    const QRect frame = frameOf(*bar);
    QVERIFY2(band.contains(frame), qPrintable(describe(frame)));

    // The pointer on the bar keeps it, or brings it back if it went while the program was starting.
    QVERIFY(moveTo(frame.center()));
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "the bar is not shown with the pointer on it");

    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
    QElapsedTimer away;
    away.start();
    // Read straight from the server and often: how long it takes is what is measured here.
    const xcb_atom_t opacity = atom(QByteArrayLiteral("_NET_WM_WINDOW_OPACITY"));
    QVERIFY2(waitFor([&] { return cardinal(static_cast<xcb_window_t>(*bar), opacity) == 0u; },
                     windowTimeoutMs, 10),
             qPrintable(windowProperty(*bar, QStringLiteral("_NET_WM_WINDOW_OPACITY"))));
    const qint64 hiddenAfter = away.elapsed();
    QVERIFY2(hiddenAfter <= hideWithinMs,
             qPrintable(QStringLiteral("hidden only %1 ms after the pointer left").arg(hiddenAfter)));
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "faded out, but still drawn or taking clicks");

    // A click on a chip's place goes to the window below, where the bar takes nothing.
    const QPoint files = frame.topLeft() +
                         layoutOf(Config::defaults()).chips.value(QStringLiteral("Files")).center().toPoint();
    QVERIFY(clickAt(files));
    const QByteArray expected =
        QStringLiteral("press button=1 x=%1 y=%2\n").arg(files.x()).arg(files.y()).toUtf8();
    QVERIFY2(waitFor([&] { return readAll(presses).contains(expected); }),
             qPrintable(QStringLiteral("the probe saw: ") + QString::fromUtf8(readAll(presses))));
    QVERIFY(!vantril.shownFlyout());
    // The click left the pointer on the bar's place, where it now rests.
    QElapsedTimer resting;
    resting.start();
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "resting on the bar's place did not bring it back");
    QVERIFY2(
        resting.elapsed() <= showWithinMs,
        qPrintable(QStringLiteral("shown only %1 ms after the pointer came to rest").arg(resting.elapsed())));
    QCOMPARE(frameOf(*bar), frame);

    // And it takes clicks again.
    const qsizetype pressesBefore = readAll(presses).size();
    QVERIFY(clickAt(files));
    QVERIFY2(waitFor([&] { return vantril.shownFlyout().has_value(); }), "a click on Files opened nothing");
    QCOMPARE(readAll(presses).size(), pressesBefore);
}

void TestShellEndToEnd::hotKeyTogglesAlsoWithNumLock()
{
    const QString taken = QStringLiteral("Hot key ctrl+alt+b is taken by another program; bind `vantril "
                                         "--toggle` in your desktop's keyboard settings instead");
    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY(waitFor([&] { return fullyShown(*bar); }));
    // Some window managers bind the combination themselves (icewm opens a browser with it).
    // The line comes before the bar is shown; the pipe may still hold it.
    if (waitFor([&] { return vantril.log().contains(taken); }, 2000))
        QSKIP("the window manager holds Ctrl+Alt+B, and the program says so");

    QVERIFY(keys({QStringLiteral("ctrl+alt+b")}));
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "Ctrl+Alt+B did not hide the bar");
    QVERIFY(keys({QStringLiteral("ctrl+alt+b")}));
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "Ctrl+Alt+B did not show the bar again");

    // Num Lock is a modifier to the server: a grab of Ctrl+Alt+B alone would no longer match.
    QVERIFY(keys({QStringLiteral("Num_Lock")}));
    QVERIFY2(waitFor(numLockOn, 5000), qPrintable(output(QStringLiteral("xset"), {QStringLiteral("q")})));
    QVERIFY(keys({QStringLiteral("ctrl+alt+b")}));
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "Ctrl+Alt+B with Num Lock on did not hide the bar");
    QVERIFY(keys({QStringLiteral("ctrl+alt+b")}));
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "Ctrl+Alt+B with Num Lock on did not show the bar");

    QVERIFY(keys({QStringLiteral("Num_Lock")}));
    QVERIFY2(waitFor([] { return !numLockOn(); }, 5000), "Num Lock stayed on");
    QVERIFY(vantril.isRunning());
    QVERIFY2(!vantril.log().contains(taken), qPrintable(vantril.log()));

    // A second copy, with folders of its own, finds the combination taken, and says so once.
    TestHome otherHome;
    RunningBar second(otherHome, withoutFrontApp());
    QVERIFY2(second.waitForBar(m_defaultWidth), "no second bar appeared");
    QVERIFY2(waitFor([&] { return second.log().contains(taken); }), qPrintable(second.log()));
    QCOMPARE(second.log().count(taken), 1);
}

void TestShellEndToEnd::editedHotKeyReplacesTheOldOne()
{
    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY(waitFor([&] { return m_home->buttons() == Config::encoded(Config::defaults()); }));
    QVERIFY(waitFor([&] { return fullyShown(*bar); }));

    // One button fewer as well: the new width shows that the edit has been taken in.
    BarConfig edited = Config::defaults();
    edited.hotkey = QStringLiteral("ctrl+alt+k");
    edited.buttons.removeLast();
    const int editedWidth = layoutOf(edited).width;
    QVERIFY(editedWidth != frameOf(*bar).width());
    QVERIFY(writeAll(m_home->buttonsJson(), Config::encoded(edited)));
    QVERIFY(vantril.waitForWidth(editedWidth));

    QVERIFY(keys({QStringLiteral("ctrl+alt+k")}));
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "Ctrl+Alt+K did not hide the bar");
    // Were the old combination still held, it would show the bar and the new one hide it again at once,
    // and the bar would never come to rest fully shown.
    QVERIFY(keys({QStringLiteral("ctrl+alt+b"), QStringLiteral("ctrl+alt+k")}));
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "Ctrl+Alt+B still works, or Ctrl+Alt+K does not");

    const auto readLog = [&] { return vantril.log().split(QLatin1Char('\n')); };
    QVERIFY2(!vantril.log().contains(QStringLiteral("Bad hotkey")), qPrintable(vantril.log()));

    BarConfig broken = Config::defaults();
    broken.hotkey = QStringLiteral("nonsense");
    QVERIFY(writeAll(m_home->buttonsJson(), Config::encoded(broken)));
    QVERIFY(vantril.waitForWidth(layoutOf(broken).width));
    const QString message = QStringLiteral("Bad hotkey: nonsense");
    QVERIFY2(waitFor([&] { return readLog().contains(message); }), qPrintable(vantril.log()));
    QCOMPARE(readLog().count(message), 1);
    QVERIFY(vantril.isRunning());
}

void TestShellEndToEnd::commandsReachTheRunningBar()
{
    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY(waitFor([&] { return fullyShown(*bar); }));

    // A second start hands its command line over and ends within a second of what any start of the
    // program takes on this machine; the first bar stays the only one.
    const Ran version = run(*m_home, {QStringLiteral("--version")});
    const Ran second = run(*m_home, {});
    QCOMPARE(second.status, 0);
    QVERIFY2(second.ms <= version.ms + 1000,
             qPrintable(QStringLiteral("%1 ms, --version %2 ms").arg(second.ms).arg(version.ms)));
    QCOMPARE(barsShown(), 1);
    QVERIFY(vantril.isRunning());

    const QList<std::pair<QStringList, bool>> steps = {
        {{QStringLiteral("--toggle")}, false}, {{QStringLiteral("--toggle")}, true},
        {{QStringLiteral("--hide")}, false},   {{QStringLiteral("--show")}, true},
        {{QStringLiteral("--hide")}, false},   {{}, true}, // a plain start shows the running bar
    };
    for (const auto& [arguments, shown] : steps) {
        const Ran ran = run(*m_home, arguments);
        QCOMPARE(ran.status, 0);
        QCOMPARE(ran.err, QString());
        QVERIFY2(waitFor([&] { return shown ? fullyShown(*bar) : fullyHidden(*bar); }),
                 qPrintable(QStringLiteral("after \"vantril %1\"").arg(arguments.join(u' '))));
    }

    QCOMPARE(run(*m_home, {QStringLiteral("--open"), QStringLiteral("Files")}).status, 0);
    QVERIFY2(waitFor([&] { return flyoutOn(vantril, QStringLiteral("Files")); }),
             "--open Files opened nothing");
    const Ran unknown = run(*m_home, {QStringLiteral("--open"), QStringLiteral("nosuchtitle")});
    QCOMPARE(unknown.status, 1);
    QCOMPARE(unknown.err, QStringLiteral("vantril: no button is titled \"nosuchtitle\"\n"));

    // The answer comes once the bar has let its folder go.
    QCOMPARE(run(*m_home, {QStringLiteral("--quit")}).status, 0);
    QVERIFY2(vantril.process().waitForFinished(windowTimeoutMs), "--quit left the bar running");
    QCOMPARE(vantril.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(vantril.process().exitCode(), 0);
    QVERIFY(!QFileInfo::exists(InstancePaths::lockFile(m_home->configDir())));
}

void TestShellEndToEnd::commandsStartTheBarWhenNoneRuns()
{
    // No bar to hide or end: nothing starts, and nothing is written.
    for (const QString& word : {QStringLiteral("--hide"), QStringLiteral("--quit")}) {
        const Ran ran = run(*m_home, {word});
        QCOMPARE(ran.status, 0);
        QCOMPARE(ran.err, QString());
    }
    QVERIFY(!QFileInfo::exists(m_home->configDir()));
    const Ran unknown = run(*m_home, {QStringLiteral("--open"), QStringLiteral("nosuchtitle")});
    QCOMPARE(unknown.status, 1);
    QCOMPARE(unknown.err, QStringLiteral("vantril: no button is titled \"nosuchtitle\"\n"));
    QCOMPARE(barsShown(), 0);

    // The start becomes the bar, and opens the stack from its chip once it is laid out.
    RunningBar vantril(*m_home, withoutFrontApp(), QStringLiteral(VANTRIL_BINARY),
                       {QStringLiteral("--open"), QStringLiteral("Apps")});
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY2(waitFor([&] { return flyoutOn(vantril, QStringLiteral("Apps")); }),
             "--open Apps opened nothing");
    QVERIFY(fullyShown(*bar));
    QCOMPARE(run(*m_home, {QStringLiteral("--quit")}).status, 0);
    QVERIFY2(vantril.process().waitForFinished(windowTimeoutMs), "--quit left the bar running");
}

void TestShellEndToEnd::oneBarPerFolderAfterACrashBesideOthersAndWithoutALock()
{
    const QString socket = InstancePaths::socketPath(
        m_home->configDir(), qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath());
    const QString lock = InstancePaths::lockFile(m_home->configDir());
    {
        RunningBar crashed(*m_home, withoutFrontApp());
        QVERIFY2(crashed.waitForBar(m_defaultWidth), "no bar window appeared");
        QVERIFY(waitFor([&] { return QFileInfo::exists(socket); }));
        crashed.stop(); // SIGKILL: nothing is cleaned up
    }
    QVERIFY(QFileInfo::exists(lock) && QFileInfo::exists(socket));

    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar took over from the crashed one");
    QCOMPARE(run(*m_home, {QStringLiteral("--toggle")}).status, 0);
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "the bar that took over does not take commands");

    // Another folder has a bar of its own beside it, and its own commands.
    TestHome other;
    RunningBar beside(other, withoutFrontApp());
    QVERIFY2(beside.waitForBar(m_defaultWidth), "no bar for the second folder");
    QCOMPARE(barsShown(), 2);
    QCOMPARE(run(other, {QStringLiteral("--quit")}).status, 0);
    QVERIFY2(beside.process().waitForFinished(windowTimeoutMs), "--quit left the second bar running");
    QVERIFY(vantril.isRunning());
    QVERIFY(fullyHidden(*bar));

    // A "folder" that is a file cannot hold a lock: its bar runs all the same, says so, and takes commands.
    TestHome broken;
    QVERIFY(writeAll(broken.configDir(), "not a folder"));
    RunningBar unlocked(broken, withoutFrontApp());
    QVERIFY2(unlocked.waitForBar(m_defaultWidth), "no bar without a lock");
    const QString line = QStringLiteral("vantril: cannot make a lock file in \"%1\" (it cannot be created); "
                                        "running without one\n")
                             .arg(broken.configDir());
    QVERIFY2(waitFor([&] { return unlocked.log().contains(line); }), qPrintable(unlocked.log()));
    QCOMPARE(run(broken, {}).status, 0);
    QCOMPARE(barsShown(), 2);
    QCOMPARE(run(broken, {QStringLiteral("--quit")}).status, 0);
    QVERIFY2(unlocked.process().waitForFinished(windowTimeoutMs), "--quit left the unlocked bar running");
    QCOMPARE(unlocked.log().count(line), 1);
}

void TestShellEndToEnd::barMenuTogglesLaunchAtLoginAndQuits()
{
    RunningBar vantril(*m_home, withoutFrontApp());
    const auto bar = vantril.waitForBar(m_defaultWidth);
    QVERIFY2(bar, "no bar window appeared");
    const QRect frame = frameOf(*bar);
    // The bar's menu opens from the grip and from the plate in the margin before it; both are tried.
    const QPoint grip = gripOf(frame);
    const QPoint plate(frame.x() + 6, frame.y() + frame.height() / 2);

    MenuModel::State state;
    state.presetNames = {QStringLiteral("Finder")}; // a submenu entry either way; its items do not count
    QStringList titles;
    for (const MenuModel::Item& item : MenuModel::populate(state)) {
        if (!item.isSeparator())
            titles.append(item.title);
    }
    QCOMPARE(
        titles,
        (QStringList{QStringLiteral("Hide bar"), QStringLiteral("Add button…"), QStringLiteral("New stack…"),
                     QStringLiteral("Add app preset"), QStringLiteral("Backups"), QStringLiteral("Auto-hide"),
                     QStringLiteral("Show icon in system tray"), QStringLiteral("Launch at Login"),
                     QStringLiteral("Edit config file"), QStringLiteral("Quit Vantril")}));

    auto menu = vantril.openMenu(grip);
    QVERIFY2(menu, "right-clicking the grip opened no menu");
    // Laid out like the one this process builds from the same items, so it has the same items.
    QVERIFY(menuLooksLike(*menu, MenuModel::populate(state), QStringLiteral("vantril-grip-menu.png")));

    QVERIFY(keys(keysFor(MenuModel::populate(state), QStringLiteral("Launch at Login"))));
    QVERIFY2(waitFor([&] { return QFileInfo::exists(m_home->autostartEntry()); }),
             "no autostart entry was written");
    QVERIFY(waitFor([&] { return !vantril.shownMenu(); }));
    const QString program = QFileInfo(QStringLiteral(VANTRIL_BINARY)).canonicalFilePath();
    const QStringList lines = QString::fromUtf8(readAll(m_home->autostartEntry())).split(QLatin1Char('\n'));
    QVERIFY2(lines.contains(QStringLiteral("Exec=\"%1\"").arg(program)), qPrintable(lines.join(u'\n')));
    QVERIFY(lines.contains(QStringLiteral("[Desktop Entry]")));

    menu = vantril.openMenu(plate);
    QVERIFY2(menu, "right-clicking the plate opened no menu");
    state.launchAtLogin = true;
    QVERIFY(menuLooksLike(*menu, MenuModel::populate(state), QStringLiteral("vantril-plate-menu-login.png")));
    QVERIFY(keys(keysFor(MenuModel::populate(state), QStringLiteral("Launch at Login"))));
    QVERIFY2(waitFor([&] { return !QFileInfo::exists(m_home->autostartEntry()); }),
             "the autostart entry stayed");

    QVERIFY(waitFor([&] { return !vantril.shownMenu(); }));
    menu = vantril.openMenu(grip);
    QVERIFY2(menu, "the menu did not open a third time");
    QVERIFY(keys(keysFor(MenuModel::populate(state), QStringLiteral("Quit Vantril"))));
    QVERIFY2(vantril.process().waitForFinished(windowTimeoutMs), "Quit Vantril left the program running");
    QCOMPARE(vantril.process().exitStatus(), QProcess::NormalExit);
    QCOMPARE(vantril.process().exitCode(), 0);
}

void TestShellEndToEnd::trayIconOpensTheMenuAndGoesAway()
{
    // A tray at the top right, as a panel would have one; icons embed once it owns the tray selection.
    TestProcess tray(QStringLiteral("trayer"),
                     {QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--align"),
                      QStringLiteral("right"), QStringLiteral("--widthtype"), QStringLiteral("request"),
                      QStringLiteral("--height"), QStringLiteral("24"), QStringLiteral("--SetDockType"),
                      QStringLiteral("true")});
    QVERIFY2(waitFor([&] {
                 return !tray.isRunning() ||
                        selectionOwner(QByteArrayLiteral("_NET_SYSTEM_TRAY_S0")).has_value();
             }),
             "trayer took no tray selection");
    QVERIFY2(tray.isRunning(), "trayer stopped");

    RunningBar vantril(*m_home, withoutFrontApp());
    QVERIFY2(vantril.waitForBar(m_defaultWidth), "no bar window appeared");
    QList<xcb_window_t> icons;
    QVERIFY2(waitFor([&] {
                 icons = embeddedWindows(vantril.pid(), tray.pid());
                 return icons.size() == 1 && !screenRect(icons.first()).isEmpty();
             }),
             qPrintable(QStringLiteral("%1 icons of the program in the tray").arg(icons.size())));
    const QRect icon = screenRect(icons.first());
    QVERIFY2(QRect(0, 0, screenWidth, 24).contains(icon), qPrintable(describe(icon)));

    const auto menu = vantril.openMenu(icon.center());
    QVERIFY2(menu, "right-clicking the tray icon opened no menu");
    MenuModel::State state;
    QVERIFY(menuLooksLike(*menu, MenuModel::populate(state), QStringLiteral("vantril-tray-menu.png")));

    QVERIFY(keys(keysFor(MenuModel::populate(state), QStringLiteral("Show icon in system tray"))));
    QVERIFY2(
        waitFor([&] { return !vantril.isRunning() || embeddedWindows(vantril.pid(), tray.pid()).isEmpty(); }),
        "the tray icon stayed");
    // The menu that made the choice belongs to the icon that went; the program outlives both.
    QVERIFY2(vantril.isRunning(),
             qPrintable(QStringLiteral("the program ended, exit code %1").arg(vantril.process().exitCode())));
    QVERIFY(findWindow(QStringLiteral("Vantril"), vantril.pid()));
    QVERIFY2(waitFor([&] { return readAll(m_home->preferencesFile()).contains("showStatusItem=false"); }),
             readAll(m_home->preferencesFile()).constData());
}

void TestShellEndToEnd::updateCheckReportsTheNewerVersion()
{
    const QByteArray body =
        QByteArrayLiteral("{\"version\": \"99.0\", \"url\": \"https://example.org/v99\"}");
    FeedServer feed(body);
    QVERIFY2(feed.listen(FEED_PORT), "the feed's port is taken");

    RunningBar vantril(*m_home,
                       withoutFrontApp({{QStringLiteral("VANTRIL_CHECK_UPDATES"), QStringLiteral("1")}}),
                       QStringLiteral(FEEDTEST_BINARY));
    const auto window = vantril.waitForWindow(QStringLiteral("Vantril updates"));
    QVERIFY2(window, "no update window appeared, or the program ended before showing it");
    QCOMPARE(feed.requests(), QStringList{QStringLiteral("GET /feed.json HTTP/1.1")});

    // Where the program's message box has its text: one laid out here with what it should say.
    QMessageBox reference(QMessageBox::Information, QStringLiteral("Vantril updates"), QString(),
                          QMessageBox::Ok);
    reference.setTextFormat(Qt::RichText);
    reference.setTextInteractionFlags(Qt::TextBrowserInteraction);
    reference.setText(UpdateVerdict::of(body, QStringLiteral(VANTRIL_VERSION)));
    reference.setAttribute(Qt::WA_DontShowOnScreen);
    reference.show();
    const auto* label = reference.findChild<QLabel*>(QStringLiteral("qt_msgbox_label"));
    QVERIFY(label);
    const QRect text = label->geometry();
    QVERIFY2(waitFor([&] { return frameOf(*window).size() == reference.size(); }),
             qPrintable(QStringLiteral("%1, expected %2x%3")
                            .arg(describe(frameOf(*window)))
                            .arg(reference.width())
                            .arg(reference.height())));
    reference.hide();
    saveScreenshot(QStringLiteral("vantril-updates.png"), frameOf(*window));

    // Its text is selectable: dragged over, it becomes the primary selection, which says what it reads.
    const QPoint origin = frameOf(*window).topLeft();
    const QPoint from = origin + text.topLeft() + QPoint(1, 1);
    const QPoint to = origin + text.bottomRight() - QPoint(1, 1);
    QVERIFY(dragAlong({from, to}));
    QClipboard* clipboard = QGuiApplication::clipboard();
    const auto selected = [clipboard] { return clipboard->text(QClipboard::Selection); };
    QVERIFY2(waitFor([&] { return selected().contains(QStringLiteral("https://example.org/v99")); }),
             qPrintable(selected()));
    QVERIFY2(
        selected().startsWith(
            QStringLiteral("Vantril 99.0 is available (you have %1).").arg(QStringLiteral(VANTRIL_VERSION))),
        qPrintable(selected()));
}

QTEST_MAIN(TestShellEndToEnd)
#include "tst_shell_e2e.moc"
