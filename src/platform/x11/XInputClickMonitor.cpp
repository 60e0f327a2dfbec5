#include "XInputClickMonitor.h"

#include "platform/x11/XcbHandles.h"

#include <QCursor>
#include <QGuiApplication>
#include <QScreen>
#include <QSocketNotifier>
#include <QTimer>
#include <cstdlib>
#include <xcb/xinput.h>

namespace {

bool isReportedButton(std::uint32_t button)
{
    // Left and right only: the middle button pastes, and 4 to 7 are wheel steps, which close nothing.
    return button == 1 || button == 3;
}

/// The server speaks in device pixels; the bar's geometry is in Qt's scaled ones. Qt keeps each screen's
/// top-left corner as it is and divides the rest by the screen's scale, so the same is done here.
QPoint toWindowCoordinates(QPoint device)
{
    for (const QScreen* screen : QGuiApplication::screens()) {
        const QRect scaled = screen->geometry();
        const qreal ratio = screen->devicePixelRatio();
        const QRect native(scaled.topLeft(), scaled.size() * ratio);
        if (native.contains(device))
            return scaled.topLeft() + (device - scaled.topLeft()) / ratio;
    }
    return device;
}

int qtButtons(std::uint16_t mask)
{
    int buttons = 0;
    if (mask & XCB_BUTTON_MASK_1)
        buttons |= Qt::LeftButton;
    if (mask & XCB_BUTTON_MASK_2)
        buttons |= Qt::MiddleButton;
    if (mask & XCB_BUTTON_MASK_3)
        buttons |= Qt::RightButton;
    return buttons;
}

} // namespace

void XInputClickMonitor::Disconnect::operator()(xcb_connection_t* connection) const
{
    xcb_disconnect(connection);
}

XInputClickMonitor::XInputClickMonitor() = default;

XInputClickMonitor::~XInputClickMonitor()
{
    // The notifier watches the connection's socket, so it goes first.
    m_notifier.reset();
    m_connection.reset();
}

bool XInputClickMonitor::connect()
{
    if (m_connection)
        return true;
    // Connected once: a failed attempt is not repeated on every pressedButtons() poll of the bar.
    if (m_triedToConnect)
        return false;
    m_triedToConnect = true;
    // Only beside Qt's own X connection: the positions reported must be in the space the bar's windows live
    // in.
    if (!qtXcbConnection())
        return false;

    std::unique_ptr<xcb_connection_t, Disconnect> connection(xcb_connect(nullptr, nullptr));
    if (!connection || xcb_connection_has_error(connection.get()))
        return false;
    const xcb_query_extension_reply_t* xinput = xcb_get_extension_data(connection.get(), &xcb_input_id);
    if (!xinput || !xinput->present)
        return false;
    // The server delivers raw events to non-grabbing clients only from XI 2.1 on, and only once the client
    // has announced which version it speaks.
    const auto version = adoptReply(xcb_input_xi_query_version_reply(
        connection.get(), xcb_input_xi_query_version(connection.get(), 2, 2), nullptr));
    if (!version || version->major_version < 2 || (version->major_version == 2 && version->minor_version < 1))
        return false;

    m_xinputOpcode = xinput->major_opcode;
    m_connection = std::move(connection);
    m_notifier =
        std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection.get()), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] { drain(); });
    return true;
}

void XInputClickMonitor::select(bool presses)
{
    struct
    {
        xcb_input_event_mask_t head;
        std::uint32_t bits;
    } mask{{XCB_INPUT_DEVICE_ALL_MASTER, 1},
           presses ? std::uint32_t(XCB_INPUT_XI_EVENT_MASK_RAW_BUTTON_PRESS) : 0u};
    xcb_input_xi_select_events(m_connection.get(), rootWindow(m_connection.get()), 1, &mask.head);
    xcb_flush(m_connection.get());
}

void XInputClickMonitor::start(std::function<void(QPoint)> pressed)
{
    if (!connect())
        return;
    const bool wasRunning = static_cast<bool>(m_pressed);
    m_pressed = std::move(pressed);
    const bool running = static_cast<bool>(m_pressed);
    if (running != wasRunning)
        select(running);
}

void XInputClickMonitor::stop()
{
    if (!m_pressed)
        return;
    m_pressed = nullptr;
    // Deselected rather than ignored, so that an idle bar is not woken by every click on the desktop.
    if (m_connection)
        select(false);
}

FacilityReach XInputClickMonitor::reach()
{
    if (!isAvailable())
        return {FacilityReach::Scope::Unavailable, QStringLiteral("no XInput 2 on this display")};
    return {FacilityReach::Scope::X11, {}};
}

PointerState XInputClickMonitor::pointer()
{
    if (!connect())
        return {QCursor::pos(), 0};
    xcb_connection_t* connection = m_connection.get();
    const auto reply = adoptReply(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, rootWindow(connection)), nullptr));
    // Waiting for the reply may have read presses off the socket into xcb's queue. They are kept and
    // handled from the event loop, not in the middle of the caller's poll; nothing is scheduled when none
    // came, so that a tick costs one round trip and no extra wake-up.
    while (xcb_generic_event_t* event = xcb_poll_for_queued_event(connection))
        m_queued.emplace_back(event, std::free);
    if (!m_queued.empty())
        QTimer::singleShot(0, m_notifier.get(), [this] { drain(); });
    if (!reply)
        return {QCursor::pos(), 0};
    return {toWindowCoordinates(QPoint(reply->root_x, reply->root_y)), qtButtons(reply->mask)};
}

void XInputClickMonitor::drain()
{
    xcb_connection_t* connection = m_connection.get();
    if (!connection)
        return;
    while (!m_queued.empty()) {
        const auto event = std::move(m_queued.front());
        m_queued.pop_front();
        handle(event.get());
    }
    while (const auto event = adoptReply(xcb_poll_for_event(connection)))
        handle(event.get());
    // The server went away: a closed socket stays readable and would spin the event loop.
    if (xcb_connection_has_error(connection))
        m_notifier->setEnabled(false);
}

void XInputClickMonitor::handle(const xcb_generic_event_t* event)
{
    if ((event->response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto* generic = reinterpret_cast<const xcb_ge_generic_event_t*>(event);
    if (generic->extension != m_xinputOpcode || generic->event_type != XCB_INPUT_RAW_BUTTON_PRESS)
        return;
    // Presses still queued from before stop() are dropped here.
    if (!m_pressed)
        return;
    const auto* press = reinterpret_cast<const xcb_input_raw_button_press_event_t*>(event);
    if (!isReportedButton(press->detail))
        return;
    // Raw events carry no position; the pointer has hardly moved since the press.
    xcb_connection_t* connection = m_connection.get();
    const auto pointer = adoptReply(
        xcb_query_pointer_reply(connection, xcb_query_pointer(connection, rootWindow(connection)), nullptr));
    if (!pointer)
        return;
    // A copy: the callback may well stop or restart the monitor.
    const auto pressed = m_pressed;
    pressed(toWindowCoordinates(QPoint(pointer->root_x, pointer->root_y)));
}
