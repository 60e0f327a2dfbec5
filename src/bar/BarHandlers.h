#pragma once

#include "config/Backups.h"
#include "config/BarConfig.h"

#include <QList>
#include <QPoint>
#include <QPointF>
#include <QRectF>
#include <QStringList>
#include <QUrl>
#include <functional>
#include <optional>

/// Everything a view may ask of the controller: views never change the configuration themselves.
/// Points are global screen positions; rectangles are chip frames in bar coordinates.
struct BarHandlers
{
    std::function<void(const ButtonSpec&, const QRectF&)> tap;
    std::function<void(const ButtonSpec&, const QPointF&)> dragMove;
    std::function<void(const ButtonSpec&, const QPointF&)> dragEnd;
    std::function<void(const ButtonSpec&)> remove;
    std::function<void(const ButtonSpec&)> edit;
    std::function<void(const std::optional<QString>&)> add;
    std::function<void()> newStack;
    std::function<void()> addContext;
    std::function<void(const ButtonSpec&)> moveToContext;
    std::function<void(const ButtonSpec&)> moveToGlobal;
    std::function<bool(const ButtonSpec&)> isContext;
    std::function<std::optional<QString>()> contextName;
    std::function<void(const ButtonSpec&)> tapInFlyout;
    std::function<bool()> isListing;
    std::function<void(const ButtonSpec&)> toggleLock;
    std::function<void(bool)> lockAll;
    std::function<QStringList()> presetNames;
    std::function<void(const QString&)> addPreset;
    std::function<bool()> canCheckForUpdates;
    std::function<void()> checkForUpdates;
    std::function<QList<BackupInfo>()> backupInfos;
    std::function<void(const QString&)> restoreBackup;
    std::function<void()> backupNow;
    std::function<void()> showBackups;
    std::function<QStringList()> appliedPresetNames;
    std::function<void(const QString&)> removePreset;
    std::function<bool()> autoHide;
    std::function<void()> toggleAutoHide;
    std::function<void()> hideBar;
    std::function<void()> toggleBar;
    std::function<bool()> barShown;
    std::function<bool()> trayIconShown;
    std::function<void()> toggleTrayIcon;
    /// A right click on a chip, on the bar or in a flyout: the button's menu is the caller's to show.
    std::function<void(const ButtonSpec&, const QPoint&)> chipMenu;
    std::function<bool()> canUndo;
    std::function<void()> undo;
    std::function<void(const QPointF&)> fileHover;
    std::function<void()> fileHoverEnd;
    std::function<void(const QList<QUrl>&, const QPointF&)> fileDrop;
    std::function<bool()> launchAtLogin;
    std::function<void()> toggleLaunchAtLogin;
    std::function<void()> editConfigFile;
    std::function<void()> quit;
};
