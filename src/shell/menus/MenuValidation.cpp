#include "shell/menus/MenuValidation.h"

#include "shell/menus/MenuEntries.h"
#include "shell/menus/MenuReasons.h"

MenuItemState validateMenuItem(MenuCommand command, const MenuState& state) {
    const MenuRule& rule = menuEntry(command).rule;
    MenuItemState item{
        .isEnabled = rule.isEnabled(state), .isChecked = {}, .title = {}, .text = {}, .reason = {}};
    if (!item.isEnabled) item.reason = reasonOfRefusal(rule.isEnabled, state);
    if (rule.isChecked) item.isChecked = rule.isChecked(state);
    if (rule.isShown) item.title = rule.isShown(state) ? rule.hide : rule.show;
    if (rule.title) item.text = rule.title(state);
    return item;
}
