#include "ItemMenu.h"

#include "bar/MenuCommands.h"
#include "bar/MenuFill.h"
#include "dragdrop/DragState.h"
#include "editor/ItemMenuModel.h"

#include <QMenu>

namespace {

template<typename Result, typename Function>
Result ask(const Function& function, Result fallback = Result())
{
    return function ? function() : fallback;
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
    MenuFill::fill(*menu, ItemMenuModel::populate(state),
                   [spec, &handlers](const MenuItem& item) { MenuCommands::run(item, spec, handlers); });
    menu->popup(globalPos);
}

} // namespace ItemMenu
