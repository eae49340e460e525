#include "shell/toolbar/ToolbarValidation.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>

ToolbarValidation::ToolbarValidation(Environment environment)
    : _environment(std::move(environment)) {}

ToolbarValidation::SelectionStatus
ToolbarValidation::toolbarItemSelectStatus(Command command) const {
    switch (command) {
    case Command::rotate:
    case Command::shareClicked:
    case Command::deleteClicked:
        return SelectionStatus::First;
    case Command::flagClicked:
    case Command::ratingMenuClicked:
        return _environment.isLargeView() ? SelectionStatus::First : SelectionStatus::All;
    case Command::back:
    case Command::forward:
        break;
    }
    return SelectionStatus::None;
}

void ToolbarValidation::beginValidateToolbarItem(SelectionStatus selectionStatus) {
    platform::assertMainThread();
    _selectedFileArray.clear();
    if (selectionStatus == SelectionStatus::All) _selectedFileArray = _environment.allSelected();
    if (selectionStatus != SelectionStatus::First) return;
    if (auto first = _environment.firstSelected()) _selectedFileArray.push_back(std::move(first));
}

bool ToolbarValidation::validateToolbarItem(Command command) const {
    switch (command) {
    case Command::back:
        return _environment.canBack();
    case Command::forward:
        return _environment.canForward();
    case Command::rotate:
    case Command::shareClicked:
    case Command::deleteClicked:
    case Command::flagClicked:
    case Command::ratingMenuClicked:
        return !_selectedFileArray.empty() && _environment.isServed(command);
    }
    return false;
}

void ToolbarValidation::endValidateToolbarItem() {
    _selectedFileArray.clear();
}

bool ToolbarValidation::isEnabled(Command command) {
    beginValidateToolbarItem(toolbarItemSelectStatus(command));
    const bool enabled = validateToolbarItem(command);
    endValidateToolbarItem();
    return enabled;
}

ToolbarValidation::Marks ToolbarValidation::marks() {
    beginValidateToolbarItem(toolbarItemSelectStatus(Command::flagClicked));
    const PBImageFileList& chosen = _selectedFileArray;
    const Marks marks{
        .isEnabled = validateToolbarItem(Command::flagClicked),
        .areAllFlagged =
            !chosen.empty() &&
            std::ranges::all_of(chosen, [](const auto& item) { return item->flagged(); }),
        .areAllRated =
            !chosen.empty() &&
            std::ranges::all_of(chosen, [](const auto& item) { return item->star() > 0; }),
        .areAllAway = !chosen.empty() &&
                      std::ranges::all_of(chosen, [](const auto& item) { return item->isAway(); })};
    endValidateToolbarItem();
    return marks;
}
