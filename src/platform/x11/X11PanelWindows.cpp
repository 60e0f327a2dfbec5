#include "X11PanelWindows.h"

#include "platform/x11/XcbHandles.h"

#include <QByteArray>
#include <algorithm>
#include <iterator>
#include <optional>
#include <vector>
#include <xcb/shape.h>

namespace {

// ICCCM WM_HINTS: nine 32-bit fields, the first holding which of the others are set.
constexpr int WmHintsFields = 9;
constexpr std::uint32_t InputHint = 1;

constexpr std::uint32_t AllDesktops = 0xFFFFFFFF;

/// The screen $DISPLAY names, which is the one Qt opened; compositors claim a selection per screen.
int defaultScreenNumber()
{
    char* host = nullptr;
    int display = 0;
    int screen = 0;
    if (!xcb_parse_display(nullptr, &host, &display, &screen))
        return 0;
    const auto ownedHost = adoptReply(host);
    return screen;
}

/// The atoms of an ATOM property, or nothing when it is missing or of another format.
std::optional<std::vector<std::uint32_t>> atomList(const xcb_get_property_reply_t* reply)
{
    if (!reply || reply->format != 32)
        return std::nullopt;
    const auto* atoms = static_cast<const xcb_atom_t*>(xcb_get_property_value(reply));
    return std::vector<std::uint32_t>(atoms, atoms + xcb_get_property_value_length(reply) / 4);
}

} // namespace

bool X11PanelWindows::ensureAtoms()
{
    xcb_connection_t* connection = qtXcbConnection();
    if (!connection)
        return false;
    if (m_haveAtoms)
        return true;

    const QList<QByteArray> names = {
        QByteArrayLiteral("_NET_WM_WINDOW_TYPE"),
        QByteArrayLiteral("_NET_WM_WINDOW_TYPE_DOCK"),
        QByteArrayLiteral("_NET_WM_STATE"),
        QByteArrayLiteral("_NET_WM_STATE_ABOVE"),
        QByteArrayLiteral("_NET_WM_STATE_STICKY"),
        QByteArrayLiteral("_NET_WM_STATE_SKIP_TASKBAR"),
        QByteArrayLiteral("_NET_WM_STATE_SKIP_PAGER"),
        QByteArrayLiteral("_NET_WM_DESKTOP"),
        QByteArrayLiteral("_NET_WM_CM_S") + QByteArray::number(defaultScreenNumber()),
        QByteArrayLiteral("_NET_WM_WINDOW_OPACITY"),
        QByteArrayLiteral("_NET_SUPPORTED"),
        QByteArrayLiteral("WM_PROTOCOLS"),
        QByteArrayLiteral("WM_TAKE_FOCUS"),
    };
    // One round trip for all of them.
    const QList<xcb_atom_t> atoms = internAtoms(connection, names);
    std::copy(atoms.begin(), atoms.end(), m_atoms.begin());
    const bool complete = !atoms.contains(xcb_atom_t(XCB_ATOM_NONE));
    // A failed round trip is tried again next time rather than leaving None atoms cached for good.
    m_haveAtoms = complete;
    return complete;
}

void X11PanelWindows::prepareDock(quintptr windowId)
{
    if (!windowId || !ensureAtoms())
        return;
    xcb_connection_t* connection = qtXcbConnection();
    const auto window = static_cast<xcb_window_t>(windowId);

    // Asked all at once: one wait for the server instead of three while the window waits to be mapped.
    const auto hintsAsked =
        xcb_get_property(connection, 0, window, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, 0, WmHintsFields);
    const auto protocolsAsked =
        xcb_get_property(connection, 0, window, m_atoms[Protocols], XCB_ATOM_ATOM, 0, 32);
    const auto supportedAsked =
        xcb_get_property(connection, 0, rootWindow(connection), m_atoms[Supported], XCB_ATOM_ATOM, 0, 4096);

    // Qt keeps its window group and initial state in WM_HINTS; only the input field is ours to change.
    const auto current = adoptReply(xcb_get_property_reply(connection, hintsAsked, nullptr));
    std::array<std::uint32_t, WmHintsFields> hints{};
    if (current && current->format == 32) {
        const int count = std::min(xcb_get_property_value_length(current.get()) / 4, WmHintsFields);
        const auto* values = static_cast<const std::uint32_t*>(xcb_get_property_value(current.get()));
        std::copy(values, values + count, hints.begin());
    }
    // Input False: a click on the bar must leave the keyboard with the application it types into.
    hints[0] |= InputHint;
    hints[1] = 0;
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_HINTS, XCB_ATOM_WM_HINTS, 32,
                        WmHintsFields, hints.data());
    dropTakeFocus(window,
                  atomList(adoptReply(xcb_get_property_reply(connection, protocolsAsked, nullptr)).get()));

    // Tiling managers have no stacking layers (they leave _NET_WM_STATE_ABOVE out of _NET_SUPPORTED). i3
    // stretches a dock into a full-width strip, and gives the keyboard focus to any window it manages that
    // is clicked or mapped, even one that takes no input: a tap on the bar would take the focus from the
    // application that keys and pastes are meant for. A window it does not manage at all is left where it
    // is put, on every workspace, and never focused; keeping it above the tiles is then this program's
    // job. Stacking managers keep managing the panel: they stack docks above other windows themselves.
    const bool unmanaged = !managerHasLayers(
        atomList(adoptReply(xcb_get_property_reply(connection, supportedAsked, nullptr)).get()));
    const std::uint32_t overrideRedirect = unmanaged ? 1 : 0;
    xcb_change_window_attributes(connection, window, XCB_CW_OVERRIDE_REDIRECT, &overrideRedirect);
    if (unmanaged)
        m_stacking.keepOnTop(window);
    else
        m_stacking.release(window);
    // The type and states below still tell compositors and tools what the window is.
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, m_atoms[WindowType], XCB_ATOM_ATOM, 32, 1,
                        &m_atoms[WindowTypeDock]);
    // openbox ignores STICKY (it does not support it) but honours the desktop below; xfwm4 wants both.
    const xcb_atom_t states[] = {m_atoms[StateAbove], m_atoms[StateSticky], m_atoms[StateSkipTaskbar],
                                 m_atoms[StateSkipPager]};
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, m_atoms[State], XCB_ATOM_ATOM, 32,
                        std::size(states), states);
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, m_atoms[Desktop], XCB_ATOM_CARDINAL, 32, 1,
                        &AllDesktops);
    // The caller maps the window next through Qt, which may not flush before the map goes out.
    xcb_flush(connection);
}

bool X11PanelWindows::managerHasLayers(const std::optional<std::vector<std::uint32_t>>& supported) const
{
    // Without a window manager (or one that names no hints) nothing stretches a dock either.
    if (!supported || supported->empty())
        return true;
    return std::find(supported->begin(), supported->end(), m_atoms[StateAbove]) != supported->end();
}

void X11PanelWindows::dropTakeFocus(std::uint32_t window,
                                    const std::optional<std::vector<std::uint32_t>>& protocols)
{
    // Qt offers WM_TAKE_FOCUS on every window. With input False that is the ICCCM's "globally active"
    // model: marco, on a click, first moves the focus to a window of its own (_NET_ACTIVE_WINDOW becomes
    // None) and then asks the panel to take it, which it never does, so keys and pastes went nowhere.
    // Without it the panel is "no input" and no window manager gives it the focus.
    if (!protocols)
        return;
    std::vector<xcb_atom_t> kept = *protocols;
    const auto end = std::remove(kept.begin(), kept.end(), m_atoms[TakeFocus]);
    if (end == kept.end())
        return;
    kept.erase(end, kept.end());
    xcb_change_property(qtXcbConnection(), XCB_PROP_MODE_REPLACE, static_cast<xcb_window_t>(window),
                        m_atoms[Protocols], XCB_ATOM_ATOM, 32, static_cast<std::uint32_t>(kept.size()),
                        kept.data());
}

bool X11PanelWindows::isCompositing()
{
    if (!ensureAtoms())
        return false;
    xcb_connection_t* connection = qtXcbConnection();
    const auto owner = adoptReply(xcb_get_selection_owner_reply(
        connection, xcb_get_selection_owner(connection, m_atoms[CompositingManager]), nullptr));
    return owner && owner->owner != XCB_NONE;
}

void X11PanelWindows::setClickThrough(quintptr windowId, bool through)
{
    xcb_connection_t* connection = qtXcbConnection();
    if (!connection || !windowId)
        return;
    const xcb_query_extension_reply_t* shape = xcb_get_extension_data(connection, &xcb_shape_id);
    if (!shape || !shape->present)
        return;
    // Not QWindow::setFlag(Qt::WindowTransparentForInput): Qt then rewrites _NET_WM_WINDOW_TYPE and drops
    // DOCK, and on the way back fixes the input region at the window's size of that moment.
    // Restoring with an oversized rectangle instead of resetting the shape to None: under xfwm4 the reset
    // left the part of a bar that had grown since dead to clicks. The server clips it to the window.
    const xcb_rectangle_t everything{0, 0, 32767, 32767};
    xcb_shape_rectangles(connection, XCB_SHAPE_SO_SET, XCB_SHAPE_SK_INPUT, XCB_CLIP_ORDERING_UNSORTED,
                         static_cast<xcb_window_t>(windowId), 0, 0, through ? 0 : 1, &everything);
    xcb_flush(connection);
}

void X11PanelWindows::setOpacity(quintptr windowId, double opacity)
{
    if (!windowId || !ensureAtoms())
        return;
    xcb_connection_t* connection = qtXcbConnection();
    const auto window = static_cast<xcb_window_t>(windowId);
    // Written here rather than through QWidget::setWindowOpacity: Qt 6.4 does not flush the request, so
    // a fade would stall until some other traffic happened to flush it.
    if (opacity >= 1.0) {
        xcb_delete_property(connection, window, m_atoms[WindowOpacity]);
    } else {
        const auto value = static_cast<std::uint32_t>(std::clamp(opacity, 0.0, 1.0) * 0xFFFFFFFFu);
        xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window, m_atoms[WindowOpacity],
                            XCB_ATOM_CARDINAL, 32, 1, &value);
    }
    xcb_flush(connection);
}
