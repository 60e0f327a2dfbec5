#pragma once

#include <QString>
#include <optional>

/// The value of `key` in the main group ("[Desktop Entry]") of a desktop entry file, unlocalised
/// ("Name", not "Name[de]"); nothing when the file or the key is missing.
std::optional<QString> desktopEntryValue(const QString& path, const QString& key);
