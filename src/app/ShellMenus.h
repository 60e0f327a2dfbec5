#pragma once

#include "app/MenuModel.h"
#include "bar/BarHandlers.h"

#include <QObject>
#include <QPoint>
#include <memory>

class Preferences;
class QMenu;
class QSystemTrayIcon;

/// The program's menu, from a right click on the bar and from the tray icon, rebuilt at every opening.
class ShellMenus : public QObject
{
    Q_OBJECT

public:
    /// What the menu shows and does comes from `handlers`, as a button's menu does.
    ShellMenus(Preferences& preferences, const BarHandlers& handlers, QObject* parent = nullptr);
    ~ShellMenus() override;

    void showBarMenu(const QPoint& globalPos);
    /// Shows or removes the tray icon as the preference says.
    void updateTrayIcon();
    void toggleTrayIcon();

private:
    void fill(QMenu& menu);

    Preferences& m_preferences;
    const BarHandlers& m_handlers;
    std::unique_ptr<QMenu> m_barMenu;
    std::unique_ptr<QMenu> m_trayMenu;
    std::unique_ptr<QSystemTrayIcon> m_tray;
};
