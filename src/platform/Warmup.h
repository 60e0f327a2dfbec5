#pragma once

#include <chrono>
#include <future>

/// Work the way to the first paint needs soon, started early on threads of the lowest scheduling class
/// (SCHED_IDLE): they run only on time the main thread and the X server leave, while the main thread waits
/// for the server's replies. At normal priority a busy helper took a core's time slice from every wake-up
/// of the main thread and the server on a two-core machine, and made nothing sooner.
namespace Warmup {

/// Reads the font catalogue (fontconfig's configuration and caches), which the first text measured would
/// otherwise read on the main thread. Started before the application object is made.
std::future<void> fonts();
/// How long the main thread waits for `fonts` at most before it reads them itself, about what reading
/// takes: on a machine busy enough to starve an idle-class thread the bar is not delayed beyond that.
/// fontconfig lets one of two readings win.
constexpr std::chrono::milliseconds fontsWorthWaitingFor{5};

/// Connects to the session bus: Qt's accessibility bridge connects on the main thread as soon as the first
/// child widget is shown. Needs the application object. The thread only waits for Qt's bus thread, so it
/// keeps the normal priority.
std::future<void> sessionBus();

} // namespace Warmup
