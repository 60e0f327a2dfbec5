#pragma once

#include <QByteArray>
#include <QObject>
#include <QString>
#include <memory>
#include <optional>

class QSocketNotifier;

// The bar's command socket, on plain POSIX local sockets. Qt's own come with its network library, which
// alone loads Kerberos, GSSAPI and the proxy resolver into a program that never goes on the network:
// a sixth of its memory and a good part of its start-up.

/// One accepted connection, read and written from the event loop. It deletes itself once closed.
class LocalConnection : public QObject
{
    Q_OBJECT

public:
    explicit LocalConnection(int descriptor, QObject* parent = nullptr);
    ~LocalConnection() override;

    /// Everything read so far.
    const QByteArray& received() const { return m_received; }
    /// Sends `bytes`, then closes the connection once they are gone.
    void sendAndClose(const QByteArray& bytes);
    /// The same, waiting at most `timeoutMs` for the bytes to go: for when the event loop has ended.
    void sendAndCloseNow(const QByteArray& bytes, int timeoutMs);
    /// Closes at once, dropping anything unsent.
    void abort();
    /// Reads nothing more: what arrives later stays unread.
    void stopReading();

Q_SIGNALS:
    void readable();

private:
    void read();
    void write();
    void finish();

    int m_descriptor;
    std::unique_ptr<QSocketNotifier> m_reader;
    std::unique_ptr<QSocketNotifier> m_writer;
    QByteArray m_received;
    QByteArray m_unsent;
};

/// A listening socket in the file system.
class LocalServer : public QObject
{
    Q_OBJECT

public:
    explicit LocalServer(QObject* parent = nullptr);
    ~LocalServer() override;

    /// Listens at `path`, in place of whatever socket is there; why not, in a few words, when it cannot.
    std::optional<QString> listen(const QString& path);
    /// Takes no more connections and removes the socket.
    void close();

Q_SIGNALS:
    void connected(LocalConnection* connection);

private:
    void accept();

    int m_descriptor = -1;
    QString m_path;
    std::unique_ptr<QSocketNotifier> m_notifier;
};

namespace LocalSocket {

/// What came back for a request.
struct Answer
{
    QByteArray bytes;
    /// The other end kept the connection open without finishing its line in time.
    bool timedOut = false;
};

/// Connects to the socket at `path`, sends `request` and reads the answer up to its first newline, the
/// other end's closing, `maxBytes`, or `timeoutMs`. Nothing when no one listens there.
std::optional<Answer> exchange(const QString& path, const QByteArray& request, int timeoutMs,
                               qsizetype maxBytes);

} // namespace LocalSocket
