#pragma once

#include <QtGlobal>
#include <functional>

/// Runs work later on the main thread; tests replace it to step through time.
class Scheduler
{
public:
    Scheduler() = default;
    virtual ~Scheduler() = default;
    Q_DISABLE_COPY_MOVE(Scheduler)

    /// Runs `work` once, `milliseconds` from now.
    virtual void after(int milliseconds, std::function<void()> work) = 0;
};

/// The real one, on Qt's event loop.
class QtScheduler final : public Scheduler
{
public:
    void after(int milliseconds, std::function<void()> work) override;
};
