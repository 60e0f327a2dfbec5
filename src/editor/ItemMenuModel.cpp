#include "ItemMenuModel.h"

namespace ItemMenuModel {

namespace {

Item action(const QString& title, Command command, QString argument = {})
{
    return Item::action(title, command, std::move(argument));
}

} // namespace

QList<Item> populate(const State& state)
{
    const ButtonSpec& button = state.button;
    QList<Item> items;
    items << action(QStringLiteral("Edit “%1”…").arg(button.title), Command::Edit)
          << action(button.isLocked() ? QStringLiteral("Unlock") : QStringLiteral("Lock"),
                    Command::ToggleLock)
          << action(QStringLiteral("Remove"), Command::Remove) << Item{};
    if (button.isGroup())
        items << action(QStringLiteral("Add button to this stack…"), Command::AddToStack, button.title);
    items << action(QStringLiteral("New stack…"), Command::NewStack);
    if (state.inApplicationSet)
        items << action(QStringLiteral("Move to shared bar"), Command::MoveToGlobal);
    else if (state.contextName)
        items << action(QStringLiteral("Move to %1’s buttons").arg(*state.contextName),
                        Command::MoveToContext);
    items << Item{} << action(QStringLiteral("Lock all"), Command::LockAll)
          << action(QStringLiteral("Unlock all"), Command::UnlockAll);

    items << presetAndBackupItems(state.presetNames, state.appliedPresets, state.backups);
    if (state.canUndo)
        items << action(QStringLiteral("Undo last change"), Command::Undo);

    items << Item{} << Item::toggle(QStringLiteral("Auto-hide"), Command::AutoHide, state.autoHide)
          << Item::toggle(QStringLiteral("Launch at Login"), Command::LaunchAtLogin, state.launchAtLogin)
          << action(QStringLiteral("Edit config file"), Command::EditConfig);
    if (state.hasUpdater)
        items << action(QStringLiteral("Check for Updates…"), Command::CheckForUpdates);
    items << action(QStringLiteral("Hide bar"), Command::HideBar)
          << action(QStringLiteral("Quit Vantril"), Command::Quit);
    return items;
}

} // namespace ItemMenuModel
