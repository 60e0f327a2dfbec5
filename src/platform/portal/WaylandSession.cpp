#include "WaylandSession.h"

#include <QString>

bool isWaylandSession()
{
    // The program itself always runs on xcb, so Qt's platform name cannot tell; the session's variables
    // can.
    return !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY") ||
           qEnvironmentVariable("XDG_SESSION_TYPE") == QStringLiteral("wayland");
}
