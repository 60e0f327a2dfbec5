#include "X11Windows.h"

#include "platform/x11/WorkArea.h"

#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QImage>
#include <QPixmap>
#include <QProcess>
#include <QRegularExpression>
#include <QScreen>
#include <QTest>
#include <algorithm>

bool onSessionScreen()
{
    if (QGuiApplication::platformName() != QLatin1String("xcb")) {
        qWarning("running on %s, not xcb", qPrintable(QGuiApplication::platformName()));
        return false;
    }
    const QRect screen = QGuiApplication::primaryScreen()->geometry();
    if (screen != QRect(0, 0, screenWidth, screenHeight)) {
        qWarning("the screen is %s", qPrintable(describe(screen)));
        return false;
    }
    return connection() != nullptr;
}

QString windowManager()
{
    const QString named = qEnvironmentVariable("VANTRIL_TEST_WM");
    return named.isEmpty() ? QStringLiteral("openbox") : named;
}

bool supportsHint(const QByteArray& hint)
{
    const QString supported =
        output(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_SUPPORTED")});
    return supported.split(QRegularExpression(QStringLiteral("[\\s,=]+")))
        .contains(QString::fromLatin1(hint));
}

QRect workArea()
{
    return currentWorkArea().value_or(QRect(0, 0, screenWidth, screenHeight));
}

bool isCompositing()
{
    const auto reply = adoptReply(xcb_get_selection_owner_reply(
        connection(), xcb_get_selection_owner(connection(), atom(QByteArrayLiteral("_NET_WM_CM_S0"))),
        nullptr));
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

namespace {

/// The child of the root that holds `window`: the frame a reparenting window manager put around it.
xcb_window_t topLevelOf(xcb_window_t window)
{
    for (;;) {
        const auto tree =
            adoptReply(xcb_query_tree_reply(connection(), xcb_query_tree(connection(), window), nullptr));
        if (!tree || tree->parent == XCB_NONE || tree->parent == tree->root)
            return window;
        window = tree->parent;
    }
}

} // namespace

bool isStackedAbove(quintptr upper, quintptr lower)
{
    // The root's children come bottom first.
    const QList<xcb_window_t> order = childWindows(rootWindow());
    const qsizetype upperAt = order.indexOf(topLevelOf(static_cast<xcb_window_t>(upper)));
    const qsizetype lowerAt = order.indexOf(topLevelOf(static_cast<xcb_window_t>(lower)));
    return upperAt >= 0 && lowerAt >= 0 && upperAt > lowerAt;
}

void raiseFrameToTop(quintptr window)
{
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(connection(), topLevelOf(static_cast<xcb_window_t>(window)),
                         XCB_CONFIG_WINDOW_STACK_MODE, &above);
    xcb_flush(connection());
}

bool placeWindow(quintptr window, const QRect& frame)
{
    const QString id = QString::number(window);
    if (windowManager() == QLatin1String("i3"))
        QProcess::execute(
            QStringLiteral("i3-msg"),
            {QStringLiteral("-q"), QStringLiteral("[id=%1] floating enable, border none").arg(id)});
    return waitFor([&] {
        if (frameOf(window) == frame)
            return true;
        xdotool({QStringLiteral("windowmove"), id, QString::number(frame.x()), QString::number(frame.y())});
        xdotool({QStringLiteral("windowsize"), id, QString::number(frame.width()),
                 QString::number(frame.height())});
        return frameOf(window) == frame;
    });
}

bool switchWorkspace(int number)
{
    // i3 makes workspaces as they are asked for, and names them from 1.
    if (windowManager() == QLatin1String("i3"))
        return QProcess::execute(QStringLiteral("i3-msg"), {QStringLiteral("-q"), QStringLiteral("workspace"),
                                                            QString::number(number + 1)}) == 0;
    // KWin starts with a single workspace.
    const auto count = [] {
        return output(QStringLiteral("xdotool"), {QStringLiteral("get_num_desktops")}).trimmed().toInt();
    };
    if (count() <= number) {
        xdotool({QStringLiteral("set_num_desktops"), QString::number(number + 1)});
        waitFor([&] { return count() > number; });
    }
    return xdotool({QStringLiteral("set_desktop"), QString::number(number)}) && waitFor([&] {
               return output(QStringLiteral("xdotool"), {QStringLiteral("get_desktop")}).trimmed() ==
                      QString::number(number);
           });
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

bool type(const QString& text)
{
    return xdotool({QStringLiteral("type"), QStringLiteral("--delay"), QStringLiteral("30"), text});
}

QStringList moveArguments(const QPoint& global)
{
    return {QStringLiteral("mousemove"), QString::number(global.x()), QString::number(global.y())};
}

bool moveTo(const QPoint& global)
{
    return xdotool(moveArguments(global));
}

bool clickAt(const QPoint& global, int button)
{
    return xdotool(moveArguments(global) + QStringList{QStringLiteral("click"), QString::number(button)});
}

bool dragAlong(const QList<QPoint>& path)
{
    QStringList arguments = moveArguments(path.first());
    arguments += {QStringLiteral("mousedown"), QStringLiteral("1")};
    for (qsizetype i = 1; i < path.size(); ++i)
        arguments += moveArguments(path.at(i));
    arguments += {QStringLiteral("mouseup"), QStringLiteral("1")};
    return xdotool(arguments);
}

bool dragBetween(const QPoint& from, const QPoint& to, int steps)
{
    QList<QPoint> path;
    for (int i = 0; i <= steps; ++i)
        path.append(from + (to - from) * i / steps);
    return dragAlong(path);
}

QString windowProperty(quintptr window, const QString& name)
{
    return output(QStringLiteral("xprop"), {QStringLiteral("-id"), QString::number(window), name});
}

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

QList<quintptr> topLevelWindows()
{
    QList<quintptr> windows = clientWindows();
    const xcb_atom_t type = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE"));
    const xcb_atom_t dock = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE_DOCK"));
    for (const xcb_window_t window : childWindows(rootWindow())) {
        const auto attributes = attributesOf(window);
        if (attributes && attributes->overrideRedirect && cardinal(window, type) == dock)
            windows.append(window);
    }
    return windows;
}

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

std::optional<quintptr> findWindow(const QString& name, qint64 pid)
{
    for (const quintptr window : topLevelWindows()) {
        if (windowName(window) == name && windowPid(window) == pid)
            return window;
    }
    return std::nullopt;
}

bool hasClientWindows(qint64 pid)
{
    const QList<quintptr> windows = topLevelWindows();
    return std::any_of(windows.begin(), windows.end(),
                       [pid](quintptr window) { return windowPid(window) == pid; });
}

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

bool isViewable(quintptr window)
{
    return windowInfo(window).value_or(WindowInfo{}).viewable;
}

quintptr activeWindow()
{
    const QString line =
        output(QStringLiteral("xprop"), {QStringLiteral("-root"), QStringLiteral("_NET_ACTIVE_WINDOW")});
    const auto match = QRegularExpression(QStringLiteral("window id # (0x[0-9a-fA-F]+)")).match(line);
    return match.hasMatch() ? match.captured(1).toULongLong(nullptr, 16) : 0;
}

QString describe(const QRect& rect)
{
    return QStringLiteral("x=%1 y=%2 w=%3 h=%4")
        .arg(rect.x())
        .arg(rect.y())
        .arg(rect.width())
        .arg(rect.height());
}

void saveScreenshot(const QString& name, const QRect& area)
{
    const QString folder = qEnvironmentVariable("VANTRIL_TEST_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    const QRect grabbed = area.isEmpty() ? QRect(0, 0, -1, -1) : area;
    const QPixmap shot = QGuiApplication::primaryScreen()->grabWindow(0, grabbed.x(), grabbed.y(),
                                                                      grabbed.width(), grabbed.height());
    if (!shot.save(QDir(folder).filePath(name)))
        qWarning("cannot save %s in %s", qPrintable(name), qPrintable(folder));
}

xcb_connection_t* connection()
{
    return qtXcbConnection();
}

xcb_atom_t atom(const QByteArray& name)
{
    return internAtoms(connection(), {name}).value(0, XCB_ATOM_NONE);
}

xcb_window_t rootWindow()
{
    return rootWindow(connection());
}

QList<xcb_window_t> childWindows(xcb_window_t window)
{
    const auto reply =
        adoptReply(xcb_query_tree_reply(connection(), xcb_query_tree(connection(), window), nullptr));
    if (!reply)
        return {};
    const xcb_window_t* children = xcb_query_tree_children(reply.get());
    return QList<xcb_window_t>(children, children + xcb_query_tree_children_length(reply.get()));
}

std::optional<quint32> cardinal(xcb_window_t window, xcb_atom_t property)
{
    const auto reply = adoptReply(xcb_get_property_reply(
        connection(), xcb_get_property(connection(), 0, window, property, XCB_ATOM_ANY, 0, 1), nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return std::nullopt;
    return *static_cast<const quint32*>(xcb_get_property_value(reply.get()));
}

std::optional<Attributes> attributesOf(xcb_window_t window)
{
    const auto reply = adoptReply(xcb_get_window_attributes_reply(
        connection(), xcb_get_window_attributes(connection(), window), nullptr));
    if (!reply)
        return std::nullopt;
    return Attributes{reply->map_state == XCB_MAP_STATE_VIEWABLE, reply->override_redirect != 0};
}

QRect screenRect(xcb_window_t window)
{
    const auto geometry =
        adoptReply(xcb_get_geometry_reply(connection(), xcb_get_geometry(connection(), window), nullptr));
    if (!geometry)
        return {};
    const auto origin = adoptReply(xcb_translate_coordinates_reply(
        connection(), xcb_translate_coordinates(connection(), window, rootWindow(), 0, 0), nullptr));
    if (!origin)
        return {};
    return QRect(origin->dst_x, origin->dst_y, geometry->width, geometry->height);
}

std::optional<xcb_window_t> shownMenu(qint64 pid)
{
    const xcb_atom_t pidAtom = atom(QByteArrayLiteral("_NET_WM_PID"));
    const xcb_atom_t typeAtom = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE"));
    const xcb_atom_t tooltip = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE_TOOLTIP"));
    const xcb_atom_t dock = atom(QByteArrayLiteral("_NET_WM_WINDOW_TYPE_DOCK"));
    for (const xcb_window_t window : childWindows(rootWindow())) {
        const auto attributes = attributesOf(window);
        if (!attributes || !attributes->viewable || !attributes->overrideRedirect)
            continue;
        const auto type = cardinal(window, typeAtom);
        if (cardinal(window, pidAtom) != quint32(pid) || type == tooltip || type == dock)
            continue;
        return window;
    }
    return std::nullopt;
}
