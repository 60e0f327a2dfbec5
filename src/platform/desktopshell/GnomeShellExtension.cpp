#include "GnomeShellExtension.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QVariantMap>

namespace GnomeShellExtension {

QString uuid()
{
    return QStringLiteral("vantril@vantril.github.io");
}

bool isActive()
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        QStringLiteral("org.gnome.Shell"), QStringLiteral("/org/gnome/Shell"),
        QStringLiteral("org.gnome.Shell.Extensions"), QStringLiteral("GetExtensionInfo"));
    call << uuid();
    call.setAutoStartService(false);
    const QDBusReply<QVariantMap> info = QDBusConnection::sessionBus().call(call, QDBus::Block, 1000);
    // GNOME Shell's extension states: 1 is ENABLED (called ACTIVE from GNOME 45 on, same number); an
    // unknown uuid answers an empty map.
    return info.isValid() && info.value().value(QStringLiteral("state")).toInt() == 1;
}

} // namespace GnomeShellExtension
