#pragma once

#include "config/BarConfig.h"

#include <optional>

/// The title-based editing primitives every change of the document is made of.
///
/// Buttons are looked up in one order: the top-level buttons, then the members of top-level stacks,
/// then the buttons of each application set. These change the document in memory only; the caller
/// commits.
namespace Editing {

/// The first button with this title.
std::optional<ButtonSpec> button(const BarConfig& config, const QString& title);
/// Takes the first button with this title out of its list and returns it.
std::optional<ButtonSpec> detach(BarConfig& config, const QString& title);
/// Overwrites the first button with this title in place; false when there is none.
bool replace(BarConfig& config, const QString& title, const ButtonSpec& replacement);
/// The wanted title, or the first of "wanted 2", "wanted 3", … that no button uses. `excluding` is
/// a title to ignore, so that a button being renamed does not collide with its own old title.
QString uniqueTitle(const BarConfig& config, const QString& wanted,
                    const std::optional<QString>& excluding = {});
/// Locks every button at every depth, or unlocks it (unlocked is written as absent, not false).
void lockAll(BarConfig& config, bool locked);
/// Whether an application set holds a button with this title.
bool isContext(const BarConfig& config, const QString& title);

} // namespace Editing
