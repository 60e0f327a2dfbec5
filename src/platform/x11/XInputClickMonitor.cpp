#include "XInputClickMonitor.h"

#include "platform/x11/XcbHandles.h"

#include <xcb/xinput.h>

namespace {

bool isReportedButton(std::uint32_t button)
{
    // Left and right only: the middle button pastes, and 4 to 7 are wheel steps, which close nothing.
    return button == 1 || button == 3;
}

} // namespace

bool XInputClickMonitor::connectXInput()
{
    if (m_xinputOpcode)
        return true;
    // Asked once: the bar asks again whenever a flyout opens.
    if (m_checked || !m_connection.open())
        return false;
    m_checked = true;
    xcb_connection_t* connection = m_connection.get();
    const xcb_query_extension_reply_t* xinput = xcb_get_extension_data(connection, &xcb_input_id);
    if (!xinput || !xinput->present)
        return false;
    // The server delivers raw events to non-grabbing clients only from XI 2.1 on, and only once the client
    // has announced which version it speaks.
    const auto version = adoptReply(
        xcb_input_xi_query_version_reply(connection, xcb_input_xi_query_version(connection, 2, 2), nullptr));
    if (!version || version->major_version < 2 || (version->major_version == 2 && version->minor_version < 1))
        return false;
    m_xinputOpcode = xinput->major_opcode;
    m_connection.onReadable([this] { drain(); });
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

void XInputClickMonitor::start()
{
    if (m_running || !connectXInput())
        return;
    m_running = true;
    select(true);
}

void XInputClickMonitor::stop()
{
    if (!m_running)
        return;
    m_running = false;
    // Deselected rather than ignored, so that an idle bar is not woken by every click on the desktop.
    select(false);
}

FacilityReach XInputClickMonitor::reach()
{
    if (!isAvailable())
        return {FacilityReach::Scope::Unavailable, QStringLiteral("no XInput 2 on this display")};
    return {FacilityReach::Scope::X11, {}};
}

void XInputClickMonitor::drain()
{
    while (const auto event = adoptReply(xcb_poll_for_event(m_connection.get())))
        handle(event.get());
}

void XInputClickMonitor::handle(const xcb_generic_event_t* event)
{
    if ((event->response_type & 0x7f) != XCB_GE_GENERIC)
        return;
    const auto* generic = reinterpret_cast<const xcb_ge_generic_event_t*>(event);
    if (generic->extension != *m_xinputOpcode || generic->event_type != XCB_INPUT_RAW_BUTTON_PRESS)
        return;
    // Presses still queued from before stop() are dropped here.
    if (!m_running)
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
    Q_EMIT pressed(fromDevicePixels(QPoint(pointer->root_x, pointer->root_y)));
}
