#pragma once

#include "platform/KeyStroke.h"

#include <QList>
#include <QString>

/// Key combinations in the forms the portals take: keysyms to type, and shortcut triggers to bind.
namespace PortalKeys {

struct KeyEvent
{
    quint32 keysym = 0;
    bool pressed = false;

    bool operator==(const KeyEvent&) const = default;
};

/// The presses and releases that type the combination: the modifiers pressed in a fixed order (Control,
/// Alt, Shift, Super), the key pressed and released, the modifiers released in reverse order. Empty when
/// the key has no keysym.
QList<KeyEvent> events(const KeyStroke& combo);

/// The combination as a trigger in the XDG shortcuts format, such as "CTRL+ALT+b"; empty when the key
/// has no name there.
QString trigger(const KeyStroke& combo);

} // namespace PortalKeys
