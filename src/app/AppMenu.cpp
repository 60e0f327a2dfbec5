#include "AppMenu.h"

namespace AppMenu {

void fill(QMenu& menu, const QList<MenuModel::Item>& items,
          const std::function<void(const MenuModel::Item&)>& run)
{
    menu.clear();
    for (const MenuModel::Item& item : items) {
        if (item.isSeparator()) {
            menu.addSeparator();
        } else if (item.command == MenuModel::Command::None) {
            QMenu* submenu = menu.addMenu(item.title);
            fill(*submenu, item.submenu, run);
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
