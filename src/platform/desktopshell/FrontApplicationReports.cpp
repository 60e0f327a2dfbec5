#include "FrontApplicationReports.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QLoggingCategory>
#include <unistd.h>

namespace {

Q_LOGGING_CATEGORY(frontLog, "vantril.front", QtWarningMsg)

bool isKnownSource(const QString& source)
{
    return source == u"kwin" || source == u"gnome-shell";
}

} // namespace

FrontApplicationReports::FrontApplicationReports(Activated activated, std::function<void()> ended)
    : m_activated(std::move(activated))
    , m_ended(std::move(ended))
{
    m_watcher.setWatchMode(QDBusServiceWatcher::WatchForUnregistration);
    connect(&m_watcher, &QDBusServiceWatcher::serviceUnregistered, this,
            &FrontApplicationReports::senderGone);
}

FrontApplicationReports::~FrontApplicationReports()
{
    if (!m_started)
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.unregisterObject(objectPath());
    bus.unregisterService(serviceName());
}

QString FrontApplicationReports::serviceName()
{
    return QStringLiteral("io.github.vantril.Vantril");
}

QString FrontApplicationReports::objectPath()
{
    return QStringLiteral("/FrontApplication");
}

bool FrontApplicationReports::start()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (m_started || !bus.isConnected())
        return m_started;
    if (!bus.registerObject(objectPath(), this, QDBusConnection::ExportAllSlots))
        return false;
    // A second bar (another configuration folder) leaves the name to the first: the desktop shell
    // reports to one name only.
    if (!bus.registerService(serviceName())) {
        qCInfo(frontLog) << "another program holds" << serviceName() << "; following X11 windows only";
        bus.unregisterObject(objectPath());
        return false;
    }
    m_watcher.setConnection(bus);
    m_started = true;
    return true;
}

void FrontApplicationReports::WindowActivated(const QString& source, const QString& appId,
                                              const QString& windowClass, const QString& instance,
                                              const QString& pid)
{
    if (!isKnownSource(source))
        return;
    if (calledFromDBus() && message().service() != m_sender) {
        m_sender = message().service();
        m_watcher.setWatchedServices({m_sender});
    }
    m_source = source;

    WindowNames window;
    // GNOME Shell names applications by their desktop file; the entries are looked up without it.
    window.ownId = appId.endsWith(u".desktop") ? appId.chopped(8) : appId;
    window.windowClass = windowClass;
    window.instance = instance;
    window.pid = pid.toLongLong();
    // The bar's own editor and dialogs are no application the user works in.
    if (window.pid == ::getpid())
        return;
    m_activated(window);
}

void FrontApplicationReports::ReportsEnded(const QString& source)
{
    if (source == m_source && (!calledFromDBus() || message().service() == m_sender))
        senderGone();
}

void FrontApplicationReports::senderGone()
{
    if (m_source.isEmpty())
        return;
    m_watcher.setWatchedServices({});
    m_sender.clear();
    m_source.clear();
    m_ended();
}
