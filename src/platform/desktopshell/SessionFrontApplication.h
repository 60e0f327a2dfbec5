#pragma once

#include "platform/FrontApplication.h"
#include "platform/desktopshell/FrontApplicationReports.h"
#include "platform/desktopshell/KWinFrontScript.h"

/// The application in front for the whole session. An X11 server sees only its own windows: under
/// XWayland a native Wayland window in front leaves the X11 side with nothing active. KWin (through a
/// script the bar loads into it) and GNOME Shell (through the program's extension, once the user has
/// enabled it) see every window and report each one to the bar's object on the session bus.
///
/// While such reports come, they alone name the application in front, X11 windows included, so that
/// two sources never argue about one window. When their sender leaves the bus or says it stops (the
/// extension was switched off), the X11 windows are followed again.
class SessionFrontApplication final : public FrontApplication
{
public:
    /// `windows` follows the X11 windows. In a Wayland session the KWin script found at `kwinScript` is
    /// loaded when KWin offers scripting; an X11 session needs no script, X11 sees every window there.
    SessionFrontApplication(FrontApplication& windows, bool waylandSession, QString kwinScript);

    std::optional<ApplicationIdentity> current() override;
    void watch(std::function<void(const ApplicationIdentity&)> activated) override;
    FacilityReach reach() override;

private:
    void reported(const WindowNames& window);
    void reportsEnded();

    FrontApplication& m_windows;
    bool m_waylandSession;
    QString m_kwinScript;
    std::function<void(const ApplicationIdentity&)> m_activated;
    bool m_watching = false;
    std::optional<ApplicationIdentity> m_reported;
    FrontApplicationReports m_reports;
    KWinFrontScript m_kwin;
};
