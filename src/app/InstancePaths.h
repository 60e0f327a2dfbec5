#pragma once

#include <QString>

/// Where the bar of a configuration folder keeps its lock and listens for commands.
///
/// The lock lives in the configuration folder itself, so that every spelling of the folder (a symlink,
/// a relative path) meets the same lock. The socket cannot live there: a folder on a network file system
/// may not hold one, and a long path would not fit into a socket address. It lives in a private folder
/// of the user instead: $XDG_RUNTIME_DIR when that is usable, else "vantril-UID" in the temporary folder,
/// made private on first use. Either way it is named after the folder's canonical path, so different
/// folders get different sockets and run side by side.
namespace InstancePaths {

QString lockFile(const QString& configDir);

/// "vantril-" and 16 hex digits of a hash of the folder's canonical path (its absolute path while it
/// does not exist).
QString socketName(const QString& configDir);

/// The socket of `configDir`'s bar, in `runtimeDir` (the value of XDG_RUNTIME_DIR) when that is an
/// absolute path to a private folder, else in "vantril-UID" inside `tempDir`, which is made when missing.
/// A folder is private when it is a real folder (no symlink), owned by this user and open to no one else
/// (mode 0700, as the XDG base-directory rules ask of the runtime folder). Empty when neither is usable:
/// then no command can reach the bar. Quietly falls back, as GLib does: the fallback is as private as the
/// runtime folder, so there is nothing to warn about.
QString socketPath(const QString& configDir, const QString& runtimeDir, const QString& tempDir);

} // namespace InstancePaths
