#pragma once

#include <QDBusConnection>
#include <QDBusMessage>
#include <QObject>
#include <QVariantList>
#include <QVariantMap>
#include <functional>

/// Where the desktop portals live on the session bus.
namespace Portal {

inline const QString service = QStringLiteral("org.freedesktop.portal.Desktop");
inline const QString path = QStringLiteral("/org/freedesktop/portal/desktop");
inline const QString sessionInterface = QStringLiteral("org.freedesktop.portal.Session");

/// How a portal request ended.
struct Answer
{
    enum class Outcome
    {
        Granted,
        /// The user said no, or the desktop ended the interaction.
        Refused,
        /// The session bus has no portal service, or the service lacks the interface or method.
        Absent,
        /// Any other error of the call itself.
        Failed,
    };
    Outcome outcome = Outcome::Failed;
    QVariantMap results;
    /// The error's message when the call itself failed.
    QString error;
};

/// Calls a portal method that answers through a request object: the method returns the request's path at
/// once and the answer comes later in the request's Response signal, perhaps after a dialog. The last of
/// `arguments` is the method's options map; a handle_token is added to it, so that the answer is listened
/// for before the call is made. `done` runs once on the main thread, unless `context` is destroyed first.
void request(const QString& interface, const QString& method, QVariantList arguments, QObject* context,
             std::function<void(const Answer&)> done);

/// A new token for the last element of a request or session path, unique in this process.
QString token();

/// Ends a portal session, such as a superseded shortcut binding, without waiting for an answer.
void closeSession(const QString& sessionHandle);

/// The session handle in CreateSession's results, which some versions send as a string and others as an
/// object path.
QString sessionHandle(const QVariantMap& results);

} // namespace Portal

/// The listener behind Portal::request, alive until the answer has been delivered.
class PortalRequest final : public QObject
{
    Q_OBJECT

public:
    PortalRequest(QObject* context, std::function<void(const Portal::Answer&)> done);

    void listen(const QString& requestPath);
    void finish(const Portal::Answer& answer);

private Q_SLOTS:
    void response(uint code, const QVariantMap& results);

private:
    std::function<void(const Portal::Answer&)> m_done;
    QString m_path;
};
