#pragma once

#include <functional>

/// Runs work later on the main thread; tests replace it to step through time.
class Scheduler
{
public:
    Scheduler() = default;
    virtual ~Scheduler() = default;
    Scheduler(const Scheduler&) = delete;
    Scheduler& operator=(const Scheduler&) = delete;

    /// Runs `work` once, `milliseconds` from now.
    virtual void after(int milliseconds, std::function<void()> work) = 0;
};

/// The real one, on Qt's event loop.
class QtScheduler final : public Scheduler
{
public:
    void after(int milliseconds, std::function<void()> work) override;
};
