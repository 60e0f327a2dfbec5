#include "ItemMenu.h"

#include "bar/MenuCommands.h"
#include "bar/MenuFill.h"
#include "editor/ItemMenuModel.h"

#include <QMenu>

namespace ItemMenu {

void popup(const ButtonSpec& spec, const BarHandlers& handlers, const QPoint& globalPos)
{
    auto* menu = new QMenu;
    menu->setAttribute(Qt::WA_DeleteOnClose);
    // The chip that opened the menu may be rebuilt away by the command; the menu keeps its own copy.
    MenuFill::fill(*menu, ItemMenuModel::populate(MenuState::read(handlers, spec)),
                   [spec, &handlers](const MenuItem& item) { MenuCommands::run(item, spec, handlers); });
    menu->popup(globalPos);
}

} // namespace ItemMenu
