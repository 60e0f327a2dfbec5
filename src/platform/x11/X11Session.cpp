#include "platform/Platform.h"

#include <xcb/xcb.h>

std::optional<QString> desktopUnavailableReason()
{
    const QString display = qEnvironmentVariable("DISPLAY");
    if (display.isEmpty())
        return QStringLiteral("no X display: DISPLAY is not set (Vantril needs an X11 or XWayland session)");
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool failed = xcb_connection_has_error(connection) != 0;
    xcb_disconnect(connection);
    if (failed)
        return QStringLiteral("cannot open the X display \"%1\"").arg(display);
    return std::nullopt;
}
