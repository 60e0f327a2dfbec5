#pragma once

#include <QDateTime>
#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

/// One restorable backup as offered in menus.
struct BackupInfo
{
    QString id;    ///< the backup file's full path
    QString label; ///< "14 Mar 2025, 09:15 — 12 buttons"

    bool operator==(const BackupInfo&) const = default;
};

/// Time-stamped copies of buttons.json in the "backups" folder.
///
/// Regular copies are named "buttons-" + stamp + ".json"; an unreadable buttons.json is kept as
/// "invalid-" + stamp + ".json", which is never listed, restored or pruned, and never written twice with
/// the same bytes. Only files count: folders and other entries in the backups folder are ignored.
namespace Config {

/// The local time in the fixed-width form used in backup names, "yyyy-MM-dd-HHmmss".
QString stamp(const QDateTime& time);
/// Regular backups, newest first (by name, which sorts like time).
QStringList backupFiles();
/// The time in a backup's name, if the name carries one in exactly the stamp's form.
std::optional<QDateTime> date(const QString& backupPath);
/// Copies buttons.json into the backups folder unless it is unreadable (then it is kept as an
/// "invalid-" copy), identical to the newest backup, or (unforced) less than five minutes after it.
/// True only when a regular backup was written (and read back intact).
bool snapshot(bool force, const QDateTime& now = QDateTime::currentDateTime());
/// Makes sure the bytes buttons.json holds now can be found again in the backups folder before they are
/// written over: a forced snapshot, or an "invalid-" copy when they do not decode. True when a verified
/// copy exists afterwards (new, or already there) or there is no file; false when the file cannot be
/// read or no copy could be written, and then it must not be overwritten, as nothing else holds it.
bool keepCopy(const QDateTime& now = QDateTime::currentDateTime());
/// The newest 15 backups that can be read and decoded, with their menu labels.
QList<BackupInfo> backupInfos();

/// Regular backups kept; older ones are deleted after each snapshot.
constexpr int maxBackups = 40;
/// Entries offered for restoring.
constexpr int maxListedBackups = 15;
/// Unforced snapshots closer than this to the newest backup are skipped.
constexpr qint64 snapshotIntervalMs = 300 * 1000;

} // namespace Config
