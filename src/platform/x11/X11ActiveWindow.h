#pragma once

/// Whether an X11 window is the active one. Under XWayland the desktop clears _NET_ACTIVE_WINDOW while a
/// native Wayland window has the focus, which is when X11 input reaches nothing.
bool x11WindowIsActive();
