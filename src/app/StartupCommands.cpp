#include "StartupCommands.h"

#include "config/Backups.h"
#include "config/Config.h"
#include "config/ConfigDocument.h"

#include <QDir>

namespace {

/// The variable may come from a script or a desktop entry: it names one of the backups, and a path
/// ("../elsewhere.json", "/tmp/x.json") would put any file on disk in place of the configuration.
bool isBackupName(const QString& name)
{
    return !name.isEmpty() && !name.contains(QLatin1Char('/')) && name != QLatin1String(".") &&
           name != QLatin1String("..");
}

} // namespace

namespace StartupCommands {

void applyConfigCommands(ConfigDocument& document, const QProcessEnvironment& environment)
{
    if (environment.contains(QStringLiteral("VANTRIL_RESTORE"))) {
        const QString name = environment.value(QStringLiteral("VANTRIL_RESTORE"));
        if (isBackupName(name))
            document.restore(QDir(Config::backupsDir()).filePath(name));
    }
    if (environment.contains(QStringLiteral("VANTRIL_REMOVE_PRESET")))
        document.removePreset(environment.value(QStringLiteral("VANTRIL_REMOVE_PRESET")));
    if (environment.contains(QStringLiteral("VANTRIL_PRESET"))) {
        const QStringList names = environment.value(QStringLiteral("VANTRIL_PRESET")).split(QLatin1Char(','));
        for (const QString& name : names) {
            // Spaces after the commas are a natural way to write a list; no preset name has them.
            if (const QString trimmed = name.trimmed(); !trimmed.isEmpty())
                document.addPreset(trimmed);
        }
    }
}

} // namespace StartupCommands
