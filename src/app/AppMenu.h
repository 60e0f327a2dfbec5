#pragma once

#include "app/MenuModel.h"

#include <QMenu>
#include <functional>

/// Renders the menu model into a QMenu; every item calls back with itself.
namespace AppMenu {

void fill(QMenu& menu, const QList<MenuModel::Item>& items,
          const std::function<void(const MenuModel::Item&)>& run);

} // namespace AppMenu
