#pragma once

#include "app/Preferences.h"
#include "bar/BarHandlers.h"
#include "config/Config.h"
#include "dragdrop/DragState.h"

#include <QObject>
#include <QProcessEnvironment>
#include <future>
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
class StartupScript;
class TapRunner;
class UpdateCheck;

/// Builds the program's parts and connects them: the configuration session, the application in front,
/// the bar and its place, its flyouts and menus, the button commands, the editor, and the visibility
/// rules. The work itself is the parts'.
class AppDelegate : public QObject
{
    Q_OBJECT

public:
    /// Without `updater` there is no update command.
    AppDelegate(std::unique_ptr<Platform> platform, std::unique_ptr<UpdateCheck> updater);
    ~AppDelegate() override;

    /// Takes the configuration as read at launch. Before finishLaunching, so that a command for the
    /// starting bar can be checked against the buttons before any window shows.
    void loadConfiguration(const Config::Loaded& loaded);
    /// Shows the bar; once it is on screen, takes the hot key, backs up the configuration, applies the
    /// start-up commands and starts following the desktop.
    void finishLaunching(const QProcessEnvironment& environment);

    ConfigDocument& document();
    BarVisibility& barVisibility() { return *m_visibility; }
    TapRunner& taps() { return *m_taps; }
    const DragState& drag() const { return m_drag; }

private:
    /// How long the rest of the start-up waits for the bar's first paint at most.
    static constexpr int settleAnywayMs = 1000;

    void connectParts();
    void settle(StartupScript& script, const QProcessEnvironment& environment);
    void updateHotkey();

    std::unique_ptr<Platform> m_platform;
    std::unique_ptr<RunQuestionBox> m_runQuestion;
    std::unique_ptr<Actions> m_actions;
    DragState m_drag;
    BarHandlers m_handlers;
    Preferences m_preferences;
    ConfigSession* m_session = nullptr;
    ContextTracker* m_context = nullptr;
    UpdateCheck* m_updater = nullptr;
    std::future<void> m_symbolsKept; // waited for when the bar quits
    BarVisibility* m_visibility = nullptr;
    EditorLauncher* m_editor = nullptr;
    std::unique_ptr<Hotkey> m_hotkey;
    std::unique_ptr<FlyoutController> m_flyouts;
    std::unique_ptr<TapRunner> m_taps;
    BarPlacement* m_placement = nullptr;
    std::unique_ptr<ButtonCommands> m_buttons;
    ShellMenus* m_menus = nullptr;
};
