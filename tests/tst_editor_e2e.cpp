// The real program's button editor, button menu and probe against a real X server and window manager
// (openbox): the editor opened at start-up and from a stack's menu, typed into with xdotool, its refusal
// of a key combination that does not parse, locking and the refused removal of a locked button, undo
// from the bar's menu, and the "--probe" report. Outcomes are read back from buttons.json on disk, from
// the kernel's notices of its rewrites and from the server's bell notices. Runs inside
// tests/x11/with-x-session.sh; every test starts its own copy of the program with folders of its own.
// Screenshots are saved to $VANTRIL_TEST_SCREENSHOTS when set.

#include "TestSupport.h"
#include "app/MenuModel.h"
#include "bar/BarView.h"
#include "config/Config.h"
#include "dragdrop/DragState.h"
#include "editor/EditView.h"
#include "editor/ItemMenuModel.h"

#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QLayout>
#include <QMenu>
#include <QPixmap>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <QScreen>
#include <QTemporaryDir>
#include <QTest>
#include <cerrno>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <sys/inotify.h>
#include <unistd.h>
#include <xcb/xcb.h>

// Last: Xlib's macros (None, Bool, KeyPress…) would otherwise rename identifiers in Qt's headers.
#include <X11/XKBlib.h>
#include <X11/Xlib.h>

namespace {

/// The bells rung on the display, from the server's XKB bell notices: under Xvfb a bell makes no sound,
/// but the server still tells every client that asked.
class BellMonitor
{
public:
    BellMonitor()
        : m_display(XOpenDisplay(nullptr))
    {
        if (!m_display)
            return;
        int opcode = 0;
        int error = 0;
        int major = XkbMajorVersion;
        int minor = XkbMinorVersion;
        if (!XkbQueryExtension(m_display, &opcode, &m_eventBase, &error, &major, &minor))
            return;
        m_valid = XkbSelectEvents(m_display, XkbUseCoreKbd, XkbBellNotifyMask, XkbBellNotifyMask);
        // Selected before anything can ring: the request has reached the server when this returns.
        XSync(m_display, False);
    }
    ~BellMonitor()
    {
        if (m_display)
            XCloseDisplay(m_display);
    }
    BellMonitor(const BellMonitor&) = delete;
    BellMonitor& operator=(const BellMonitor&) = delete;

    bool isValid() const { return m_valid; }

    /// Bells rung since the monitor was made.
    int count()
    {
        if (!m_valid)
            return 0;
        while (XPending(m_display) > 0) {
            XEvent event;
            XNextEvent(m_display, &event);
            if (event.type == m_eventBase + XkbEventCode &&
                reinterpret_cast<const XkbAnyEvent*>(&event)->xkb_type == XkbBellNotify)
                ++m_count;
        }
        return m_count;
    }

private:
    Display* m_display = nullptr;
    int m_eventBase = 0;
    bool m_valid = false;
    int m_count = 0;
};

} // namespace

#undef None
#undef Bool
#undef Status
#undef True
#undef False
#undef KeyPress
#undef KeyRelease
#undef ButtonPress
#undef ButtonRelease
#undef MotionNotify
#undef FocusIn
#undef FocusOut
#undef FontChange
#undef Expose
#undef CursorShape
#undef Unsorted
#undef Always
#undef Success
#undef GrayScale
#undef Above
#undef Below

namespace {

/// The screen with-x-session.sh sets up.
constexpr int screenWidth = 1440;
constexpr int screenHeight = 900;

/// Long enough for a slow, loaded machine; a passing run never waits for it.
constexpr int windowTimeoutMs = 20000;

/// How long buttons.json must stay untouched after a refused change before it counts as unchanged. A
/// change would be written while the program handles the key or click, well within this.
constexpr int quietMs = 1000;

/// Two right presses closer than this are a double click to Qt, which opens no context menu.
constexpr int doubleClickGapMs = 600;

QString output(const QString& program, const QStringList& arguments)
{
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!process.waitForFinished(10000) || process.exitStatus() != QProcess::NormalExit) {
        process.kill();
        process.waitForFinished();
        return {};
    }
    return QString::fromUtf8(process.readAllStandardOutput());
}

bool xdotool(const QStringList& arguments)
{
    return QProcess::execute(QStringLiteral("xdotool"), arguments) == 0;
}

bool keys(const QStringList& names)
{
    return xdotool(QStringList{QStringLiteral("key"), QStringLiteral("--delay"), QStringLiteral("30")} +
                   names);
}

/// Types `text` into whatever has the keyboard focus, as a person would.
bool type(const QString& text)
{
    return xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"), text});
}

QString windowProperty(quintptr window, const QString& name)
{
    return output(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(window), name});
}

/// The windows openbox manages, which are the mapped top-level windows of its clients.
QList<quintptr> clientWindows()
{
    const QString line =
        output(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_CLIENT_LIST")});
    QList<quintptr> windows;
    auto matches = QRegularExpression(QStringLiteral("0x[0-9a-fA-F]+")).globalMatch(line);
    while (matches.hasNext())
        windows.append(matches.next().captured(0).toULongLong(nullptr, 16));
    return windows;
}

/// The title exactly as the window gives it: name searches in xdotool ignore case, and the client
/// leader of the program is called "vantril" too.
std::optional<QString> windowName(quintptr window)
{
    const QString line = windowProperty(window, QStringLiteral("_NET_WM_NAME"));
    const auto match =
        QRegularExpression(QStringLiteral("^_NET_WM_NAME\\(UTF8_STRING\\) = \"(.*)\"\\s*$")).match(line);
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1);
}

std::optional<qint64> windowPid(quintptr window)
{
    const QString line = windowProperty(window, QStringLiteral("_NET_WM_PID"));
    const auto match = QRegularExpression(QStringLiteral("= (\\d+)")).match(line);
    if (!match.hasMatch())
        return std::nullopt;
    return match.captured(1).toLongLong();
}

/// The managed window of process `pid` titled exactly `name`, if there is one.
std::optional<quintptr> findWindow(const QString& name, qint64 pid)
{
    for (const quintptr window : clientWindows()) {
        if (windowName(window) == name && windowPid(window) == pid)
            return window;
    }
    return std::nullopt;
}

struct WindowInfo
{
    QRect frame;
    bool viewable = false;
};

std::optional<WindowInfo> windowInfo(quintptr window)
{
    const QString text = output(QStringLiteral("xwininfo"), {QStringLiteral("-id"), QString::number(window)});
    const auto field = [&text](const QString& label) -> std::optional<int> {
        const auto match =
            QRegularExpression(
                QStringLiteral("^\\s*%1:\\s*(-?\\d+)\\s*$").arg(QRegularExpression::escape(label)),
                QRegularExpression::MultilineOption)
                .match(text);
        if (!match.hasMatch())
            return std::nullopt;
        return match.captured(1).toInt();
    };
    const auto x = field(QStringLiteral("Absolute upper-left X"));
    const auto y = field(QStringLiteral("Absolute upper-left Y"));
    const auto width = field(QStringLiteral("Width"));
    const auto height = field(QStringLiteral("Height"));
    if (!x || !y || !width || !height)
        return std::nullopt;
    return WindowInfo{QRect(*x, *y, *width, *height), text.contains(QStringLiteral("Map State: IsViewable"))};
}

QRect frameOf(quintptr window)
{
    return windowInfo(window).value_or(WindowInfo{}).frame;
}

QString describe(const QRect& rect)
{
    return QStringLiteral("x=%1 y=%2 w=%3 h=%4")
        .arg(rect.x())
        .arg(rect.y())
        .arg(rect.width())
        .arg(rect.height());
}

/// The window openbox calls active, 0 for None.
quintptr activeWindow()
{
    const QString line =
        output(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_ACTIVE_WINDOW")});
    const auto match = QRegularExpression(QStringLiteral("window id # (0x[0-9a-fA-F]+)")).match(line);
    return match.hasMatch() ? match.captured(1).toULongLong(nullptr, 16) : 0;
}

bool moveTo(const QPoint& global)
{
    // No --sync: it waits for a motion that never comes when the pointer is already there.
    return xdotool({QStringLiteral("mousemove"), QString::number(global.x()), QString::number(global.y())});
}

bool clickAt(const QPoint& global, int button = 1)
{
    // The warp and the press travel on one connection, so the server sees them in order.
    return xdotool({QStringLiteral("mousemove"), QString::number(global.x()), QString::number(global.y()),
                    QStringLiteral("click"), QString::number(button)});
}

/// Polls `condition` while serving this process's events, until it holds or `timeoutMs` has passed.
bool waitFor(const std::function<bool()>& condition, int timeoutMs = windowTimeoutMs)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QTest::qWait(50);
    }
    return true;
}

/// Where the chips of `config` sit on a bar at the bottom of the screen, in bar coordinates, and how wide
/// that bar is, laid out by the program's own bar view in this process.
struct BarLayout
{
    int width = 0;
    QHash<QString, QRectF> chips;
};

BarLayout layoutOf(const BarConfig& config)
{
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(config, {}, true);
    // A hidden widget lays its children out at its final size only when it is shown; this one never is.
    view.layout()->setGeometry(view.rect());
    return {view.width(), view.chipFrames()};
}

/// The whole screen as an image in $VANTRIL_TEST_SCREENSHOTS, when that is set.
void saveScreenshot(const QString& name)
{
    const QString folder = qEnvironmentVariable("VANTRIL_TEST_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    if (QProcess::execute(QStringLiteral("import"), {QStringLiteral("-window"), QStringLiteral("root"),
                                                     QDir(folder).filePath(name)}) != 0)
        qWarning("cannot save %s in %s", qPrintable(name), qPrintable(folder));
}

// The server's own answers for menus, which openbox does not manage: override-redirect popups.

xcb_connection_t* connection()
{
    const auto* x11 = qGuiApp->nativeInterface<QNativeInterface::QX11Application>();
    return x11 ? x11->connection() : nullptr;
}

template<typename T>
using Reply = std::unique_ptr<T, decltype(&std::free)>;

template<typename T>
Reply<T> adopt(T* reply)
{
    return Reply<T>(reply, &std::free);
}

xcb_atom_t atom(const QByteArray& name)
{
    const auto reply = adopt(xcb_intern_atom_reply(
        connection(), xcb_intern_atom(connection(), 0, static_cast<quint16>(name.size()), name.constData()),
        nullptr));
    return reply ? reply->atom : xcb_atom_t(XCB_ATOM_NONE);
}

xcb_window_t rootWindow()
{
    return xcb_setup_roots_iterator(xcb_get_setup(connection())).data->root;
}

QList<xcb_window_t> childrenOf(xcb_window_t window)
{
    const auto reply =
        adopt(xcb_query_tree_reply(connection(), xcb_query_tree(connection(), window), nullptr));
    if (!reply)
        return {};
    const xcb_window_t* children = xcb_query_tree_children(reply.get());
    return QList<xcb_window_t>(children, children + xcb_query_tree_children_length(reply.get()));
}

std::optional<quint32> cardinal(xcb_window_t window, xcb_atom_t property)
{
    const auto reply = adopt(xcb_get_property_reply(
        connection(), xcb_get_property(connection(), 0, window, property, XCB_ATOM_ANY, 0, 1), nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return std::nullopt;
    return *static_cast<const quint32*>(xcb_get_property_value(reply.get()));
}

/// The open menu of process `pid`: popups are override-redirect children of the root. Tooltips are too,
/// and say what they are.
std::optional<xcb_window_t> shownMenu(qint64 pid)
{
    const xcb_atom_t pidAtom = atom(QByteArrayLiteral("_NET_WM_PID"));
    const xcb_atom_t typeAtom = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE"));
    const xcb_atom_t tooltip = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE_TOOLTIP"));
    for (const xcb_window_t window : childrenOf(rootWindow())) {
        const auto attributes = adopt(xcb_get_window_attributes_reply(
            connection(), xcb_get_window_attributes(connection(), window), nullptr));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE || !attributes->override_redirect)
            continue;
        if (cardinal(window, pidAtom) != quint32(pid) || cardinal(window, typeAtom) == tooltip)
            continue;
        return window;
    }
    return std::nullopt;
}

/// A menu as the program renders one from its model: the same items, submenus and check marks.
template<typename Item>
void render(QMenu& into, const QList<Item>& items)
{
    for (const Item& item : items) {
        if (item.isSeparator()) {
            into.addSeparator();
        } else if (!item.submenu.isEmpty() || item.command == decltype(item.command)::None) {
            render(*into.addMenu(item.title), item.submenu);
        } else {
            QAction* action = into.addAction(item.title);
            action->setCheckable(item.checked.has_value());
            action->setChecked(item.checked.value_or(false));
        }
    }
}

/// Whether the open menu shows, pixel for pixel, what one rendered here from `items` shows.
template<typename Item>
bool looksLike(xcb_window_t menu, const QList<Item>& items)
{
    QMenu reference;
    render(reference, items);
    reference.resize(reference.sizeHint());
    const QImage expected = reference.grab().toImage().convertToFormat(QImage::Format_RGB32);
    QImage shown;
    // Compared until it matches: the menu may be drawn a moment after it is mapped.
    const bool same = waitFor(
        [&] {
            shown = QGuiApplication::primaryScreen()->grabWindow(menu).toImage().convertToFormat(
                QImage::Format_RGB32);
            return shown == expected;
        },
        5000);
    if (!same)
        qWarning("menu %dx%d, expected %dx%d", shown.width(), shown.height(), expected.width(),
                 expected.height());
    return same;
}

/// The keys that choose `title` in a menu of `items` just opened: Down from nothing selected reaches the
/// first item and skips separators. Empty when the menu has no such item.
template<typename Item>
QStringList keysFor(const QList<Item>& items, const QString& title)
{
    QStringList names;
    for (const Item& item : items) {
        if (item.isSeparator())
            continue;
        names.append(QStringLiteral("Down"));
        if (item.title == title) {
            names.append(QStringLiteral("Return"));
            return names;
        }
    }
    return {};
}

/// The button menu the program shows for `button`, in a session without an application in front.
QList<ItemMenuModel::Item> itemMenu(const ButtonSpec& button, bool canUndo)
{
    ItemMenuModel::State state;
    state.button = button;
    state.canUndo = canUndo;
    return ItemMenuModel::populate(state);
}

ButtonSpec* topButton(BarConfig& config, const QString& title)
{
    for (ButtonSpec& button : config.buttons) {
        if (button.title == title)
            return &button;
    }
    return nullptr;
}

/// Counts the times one file of a folder is written, from the kernel's notices rather than from its
/// content: polling would miss a second write of the same bytes. The program replaces the file
/// atomically (a rename onto it); a write in place counts as well.
class FileWrites
{
public:
    FileWrites(const QString& folder, const QString& name)
        : m_fd(inotify_init1(IN_NONBLOCK | IN_CLOEXEC))
        , m_name(QFile::encodeName(name))
    {
        if (m_fd >= 0 && inotify_add_watch(m_fd, QFile::encodeName(folder).constData(),
                                           IN_MOVED_TO | IN_CLOSE_WRITE) < 0) {
            ::close(m_fd);
            m_fd = -1;
        }
        m_sinceLast.start();
    }
    ~FileWrites()
    {
        if (m_fd >= 0)
            ::close(m_fd);
    }
    FileWrites(const FileWrites&) = delete;
    FileWrites& operator=(const FileWrites&) = delete;

    bool isValid() const { return m_fd >= 0; }

    int count()
    {
        drain();
        return m_count;
    }

    /// Waits until the file has been left alone for `ms` from now on.
    bool waitQuiet(int ms)
    {
        m_sinceLast.restart();
        return waitFor([&] {
            drain();
            return m_sinceLast.elapsed() >= ms;
        });
    }

private:
    void drain()
    {
        alignas(inotify_event) char buffer[4096];
        for (;;) {
            const ssize_t length = ::read(m_fd, buffer, sizeof buffer);
            if (length <= 0)
                return;
            for (ssize_t at = 0; at < length;) {
                const auto* event = reinterpret_cast<const inotify_event*>(buffer + at);
                if (event->len > 0 && QByteArray(event->name) == m_name) {
                    ++m_count;
                    m_sinceLast.restart();
                }
                at += ssize_t(sizeof(inotify_event)) + event->len;
            }
        }
    }

    int m_fd = -1;
    QByteArray m_name;
    int m_count = 0;
    QElapsedTimer m_sinceLast;
};

} // namespace

class TestEditorEndToEnd : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void editorAtStartUpRenamesAndUndoBringsItBack();
    void stackMenuAddsAButtonToTheStack();
    void unparsableCombinationCannotBeSaved();
    void lockedButtonIsNotRemoved();
    void probeReportsAndOpensNoWindow();

private:
    QString configDir() const { return m_dir->filePath(QStringLiteral("vantril")); }
    QString xdgConfigHome() const { return m_dir->filePath(QStringLiteral("xdg")); }
    QString buttonsJson() const { return QDir(configDir()).filePath(QStringLiteral("buttons.json")); }
    QString backupsDir() const { return QDir(configDir()).filePath(QStringLiteral("backups")); }

    QProcessEnvironment environment(const QList<std::pair<QString, QString>>& variables) const;
    /// Starts the program with this test's folders and the given extra variables.
    QProcess* launch(const QList<std::pair<QString, QString>>& variables = {});
    /// Waits for the bar of `process` to be on screen `width` pixels wide.
    std::optional<quintptr> waitForBar(const QProcess* process, int width);
    /// Waits for a window of `process` titled `name` to be on screen with the keyboard focus.
    std::optional<quintptr> waitForActive(const QProcess* process, const QString& name);
    /// Right-clicks at `global` and waits for the menu of `process`.
    std::optional<xcb_window_t> openMenu(const QProcess* process, const QPoint& global);
    /// Stops `process` and waits until its windows are gone, so that none lingers into the next step.
    void stop(QProcess* process);

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<QProcess*> m_processes;
    QElapsedTimer m_sinceRightClick;
};

void TestEditorEndToEnd::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    QVERIFY(connection());
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QCOMPARE(screen, QRect(0, 0, screenWidth, screenHeight));
    // The same icon theme as the program's, so that the chips laid out here have its icons' widths.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
}

void TestEditorEndToEnd::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(QDir().mkpath(xdgConfigHome()));
    // Away from where the bar will be, so that nothing is hovered by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
    m_sinceRightClick.invalidate();
}

void TestEditorEndToEnd::cleanup()
{
    for (QProcess* process : std::as_const(m_processes))
        stop(process);
    qDeleteAll(m_processes);
    m_processes.clear();
    m_dir.reset();
}

QProcessEnvironment TestEditorEndToEnd::environment(const QList<std::pair<QString, QString>>& variables) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        if (name.startsWith(QStringLiteral("VANTRIL_")))
            environment.remove(name);
    }
    environment.insert(QStringLiteral("VANTRIL_CONFIG_DIR"), configDir());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), xdgConfigHome());
    // Whichever window is active has no buttons of its own, so the menus are always the same.
    environment.insert(QStringLiteral("VANTRIL_CONTEXT_APP"), QStringLiteral("none"));
    for (const auto& [name, value] : variables)
        environment.insert(name, value);
    return environment;
}

QProcess* TestEditorEndToEnd::launch(const QList<std::pair<QString, QString>>& variables)
{
    auto* process = new QProcess;
    m_processes.append(process);
    process->setProcessEnvironment(environment(variables));
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start(QStringLiteral(VANTRIL_BINARY), {});
    if (!process->waitForStarted(10000))
        qWarning("cannot start %s: %s", VANTRIL_BINARY, qPrintable(process->errorString()));
    return process;
}

std::optional<quintptr> TestEditorEndToEnd::waitForBar(const QProcess* process, int width)
{
    std::optional<quintptr> bar;
    waitFor([&] {
        if (process->state() != QProcess::Running)
            return true;
        bar = findWindow(QStringLiteral("Vantril"), process->processId());
        if (!bar)
            return false;
        const auto info = windowInfo(*bar);
        return info && info->viewable && info->frame.width() == width;
    });
    return bar;
}

std::optional<quintptr> TestEditorEndToEnd::waitForActive(const QProcess* process, const QString& name)
{
    std::optional<quintptr> window;
    waitFor([&] {
        if (process->state() != QProcess::Running)
            return true;
        window = findWindow(name, process->processId());
        return window && windowInfo(*window).value_or(WindowInfo{}).viewable && activeWindow() == *window;
    });
    if (!window || activeWindow() != *window)
        return std::nullopt;
    return window;
}

std::optional<xcb_window_t> TestEditorEndToEnd::openMenu(const QProcess* process, const QPoint& global)
{
    if (m_sinceRightClick.isValid()) {
        // Not luck but a rule: a right press this soon after the last one would be a double click.
        waitFor([&] { return m_sinceRightClick.elapsed() >= doubleClickGapMs; });
    }
    if (!clickAt(global, 3))
        return std::nullopt;
    m_sinceRightClick.start();
    std::optional<xcb_window_t> menu;
    waitFor([&] { return (menu = shownMenu(process->processId())).has_value(); });
    return menu;
}

void TestEditorEndToEnd::stop(QProcess* process)
{
    if (process->state() == QProcess::NotRunning)
        return;
    const qint64 pid = process->processId();
    process->kill();
    if (!process->waitForFinished(10000)) {
        process->kill();
        process->waitForFinished(10000);
    }
    // openbox drops a dead client's windows from its list a moment later.
    waitFor([pid] {
        const QList<quintptr> windows = clientWindows();
        return std::none_of(windows.begin(), windows.end(),
                            [pid](quintptr window) { return windowPid(window) == pid; });
    });
}

void TestEditorEndToEnd::editorAtStartUpRenamesAndUndoBringsItBack()
{
    QElapsedTimer sinceStart;
    sinceStart.start();
    QProcess* vantril = launch({{QStringLiteral("VANTRIL_SHOW_EDITOR"), QStringLiteral("Help")}});
    const QByteArray defaults = Config::encoded(Config::defaults());
    const auto bar = waitForBar(vantril, layoutOf(Config::defaults()).width);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == defaults; }), readAll(buttonsJson()).constData());
    FileWrites writes(configDir(), QStringLiteral("buttons.json"));
    QVERIFY(writes.isValid());

    const auto editor = waitForActive(vantril, QStringLiteral("Edit Button"));
    QVERIFY2(editor, qPrintable(QStringLiteral("no editor with the keyboard focus; active window %1")
                                    .arg(activeWindow(), 0, 16)));
    // The timer starts once the program is up, after this process started it.
    QVERIFY2(sinceStart.elapsed() >= 900,
             qPrintable(QStringLiteral("the editor came %1 ms after start-up").arg(sinceStart.elapsed())));
    saveScreenshot(QStringLiteral("vantril-editor-help.png"));

    // The title field has the focus: its text is replaced and Return saves.
    QVERIFY(keys({QStringLiteral("ctrl+a")}));
    QVERIFY(type(QStringLiteral("Support")));
    QVERIFY(keys({QStringLiteral("Return")}));

    BarConfig renamed = Config::defaults();
    topButton(renamed, QStringLiteral("Help"))->title = QStringLiteral("Support");
    const QByteArray expected = Config::encoded(renamed);
    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == expected; }), readAll(buttonsJson()).constData());
    QVERIFY2(waitFor([&] { return !findWindow(QStringLiteral("Edit Button"), vantril->processId()); }),
             "the editor stayed open after saving");
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 1);
    // The launch backup holds the defaults; the save's own backup of the previous state would hold the
    // same bytes, and a backup is never taken twice in a row.
    const QStringList backups = entries(backupsDir());
    QCOMPARE(backups.size(), 1);
    QCOMPARE(readAll(QDir(backupsDir()).filePath(backups.first())), defaults);

    // The bar shows the new title, which makes it wider or narrower, so its grip moves.
    QVERIFY2(waitFor([&] { return frameOf(*bar).width() == layoutOf(renamed).width; }),
             qPrintable(describe(frameOf(*bar))));
    const QRect frame = frameOf(*bar);
    const QPoint grip(frame.x() + 12 + 7, frame.y() + frame.height() / 2);
    MenuModel::State state;
    state.canUndo = true;
    const QList<MenuModel::Item> items = MenuModel::populate(state);
    const auto menu = openMenu(vantril, grip);
    QVERIFY2(menu, "right-clicking the grip opened no menu");
    QVERIFY2(looksLike(*menu, items), "the bar's menu is not the one with “Undo last change”");
    const QStringList undo = keysFor(items, QStringLiteral("Undo last change"));
    QVERIFY(!undo.isEmpty());
    QVERIFY(keys(undo));

    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == defaults; }), readAll(buttonsJson()).constData());
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 2);
    QVERIFY2(waitFor([&] { return frameOf(*bar).width() == layoutOf(Config::defaults()).width; }),
             qPrintable(describe(frameOf(*bar))));
}

void TestEditorEndToEnd::stackMenuAddsAButtonToTheStack()
{
    QProcess* vantril = launch();
    const BarLayout layout = layoutOf(Config::defaults());
    const auto bar = waitForBar(vantril, layout.width);
    QVERIFY2(bar, "no bar window appeared");
    const QByteArray defaults = Config::encoded(Config::defaults());
    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == defaults; }), readAll(buttonsJson()).constData());

    const QRect frame = frameOf(*bar);
    BarConfig config = Config::defaults();
    const ButtonSpec files = *topButton(config, QStringLiteral("Files"));
    const auto menu = openMenu(vantril, frame.topLeft() + layout.chips.value(files.title).center().toPoint());
    QVERIFY2(menu, "right-clicking the Files chip opened no menu");
    const QList<ItemMenuModel::Item> items = itemMenu(files, false);
    QVERIFY2(looksLike(*menu, items), "the Files chip's menu is not the one of a stack");
    const QStringList add = keysFor(items, QStringLiteral("Add button to this stack…"));
    QVERIFY(!add.isEmpty());
    QVERIFY(keys(add));

    const auto editor = waitForActive(vantril, QStringLiteral("New Button"));
    QVERIFY2(editor, "no “New Button” editor with the keyboard focus");
    // Title, then past the action (a new button opens a file or folder) to the path.
    QVERIFY(type(QStringLiteral("Music")));
    QVERIFY(keys({QStringLiteral("Tab"), QStringLiteral("Tab")}));
    QVERIFY(type(QStringLiteral("/tmp")));
    saveScreenshot(QStringLiteral("vantril-editor-new.png"));
    QVERIFY(keys({QStringLiteral("Return")}));

    BarConfig added = Config::defaults();
    ButtonSpec music;
    music.title = QStringLiteral("Music");
    music.symbol = QStringLiteral("doc");
    music.action = QStringLiteral("open");
    music.argument = QStringLiteral("/tmp");
    topButton(added, QStringLiteral("Files"))->children->append(music);
    const QByteArray expected = Config::encoded(added);
    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == expected; }), readAll(buttonsJson()).constData());
    QVERIFY2(waitFor([&] { return !findWindow(QStringLiteral("New Button"), vantril->processId()); }),
             "the editor stayed open after saving");
}

void TestEditorEndToEnd::unparsableCombinationCannotBeSaved()
{
    BarConfig config = Config::defaults();
    ButtonSpec copy;
    copy.title = QStringLiteral("Copy");
    copy.symbol = QStringLiteral("doc");
    copy.action = QStringLiteral("keys");
    copy.argument = QStringLiteral("ctrl+c");
    config.buttons.append(copy);
    const QByteArray original = Config::encoded(config);
    QVERIFY(QDir().mkpath(configDir()));
    QVERIFY(writeAll(buttonsJson(), original));
    FileWrites writes(configDir(), QStringLiteral("buttons.json"));
    QVERIFY(writes.isValid());

    QProcess* vantril = launch({{QStringLiteral("VANTRIL_SHOW_EDITOR"), QStringLiteral("Copy")}});
    QVERIFY2(waitForBar(vantril, layoutOf(config).width), "no bar window appeared");
    const auto editor = waitForActive(vantril, QStringLiteral("Edit Button"));
    QVERIFY2(editor, "no editor with the keyboard focus");
    const QRect client = frameOf(*editor);

    // Where Save is: an editor for the same button laid out here at the size of the one on screen.
    EditView reference(copy, false, EditorServices{});
    reference.setAttribute(Qt::WA_DontShowOnScreen);
    reference.show();
    reference.resize(client.size());
    reference.layout()->activate();
    const auto* saveButton = reference.findChild<QPushButton*>(QStringLiteral("save"));
    QVERIFY(saveButton);
    const QPoint save = client.topLeft() + saveButton->mapTo(&reference, saveButton->rect().center());
    reference.hide();

    // From the title past the action to the key field. Plain keys edit it; a combination held with a
    // modifier would be recorded instead, so the text is cleared and typed key by key.
    QVERIFY(keys({QStringLiteral("Tab"), QStringLiteral("Tab"), QStringLiteral("End")}));
    QVERIFY(keys(QStringList(12, QStringLiteral("BackSpace"))));
    QVERIFY(type(QStringLiteral("ctrl+nonsense")));
    saveScreenshot(QStringLiteral("vantril-editor-bad-keys.png"));
    // Return in the key field would be recorded as the key "return"; in the title field it saves.
    QVERIFY(keys({QStringLiteral("shift+Tab"), QStringLiteral("shift+Tab"), QStringLiteral("Return")}));
    QVERIFY(clickAt(save));
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 0);
    QCOMPARE(readAll(buttonsJson()), original);
    QVERIFY2(findWindow(QStringLiteral("Edit Button"), vantril->processId()),
             "the editor closed without saving");

    // Recorded from the keys themselves this time; the same click on Save now saves.
    QVERIFY(keys({QStringLiteral("Tab"), QStringLiteral("Tab"), QStringLiteral("ctrl+shift+c")}));
    QVERIFY(clickAt(save));
    BarConfig fixed = config;
    topButton(fixed, QStringLiteral("Copy"))->argument = QStringLiteral("ctrl+shift+c");
    const QByteArray expected = Config::encoded(fixed);
    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == expected; }), readAll(buttonsJson()).constData());
    QVERIFY2(waitFor([&] { return !findWindow(QStringLiteral("Edit Button"), vantril->processId()); }),
             "the editor stayed open after saving");
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(writes.count(), 1);
}

void TestEditorEndToEnd::lockedButtonIsNotRemoved()
{
    QProcess* vantril = launch();
    const BarLayout layout = layoutOf(Config::defaults());
    const auto bar = waitForBar(vantril, layout.width);
    QVERIFY2(bar, "no bar window appeared");
    const QByteArray defaults = Config::encoded(Config::defaults());
    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == defaults; }), readAll(buttonsJson()).constData());
    FileWrites writes(configDir(), QStringLiteral("buttons.json"));
    QVERIFY(writes.isValid());
    BellMonitor bells;
    QVERIFY2(bells.isValid(), "the display reports no bells");

    BarConfig config = Config::defaults();
    const ButtonSpec help = *topButton(config, QStringLiteral("Help"));
    auto menu =
        openMenu(vantril, frameOf(*bar).topLeft() + layout.chips.value(help.title).center().toPoint());
    QVERIFY2(menu, "right-clicking the Help chip opened no menu");
    QList<ItemMenuModel::Item> items = itemMenu(help, false);
    QVERIFY2(looksLike(*menu, items), "the Help chip's menu is not the one of a button");
    QVERIFY(keys(keysFor(items, QStringLiteral("Lock"))));

    BarConfig locked = Config::defaults();
    topButton(locked, QStringLiteral("Help"))->locked = true;
    const QByteArray expected = Config::encoded(locked);
    QVERIFY2(waitFor([&] { return readAll(buttonsJson()) == expected; }), readAll(buttonsJson()).constData());
    QVERIFY(readAll(buttonsJson()).contains("\"locked\""));
    QVERIFY(waitFor([&] { return !shownMenu(vantril->processId()); }));
    QCOMPARE(bells.count(), 0);

    // What the program does on a refusal, done here: it shows that a bell would be seen at all.
    QApplication::beep();
    QVERIFY2(waitFor([&] { return bells.count() == 1; }, 5000), "a bell rung here was not reported");

    const BarLayout lockedLayout = layoutOf(locked);
    QVERIFY2(waitFor([&] { return frameOf(*bar).width() == lockedLayout.width; }),
             qPrintable(describe(frameOf(*bar))));
    // Off the first click's spot as well, so that it cannot make a double click either.
    const QRectF chip = lockedLayout.chips.value(help.title);
    const QPoint second = frameOf(*bar).topLeft() + (chip.center() + QPointF(chip.width() / 4, 0)).toPoint();
    menu = openMenu(vantril, second);
    QVERIFY2(menu, "right-clicking the Help chip again opened no menu");
    items = itemMenu(*topButton(locked, QStringLiteral("Help")), true);
    QVERIFY2(looksLike(*menu, items), "the locked Help chip's menu is not the one of a locked button");
    QVERIFY(keys(keysFor(items, QStringLiteral("Remove"))));

    QVERIFY2(waitFor([&] { return bells.count() == 2; }), "removing a locked button rang no bell");
    QVERIFY(waitFor([&] { return !shownMenu(vantril->processId()); }));
    QVERIFY(writes.waitQuiet(quietMs));
    QCOMPARE(readAll(buttonsJson()), expected);
    QCOMPARE(writes.count(), 1);
    QCOMPARE(bells.count(), 2);
    QCOMPARE(frameOf(*bar).width(), lockedLayout.width);
}

void TestEditorEndToEnd::probeReportsAndOpensNoWindow()
{
    struct Run
    {
        int exitCode = -1;
        QString out;
        QString probeFile;
        bool probeFileExists = false;
        bool sawWindow = false;
    };
    int runs = 0;
    const auto run = [&](const QStringList& arguments) {
        Run result;
        const QString temp = m_dir->filePath(QStringLiteral("tmp%1").arg(++runs));
        if (!QDir().mkpath(temp))
            return result;
        QProcess process;
        QProcessEnvironment variables = environment({});
        variables.insert(QStringLiteral("TMPDIR"), temp);
        process.setProcessEnvironment(variables);
        process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process.start(QStringLiteral(VANTRIL_BINARY), arguments);
        if (!process.waitForStarted(10000))
            return result;
        // The program proper never ends by itself; watching its windows until it does catches a bar.
        const qint64 pid = process.processId();
        const bool ended = waitFor([&] {
            const QList<quintptr> windows = clientWindows();
            if (std::any_of(windows.begin(), windows.end(),
                            [pid](quintptr window) { return windowPid(window) == pid; }))
                result.sawWindow = true;
            return process.state() == QProcess::NotRunning;
        });
        if (!ended) {
            process.kill();
            process.waitForFinished(10000);
            return result;
        }
        result.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
        result.out = QString::fromUtf8(process.readAllStandardOutput());
        const QString probeFile = QDir(temp).filePath(QStringLiteral("probe.txt"));
        result.probeFileExists = QFileInfo::exists(probeFile);
        result.probeFile = QString::fromUtf8(readAll(probeFile));
        return result;
    };

    const QStringList expectedLines = {
        QStringLiteral("config folder writable: yes"),
        QStringLiteral("input synthesis (XTest): yes"),
        QStringLiteral("hot key grab: yes"),
        QStringLiteral("global mouse monitor (XInput2): yes"),
        QStringLiteral("clipboard: yes"),
    };
    const auto checkReport = [&](const QString& report) {
        const QStringList lines = report.split(QLatin1Char('\n'));
        if (!lines.first().startsWith(QStringLiteral("Vantril ")) ||
            !lines.first().endsWith(QStringLiteral(" probe")))
            return false;
        for (const QString& wanted : expectedLines) {
            // Some checks say where they looked, after the verdict.
            if (std::none_of(lines.begin(), lines.end(), [&](const QString& line) {
                    return line == wanted || line.startsWith(wanted + QStringLiteral(" ("));
                }))
                return false;
        }
        return true;
    };

    const Run probe = run({QStringLiteral("--probe")});
    QCOMPARE(probe.exitCode, 0);
    QVERIFY2(!probe.sawWindow, "the probe opened a window");
    QVERIFY2(checkReport(probe.out), qPrintable(probe.out));
    QVERIFY2(probe.out.contains(QStringLiteral("config folder writable: yes (%1)").arg(configDir())),
             qPrintable(probe.out));
    QVERIFY(probe.probeFileExists);
    QCOMPARE(probe.probeFile, probe.out);

    const Run both = run({QStringLiteral("--probe"), QStringLiteral("--probe-prompt")});
    QCOMPARE(both.exitCode, 0);
    QVERIFY2(!both.sawWindow, "the probe opened a window");
    QVERIFY2(checkReport(both.out), qPrintable(both.out));
    QVERIFY2(!both.out.contains(QStringLiteral("AXIsProcessTrustedWithOptions")), qPrintable(both.out));
    QCOMPARE(both.probeFile, both.out);

    const Run prompt = run({QStringLiteral("--probe-prompt")});
    QCOMPARE(prompt.exitCode, 0);
    QVERIFY2(!prompt.sawWindow, "the prompt opened a window");
    QCOMPARE(prompt.out, QStringLiteral("AXIsProcessTrustedWithOptions(prompt) → true\n"));
    // None of them started the program proper, which would have written the default buttons.
    QVERIFY2(!QFileInfo::exists(buttonsJson()), readAll(buttonsJson()).constData());
}

QTEST_MAIN(TestEditorEndToEnd)
#include "tst_editor_e2e.moc"
