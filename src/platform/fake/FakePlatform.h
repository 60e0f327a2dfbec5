#pragma once

#include "platform/Platform.h"
#include "platform/RunQuestion.h"

#include <QList>
#include <QStringList>
#include <functional>
#include <optional>

/// A platform that records what the program asked of it, for tests without a desktop.
class FakePlatform final : public Platform,
                           InputSynthesis,
                           Clipboard,
                           Launcher,
                           FileManager,
                           Beeper,
                           Scheduler,
                           PanelWindows,
                           Screens,
                           FrontApplication,
                           HotkeyGrabber,
                           Autostart,
                           RunQuestion
{
public:
    /// One request, in the order it was made: "post ctrl=… key=…", "clipboard set …", "open …", ….
    QStringList calls;
    bool trusted = true;
    std::optional<QString> clipboardText;
    QString desktop;
    QString shell = QStringLiteral("/bin/sh");
    /// Names launchApplication accepts; any other is "not found".
    QStringList knownApplications;

    struct Pending
    {
        int milliseconds;
        std::function<void()> work;
    };
    QList<Pending> pending;
    /// Runs the scheduled work in order, including work scheduled while running.
    void runPending();

    /// Monitors, primary first; screenOf picks among them by the largest shared area, like the real one.
    QList<ScreenInfo> screenList = {{1, QRect(0, 0, 1440, 900), QRect(0, 0, 1440, 875)}};
    bool compositing = true;
    /// Samples the pointer when the test says so.
    class Ticker final : public PointerTicker
    {
    public:
        void start(int) override { m_active = true; }
        void stop() override { m_active = false; }
        bool isActive() const override { return m_active; }
        /// One beat, when the beat runs.
        void beat(const PointerState& pointer)
        {
            if (m_active)
                Q_EMIT sampled(pointer);
        }

    private:
        bool m_active = false;
    } ticker;
    /// The application in front, and the callback that reports activations while watched.
    std::optional<ApplicationIdentity> front;
    std::function<void(const ApplicationIdentity&)> activated;
    /// The grabbed hot key and its handler; `grabRefused` makes grabs fail like a combination held elsewhere.
    std::optional<KeyStroke> grabbed;
    std::function<void()> hotkeyHandler;
    bool grabRefused = false;
    /// What the input, click monitor, front application and hot key say of their reach.
    FacilityReach facilityReach{FacilityReach::Scope::X11, {}};
    /// Presses elsewhere on the desktop, which tests emit as pressed() to simulate one.
    class Clicks final : public ClickMonitor
    {
    public:
        explicit Clicks(const FacilityReach& reach)
            : m_reach(reach)
        {}
        void start() override {}
        void stop() override {}
        bool isAvailable() override { return true; }
        FacilityReach reach() override { return m_reach; }

    private:
        const FacilityReach& m_reach;
    } clicks{facilityReach};
    bool loginItem = false;
    std::optional<QString> loginItemError;
    /// The user's answer when asked whether to run a program (recorded as "ask NAME"); when empty, the
    /// question stays open in `unanswered` for the test to answer.
    std::optional<Answer> answer = Answer::Cancel;
    std::function<void(Answer)> unanswered;

    /// Stands in for the dialog that asks before a program runs, which lives beside the platform.
    RunQuestion& question() { return *this; }

    InputSynthesis& input() override { return *this; }
    Clipboard& clipboard() override { return *this; }
    Launcher& launcher() override { return *this; }
    FileManager& fileManager() override { return *this; }
    Beeper& beeper() override { return *this; }
    Scheduler& scheduler() override { return *this; }
    PanelWindows& panelWindows() override { return *this; }
    Screens& screens() override { return *this; }
    ClickMonitor& clickMonitor() override { return clicks; }
    PointerTicker& pointerTicker() override { return ticker; }
    FrontApplication& frontApplication() override { return *this; }
    HotkeyGrabber& hotkey() override { return *this; }
    Autostart& autostart() override { return *this; }

private:
    bool isTrusted() override { return trusted; }
    void post(const KeyStroke& combo) override;
    std::optional<QString> text() override { return clipboardText; }
    void clear() override;
    void setText(const QString& text) override;
    void startDetached(const QString& program, const QStringList& arguments) override;
    QString loginShell() override { return shell; }
    void open(const QUrl& url) override;
    bool launchApplication(const QString& name, const QStringList& files) override;
    QList<InstalledApplication> installedApplications() override { return {}; }
    QString desktopFolder() override { return desktop; }
    void reveal(const QString& path) override;
    void beep() override;
    void after(int milliseconds, std::function<void()> work) override;
    void prepareDock(quintptr windowId) override;
    bool isCompositing() override { return compositing; }
    void setClickThrough(quintptr windowId, bool through) override;
    void setOpacity(quintptr, double opacity) override
    {
        calls.append(QStringLiteral("opacity %1").arg(opacity));
    }
    QList<ScreenInfo> all() override { return screenList; }
    std::optional<ScreenInfo> screenOf(const QRect& rect) override;
    std::optional<ApplicationIdentity> current() override { return front; }
    void watch(std::function<void(const ApplicationIdentity&)> callback) override
    {
        activated = std::move(callback);
    }
    bool grab(const KeyStroke& combo) override;
    void release() override;
    void setHandler(std::function<void()> pressed) override { hotkeyHandler = std::move(pressed); }
    FacilityReach reach() override { return facilityReach; }
    bool isEnabled() override { return loginItem; }
    std::optional<QString> setEnabled(bool enabled) override;
    void ask(const QString& name, std::function<void(Answer)> answered) override;
};
