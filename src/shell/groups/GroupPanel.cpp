#include "shell/groups/GroupPanel.h"

#include "platform/tasks/MainThread.h"

#include <QScopedValueRollback>
#include <QScrollBar>

GroupPanel::GroupPanel(
    PBGroupTreeDataSource& dataSource, group::TagLookup tagWithTagId,
    std::function<void(const PBGroupItemData& leaf)> scrollToLeaf)
    : _dataSource(dataSource), _scrollToLeaf(std::move(scrollToLeaf)),
      _view(new PBGroupOutlineView),
      _model(new GroupTreeModel(dataSource, std::move(tagWithTagId), _view)) {
    _view->setModel(_model);
    _view->setRootIndex(_model->rootIndex());
    connect(
        _view->selectionModel(), &QItemSelectionModel::selectionChanged, this,
        &GroupPanel::doOutlineViewSelectionChanged);
    connect(
        _view, &PBOutlineView::selectedRowPressed, this,
        &GroupPanel::doOutlineViewSelectionChanged);
    connect(_view, &QTreeView::collapsed, this, [this](const QModelIndex& index) {
        noteCollapsed(index, PBGroupItemData::CollapsedByUser);
    });
    connect(_view, &QTreeView::expanded, this, [this](const QModelIndex& index) {
        noteCollapsed(index, PBGroupItemData::ExpandedByUser);
    });
    connect(_view, &PBGroupOutlineView::outlineViewDidScroll, this, [this] {
        _dataSource.setIsOutlineViewScrolled(true);
    });
    _dataSource.setOutline(this);
}

GroupPanel::~GroupPanel() {
    _dataSource.setOutline(nullptr);
}

void GroupPanel::clear() {
    platform::assertMainThread();
    _view->verticalScrollBar()->setValue(0);
    _dataSource.setIsOutlineViewScrolled(false);
    reloadData();
}

void GroupPanel::reloadData() {
    _model->reloadData();
    if (_view->rootIndex() == _model->rootIndex()) return;
    _view->setRootIndex(_model->rootIndex());
    const QScopedValueRollback expanding(_isExpanding, true);
    _model->forEachExpandable([this](const PBGroupItemData& item, const QModelIndex& index) {
        if (item.collapsed() == PBGroupItemData::ExpandedByUser) _view->expand(index);
    });
}

void GroupPanel::expandItem(const std::shared_ptr<PBGroupItemData>& item) {
    const QScopedValueRollback expanding(_isExpanding, true);
    _view->expand(_model->indexForItem(*item));
}

void GroupPanel::noteCollapsed(const QModelIndex& index, PBGroupItemData::Collapsed collapsed) {
    if (_isExpanding) return;
    for (const auto& item : _model->itemsForIndex(index))
        item->setCollapsed(collapsed);
}

std::shared_ptr<PBGroupItemData> GroupPanel::selectedItem() const {
    const QModelIndexList selected = _view->selectionModel()->selectedIndexes();
    return selected.isEmpty() ? nullptr : _model->itemForIndex(selected.constFirst());
}

void GroupPanel::selectItem(const std::shared_ptr<PBGroupItemData>& item) {
    const QModelIndex index = _model->indexForItem(*item);
    if (!index.isValid()) return;
    // Scrolling to the row would also open what is above it.
    _view->setAutoScroll(false);
    _view->setCurrentIndex(index);
    _view->setAutoScroll(true);
}

void GroupPanel::doOutlineViewSelectionChanged() {
    if (_dataSource.ignoreSelectionChanged()) return;
    const auto item = selectedItem();
    PBGroupItem* group = item ? item->groupItem() : nullptr;
    PBGroupItem* leaf = group ? group->firstLeafGroupItem() : nullptr;
    if (leaf) _scrollToLeaf(*leaf->data());
}

int GroupPanel::topOfRow(const QModelIndex& index) const {
    // Asking for the place may lay the rows out, and so move what is visible.
    const int top = _view->visualRect(index).top();
    return top + _view->verticalScrollBar()->value();
}

std::optional<PBOutlineViewScrollCapture> GroupPanel::captureOutlineViewScroll() {
    const QPoint centre = _view->viewport()->rect().center();
    const QModelIndex index = _view->indexAt(centre);
    const auto item = _model->itemForIndex(index);
    if (!item) return std::nullopt;
    const int top = _view->verticalScrollBar()->value();
    return PBOutlineViewScrollCapture{item, static_cast<double>(top - topOfRow(index))};
}

void GroupPanel::scrollToScrollCapture(const PBOutlineViewScrollCapture& capture) {
    const QModelIndex index = capture.item ? _model->indexForItem(*capture.item) : QModelIndex();
    if (!index.isValid()) return;
    // A row in a closed group has no place of its own.
    const QRect row = _view->visualRect(index);
    if (row.isEmpty()) return;
    _view->verticalScrollBar()->setValue(topOfRow(index) + qRound(capture.offset));
}
