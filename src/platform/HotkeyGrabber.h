#pragma once

#include "platform/FacilityReach.h"
#include "platform/KeyStroke.h"

#include <QtGlobal>
#include <functional>

/// One system-wide key combination, reported wherever the keyboard focus is.
class HotkeyGrabber
{
public:
    HotkeyGrabber() = default;
    virtual ~HotkeyGrabber() = default;
    Q_DISABLE_COPY_MOVE(HotkeyGrabber)

    /// Takes the combination, with Caps Lock, Num Lock and Scroll Lock in any state, replacing any
    /// earlier one; false when another program holds it.
    virtual bool grab(const KeyStroke& combo) = 0;
    /// Lets the combination go.
    virtual void release() = 0;
    /// Called on the main thread for each press (not for auto-repeat).
    virtual void setHandler(std::function<void()> pressed) = 0;
    /// Which windows a press is noticed in.
    virtual FacilityReach reach() = 0;
};
