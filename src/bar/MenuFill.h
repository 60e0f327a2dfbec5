#pragma once

#include "bar/MenuItem.h"

#include <functional>

class QMenu;

/// Renders a menu model (the program's menu or a button's) into a QMenu; every item calls back with itself.
namespace MenuFill {

void fill(QMenu& menu, const QList<MenuItem>& items, const std::function<void(const MenuItem&)>& run);

} // namespace MenuFill
