#pragma once

#include "actions/Actions.h"
#include "app/Hotkey.h"
#include "app/Preferences.h"
#include "bar/BarHandlers.h"
#include "config/AppContext.h"
#include "config/ConfigDocument.h"
#include "dragdrop/DragState.h"
#include "editor/EditView.h"

#include <QObject>
#include <QPointer>
#include <QProcessEnvironment>
#include <QTimer>
#include <memory>

class BarPanel;
class BarView;
class BarVisibility;
class ConfigWatcher;
class ShellMenus;
class Updater;
class FlyoutController;
class Platform;
class RunQuestionBox;

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

    /// Loads the configuration and keeps a backup of it. Before finishLaunching, so that a command for
    /// the starting bar can be checked against the buttons before any window shows.
    void loadConfiguration();
    /// Shows the bar and applies the start-up commands.
    void finishLaunching(const QProcessEnvironment& environment);

    void reloadBar();
    void tapped(const ButtonSpec& spec, const QRectF& frameInBar);
    void tappedInFlyout(const ButtonSpec& spec);
    void overflowTapped(const QList<ButtonSpec>& items, const QRectF& frameInBar);
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

    void toggleLaunchAtLogin();
    void updateHotkey();
    void checkForUpdates();
    bool hasUpdater() const { return m_updater != nullptr; }
    BarVisibility& barVisibility() { return *m_visibility; }

    /// Opens the button editor, or brings forward the one that is open. `parent` is a stack's title, or
    /// "@context" for the set of the application in front; none puts a new button on the bar.
    void openEditor(const std::optional<ButtonSpec>& editing, const std::optional<QString>& parent,
                    bool newStack);
    EditView* editor() const { return m_editor; }

    ConfigDocument& document() { return *m_document; }
    Platform& platform() { return *m_platform; }
    Preferences& preferences() { return m_preferences; }
    FlyoutController& flyouts() { return *m_flyouts; }
    const BarHandlers& handlers() const { return m_handlers; }
    const DragState& drag() const { return m_drag; }

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
    void saveEdited(ButtonSpec edited, const std::optional<QString>& oldTitle,
                    const std::optional<QString>& parent);

    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<ConfigDocument> m_document;
    std::unique_ptr<RunQuestionBox> m_runQuestion;
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
    /// How wide the bar could be on its screen when it was last rebuilt; another screen means a rebuild.
    int m_lastWidthBudget = 0;
    std::optional<ContextApp> m_contextApp;
    BarVisibility* m_visibility = nullptr;
    ShellMenus* m_menus = nullptr;
    std::unique_ptr<Hotkey> m_hotkey;
    Updater* m_updater = nullptr;
    QPointer<EditView> m_editor;
};
