#pragma once

// The X session of tests/x11/with-x-session.sh seen and driven from the outside: windows found and
// measured by asking the server, the pointer and keyboard driven with xdotool as a user would drive
// them, programs started beside the bar, and the program itself, started with folders and buttons of
// the test's own, its chips found where its own bar view lays them out.

#include "TestSupport.h"
#include "config/Config.h"

#include <QDir>
#include <QHash>
#include <QMouseEvent>
#include <QPoint>
#include <QProcess>
#include <QRect>
#include <QRectF>
#include <QTemporaryDir>
#include <QWidget>
#include <functional>
#include <optional>
#include <utility>
#include <xcb/xcb.h>

/// The screen with-x-session.sh sets up.
inline constexpr int screenWidth = 1440;
inline constexpr int screenHeight = 900;
/// Long enough for a slow, loaded machine; a passing run never waits for it.
inline constexpr int windowTimeoutMs = 20000;

/// Whether this process draws on that screen through xcb.
bool onSessionScreen();
/// Polls `condition` while serving this process's events, until it holds or `timeoutMs` has passed.
bool waitFor(const std::function<bool()>& condition, int timeoutMs = windowTimeoutMs, int stepMs = 50);
/// What `program` writes to standard output, empty when it fails or hangs.
QString output(const QString& program, const QStringList& arguments);

bool xdotool(const QStringList& arguments);
bool keys(const QStringList& names);
/// xdotool's arguments that warp the pointer to `global`. Never with --sync, which waits for a motion
/// that never comes when the pointer is already there.
QStringList moveArguments(const QPoint& global);
bool moveTo(const QPoint& global);
/// The warp and the press travel on one connection, so the server sees them in order.
bool clickAt(const QPoint& global, int button = 1);
QList<QPoint> pathBetween(const QPoint& from, const QPoint& to, int steps = 10);
/// Press at the first point, move through the others, release: one drag over one connection.
bool dragAlong(const QList<QPoint>& path);

xcb_connection_t* connection();
xcb_atom_t atom(const char* name);
/// The 32-bit values of a property: windows, atoms or numbers; empty when it is not set.
QList<quint32> values(quintptr window, const char* property);
/// Whether the window manager lists `hint` in _NET_SUPPORTED.
bool supportsHint(const char* hint);
/// The current workspace's area left free by panels (_NET_WORKAREA), the whole screen without one.
QRect workArea();
bool isCompositing();
/// Under a compositor, waits until `area` of the screen stops changing, so that a window's fade-in is
/// over before its pixels are read; at once without one.
bool waitUntilDrawn(const QRect& area);

/// The windows the window manager manages, and the docks nobody manages.
QList<quintptr> topLevelWindows();
QString windowName(quintptr window);
qint64 pidOf(quintptr window);
std::optional<quintptr> findWindow(const QString& name, qint64 pid);
/// Where the window is on screen, empty when it is gone.
QRect frameOf(quintptr window);
bool isViewable(quintptr window);
bool isOverrideRedirect(quintptr window);
/// Whether WM_HINTS tells the window manager never to give it the keyboard.
bool refusesFocus(quintptr window);
quintptr activeWindow();
QString describe(const QRect& rect);

/// Whether `upper` is stacked above `lower`, comparing the top-level windows (frames) that hold them.
bool isStackedAbove(quintptr upper, quintptr lower);
/// Raises the frame holding `window` over every other window of the screen, as some window managers
/// raise the window they focus. Under a manager that frames windows as override-redirect (i3), nothing
/// redirects the request.
void raiseFrameToTop(quintptr window);
/// Moves and sizes a client window to `frame` and waits until it is there; a tiling manager is told to
/// let it float first.
bool placeWindow(quintptr window, const QRect& frame);

/// A window of the test's own that notes where on the screen each press on it was.
class PressRecorder : public QWidget
{
public:
    using QWidget::QWidget;
    QList<QPoint> presses;

protected:
    void mousePressEvent(QMouseEvent* event) override { presses.append(event->globalPosition().toPoint()); }
};

/// A program started for a test. Its standard error is kept; its end, when it goes out of scope, waits
/// until the window manager no longer lists its windows, so that none lingers into the next step.
class TestProcess
{
public:
    TestProcess(const QString& program, const QStringList& arguments,
                const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());
    virtual ~TestProcess() { stop(); }
    TestProcess(const TestProcess&) = delete;
    TestProcess& operator=(const TestProcess&) = delete;

    QProcess& process() { return m_process; }
    qint64 pid() const { return m_process.processId(); }
    bool isRunning() const { return m_process.state() == QProcess::Running; }
    /// Its standard error so far.
    QString log();
    /// Its window titled `name`, while that is on screen.
    std::optional<quintptr> shownWindow(const QString& name) const;
    /// Waits for its window titled `name` to be on screen and, when `active`, to have the keyboard focus.
    std::optional<quintptr> waitForWindow(const QString& name, bool active = false);
    void stop(bool gently = false);

private:
    QProcess m_process;
    QString m_log;
};

using Variables = QList<std::pair<QString, QString>>;

/// `variables` with the application in front taken to have no buttons of its own, so that the bar and
/// its menus are the same whichever window is active.
inline Variables withoutFrontApp(Variables variables = {})
{
    variables.prepend({u"VANTRIL_CONTEXT_APP"_s, u"none"_s});
    return variables;
}

/// Folders of one test: the program's configuration folder and an XDG config home, inside a fresh
/// temporary folder, so that no test sees what another one saved.
class TestHome
{
public:
    TestHome() { QDir().mkpath(xdgConfigHome()); }

    QString path(const QString& name) const { return m_dir.filePath(name); }
    QString configDir() const { return path(u"vantril"_s); }
    QString xdgConfigHome() const { return path(u"xdg"_s); }
    QString buttonsJson() const { return path(u"vantril/buttons.json"_s); }
    QString preferencesFile() const { return path(u"xdg/vantril/vantril.ini"_s); }
    QByteArray buttons() const { return readAll(buttonsJson()); }
    bool writeButtons(const QByteArray& bytes) const;
    /// The machine's environment with these folders, without its VANTRIL_ variables, and with `variables`.
    QProcessEnvironment environment(const Variables& variables = {}) const;

private:
    QTemporaryDir m_dir;
};

/// Where the chips of a configuration sit on a bar expanding upwards, and how wide that bar is, laid out
/// by the program's own bar view rather than by offsets copied from its code: a change of font, icon or
/// spacing moves the pointer along with the chips. The width on screen shows that the program drew it.
struct BarLayout
{
    int width = 0;
    QHash<QString, QRectF> chips;
};

/// With the front application's `context` after the separator.
BarLayout layoutOf(const BarConfig& config, const QList<ButtonSpec>& context = {});

/// The program, started with `config` as its buttons.json. When the test fails, what the program logged
/// and what buttons.json holds are printed as it goes.
class RunningBar : public TestProcess
{
public:
    explicit RunningBar(const TestHome& home, const BarConfig& config = Config::defaults(),
                        const Variables& variables = withoutFrontApp());
    ~RunningBar() override;

    /// Waits for the bar on screen, as wide as its buttons.
    bool waitForBar();
    quintptr bar() const { return m_bar; }
    /// Waits until the bar is `width` wide; frame() is where it then is.
    bool waitForWidth(int width);
    /// Where the bar was when last looked at.
    QRect frame() const { return m_frame; }
    /// What buttons.json holds; nothing when it does not decode.
    BarConfig saved() const;
    /// Waits until buttons.json differs from `before` and decodes, then until the bar shows it.
    bool waitForSave(const QByteArray& before);

    QRectF chipRect(const QString& title) const
    {
        return m_layout.chips.value(title).translated(m_frame.topLeft());
    }
    QPoint chip(const QString& title) const { return chipRect(title).center().toPoint(); }
    /// The middle of the gap after chip `title`, where the drop marker goes.
    QPoint gapAfter(const QString& title) const
    {
        return {qRound(chipRect(title).right()) + 4, m_frame.y() + m_frame.height() / 2};
    }
    /// The grip, 14 pixels wide after the bar's 12 pixel margin, halfway up.
    QPoint grip() const { return {m_frame.x() + 12 + 7, m_frame.y() + m_frame.height() / 2}; }

    std::optional<quintptr> shownFlyout() const { return shownWindow(u"Vantril flyout"_s); }
    /// Taps chip `title` once no flyout is open, and waits for its flyout to be open with rows in it.
    std::optional<quintptr> openFlyout(const QString& title);

private:
    QString m_buttonsJson;
    BarLayout m_layout;
    quintptr m_bar = 0;
    QRect m_frame;
};

/// The middle of the second row of a flyout of two: rows of one height between 8 pixel margins, 6 apart.
QPoint secondRowOf(const QRect& flyout);
