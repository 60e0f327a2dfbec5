#pragma once

#include "bar/MenuItem.h"
#include "bar/MenuState.h"

#include <QList>

/// The menu of one button (a chip on the bar or a row in a stack's flyout), as plain data.
namespace ItemMenuModel {

using Command = MenuCommand;
using Item = MenuItem;
using State = MenuState;

QList<Item> populate(const State& state);

} // namespace ItemMenuModel
