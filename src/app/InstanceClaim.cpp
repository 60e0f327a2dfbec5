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

    const QString lockPath = InstancePaths::lockFile(dir);
    // A bar holds its lock for days, and the kernel lets it go when the bar ends, however it ends: only a
    // bar that runs holds it.
    const QDeadlineTimer deadline(listenWithinMs);
    FolderLock::Attempt attempt = FolderLock::take(lockPath);
    while (attempt.outcome != FolderLock::Outcome::Taken) {
        if (attempt.outcome == FolderLock::Outcome::Failed) {
            // Another bar on this folder could not hold the lock either, but may listen all the same.
            if (const auto status = handOver(socketPathOf(dir), arguments)) {
                claim.m_exitStatus = status;
            } else if (!command.startsBar()) {
                claim.m_exitStatus = 0;
            } else {
                Log::line(
                    QStringLiteral("vantril: cannot make a lock file in \"%1\" (%2); running without one")
                        .arg(QDir::toNativeSeparators(dir), attempt.error));
                claim.m_dir = dir;
            }
            return claim;
        }
        if (const auto status = handOver(socketPathOf(dir), arguments)) {
            claim.m_exitStatus = status;
            return claim;
        }
        if (deadline.hasExpired()) {
            const FolderLock::Holder holder = FolderLock::holder(lockPath);
            const QString process = holder.host.isEmpty() || holder.host == QSysInfo::machineHostName()
                                        ? QStringLiteral("process %1").arg(holder.pid)
                                        : QStringLiteral("process %1 on %2").arg(holder.pid).arg(holder.host);
            // The lock is held, so that process runs: it is stuck, or a bar too old to answer.
            Log::line(QStringLiteral("vantril: the bar of \"%1\" (%2) runs but does not answer; end it to "
                                     "start another")
                          .arg(QDir::toNativeSeparators(dir), process));
            claim.m_exitStatus = 1;
            return claim;
        }
        QThread::msleep(retryEveryMs);
        attempt = FolderLock::take(lockPath);
    }
    if (!command.startsBar()) {
        claim.m_exitStatus = 0; // the lock goes with `attempt`: no bar ran
        return claim;
    }
    claim.m_lock = std::move(attempt.lock);
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
