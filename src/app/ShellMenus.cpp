#include "ShellMenus.h"

#include "app/Preferences.h"
#include "app/TrayGlyph.h"
#include "bar/MenuCommands.h"
#include "bar/MenuFill.h"

#include <QMenu>
#include <QSystemTrayIcon>

ShellMenus::ShellMenus(Preferences& preferences, const BarHandlers& handlers, QObject* parent)
    : QObject(parent)
    , m_preferences(preferences)
    , m_handlers(handlers)
{}

ShellMenus::~ShellMenus() = default;

void ShellMenus::fill(QMenu& menu)
{
    MenuFill::fill(menu, MenuModel::populate(MenuState::read(m_handlers)),
                   [this](const MenuItem& item) { MenuCommands::run(item, ButtonSpec(), m_handlers); });
}

void ShellMenus::showBarMenu(const QPoint& globalPos)
{
    // Made on first use: a menu is a window, and the bar shows sooner without making one it may not need.
    if (!m_barMenu)
        m_barMenu = std::make_unique<QMenu>();
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
