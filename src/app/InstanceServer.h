#pragma once

#include "app/BarCommand.h"
#include "app/InstanceProtocol.h"
#include "app/LocalSocket.h"

#include <QObject>
#include <QPointer>
#include <functional>

/// The running bar's end of the local socket: it takes the command line of each copy started meanwhile,
/// has it carried out, and answers with the status that copy is to end with.
class InstanceServer : public QObject
{
    Q_OBJECT

public:
    using Perform = std::function<InstanceProtocol::Reply(const BarCommand&)>;

    explicit InstanceServer(Perform perform, QObject* parent = nullptr);

    /// Listens at `path`, in place of a socket a crashed bar left there; only the holder of the folder's
    /// lock calls it. Says in one line when commands cannot reach this bar.
    void listen(const QString& path);
    /// Takes no more commands and removes the socket, while the folder's lock is still held: a bar started
    /// after that listens at the same place, and must not lose its socket to this one's leaving.
    void close();
    /// The answers to "--quit", sent once the bar has let its folder go, so that a start right after
    /// "vantril --quit" finds the folder free.
    void answerWaiting();

private:
    /// Reads the request once its line is complete and answers it, or keeps the answer for the end;
    /// false while the line is still coming.
    bool serve(LocalConnection* connection);

    Perform m_perform;
    LocalServer m_server;
    QList<std::pair<QPointer<LocalConnection>, InstanceProtocol::Reply>> m_waiting;
};
