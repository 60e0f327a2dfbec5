#pragma once

#include "bar/BarHandlers.h"

class Actions;
class BarPlacement;
class BarVisibility;
class ButtonCommands;
class ConfigSession;
class ContextTracker;
class DragState;
class EditorLauncher;
class FlyoutController;
class Platform;
class Preferences;
class TapRunner;
class UpdateCheck;

/// The parts the views' callbacks reach.
struct HandlerParts
{
    Platform& platform;
    Actions& actions;
    ConfigSession& session;
    ButtonCommands& buttons;
    ContextTracker& context;
    TapRunner& taps;
    FlyoutController& flyouts;
    BarPlacement& placement;
    BarVisibility& visibility;
    EditorLauncher& editor;
    Preferences& preferences;
    const DragState& drag;
    UpdateCheck* updater;
};

/// The views' callbacks, each holding `owner` (the owner of the parts) weakly: once it is gone they do
/// nothing and answer false, nothing or an empty list.
BarHandlers makeHandlers(const HandlerParts& parts, QObject& owner);
