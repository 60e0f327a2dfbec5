#pragma once

#include "config/BarConfig.h"

#include <optional>

/// The application in front, whose own set of buttons the bar shows after the shared ones.
///
/// People name an application in a hand-written set the way they see it: by the desktop entry it was
/// started from, or by the class of its window (xterm -class MyTool is "MyTool", not xterm). So the
/// window's every identity is kept, and names() orders them.
struct ContextApp
{
    QString id;   ///< the application id: a set made for it carries this
    QString name; ///< shown in menus
    bool isTerminal = false;
    QString ownId;        ///< the id the window gives itself (_GTK_APPLICATION_ID, _KDE_NET_WM_DESKTOP_FILE)
    QString windowClass;  ///< WM_CLASS class
    QString instance;     ///< WM_CLASS instance
    QString desktopEntry; ///< the installed desktop entry found for the window, without ".desktop"

    bool operator==(const ContextApp&) const = default;
};

namespace AppContext {

/// "id|name" from VANTRIL_CONTEXT_APP; empty pieces are dropped, and anything but two pieces is nothing.
std::optional<ContextApp> fromEnvironment(const QString& value);

/// Every name of `app` a set may use, most specific first: the id the window gives itself, its class,
/// its instance, the desktop entry found for it (which every window of that program shares), the id.
/// Empty names are left out, and so is a name that differs from an earlier one in case only.
QStringList names(const ContextApp& app);

/// The set of the application in front: the first set whose "app" is its most specific name, ignoring
/// case; none when no set names it.
std::optional<qsizetype> setFor(const BarConfig& cfg, const std::optional<ContextApp>& app);

/// The buttons of that set, or none.
QList<ButtonSpec> contextButtons(const BarConfig& cfg, const std::optional<ContextApp>& app);

/// The index of that set; with `create`, a new empty set is appended when there is none (the next
/// commit drops it again if it stays empty). Nothing without an application in front.
std::optional<qsizetype> contextSetIndex(BarConfig& cfg, const std::optional<ContextApp>& app, bool create);

/// Moves a button into the front application's set, or to the end of the bar when there is none in
/// front. False when no button has that title.
bool moveToContext(BarConfig& cfg, const std::optional<ContextApp>& app, const QString& title);

} // namespace AppContext
