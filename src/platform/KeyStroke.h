#pragma once

#include <QtGlobal>

/// One key pressed with a set of modifiers, as the backends grab and type it: the key in the
/// configuration's key codes, the modifiers as a mask of the flags below.
struct KeyStroke
{
    enum Flag : quint64
    {
        ShiftFlag = 0x20000,
        ControlFlag = 0x40000,
        AltFlag = 0x80000,
        SuperFlag = 0x100000,
    };

    quint16 keyCode = 0;
    quint64 flags = 0;

    bool operator==(const KeyStroke&) const = default;
};
