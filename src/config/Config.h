#pragma once

#include "config/BarConfig.h"
#include "config/ConfigPaths.h"

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <optional>

/// The configuration's place on disk: the folder, the document in it, and how it is read at start-up.
///
/// Nothing here fails towards the caller: unreadable files fall back to backups or to the defaults,
/// and failed writes are ignored, so the configuration in memory always stays authoritative.
namespace Config {

/// The built-in bar: the "Files" and "Apps" stacks and a "Help" link.
const BarConfig& defaults();

/// The document as it is written to disk.
QByteArray encoded(const BarConfig& config);

/// The configuration read at start-up, and the bytes buttons.json holds if this program read or wrote
/// them itself. Nothing when they are unknown: bytes it could not read or keep a copy of must be backed up
/// before anything overwrites them.
struct Loaded
{
    BarConfig config;
    std::optional<QByteArray> knownBytes;
};

/// Reads buttons.json; writes the defaults on first launch; restores the newest readable backup over
/// an unreadable file, or falls back to the defaults and leaves the broken file for the user to repair.
/// The unreadable file is replaced only once a verified copy of it is in the backups folder; when none
/// can be made (a read-only backups folder, a file this user cannot read) the backup is used in memory
/// only, since writing over the only copy of the user's bytes could lose them for good.
Loaded loadDocument(const QDateTime& now = QDateTime::currentDateTime());
/// `loadDocument`'s configuration.
BarConfig load(const QDateTime& now = QDateTime::currentDateTime());

/// Writes the document to buttons.json, creating the folder first. The bytes written, or nothing when the
/// write failed; a failure leaves the old file whole and is otherwise silent.
std::optional<QByteArray> save(const BarConfig& config);

} // namespace Config
