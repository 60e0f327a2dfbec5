#include "DetachedProcess.h"

#include <QFile>
#include <QProcess>
#include <QSocketNotifier>
#include <csignal>
#include <spawn.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

extern char** environ;

namespace {

int openPidfd(pid_t pid)
{
    return static_cast<int>(::syscall(SYS_pidfd_open, pid, 0));
}

bool kernelHasPidfds()
{
    static const bool has = [] {
        const int own = openPidfd(::getpid());
        if (own < 0)
            return false;
        ::close(own);
        return true;
    }();
    return has;
}

/// The pidfd turns readable when the child ends; its status is collected then.
void reapWhenDone(pid_t pid)
{
    const int pidfd = openPidfd(pid);
    if (pidfd < 0) {
        // It ended already and is waiting: nothing will wake us for it later.
        ::waitpid(pid, nullptr, WNOHANG);
        return;
    }
    auto* notifier = new QSocketNotifier(pidfd, QSocketNotifier::Read);
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier, pid, pidfd] {
        notifier->setEnabled(false);
        ::waitpid(pid, nullptr, WNOHANG);
        ::close(pidfd);
        notifier->deleteLater();
    });
}

} // namespace

namespace DetachedProcess {

bool start(const QString& program, const QStringList& arguments)
{
    if (!kernelHasPidfds())
        return QProcess::startDetached(program, arguments);

    std::vector<QByteArray> encoded;
    encoded.reserve(arguments.size() + 1);
    encoded.push_back(QFile::encodeName(program));
    for (const QString& argument : arguments)
        encoded.push_back(QFile::encodeName(argument));
    std::vector<char*> argv;
    for (QByteArray& each : encoded)
        argv.push_back(each.data());
    argv.push_back(nullptr);

    // The child starts with no signal blocked and the usual handling of the signals a GUI program may
    // have changed, in a session of its own so that it outlives the bar's terminal.
    posix_spawnattr_t attributes;
    posix_spawnattr_init(&attributes);
    sigset_t none;
    sigemptyset(&none);
    sigset_t usual;
    sigemptyset(&usual);
    for (const int signal : {SIGPIPE, SIGCHLD, SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGUSR1, SIGUSR2, SIGALRM})
        sigaddset(&usual, signal);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setsigdefault(&attributes, &usual);
    posix_spawnattr_setflags(&attributes,
                             POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    pid_t pid = 0;
    const int error = posix_spawnp(&pid, argv.front(), nullptr, &attributes, argv.data(), environ);
    posix_spawnattr_destroy(&attributes);
    if (error != 0)
        return false;
    reapWhenDone(pid);
    return true;
}

} // namespace DetachedProcess
