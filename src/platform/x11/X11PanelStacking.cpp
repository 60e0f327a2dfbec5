#include "X11PanelStacking.h"

#include "platform/x11/XcbHandles.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

namespace {

/// Whether two windows were made by the same client: the bits of a resource id above the server's mask
/// name the connection that made it.
bool sameClient(xcb_window_t one, xcb_window_t other)
{
    const std::uint32_t clientBits = ~xcb_get_setup(qtXcbConnection())->resource_id_mask;
    return (one & clientBits) == (other & clientBits);
}

/// A window made on Qt's connection: a panel, or one of this program's menus and tooltips.
bool isOwnWindow(xcb_window_t window)
{
    return sameClient(window, xcb_get_setup(qtXcbConnection())->resource_id_base);
}

} // namespace

bool X11PanelStacking::connect()
{
    if (m_watching)
        return true;
    // The panels live on Qt's connection; without one there is nothing to keep on top.
    if (!m_connection.open())
        return false;
    xcb_connection_t* connection = m_connection.get();
    m_supportingWmCheck = internAtoms(connection, {QByteArrayLiteral("_NET_SUPPORTING_WM_CHECK")}).first();
    const std::uint32_t mask = XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY;
    xcb_change_window_attributes(connection, rootWindow(connection), XCB_CW_EVENT_MASK, &mask);
    xcb_flush(connection);
    m_connection.onReadable([this] { drain(); });
    m_watching = true;
    return true;
}

void X11PanelStacking::keepOnTop(std::uint32_t window)
{
    if (!connect())
        return;
    m_panels.removeAll(window);
    m_panels.append(window);
    // Nothing to do until it is mapped: its map notice starts the first look at the stack.
}

void X11PanelStacking::release(std::uint32_t window)
{
    m_panels.removeAll(window);
}

void X11PanelStacking::drain()
{
    xcb_connection_t* connection = m_connection.get();
    bool changed = false;
    while (const auto event = adoptReply(xcb_poll_for_event(connection))) {
        switch (event->response_type & 0x7f) {
        case XCB_DESTROY_NOTIFY:
            m_panels.removeAll(reinterpret_cast<const xcb_destroy_notify_event_t*>(event.get())->window);
            break;
        case XCB_MAP_NOTIFY: {
            const xcb_window_t window = reinterpret_cast<const xcb_map_notify_event_t*>(event.get())->window;
            // A panel comes up where it was made, perhaps below windows mapped since; this program's
            // menus and tooltips change nothing.
            changed = changed || m_panels.contains(window) || !isOwnWindow(window);
            break;
        }
        case XCB_CONFIGURE_NOTIFY:
            // The bar's own moves, while the grip drags it, need no look at the stack.
            changed =
                changed ||
                !isOwnWindow(reinterpret_cast<const xcb_configure_notify_event_t*>(event.get())->window);
            break;
        case XCB_CIRCULATE_NOTIFY:
            changed = true;
            break;
        default:
            break;
        }
    }
    if (!changed || m_panels.isEmpty() || xcb_connection_has_error(connection))
        return;
    restack();
    // Its own restacking only moves this program's windows, which the next pass ignores, so this ends.
    m_connection.readQueuedSoon();
}

void X11PanelStacking::restack()
{
    xcb_connection_t* connection = m_connection.get();
    const xcb_window_t root = rootWindow(connection);

    const auto treeCookie = xcb_query_tree(connection, root);
    const auto checkCookie =
        xcb_get_property(connection, 0, root, m_supportingWmCheck, XCB_ATOM_WINDOW, 0, 1);
    const auto tree = adoptReply(xcb_query_tree_reply(connection, treeCookie, nullptr));
    const auto check = adoptReply(xcb_get_property_reply(connection, checkCookie, nullptr));
    if (!tree)
        return;
    // The window manager's own windows: made by the client that made its check window.
    std::optional<xcb_window_t> manager;
    if (check && check->format == 32 && xcb_get_property_value_length(check.get()) >= 4)
        manager = *static_cast<const xcb_window_t*>(xcb_get_property_value(check.get()));

    // The root's children come bottom first.
    const xcb_window_t* children = xcb_query_tree_children(tree.get());
    const xcb_window_t* end = children + xcb_query_tree_children_length(tree.get());
    const xcb_window_t* lowest =
        std::find_if(children, end, [this](xcb_window_t window) { return m_panels.contains(window); });
    if (lowest == end)
        return;
    // One round trip for every other program's window above the lowest panel.
    std::vector<std::pair<xcb_window_t, xcb_get_window_attributes_cookie_t>> above;
    for (const xcb_window_t* window = lowest + 1; window != end; ++window) {
        if (!isOwnWindow(*window))
            above.emplace_back(*window, xcb_get_window_attributes(connection, *window));
    }
    xcb_window_t covering = XCB_NONE;
    for (const auto& [window, cookie] : above) {
        const auto attributes = adoptReply(xcb_get_window_attributes_reply(connection, cookie, nullptr));
        if (!attributes || attributes->map_state != XCB_MAP_STATE_VIEWABLE)
            continue;
        // Other programs' menus and tooltips stay above: covering a menu just opened would hide it. The
        // manager's frames are override-redirect as well (i3's are), and they hold the managed windows.
        if (attributes->override_redirect && !(manager && sameClient(window, *manager)))
            continue;
        covering = window;
    }
    if (covering == XCB_NONE)
        return;
    // Right above it rather than on top of everything, for the same menus' sake.
    xcb_window_t sibling = covering;
    for (const std::uint32_t panel : std::as_const(m_panels)) {
        const std::uint32_t values[] = {sibling, XCB_STACK_MODE_ABOVE};
        xcb_configure_window(connection, panel, XCB_CONFIG_WINDOW_SIBLING | XCB_CONFIG_WINDOW_STACK_MODE,
                             values);
        sibling = panel;
    }
    xcb_flush(connection);
}
