#include "Config.h"

#include "config/Backups.h"
#include "config/ConfigReader.h"
#include "config/ConfigWriter.h"
#include "config/FileIO.h"
#include "platform/Log.h"

#include <QDir>
#include <QFileInfo>

namespace {

/// The support page behind the default "Help" chip.
const auto helpUrl = QStringLiteral("https://github.com/vantril/vantril#readme");

ButtonSpec button(const char* title, const char* symbol, const char* action,
                  std::optional<QString> argument = {})
{
    return ButtonSpec::make(QString::fromUtf8(title), QString::fromUtf8(symbol), QString::fromUtf8(action),
                            std::move(argument));
}

BarConfig makeDefaults()
{
    ButtonSpec files = button("Files", "folder", "group");
    files.children = QList<ButtonSpec>{
        button("Downloads", "arrow.down.circle", "open", QStringLiteral("~/Downloads")),
        button("Documents", "doc.text", "open", QStringLiteral("~/Documents")),
        button("Desktop", "menubar.dock.rectangle", "open", QStringLiteral("~/Desktop")),
        button("New Folder", "folder.badge.plus", "newFolder"),
    };
    ButtonSpec apps = button("Apps", "square.grid.2x2", "group");
    apps.children = QList<ButtonSpec>{
        button("Safari", "safari", "app", QStringLiteral("Safari")),
        button("Mail", "envelope", "app", QStringLiteral("Mail")),
        button("Notes", "note.text", "app", QStringLiteral("Notes")),
        button("Calendar", "calendar", "app", QStringLiteral("Calendar")),
        button("Terminal", "terminal", "app", QStringLiteral("Terminal")),
    };
    ButtonSpec help = button("Help", "questionmark.circle", "url", helpUrl);
    help.color = QStringLiteral("white");

    BarConfig config;
    config.buttons = {files, apps, help};
    return config;
}

} // namespace

namespace Config {

const BarConfig& defaults()
{
    static const BarConfig config = makeDefaults();
    return config;
}

QByteArray encoded(const BarConfig& config)
{
    return ConfigWriter::write(config);
}

std::optional<QByteArray> save(const BarConfig& config)
{
    FileIO::makeFolder(dir());
    QByteArray bytes = encoded(config);
    if (!FileIO::write(buttonsPath(), bytes))
        return std::nullopt;
    return bytes;
}

Loaded loadDocument(const QDateTime& now)
{
    const QString path = buttonsPath();
    const auto bytes = FileIO::read(path);
    if (bytes) {
        if (auto config = ConfigReader::decode(*bytes))
            return {*config, bytes};
    }

    if (!QFileInfo::exists(path)) {
        snapshot(false, now);
        return {defaults(), save(defaults())};
    }

    const bool kept = keepCopy(now); // an "invalid-" copy of what does not decode
    for (const QString& backup : backupFiles()) {
        const auto backupBytes = FileIO::read(backup);
        if (!backupBytes)
            continue;
        if (auto config = ConfigReader::decode(*backupBytes)) {
            Log::line(QStringLiteral("buttons.json was unreadable; restored the newest backup ") +
                      QFileInfo(backup).fileName());
            if (kept && FileIO::write(path, *backupBytes))
                return {*config, backupBytes};
            return {*config, std::nullopt};
        }
    }
    Log::line(QStringLiteral(
        "buttons.json was unreadable and there is no backup; using defaults without overwriting it"));
    return {defaults(), std::nullopt};
}

BarConfig load(const QDateTime& now)
{
    return loadDocument(now).config;
}

} // namespace Config
