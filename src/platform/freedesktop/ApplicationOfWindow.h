#pragma once

#include "platform/ApplicationIdentity.h"

#include <QString>
#include <optional>

/// What a window says about the program behind it, wherever that was read: X11 properties, or what
/// KWin or GNOME Shell report for a native Wayland window.
struct WindowNames
{
    QString ownId;       ///< the id the window gives itself: a GTK application id, a desktop file name
    QString windowClass; ///< WM_CLASS class, or a Wayland window's app id
    QString instance;    ///< WM_CLASS instance
    qint64 pid = 0;      ///< 0 when unknown
};

/// The application a window belongs to, named through the installed desktop entries; none when the
/// window names nothing at all.
std::optional<ApplicationIdentity> applicationOfWindow(const WindowNames& window);
