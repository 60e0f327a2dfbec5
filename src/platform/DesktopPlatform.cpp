#include "platform/Platform.h"
#include "platform/Session.h"
#include "platform/desktopshell/SessionFrontApplication.h"
#include "platform/freedesktop/ApplicationOfWindow.h"
#include "platform/freedesktop/DesktopFileManager.h"
#include "platform/freedesktop/DesktopLauncher.h"
#include "platform/freedesktop/QtClipboard.h"
#include "platform/freedesktop/QtScreens.h"
#include "platform/freedesktop/XdgAutostart.h"
#include "platform/portal/PortalHotkeyGrabber.h"
#include "platform/portal/PortalInputSynthesis.h"
#include "platform/x11/WorkArea.h"
#include "platform/x11/X11ActiveWindow.h"
#include "platform/x11/X11FrontApplication.h"
#include "platform/x11/X11HotkeyGrabber.h"
#include "platform/x11/X11InputSynthesis.h"
#include "platform/x11/X11PanelWindows.h"
#include "platform/x11/X11PointerTicker.h"
#include "platform/x11/XInputClickMonitor.h"

#include <QApplication>

namespace {

class QtBeeper final : public Beeper
{
public:
    void beep() override
    {
        // The X bell; desktops turn it into their alert sound or a visual bell, as the user chose.
        if (qobject_cast<QApplication*>(QCoreApplication::instance()))
            QApplication::beep();
    }
};

class DesktopPlatform final : public Platform
{
public:
    InputSynthesis& input() override { return m_input; }
    Clipboard& clipboard() override { return m_clipboard; }
    Launcher& launcher() override { return m_launcher; }
    FileManager& fileManager() override { return m_fileManager; }
    Beeper& beeper() override { return m_beeper; }
    Scheduler& scheduler() override { return m_scheduler; }
    PanelWindows& panelWindows() override { return m_panelWindows; }
    Screens& screens() override { return m_screens; }
    ClickMonitor& clickMonitor() override { return m_clickMonitor; }
    PointerTicker& pointerTicker() override { return m_pointerTicker; }
    FrontApplication& frontApplication() override { return m_frontApplication; }
    HotkeyGrabber& hotkey() override { return m_hotkey; }
    Autostart& autostart() override { return m_autostart; }

private:
    X11InputSynthesis m_x11Input;
    QtClipboard m_clipboard;
    DesktopLauncher m_launcher;
    DesktopFileManager m_fileManager{m_launcher};
    QtBeeper m_beeper;
    QtScheduler m_scheduler;
    X11PanelWindows m_panelWindows;
    QtScreens m_screens{&currentWorkArea};
    XInputClickMonitor m_clickMonitor;
    X11PointerTicker m_pointerTicker;
    X11FrontApplication m_x11FrontApplication{&applicationOfWindow};
    SessionFrontApplication m_frontApplication{m_x11FrontApplication, isWaylandSession(),
                                               KWinFrontScript::installedPath()};
    X11HotkeyGrabber m_x11Hotkey;
    XdgAutostart m_autostart;
    // In a Wayland session the portals serve every window, and the X11 ways above only X11 windows.
    const bool m_wayland = isWaylandSession();
    PortalInputSynthesis m_input{m_x11Input, m_beeper, &x11WindowIsActive, m_wayland};
    PortalHotkeyGrabber m_hotkey{m_x11Hotkey, m_wayland};
};

} // namespace

std::unique_ptr<Platform> createDesktopPlatform()
{
    return std::make_unique<DesktopPlatform>();
}
