#include "shell/sidebar/SourceTreeModel.h"

#include "library/OpenedRoots.h"
#include "library/PBSourceTreeDataSource.h"
#include "platform/program/HarmlessText.h"
#include "platform/tasks/MainThread.h"

#include <QSet>

#include <algorithm>

struct SourceTreeModel::Node {
    std::shared_ptr<PBOutlineItem> item; // empty at the top
    Node* parent = nullptr;
    std::size_t row = 0;
    std::vector<std::unique_ptr<Node>> children;
    bool isFetched = false;

    void renumber(std::size_t from) {
        for (std::size_t i = from; i < children.size(); ++i)
            children[i]->row = i;
    }
};

class SourceTreeModel::Change {
public:
    explicit Change(SourceTreeModel& model) : _model(model) { ++_model._changes; }
    ~Change() {
        if (--_model._changes == 0) Q_EMIT _model.didChange();
    }
    Change(const Change&) = delete;
    Change& operator=(const Change&) = delete;

private:
    SourceTreeModel& _model;
};

SourceTreeModel::SourceTreeModel(PBSourceTreeDataSource& dataSource, QObject* parent)
    : QAbstractItemModel(parent), _dataSource(dataSource), _top(std::make_unique<Node>()) {
    _top->isFetched = true;
    connect(
        &dataSource, &PBSourceTreeDataSource::itemsDidChange, this, &SourceTreeModel::reloadData);
    connect(
        &dataSource, &PBSourceTreeDataSource::childrenDidArrive, this,
        [this](PBFolderItem* item) { reloadChildren(*item); });
    synchronize(*_top);
}

SourceTreeModel::~SourceTreeModel() = default;

SourceTreeModel::Node* SourceTreeModel::nodeAt(const QModelIndex& index) const {
    return index.isValid() ? static_cast<Node*>(index.internalPointer()) : _top.get();
}

QModelIndex SourceTreeModel::indexOf(const Node& node) const {
    return &node == _top.get() ? QModelIndex() : createIndex(static_cast<int>(node.row), 0, &node);
}

std::shared_ptr<PBOutlineItem> SourceTreeModel::itemForIndex(const QModelIndex& index) const {
    return index.isValid() ? nodeAt(index)->item : nullptr;
}

QModelIndex SourceTreeModel::indexForItem(const PBOutlineItem& item) const {
    const Node* node = _nodes.value(&item);
    return node ? indexOf(*node) : QModelIndex();
}

PBOutlineItems SourceTreeModel::wantedChildren(const Node& node) const {
    if (node.item) return node.item->children();
    const auto categories = _dataSource.shownCategories();
    return {categories.begin(), categories.end()};
}

void SourceTreeModel::reloadData() {
    platform::assertMainThread();
    const Change change(*this);
    synchronize(*_top);
    if (!_top->children.empty()) {
        Q_EMIT dataChanged(indexOf(*_top->children.front()), indexOf(*_top->children.back()));
    }
}

void SourceTreeModel::reloadChildren(const PBFolderItem& item) {
    platform::assertMainThread();
    const Change change(*this);
    if (Node* node = _nodes.value(&item)) synchronize(*node);
}

void SourceTreeModel::synchronize(Node& node) {
    if (!node.isFetched) return;
    const PBOutlineItems wanted = wantedChildren(node);
    removeUnwanted(node, wanted);
    insertMissing(node, wanted);
    for (const auto& child : node.children)
        synchronize(*child);
    if (node.children.empty()) return;
    Q_EMIT dataChanged(indexOf(*node.children.front()), indexOf(*node.children.back()));
}

void SourceTreeModel::removeUnwanted(Node& node, const PBOutlineItems& wanted) {
    QSet<const PBOutlineItem*> kept;
    kept.reserve(static_cast<qsizetype>(wanted.size()));
    for (const auto& item : wanted)
        kept.insert(item.get());
    std::size_t end = node.children.size();
    while (end > 0) {
        std::size_t first = end;
        while (first > 0 && !kept.contains(node.children[first - 1]->item.get()))
            --first;
        if (first < end) removeNodes(node, first, end);
        end = first > 0 ? first - 1 : 0;
    }
}

void SourceTreeModel::insertMissing(Node& node, const PBOutlineItems& wanted) {
    for (std::size_t place = 0; place < wanted.size();) {
        if (place < node.children.size() && node.children[place]->item == wanted[place]) {
            ++place;
            continue;
        }
        // A row that is known, but further down, moves here as a new one.
        if (const Node* known = _nodes.value(wanted[place].get())) {
            removeNodes(node, known->row, known->row + 1);
        }
        std::size_t end = place + 1;
        while (end < wanted.size() && !_nodes.contains(wanted[end].get()))
            ++end;
        beginInsertRows(indexOf(node), static_cast<int>(place), static_cast<int>(end) - 1);
        std::vector<std::unique_ptr<Node>> added;
        for (std::size_t i = place; i < end; ++i) {
            auto child = std::make_unique<Node>();
            child->item = wanted[i];
            child->parent = &node;
            // The roots of a category are there already; folders are listed when they are opened.
            child->isFetched = &node == _top.get();
            _nodes.insert(child->item.get(), child.get());
            added.push_back(std::move(child));
        }
        node.children.insert(
            node.children.begin() + static_cast<std::ptrdiff_t>(place),
            std::make_move_iterator(added.begin()), std::make_move_iterator(added.end()));
        node.renumber(place);
        endInsertRows();
        place = end;
    }
}

void SourceTreeModel::removeNodes(Node& node, std::size_t first, std::size_t last) {
    beginRemoveRows(indexOf(node), static_cast<int>(first), static_cast<int>(last) - 1);
    for (std::size_t i = first; i < last; ++i)
        forget(*node.children[i]);
    node.children.erase(
        node.children.begin() + static_cast<std::ptrdiff_t>(first),
        node.children.begin() + static_cast<std::ptrdiff_t>(last));
    node.renumber(first);
    endRemoveRows();
}

void SourceTreeModel::forget(const Node& node) {
    _nodes.remove(node.item.get());
    for (const auto& child : node.children)
        forget(*child);
}

QModelIndex SourceTreeModel::index(int row, int column, const QModelIndex& parent) const {
    const Node* node = nodeAt(parent);
    if (column != 0 || row < 0 || static_cast<std::size_t>(row) >= node->children.size()) return {};
    return indexOf(*node->children[static_cast<std::size_t>(row)]);
}

QModelIndex SourceTreeModel::parent(const QModelIndex& index) const {
    return index.isValid() ? indexOf(*nodeAt(index)->parent) : QModelIndex();
}

int SourceTreeModel::rowCount(const QModelIndex& parent) const {
    return static_cast<int>(nodeAt(parent)->children.size());
}

int SourceTreeModel::columnCount(const QModelIndex&) const {
    return 1;
}

bool SourceTreeModel::hasChildren(const QModelIndex& parent) const {
    if (!parent.isValid()) return !_top->children.empty();
    // Whether a folder has subfolders shows only when it is opened.
    const auto folder = std::dynamic_pointer_cast<PBFolderItem>(itemForIndex(parent));
    return !folder || !OpenedRoots::isOpened(*folder);
}

bool SourceTreeModel::canFetchMore(const QModelIndex& parent) const {
    return !nodeAt(parent)->isFetched;
}

void SourceTreeModel::fetchMore(const QModelIndex& parent) {
    Node& node = *nodeAt(parent);
    if (std::exchange(node.isFetched, true)) return;
    const Change change(*this);
    synchronize(node);
}

Qt::ItemFlags SourceTreeModel::flags(const QModelIndex& index) const {
    const auto item = itemForIndex(index);
    if (!item) return Qt::NoItemFlags;
    return PBSourceTreeDataSource::isSelectable(*item) ? Qt::ItemIsEnabled | Qt::ItemIsSelectable
                                                       : Qt::ItemIsEnabled;
}

QVariant SourceTreeModel::data(const QModelIndex& index, int role) const {
    const auto item = itemForIndex(index);
    if (!item) return {};
    switch (role) {
    case Qt::DisplayRole:
        return item->displayName();
    case Qt::ToolTipRole:
        return platform::harmlessText(item->tip());
    case Qt::AccessibleDescriptionRole:
    case DescriptionRole:
        return platform::harmlessText(item->description());
    case IconsRole:
        return item->displayIcons();
    case GroupRole:
        return PBSourceTreeDataSource::isGroupItem(*item);
    case UnmountedRole: {
        const auto* root = dynamic_cast<const PBFolderAliasItem*>(item.get());
        return root && !root->aliasObject()->isMounted();
    }
    case ContextRole:
        return item == _dataSource.contextMenuItem();
    case HeightRole:
        return PBSourceTreeDataSource::heightOfRow(*item);
    default:
        return {};
    }
}
