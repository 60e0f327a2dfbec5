#include "ConfigPaths.h"

#include <QDir>

namespace Config {

QString dir()
{
    if (qEnvironmentVariableIsSet("VANTRIL_CONFIG_DIR")) {
        const QString value = qEnvironmentVariable("VANTRIL_CONFIG_DIR");
        return value.isEmpty() ? QDir::currentPath() : QDir::current().absoluteFilePath(value);
    }
    const QString xdg = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (!xdg.isEmpty() && QDir::isAbsolutePath(xdg))
        return QDir(xdg).filePath(QStringLiteral("vantril"));
    return QDir::home().filePath(QStringLiteral(".config/vantril"));
}

QString buttonsPath()
{
    return QDir(dir()).filePath(QStringLiteral("buttons.json"));
}

QString backupsDir()
{
    return QDir(dir()).filePath(QStringLiteral("backups"));
}

} // namespace Config
