#include "PortalShortcut.h"

#include <QDBusMetaType>

void PortalShortcut::registerTypes()
{
    static const bool once = [] {
        qDBusRegisterMetaType<PortalShortcut>();
        qDBusRegisterMetaType<PortalShortcutList>();
        return true;
    }();
    Q_UNUSED(once);
}

QList<PortalShortcut> PortalShortcut::listFrom(const QVariant& value)
{
    registerTypes();
    if (value.metaType() == QMetaType::fromType<PortalShortcutList>())
        return value.value<PortalShortcutList>();
    if (value.metaType() != QMetaType::fromType<QDBusArgument>())
        return {};
    const auto argument = value.value<QDBusArgument>();
    if (argument.currentSignature() != QStringLiteral("a(sa{sv})"))
        return {};
    PortalShortcutList list;
    argument >> list;
    return list;
}

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument << shortcut.id << shortcut.properties;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut)
{
    argument.beginStructure();
    argument >> shortcut.id >> shortcut.properties;
    argument.endStructure();
    return argument;
}
