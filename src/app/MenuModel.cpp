#include "MenuModel.h"

namespace MenuModel {

namespace {

Item action(const QString& title, Command command, QString argument = {})
{
    return Item::action(title, command, std::move(argument));
}

} // namespace

QList<Item> populate(const State& state)
{
    QList<Item> items;
    items << action(state.barShown ? QStringLiteral("Hide bar") : QStringLiteral("Show bar"),
                    Command::ToggleBar)
          << Item::separator() << action(QStringLiteral("Add button…"), Command::AddButton)
          << action(QStringLiteral("New stack…"), Command::NewStack);
    if (state.contextName)
        items << action(QStringLiteral("Add button for %1…").arg(*state.contextName),
                        Command::AddContextButton);
    if (state.canUndo)
        items << action(QStringLiteral("Undo last change"), Command::Undo);
    items << Item::separator();

    QList<Item> add;
    for (const QString& name : state.presetNames)
        add << action(name, Command::AddPreset, name);
    items << Item::menu(QStringLiteral("Add app preset"), add);
    if (!state.appliedPresets.isEmpty()) {
        QList<Item> remove;
        for (const QString& name : state.appliedPresets)
            remove << action(name, Command::RemovePreset, name);
        items << Item::menu(QStringLiteral("Remove app preset"), remove);
    }
    QList<Item> restore;
    for (const BackupInfo& backup : state.backups)
        restore << action(backup.label, Command::Restore, backup.id);
    items << Item::menu(QStringLiteral("Backups"),
                        {action(QStringLiteral("Back up now"), Command::BackupNow),
                         action(QStringLiteral("Show backups folder"), Command::ShowBackups),
                         Item::menu(QStringLiteral("Restore"), restore)});

    items << Item::toggle(QStringLiteral("Auto-hide"), Command::AutoHide, state.autoHide)
          << Item::toggle(QStringLiteral("Show icon in system tray"), Command::ToggleTrayIcon, state.trayIcon)
          << Item::toggle(QStringLiteral("Launch at Login"), Command::LaunchAtLogin, state.launchAtLogin)
          << action(QStringLiteral("Edit config file"), Command::EditConfig);
    if (state.hasUpdater)
        items << action(QStringLiteral("Check for Updates…"), Command::CheckForUpdates);
    items << action(QStringLiteral("Quit Vantril"), Command::Quit);
    return items;
}

} // namespace MenuModel
