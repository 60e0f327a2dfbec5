#include "ItemMenuModel.h"

namespace ItemMenuModel {

QList<Item> populate(const State& state)
{
    const ButtonSpec& button = state.button;
    QList<Item> items;
    items << Item::action(QStringLiteral("Edit “%1”…").arg(button.title), Command::Edit)
          << Item::action(button.isLocked() ? QStringLiteral("Unlock") : QStringLiteral("Lock"),
                          Command::ToggleLock)
          << Item::action(QStringLiteral("Remove"), Command::Remove) << Item{};
    if (button.isGroup())
        items << Item::action(QStringLiteral("Add button to this stack…"), Command::AddToStack, button.title);
    items << Item::action(QStringLiteral("New stack…"), Command::NewStack);
    if (state.inApplicationSet)
        items << Item::action(QStringLiteral("Move to shared bar"), Command::MoveToGlobal);
    else if (state.contextName)
        items << Item::action(QStringLiteral("Move to %1’s buttons").arg(*state.contextName),
                              Command::MoveToContext);
    items << Item{} << Item::action(QStringLiteral("Lock all"), Command::LockAll)
          << Item::action(QStringLiteral("Unlock all"), Command::UnlockAll);

    items << presetAndBackupItems(state.presetNames, state.appliedPresets, state.backups);
    if (state.canUndo)
        items << Item::action(QStringLiteral("Undo last change"), Command::Undo);

    items << Item{} << Item::toggle(QStringLiteral("Auto-hide"), Command::AutoHide, state.autoHide)
          << Item::toggle(QStringLiteral("Launch at Login"), Command::LaunchAtLogin, state.launchAtLogin)
          << Item::action(QStringLiteral("Edit config file"), Command::EditConfig);
    if (state.hasUpdater)
        items << Item::action(QStringLiteral("Check for Updates…"), Command::CheckForUpdates);
    items << Item::action(QStringLiteral("Hide bar"), Command::HideBar)
          << Item::action(QStringLiteral("Quit Vantril"), Command::Quit);
    return items;
}

} // namespace ItemMenuModel
