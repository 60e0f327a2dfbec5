#include "ShellMenus.h"

#include "app/AppDelegate.h"
#include "app/AppMenu.h"
#include "app/BarVisibility.h"
#include "app/TrayGlyph.h"
#include "config/Presets.h"
#include "platform/Platform.h"

#include <QApplication>
#include <QMenu>
#include <QSystemTrayIcon>

ShellMenus::ShellMenus(AppDelegate& app)
    : QObject(&app)
    , m_app(app)
    , m_barMenu(std::make_unique<QMenu>())
{}

ShellMenus::~ShellMenus() = default;

void ShellMenus::fill(QMenu& menu)
{
    AppMenu::fill<MenuModel::Item>(menu, MenuModel::populate(state()),
                                   [this](const MenuModel::Item& item) { run(item); });
}

void ShellMenus::showBarMenu(const QPoint& globalPos)
{
    fill(*m_barMenu);
    m_barMenu->popup(globalPos);
}

void ShellMenus::updateTrayIcon()
{
    if (!m_app.preferences().showStatusItem()) {
        m_tray.reset();
        // Later: the menu's own action may be what turned the icon off, and Qt uses the menu after it.
        if (QMenu* menu = m_trayMenu.release())
            menu->deleteLater();
        return;
    }
    if (m_tray)
        return;
    m_trayMenu = std::make_unique<QMenu>();
    connect(m_trayMenu.get(), &QMenu::aboutToShow, this, [this] { fill(*m_trayMenu); });
    m_tray = std::make_unique<QSystemTrayIcon>(TrayGlyph::icon());
    m_tray->setToolTip(QStringLiteral("Vantril"));
    m_tray->setContextMenu(m_trayMenu.get());
    m_tray->show();
}

void ShellMenus::toggleTrayIcon()
{
    m_app.preferences().setShowStatusItem(!m_app.preferences().showStatusItem());
    updateTrayIcon();
}

MenuModel::State ShellMenus::state()
{
    MenuModel::State state;
    state.barShown = m_app.barVisibility().isShown();
    state.contextName = m_app.contextApp() ? std::optional<QString>(m_app.contextApp()->name) : std::nullopt;
    state.canUndo = m_app.document().canUndo();
    for (const AppPreset& preset : Presets::all())
        state.presetNames.append(preset.name);
    state.appliedPresets = Presets::appliedNames(m_app.document().cfg());
    state.backups = Config::backupInfos();
    state.autoHide = m_app.preferences().autoHide();
    state.trayIcon = m_app.preferences().showStatusItem();
    state.launchAtLogin = m_app.platform().autostart().isEnabled();
    state.hasUpdater = m_app.hasUpdater();
    return state;
}

void ShellMenus::run(const MenuModel::Item& item)
{
    using Command = MenuModel::Command;
    switch (item.command) {
    case Command::ToggleBar:
        m_app.barVisibility().toggleBar();
        break;
    case Command::AddButton:
        m_app.openEditor(std::nullopt, std::nullopt, false);
        break;
    case Command::NewStack:
        m_app.openEditor(std::nullopt, std::nullopt, true);
        break;
    case Command::AddContextButton:
        m_app.openEditor(std::nullopt, QStringLiteral("@context"), false);
        break;
    case Command::Undo:
        m_app.document().undo();
        break;
    case Command::AddPreset:
        m_app.document().addPreset(item.argument);
        break;
    case Command::RemovePreset:
        m_app.document().removePreset(item.argument);
        break;
    case Command::BackupNow:
        m_app.document().backupNow();
        break;
    case Command::ShowBackups:
        m_app.showBackups();
        break;
    case Command::Restore:
        m_app.document().restore(item.argument);
        break;
    case Command::AutoHide:
        m_app.barVisibility().toggleAutoHide();
        break;
    case Command::ToggleTrayIcon:
        toggleTrayIcon();
        break;
    case Command::LaunchAtLogin:
        m_app.toggleLaunchAtLogin();
        break;
    case Command::EditConfig:
        m_app.editConfig();
        break;
    case Command::CheckForUpdates:
        m_app.checkForUpdates();
        break;
    case Command::Quit:
        QApplication::quit();
        break;
    case Command::None:
        break;
    }
}
