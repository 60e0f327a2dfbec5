#include "PortalRequest.h"

#include <QCoreApplication>
#include <QDBusError>
#include <QDBusObjectPath>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString requestInterface = QStringLiteral("org.freedesktop.portal.Request");

/// The path the portal gives a request with this token: its sender's unique name, without the colon and
/// with dots as underscores, and the token.
QString requestPath(const QDBusConnection& bus, const QString& token)
{
    QString sender = bus.baseService().mid(1);
    sender.replace(QLatin1Char('.'), QLatin1Char('_'));
    return Portal::path + QStringLiteral("/request/") + sender + QLatin1Char('/') + token;
}

bool isAbsence(const QDBusError& error)
{
    switch (error.type()) {
    case QDBusError::ServiceUnknown:
    case QDBusError::UnknownInterface:
    case QDBusError::UnknownMethod:
    case QDBusError::UnknownObject:
        return true;
    default:
        return false;
    }
}

} // namespace

namespace Portal {

QString token()
{
    static int counter = 0;
    return QStringLiteral("vantril%1").arg(++counter);
}

void request(const QString& interface, const QString& method, QVariantList arguments, QObject* context,
             std::function<void(const Answer&)> done)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto* pending = new PortalRequest(context, std::move(done));
    const QString handleToken = token();
    QVariantMap options = arguments.isEmpty() ? QVariantMap() : arguments.takeLast().toMap();
    options.insert(QStringLiteral("handle_token"), handleToken);
    arguments.append(options);
    const QString expected = requestPath(bus, handleToken);
    pending->listen(expected);

    QDBusMessage call = QDBusMessage::createMethodCall(service, path, interface, method);
    call.setArguments(arguments);
    auto* watcher = new QDBusPendingCallWatcher(bus.asyncCall(call), pending);
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, pending,
                     [pending, expected](QDBusPendingCallWatcher* finished) {
                         finished->deleteLater();
                         const QDBusPendingReply<QDBusObjectPath> reply = *finished;
                         if (reply.isError()) {
                             const Answer::Outcome outcome =
                                 isAbsence(reply.error()) ? Answer::Outcome::Absent : Answer::Outcome::Failed;
                             pending->finish(Answer{outcome, {}, reply.error().message()});
                             return;
                         }
                         // Portals older than handle_token choose the path themselves; the answer can then
                         // only be caught if it comes after this reply.
                         if (reply.value().path() != expected)
                             pending->listen(reply.value().path());
                     });
}

void closeSession(const QString& sessionHandle)
{
    // Also called on the way out, when the application (and with it the bus connection) may be gone.
    if (sessionHandle.isEmpty() || !QCoreApplication::instance())
        return;
    QDBusConnection::sessionBus().asyncCall(
        QDBusMessage::createMethodCall(service, sessionHandle, sessionInterface, QStringLiteral("Close")));
}

QString sessionHandle(const QVariantMap& results)
{
    const QVariant handle = results.value(QStringLiteral("session_handle"));
    if (handle.metaType() == QMetaType::fromType<QDBusObjectPath>())
        return handle.value<QDBusObjectPath>().path();
    return handle.toString();
}

} // namespace Portal

PortalRequest::PortalRequest(QObject* context, std::function<void(const Portal::Answer&)> done)
    : QObject(context)
    , m_done(std::move(done))
{}

void PortalRequest::listen(const QString& requestPath)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!m_path.isEmpty())
        bus.disconnect(Portal::service, m_path, requestInterface, QStringLiteral("Response"), this,
                       SLOT(response(uint, QVariantMap)));
    m_path = requestPath;
    bus.connect(Portal::service, m_path, requestInterface, QStringLiteral("Response"), this,
                SLOT(response(uint, QVariantMap)));
}

void PortalRequest::finish(const Portal::Answer& answer)
{
    if (!m_done)
        return;
    const auto done = std::exchange(m_done, {});
    QDBusConnection::sessionBus().disconnect(Portal::service, m_path, requestInterface,
                                             QStringLiteral("Response"), this,
                                             SLOT(response(uint, QVariantMap)));
    deleteLater();
    done(answer);
}

void PortalRequest::response(uint code, const QVariantMap& results)
{
    // 0 is success, 1 the user cancelled, 2 the interaction ended some other way.
    finish(Portal::Answer{
        code == 0 ? Portal::Answer::Outcome::Granted : Portal::Answer::Outcome::Refused, results, {}});
}
