#pragma once

#include "app/MenuModel.h"

#include <QObject>
#include <QPoint>
#include <memory>

class AppDelegate;
class QMenu;
class QSystemTrayIcon;

/// The program's menu, from a right click on the bar and from the tray icon, rebuilt at every opening.
class ShellMenus : public QObject
{
    Q_OBJECT

public:
    explicit ShellMenus(AppDelegate& app);
    ~ShellMenus() override;

    void showBarMenu(const QPoint& globalPos);
    /// Shows or removes the tray icon as the preference says.
    void updateTrayIcon();
    void toggleTrayIcon();

private:
    MenuModel::State state();
    void run(const MenuModel::Item& item);
    void fill(QMenu& menu);

    AppDelegate& m_app;
    std::unique_ptr<QMenu> m_barMenu;
    std::unique_ptr<QMenu> m_trayMenu;
    std::unique_ptr<QSystemTrayIcon> m_tray;
};
