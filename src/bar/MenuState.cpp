#include "MenuState.h"

#include "bar/BarHandlers.h"

namespace {

template<typename Result, typename Function, typename... Args>
void ask(Result& into, const Function& function, const Args&... args)
{
    if (function)
        into = function(args...);
}

} // namespace

MenuState MenuState::read(const BarHandlers& handlers, const ButtonSpec& button)
{
    MenuState state;
    ask(state.barShown, handlers.barShown);
    ask(state.contextName, handlers.contextName);
    ask(state.canUndo, handlers.canUndo);
    ask(state.presetNames, handlers.presetNames);
    ask(state.appliedPresets, handlers.appliedPresetNames);
    ask(state.backups, handlers.backupInfos);
    ask(state.autoHide, handlers.autoHide);
    ask(state.trayIcon, handlers.trayIconShown);
    ask(state.launchAtLogin, handlers.launchAtLogin);
    ask(state.hasUpdater, handlers.canCheckForUpdates);
    state.button = button;
    ask(state.inApplicationSet, handlers.isContext, button);
    return state;
}
