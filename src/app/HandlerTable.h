#pragma once

#include "bar/BarHandlers.h"

class AppDelegate;

/// The views' callbacks, each holding the controller weakly: once it is gone they do nothing and
/// answer false, nothing or an empty list.
BarHandlers makeHandlers(AppDelegate& delegate);
