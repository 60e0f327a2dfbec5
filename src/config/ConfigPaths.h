#pragma once

#include <QString>

/// Where the configuration lives. Its own file so that the backups, which only need the places, and the
/// loading, which needs the backups, do not include each other.
namespace Config {

/// VANTRIL_CONFIG_DIR when set (even to the empty text, which means the current folder), else
/// $XDG_CONFIG_HOME/vantril when that is an absolute path, else ~/.config/vantril. Read on every call.
QString dir();
QString buttonsPath();
QString backupsDir();

} // namespace Config
