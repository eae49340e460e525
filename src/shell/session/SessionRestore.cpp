#include "shell/session/SessionRestore.h"

#include "browser/PBImageBrowserView.h"
#include "catalogue/CatalogueIdentity.h"
#include "catalogue/PBCatalogue.h"
#include "core/PBAppDelegate.h"
#include "core/Paths.h"
#include "group/PBImageFileItem.h"
#include "library/PBAliasManager.h"
#include "platform/tasks/MainThread.h"
#include "shell/large/LargeView.h"
#include "shell/panes/BrowserPane.h"
#include "shell/services/ShellServices.h"
#include "shell/sidebar/SourceTreeController.h"

#include <QFileInfo>

#include <utility>

SessionRestore::SessionRestore(const Parts& parts, QObject* parent)
    : QObject(parent), _parts(parts) {
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    connect(&_parts.tree, &SourceTreeController::selectionDidChange, this, [this] {
        folderDidChange();
    });
    // Not within the swap that brought them.
    connect(
        &browser, &PBImageBrowserView::itemCountDidChange, this, [this] { look(false); },
        Qt::QueuedConnection);
    connect(&browser, &PBImageBrowserView::selectionDidChange, this, [this, &browser] {
        if (_isFolderFound && !browser.isCarryingOver()) end();
    });
    connect(&_parts.largeView, &LargeView::isShownDidChange, this, [this] { end(); });
}

void SessionRestore::begin(SessionState state) {
    platform::assertMainThread();
    _state = std::move(state);
    _isFolderFound = false;
    folderDidChange();
    scanStateDidChange();
}

void SessionRestore::end() {
    platform::assertMainThread();
    if (!std::exchange(_state, std::nullopt)) return;
    Q_EMIT didEnd();
}

bool SessionRestore::isFolderSelected() const {
    const auto selected = _parts.tree.selectedFolder();
    return selected && PBUtilities::comparePath(
                           selected->folderPath(),
                           _parts.services.aliasManager.presentPath(_state->folder)) == 0;
}

void SessionRestore::folderDidChange() {
    if (!_state || !_parts.tree.selectedItem()) return;
    if (!isFolderSelected()) return end();
    if (!std::exchange(_isFolderFound, true)) bringBack();
}

void SessionRestore::bringBack() {
    _isSameCatalogue =
        CatalogueIdentity::identityOf(_parts.services.mainFileDb) == _state->catalogue;
    BrowserCarryOver::Noted noted;
    _isIncomplete = false;
    for (const SessionState::Photograph& photograph : _state->selected) {
        if (const qint64 id = presentId(photograph)) noted.selectedIds.push_back(id);
    }
    noted.currentId = presentId(_state->current);
    noted.anchorId = presentId(_state->anchor);
    noted.anchorOffset = _state->anchorOffset;
    _currentId = noted.currentId;
    _selectCount = std::ssize(noted.selectedIds);
    _parts.browserPane.browserView().bringBack(noted);
}

qint64 SessionRestore::presentId(const SessionState::Photograph& photograph) {
    FMDatabase& db = _parts.services.mainFileDb;
    const qint64 id = photograph.fileId;
    if (id == 0) return 0;
    // Ids are never given twice, so it is the same photograph wherever it lies now.
    if (_isSameCatalogue &&
        !PBCatalogue(db).imageFileDataWithIdAndFields(id, {QStringLiteral("Id")}).empty())
        return id;
    const qint64 found = idOfPath(photograph.path);
    _isIncomplete = _isIncomplete || found == 0;
    return found;
}

qint64 SessionRestore::idOfPath(const QString& path) const {
    if (path.isEmpty()) return 0;
    const QFileInfo info(path);
    QString below;
    const auto root = _parts.services.aliasManager.appropriateAliasObjectForPath(
        _parts.services.aliasManager.presentPath(info.path()), &below, false);
    if (!root) return 0;
    PBCatalogue catalogue(_parts.services.mainFileDb);
    const auto folder = catalogue.findFolderIdByAliasId(
        root->aliasId(), below.isEmpty() ? std::nullopt : std::optional(below));
    if (folder.value_or(0) == 0) return 0;
    return catalogue.findImageFileIdByFolderId(*folder, info.fileName(), nullptr, nullptr)
        .value_or(0);
}

void SessionRestore::scanStateDidChange() {
    platform::assertMainThread();
    if (!_state || !_isFolderFound || _parts.services.delegate.isScanning()) return;
    // A folder whose disk is away is scanned when that comes back.
    const auto selected = _parts.tree.selectedFolder();
    const auto root = selected ? selected->aliasObjectAndRelativePath(nullptr) : nullptr;
    if (root && !root->isMounted()) return;
    if (_isIncomplete) {
        bringBack();
        _parts.browserPane.browserView().allCame();
    }
    look(true);
    end();
}

void SessionRestore::look(bool isLast) {
    if (!_state || !_isFolderFound || !_state->isLargeView || _currentId == 0) return;
    const PBImageBrowserIndex current = indexOfCurrent();
    if (!current.isValid()) return;
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    if (_state->isListSelected && !isLast &&
        browser.selection().selectCount(FoldedLeaves::Included) < _selectCount)
        return;
    end();
    _parts.largeView.enterToLargeView(current);
}

PBImageBrowserIndex SessionRestore::indexOfCurrent() const {
    PBImageBrowserIndex found;
    _parts.browserPane.browserView().leaves().forEachImage(
        FoldedLeaves::Included, [&](const PBImageBrowserIndex& index, const auto& item) {
            if (item->fileId() == _currentId) found = index;
        });
    return found;
}
