#include "platform/Warmup.h"

#include <QDBusConnection>
#include <fontconfig/fontconfig.h>
#include <pthread.h>
#include <sched.h>

namespace {

template<typename Work>
std::future<void> whenIdle(Work work)
{
    return std::async(std::launch::async, [work] {
        // Only lowers this thread's own priority, which needs no privilege; should it fail, the work is
        // merely done at normal priority.
        const sched_param lowest{};
        pthread_setschedparam(pthread_self(), SCHED_IDLE, &lowest);
        work();
    });
}

} // namespace

std::future<void> Warmup::fonts()
{
    // fontconfig is thread-safe and keeps what FcInit loads as its current configuration, where Qt's font
    // database finds it ready; should Qt ask first, fontconfig lets one of the two loads win.
    return whenIdle([] { FcInit(); });
}

std::future<void> Warmup::sessionBus()
{
    // Qt keeps the connection once made; the bridge then finds it, as do the portals later.
    return std::async(std::launch::async, [] { QDBusConnection::sessionBus(); });
}
