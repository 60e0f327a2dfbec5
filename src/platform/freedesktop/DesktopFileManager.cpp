#include "DesktopFileManager.h"

#include "platform/Launcher.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QUrl>

namespace {

const auto fileManagerService = QStringLiteral("org.freedesktop.FileManager1");

bool fileManagerOnBus(const QDBusConnection& bus)
{
    const QDBusConnectionInterface* names = bus.interface();
    if (!names)
        return false;
    return names->isServiceRegistered(fileManagerService).value() ||
           names->activatableServiceNames().value().contains(fileManagerService);
}

} // namespace

DesktopFileManager::DesktopFileManager(Launcher& launcher)
    : m_launcher(launcher)
{}

QString DesktopFileManager::desktopFolder()
{
    const QString xdg = QStandardPaths::writableLocation(QStandardPaths::DesktopLocation);
    if (!xdg.isEmpty() && QFileInfo(xdg).isDir())
        return xdg;
    const QString plain = QDir::home().filePath(QStringLiteral("Desktop"));
    if (QFileInfo(plain).isDir())
        return plain;
    return QDir::homePath();
}

void DesktopFileManager::reveal(const QString& path)
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (bus.isConnected() && fileManagerOnBus(bus)) {
        QDBusMessage call = QDBusMessage::createMethodCall(fileManagerService,
                                                           QStringLiteral("/org/freedesktop/FileManager1"),
                                                           fileManagerService, QStringLiteral("ShowItems"));
        call << QStringList{QUrl::fromLocalFile(path).toString()} << QString();
        bus.asyncCall(call);
        return;
    }
    m_launcher.open(QUrl::fromLocalFile(QFileInfo(path).absolutePath()));
}
