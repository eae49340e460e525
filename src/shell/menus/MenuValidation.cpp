#include "shell/menus/MenuValidation.h"

#include "shell/menus/MenuEntries.h"

MenuItemState validateMenuItem(MenuCommand command, const MenuState& state) {
    const MenuRule& rule = menuEntry(command).rule;
    MenuItemState item{
        .isEnabled = rule.isEnabled(state), .isChecked = {}, .title = {}, .text = {}};
    if (rule.isChecked) item.isChecked = rule.isChecked(state);
    if (rule.isShown) item.title = rule.isShown(state) ? rule.hide : rule.show;
    if (rule.title) item.text = rule.title(state);
    return item;
}
