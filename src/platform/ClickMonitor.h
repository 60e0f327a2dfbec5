#pragma once

#include "platform/FacilityReach.h"

#include <QPoint>
#include <functional>

/// Notices left and right mouse presses anywhere on the desktop, in any application, without taking
/// them: the application under the pointer still gets its click.
class ClickMonitor
{
public:
    ClickMonitor() = default;
    virtual ~ClickMonitor() = default;
    ClickMonitor(const ClickMonitor&) = delete;
    ClickMonitor& operator=(const ClickMonitor&) = delete;

    /// Starts calling `pressed` with the global pointer position of each press; replaces any earlier one.
    virtual void start(std::function<void(QPoint)> pressed) = 0;
    virtual void stop() = 0;
    /// Whether presses can be noticed at all in this session.
    virtual bool isAvailable() = 0;
    /// Which windows presses and the pointer are seen over.
    virtual FacilityReach reach() = 0;
};
