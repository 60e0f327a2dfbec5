#include "Backups.h"

#include "config/Config.h"
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

QString backupPath(const QString& prefix, const QDateTime& now)
{
    return QDir(Config::backupsDir()).filePath(prefix + Config::stamp(now) + QStringLiteral(".json"));
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
    QStringList names = folder.entryList(
        QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot, QDir::Unsorted);
    names.erase(std::remove_if(names.begin(), names.end(),
                               [](const QString& name) {
                                   return !name.startsWith(regularPrefix) ||
                                          QFileInfo(name).suffix() != QLatin1String("json");
                               }),
                names.end());
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
    const auto current = FileIO::read(buttonsPath());
    if (!current)
        return false;
    FileIO::makeFolder(backupsDir());

    if (!ConfigReader::decode(*current)) {
        FileIO::write(backupPath(QStringLiteral("invalid-"), now), *current);
        return false;
    }

    const QStringList existing = backupFiles();
    if (!existing.isEmpty()) {
        const QString& newest = existing.first();
        if (FileIO::read(newest) == current)
            return false; // never the same backup twice in a row, not even when forced
        if (!force) {
            // A stamp in the future gives a negative interval and so blocks too.
            if (const auto taken = date(newest); taken && taken->msecsTo(now) < snapshotIntervalMs)
                return false;
        }
    }

    if (!FileIO::write(backupPath(regularPrefix, now), *current))
        return false;

    const QStringList all = backupFiles();
    for (qsizetype i = maxBackups; i < all.size(); ++i)
        QFile::remove(all.at(i));
    return true;
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
        const auto bytes = FileIO::read(path);
        if (!bytes)
            continue;
        const auto config = ConfigReader::decode(*bytes);
        if (!config)
            continue;
        const QString label = locale.toString(*time, QStringLiteral("d MMM yyyy, HH:mm")) +
                              QStringLiteral(" — %1 buttons").arg(buttonCount(*config));
        infos.append({path, label});
    }
    return infos;
}

} // namespace Config
