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

/// The autostart entry made from the program's desktop entry in the XDG data folders, if it is installed.
std::optional<QByteArray> installedEntry()
{
    const QString installed =
        QStandardPaths::locate(QStandardPaths::ApplicationsLocation, QStringLiteral("vantril.desktop"));
    if (installed.isEmpty())
        return std::nullopt;
    const std::optional<QByteArray> entry = readDesktopEntryFile(installed);
    return entry ? autostartEntryFrom(*entry) : std::nullopt;
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
        << "Exec=" << desktopEntryExecArgument(QCoreApplication::applicationFilePath()) << "\n"
        << "Icon=vantril\n"
        << "Terminal=false\n"
        << "X-GNOME-Autostart-enabled=true\n";
    out.flush();
    if (!file.commit())
        return QStringLiteral("cannot write %1: %2").arg(path, file.errorString());
    return std::nullopt;
}
