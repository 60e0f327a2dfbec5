#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

/// Whole-file reads and writes for the configuration folder.
namespace FileIO {

/// The file's bytes, or nothing when it cannot be read (an empty file reads as empty bytes).
std::optional<QByteArray> read(const QString& path);

/// Replaces the file atomically: a temporary file in the same folder is written, flushed and renamed
/// over the target, so a crash or a full disk never leaves a truncated file. A symlink is written
/// through to its target and the target's permissions are kept.
bool write(const QString& path, const QByteArray& bytes);

/// Creates the folder and its missing parents; true when it exists afterwards.
bool makeFolder(const QString& path);

} // namespace FileIO
