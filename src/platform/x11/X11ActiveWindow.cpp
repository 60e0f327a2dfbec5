#include "X11ActiveWindow.h"

#include "platform/x11/XcbHandles.h"

bool x11WindowIsActive()
{
    xcb_connection_t* connection = qtXcbConnection();
    if (!connection)
        return false;
    const xcb_atom_t activeWindow =
        internAtoms(connection, {QByteArrayLiteral("_NET_ACTIVE_WINDOW")}).value(0);
    const auto reply = adoptReply(xcb_get_property_reply(
        connection,
        xcb_get_property(connection, 0, rootWindow(connection), activeWindow, XCB_ATOM_WINDOW, 0, 1),
        nullptr));
    if (!reply || reply->format != 32 || xcb_get_property_value_length(reply.get()) < 4)
        return false;
    return *static_cast<const xcb_window_t*>(xcb_get_property_value(reply.get())) != XCB_WINDOW_NONE;
}
