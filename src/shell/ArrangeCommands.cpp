#include "shell/ArrangeCommands.h"

#include "core/PBAppDelegate.h"

#include <algorithm>

namespace {

using Command = MenuCommand;

/// Dates begin with the newest.
constexpr ArrangeCommands::Row arrangeRows[] = {
    {Command::arrange_FileName, 1, 1, false},
    {Command::arrange_FileSize, 2, 2, false},
    {Command::arrange_DateModified, 3, 3, true},
    {Command::arrange_DateTaken, 4, 4, true},
    {Command::arrange_Kind, 5, 5, false},
    {Command::arrange_ImageSize, 6, 6, false},
    {Command::arrange_None, 8, 0, false},
    {Command::arrange_Ascending, 10, std::nullopt, false},
    {Command::arrange_Dscending, 11, std::nullopt, true},
};

} // namespace

std::span<const ArrangeCommands::Row> ArrangeCommands::rows() {
    return arrangeRows;
}

void ArrangeCommands::doArrangeMenu(int argument) {
    const Row* row = std::ranges::find(arrangeRows, argument, &Row::argument);
    if (row == std::end(arrangeRows)) return;
    _delegate.setDescendingSort(row->descending);
    if (row->sortType) _delegate.setSortType(*row->sortType);
    _delegate.scan();
}
