#include "PortalInputSynthesis.h"

#include "platform/Beeper.h"
#include "platform/Log.h"
#include "platform/portal/PortalKeys.h"
#include "platform/portal/PortalRequest.h"
#include "platform/portal/PortalSettings.h"

#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <optional>

namespace {

const QString interfaceName = QStringLiteral("org.freedesktop.portal.RemoteDesktop");
constexpr uint keyboardDevice = 1;
// Until the user withdraws it in the desktop's settings, so that the consent dialog comes once.
constexpr uint persistUntilRevoked = 2;

QString reasonFor(const Portal::Answer& answer)
{
    if (answer.outcome == Portal::Answer::Outcome::Absent)
        return QStringLiteral("the desktop offers no remote-desktop portal");
    if (answer.outcome == Portal::Answer::Outcome::Refused)
        return QStringLiteral("keyboard access through the remote-desktop portal was refused");
    return QStringLiteral("the remote-desktop portal failed: ") + answer.error;
}

PortalStatus::State stateFor(const Portal::Answer& answer)
{
    return answer.outcome == Portal::Answer::Outcome::Absent ? PortalStatus::State::Absent
                                                             : PortalStatus::State::Refused;
}

} // namespace

PortalInputSynthesis::PortalInputSynthesis(InputSynthesis& fallback, Beeper& beeper,
                                           std::function<bool()> x11WindowInFront, bool waylandSession)
    : m_fallback(fallback)
    , m_beeper(beeper)
    , m_x11WindowInFront(std::move(x11WindowInFront))
    , m_wayland(waylandSession)
{
    if (m_wayland)
        m_status.state = PortalStatus::State::Waiting;
}

PortalInputSynthesis::~PortalInputSynthesis()
{
    Portal::closeSession(m_session);
}

bool PortalInputSynthesis::isTrusted()
{
    if (m_wayland &&
        (m_status.state == PortalStatus::State::Waiting || m_status.state == PortalStatus::State::InUse))
        return true;
    return m_fallback.isTrusted();
}

void PortalInputSynthesis::post(const KeyStroke& combo)
{
    switch (m_status.state) {
    case PortalStatus::State::NotNeeded:
        m_fallback.post(combo);
        return;
    case PortalStatus::State::InUse:
        type(combo);
        return;
    case PortalStatus::State::Absent:
    case PortalStatus::State::Refused:
        fallBack(combo);
        return;
    case PortalStatus::State::Waiting:
        m_queued.append({combo, QDeadlineTimer(startGraceMs)});
        if (!m_starting)
            start();
        return;
    }
}

void PortalInputSynthesis::start()
{
    m_starting = true;
    const QVariantMap options = {{QStringLiteral("session_handle_token"), Portal::token()}};
    Portal::request(interfaceName, QStringLiteral("CreateSession"), {options}, this,
                    [this](const Portal::Answer& answer) {
                        m_session = Portal::sessionHandle(answer.results);
                        if (answer.outcome != Portal::Answer::Outcome::Granted || m_session.isEmpty())
                            unavailable(stateFor(answer), reasonFor(answer));
                        else
                            selectDevices();
                    });
}

void PortalInputSynthesis::selectDevices()
{
    QVariantMap options = {{QStringLiteral("types"), keyboardDevice},
                           {QStringLiteral("persist_mode"), persistUntilRevoked}};
    const QString token = PortalSettings::restoreToken();
    if (!token.isEmpty())
        options.insert(QStringLiteral("restore_token"), token);
    Portal::request(interfaceName, QStringLiteral("SelectDevices"),
                    {QVariant::fromValue(QDBusObjectPath(m_session)), options}, this,
                    [this](const Portal::Answer& answer) {
                        if (answer.outcome != Portal::Answer::Outcome::Granted)
                            unavailable(stateFor(answer), reasonFor(answer));
                        else
                            startSession();
                    });
}

void PortalInputSynthesis::startSession()
{
    Portal::request(interfaceName, QStringLiteral("Start"),
                    {QVariant::fromValue(QDBusObjectPath(m_session)), QString(), QVariantMap()}, this,
                    [this](const Portal::Answer& answer) {
                        // A token is good for one start only, whatever the answer.
                        PortalSettings::setRestoreToken(
                            answer.results.value(QStringLiteral("restore_token")).toString());
                        if (answer.outcome != Portal::Answer::Outcome::Granted)
                            unavailable(stateFor(answer), reasonFor(answer));
                        else
                            started(answer.results);
                    });
}

void PortalInputSynthesis::started(const QVariantMap& results)
{
    const QVariant devices = results.value(QStringLiteral("devices"));
    if (devices.isValid() && !(devices.toUInt() & keyboardDevice)) {
        unavailable(PortalStatus::State::Refused, QStringLiteral("the desktop granted no keyboard"));
        return;
    }
    m_starting = false;
    m_status = {PortalStatus::State::InUse, {}};
    QDBusConnection::sessionBus().connect(Portal::service, m_session, Portal::sessionInterface,
                                          QStringLiteral("Closed"), this, SLOT(sessionClosed()));
    for (const Queued& queued : std::exchange(m_queued, {})) {
        if (queued.deadline.hasExpired())
            m_beeper.beep();
        else
            type(queued.combo);
    }
}

void PortalInputSynthesis::unavailable(PortalStatus::State state, const QString& reason)
{
    m_starting = false;
    forgetSession();
    m_status = {state, reason};
    for (const Queued& queued : std::exchange(m_queued, {})) {
        if (queued.deadline.hasExpired())
            m_beeper.beep();
        else
            fallBack(queued.combo);
    }
}

void PortalInputSynthesis::type(const KeyStroke& combo)
{
    const QList<PortalKeys::KeyEvent> events = PortalKeys::events(combo);
    if (events.isEmpty())
        return;
    QDBusConnection bus = QDBusConnection::sessionBus();
    std::optional<QDBusPendingCall> last;
    // Sent one after another on one connection, so the desktop receives them in this order.
    for (const PortalKeys::KeyEvent& event : events) {
        QDBusMessage call = QDBusMessage::createMethodCall(Portal::service, Portal::path, interfaceName,
                                                           QStringLiteral("NotifyKeyboardKeysym"));
        call.setArguments({QVariant::fromValue(QDBusObjectPath(m_session)), QVariantMap(),
                           static_cast<int>(event.keysym), static_cast<uint>(event.pressed ? 1 : 0)});
        last = bus.asyncCall(call);
    }
    // A session the desktop has dropped without saying so is started afresh on the next combination.
    auto* watcher = new QDBusPendingCallWatcher(*last, this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher* finished) {
        finished->deleteLater();
        if (finished->isError() && m_status.state == PortalStatus::State::InUse)
            sessionClosed();
    });
}

void PortalInputSynthesis::fallBack(const KeyStroke& combo)
{
    if (m_x11WindowInFront && m_x11WindowInFront()) {
        m_fallback.post(combo);
        return;
    }
    m_beeper.beep();
    if (!std::exchange(m_told, true))
        Log::line(QStringLiteral("Key and paste chips cannot type into this window: %1; they reach X11 "
                                 "windows only")
                      .arg(m_status.detail));
}

void PortalInputSynthesis::sessionClosed()
{
    forgetSession();
    m_status = {PortalStatus::State::Waiting, {}};
}

void PortalInputSynthesis::forgetSession()
{
    const QString session = std::exchange(m_session, QString());
    if (session.isEmpty())
        return;
    QDBusConnection::sessionBus().disconnect(Portal::service, session, Portal::sessionInterface,
                                             QStringLiteral("Closed"), this, SLOT(sessionClosed()));
    Portal::closeSession(session);
}

FacilityReach PortalInputSynthesis::reach()
{
    if (m_status.state == PortalStatus::State::InUse)
        return {FacilityReach::Scope::Portal, m_status.detail};
    return m_fallback.reach();
}
