#include "SessionFrontApplication.h"

#include "platform/desktopshell/GnomeShellExtension.h"
#include "platform/freedesktop/ApplicationOfWindow.h"

SessionFrontApplication::SessionFrontApplication(FrontApplication& windows, bool waylandSession,
                                                 QString kwinScript)
    : m_windows(windows)
    , m_waylandSession(waylandSession)
    , m_kwinScript(std::move(kwinScript))
    , m_reports([this](const WindowNames& window) { reported(window); }, [this] { reportsEnded(); })
{}

std::optional<ApplicationIdentity> SessionFrontApplication::current()
{
    return m_reports.liveSource().isEmpty() ? m_windows.current() : m_reported;
}

void SessionFrontApplication::watch(std::function<void(const ApplicationIdentity&)> activated)
{
    m_activated = std::move(activated);
    m_windows.watch([this](const ApplicationIdentity& app) {
        if (m_reports.liveSource().isEmpty() && m_activated)
            m_activated(app);
    });
    if (m_watching)
        return;
    m_watching = true;
    // Only the bar that answers to the name may load the script: the script reports to that name.
    if (m_reports.start() && m_waylandSession && !m_kwinScript.isEmpty() && KWinFrontScript::isOffered())
        m_kwin.load(m_kwinScript);
}

FacilityReach SessionFrontApplication::reach()
{
    const FacilityReach kwin{FacilityReach::Scope::AllWindows, QStringLiteral("reported by a KWin script")};
    const FacilityReach gnome{
        FacilityReach::Scope::AllWindows,
        QStringLiteral("reported by the GNOME Shell extension %1").arg(GnomeShellExtension::uuid())};
    const QString live = m_reports.liveSource();
    if (live == u"gnome-shell")
        return gnome;
    if (live == u"kwin" || m_kwin.isLoaded())
        return kwin;
    // Not watching (the probe): what watching would find.
    if (!m_watching && m_waylandSession && !m_kwinScript.isEmpty() && KWinFrontScript::isOffered())
        return kwin;
    if (GnomeShellExtension::isActive())
        return gnome;
    return m_windows.reach();
}

void SessionFrontApplication::reported(const WindowNames& window)
{
    const auto app = applicationOfWindow(window);
    if (!app)
        return;
    m_reported = app;
    if (m_activated)
        m_activated(*app);
}

void SessionFrontApplication::reportsEnded()
{
    m_reported.reset();
    if (const auto app = m_windows.current(); app && m_activated)
        m_activated(*app);
}
