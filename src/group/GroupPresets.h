#pragma once

#include "group/GroupChainMenu.h"

#include <optional>
#include <span>
#include <vector>

namespace platform {
class UserDefaults;
}

namespace group {

/// The chains that the user has saved, in the setting "FavoriteGroupArrayArray", and the submenu
/// that offers them. Main thread.
class GroupPresets {
public:
    /// The settings outlive this object.
    explicit GroupPresets(platform::UserDefaults& settings) : _settings(settings) {}

    /// Writes the first set of presets, unless there is a setting already; at start-up.
    void seedIfAbsent(bool canUseGeocoder);

    [[nodiscard]] std::vector<GroupChain> chains() const;
    [[nodiscard]] bool has(const GroupChain& chain) const;
    /// Appends the chain; false if it stands already.
    bool save(const GroupChain& chain);
    /// Removes the first equal chain; false if there is none.
    bool remove(const GroupChain& chain);
    void removeAll();

    /// What an entry of the submenu does.
    struct Action {
        enum class Type {
            Select,    ///< "selectGroupType": make this chain the current one
            Save,      ///< "saveGroupType": the current chain
            Remove,    ///< "removeGroupType": this chain
            RemoveAll, ///< "removeGroupType" without a chain
            CopyTo,    ///< "copytoGroupType"
            MoveTo     ///< "movetoGroupType"
        };
        Type type = Type::Select;
        GroupChain chain;
        bool operator==(const Action&) const = default;
    };
    using Entry = MenuEntry<Action>;

    /// The group submenu of the main menu; its own title is that of the key "Group".
    [[nodiscard]] std::vector<Entry> menu() const;
    /// The same with the presets one click away, for the button of the toolbar.
    [[nodiscard]] std::vector<Entry> buttonMenu() const;

private:
    void store(const std::vector<GroupChain>& chains);

    platform::UserDefaults& _settings;
};

/// The descriptions joined by " > "; the text for all images when the chain is empty.
[[nodiscard]] QString titleOfChain(std::span<const int> chain);

} // namespace group
