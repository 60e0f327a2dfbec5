#pragma once

#include "platform/FacilityReach.h"
#include "platform/KeyStroke.h"

#include <QtGlobal>

/// Synthetic keyboard input, delivered to whatever window has the keyboard focus.
class InputSynthesis
{
public:
    InputSynthesis() = default;
    virtual ~InputSynthesis() = default;
    Q_DISABLE_COPY_MOVE(InputSynthesis)

    /// Whether input may be synthesised at all in this session.
    virtual bool isTrusted() = 0;
    /// Presses the modifiers, presses and releases the key, releases the modifiers in reverse order.
    virtual void post(const KeyStroke& combo) = 0;
    /// Which windows the keys reach.
    virtual FacilityReach reach() = 0;
};
