#include "shell/sidebar/SourceTreeController.h"

#include "library/OpenedRoots.h"
#include "library/PBSourceTreeDataSource.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "platform/values/CborValues.h"

#include <QMenu>

#include <vector>

using platform::localizedString;

namespace {

const QString expandedKey = QStringLiteral("ExpandedFolders");

} // namespace

SourceTreeController::SourceTreeController(
    PBSourceTreeDataSource& dataSource, PBSourceOutlineView& view,
    platform::UserDefaults& userDefaults, QObject* parent)
    : QObject(parent), _dataSource(dataSource), _view(view), _model(dataSource),
      _userDefaults(userDefaults) {
    loadExpansion();
    _view.setModel(&_model);
    connect(
        _view.selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &SourceTreeController::noteSelection);
    connect(&_model, &SourceTreeModel::didChange, this, &SourceTreeController::rowsDidChange);
    connect(&_view, &PBSourceOutlineView::menuRequested, this, &SourceTreeController::showMenu);
    connect(
        &_view, &PBSourceOutlineView::selectedRowPressed, this, [this](const QModelIndex& index) {
            if (index.data(SourceTreeModel::UnmountedRole).toBool()) Q_EMIT unmountedRootClicked();
        });
    connect(&_view, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        noteExpansion(index, true);
    });
    connect(&_view, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        noteExpansion(index, false);
    });
    connect(
        &_model, &QAbstractItemModel::rowsInserted, this, &SourceTreeController::restoreExpansion);
}

SourceTreeController::~SourceTreeController() {
    // The view outlives the model, and tells of rows that go with it.
    _view.selectionModel()->disconnect(this);
    _view.disconnect(this);
    _view.setModel(nullptr);
}

std::shared_ptr<PBOutlineItem> SourceTreeController::selectedItem() const {
    const QModelIndexList rows = _view.selectionModel()->selectedIndexes();
    return rows.isEmpty() ? nullptr : _model.itemForIndex(rows.constFirst());
}

std::shared_ptr<PBFolderItem> SourceTreeController::selectedFolder() const {
    return std::dynamic_pointer_cast<PBFolderItem>(selectedItem());
}

void SourceTreeController::noteSelection() {
    // Qt also tells of a change when the indexes of what is selected shift.
    if (_model.isChanging()) return;
    auto item = selectedItem();
    if (item == _toldItem) return;
    _toldItem = std::move(item);
    if (!_dataSource.ignoreSelectionChanged()) Q_EMIT selectionDidChange();
}

void SourceTreeController::rowsDidChange() {
    // A row that only moved was taken out and put in again.
    const QModelIndex moved =
        _toldItem && !selectedItem() ? _model.indexForItem(*_toldItem) : QModelIndex();
    if (moved.isValid()) _view.setCurrentIndex(moved);
    noteSelection();
}

bool SourceTreeController::hasFolderAliasItem() const {
    return _dataSource.hasFolderAliasItem();
}

void SourceTreeController::expandCategoryItem() {
    for (const auto& category : _dataSource.shownCategories()) {
        if (isKeptOpen(*category)) _view.expand(_model.indexForItem(*category));
    }
}

void SourceTreeController::select(const PBFolderItem& item) {
    platform::assertMainThread();
    std::vector<std::shared_ptr<PBFolderItem>> ancestors;
    for (auto above = item.parent(); above; above = above->parent())
        ancestors.push_back(above);
    const PBFolderItem& root = ancestors.empty() ? item : *ancestors.back();
    _view.expand(_model.indexForItem(root).parent());
    for (auto above = ancestors.rbegin(); above != ancestors.rend(); ++above) {
        const QModelIndex row = _model.indexForItem(**above);
        // A view that waits for its layout takes note of the expansion, but fetches nothing yet.
        if (row.isValid() && _model.canFetchMore(row)) _model.fetchMore(row);
        _view.expand(row);
    }
    const QModelIndex index = _model.indexForItem(item);
    if (!index.isValid()) return;
    _view.setCurrentIndex(index);
    scrollTo(index);
}

void SourceTreeController::scrollTo(const QModelIndex& index) {
    // With one more row on each side, so that it shows that there is more.
    for (const QModelIndex& shown : {_view.indexAbove(index), _view.indexBelow(index), index}) {
        if (shown.isValid()) _view.scrollTo(shown);
    }
}

void SourceTreeController::clearSelection() {
    platform::assertMainThread();
    _view.setCurrentIndex({});
    _view.clearSelection();
}

bool SourceTreeController::isExpanded(const PBFolderItem& item) const {
    return _view.isExpanded(_model.indexForItem(item));
}

void SourceTreeController::insertFolderAlias(const std::shared_ptr<PBFolderAliasItem>& item) {
    platform::assertMainThread();
    _dataSource.insertFolderAlias(item);
    select(*item);
}

void SourceTreeController::removeFolderAlias(const PBFolderAliasItem& item) {
    platform::assertMainThread();
    _dataSource.removeFolderAlias(item);
}

std::shared_ptr<PBFolderItem> SourceTreeController::folderAt(const QPoint& position) const {
    return std::dynamic_pointer_cast<PBFolderItem>(_model.itemForIndex(_view.indexAt(position)));
}

void SourceTreeController::markDropTarget(const std::shared_ptr<PBFolderItem>& item) {
    if (_dataSource.contextMenuItem() != item) _dataSource.setContextMenuItem(item);
}

void SourceTreeController::showMenu(const QModelIndex& index, const QPoint& position) {
    const auto item = std::dynamic_pointer_cast<PBFolderItem>(_model.itemForIndex(index));
    if (!item) return;
    auto* menu = new QMenu(&_view);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    QAction* reveal = menu->addAction(
        localizedString(u"RevealInFinder"), this, [this, item] { Q_EMIT revealRequested(item); });
    reveal->setEnabled(!item->folderPath().isEmpty());
    if (const auto root = std::dynamic_pointer_cast<PBFolderAliasItem>(item)) {
        if (!root->aliasObject()->isMounted()) {
            menu->addAction(localizedString(u"LocateFolder"), this, [this, root] {
                Q_EMIT locateRequested(root);
            });
        }
        if (OpenedRoots::isOpened(*root)) {
            menu->addAction(localizedString(u"KeepInSidebar"), this, [this, root] {
                Q_EMIT keepRequested(root);
            });
        }
        menu->addAction(localizedString(u"RemoveFromSidebar"), this, [this, root] {
            Q_EMIT removeRequested(root);
        });
    }
    _dataSource.setContextMenuItem(item);
    const auto scope = std::make_shared<platform::TrackingScope>();
    connect(menu, &QObject::destroyed, this, [this, item, scope] {
        if (_dataSource.contextMenuItem() == item) _dataSource.setContextMenuItem(nullptr);
    });
    menu->popup(position);
}

QString SourceTreeController::expansionKey(const PBOutlineItem& item) {
    const auto* folder = dynamic_cast<const PBFolderItem*>(&item);
    if (!folder) return item.displayName();
    QString relativePath;
    const auto root = folder->aliasObjectAndRelativePath(&relativePath);
    return root ? QStringLiteral("%1/%2").arg(root->aliasId()).arg(relativePath) : QString();
}

void SourceTreeController::noteExpansion(const QModelIndex& index, bool isExpanded) {
    const auto item = _model.itemForIndex(index);
    if (!item) return;
    const bool isCategory = PBSourceTreeDataSource::isGroupItem(*item);
    const QString key = expansionKey(*item);
    if (_expanded.contains(key) == (isExpanded != isCategory)) return;
    if (isExpanded != isCategory) {
        _expanded.insert(key);
    } else {
        _expanded.remove(key);
    }
    PBDictionary stored;
    for (const QString& one : _expanded)
        stored.emplace(one, true);
    _userDefaults.setData(platform::encodeDictionary(stored), expandedKey);
}

void SourceTreeController::loadExpansion() {
    const auto stored = _userDefaults.dataForKey(expandedKey);
    const auto keys = stored ? platform::decodeDictionary(*stored) : std::nullopt;
    if (!keys) return;
    for (const auto& [key, value] : *keys)
        _expanded.insert(key);
}

bool SourceTreeController::isKeptOpen(const PBOutlineItem& item) const {
    return _expanded.contains(expansionKey(item)) != PBSourceTreeDataSource::isGroupItem(item);
}

void SourceTreeController::restoreExpansion(const QModelIndex& parent, int first, int last) {
    QList<QPersistentModelIndex> rows;
    for (int row = first; row <= last; ++row) {
        const QModelIndex index = _model.index(row, 0, parent);
        const auto item = _model.itemForIndex(index);
        if (item && isKeptOpen(*item)) rows.append(index);
    }
    if (rows.isEmpty()) return;
    // Expanding inserts further rows, which this insertion has to be over for.
    QMetaObject::invokeMethod(
        this,
        [this, rows] {
            for (const QPersistentModelIndex& row : rows) {
                if (row.isValid()) _view.expand(row);
            }
        },
        Qt::QueuedConnection);
}
