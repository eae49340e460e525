#include "shell/menus/RefusedKeys.h"

#include "shell/menus/MainMenu.h"

#include <QAction>
#include <QKeyEvent>

#include <algorithm>
#include <utility>

RefusedKeys::RefusedKeys(QWidget& window, const MainMenu& menu, Tell tell, QObject* parent)
    : QObject(parent), _menu(menu), _tell(std::move(tell)) {
    window.installEventFilter(this);
}

bool RefusedKeys::eventFilter(QObject*, QEvent* event) {
    // Those that arrive at the window are neither a shortcut now nor of use to who has the
    // keyboard.
    if (event->type() != QEvent::KeyPress) return false;
    const auto& key = static_cast<const QKeyEvent&>(*event);
    // A key of the keypad is that of the shortcut.
    const QKeyCombination combination(
        key.modifiers() & ~Qt::KeypadModifier, static_cast<Qt::Key>(key.key()));
    const QKeySequence pressed(combination);
    if (key.isAutoRepeat() || pressed.isEmpty()) return false;
    const auto entry = std::ranges::find_if(menuEntries(), [&](const MenuEntry& each) {
        return _menu.action(each.command)->shortcuts().contains(pressed);
    });
    if (entry == menuEntries().end()) return false;
    const QString reason = _menu.reason(entry->command);
    if (!reason.isEmpty()) _tell(reason);
    return false;
}
