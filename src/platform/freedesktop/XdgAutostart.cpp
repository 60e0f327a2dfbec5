#include "XdgAutostart.h"

#include "platform/DesktopEntryFile.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTextStream>

namespace {

/// Quoted as the desktop entry rules want for Exec: spaces and specials inside double quotes.
QString quotedProgram(const QString& path)
{
    QString escaped = path;
    for (const char* special : {"\\", "\"", "`", "$"})
        escaped.replace(QLatin1String(special), QLatin1Char('\\') + QLatin1String(special));
    return QLatin1Char('"') + escaped + QLatin1Char('"');
}

/// The autostart entry made from the program's desktop entry in the XDG data folders, if it is installed.
std::optional<QByteArray> installedEntry()
{
    const QString installed =
        QStandardPaths::locate(QStandardPaths::ApplicationsLocation, QStringLiteral("vantril.desktop"));
    QFile file(installed);
    // Only a regular file: opening a FIFO someone left there would wait for a writer forever.
    if (installed.isEmpty() || !QFileInfo(installed).isFile() || !file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return autostartEntryFrom(file.read(64 * 1024));
}

} // namespace

QString XdgAutostart::entryPath()
{
    return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
           QStringLiteral("/autostart/vantril.desktop");
}

bool XdgAutostart::isEnabled()
{
    const QString path = entryPath();
    if (!QFile::exists(path))
        return false;
    return desktopEntryValue(path, QStringLiteral("Hidden")) != QLatin1String("true") &&
           desktopEntryValue(path, QStringLiteral("X-GNOME-Autostart-enabled")) != QLatin1String("false");
}

std::optional<QString> XdgAutostart::setEnabled(bool enabled)
{
    const QString path = entryPath();
    if (!enabled) {
        if (QFile::exists(path) && !QFile::remove(path))
            return QStringLiteral("cannot remove %1").arg(path);
        return std::nullopt;
    }
    if (!QDir().mkpath(QFileInfo(path).absolutePath()))
        return QStringLiteral("cannot create %1").arg(QFileInfo(path).absolutePath());
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Text))
        return QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    // An installed program starts at login as its menu entry starts it, translations and all; run from
    // a build folder, it has no such entry and starts from where it is.
    if (const auto installed = installedEntry()) {
        file.write(*installed);
        if (!file.commit())
            return QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
        return std::nullopt;
    }
    QTextStream out(&file);
    out << "[Desktop Entry]\n"
        << "Type=Application\n"
        << "Name=Vantril\n"
        << "Comment=A floating bar of buttons\n"
        << "Exec=" << quotedProgram(QCoreApplication::applicationFilePath()) << "\n"
        << "Icon=vantril\n"
        << "Terminal=false\n"
        << "X-GNOME-Autostart-enabled=true\n";
    out.flush();
    if (!file.commit())
        return QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return std::nullopt;
}
