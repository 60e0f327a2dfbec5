#pragma once

#include "platform/ApplicationIdentity.h"

#include <QDBusContext>
#include <QDBusServiceWatcher>
#include <QObject>
#include <functional>

/// The program's own object on the session bus, which KWin's script and the GNOME Shell extension call
/// whenever a window comes to the front:
///
///     service   io.github.vantril.Vantril
///     path      /FrontApplication
///     interface io.github.vantril.FrontApplication
///     WindowActivated(s source, s appId, s windowClass, s instance, s pid)
///     ReportsEnded(s source)
///
/// `source` is "kwin" or "gnome-shell". Every argument is a string: KWin's callDBus turns a JavaScript
/// number into whichever numeric type it likes, and a call of another signature finds no method at all.
/// The callers filter out docks, panels, menus and notifications themselves, since only they know a
/// Wayland window's type.
class FrontApplicationReports : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "io.github.vantril.FrontApplication")

public:
    using Activated = std::function<void(const WindowNames&)>;

    FrontApplicationReports(Activated activated, std::function<void()> ended);
    ~FrontApplicationReports() override;

    /// Exports the object and claims the name; false when another bar holds the name already.
    bool start();
    /// "kwin" or "gnome-shell" while the sender of the last report is still on the bus, else empty.
    QString liveSource() const { return m_source; }

    static QString serviceName();
    static QString objectPath();

public Q_SLOTS:
    void WindowActivated(const QString& source, const QString& appId, const QString& windowClass,
                         const QString& instance, const QString& pid);
    void ReportsEnded(const QString& source);

private:
    void senderGone();

    Activated m_activated;
    std::function<void()> m_ended;
    QDBusServiceWatcher m_watcher;
    QString m_sender; ///< the unique bus name of the reporting desktop shell
    QString m_source;
    bool m_started = false;
};
