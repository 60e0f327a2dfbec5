#pragma once

#include "platform/Beeper.h"
#include "platform/Clipboard.h"
#include "platform/FileManager.h"
#include "platform/InputSynthesis.h"
#include "platform/Launcher.h"
#include "platform/Scheduler.h"

#include <memory>

/// The desktop facilities the bar stands on, one small interface each.
class Platform
{
public:
    Platform() = default;
    virtual ~Platform() = default;
    Platform(const Platform&) = delete;
    Platform& operator=(const Platform&) = delete;

    virtual InputSynthesis& input() = 0;
    virtual Clipboard& clipboard() = 0;
    virtual Launcher& launcher() = 0;
    virtual FileManager& fileManager() = 0;
    virtual Beeper& beeper() = 0;
    virtual Scheduler& scheduler() = 0;
};

/// The X11 and freedesktop implementation; needs a running QGuiApplication on the xcb platform for
/// input, and works without one for everything else.
std::unique_ptr<Platform> createDesktopPlatform();
