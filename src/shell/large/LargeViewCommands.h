#pragma once

#include "shell/menus/MenuCommand.h"
#include "shell/menus/MenuValidation.h"

class LargeView;

/// What the commands of the window mean while the large view is shown. Main thread.
class LargeViewCommands {
public:
    /// Outlives this object.
    explicit LargeViewCommands(LargeView& largeView) : _largeView(largeView) {}

    /// Carries the command out; false where the large view is not shown, or has no meaning for it.
    [[nodiscard]] bool perform(MenuCommand command) const;

    /// What the menus depend on.
    [[nodiscard]] MenuState::LargeView state() const;
    [[nodiscard]] bool isInfoShown() const;

private:
    LargeView& _largeView;
};
