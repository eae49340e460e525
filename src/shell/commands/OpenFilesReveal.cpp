#include "shell/commands/OpenFilesReveal.h"

#include "browser/PBImageBrowserView.h"
#include "core/Paths.h"
#include "group/PBImageFileItem.h"
#include "platform/tasks/MainThread.h"
#include "shell/panes/BrowserPane.h"
#include "shell/sidebar/SourceTreeController.h"

#include <utility>

OpenFilesReveal::OpenFilesReveal(Parts parts, QObject* parent)
    : QObject(parent), _parts(std::move(parts)) {
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    connect(&browser, &PBImageBrowserView::itemCountDidChange, this, [this] { look(); });
    connect(&browser, &PBImageBrowserView::selectionDidChange, this, [this] {
        if (!_isSelecting) end();
    });
    connect(&_parts.tree, &SourceTreeController::selectionDidChange, this, [this] {
        folderDidChange();
    });
}

void OpenFilesReveal::begin(std::shared_ptr<PBOpenFiles> openFiles, const QString& folder) {
    platform::assertMainThread();
    _openFiles = std::move(openFiles);
    _folder = folder;
    _wantedNames.clear();
    for (const auto& asked : _openFiles->openFileArray()) {
        if (asked.focusOpenFileObj) _wantedNames.append(asked.focusOpenFileObj->fileName);
        for (const auto& file : asked.fileArray)
            _wantedNames.append(file.fileName);
    }
}

void OpenFilesReveal::end() {
    platform::assertMainThread();
    if (!isWaiting()) return;
    _openFiles.reset();
    _wantedNames.clear();
    _parts.dropRequest();
}

void OpenFilesReveal::folderDidChange() {
    const auto selected = _parts.tree.selectedFolder();
    if (!selected || PBUtilities::comparePath(selected->folderPath(), _folder) != 0) end();
}

void OpenFilesReveal::scanStateDidChange() {
    platform::assertMainThread();
    if (!isWaiting() || _parts.isScanning()) return;
    look();
    // A folder that is selected only later scans later.
    const auto selected = _parts.tree.selectedFolder();
    if (selected && PBUtilities::comparePath(selected->folderPath(), _folder) == 0) end();
}

std::vector<PBImageBrowserIndex> OpenFilesReveal::found() const {
    std::vector<PBImageBrowserIndex> indexes;
    group::FolderPathCache folders;
    _parts.browserPane.browserView().leaves().forEachImage(
        FoldedLeaves::Included, [&](const PBImageBrowserIndex& index, const auto& item) {
            if (!_wantedNames.contains(item->fileName())) return;
            const QString folder = item->folderPath(_parts.browserPane.folderPaths(), folders);
            const bool isAsked = std::ranges::any_of(
                _openFiles->openFileArray(), [&](const PBOpenFiles::OpenFolder& asked) {
                    return PBUtilities::comparePath(asked.folderPath, folder) == 0;
                });
            if (isAsked) indexes.push_back(index);
        });
    return indexes;
}

void OpenFilesReveal::look() {
    if (!isWaiting() || _isSelecting || _wantedNames.isEmpty()) return;
    const auto indexes = found();
    const bool isComplete = std::ssize(indexes) >= _wantedNames.size();
    if (indexes.empty() || (!isComplete && _parts.isScanning())) return;
    _isSelecting = true;
    PBImageBrowserView& browser = _parts.browserPane.browserView();
    browser.GotoIndex(indexes.front());
    for (const auto& index : indexes)
        browser.leaves().imageFileAtIndex(index)->setIsSelected(true);
    browser.selectDidChange();
    browser.setFocus(Qt::OtherFocusReason);
    _isSelecting = false;
    if (isComplete) end();
}
