#include "MenuModel.h"

namespace MenuModel {

QList<Item> populate(const State& state)
{
    QList<Item> items;
    items << Item::action(state.barShown ? QStringLiteral("Hide bar") : QStringLiteral("Show bar"),
                          Command::ToggleBar)
          << Item::separator() << Item::action(QStringLiteral("Add button…"), Command::AddButton)
          << Item::action(QStringLiteral("New stack…"), Command::NewStack);
    if (state.contextName)
        items << Item::action(QStringLiteral("Add button for %1…").arg(*state.contextName),
                              Command::AddContextButton);
    if (state.canUndo)
        items << Item::action(QStringLiteral("Undo last change"), Command::Undo);
    items << Item::separator();

    items << presetAndBackupItems(state.presetNames, state.appliedPresets, state.backups);

    items << Item::toggle(QStringLiteral("Auto-hide"), Command::AutoHide, state.autoHide)
          << Item::toggle(QStringLiteral("Show icon in system tray"), Command::ToggleTrayIcon, state.trayIcon)
          << Item::toggle(QStringLiteral("Launch at Login"), Command::LaunchAtLogin, state.launchAtLogin)
          << Item::action(QStringLiteral("Edit config file"), Command::EditConfig);
    if (state.hasUpdater)
        items << Item::action(QStringLiteral("Check for Updates…"), Command::CheckForUpdates);
    items << Item::action(QStringLiteral("Quit Vantril"), Command::Quit);
    return items;
}

} // namespace MenuModel
