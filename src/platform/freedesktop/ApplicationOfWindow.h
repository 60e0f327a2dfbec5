#pragma once

#include "platform/ApplicationIdentity.h"

#include <optional>

/// The application a window belongs to, named through the installed desktop entries; none when the
/// window names nothing at all.
std::optional<ApplicationIdentity> applicationOfWindow(const WindowNames& window);
