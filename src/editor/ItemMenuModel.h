#pragma once

#include "app/MenuItem.h"
#include "config/Backups.h"
#include "config/BarConfig.h"

#include <QList>
#include <QStringList>
#include <optional>

/// The menu of one button (a chip on the bar or a row in a stack's flyout), as plain data.
namespace ItemMenuModel {

enum class Command
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
};

using Item = MenuItem<Command>;

struct State
{
    ButtonSpec button;
    bool inApplicationSet = false;
    std::optional<QString> contextName;
    bool canUndo = false;
    QStringList presetNames;
    QStringList appliedPresets;
    QList<BackupInfo> backups;
    bool autoHide = false;
    bool launchAtLogin = false;
    bool hasUpdater = false;
};

QList<Item> populate(const State& state);

} // namespace ItemMenuModel
