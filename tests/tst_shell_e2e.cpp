// The real program's shell against a real X server and window manager (openbox, no compositor): hiding
// and showing the bar by pointer and hot key, its menu, its tray icon and its update check, observed
// from the outside with xprop, xdotool, xset and the server's own answers. Runs inside
// tests/x11/with-x-session.sh; every test starts its own copy of the program with folders of its own.
// Screenshots of the menus and of the update window are saved to $VANTRIL_TEST_SCREENSHOTS when set.

#include "TestSupport.h"
#include "app/MenuModel.h"
#include "app/Updater.h"
#include "bar/BarView.h"
#include "config/Config.h"
#include "dragdrop/DragState.h"

#include <QApplication>
#include <QClipboard>
#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QIcon>
#include <QImage>
#include <QLabel>
#include <QLayout>
#include <QMenu>
#include <QMessageBox>
#include <QPixmap>
#include <QProcess>
#include <QRegion>
#include <QRegularExpression>
#include <QScreen>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTemporaryDir>
#include <QTest>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <xcb/shape.h>
#include <xcb/xcb.h>

namespace {

/// The screen with-x-session.sh sets up.
constexpr int screenWidth = 1440;
constexpr int screenHeight = 900;

/// Long enough for a slow, loaded machine; a passing run never waits for it.
constexpr int windowTimeoutMs = 20000;

/// How long the pointer may be away before the bar has faded out, and resting on its place before it
/// is back: ten ticks of 150 ms and a 200 ms fade, two ticks and a fade, with room for a busy machine.
constexpr int hideWithinMs = 2000;
constexpr int showWithinMs = 2000;

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
    return xdotool(QStringList{QStringLiteral("key")} + names);
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
bool waitFor(const std::function<bool()>& condition, int timeoutMs = windowTimeoutMs, int stepMs = 50)
{
    QElapsedTimer timer;
    timer.start();
    while (!condition()) {
        if (timer.elapsed() > timeoutMs)
            return false;
        QTest::qWait(stepMs);
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

bool numLockOn()
{
    return QRegularExpression(QStringLiteral("Num Lock:\\s+on\\b"))
        .match(output(QStringLiteral("xset"), {QStringLiteral("q")}))
        .hasMatch();
}

void saveScreenshot(const QRect& area, const QString& name)
{
    const QString folder = qEnvironmentVariable("VANTRIL_TEST_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    const QPixmap shot =
        QGuiApplication::primaryScreen()->grabWindow(0, area.x(), area.y(), area.width(), area.height());
    if (!shot.save(QDir(folder).filePath(name)))
        qWarning("cannot save %s in %s", qPrintable(name), qPrintable(folder));
}

// The server's own answers, where a command line tool has none: shapes, window trees, selection owners.

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

struct Attributes
{
    bool viewable = false;
    bool overrideRedirect = false;
};

std::optional<Attributes> attributesOf(xcb_window_t window)
{
    const auto reply = adopt(xcb_get_window_attributes_reply(
        connection(), xcb_get_window_attributes(connection(), window), nullptr));
    if (!reply)
        return std::nullopt;
    return Attributes{reply->map_state == XCB_MAP_STATE_VIEWABLE, reply->override_redirect != 0};
}

/// Where the window is on screen, empty when it is gone.
QRect screenRect(xcb_window_t window)
{
    const auto geometry =
        adopt(xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), window), nullptr));
    if (!geometry)
        return {};
    const auto origin = adopt(xcb_translate_coordinates_reply(
        connection(), xcb_translate_coordinates(connection(), window, rootWindow(), 0, 0), nullptr));
    if (!origin)
        return {};
    return QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
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
        for (const xcb_window_t child : childrenOf(window))
            walk(child, inside || owner == quint32(host));
    };
    walk(rootWindow(), false);
    return found;
}

/// The open menu of process `pid`: popups are override-redirect children of the root. Tooltips are too,
/// and say what they are.
std::optional<xcb_window_t> shownMenu(qint64 pid)
{
    const xcb_atom_t pidAtom = atom(QByteArrayLiteral("_NET_WM_PID"));
    const xcb_atom_t typeAtom = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE"));
    const xcb_atom_t tooltip = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE_TOOLTIP"));
    for (const xcb_window_t window : childrenOf(rootWindow())) {
        const auto attributes = attributesOf(window);
        if (!attributes || !attributes->viewable || !attributes->overrideRedirect)
            continue;
        if (cardinal(window, pidAtom) != quint32(pid) || cardinal(window, typeAtom) == tooltip)
            continue;
        return window;
    }
    return std::nullopt;
}

/// Hidden as auto-hide and the hot key hide: faded out, and since openbox composites nothing, cut away
/// to nothing and letting every click through.
bool fullyHidden(quintptr bar)
{
    const QString opacity = windowProperty(bar, QStringLiteral("_NET_WM_WINDOW_OPACITY")).trimmed();
    if (opacity != QStringLiteral("_NET_WM_WINDOW_OPACITY(CARDINAL) = 0"))
        return false;
    const auto window = static_cast<xcb_window_t>(bar);
    const QRect inside(QPoint(0, 0), screenRect(window).size());
    return !inside.isEmpty() && shapeOf(window, XCB_SHAPE_SK_INPUT).isEmpty() &&
           !shapeOf(window, XCB_SHAPE_SK_BOUNDING).intersects(inside);
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

/// The titles of the menu's top level as the user reads them, separators left out.
const QStringList menuTitles = {
    QStringLiteral("Hide bar"),
    QStringLiteral("Add button…"),
    QStringLiteral("New stack…"),
    QStringLiteral("Add app preset"),
    QStringLiteral("Backups"),
    QStringLiteral("Auto-hide"),
    QStringLiteral("Show icon in system tray"),
    QStringLiteral("Launch at Login"),
    QStringLiteral("Edit config file"),
    QStringLiteral("Quit Vantril"),
};

/// The keys that choose `title` in a menu just opened: Down from nothing selected reaches the first item.
QStringList keysFor(const QString& title)
{
    const qsizetype index = menuTitles.indexOf(title);
    QStringList names(index + 1, QStringLiteral("Down"));
    names.append(QStringLiteral("Return"));
    return names;
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
    void barMenuTogglesLaunchAtLoginAndQuits();
    void trayIconOpensTheMenuAndGoesAway();
    void updateCheckReportsTheNewerVersion();

private:
    QString configDir() const { return m_dir->filePath(QStringLiteral("vantril")); }
    QString xdgConfigHome() const { return m_dir->filePath(QStringLiteral("xdg")); }
    QString buttonsJson() const { return QDir(configDir()).filePath(QStringLiteral("buttons.json")); }
    QString preferencesFile() const
    {
        return QDir(xdgConfigHome()).filePath(QStringLiteral("vantril/vantril.ini"));
    }
    QString autostartEntry() const
    {
        return QDir(xdgConfigHome()).filePath(QStringLiteral("autostart/vantril.desktop"));
    }

    /// Starts `program` (the program unless told otherwise) with this test's folders.
    QProcess* launch(const QList<std::pair<QString, QString>>& variables = {},
                     QProcess::ProcessChannelMode channels = QProcess::ForwardedErrorChannel,
                     const QString& program = QStringLiteral(VANTRIL_BINARY));
    /// Starts a helper that belongs to the session, not to the program.
    QProcess* startHelper(const QString& program, const QStringList& arguments);
    /// Waits for the bar of `process` to be on screen at the width of the default buttons.
    std::optional<quintptr> waitForBar(const QProcess* process);
    std::optional<quintptr> shownFlyout(const QProcess* process);
    /// Right-clicks at `global` and waits for the menu of `process`.
    std::optional<xcb_window_t> openMenu(const QProcess* process, const QPoint& global);
    /// The menu the program would show in `state`, built here from the program's own menu model.
    std::unique_ptr<QMenu> expectedMenu(const MenuModel::State& state);
    /// Whether the open menu shows, pixel for pixel, what one built here for `state` shows: the same
    /// items with the same check marks. A screenshot of it is saved as `name`.
    bool looksLike(xcb_window_t menu, const MenuModel::State& state, const QString& name);
    /// Stops `process` and waits until its windows are gone, so that none lingers into the next step.
    void stop(QProcess* process);

    std::unique_ptr<QTemporaryDir> m_dir;
    QList<QProcess*> m_processes;
};

void TestShellEndToEnd::initTestCase()
{
    QCOMPARE(QGuiApplication::platformName(), QStringLiteral("xcb"));
    QVERIFY(connection());
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    QCOMPARE(screen, QRect(0, 0, screenWidth, screenHeight));
    // The same icon theme as the program's, so that the chips laid out here have its icons' widths.
    if (QIcon::themeName().isEmpty() || QIcon::themeName() == QLatin1String("hicolor"))
        QIcon::setThemeName(QStringLiteral("Adwaita"));
    QIcon::setFallbackThemeName(QStringLiteral("Adwaita"));
    QVERIFY2(!numLockOn(), "Num Lock is on before any test turned it on");
}

void TestShellEndToEnd::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
    QVERIFY(m_dir->isValid());
    QVERIFY(QDir().mkpath(xdgConfigHome()));
    // Away from where the bar will be, so that nothing is hovered or rested on by accident.
    QVERIFY(moveTo(QPoint(screenWidth / 2, 100)));
}

void TestShellEndToEnd::cleanup()
{
    for (QProcess* process : std::as_const(m_processes))
        stop(process);
    qDeleteAll(m_processes);
    m_processes.clear();
    // The lock state belongs to the server, which the next test shares.
    if (numLockOn()) {
        keys({QStringLiteral("Num_Lock")});
        waitFor([] { return !numLockOn(); }, 5000);
    }
    m_dir.reset();
}

QProcess* TestShellEndToEnd::launch(const QList<std::pair<QString, QString>>& variables,
                                    QProcess::ProcessChannelMode channels, const QString& program)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        // A proxy of the machine running the tests would stand between the program and the local feed.
        if (name.startsWith(QStringLiteral("VANTRIL_")) || name.endsWith(QStringLiteral("_proxy")) ||
            name.endsWith(QStringLiteral("_PROXY")))
            environment.remove(name);
    }
    environment.insert(QStringLiteral("VANTRIL_CONFIG_DIR"), configDir());
    environment.insert(QStringLiteral("XDG_CONFIG_HOME"), xdgConfigHome());
    // Whichever window is active has no buttons of its own, so the menu is always the same.
    environment.insert(QStringLiteral("VANTRIL_CONTEXT_APP"), QStringLiteral("none"));
    for (const auto& [name, value] : variables)
        environment.insert(name, value);

    auto* process = new QProcess;
    m_processes.append(process);
    process->setProcessEnvironment(environment);
    process->setProcessChannelMode(channels);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start(program, {});
    if (!process->waitForStarted(10000))
        qWarning("cannot start %s: %s", qPrintable(program), qPrintable(process->errorString()));
    return process;
}

QProcess* TestShellEndToEnd::startHelper(const QString& program, const QStringList& arguments)
{
    auto* process = new QProcess;
    m_processes.append(process);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start(program, arguments);
    if (!process->waitForStarted(10000))
        qWarning("cannot start %s: %s", qPrintable(program), qPrintable(process->errorString()));
    return process;
}

std::optional<quintptr> TestShellEndToEnd::waitForBar(const QProcess* process)
{
    std::optional<quintptr> bar;
    const int width = layoutOf(Config::defaults()).width;
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

std::optional<quintptr> TestShellEndToEnd::shownFlyout(const QProcess* process)
{
    const auto flyout = findWindow(QStringLiteral("Vantril flyout"), process->processId());
    if (!flyout || !windowInfo(*flyout).value_or(WindowInfo{}).viewable)
        return std::nullopt;
    return flyout;
}

std::optional<xcb_window_t> TestShellEndToEnd::openMenu(const QProcess* process, const QPoint& global)
{
    if (!clickAt(global, 3))
        return std::nullopt;
    std::optional<xcb_window_t> menu;
    waitFor([&] { return (menu = shownMenu(process->processId())).has_value(); });
    return menu;
}

std::unique_ptr<QMenu> TestShellEndToEnd::expectedMenu(const MenuModel::State& state)
{
    auto menu = std::make_unique<QMenu>();
    const std::function<void(QMenu&, const QList<MenuModel::Item>&)> render =
        [&render](QMenu& into, const QList<MenuModel::Item>& items) {
            for (const MenuModel::Item& item : items) {
                if (item.isSeparator()) {
                    into.addSeparator();
                } else if (!item.submenu.isEmpty() || item.command == MenuModel::Command::None) {
                    render(*into.addMenu(item.title), item.submenu);
                } else {
                    QAction* action = into.addAction(item.title);
                    action->setCheckable(item.checked.has_value());
                    action->setChecked(item.checked.value_or(false));
                }
            }
        };
    render(*menu, MenuModel::populate(state));
    return menu;
}

bool TestShellEndToEnd::looksLike(xcb_window_t menu, const MenuModel::State& state, const QString& name)
{
    const std::unique_ptr<QMenu> reference = expectedMenu(state);
    reference->resize(reference->sizeHint());
    const QImage expected = reference->grab().toImage().convertToFormat(QImage::Format_RGB32);
    QImage shown;
    // Compared until it matches: the menu may be drawn a moment after it is mapped.
    const bool same = waitFor(
        [&] {
            shown = QGuiApplication::primaryScreen()->grabWindow(menu).toImage().convertToFormat(
                QImage::Format_RGB32);
            return shown == expected;
        },
        5000);
    saveScreenshot(screenRect(menu), name);
    if (!same) {
        qWarning("menu %dx%d, expected %dx%d", shown.width(), shown.height(), expected.width(),
                 expected.height());
        const QString folder = qEnvironmentVariable("VANTRIL_TEST_SCREENSHOTS");
        if (!folder.isEmpty())
            expected.save(QDir(folder).filePath(QStringLiteral("expected-") + name));
    }
    return same;
}

void TestShellEndToEnd::stop(QProcess* process)
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

void TestShellEndToEnd::autoHideLetsClicksThroughAndRestBringsItBack()
{
    QVERIFY(QDir().mkpath(QFileInfo(preferencesFile()).absolutePath()));
    QVERIFY(writeAll(preferencesFile(), "[General]\nautoHide=true\n"));

    // A window across the bottom of the screen, under where the bar will be, that records the clicks
    // reaching it. Started first, so that the bar is mapped above it.
    const QRect band(0, screenHeight - 200, screenWidth, 200);
    const QString presses = m_dir->filePath(QStringLiteral("presses.txt"));
    QProcess* probe = startHelper(QStringLiteral(CLICKPROBE_BINARY),
                                  {presses, QString::number(band.x()), QString::number(band.y()),
                                   QString::number(band.width()), QString::number(band.height())});
    std::optional<quintptr> probeWindow;
    QVERIFY2(waitFor([&] {
                 probeWindow = findWindow(QStringLiteral("clickprobe"), probe->processId());
                 return probeWindow && windowInfo(*probeWindow).value_or(WindowInfo{}).viewable;
             }),
             "the click probe did not appear");
    if (frameOf(*probeWindow) != band) {
        const QString id = QString::number(*probeWindow);
        QVERIFY(xdotool(
            {QStringLiteral("windowmove"), id, QString::number(band.x()), QString::number(band.y())}));
        QVERIFY(xdotool({QStringLiteral("windowsize"), id, QString::number(band.width()),
                         QString::number(band.height())}));
    }
    QVERIFY2(waitFor([&] { return frameOf(*probeWindow) == band; }),
             qPrintable(describe(frameOf(*probeWindow))));

    QProcess* vantril = launch();
    const auto bar = waitForBar(vantril);
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
    QVERIFY(!shownFlyout(vantril));
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
    QVERIFY2(waitFor([&] { return shownFlyout(vantril).has_value(); }), "a click on Files opened nothing");
    QCOMPARE(readAll(presses).size(), pressesBefore);
}

void TestShellEndToEnd::hotKeyTogglesAlsoWithNumLock()
{
    QProcess* vantril = launch();
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY(waitFor([&] { return fullyShown(*bar); }));

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
    QVERIFY(vantril->state() == QProcess::Running);
}

void TestShellEndToEnd::editedHotKeyReplacesTheOldOne()
{
    QProcess* vantril = launch({}, QProcess::SeparateChannels);
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");
    QVERIFY(waitFor([&] { return readAll(buttonsJson()) == Config::encoded(Config::defaults()); }));
    QVERIFY(waitFor([&] { return fullyShown(*bar); }));

    // One button fewer as well: the new width shows that the edit has been taken in.
    BarConfig edited = Config::defaults();
    edited.hotkey = QStringLiteral("ctrl+alt+k");
    edited.buttons.removeLast();
    const int editedWidth = layoutOf(edited).width;
    QVERIFY(editedWidth != frameOf(*bar).width());
    QVERIFY(writeAll(buttonsJson(), Config::encoded(edited)));
    QVERIFY2(waitFor([&] { return frameOf(*bar).width() == editedWidth; }),
             qPrintable(describe(frameOf(*bar))));

    QVERIFY(keys({QStringLiteral("ctrl+alt+k")}));
    QVERIFY2(waitFor([&] { return fullyHidden(*bar); }), "Ctrl+Alt+K did not hide the bar");
    // Were the old combination still held, it would show the bar and the new one hide it again at once,
    // and the bar would never come to rest fully shown.
    QVERIFY(keys({QStringLiteral("ctrl+alt+b"), QStringLiteral("ctrl+alt+k")}));
    QVERIFY2(waitFor([&] { return fullyShown(*bar); }), "Ctrl+Alt+B still works, or Ctrl+Alt+K does not");

    QString log;
    const auto readLog = [&] {
        log += QString::fromUtf8(vantril->readAllStandardError());
        return log.split(QLatin1Char('\n'));
    };
    QVERIFY2(!readLog().join(QLatin1Char('\n')).contains(QStringLiteral("Bad hotkey")), qPrintable(log));

    BarConfig broken = Config::defaults();
    broken.hotkey = QStringLiteral("nonsense");
    QVERIFY(writeAll(buttonsJson(), Config::encoded(broken)));
    const int defaultWidth = layoutOf(broken).width;
    QVERIFY2(waitFor([&] { return frameOf(*bar).width() == defaultWidth; }),
             qPrintable(describe(frameOf(*bar))));
    const QString message = QStringLiteral("Bad hotkey: nonsense");
    QVERIFY2(waitFor([&] { return readLog().contains(message); }), qPrintable(log));
    QCOMPARE(readLog().count(message), 1);
    QVERIFY(vantril->state() == QProcess::Running);
}

void TestShellEndToEnd::barMenuTogglesLaunchAtLoginAndQuits()
{
    QProcess* vantril = launch();
    const auto bar = waitForBar(vantril);
    QVERIFY2(bar, "no bar window appeared");
    const QRect frame = frameOf(*bar);
    // The grip: 14 pixels wide after the bar's 12 pixel margin, and the plate in that margin. Menus are
    // opened from one and the other in turn: a second right press on the same spot soon after the first
    // would be a double click to Qt, which opens no context menu.
    const QPoint grip(frame.x() + 12 + 7, frame.y() + frame.height() / 2);
    const QPoint plate(frame.x() + 6, frame.y() + frame.height() / 2);

    MenuModel::State state;
    state.presetNames = {QStringLiteral("Finder")}; // a submenu entry either way; its items do not count
    QStringList titles;
    for (const MenuModel::Item& item : MenuModel::populate(state)) {
        if (!item.isSeparator())
            titles.append(item.title);
    }
    QCOMPARE(titles, menuTitles);

    auto menu = openMenu(vantril, grip);
    QVERIFY2(menu, "right-clicking the grip opened no menu");
    // Laid out like the one this process builds from the same items, so it has the same items.
    QVERIFY(looksLike(*menu, state, QStringLiteral("vantril-grip-menu.png")));

    QVERIFY(keys(keysFor(QStringLiteral("Launch at Login"))));
    QVERIFY2(waitFor([&] { return QFileInfo::exists(autostartEntry()); }), "no autostart entry was written");
    QVERIFY(waitFor([&] { return !shownMenu(vantril->processId()); }));
    const QString program = QFileInfo(QStringLiteral(VANTRIL_BINARY)).canonicalFilePath();
    const QStringList lines = QString::fromUtf8(readAll(autostartEntry())).split(QLatin1Char('\n'));
    QVERIFY2(lines.contains(QStringLiteral("Exec=\"%1\"").arg(program)), qPrintable(lines.join(u'\n')));
    QVERIFY(lines.contains(QStringLiteral("[Desktop Entry]")));

    menu = openMenu(vantril, plate);
    QVERIFY2(menu, "right-clicking the plate opened no menu");
    state.launchAtLogin = true;
    QVERIFY(looksLike(*menu, state, QStringLiteral("vantril-plate-menu-login.png")));
    QVERIFY(keys(keysFor(QStringLiteral("Launch at Login"))));
    QVERIFY2(waitFor([&] { return !QFileInfo::exists(autostartEntry()); }), "the autostart entry stayed");

    QVERIFY(waitFor([&] { return !shownMenu(vantril->processId()); }));
    menu = openMenu(vantril, grip);
    QVERIFY2(menu, "the menu did not open a third time");
    QVERIFY(keys(keysFor(QStringLiteral("Quit Vantril"))));
    QVERIFY2(vantril->waitForFinished(windowTimeoutMs), "Quit Vantril left the program running");
    QCOMPARE(vantril->exitStatus(), QProcess::NormalExit);
    QCOMPARE(vantril->exitCode(), 0);
}

void TestShellEndToEnd::trayIconOpensTheMenuAndGoesAway()
{
    // A tray at the top right, as a panel would have one; icons embed once it owns the tray selection.
    QProcess* tray = startHelper(QStringLiteral("trayer"),
                                 {QStringLiteral("--edge"), QStringLiteral("top"), QStringLiteral("--align"),
                                  QStringLiteral("right"), QStringLiteral("--widthtype"),
                                  QStringLiteral("request"), QStringLiteral("--height"), QStringLiteral("24"),
                                  QStringLiteral("--SetDockType"), QStringLiteral("true")});
    QVERIFY2(waitFor([&] {
                 return tray->state() != QProcess::Running ||
                        selectionOwner(QByteArrayLiteral("_NET_SYSTEM_TRAY_S0")).has_value();
             }),
             "trayer took no tray selection");
    QVERIFY2(tray->state() == QProcess::Running, "trayer stopped");

    QProcess* vantril = launch();
    QVERIFY2(waitForBar(vantril), "no bar window appeared");
    QList<xcb_window_t> icons;
    QVERIFY2(waitFor([&] {
                 icons = embeddedWindows(vantril->processId(), tray->processId());
                 return icons.size() == 1 && !screenRect(icons.first()).isEmpty();
             }),
             qPrintable(QStringLiteral("%1 icons of the program in the tray").arg(icons.size())));
    const QRect icon = screenRect(icons.first());
    QVERIFY2(QRect(0, 0, screenWidth, 24).contains(icon), qPrintable(describe(icon)));

    const auto menu = openMenu(vantril, icon.center());
    QVERIFY2(menu, "right-clicking the tray icon opened no menu");
    MenuModel::State state;
    QVERIFY(looksLike(*menu, state, QStringLiteral("vantril-tray-menu.png")));

    QVERIFY(keys(keysFor(QStringLiteral("Show icon in system tray"))));
    QVERIFY2(waitFor([&] {
                 return vantril->state() != QProcess::Running ||
                        embeddedWindows(vantril->processId(), tray->processId()).isEmpty();
             }),
             "the tray icon stayed");
    // The menu that made the choice belongs to the icon that went; the program outlives both.
    QVERIFY2(vantril->state() == QProcess::Running,
             qPrintable(QStringLiteral("the program ended, exit code %1").arg(vantril->exitCode())));
    QVERIFY(findWindow(QStringLiteral("Vantril"), vantril->processId()));
    QVERIFY2(waitFor([&] { return readAll(preferencesFile()).contains("showStatusItem=false"); }),
             readAll(preferencesFile()).constData());
}

void TestShellEndToEnd::updateCheckReportsTheNewerVersion()
{
    const QByteArray body =
        QByteArrayLiteral("{\"version\": \"99.0\", \"url\": \"https://example.org/v99\"}");
    FeedServer feed(body);
    QVERIFY2(feed.listen(FEED_PORT), "the feed's port is taken");

    QProcess* vantril = launch({{QStringLiteral("VANTRIL_CHECK_UPDATES"), QStringLiteral("1")}},
                               QProcess::ForwardedErrorChannel, QStringLiteral(FEEDTEST_BINARY));
    std::optional<quintptr> window;
    QVERIFY2(waitFor([&] {
                 if (vantril->state() != QProcess::Running)
                     return true;
                 window = findWindow(QStringLiteral("Vantril updates"), vantril->processId());
                 return window && windowInfo(*window).value_or(WindowInfo{}).viewable;
             }),
             "no update window appeared");
    QVERIFY2(window, "the program ended before showing its update window");
    QCOMPARE(feed.requests(), QStringList{QStringLiteral("GET /feed.json HTTP/1.1")});

    // Where the program's message box has its text: one laid out here with what it should say.
    QMessageBox reference(QMessageBox::Information, QStringLiteral("Vantril updates"), QString(),
                          QMessageBox::Ok);
    reference.setTextFormat(Qt::RichText);
    reference.setTextInteractionFlags(Qt::TextBrowserInteraction);
    reference.setText(Updater::verdict(body, QStringLiteral(VANTRIL_VERSION)));
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
    saveScreenshot(frameOf(*window), QStringLiteral("vantril-updates.png"));

    // Its text is selectable: dragged over, it becomes the primary selection, which says what it reads.
    const QPoint origin = frameOf(*window).topLeft();
    const QPoint from = origin + text.topLeft() + QPoint(1, 1);
    const QPoint to = origin + text.bottomRight() - QPoint(1, 1);
    QVERIFY(xdotool({QStringLiteral("mousemove"), QString::number(from.x()), QString::number(from.y()),
                     QStringLiteral("mousedown"), QStringLiteral("1"), QStringLiteral("mousemove"),
                     QString::number(to.x()), QString::number(to.y()), QStringLiteral("mouseup"),
                     QStringLiteral("1")}));
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
