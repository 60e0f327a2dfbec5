#include "TerminationSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>

namespace {

// A signal handler may do next to nothing: it writes one byte, and the event loop does the rest.
int signalled[2] = {-1, -1};

void noteSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalled[0], &byte, 1);
}

} // namespace

namespace TerminationSignals {

void quitOnThem()
{
    if (signalled[0] >= 0 || ::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, signalled) != 0)
        return;
    auto* notifier = new QSocketNotifier(signalled[1], QSocketNotifier::Read, QCoreApplication::instance());
    QObject::connect(notifier, &QSocketNotifier::activated, notifier, [notifier] {
        notifier->setEnabled(false);
        QCoreApplication::quit();
    });
    struct sigaction action = {};
    action.sa_handler = noteSignal;
    sigemptyset(&action.sa_mask);
    // The handler is used once; a second signal finds the default again and ends the program.
    action.sa_flags = SA_RESTART | SA_RESETHAND;
    for (const int signal : {SIGTERM, SIGINT, SIGHUP})
        ::sigaction(signal, &action, nullptr);
}

} // namespace TerminationSignals
