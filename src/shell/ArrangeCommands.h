#pragma once

#include "shell/MenuCommand.h"

#include <optional>
#include <span>

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

    /// The delegate outlives this object.
    explicit ArrangeCommands(PBAppDelegate& delegate) : _delegate(delegate) {}

    [[nodiscard]] static std::span<const Row> rows();

    /// Sets and stores the order of the row with that argument, and scans. An argument without a
    /// row does nothing.
    void doArrangeMenu(int argument);

private:
    PBAppDelegate& _delegate;
};
