#pragma once

#include "actions/Actions.h"
#include "app/Hotkey.h"
#include "app/MenuModel.h"
#include "app/Preferences.h"
#include "app/Visibility.h"
#include "bar/BarHandlers.h"
#include "config/AppContext.h"
#include "config/ConfigDocument.h"
#include "dragdrop/DragState.h"

#include <QObject>
#include <QProcessEnvironment>
#include <QTimer>
#include <memory>

class BarPanel;
class BarView;
class ConfigWatcher;
class QMenu;
class QSystemTrayIcon;
class QVariantAnimation;
class Updater;
class FlyoutController;
class Platform;

/// The one owner of the program's run-time state: the configuration and its history, the bar and its
/// flyout, and the desktop services. The work itself lives in the collaborators it wires together.
///
/// The configuration is read once at launch: the document it starts from is both the one shown and
/// the one last saved, so reading it twice would only repeat the recovery and its log line.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// `updateFeed` empty: no updater and no update command.
    AppDelegate(std::unique_ptr<Platform> platform, const QUrl& updateFeed);
    ~AppDelegate() override;

    /// Loads the configuration, keeps a backup of it, shows the bar and applies the start-up commands.
    void finishLaunching(const QProcessEnvironment& environment);

    void reloadBar();
    void tapped(const ButtonSpec& spec, const QRectF& frameInBar);
    void tappedInFlyout(const ButtonSpec& spec);
    void closeFlyout();
    void removeButton(const ButtonSpec& spec);
    void toggleLock(const ButtonSpec& spec);
    void moveToGlobal(const ButtonSpec& spec);
    void showBackups();
    void editConfig();

    void dragMoved(const ButtonSpec& spec, const QPointF& point);
    void dragEnded(const ButtonSpec& spec, const QPointF& point);
    void fileHover(const QPointF& local);
    void fileHoverEnd();
    void fileDrop(const QList<QUrl>& urls, const QPointF& local);
    void moveToContext(const ButtonSpec& spec);
    const std::optional<ContextApp>& contextApp() const { return m_contextApp; }
    QList<ButtonSpec> contextButtons() const;

    void hide(bool manual);
    void show();
    void toggleBar();
    void toggleAutoHide();
    void toggleLaunchAtLogin();
    void toggleTrayIcon();
    void updateStatusItem();
    void updateHotkey();
    void checkForUpdates();
    bool hasUpdater() const { return m_updater != nullptr; }
    const Visibility& visibility() const { return m_visibility; }
    MenuModel::State menuState();
    void runMenuCommand(const MenuModel::Item& item);
    void showMenu(const QPoint& globalPos);

    ConfigDocument& document() { return *m_document; }
    Platform& platform() { return *m_platform; }
    Preferences& preferences() { return m_preferences; }
    FlyoutController& flyouts() { return *m_flyouts; }
    const BarHandlers& handlers() const { return m_handlers; }

    /// The origin a bar of `size` had on its screen when it was last moved, if any.
    std::optional<QPoint> savedOrigin(const QSize& size);
    void savePosition();

private:
    void createBar(bool top);
    void barMoved();
    void screensChanged();
    void watchScreens();
    void scheduleStartupMoves(const QProcessEnvironment& environment);
    void trackFrontApp(const QProcessEnvironment& environment);
    void adopt(const ContextApp& app);
    void clearFeedback();
    void visibilityTick();
    void fadeTo(double opacity, int milliseconds, std::function<void()> done);

    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<ConfigDocument> m_document;
    std::unique_ptr<Actions> m_actions;
    DragState m_drag;
    BarHandlers m_handlers;
    Preferences m_preferences;
    std::unique_ptr<BarPanel> m_panel;
    BarView* m_barView = nullptr;
    std::unique_ptr<FlyoutController> m_flyouts;
    std::unique_ptr<ConfigWatcher> m_watcher;
    QTimer m_saveTimer;
    bool m_lastExpandsUp = true;
    std::optional<ContextApp> m_contextApp;
    Visibility m_visibility;
    QTimer m_visibilityTimer;
    QVariantAnimation* m_fade = nullptr;
    double m_opacity = 1.0;
    std::unique_ptr<Hotkey> m_hotkey;
    std::unique_ptr<QMenu> m_barMenu;
    std::unique_ptr<QMenu> m_trayMenu;
    std::unique_ptr<QSystemTrayIcon> m_tray;
    Updater* m_updater = nullptr;
};
