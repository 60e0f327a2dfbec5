#pragma once

#include <QMenu>
#include <functional>

/// Renders a menu model (the program's menu or a button's) into a QMenu; every item calls back with itself.
namespace AppMenu {

template<typename Item>
void fill(QMenu& menu, const QList<Item>& items, const std::function<void(const Item&)>& run)
{
    menu.clear();
    for (const Item& item : items) {
        if (item.isSeparator()) {
            menu.addSeparator();
        } else if (!item.submenu.isEmpty() || item.command == decltype(item.command)::None) {
            fill(*menu.addMenu(item.title), item.submenu, run);
        } else {
            QAction* action = menu.addAction(item.title);
            if (item.checked) {
                action->setCheckable(true);
                action->setChecked(*item.checked);
            }
            QObject::connect(action, &QAction::triggered, &menu, [run, item] { run(item); });
        }
    }
}

} // namespace AppMenu
