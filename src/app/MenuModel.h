#pragma once

#include "bar/MenuItem.h"
#include "bar/MenuState.h"

#include <QList>

/// The program's menu, shown from the bar and from the tray icon, as plain data built afresh at every
/// opening from what is true at that moment.
namespace MenuModel {

using Command = MenuCommand;
using Item = MenuItem;
using State = MenuState;

QList<Item> populate(const State& state);

} // namespace MenuModel
