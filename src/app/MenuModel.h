#pragma once

#include "bar/MenuItem.h"
#include "config/Backups.h"

#include <QList>
#include <QStringList>
#include <optional>

/// The program's menu, shown from the bar and from the tray icon, as plain data built afresh at every
/// opening from what is true at that moment.
namespace MenuModel {

using Command = MenuCommand;
using Item = MenuItem;

/// What the menu depends on.
struct State
{
    bool barShown = true;
    std::optional<QString> contextName;
    bool canUndo = false;
    QStringList presetNames;
    QStringList appliedPresets;
    QList<BackupInfo> backups;
    bool autoHide = false;
    bool trayIcon = true;
    bool launchAtLogin = false;
    bool hasUpdater = false;
};

QList<Item> populate(const State& state);

} // namespace MenuModel
