#pragma once

#include "bar/BarHandlers.h"

#include <QPoint>

class DragState;

/// A button's menu: edit, lock, remove, stacks, application sets, presets, backups and the program's
/// own commands, every one through the views' callbacks.
namespace ItemMenu {

void popup(const ButtonSpec& spec, const BarHandlers& handlers, const DragState& drag,
           const QPoint& globalPos);

} // namespace ItemMenu
