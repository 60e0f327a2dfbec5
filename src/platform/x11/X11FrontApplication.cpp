#include "X11FrontApplication.h"

#include "platform/x11/XcbHandles.h"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QHash>
#include <QTimer>
#include <QWindow>
#include <unistd.h>

namespace {

xcb_atom_t atom(xcb_connection_t* connection, const char* name)
{
    static QHash<QByteArray, xcb_atom_t> cache;
    const QByteArray key(name);
    if (const auto it = cache.constFind(key); it != cache.constEnd())
        return it.value();
    const xcb_atom_t value = internAtoms(connection, {key}).first();
    cache.insert(key, value);
    return value;
}

XcbReply<xcb_get_property_reply_t> property(xcb_connection_t* connection, xcb_window_t window,
                                            xcb_atom_t name, xcb_atom_t type, uint32_t length = 1024)
{
    return adoptReply(xcb_get_property_reply(
        connection, xcb_get_property(connection, 0, window, name, type, 0, length), nullptr));
}

QList<uint32_t> cardinals(xcb_connection_t* connection, xcb_window_t window, const char* name,
                          xcb_atom_t type)
{
    const auto reply = property(connection, window, atom(connection, name), type);
    QList<uint32_t> values;
    if (!reply || reply->format != 32)
        return values;
    const auto* data = static_cast<const uint32_t*>(xcb_get_property_value(reply.get()));
    for (int i = 0; i < xcb_get_property_value_length(reply.get()) / 4; ++i)
        values.append(data[i]);
    return values;
}

QByteArray bytes(xcb_connection_t* connection, xcb_window_t window, xcb_atom_t name)
{
    const auto reply = property(connection, window, name, XCB_GET_PROPERTY_TYPE_ANY);
    if (!reply || reply->format != 8)
        return {};
    return QByteArray(static_cast<const char*>(xcb_get_property_value(reply.get())),
                      xcb_get_property_value_length(reply.get()));
}

QString text(xcb_connection_t* connection, xcb_window_t window, const char* name)
{
    return QString::fromUtf8(bytes(connection, window, atom(connection, name)));
}

/// Windows a user works in: normal windows and dialogs, or windows that name no type at all.
bool isApplicationWindow(xcb_connection_t* connection, xcb_window_t window)
{
    const QList<uint32_t> types = cardinals(connection, window, "_NET_WM_WINDOW_TYPE", XCB_ATOM_ATOM);
    if (!types.isEmpty() && !types.contains(atom(connection, "_NET_WM_WINDOW_TYPE_NORMAL")) &&
        !types.contains(atom(connection, "_NET_WM_WINDOW_TYPE_DIALOG")))
        return false;
    // Pop-ups that keep out of the taskbar are not where the user works either.
    const QList<uint32_t> states = cardinals(connection, window, "_NET_WM_STATE", XCB_ATOM_ATOM);
    return !states.contains(atom(connection, "_NET_WM_STATE_SKIP_TASKBAR"));
}

bool isOwnWindow(xcb_window_t window)
{
    for (const QWindow* own : QGuiApplication::allWindows()) {
        if (own->handle() && own->winId() == window)
            return true;
    }
    return false;
}

/// What an application window says about its program; nothing for other windows and our own.
std::optional<WindowNames> namesOf(xcb_connection_t* connection, xcb_window_t window)
{
    if (window == XCB_WINDOW_NONE || isOwnWindow(window) || !isApplicationWindow(connection, window))
        return std::nullopt;
    const QList<uint32_t> pid = cardinals(connection, window, "_NET_WM_PID", XCB_ATOM_CARDINAL);
    if (!pid.isEmpty() && pid.first() == static_cast<uint32_t>(::getpid()))
        return std::nullopt;

    WindowNames names;
    names.ownId = text(connection, window, "_GTK_APPLICATION_ID");
    if (names.ownId.isEmpty())
        names.ownId = text(connection, window, "_KDE_NET_WM_DESKTOP_FILE");
    const QList<QByteArray> wmClass = bytes(connection, window, XCB_ATOM_WM_CLASS).split('\0');
    names.instance = wmClass.size() > 0 ? QString::fromUtf8(wmClass.at(0)) : QString();
    names.windowClass = wmClass.size() > 1 ? QString::fromUtf8(wmClass.at(1)) : QString();
    names.pid = pid.isEmpty() ? 0 : pid.first();
    return names;
}

} // namespace

X11FrontApplication::X11FrontApplication(Namer name)
    : m_name(std::move(name))
{}

X11FrontApplication::~X11FrontApplication()
{
    if (m_installed && QCoreApplication::instance())
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

std::optional<ApplicationIdentity> X11FrontApplication::current()
{
    xcb_connection_t* connection = qtXcbConnection();
    if (!connection)
        return std::nullopt;
    const QList<uint32_t> active =
        cardinals(connection, rootWindow(connection), "_NET_ACTIVE_WINDOW", XCB_ATOM_WINDOW);
    const auto names = active.isEmpty() ? std::nullopt : namesOf(connection, active.first());
    return names ? m_name(*names) : std::nullopt;
}

FacilityReach X11FrontApplication::reach()
{
    if (!qtXcbConnection())
        return {FacilityReach::Scope::Unavailable, QStringLiteral("no X display")};
    return {FacilityReach::Scope::X11, {}};
}

void X11FrontApplication::watch(std::function<void(const ApplicationIdentity&)> activated)
{
    m_activated = std::move(activated);
    xcb_connection_t* connection = qtXcbConnection();
    if (!connection || m_installed)
        return;
    // Changing the event mask replaces this client's whole mask on the root: add to what Qt selected.
    const xcb_window_t root = rootWindow(connection);
    const auto attributes = adoptReply(
        xcb_get_window_attributes_reply(connection, xcb_get_window_attributes(connection, root), nullptr));
    const uint32_t mask = (attributes ? attributes->your_event_mask : 0) | XCB_EVENT_MASK_PROPERTY_CHANGE;
    xcb_change_window_attributes(connection, root, XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection);
    QCoreApplication::instance()->installNativeEventFilter(this);
    m_installed = true;
}

bool X11FrontApplication::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*)
{
    if (eventType != "xcb_generic_event_t")
        return false;
    const auto* event = static_cast<const xcb_generic_event_t*>(message);
    if ((event->response_type & 0x7f) != XCB_PROPERTY_NOTIFY)
        return false;
    const auto* notify = reinterpret_cast<const xcb_property_notify_event_t*>(event);
    xcb_connection_t* connection = qtXcbConnection();
    if (connection && notify->window == rootWindow(connection) &&
        notify->atom == atom(connection, "_NET_ACTIVE_WINDOW")) {
        // Not from inside the event filter: the lookup waits for replies from the server.
        QTimer::singleShot(0, this, &X11FrontApplication::activeWindowChanged);
    }
    return false;
}

void X11FrontApplication::activeWindowChanged()
{
    if (const auto app = current(); app && m_activated)
        m_activated(*app);
}
