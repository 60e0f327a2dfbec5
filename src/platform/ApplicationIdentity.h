#pragma once

#include <QString>

/// Everything a window tells about the application it belongs to. The bar's per-application sets are
/// chosen from these names, so every one of them is kept rather than a single guess.
struct ApplicationIdentity
{
    QString id;   ///< the application id: the desktop entry, else the window's class
    QString name; ///< shown in menus
    bool isTerminal = false;
    QString ownId;        ///< the id the window gives itself (_GTK_APPLICATION_ID, _KDE_NET_WM_DESKTOP_FILE)
    QString windowClass;  ///< WM_CLASS class
    QString instance;     ///< WM_CLASS instance
    QString desktopEntry; ///< the installed desktop entry found for the window, without ".desktop"

    bool operator==(const ApplicationIdentity&) const = default;
};

/// What a window says about the program behind it, wherever that was read: X11 properties, or what
/// KWin or GNOME Shell report for a native Wayland window.
struct WindowNames
{
    QString ownId;       ///< the id the window gives itself: a GTK application id, a desktop file name
    QString windowClass; ///< WM_CLASS class, or a Wayland window's app id
    QString instance;    ///< WM_CLASS instance
    qint64 pid = 0;      ///< 0 when unknown
};
