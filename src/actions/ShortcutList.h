#pragma once

#include <QStringList>

/// The scripts that "shortcut" buttons can run by name.
namespace ShortcutList {

/// The executable files in the scripts folder, in the user's alphabetical order ignoring case.
/// Read once, on first use: scripts added later appear after a restart.
const QStringList& names();

/// The same rule for any folder, read now.
QStringList namesIn(const QString& folder);

} // namespace ShortcutList
