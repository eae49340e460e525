#include "shell/RenameCommand.h"

#include "browser/PBImageBrowserView.h"
#include "core/PBAppDelegate.h"
#include "fileactions/RenameImageFile.h"
#include "group/PBImageFileItem.h"
#include "shell/BrowserPane.h"

void RenameCommand::begin() {
    PBImageBrowserView& view = _parts.browserPane.browserView();
    if (view.selection().selectCount(false) != 1) return;
    const PBImageBrowserIndex index = view.selection().firstSelectItem(false);
    view.scrollIndexToVisible(index);
    view.renameIndex(index);
}

void RenameCommand::finish(const std::shared_ptr<PBImageFileItem>& item, const QString& fileName) {
    const fileactions::RenameOutcome outcome = fileactions::renameImageFile(
        *item, fileName, _parts.delegate.mainFileDb(), _parts.browserPane.folderPaths());
    if (outcome.result == fileactions::RenameResult::Failed) {
        _parts.alert(item->fileName(), outcome.reason);
    } else if (outcome.result == fileactions::RenameResult::Renamed) {
        _parts.browserPane.browserView().reloadData();
    }
}
