#pragma once

#include "bar/BarHandlers.h"

#include <QPoint>

/// A button's menu: edit, lock, remove, stacks, application sets, presets, backups and the program's
/// own commands, every one through the views' callbacks.
namespace ItemMenu {

void popup(const ButtonSpec& spec, const BarHandlers& handlers, const QPoint& globalPos);

} // namespace ItemMenu
