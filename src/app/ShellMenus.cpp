#include "ShellMenus.h"

#include "app/Preferences.h"
#include "app/TrayGlyph.h"
#include "bar/MenuCommands.h"
#include "bar/MenuFill.h"
#include "dragdrop/DragState.h"

#include <QMenu>
#include <QSystemTrayIcon>

ShellMenus::ShellMenus(Preferences& preferences, const BarHandlers& handlers, const DragState& drag,
                       QObject* parent)
    : QObject(parent)
    , m_preferences(preferences)
    , m_handlers(handlers)
    , m_drag(drag)
    , m_barMenu(std::make_unique<QMenu>())
{}

ShellMenus::~ShellMenus() = default;

void ShellMenus::fill(QMenu& menu)
{
    MenuFill::fill(menu, MenuModel::populate(state()), [this](const MenuItem& item) { run(item); });
}

void ShellMenus::showBarMenu(const QPoint& globalPos)
{
    fill(*m_barMenu);
    m_barMenu->popup(globalPos);
}

void ShellMenus::updateTrayIcon()
{
    if (!m_preferences.showStatusItem()) {
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
    m_preferences.setShowStatusItem(!m_preferences.showStatusItem());
    updateTrayIcon();
}

MenuModel::State ShellMenus::state()
{
    const auto ask = [](const auto& function, auto fallback) { return function ? function() : fallback; };
    MenuModel::State state;
    state.barShown = ask(m_handlers.barShown, true);
    state.contextName = ask(m_handlers.contextName, std::optional<QString>());
    state.canUndo = m_drag.canUndo();
    state.presetNames = ask(m_handlers.presetNames, QStringList());
    state.appliedPresets = ask(m_handlers.appliedPresetNames, QStringList());
    state.backups = ask(m_handlers.backupInfos, QList<BackupInfo>());
    state.autoHide = m_preferences.autoHide();
    state.trayIcon = m_preferences.showStatusItem();
    state.launchAtLogin = ask(m_handlers.launchAtLogin, false);
    state.hasUpdater = ask(m_handlers.canCheckForUpdates, false);
    return state;
}

void ShellMenus::run(const MenuItem& item)
{
    BarHandlers handlers = m_handlers;
    handlers.toggleTrayIcon = [this] { toggleTrayIcon(); };
    MenuCommands::run(item, ButtonSpec(), handlers);
}
