#pragma once

#include "platform/InputSynthesis.h"

/// Key presses through the XTest extension, resolved in the keyboard layout active at that moment.
class X11InputSynthesis final : public InputSynthesis
{
public:
    bool isTrusted() override;
    void post(const KeyStroke& combo) override;
    FacilityReach reach() override;
};
