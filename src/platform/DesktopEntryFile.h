#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// The bytes of a desktop entry file: only of a regular file of sensible size, and read without ever
/// waiting on a FIFO or a device that stands under its name. Nothing otherwise.
std::optional<QByteArray> readDesktopEntryFile(const QString& path);

/// The value of `key` in the main group ("[Desktop Entry]") of a desktop entry file, unlocalised
/// ("Name", not "Name[de]"); nothing when the file or the key is missing.
std::optional<QString> desktopEntryValue(const QString& path, const QString& key);
