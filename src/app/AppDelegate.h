#pragma once

#include "app/Preferences.h"
#include "bar/BarHandlers.h"
#include "dragdrop/DragState.h"

#include <QObject>
#include <QProcessEnvironment>
#include <QUrl>
#include <memory>

class Actions;
class BarPlacement;
class BarVisibility;
class ButtonCommands;
class ConfigDocument;
class ConfigSession;
class ContextTracker;
class EditorLauncher;
class FlyoutController;
class Hotkey;
class Platform;
class RunQuestionBox;
class ShellMenus;
class TapRunner;
class Updater;

/// Builds the program's parts and connects them: the configuration session, the application in front,
/// the bar and its place, its flyouts and menus, the button commands, the editor, and the visibility
/// rules. The work itself is the parts'.
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

    ConfigDocument& document();
    BarVisibility& barVisibility() { return *m_visibility; }
    TapRunner& taps() { return *m_taps; }
    const DragState& drag() const { return m_drag; }

private:
    void connectParts();
    void updateHotkey();

    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<RunQuestionBox> m_runQuestion;
    std::unique_ptr<Actions> m_actions;
    DragState m_drag;
    BarHandlers m_handlers;
    Preferences m_preferences;
    ConfigSession* m_session = nullptr;
    ContextTracker* m_context = nullptr;
    Updater* m_updater = nullptr;
    BarVisibility* m_visibility = nullptr;
    EditorLauncher* m_editor = nullptr;
    std::unique_ptr<Hotkey> m_hotkey;
    std::unique_ptr<FlyoutController> m_flyouts;
    std::unique_ptr<TapRunner> m_taps;
    BarPlacement* m_placement = nullptr;
    std::unique_ptr<ButtonCommands> m_buttons;
    ShellMenus* m_menus = nullptr;
};
