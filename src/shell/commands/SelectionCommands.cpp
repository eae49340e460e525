#include "shell/commands/SelectionCommands.h"

#include "browser/PBImageBrowserView.h"
#include "shell/menus/MainMenu.h"

#include <utility>

using Command = MenuCommand;

void connectSelection(MainMenu& menu, PBImageBrowserView& view) {
    const auto connect = [&menu, &view](Command command, auto select) {
        menu.connectCommand(command, [&view, select = std::move(select)] {
            if (select(view.selection())) view.selectDidChange();
        });
    };
    using Selection = const BrowserSelection&;
    constexpr auto all = FoldedLeaves::Included;
    connect(Command::selectAll, [](Selection selection) { return selection.selectAll(all); });
    connect(Command::deselectAll, [](Selection selection) { return selection.deselectAll(); });
    connect(Command::invertSelection, [](Selection selection) { return selection.invert(all); });
    constexpr int first = static_cast<int>(Command::selectStars0);
    for (int command = first; command <= static_cast<int>(Command::selectStars5); ++command) {
        connect(
            static_cast<Command>(command),
            [stars = static_cast<quint64>(command - first)](Selection selection) {
                return selection.selectWithStars(stars, all);
            });
    }
}
