#pragma once

#include "shell/menus/MenuCommand.h"

#include <QString>
#include <QStringView>

#include <span>

struct MenuState;

using MenuCondition = bool (*)(const MenuState& state);
using MenuTitle = QString (*)(const MenuState& state);

inline bool isNeverPossible(const MenuState& /*state*/) {
    return false;
}

/// When an entry is possible, and what it shows then. One that nobody has told is never possible.
struct MenuRule {
    MenuCondition isEnabled = isNeverPossible;
    /// Of entries that can carry a check mark.
    MenuCondition isChecked = nullptr;
    /// Keys of the title where it changes: while `isShown` holds, and while it does not.
    QStringView hide = {};
    QStringView show = {};
    MenuCondition isShown = nullptr;
    /// The title where it is made of the state.
    MenuTitle title = nullptr;
};

/// One entry of the menus: what it says, which keys choose it, when it is possible.
struct MenuEntry {
    MenuCommand command{};
    /// The action's name, also that of its QAction.
    QStringView name;
    /// Key of the text; empty where the text follows the state.
    QStringView text;
    /// Portable texts of the shortcuts, with "; " between; the first is the one shown.
    QStringView shortcuts;
    /// Name of the symbol; empty for none.
    QStringView icon;
    MenuRule rule;
};

/// The submenus of the menu bar by their tags.
enum class MenuTag : int { Help, Go, Edit, Image, View, Group, File };

/// One line of the menu bar's plan, from the left and the top.
struct MenuRow {
    enum class Kind { Menu, Submenu, EndOfSubmenu, Separator, Entry };
    Kind kind = Kind::Separator;
    MenuTag tag = MenuTag::Help; ///< of a menu
    QStringView text = {};       ///< key of the title of a menu or submenu
    MenuEntry entry = {};
};

/// Those of all commands, by their numbers.
[[nodiscard]] std::span<const MenuEntry> menuEntries();
[[nodiscard]] const MenuEntry& menuEntry(MenuCommand command);

/// What stands in the menu bar.
[[nodiscard]] std::span<const MenuRow> menuBarRows();
/// What stands in the menu that a right click on a photograph opens. A click beside them opens the
/// menu with the tag View.
[[nodiscard]] std::span<const MenuRow> photographMenuRows();
