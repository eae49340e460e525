#pragma once

#include "shell/MenuCommand.h"

#include <QStringView>

#include <span>

/// One entry of the menus: what it says and which keys choose it.
struct MenuEntry {
    MenuCommand command;
    /// The action's name, also that of its QAction.
    QStringView name;
    /// Key of the text; empty where the text follows the state.
    QStringView text;
    /// Portable texts of the shortcuts, with "; " between; the first is the one shown.
    QStringView shortcuts;
    /// Name of the symbol; empty for none.
    QStringView icon;
};

/// The submenus of the menu bar by their tags.
enum class MenuTag : int { Help, Go, Edit, Image, View, Group, File };

/// One line of the menu bar's plan, from the left and the top.
struct MenuRow {
    enum class Kind { Menu, Submenu, EndOfSubmenu, Separator, Entry };
    Kind kind;
    MenuTag tag = MenuTag::Help;                  ///< of a menu
    QStringView text = {};                        ///< key of the title of a menu or submenu
    MenuCommand command = MenuCommand::showAbout; ///< of an entry
};

[[nodiscard]] std::span<const MenuEntry> menuEntries();
[[nodiscard]] const MenuEntry& menuEntry(MenuCommand command);

/// What stands in the menu bar.
[[nodiscard]] std::span<const MenuRow> menuBarRows();
/// What stands in the menu that a right click on a photograph opens. A click beside them opens the
/// menu with the tag View.
[[nodiscard]] std::span<const MenuRow> photographMenuRows();
