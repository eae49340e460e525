#pragma once

#include "group/GroupTypes.h"

#include <QString>

#include <array>
#include <optional>
#include <span>
#include <variant>
#include <vector>

/// What an entry of a chain menu does to the chain.
struct PBGroupMenuAction {
    enum Type : int { Add = 0, Remove = 1, Replace = 2, Swap = 3 };

    Type type = Add;
    /// Add: the group type. Remove: the position. Replace: position and new group type. Swap: the
    /// two positions.
    std::variant<int, std::array<int, 2>> value = 0;
    bool operator==(const PBGroupMenuAction&) const = default;
};

/// The breadcrumb of group types and its menus, as data. Pure functions.
namespace group {

using GroupChain = std::vector<int>;

/// With this many links the breadcrumb offers no further one; a preset may have more.
inline constexpr std::size_t maximalOfferedLinks = 3;

/// One entry of a menu: a command, a submenu, or a separator (neither title nor entries).
template <typename Action>
struct MenuEntry {
    QString title;
    IconName icon;
    std::optional<Action>
        action; ///< nothing for a submenu, and for an entry that is shown disabled
    std::vector<MenuEntry> entries;
    bool isSubmenu = false;

    [[nodiscard]] bool isSeparator() const { return title.isEmpty() && !isSubmenu; }
};
using ChainMenuEntry = MenuEntry<PBGroupMenuAction>;

/// One cell of the breadcrumb.
struct ChainCell {
    QString title;
    IconName icon;
    bool operator==(const ChainCell&) const = default;
};

/// A cell for each link, and one without a title for adding a link if the chain is short enough.
[[nodiscard]] std::vector<ChainCell> cellsOfChain(std::span<const int> chain);

/// The menu of the cell at the position: for a link what may stand in its place, what it may change
/// places with, and its removal; for the cell behind the last link what may be added.
[[nodiscard]] std::vector<ChainMenuEntry>
groupMenuOfChain(std::span<const int> chain, std::size_t position);

/// Why a chain was left as it was.
enum class ChainRefusal {
    /// Grouping by place without a geocoder; the message is "AlertLocationRequireSystem".
    NeedsGeocoder,
    /// The action does not fit the chain, which has changed since the menu was made.
    Stale
};

/// The chain after the action.
[[nodiscard]] std::variant<GroupChain, ChainRefusal>
chainAfterAction(GroupChain chain, const PBGroupMenuAction& action, bool canUseGeocoder);

} // namespace group
