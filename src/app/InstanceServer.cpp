#include "InstanceServer.h"

#include "platform/Log.h"

#include <QLocalSocket>
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
    connect(&m_server, &QLocalServer::newConnection, this, [this] {
        while (QLocalSocket* socket = m_server.nextPendingConnection()) {
            connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            auto* silence = new QTimer(socket);
            silence->setSingleShot(true);
            connect(silence, &QTimer::timeout, socket, &QLocalSocket::abort);
            silence->start(requestWithinMs);
            // One request per connection: once it is read, nothing more is.
            connect(socket, &QLocalSocket::readyRead, this, [this, socket, silence] {
                if (!serve(socket))
                    return;
                socket->disconnect(this);
                delete silence;
            });
        }
    });
}

void InstanceServer::listen(const QString& path)
{
    if (path.isEmpty()) {
        Log::line(QStringLiteral("vantril: no private folder for the command socket (XDG_RUNTIME_DIR and the "
                                 "temporary folder); commands cannot reach this bar"));
        return;
    }
    QLocalServer::removeServer(path);
    if (!m_server.listen(path)) {
        Log::line(QStringLiteral("vantril: commands cannot reach this bar: %1").arg(m_server.errorString()));
    }
}

void InstanceServer::close()
{
    m_server.close();
}

bool InstanceServer::serve(QLocalSocket* socket)
{
    if (!socket->canReadLine()) {
        if (socket->bytesAvailable() <= InstanceProtocol::maxLineBytes)
            return false; // more to come
        answer(socket, {1, InstanceProtocol::decodeRequest(socket->readAll()).error});
        return true;
    }
    const auto request =
        InstanceProtocol::decodeRequest(socket->readLine(InstanceProtocol::maxLineBytes + 1));
    if (!request.arguments) {
        answer(socket, {1, request.error});
        return true;
    }
    const BarCommand::Parsed parsed = BarCommand::parse(*request.arguments);
    if (!parsed.command) {
        answer(socket, {1, parsed.error});
        return true;
    }
    const InstanceProtocol::Reply reply = m_perform(*parsed.command);
    if (parsed.command->kind == BarCommand::Kind::Quit)
        m_waiting.append({socket, reply});
    else
        answer(socket, reply);
    return true;
}

void InstanceServer::answer(QLocalSocket* socket, const InstanceProtocol::Reply& reply)
{
    socket->write(InstanceProtocol::encodeReply(reply));
    socket->disconnectFromServer(); // after what was written has gone
}

void InstanceServer::answerWaiting()
{
    // The event loop has ended: each answer is sent here and now.
    for (const auto& [socket, reply] : std::as_const(m_waiting)) {
        if (!socket)
            continue;
        socket->write(InstanceProtocol::encodeReply(reply));
        socket->waitForBytesWritten(sendWithinMs);
        socket->disconnectFromServer();
    }
    m_waiting.clear();
}
