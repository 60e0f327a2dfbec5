#pragma once

#include "bar/MenuItem.h"
#include "config/Backups.h"
#include "config/BarConfig.h"

#include <QList>
#include <QStringList>
#include <optional>

/// The menu of one button (a chip on the bar or a row in a stack's flyout), as plain data.
namespace ItemMenuModel {

using Command = MenuCommand;
using Item = MenuItem;

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
