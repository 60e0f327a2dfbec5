#include "InstanceClaim.h"

#include "app/InstancePaths.h"
#include "app/InstanceProtocol.h"
#include "app/LocalSocket.h"
#include "config/Config.h"
#include "platform/Log.h"

#include <QDeadlineTimer>
#include <QDir>
#include <QFileInfo>
#include <QSysInfo>
#include <QTextStream>
#include <QThread>

namespace {

/// How long a starting copy waits for a bar that holds the lock to listen, and then for its answer: the
/// bar may itself be starting on a busy machine, between taking the lock and running its event loop.
constexpr int listenWithinMs = 10000;
constexpr int answerWithinMs = 10000;
constexpr int retryEveryMs = 50;

void print(const InstanceProtocol::Reply& reply)
{
    if (reply.message.isEmpty())
        return;
    // One line, whatever a title in it holds.
    QString text = reply.message;
    text.replace(QLatin1Char('\n'), QLatin1Char(' ')).replace(QLatin1Char('\r'), QLatin1Char(' '));
    if (reply.status == 0)
        QTextStream(stdout) << text << Qt::endl;
    else
        Log::line(text);
}

/// Sends `arguments` to the bar listening at `socketPath` and prints its answer. Nothing when no bar
/// listens there; the exit status otherwise.
std::optional<int> handOver(const QString& socketPath, const QStringList& arguments)
{
    if (socketPath.isEmpty())
        return std::nullopt;
    const auto answer = LocalSocket::exchange(socketPath, InstanceProtocol::encodeRequest(arguments),
                                              answerWithinMs, InstanceProtocol::maxLineBytes);
    if (!answer)
        return std::nullopt;
    if (answer->timedOut) {
        Log::line(QStringLiteral("vantril: the running bar did not answer in time"));
        return 1;
    }
    const auto reply = InstanceProtocol::decodeReply(answer->bytes.left(answer->bytes.indexOf('\n') + 1));
    if (!reply) {
        Log::line(QStringLiteral("vantril: the running bar gave no answer this copy understands"));
        return 1;
    }
    print(*reply);
    return reply->status;
}

QString socketPathOf(const QString& dir)
{
    return InstancePaths::socketPath(dir, qEnvironmentVariable("XDG_RUNTIME_DIR"), QDir::tempPath());
}

QString lockError(QLockFile::LockError error)
{
    return error == QLockFile::PermissionError ? QStringLiteral("permission denied")
                                               : QStringLiteral("it cannot be created");
}

} // namespace

InstanceClaim InstanceClaim::take(const QStringList& arguments, const BarCommand& command)
{
    InstanceClaim claim;
    const QString dir = Config::dir();
    // A bar that is not there has nothing to hide or end, and no folder is made for it.
    if (!command.startsBar() && !QFileInfo::exists(dir)) {
        claim.m_exitStatus = 0;
        return claim;
    }
    if (command.startsBar())
        QDir().mkpath(dir);

    auto lock = std::make_unique<QLockFile>(InstancePaths::lockFile(dir));
    // A bar holds its lock for days: age says nothing. Only a holder that no longer runs lets it go.
    lock->setStaleLockTime(0);
    const QDeadlineTimer deadline(listenWithinMs);
    while (!lock->tryLock(0)) {
        if (lock->error() != QLockFile::LockFailedError) {
            // Another bar on this folder could not hold the lock either, but may listen all the same.
            if (const auto status = handOver(socketPathOf(dir), arguments)) {
                claim.m_exitStatus = status;
            } else if (!command.startsBar()) {
                claim.m_exitStatus = 0;
            } else {
                Log::line(
                    QStringLiteral("vantril: cannot make a lock file in \"%1\" (%2); running without one")
                        .arg(QDir::toNativeSeparators(dir), lockError(lock->error())));
                claim.m_dir = dir;
            }
            return claim;
        }
        if (const auto status = handOver(socketPathOf(dir), arguments)) {
            claim.m_exitStatus = status;
            return claim;
        }
        if (deadline.hasExpired()) {
            qint64 pid = 0;
            QString host;
            lock->getLockInfo(&pid, &host, nullptr);
            const QString holder = host.isEmpty() || host == QSysInfo::machineHostName()
                                       ? QStringLiteral("process %1").arg(pid)
                                       : QStringLiteral("process %1 on %2").arg(pid).arg(host);
            Log::line(QStringLiteral("vantril: the bar of \"%1\" (%2) does not answer; if it no longer runs, "
                                     "remove \"%3\"")
                          .arg(QDir::toNativeSeparators(dir), holder,
                               QDir::toNativeSeparators(InstancePaths::lockFile(dir))));
            claim.m_exitStatus = 1;
            return claim;
        }
        QThread::msleep(retryEveryMs);
    }
    if (!command.startsBar()) {
        claim.m_exitStatus = 0; // the lock goes with `lock`: no bar ran
        return claim;
    }
    claim.m_lock = std::move(lock);
    claim.m_dir = dir;
    return claim;
}

QString InstanceClaim::socketPath() const
{
    return socketPathOf(m_dir);
}

void InstanceClaim::release()
{
    m_lock.reset();
}
