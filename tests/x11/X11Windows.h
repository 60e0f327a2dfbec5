#pragma once

// The X session of tests/x11/with-x-session.sh seen and driven from the outside: windows found and
// measured with xprop and xwininfo, or asked of the server itself where no tool answers, and the
// pointer and keyboard driven with xdotool as a user would drive them.

#include "platform/x11/XcbHandles.h"

#include <QByteArray>
#include <QList>
#include <QPoint>
#include <QRect>
#include <QString>
#include <QStringList>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <xcb/xcb.h>

/// The screen with-x-session.sh sets up.
inline constexpr int screenWidth = 1440;
inline constexpr int screenHeight = 900;

/// Long enough for a slow, loaded machine; a passing run never waits for it.
inline constexpr int windowTimeoutMs = 20000;

/// The window manager with-x-session.sh started: "openbox", "i3", … (VANTRIL_TEST_WM).
QString windowManager();
/// Whether the window manager lists `hint` (such as "_NET_WM_STATE_ABOVE") in _NET_SUPPORTED.
bool supportsHint(const QByteArray& hint);
/// The current workspace's area left free by panels (_NET_WORKAREA), the whole screen without one.
QRect workArea();
/// Whether a compositing manager draws the screen (it owns _NET_WM_CM_S0).
bool isCompositing();
/// Under a compositor, waits until `area` of the screen stops changing, so that a window's fade-in is
/// over before its pixels are read; at once without one.
bool waitUntilDrawn(const QRect& area);
/// Whether `upper` is stacked above `lower`, comparing the top-level windows (frames) that hold them.
bool isStackedAbove(quintptr upper, quintptr lower);
/// Raises the frame holding `window` over every other window of the screen, as some window managers
/// raise the window they focus. Under a manager that frames windows as override-redirect (i3), nothing
/// redirects the request.
void raiseFrameToTop(quintptr window);
/// Moves and sizes a client window to `frame` and waits until it is there; a tiling manager is told to
/// let it float first.
bool placeWindow(quintptr window, const QRect& frame);
/// Makes another workspace the current one: `number` counted from 0.
bool switchWorkspace(int number);

/// Whether this process draws on that screen through xcb; says what differs when it does not.
bool onSessionScreen();

/// Polls `condition` while serving this process's events, until it holds or `timeoutMs` has passed.
bool waitFor(const std::function<bool()>& condition, int timeoutMs = windowTimeoutMs, int stepMs = 50);

/// What `program` writes to standard output, empty when it fails or hangs.
QString output(const QString& program, const QStringList& arguments);

bool xdotool(const QStringList& arguments);
bool keys(const QStringList& names);
/// Types `text` into whatever has the keyboard focus, as a person would.
bool type(const QString& text);
/// xdotool's arguments that warp the pointer to `global`. Never with --sync, which waits for a motion
/// that never comes when the pointer is already there.
QStringList moveArguments(const QPoint& global);
bool moveTo(const QPoint& global);
/// The warp and the press travel on one connection, so the server sees them in order.
bool clickAt(const QPoint& global, int button = 1);
/// Press at the first point, move through the others, release: one drag over one connection.
bool dragAlong(const QList<QPoint>& path);
/// A drag from `from` to `to` in even steps.
bool dragBetween(const QPoint& from, const QPoint& to, int steps = 10);

QString windowProperty(quintptr window, const QString& name);
/// The windows the window manager manages, which are the mapped top-level windows of its clients.
QList<quintptr> clientWindows();
/// Those, and the panels nobody manages: override-redirect docks, as the bar is under a tiling manager.
QList<quintptr> topLevelWindows();
/// The title exactly as the window gives it: name searches in xdotool ignore case, and the client
/// leader of the program is called "vantril" too.
std::optional<QString> windowName(quintptr window);
std::optional<qint64> windowPid(quintptr window);
/// The managed window of process `pid` titled exactly `name`, if there is one.
std::optional<quintptr> findWindow(const QString& name, qint64 pid);
bool hasClientWindows(qint64 pid);

struct WindowInfo
{
    QRect frame;
    bool viewable = false;
};

std::optional<WindowInfo> windowInfo(quintptr window);
/// Where the window is on screen, empty when it is gone.
QRect frameOf(quintptr window);
bool isViewable(quintptr window);
/// The window the window manager calls active, 0 for None.
quintptr activeWindow();
QString describe(const QRect& rect);

/// Saves `area` of the screen, all of it when empty, as `name` in $VANTRIL_TEST_SCREENSHOTS when set.
void saveScreenshot(const QString& name, const QRect& area = {});

// The server's own answers, where a command line tool has none, in the program's own reply wrappers.

xcb_connection_t* connection();

xcb_atom_t atom(const QByteArray& name);
xcb_window_t rootWindow();
QList<xcb_window_t> childWindows(xcb_window_t window);
std::optional<quint32> cardinal(xcb_window_t window, xcb_atom_t property);

struct Attributes
{
    bool viewable = false;
    bool overrideRedirect = false;
};

std::optional<Attributes> attributesOf(xcb_window_t window);
/// Where the window is on screen, empty when it is gone; for windows nobody manages as well.
QRect screenRect(xcb_window_t window);
/// The open menu of process `pid`: popups are override-redirect children of the root. Tooltips are too,
/// and so are the bar and its flyouts under a tiling manager; both say what they are.
std::optional<xcb_window_t> shownMenu(qint64 pid);
