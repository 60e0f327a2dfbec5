#pragma once

/// Whether the user's session is a Wayland one, where this program runs through XWayland and the X11
/// ways reach only X11 windows.
bool isWaylandSession();
