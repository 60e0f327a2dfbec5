#pragma once

#include <QString>
#include <optional>

/// The value of `key` in the main group ("[Desktop Entry]") of a desktop entry file, unlocalised
/// ("Name", not "Name[de]"); nothing when the file or the key is missing.
std::optional<QString> desktopEntryValue(const QString& path, const QString& key);

/// The launch-at-login entry made from the program's installed desktop entry: its main group, every
/// translation included, switched on for session managers and never Hidden. Nothing when `entry` has
/// no main group.
std::optional<QByteArray> autostartEntryFrom(const QByteArray& entry);
