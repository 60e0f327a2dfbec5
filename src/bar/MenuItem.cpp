#include "MenuItem.h"

QList<MenuItem> presetAndBackupItems(const QStringList& presets, const QStringList& applied,
                                     const QList<BackupInfo>& backups)
{
    QList<MenuItem> add;
    for (const QString& name : presets)
        add << MenuItem::action(name, MenuCommand::AddPreset, name);
    QList<MenuItem> items{MenuItem::menu(QStringLiteral("Add app preset"), add)};
    if (!applied.isEmpty()) {
        QList<MenuItem> remove;
        for (const QString& name : applied)
            remove << MenuItem::action(name, MenuCommand::RemovePreset, name);
        items << MenuItem::menu(QStringLiteral("Remove app preset"), remove);
    }
    QList<MenuItem> restore;
    for (const BackupInfo& backup : backups)
        restore << MenuItem::action(backup.label, MenuCommand::Restore, backup.id);
    items << MenuItem::menu(
        QStringLiteral("Backups"),
        {MenuItem::action(QStringLiteral("Back up now"), MenuCommand::BackupNow),
         MenuItem::action(QStringLiteral("Show backups folder"), MenuCommand::ShowBackups),
         MenuItem::menu(QStringLiteral("Restore"), restore)});
    return items;
}
