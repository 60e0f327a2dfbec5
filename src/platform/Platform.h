#pragma once

#include "platform/Autostart.h"
#include "platform/Beeper.h"
#include "platform/ClickMonitor.h"
#include "platform/Clipboard.h"
#include "platform/FileManager.h"
#include "platform/FrontApplication.h"
#include "platform/HotkeyGrabber.h"
#include "platform/InputSynthesis.h"
#include "platform/Launcher.h"
#include "platform/PanelWindows.h"
#include "platform/PointerTicker.h"
#include "platform/Scheduler.h"
#include "platform/Screens.h"

#include <QString>
#include <memory>
#include <optional>

/// The desktop facilities the bar stands on, one small interface each.
class Platform
{
public:
    Platform() = default;
    virtual ~Platform() = default;
    Q_DISABLE_COPY_MOVE(Platform)

    virtual InputSynthesis& input() = 0;
    virtual Clipboard& clipboard() = 0;
    virtual Launcher& launcher() = 0;
    virtual FileManager& fileManager() = 0;
    virtual Beeper& beeper() = 0;
    virtual Scheduler& scheduler() = 0;
    virtual PanelWindows& panelWindows() = 0;
    virtual Screens& screens() = 0;
    virtual ClickMonitor& clickMonitor() = 0;
    virtual PointerTicker& pointerTicker() = 0;
    virtual FrontApplication& frontApplication() = 0;
    virtual HotkeyGrabber& hotkey() = 0;
    virtual Autostart& autostart() = 0;
};

/// The X11 and freedesktop implementation; needs a running QGuiApplication on the xcb platform for
/// input, and works without one for everything else.
std::unique_ptr<Platform> createDesktopPlatform();

/// Why the bar cannot run in this session (no X display to connect to), or nothing when it can.
/// Asked before the application object exists, which would otherwise abort with Qt's own message.
std::optional<QString> desktopUnavailableReason();
