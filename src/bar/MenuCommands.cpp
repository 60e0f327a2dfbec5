#include "MenuCommands.h"

namespace {

template<typename Function, typename... Args>
void call(const Function& function, Args&&... args)
{
    if (function)
        function(std::forward<Args>(args)...);
}

} // namespace

namespace MenuCommands {

void run(const MenuItem& item, const ButtonSpec& chip, const BarHandlers& h)
{
    switch (item.command) {
    case MenuCommand::Edit:
        return call(h.edit, chip);
    case MenuCommand::ToggleLock:
        return call(h.toggleLock, chip);
    case MenuCommand::Remove:
        return call(h.remove, chip);
    case MenuCommand::AddToStack:
        return call(h.add, std::optional<QString>(item.argument));
    case MenuCommand::AddButton:
        return call(h.add, std::optional<QString>());
    case MenuCommand::NewStack:
        return call(h.newStack);
    case MenuCommand::AddContextButton:
        return call(h.addContext);
    case MenuCommand::MoveToContext:
        return call(h.moveToContext, chip);
    case MenuCommand::MoveToGlobal:
        return call(h.moveToGlobal, chip);
    case MenuCommand::LockAll:
        return call(h.lockAll, true);
    case MenuCommand::UnlockAll:
        return call(h.lockAll, false);
    case MenuCommand::AddPreset:
        return call(h.addPreset, item.argument);
    case MenuCommand::RemovePreset:
        return call(h.removePreset, item.argument);
    case MenuCommand::BackupNow:
        return call(h.backupNow);
    case MenuCommand::ShowBackups:
        return call(h.showBackups);
    case MenuCommand::Restore:
        return call(h.restoreBackup, item.argument);
    case MenuCommand::Undo:
        return call(h.undo);
    case MenuCommand::AutoHide:
        return call(h.toggleAutoHide);
    case MenuCommand::LaunchAtLogin:
        return call(h.toggleLaunchAtLogin);
    case MenuCommand::EditConfig:
        return call(h.editConfigFile);
    case MenuCommand::CheckForUpdates:
        return call(h.checkForUpdates);
    case MenuCommand::HideBar:
        return call(h.hideBar);
    case MenuCommand::ToggleBar:
        return call(h.toggleBar);
    case MenuCommand::ToggleTrayIcon:
        return call(h.toggleTrayIcon);
    case MenuCommand::Quit:
        return call(h.quit);
    case MenuCommand::None:
        return;
    }
}

} // namespace MenuCommands
