#pragma once

#include <QRect>
#include <optional>

/// The part of the desktop not reserved by panels, as the window manager publishes it in _NET_WORKAREA
/// for the current workspace: one rectangle spanning every monitor. Nothing when the program does not
/// run on X11 or no window manager publishes it.
std::optional<QRect> currentWorkArea();
