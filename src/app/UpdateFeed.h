#pragma once

#include "app/UpdateCheck.h"

#include <memory>

/// The updater of a build made with an update feed; nothing for a build without one, which has no updater.
std::unique_ptr<UpdateCheck> updaterOfThisBuild();
