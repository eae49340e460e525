#pragma once

#include "group/PBGroupItem.h"

#include <functional>

/// What a command of the toolbar is asked about: whether it is possible now. The selection is
/// looked at only as far as the command needs it. Main thread.
class ToolbarValidation {
public:
    enum class Command {
        back,
        forward,
        rotate,
        shareClicked,
        deleteClicked,
        flagClicked,
        ratingMenuClicked,
    };
    /// How much of the selection a command needs.
    enum class SelectionStatus { None = 0, First = 1, All = 2 };

    struct Environment {
        std::function<bool()> canBack;
        std::function<bool()> canForward;
        /// nullptr without a selection.
        std::function<std::shared_ptr<PBImageFileItem>()> firstSelected;
        std::function<PBImageFileList()> allSelected;
        std::function<bool()> isLargeView;
        /// Whether anything answers the command at all.
        std::function<bool(Command)> isServed;
    };

    explicit ToolbarValidation(Environment environment);

    [[nodiscard]] SelectionStatus toolbarItemSelectStatus(Command command) const;

    /// Takes the selection for the validations until `endValidateToolbarItem`.
    void beginValidateToolbarItem(SelectionStatus selectionStatus);
    [[nodiscard]] bool validateToolbarItem(Command command) const;
    void endValidateToolbarItem();

    /// The three in one, for one command.
    [[nodiscard]] bool isEnabled(Command command);
    /// What the buttons of flag and stars show, and whether there is a file to act on: one look at
    /// all that is chosen.
    struct Marks {
        bool isEnabled = false;
        bool areAllFlagged = false; ///< false where nothing is chosen
        bool areAllRated = false;
        bool areAllAway = false;
    };
    [[nodiscard]] Marks marks();

private:
    const Environment _environment;
    PBImageFileList _selectedFileArray; // between begin and end only
};
