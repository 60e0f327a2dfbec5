#pragma once

#include "platform/KeyStroke.h"

#include <QHash>
#include <QString>
#include <QStringView>
#include <QtGlobal>
#include <optional>

/// A parsed key combination such as "ctrl+shift+t": one key and a set of modifiers.
///
/// The numbers are kept in the form of the configuration's original home platform (its virtual key codes
/// and modifier masks); they are what "--parse-keys" prints, and the X11 backend maps them to keysyms and
/// X modifiers. "cmd" is the Super key on Linux.
struct KeyCombo : KeyStroke
{
    enum HotkeyModifier : quint32
    {
        SuperModifier = 0x100,
        ShiftModifier = 0x200,
        AltModifier = 0x800,
        ControlModifier = 0x1000,
    };

    quint32 carbon = 0;

    /// Modifier words and one key name joined by "+", in any order and case; nothing for invalid text.
    static std::optional<KeyCombo> parse(QStringView text);
    /// The 76 key names and their codes, built once.
    static const QHash<QString, quint16>& codes();

    bool operator==(const KeyCombo&) const = default;
};
