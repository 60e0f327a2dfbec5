#include "InstanceServer.h"

#include "platform/Log.h"

#include <QTimer>

namespace {

/// A copy of the program sends its request as soon as it is connected; anything that stays silent this
/// long is dropped, so that it cannot hold a connection open for good.
constexpr int requestWithinMs = 5000;
constexpr int sendWithinMs = 1000;

} // namespace

InstanceServer::InstanceServer(Perform perform, QObject* parent)
    : QObject(parent)
    , m_perform(std::move(perform))
{
    connect(&m_server, &LocalServer::connected, this, [this](LocalConnection* connection) {
        auto* silence = new QTimer(connection);
        silence->setSingleShot(true);
        connect(silence, &QTimer::timeout, connection, &LocalConnection::abort);
        silence->start(requestWithinMs);
        // One request per connection: once it is read, nothing more is.
        connect(connection, &LocalConnection::readable, this, [this, connection, silence] {
            if (!serve(connection))
                return;
            connection->disconnect(this);
            delete silence;
        });
    });
}

void InstanceServer::listen(const QString& path)
{
    if (path.isEmpty()) {
        Log::line(QStringLiteral("vantril: no private folder for the command socket (XDG_RUNTIME_DIR and the "
                                 "temporary folder); commands cannot reach this bar"));
        return;
    }
    if (const auto error = m_server.listen(path))
        Log::line(QStringLiteral("vantril: commands cannot reach this bar: %1").arg(*error));
}

void InstanceServer::close()
{
    m_server.close();
}

bool InstanceServer::serve(LocalConnection* connection)
{
    const QByteArray& received = connection->received();
    const qsizetype end = received.indexOf('\n');
    if (end < 0 && received.size() <= InstanceProtocol::maxLineBytes)
        return false; // more to come
    const auto answer = [connection](const InstanceProtocol::Reply& reply) {
        connection->sendAndClose(InstanceProtocol::encodeReply(reply));
    };
    const auto request = InstanceProtocol::decodeRequest(end < 0 ? received : received.left(end + 1));
    if (!request.arguments) {
        answer({1, request.error});
        return true;
    }
    const BarCommand::Parsed parsed = BarCommand::parse(*request.arguments);
    if (!parsed.command) {
        answer({1, parsed.error});
        return true;
    }
    const InstanceProtocol::Reply reply = m_perform(*parsed.command);
    if (parsed.command->kind == BarCommand::Kind::Quit) {
        connection->stopReading();
        m_waiting.append({connection, reply});
    } else {
        answer(reply);
    }
    return true;
}

void InstanceServer::answerWaiting()
{
    // The event loop has ended: each answer is sent here and now.
    for (const auto& [connection, reply] : std::as_const(m_waiting)) {
        if (connection)
            connection->sendAndCloseNow(InstanceProtocol::encodeReply(reply), sendWithinMs);
    }
    m_waiting.clear();
}
