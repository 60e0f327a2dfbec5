#include "MenuFill.h"

#include <QMenu>

namespace MenuFill {

void fill(QMenu& menu, const QList<MenuItem>& items, const std::function<void(const MenuItem&)>& run)
{
    menu.clear();
    for (const MenuItem& item : items) {
        if (item.isSeparator()) {
            menu.addSeparator();
        } else if (!item.submenu.isEmpty() || item.command == MenuCommand::None) {
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

} // namespace MenuFill
