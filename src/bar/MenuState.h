#pragma once

#include "config/Backups.h"
#include "config/BarConfig.h"

#include <QList>
#include <QStringList>
#include <optional>

struct BarHandlers;

/// What the program's menu and a button's menu depend on, read from the views' callbacks at every
/// opening: neither menu keeps anything between two openings.
struct MenuState
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
    /// The button whose menu it is; empty in the program's menu.
    ButtonSpec button;
    bool inApplicationSet = false;

    /// What the handlers answer now; a missing handler leaves the default.
    static MenuState read(const BarHandlers& handlers, const ButtonSpec& button = {});
};
