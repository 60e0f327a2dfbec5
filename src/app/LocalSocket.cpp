#include "LocalSocket.h"

#include <QDeadlineTimer>
#include <QFile>
#include <QScopeGuard>
#include <QSocketNotifier>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

std::optional<sockaddr_un> addressOf(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    sockaddr_un address{};
    if (name.isEmpty() || name.size() >= qsizetype(sizeof address.sun_path))
        return std::nullopt;
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, name.constData(), std::size_t(name.size()));
    return address;
}

/// Waits for `events` on `descriptor` until `deadline`; false when it passed first.
bool waitFor(int descriptor, short events, const QDeadlineTimer& deadline)
{
    pollfd entry{descriptor, events, 0};
    for (;;) {
        const int result = ::poll(&entry, 1, int(qBound(qint64(0), deadline.remainingTime(), qint64(60000))));
        if (result > 0)
            return true;
        if (result == 0 && deadline.hasExpired())
            return false;
        if (result < 0 && errno != EINTR)
            return false;
    }
}

/// Sends all of `bytes`, blocking at most until `deadline`.
bool sendAll(int descriptor, QByteArray bytes, const QDeadlineTimer& deadline)
{
    while (!bytes.isEmpty()) {
        const ssize_t sent = ::send(descriptor, bytes.constData(), std::size_t(bytes.size()), MSG_NOSIGNAL);
        if (sent > 0)
            bytes.remove(0, sent);
        else if ((sent < 0 && errno != EAGAIN && errno != EINTR) || !waitFor(descriptor, POLLOUT, deadline))
            return false;
    }
    return true;
}

} // namespace

LocalConnection::LocalConnection(int descriptor, QObject* parent)
    : QObject(parent)
    , m_descriptor(descriptor)
    , m_reader(std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read))
    , m_writer(std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Write))
{
    m_writer->setEnabled(false);
    connect(m_reader.get(), &QSocketNotifier::activated, this, &LocalConnection::read);
    connect(m_writer.get(), &QSocketNotifier::activated, this, &LocalConnection::write);
}

LocalConnection::~LocalConnection()
{
    // The notifiers watch the descriptor, so they go first.
    m_reader.reset();
    m_writer.reset();
    if (m_descriptor >= 0)
        ::close(m_descriptor);
}

void LocalConnection::read()
{
    char buffer[4096];
    bool grew = false;
    bool ended = false;
    for (;;) {
        const ssize_t count = ::recv(m_descriptor, buffer, sizeof buffer, 0);
        if (count > 0) {
            m_received.append(buffer, count);
            grew = true;
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            ended = true;
            break;
        } else if (errno == EAGAIN) {
            break;
        }
    }
    if (grew)
        Q_EMIT readable();
    // Gone, or broken: nothing more will come, and nothing sent would arrive.
    if (ended)
        abort();
}

void LocalConnection::stopReading()
{
    if (m_reader)
        m_reader->setEnabled(false);
}

void LocalConnection::sendAndClose(const QByteArray& bytes)
{
    stopReading();
    m_unsent += bytes;
    write();
}

void LocalConnection::write()
{
    while (!m_unsent.isEmpty()) {
        const ssize_t sent =
            ::send(m_descriptor, m_unsent.constData(), std::size_t(m_unsent.size()), MSG_NOSIGNAL);
        if (sent > 0) {
            m_unsent.remove(0, sent);
            continue;
        }
        if (sent < 0 && errno == EINTR)
            continue;
        if (sent < 0 && errno == EAGAIN) {
            m_writer->setEnabled(true);
            return;
        }
        break; // the other end went away
    }
    finish();
}

void LocalConnection::sendAndCloseNow(const QByteArray& bytes, int timeoutMs)
{
    stopReading();
    sendAll(m_descriptor, m_unsent + bytes, QDeadlineTimer(timeoutMs));
    m_unsent.clear();
    finish();
}

void LocalConnection::abort()
{
    m_unsent.clear();
    finish();
}

void LocalConnection::finish()
{
    if (m_descriptor < 0)
        return;
    // Called from the notifiers' own signals: they are switched off here and deleted with the connection.
    m_reader->setEnabled(false);
    m_writer->setEnabled(false);
    ::close(m_descriptor);
    m_descriptor = -1;
    deleteLater();
}

LocalServer::LocalServer(QObject* parent)
    : QObject(parent)
{}

LocalServer::~LocalServer()
{
    close();
}

std::optional<QString> LocalServer::listen(const QString& path)
{
    close();
    const auto address = addressOf(path);
    if (!address)
        return QStringLiteral("the path is too long for a socket");
    ::unlink(address->sun_path);
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0 ||
        ::listen(descriptor, SOMAXCONN) != 0) {
        const QString error = QString::fromLocal8Bit(std::strerror(errno));
        ::close(descriptor);
        return error;
    }
    m_descriptor = descriptor;
    m_path = path;
    m_notifier = std::make_unique<QSocketNotifier>(descriptor, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &LocalServer::accept);
    return std::nullopt;
}

void LocalServer::close()
{
    if (m_descriptor < 0)
        return;
    m_notifier.reset();
    ::close(m_descriptor);
    m_descriptor = -1;
    ::unlink(QFile::encodeName(m_path).constData());
}

void LocalServer::accept()
{
    for (;;) {
        const int descriptor = ::accept4(m_descriptor, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
        if (descriptor < 0) {
            if (errno == EINTR || errno == ECONNABORTED)
                continue;
            return; // EAGAIN: all taken; anything else: nothing to take now
        }
        Q_EMIT connected(new LocalConnection(descriptor, this));
    }
}

namespace LocalSocket {

std::optional<Answer> exchange(const QString& path, const QByteArray& request, int timeoutMs,
                               qsizetype maxBytes)
{
    const auto address = addressOf(path);
    if (!address)
        return std::nullopt;
    const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0);
    if (descriptor < 0)
        return std::nullopt;
    const auto closeOnReturn = qScopeGuard([descriptor] { ::close(descriptor); });
    // A local connection is made at once, or refused at once when no one listens; only a full backlog
    // makes it wait.
    const QDeadlineTimer deadline(timeoutMs);
    if (::connect(descriptor, reinterpret_cast<const sockaddr*>(&*address), sizeof *address) != 0) {
        int error = 0;
        socklen_t length = sizeof error;
        if (errno != EAGAIN || !waitFor(descriptor, POLLOUT, QDeadlineTimer(qMin(timeoutMs, 1000))) ||
            ::getsockopt(descriptor, SOL_SOCKET, SO_ERROR, &error, &length) != 0 || error != 0)
            return std::nullopt;
    }
    Answer answer;
    if (!sendAll(descriptor, request, deadline))
        return answer;
    char buffer[4096];
    while (!answer.bytes.contains('\n') && answer.bytes.size() <= maxBytes) {
        const ssize_t count = ::recv(descriptor, buffer, sizeof buffer, 0);
        if (count > 0) {
            answer.bytes.append(buffer, count);
        } else if (count == 0 || (errno != EAGAIN && errno != EINTR)) {
            break;
        } else if (!waitFor(descriptor, POLLIN, deadline)) {
            answer.timedOut = true;
            break;
        }
    }
    return answer;
}

} // namespace LocalSocket
