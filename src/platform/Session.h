#pragma once

#include <QProcessEnvironment>
#include <QString>

/// The kind of desktop session the program was started in, as its environment says. It only explains
/// to the user how far a facility reaches: what the program does is decided from Qt's platform.
struct Session
{
    enum class Type
    {
        X11,
        Wayland,
        Unknown,
    };
    enum class Desktop
    {
        Gnome,
        Plasma,
        Xfce,
        Mate,
        Cinnamon,
        Lxqt,
        Other,
    };

    Type type = Type::Unknown;
    Desktop desktop = Desktop::Other;
    /// The desktop's name as people know it ("GNOME", "KDE Plasma", or the first sound entry of
    /// XDG_CURRENT_DESKTOP as given, such as "i3"); empty when the environment names none.
    QString desktopName;

    static Session detect(const QProcessEnvironment& environment);
    /// "Wayland (GNOME)", "X11", "unknown".
    QString describe() const;
};

/// Whether this process runs in a Wayland session (through XWayland), where the X11 ways reach only X11
/// windows; read from the process's environment.
bool isWaylandSession();
