#include "shell/commands/ArrangeCommands.h"

#include "core/PBAppDelegate.h"
#include "group/ItemOrder.h"
#include "platform/tasks/MainThread.h"
#include "shell/services/BrowsingSettings.h"

#include <algorithm>

namespace {

using Command = MenuCommand;

/// Dates begin with the newest.
constexpr ArrangeCommands::Row arrangeRows[] = {
    {Command::arrange_FileName, 1, group::SortFileName, false},
    {Command::arrange_FileSize, 2, group::SortFileSize, false},
    {Command::arrange_DateModified, 3, group::SortModificationDate, true},
    {Command::arrange_DateTaken, 4, group::SortDateTaken, true},
    {Command::arrange_Kind, 5, group::SortKind, false},
    {Command::arrange_ImageSize, 6, group::SortPixelArea, false},
    {Command::arrange_None, 8, group::SortNone, false},
    {Command::arrange_Ascending, 10, std::nullopt, false},
    {Command::arrange_Dscending, 11, std::nullopt, true},
};

} // namespace

std::span<const ArrangeCommands::Row> ArrangeCommands::rows() {
    return arrangeRows;
}

void ArrangeCommands::doArrangeMenu(int argument) {
    platform::assertMainThread();
    const Row* row = std::ranges::find(arrangeRows, argument, &Row::argument);
    if (row == std::end(arrangeRows)) return;
    _browsing.setDescendingSort(row->descending);
    if (row->sortType) _browsing.setSortType(*row->sortType);
    _delegate.scan();
}
