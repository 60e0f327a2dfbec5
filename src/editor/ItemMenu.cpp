#include "ItemMenu.h"

#include "app/AppMenu.h"
#include "dragdrop/DragState.h"
#include "editor/ItemMenuModel.h"

#include <QMenu>

namespace {

template<typename Result, typename Function>
Result ask(const Function& function, Result fallback = Result())
{
    return function ? function() : fallback;
}

void run(const ItemMenuModel::Item& item, const ButtonSpec& spec, const BarHandlers& h)
{
    using Command = ItemMenuModel::Command;
    const auto call = [](const auto& function, auto&&... args) {
        if (function)
            function(std::forward<decltype(args)>(args)...);
    };
    switch (item.command) {
    case Command::Edit:
        call(h.edit, spec);
        break;
    case Command::ToggleLock:
        call(h.toggleLock, spec);
        break;
    case Command::Remove:
        call(h.remove, spec);
        break;
    case Command::AddToStack:
        call(h.add, std::optional<QString>(item.argument));
        break;
    case Command::NewStack:
        call(h.newStack);
        break;
    case Command::MoveToContext:
        call(h.moveToContext, spec);
        break;
    case Command::MoveToGlobal:
        call(h.moveToGlobal, spec);
        break;
    case Command::LockAll:
        call(h.lockAll, true);
        break;
    case Command::UnlockAll:
        call(h.lockAll, false);
        break;
    case Command::AddPreset:
        call(h.addPreset, item.argument);
        break;
    case Command::RemovePreset:
        call(h.removePreset, item.argument);
        break;
    case Command::BackupNow:
        call(h.backupNow);
        break;
    case Command::ShowBackups:
        call(h.showBackups);
        break;
    case Command::Restore:
        call(h.restoreBackup, item.argument);
        break;
    case Command::Undo:
        call(h.undo);
        break;
    case Command::AutoHide:
        call(h.toggleAutoHide);
        break;
    case Command::LaunchAtLogin:
        call(h.toggleLaunchAtLogin);
        break;
    case Command::EditConfig:
        call(h.editConfigFile);
        break;
    case Command::CheckForUpdates:
        call(h.checkForUpdates);
        break;
    case Command::HideBar:
        call(h.hideBar);
        break;
    case Command::Quit:
        call(h.quit);
        break;
    case Command::None:
        break;
    }
}

} // namespace

namespace ItemMenu {

void popup(const ButtonSpec& spec, const BarHandlers& handlers, const DragState& drag,
           const QPoint& globalPos)
{
    ItemMenuModel::State state;
    state.button = spec;
    state.inApplicationSet = handlers.isContext && handlers.isContext(spec);
    state.contextName = ask<std::optional<QString>>(handlers.contextName);
    state.canUndo = drag.canUndo();
    state.presetNames = ask<QStringList>(handlers.presetNames);
    state.appliedPresets = ask<QStringList>(handlers.appliedPresetNames);
    state.backups = ask<QList<BackupInfo>>(handlers.backupInfos);
    state.autoHide = ask<bool>(handlers.autoHide);
    state.launchAtLogin = ask<bool>(handlers.launchAtLogin);
    state.hasUpdater = ask<bool>(handlers.canCheckForUpdates);

    auto* menu = new QMenu;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // The chip that opened the menu may be rebuilt away by the command; the menu keeps its own copy.
    AppMenu::fill<ItemMenuModel::Item>(
        *menu, ItemMenuModel::populate(state),
        [spec, &handlers](const ItemMenuModel::Item& item) { run(item, spec, handlers); });
    menu->popup(globalPos);
}

} // namespace ItemMenu
