#pragma once

#include "bar/BarHandlers.h"
#include "bar/MenuItem.h"

/// Runs a menu's command through the views' callbacks, whichever menu offered it. `chip` is the button
/// whose menu it was; the program's menu passes an empty one, as none of its commands needs a button.
namespace MenuCommands {

void run(const MenuItem& item, const ButtonSpec& chip, const BarHandlers& handlers);

} // namespace MenuCommands
