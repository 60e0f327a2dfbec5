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

class QTextStream;

/// The value of `key` in the main group ("[Desktop Entry]") of a desktop entry file, unlocalised
/// ("Name", not "Name[de]"), with the escapes "\s", "\n", "\t", "\r" and "\\" undone; nothing when the
/// file or the key is missing.
std::optional<QString> desktopEntryValue(const QString& path, const QString& key);
/// The same for the text of a desktop entry, read from `in` until the key is found.
std::optional<QString> desktopEntryValue(QTextStream& in, const QString& key);

/// `value` as it is written after "Key=" so that it reads back unchanged: the escapes above, "\s" only
/// for a space at either end, where readers would otherwise drop it.
QString desktopEntryEscaped(const QString& value);

/// A path as one argument of an "Exec" value: in double quotes with `"`, `` ` ``, `$` and `\` behind a
/// backslash, `%` doubled so that it is not taken for a field code, then escaped as every value is.
QString desktopEntryExecArgument(const QString& path);

/// The launch-at-login entry made from the program's installed desktop entry: its main group, every
/// translation included, switched on for session managers and never Hidden. Nothing when `entry` has
/// no main group.
std::optional<QByteArray> autostartEntryFrom(const QByteArray& entry);
