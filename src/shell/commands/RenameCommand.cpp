#include "shell/commands/RenameCommand.h"

#include "browser/PBImageBrowserView.h"
#include "fileactions/RenameImageFile.h"
#include "group/PBImageFileItem.h"
#include "platform/work/MainThread.h"
#include "shell/panes/BrowserPane.h"

void RenameCommand::begin() {
    platform::assertMainThread();
    PBImageBrowserView& view = _parts.browserPane.browserView();
    if (view.selection().selectCount(FoldedLeaves::Excluded) != 1) return;
    const PBImageBrowserIndex index = view.selection().firstSelectItem(FoldedLeaves::Excluded);
    view.scrollIndexToVisible(index);
    view.renameIndex(index);
}

void RenameCommand::finish(const std::shared_ptr<PBImageFileItem>& item, const QString& fileName) {
    platform::assertMainThread();
    const fileactions::RenameOutcome outcome = fileactions::renameImageFile(
        *item, fileName, _parts.mainFileDb, _parts.browserPane.folderPaths());
    if (outcome.result == fileactions::RenameResult::Failed) {
        _parts.alert(item->fileName(), outcome.reason);
    } else if (outcome.result == fileactions::RenameResult::Renamed) {
        _parts.browserPane.browserView().reloadData();
    }
}
