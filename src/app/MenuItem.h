#pragma once

#include "config/Backups.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

/// One entry of a menu model: a command with its argument and check mark, a submenu, or a separator.
template<typename Command>
struct MenuItem
{
    QString title; ///< empty for a separator
    Command command = Command::None;
    QString argument;
    std::optional<bool> checked;
    QList<MenuItem> submenu;

    bool isSeparator() const { return title.isEmpty(); }
    bool operator==(const MenuItem&) const = default;

    static MenuItem action(const QString& title, Command command, QString argument = {})
    {
        return {title, command, std::move(argument), std::nullopt, {}};
    }
    static MenuItem toggle(const QString& title, Command command, bool on)
    {
        return {title, command, {}, on, {}};
    }
    static MenuItem menu(const QString& title, QList<MenuItem> items)
    {
        return {title, Command::None, {}, std::nullopt, std::move(items)};
    }
    static MenuItem separator() { return {}; }
};

/// The entries both the program's menu and a button's menu offer: adding and removing presets, and the
/// backups. `Command` names AddPreset, RemovePreset, BackupNow, ShowBackups and Restore.
template<typename Command>
QList<MenuItem<Command>> presetAndBackupItems(const QStringList& presets, const QStringList& applied,
                                              const QList<BackupInfo>& backups)
{
    using Item = MenuItem<Command>;
    QList<Item> add;
    for (const QString& name : presets)
        add << Item::action(name, Command::AddPreset, name);
    QList<Item> items{Item::menu(QStringLiteral("Add app preset"), add)};
    if (!applied.isEmpty()) {
        QList<Item> remove;
        for (const QString& name : applied)
            remove << Item::action(name, Command::RemovePreset, name);
        items << Item::menu(QStringLiteral("Remove app preset"), remove);
    }
    QList<Item> restore;
    for (const BackupInfo& backup : backups)
        restore << Item::action(backup.label, Command::Restore, backup.id);
    items << Item::menu(QStringLiteral("Backups"),
                        {Item::action(QStringLiteral("Back up now"), Command::BackupNow),
                         Item::action(QStringLiteral("Show backups folder"), Command::ShowBackups),
                         Item::menu(QStringLiteral("Restore"), restore)});
    return items;
}
