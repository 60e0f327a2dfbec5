#pragma once

#include <QList>
#include <QString>

/// What a button does. The document keeps the kind as text (ButtonSpec::action), so that a kind this
/// program does not know is written back as it was; here such a kind is Unknown.
enum class ActionKind
{
    Open,
    Folder,
    App,
    Url,
    Shortcut,
    Keys,
    Paste,
    Shell,
    NewFolder,
    Group,
    AppleScript, ///< kept from documents made elsewhere; it only says that it cannot run here
    Navigate,    ///< a folder listing's row that walks the listing
    Unknown,
};

/// Everything the program knows of a kind, in one row.
struct ActionKindInfo
{
    ActionKind kind;
    QLatin1String name;   ///< as the document writes it
    QLatin1String colour; ///< the chip's colour when the button names none
    bool takesArgument;   ///< whether the editor asks for an argument
    const char* label;    ///< how the editor offers it; null for kinds it does not offer
};

namespace ActionKinds {

/// Every known kind, in the order the editor offers them.
const QList<ActionKindInfo>& all();
/// The kind a document's text names; Unknown for any other text, case-sensitively.
ActionKind of(const QString& name);
/// The row of a kind; Unknown has an empty name, white, and an argument.
const ActionKindInfo& info(ActionKind kind);

} // namespace ActionKinds
