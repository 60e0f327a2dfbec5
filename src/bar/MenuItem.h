#pragma once

#include "config/Backups.h"

#include <QList>
#include <QString>
#include <QStringList>
#include <optional>

/// Every command the program's menu and a button's menu offer; one list, so that one dispatcher runs
/// them whichever menu they came from.
enum class MenuCommand
{
    None,
    Edit,
    ToggleLock,
    Remove,
    AddToStack, ///< argument: the stack's title
    NewStack,
    MoveToContext,
    MoveToGlobal,
    LockAll,
    UnlockAll,
    AddPreset,    ///< argument: the preset's name
    RemovePreset, ///< argument: the preset's name
    BackupNow,
    ShowBackups,
    Restore, ///< argument: the backup's path
    Undo,
    AutoHide,
    LaunchAtLogin,
    EditConfig,
    CheckForUpdates,
    HideBar,
    Quit,
    ToggleBar,
    AddButton,
    AddContextButton,
    ToggleTrayIcon,
};

/// One entry of a menu model: a command with its argument and check mark, a submenu, or a separator.
struct MenuItem
{
    QString title; ///< empty for a separator
    MenuCommand command = MenuCommand::None;
    QString argument;
    std::optional<bool> checked;
    QList<MenuItem> submenu;

    bool isSeparator() const { return title.isEmpty(); }
    bool operator==(const MenuItem&) const = default;

    static MenuItem action(const QString& title, MenuCommand command, QString argument = {})
    {
        return {title, command, std::move(argument), std::nullopt, {}};
    }
    static MenuItem toggle(const QString& title, MenuCommand command, bool on)
    {
        return {title, command, {}, on, {}};
    }
    static MenuItem menu(const QString& title, QList<MenuItem> items)
    {
        return {title, MenuCommand::None, {}, std::nullopt, std::move(items)};
    }
    static MenuItem separator() { return {}; }
};

/// The entries both the program's menu and a button's menu offer: adding and removing presets, and the
/// backups.
QList<MenuItem> presetAndBackupItems(const QStringList& presets, const QStringList& applied,
                                     const QList<BackupInfo>& backups);
