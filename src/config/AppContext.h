#pragma once

#include "config/BarConfig.h"

#include <optional>

/// The application in front, whose own set of buttons the bar shows after the shared ones.
struct ContextApp
{
    QString id;   ///< its desktop-entry id (or window class), matched exactly against a set's "app"
    QString name; ///< shown in menus
    bool isTerminal = false;

    bool operator==(const ContextApp&) const = default;
};

namespace AppContext {

/// "id|name" from VANTRIL_CONTEXT_APP; empty pieces are dropped, and anything but two pieces is nothing.
std::optional<ContextApp> fromEnvironment(const QString& value);

/// The buttons of the first set of the application in front, or none.
QList<ButtonSpec> contextButtons(const BarConfig& cfg, const std::optional<ContextApp>& app);

/// The index of that set; with `create`, a new empty set is appended when there is none (the next
/// commit drops it again if it stays empty). Nothing without an application in front.
std::optional<qsizetype> contextSetIndex(BarConfig& cfg, const std::optional<ContextApp>& app, bool create);

/// Moves a button into the front application's set, or to the end of the bar when there is none in
/// front. False when no button has that title.
bool moveToContext(BarConfig& cfg, const std::optional<ContextApp>& app, const QString& title);

} // namespace AppContext
