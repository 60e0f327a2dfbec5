#pragma once

#include <QDBusArgument>
#include <QList>
#include <QMetaType>
#include <QString>
#include <QVariantMap>

/// One entry of the global-shortcuts portal's shortcut lists (D-Bus type "(sa{sv})"): an id and its
/// properties, such as "description", "preferred_trigger" or, in answers, "trigger_description".
struct PortalShortcut
{
    QString id;
    QVariantMap properties;

    /// Reads a list that arrived inside a variant; empty when it is not one.
    static QList<PortalShortcut> listFrom(const QVariant& value);
    /// Teaches QtDBus the type; needed once before the first list is sent.
    static void registerTypes();
};

using PortalShortcutList = QList<PortalShortcut>;

QDBusArgument& operator<<(QDBusArgument& argument, const PortalShortcut& shortcut);
const QDBusArgument& operator>>(const QDBusArgument& argument, PortalShortcut& shortcut);

Q_DECLARE_METATYPE(PortalShortcut)
