#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// The bytes of a desktop entry file: only of a regular file of sensible size, and read without ever
/// waiting on a FIFO or a device that stands under its name. Nothing otherwise.
std::optional<QByteArray> readDesktopEntryFile(const QString& path);

/// True for a desktop entry installed where the desktop's menus look: inside an "applications" folder
/// of the XDG data folders ($XDG_DATA_HOME, $XDG_DATA_DIRS). Only such entries are taken for
/// applications; one met anywhere else (a download, say) is a stray file that could start anything.
bool isInstalledDesktopEntry(const QString& path);

/// The value of `key` in the main group ("[Desktop Entry]") of a desktop entry file, unlocalised
/// ("Name", not "Name[de]"); nothing when the file or the key is missing.
std::optional<QString> desktopEntryValue(const QString& path, const QString& key);
