#pragma once

#include "config/AppContext.h"

#include <functional>
#include <optional>

/// What tells the program which application is in front.
enum class FrontApplicationSource
{
    X11Windows,          ///< the active X11 window; in a Wayland session native windows go unseen
    KWinScript,          ///< a script the program loads into KWin, which sees every window
    GnomeShellExtension, ///< the program's GNOME Shell extension, which sees every window
};

/// For the probe: which windows the application in front is known for, through what, and in a Wayland
/// session without a desktop-shell source, what the user can do about it.
QString describe(FrontApplicationSource source, bool waylandSession);

/// The application the user works in. Only ordinary application windows count: not this program's own
/// windows, not docks, panels, menus or notifications, and not the moment between two windows when
/// nothing is active.
class FrontApplication
{
public:
    FrontApplication() = default;
    virtual ~FrontApplication() = default;
    FrontApplication(const FrontApplication&) = delete;
    FrontApplication& operator=(const FrontApplication&) = delete;

    /// The application in front now, when it counts.
    virtual std::optional<ContextApp> current() = 0;
    /// Starts reporting every activation of an application that counts.
    virtual void watch(std::function<void(const ContextApp&)> activated) = 0;
    /// What feeds the two above now, or would once watched.
    virtual FrontApplicationSource source() = 0;
};
