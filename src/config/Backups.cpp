#include "Backups.h"

#include "config/ConfigPaths.h"
#include "config/ConfigReader.h"
#include "config/FileIO.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <algorithm>

namespace {

const auto stampFormat = QStringLiteral("yyyy-MM-dd-HHmmss");
const auto regularPrefix = QStringLiteral("buttons-");
const auto invalidPrefix = QStringLiteral("invalid-");
const auto suffix = QStringLiteral("json");

/// What a snapshot did: whether it wrote a regular backup, and whether the bytes of buttons.json can be
/// found intact in the backups folder afterwards (written now, or already there).
struct Outcome
{
    bool written = false;
    bool kept = false;
};

QString backupPath(const QString& prefix, const QDateTime& now)
{
    return QDir(Config::backupsDir()).filePath(prefix + Config::stamp(now) + QLatin1Char('.') + suffix);
}

/// Files only: a folder (or a FIFO) named like a backup can be neither read nor pruned, and one whose name
/// carries a stamp in the future would hold back every unforced snapshot until then. A folder that can be
/// written but not listed looks empty: every snapshot is then written and none pruned, which errs towards
/// more copies, never fewer.
QStringList backupNames(const QDir& folder, const QString& prefix)
{
    QStringList names = folder.entryList(QDir::Files | QDir::Hidden, QDir::Unsorted);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [&](const QString& name) {
                                   return !name.startsWith(prefix) || QFileInfo(name).suffix() != suffix;
                               }),
                names.end());
    return names;
}

/// A broken file that is met again at every start is kept once: its copies are never deleted, so each
/// identical one would only pile up.
bool hasInvalidCopy(const QByteArray& bytes)
{
    const QDir folder(Config::backupsDir());
    const QStringList names = backupNames(folder, invalidPrefix);
    return std::any_of(names.begin(), names.end(), [&](const QString& name) {
        const QString path = folder.filePath(name);
        return QFileInfo(path).size() == bytes.size() && FileIO::read(path) == bytes;
    });
}

/// "invalid-" copies are never deleted, so one of the same second with other bytes is not replaced either.
bool keepInvalid(const QByteArray& bytes, const QDateTime& now)
{
    if (hasInvalidCopy(bytes))
        return true;
    const QString path = backupPath(invalidPrefix, now);
    return !QFileInfo::exists(path) && FileIO::writeVerified(path, bytes);
}

Outcome takeSnapshot(bool force, const QDateTime& now)
{
    const auto current = FileIO::read(Config::buttonsPath());
    if (!current)
        return {};
    FileIO::makeFolder(Config::backupsDir());

    if (!ConfigReader::decode(*current))
        return {false, keepInvalid(*current, now)};

    const QStringList existing = Config::backupFiles();
    if (!existing.isEmpty()) {
        const QString& newest = existing.first();
        if (FileIO::read(newest) == current)
            return {false, true}; // never the same backup twice in a row, not even when forced
        if (!force) {
            // A stamp in the future gives a negative interval and so blocks too.
            if (const auto taken = Config::date(newest);
                taken && taken->msecsTo(now) < Config::snapshotIntervalMs)
                return {};
        }
    }

    // Older backups are given up only for a new one that is known to be intact: on a full disk a
    // truncated copy must not push a good one out.
    if (!FileIO::writeVerified(backupPath(regularPrefix, now), *current))
        return {};

    const QStringList all = Config::backupFiles();
    for (qsizetype i = Config::maxBackups; i < all.size(); ++i)
        QFile::remove(all.at(i));
    return {true, true};
}

int buttonCount(const BarConfig& config)
{
    qsizetype count = 0;
    for (const ButtonSpec& button : config.buttons)
        count += 1 + (button.children ? button.children->size() : 0);
    if (config.appSets) {
        for (const AppSet& set : *config.appSets)
            count += set.buttons.size();
    }
    return static_cast<int>(count);
}

} // namespace

namespace Config {

QString stamp(const QDateTime& time)
{
    // The C locale keeps the digits ASCII whatever the user's language.
    return QLocale::c().toString(time.toLocalTime(), stampFormat);
}

QStringList backupFiles()
{
    const QDir folder(backupsDir());
    QStringList names = backupNames(folder, regularPrefix);
    std::stable_sort(names.begin(), names.end(), std::greater<>());
    QStringList paths;
    paths.reserve(names.size());
    for (const QString& name : names)
        paths.append(folder.filePath(name));
    return paths;
}

std::optional<QDateTime> date(const QString& backupPath)
{
    const QString text = QFileInfo(backupPath).completeBaseName().mid(regularPrefix.size());
    const QDateTime time = QLocale::c().toDateTime(text, stampFormat);
    // The round trip rejects what the lenient parser would bend into a date (a day 31 in April).
    if (!time.isValid() || stamp(time) != text)
        return std::nullopt;
    return time;
}

bool snapshot(bool force, const QDateTime& now)
{
    return takeSnapshot(force, now).written;
}

bool keepCopy(const QDateTime& now)
{
    const QString path = buttonsPath();
    // A dangling link counts as no file: writing through it creates its target and overwrites nothing.
    if (!QFileInfo::exists(path))
        return true;
    return takeSnapshot(true, now).kept;
}

QList<BackupInfo> backupInfos()
{
    const QLocale locale;
    QList<BackupInfo> infos;
    const QStringList files = backupFiles().mid(0, maxListedBackups);
    for (const QString& path : files) {
        const auto time = date(path);
        if (!time)
            continue;
        const auto config = ConfigReader::readFile(path);
        if (!config)
            continue;
        const QString label = locale.toString(*time, QStringLiteral("d MMM yyyy, HH:mm")) +
                              QStringLiteral(" — %1 buttons").arg(buttonCount(*config));
        infos.append({path, label});
    }
    return infos;
}

} // namespace Config
