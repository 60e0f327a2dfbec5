#include "PortalHotkeyGrabber.h"

#include "platform/portal/PortalKeys.h"
#include "platform/portal/PortalRequest.h"
#include "platform/portal/PortalSettings.h"
#include "platform/portal/PortalShortcut.h"

#include <QDBusObjectPath>

namespace {

const QString interfaceName = QStringLiteral("org.freedesktop.portal.GlobalShortcuts");

PortalStatus::State stateFor(const Portal::Answer& answer)
{
    return answer.outcome == Portal::Answer::Outcome::Absent ? PortalStatus::State::Absent
                                                             : PortalStatus::State::Refused;
}

QString reasonFor(const Portal::Answer& answer)
{
    if (answer.outcome == Portal::Answer::Outcome::Absent)
        return QStringLiteral("the desktop offers no global-shortcuts portal");
    if (answer.outcome == Portal::Answer::Outcome::Refused)
        return QStringLiteral("the desktop or the user declined the shortcut");
    return QStringLiteral("the global-shortcuts portal failed: ") + answer.error;
}

} // namespace

PortalHotkeyGrabber::PortalHotkeyGrabber(HotkeyGrabber& fallback, bool waylandSession)
    : m_fallback(fallback)
    , m_wayland(waylandSession)
{
    if (m_wayland)
        m_status.state = PortalStatus::State::Waiting;
}

PortalHotkeyGrabber::~PortalHotkeyGrabber()
{
    closeSession();
}

void PortalHotkeyGrabber::setHandler(std::function<void()> pressed)
{
    m_pressed = pressed;
    m_fallback.setHandler(std::move(pressed));
}

bool PortalHotkeyGrabber::grab(const KeyStroke& combo)
{
    closeSession();
    // X11 windows get the combination at once, before the desktop has answered (it may first ask the user).
    const bool held = m_fallback.grab(combo);
    if (m_wayland && m_status.state != PortalStatus::State::Absent)
        bind(PortalKeys::trigger(combo));
    return held;
}

void PortalHotkeyGrabber::release()
{
    closeSession();
    m_fallback.release();
}

void PortalHotkeyGrabber::bind(const QString& trigger)
{
    const quint64 generation = ++m_generation;
    m_status = {PortalStatus::State::Waiting, {}};
    listen();
    const QVariantMap options = {{QStringLiteral("session_handle_token"), Portal::token()}};
    Portal::request(interfaceName, QStringLiteral("CreateSession"), {options}, this,
                    [this, generation, trigger](const Portal::Answer& answer) {
                        const QString session = Portal::sessionHandle(answer.results);
                        if (generation != m_generation)
                            Portal::closeSession(session);
                        else if (answer.outcome != Portal::Answer::Outcome::Granted || session.isEmpty())
                            giveUp(stateFor(answer), reasonFor(answer));
                        else
                            bindShortcut(session, trigger, generation);
                    });
}

void PortalHotkeyGrabber::bindShortcut(const QString& session, const QString& trigger, quint64 generation)
{
    // A session binds its shortcuts once; a changed combination gets a session of its own.
    m_session = session;
    QVariantMap properties = {{QStringLiteral("description"), description()}};
    if (!trigger.isEmpty())
        properties.insert(QStringLiteral("preferred_trigger"), trigger);
    PortalShortcut::registerTypes();
    const PortalShortcutList shortcuts = {{shortcutId(), properties}};
    Portal::request(interfaceName, QStringLiteral("BindShortcuts"),
                    {QVariant::fromValue(QDBusObjectPath(session)), QVariant::fromValue(shortcuts), QString(),
                     QVariantMap()},
                    this, [this, generation](const Portal::Answer& answer) {
                        if (generation != m_generation)
                            return;
                        if (answer.outcome == Portal::Answer::Outcome::Granted)
                            bound(answer.results);
                        else
                            giveUp(stateFor(answer), reasonFor(answer));
                    });
}

void PortalHotkeyGrabber::bound(const QVariantMap& results)
{
    const PortalShortcutList shortcuts = PortalShortcut::listFrom(results.value(QStringLiteral("shortcuts")));
    for (const PortalShortcut& shortcut : shortcuts) {
        if (shortcut.id != shortcutId())
            continue;
        // The desktop holds the key now, perhaps a different one the user chose; an X11 grab of the
        // configured one beside it would answer a combination the desktop's settings do not show.
        m_fallback.release();
        const QString assigned = shortcut.properties.value(QStringLiteral("trigger_description")).toString();
        m_status = {PortalStatus::State::InUse, assigned};
        PortalSettings::setAssignedTrigger(assigned);
        return;
    }
    giveUp(PortalStatus::State::Refused, QStringLiteral("the desktop bound no key"));
}

void PortalHotkeyGrabber::giveUp(PortalStatus::State state, const QString& reason)
{
    // The X11 grab taken in grab() stays, for X11 windows.
    closeSession();
    m_status = {state, reason};
    PortalSettings::setAssignedTrigger(QString());
}

void PortalHotkeyGrabber::closeSession()
{
    ++m_generation;
    Portal::closeSession(std::exchange(m_session, QString()));
}

void PortalHotkeyGrabber::listen()
{
    if (m_listening)
        return;
    m_listening = true;
    QDBusConnection bus = QDBusConnection::sessionBus();
    bus.connect(Portal::service, Portal::path, interfaceName, QStringLiteral("Activated"), this,
                SLOT(activated(QDBusMessage)));
    bus.connect(Portal::service, Portal::path, interfaceName, QStringLiteral("ShortcutsChanged"), this,
                SLOT(shortcutsChanged(QDBusMessage)));
}

void PortalHotkeyGrabber::activated(const QDBusMessage& signal)
{
    const QVariantList arguments = signal.arguments();
    if (arguments.size() < 2 || m_session.isEmpty() || m_status.state != PortalStatus::State::InUse)
        return;
    if (arguments.at(0).value<QDBusObjectPath>().path() == m_session &&
        arguments.at(1).toString() == shortcutId() && m_pressed)
        m_pressed();
}

void PortalHotkeyGrabber::shortcutsChanged(const QDBusMessage& signal)
{
    // The user changed the key in the desktop's settings.
    const QVariantList arguments = signal.arguments();
    if (arguments.size() < 2 || arguments.at(0).value<QDBusObjectPath>().path() != m_session ||
        m_session.isEmpty())
        return;
    for (const PortalShortcut& shortcut : PortalShortcut::listFrom(arguments.at(1))) {
        if (shortcut.id == shortcutId()) {
            m_status.detail = shortcut.properties.value(QStringLiteral("trigger_description")).toString();
            PortalSettings::setAssignedTrigger(m_status.detail);
        }
    }
}

FacilityReach PortalHotkeyGrabber::reach()
{
    if (m_status.state == PortalStatus::State::InUse)
        return {FacilityReach::Scope::Portal, m_status.detail};
    // The probe runs beside the bar and binds nothing itself: what the desktop assigned to the bar was kept.
    if (m_wayland) {
        if (const QString assigned = PortalSettings::assignedTrigger(); !assigned.isEmpty())
            return {FacilityReach::Scope::Portal, assigned};
    }
    return m_fallback.reach();
}
