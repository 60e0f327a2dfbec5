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
