#pragma once

#include "shell/menus/MenuCommand.h"

#include <optional>
#include <span>

class BrowsingSettings;
class PBAppDelegate;

/// The order of the photographs in their groups. Main thread.
class ArrangeCommands {
public:
    /// What one entry of the menu sets.
    struct Row {
        MenuCommand command;
        int argument;                ///< of `doArrangeMenu`
        std::optional<int> sortType; ///< empty: stays as it is
        bool descending;
    };

    /// Both outlive this object.
    ArrangeCommands(BrowsingSettings& browsing, PBAppDelegate& delegate)
        : _browsing(browsing), _delegate(delegate) {}

    [[nodiscard]] static std::span<const Row> rows();

    /// Sets and stores the order of the row with that argument, and scans. An argument without a
    /// row does nothing.
    void doArrangeMenu(int argument);

private:
    BrowsingSettings& _browsing;
    PBAppDelegate& _delegate;
};
