#pragma once

#include <QtGlobal>
#include <optional>
#include <xcb/xcb.h>

namespace KeySymbols {

/// The X keysym of a key in the configuration's key table, by its key code.
std::optional<xcb_keysym_t> forKeyCode(quint16 keyCode);

} // namespace KeySymbols
