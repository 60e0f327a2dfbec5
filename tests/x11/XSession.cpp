#include "XSession.h"

#include "bar/BarView.h"
#include "bar/SymbolView.h"
#include "config/ConfigReader.h"
#include "dragdrop/DragState.h"
#include "platform/x11/WorkArea.h"
#include "platform/x11/XcbHandles.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QScreen>
#include <QTest>
#include <algorithm>
#include <cstdio>
#include <limits>

bool onSessionScreen()
{
    return QGuiApplication::platformName() == u"xcb"_s && connection() &&
           QGuiApplication::primaryScreen()->geometry() == QRect(0, 0, screenWidth, screenHeight);
}

bool waitFor(const std::function<bool()>& condition, int timeoutMs, int stepMs)
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

QString output(const QString& program, const QStringList& arguments)
{
    // Served while it runs: it may be waiting on this very process, as a reader of a clipboard this
    // process owns does.
    QProcess process;
    process.setStandardErrorFile(QProcess::nullDevice());
    process.start(program, arguments);
    if (!waitFor([&] { return process.state() == QProcess::NotRunning; }, 10000, 5) ||
        process.exitStatus() != QProcess::NormalExit || process.exitCode() != 0)
        return {};
    return QString::fromUtf8(process.readAllStandardOutput());
}

bool xdotool(const QStringList& arguments)
{
    return QProcess::execute(u"xdotool"_s, arguments) == 0;
}

bool keys(const QStringList& names)
{
    return xdotool(QStringList{u"key"_s, u"--delay"_s, u"30"_s} + names);
}

QStringList moveArguments(const QPoint& global)
{
    return {u"mousemove"_s, QString::number(global.x()), QString::number(global.y())};
}

bool moveTo(const QPoint& global)
{
    return xdotool(moveArguments(global));
}

bool clickAt(const QPoint& global, int button)
{
    return xdotool(moveArguments(global) + QStringList{u"click"_s, QString::number(button)});
}

QList<QPoint> pathBetween(const QPoint& from, const QPoint& to, int steps)
{
    QList<QPoint> path;
    for (int i = 0; i <= steps; ++i)
        path.append(from + (to - from) * i / steps);
    return path;
}

bool dragAlong(const QList<QPoint>& path)
{
    QStringList arguments = moveArguments(path.first());
    arguments += {u"mousedown"_s, u"1"_s};
    for (qsizetype i = 1; i < path.size(); ++i)
        arguments += moveArguments(path.at(i));
    arguments += {u"mouseup"_s, u"1"_s};
    return xdotool(arguments);
}

xcb_connection_t* connection()
{
    return qtXcbConnection();
}

xcb_atom_t atom(const char* name)
{
    return internAtoms(connection(), {QByteArray(name)}).value(0, XCB_ATOM_NONE);
}

namespace {

xcb_window_t root()
{
    return rootWindow(connection());
}

/// A property's value as it is stored: bytes of text, or 32-bit values.
QByteArray propertyBytes(quintptr window, const char* property)
{
    const auto reply = adoptReply(xcb_get_property_reply(
        connection(),
        xcb_get_property(connection(), 0, xcb_window_t(window), atom(property), XCB_ATOM_ANY, 0, 4096),
        nullptr));
    if (!reply)
        return {};
    return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

/// The window's parent, and its children bottom first.
std::pair<xcb_window_t, QList<xcb_window_t>> treeOf(xcb_window_t window)
{
    const auto tree =
        adoptReply(xcb_query_tree_reply(connection(), xcb_query_tree(connection(), window), nullptr));
    if (!tree)
        return {XCB_NONE, {}};
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    return {tree->parent,
            QList<xcb_window_t>(children, children + xcb_query_tree_children_length(tree.get()))};
}

/// The child of the root that holds `window`: the frame a reparenting window manager put around it.
xcb_window_t topLevelOf(xcb_window_t window)
{
    for (xcb_window_t parent; (parent = treeOf(window).first) != XCB_NONE && parent != root();)
        window = parent;
    return window;
}

XcbReply<xcb_get_window_attributes_reply_t> attributesOf(quintptr window)
{
    return adoptReply(xcb_get_window_attributes_reply(
        connection(), xcb_get_window_attributes(connection(), xcb_window_t(window)), nullptr));
}

/// i3, a tiling manager, is driven through its own commands.
bool underI3()
{
    return qEnvironmentVariable("VANTRIL_TEST_WM") == u"i3"_s;
}

} // namespace

QList<quint32> values(quintptr window, const char* property)
{
    const QByteArray bytes = propertyBytes(window, property);
    QList<quint32> list(bytes.size() / 4);
    std::copy_n(bytes.constData(), list.size() * 4, reinterpret_cast<char*>(list.data()));
    return list;
}

bool supportsHint(const char* hint)
{
    return values(root(), "_NET_SUPPORTED").contains(atom(hint));
}

QRect workArea()
{
    return currentWorkArea().value_or(QRect(0, 0, screenWidth, screenHeight));
}

bool isCompositing()
{
    const auto reply = adoptReply(xcb_get_selection_owner_reply(
        connection(), xcb_get_selection_owner(connection(), atom("_NET_WM_CM_S0")), nullptr));
    return reply && reply->owner != XCB_NONE;
}

bool waitUntilDrawn(const QRect& area)
{
    if (!isCompositing())
        return true;
    QImage last;
    // Two looks a fade step apart that agree: nothing moves there any more.
    return waitFor(
        [&] {
            const QImage now = QGuiApplication::primaryScreen()
                                   ->grabWindow(0, area.x(), area.y(), area.width(), area.height())
                                   .toImage();
            const bool same = !now.isNull() && now == last;
            last = now;
            return same;
        },
        windowTimeoutMs, 150);
}

QList<quintptr> topLevelWindows()
{
    QList<quintptr> windows;
    for (const quint32 window : values(root(), "_NET_CLIENT_LIST"))
        windows.append(window);
    const quint32 dock = atom("_NET_WM_WINDOW_TYPE_DOCK");
    for (const xcb_window_t window : treeOf(root()).second) {
        if (isOverrideRedirect(window) && values(window, "_NET_WM_WINDOW_TYPE").contains(dock))
            windows.append(window);
    }
    return windows;
}

QString windowName(quintptr window)
{
    return QString::fromUtf8(propertyBytes(window, "_NET_WM_NAME"));
}

qint64 pidOf(quintptr window)
{
    return values(window, "_NET_WM_PID").value(0);
}

std::optional<quintptr> findWindow(const QString& name, qint64 pid)
{
    for (const quintptr window : topLevelWindows()) {
        if (windowName(window) == name && pidOf(window) == pid)
            return window;
    }
    return std::nullopt;
}

QRect frameOf(quintptr window)
{
    const auto geometry = adoptReply(
        xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), xcb_window_t(window)), nullptr));
    const auto origin = adoptReply(xcb_translate_coordinates_reply(
        connection(), xcb_translate_coordinates(connection(), xcb_window_t(window), root(), 0, 0), nullptr));
    if (!geometry || !origin)
        return {};
    return QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
}

bool isViewable(quintptr window)
{
    const auto attributes = attributesOf(window);
    return attributes && attributes->map_state == XCB_MAP_STATE_VIEWABLE;
}

bool isOverrideRedirect(quintptr window)
{
    const auto attributes = attributesOf(window);
    return attributes && attributes->override_redirect;
}

bool refusesFocus(quintptr window)
{
    // The flags, then the input field, which counts only with the flags' InputHint bit.
    const QList<quint32> hints = values(window, "WM_HINTS");
    return hints.size() >= 2 && (hints[0] & 1u) && hints[1] == 0;
}

quintptr activeWindow()
{
    return values(root(), "_NET_ACTIVE_WINDOW").value(0);
}

QString describe(const QRect& rect)
{
    return u"x=%1 y=%2 w=%3 h=%4"_s.arg(rect.x()).arg(rect.y()).arg(rect.width()).arg(rect.height());
}

bool isStackedAbove(quintptr upper, quintptr lower)
{
    // The root's children come bottom first.
    const QList<xcb_window_t> order = treeOf(root()).second;
    const qsizetype upperAt = order.indexOf(topLevelOf(xcb_window_t(upper)));
    const qsizetype lowerAt = order.indexOf(topLevelOf(xcb_window_t(lower)));
    return upperAt >= 0 && lowerAt >= 0 && upperAt > lowerAt;
}

void raiseFrameToTop(quintptr window)
{
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection(), topLevelOf(xcb_window_t(window)), XCB_CONFIG_WINDOW_STACK_MODE,
                         &above);
    xcb_flush(connection());
}

bool placeWindow(quintptr window, const QRect& frame)
{
    const QString id = QString::number(window);
    if (underI3())
        QProcess::execute(u"i3-msg"_s, {u"-q"_s, u"[id=%1] floating enable, border none"_s.arg(id)});
    return waitFor([&] {
        if (frameOf(window) == frame)
            return true;
        xdotool({u"windowmove"_s, id, QString::number(frame.x()), QString::number(frame.y())});
        xdotool({u"windowsize"_s, id, QString::number(frame.width()), QString::number(frame.height())});
        return frameOf(window) == frame;
    });
}

TestProcess::TestProcess(const QString& program, const QStringList& arguments,
                         const QProcessEnvironment& environment)
{
    m_process.setProcessEnvironment(environment);
    m_process.start(program, arguments);
    if (!m_process.waitForStarted(10000))
        qWarning("cannot start %s: %s", qPrintable(program), qPrintable(m_process.errorString()));
}

QString TestProcess::log()
{
    m_log += QString::fromUtf8(m_process.readAllStandardError());
    return m_log;
}

std::optional<quintptr> TestProcess::shownWindow(const QString& name) const
{
    const auto window = findWindow(name, pid());
    return window && isViewable(*window) ? window : std::nullopt;
}

std::optional<quintptr> TestProcess::waitForWindow(const QString& name, bool active)
{
    std::optional<quintptr> window;
    const bool shown = waitFor([&] {
        window = shownWindow(name);
        return !isRunning() || (window && (!active || activeWindow() == *window));
    });
    return shown && isRunning() ? window : std::nullopt;
}

void TestProcess::stop(bool gently)
{
    if (m_process.state() == QProcess::NotRunning)
        return;
    const qint64 id = pid();
    if (gently)
        m_process.terminate();
    else
        m_process.kill();
    if (!m_process.waitForFinished(10000)) {
        m_process.kill();
        m_process.waitForFinished(10000);
    }
    // The window manager drops a dead client's windows from its list a moment later.
    waitFor([id] {
        const QList<quintptr> windows = topLevelWindows();
        return std::none_of(windows.begin(), windows.end(),
                            [id](quintptr window) { return pidOf(window) == id; });
    });
}

bool TestHome::writeButtons(const QByteArray& bytes) const
{
    return QDir().mkpath(configDir()) && writeAll(buttonsJson(), bytes);
}

QProcessEnvironment TestHome::environment(const Variables& variables) const
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& name : environment.keys()) {
        if (name.startsWith(u"VANTRIL_"_s))
            environment.remove(name);
    }
    environment.insert(u"VANTRIL_CONFIG_DIR"_s, configDir());
    environment.insert(u"XDG_CONFIG_HOME"_s, xdgConfigHome());
    for (const auto& [name, value] : variables)
        environment.insert(name, value);
    return environment;
}

BarLayout layoutOf(const BarConfig& config, const QList<ButtonSpec>& context)
{
    // The icon theme the program sets up, so that chips laid out here have its icons' widths.
    static const bool themed = (SymbolView::useIconThemes(), true);
    Q_UNUSED(themed);
    DragState drag;
    BarHandlers handlers;
    BarView view(drag, handlers);
    view.rebuild(config, context, true, std::numeric_limits<int>::max());
    return {view.width(), view.chipFrames()};
}

namespace {

/// Writes `config` as the buttons.json the program is to read, and gives the environment it runs in.
QProcessEnvironment prepared(const TestHome& home, const BarConfig& config, const Variables& variables)
{
    // Where it cannot be written, the program finds the folder as unusable as this process did.
    home.writeButtons(Config::encoded(config));
    return home.environment(variables);
}

} // namespace

RunningBar::RunningBar(const TestHome& home, const BarConfig& config, const Variables& variables)
    : TestProcess(QStringLiteral(VANTRIL_BINARY), {}, prepared(home, config, variables))
    , m_buttonsJson(home.buttonsJson())
    , m_layout(layoutOf(config))
{}

RunningBar::~RunningBar()
{
    if (QTest::currentTestFailed()) {
        std::fprintf(stderr, "--- program's standard error ---\n%s--- buttons.json ---\n%s\n",
                     qPrintable(log()), readAll(m_buttonsJson).constData());
    }
}

bool RunningBar::waitForBar()
{
    std::optional<quintptr> bar;
    waitFor([&] {
        bar = isRunning() ? findWindow(u"Vantril"_s, pid()) : std::nullopt;
        return !isRunning() || (bar && isViewable(*bar) && frameOf(*bar).width() == m_layout.width);
    });
    if (!bar)
        return false;
    m_bar = *bar;
    m_frame = frameOf(m_bar);
    return waitUntilDrawn(m_frame); // a compositor may still be fading it in
}

bool RunningBar::waitForWidth(int width)
{
    if (waitFor([&] { return (m_frame = frameOf(m_bar)).width() == width; }))
        return true;
    qWarning("bar is %s, expected width %d", qPrintable(describe(m_frame)), width);
    return false;
}

BarConfig RunningBar::saved() const
{
    return ConfigReader::decode(readAll(m_buttonsJson)).value_or(BarConfig{});
}

bool RunningBar::waitForSave(const QByteArray& before)
{
    if (!waitFor([&] {
            const QByteArray now = readAll(m_buttonsJson);
            return now != before && ConfigReader::decode(now).has_value();
        }))
        return false;
    m_layout = layoutOf(saved());
    return waitForWidth(m_layout.width);
}

std::optional<quintptr> RunningBar::openFlyout(const QString& title)
{
    std::optional<quintptr> flyout;
    if (!waitFor([&] { return !shownFlyout(); }) || !clickAt(chip(title)) ||
        !waitFor([&] { return (flyout = shownFlyout()) && frameOf(*flyout).height() > 16; }))
        return std::nullopt;
    return flyout;
}

QPoint secondRowOf(const QRect& flyout)
{
    const int rowHeight = (flyout.height() - 2 * 8 - 6) / 2;
    return {flyout.center().x(), flyout.y() + 8 + rowHeight + 6 + rowHeight / 2};
}
