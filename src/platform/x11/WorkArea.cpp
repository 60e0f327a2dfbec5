#include "WorkArea.h"

#include "platform/x11/XcbHandles.h"

#include <QByteArray>
#include <array>
#include <cstdint>

namespace {

constexpr std::uint32_t FieldsPerArea = 4;

} // namespace

std::optional<QRect> currentWorkArea()
{
    xcb_connection_t* connection = qtXcbConnection();
    if (!connection)
        return std::nullopt;

    // Only if they exist: None means no window manager ever set them, so there is nothing to read.
    const QList<xcb_atom_t> atoms = internAtoms(
        connection, {QByteArrayLiteral("_NET_CURRENT_DESKTOP"), QByteArrayLiteral("_NET_WORKAREA")}, true);
    if (atoms.contains(xcb_atom_t(XCB_ATOM_NONE)))
        return std::nullopt;

    const xcb_window_t root = rootWindow(connection);
    const auto desktopCookie = xcb_get_property(connection, 0, root, atoms[0], XCB_ATOM_CARDINAL, 0, 1);
    // Enough for 64 workspaces; the area of a workspace beyond that is not worth a second request.
    const auto areasCookie =
        xcb_get_property(connection, 0, root, atoms[1], XCB_ATOM_CARDINAL, 0, 64 * FieldsPerArea);
    const auto desktop = adoptReply(xcb_get_property_reply(connection, desktopCookie, nullptr));
    const auto areas = adoptReply(xcb_get_property_reply(connection, areasCookie, nullptr));
    if (!areas || areas->format != 32)
        return std::nullopt;

    std::uint32_t current = 0;
    if (desktop && desktop->format == 32 && xcb_get_property_value_length(desktop.get()) >= 4)
        current = *static_cast<const std::uint32_t*>(xcb_get_property_value(desktop.get()));
    const auto count = static_cast<std::uint32_t>(xcb_get_property_value_length(areas.get())) / 4;
    // Some window managers publish a single area for all workspaces.
    if ((current + 1) * FieldsPerArea > count)
        current = 0;
    if (count < FieldsPerArea)
        return std::nullopt;
    const auto* values =
        static_cast<const std::uint32_t*>(xcb_get_property_value(areas.get())) + current * FieldsPerArea;
    const QRect area(static_cast<int>(values[0]), static_cast<int>(values[1]), static_cast<int>(values[2]),
                     static_cast<int>(values[3]));
    if (area.isEmpty())
        return std::nullopt;
    return area;
}
