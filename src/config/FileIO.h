#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// Whole-file reads and writes for the configuration folder.
namespace FileIO {

/// The file's bytes, or nothing when it cannot be read (an empty file reads as empty bytes). Only regular
/// files (or links to one) are read: a FIFO put in the place of a document would block the reader for good.
std::optional<QByteArray> read(const QString& path);

/// Replaces the file atomically: a temporary file in the same folder is written, synced and renamed
/// over the target, so a crash, a full disk or a file-size limit never leaves a truncated file. A symlink
/// is written through to its target and the target's permissions are kept. False leaves the old file.
bool write(const QString& path, const QByteArray& bytes);

/// `write`, then the file read back: false (and the new file removed) unless it holds exactly `bytes`.
/// For copies whose only worth is being intact, checked before anything older is given up for them.
bool writeVerified(const QString& path, const QByteArray& bytes);

/// Creates the folder and its missing parents; true when it exists afterwards.
bool makeFolder(const QString& path);

} // namespace FileIO
