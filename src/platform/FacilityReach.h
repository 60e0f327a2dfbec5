#pragma once

#include <QString>

/// How far one desktop facility reaches, as its backend knows it. The probe and the start-up lines turn
/// it into words for the session at hand.
struct FacilityReach
{
    enum class Scope
    {
        /// Through the X server: every window of an X11 session, only the X11 windows of a Wayland one.
        X11,
        /// Every window, whatever the session (a service of the desktop itself).
        AllWindows,
        /// Through an xdg-desktop-portal interface, as far as the desktop granted it.
        Portal,
        Unavailable,
    };

    Scope scope = Scope::Unavailable;
    /// What the desktop granted ("Ctrl+Alt+B") or why the facility is missing ("no XTest on this
    /// display"); empty when there is nothing to add.
    QString detail;
};
