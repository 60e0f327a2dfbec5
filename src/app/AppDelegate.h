#pragma once

#include "actions/Actions.h"
#include "app/Preferences.h"
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
    explicit AppDelegate(std::unique_ptr<Platform> platform);
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
};
