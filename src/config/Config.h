#pragma once

#include "config/BarConfig.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>

/// The configuration's place on disk: the folder, the document in it, and how it is read at start-up.
///
/// Nothing here fails towards the caller: unreadable files fall back to backups or to the defaults,
/// and failed writes are ignored, so the configuration in memory always stays authoritative.
namespace Config {

/// VANTRIL_CONFIG_DIR when set (even to the empty text, which means the current folder), else
/// $XDG_CONFIG_HOME/vantril when that is an absolute path, else ~/.config/vantril. Read on every call.
QString dir();
QString buttonsPath();
QString backupsDir();

/// The built-in bar: the "Files" and "Apps" stacks and a "Help" link.
const BarConfig& defaults();

/// The document as it is written to disk.
QByteArray encoded(const BarConfig& config);

/// Reads buttons.json; writes the defaults on first launch; restores the newest readable backup over
/// an unreadable file, or falls back to the defaults and leaves the broken file for the user to repair.
BarConfig load(const QDateTime& now = QDateTime::currentDateTime());

/// Writes the document to buttons.json, creating the folder first; failures are ignored.
void save(const BarConfig& config);

} // namespace Config
