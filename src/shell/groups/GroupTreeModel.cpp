#include "shell/groups/GroupTreeModel.h"

#include "platform/program/LocalizedTexts.h"
#include "platform/work/MainThread.h"

#include <utility>
#include <vector>

struct GroupTreeModel::Node {
    std::shared_ptr<PBGroupItemData> item; // empty for the root
    Node* parent = nullptr;
    int row = 0;
    std::vector<Node> children;
    qulonglong imageFileCount = 0;
    QString name; // null until it was asked for

    void count(const PBGroupItem& group) {
        imageFileCount = group.imageFiles().size();
        for (const Node& child : children)
            imageFileCount += child.imageFileCount;
    }
};

GroupTreeModel::GroupTreeModel(
    const PBGroupTreeDataSource& dataSource, group::TagLookup tagWithTagId, QObject* parent)
    : QAbstractItemModel(parent), _dataSource(dataSource), _tagWithTagId(std::move(tagWithTagId)),
      _root(std::make_unique<Node>()) {
    readLevel(*_root, _dataSource.groupItemArray());
}

GroupTreeModel::~GroupTreeModel() = default;

void GroupTreeModel::reloadData() {
    platform::assertMainThread();
    const PBGroupItemArray& items = _dataSource.groupItemArray();
    if (hasShapeOf(*_root, items)) return updateLevel(*_root, items);
    beginResetModel();
    _nodes.clear();
    _root = std::make_unique<Node>();
    readLevel(*_root, items);
    endResetModel();
}

void GroupTreeModel::readLevel(Node& parent, const PBGroupItemArray& items) {
    parent.children = std::vector<Node>(items.size());
    for (std::size_t row = 0; row < items.size(); ++row) {
        Node& node = parent.children[row];
        node.item = items[row]->data();
        node.parent = &parent;
        node.row = static_cast<int>(row);
        readLevel(node, items[row]->children());
        node.count(*items[row]);
        _nodes.insert(node.item.get(), &node);
    }
}

bool GroupTreeModel::hasShapeOf(const Node& node, const PBGroupItemArray& items) {
    if (node.children.size() != items.size()) return false;
    for (std::size_t row = 0; row < items.size(); ++row) {
        const Node& child = node.children[row];
        if (child.item != items[row]->data() || !hasShapeOf(child, items[row]->children()))
            return false;
    }
    return true;
}

void GroupTreeModel::updateLevel(Node& parent, const PBGroupItemArray& items) {
    for (std::size_t row = 0; row < items.size(); ++row) {
        Node& node = parent.children[row];
        updateLevel(node, items[row]->children());
        node.count(*items[row]);
        node.name = QString(); // a tag may have another name now
    }
    if (items.empty()) return;
    Q_EMIT dataChanged(indexOf(parent.children.front()), indexOf(parent.children.back()));
}

GroupTreeModel::Node* GroupTreeModel::nodeAt(const QModelIndex& index) {
    return static_cast<Node*>(index.internalPointer());
}

QModelIndex GroupTreeModel::indexOf(const Node& node) const {
    return createIndex(node.row, 0, &node);
}

QModelIndex GroupTreeModel::rootIndex() const {
    return indexOf(*_root);
}

std::shared_ptr<PBGroupItemData> GroupTreeModel::itemForIndex(const QModelIndex& index) const {
    return index.isValid() ? nodeAt(index)->item : nullptr;
}

QModelIndex GroupTreeModel::indexForItem(const PBGroupItemData& item) const {
    const Node* node = _nodes.value(&item);
    return node ? indexOf(*node) : QModelIndex();
}

void GroupTreeModel::forEachExpandable(
    const std::function<void(const PBGroupItemData& item, const QModelIndex& index)>& call) const {
    for (const Node* node : _nodes)
        if (!node->children.empty()) call(*node->item, indexOf(*node));
}

QModelIndex GroupTreeModel::index(int row, int column, const QModelIndex& parent) const {
    if (column != 0 || row < 0) return {};
    if (!parent.isValid()) return row == 0 ? rootIndex() : QModelIndex();
    const auto& children = nodeAt(parent)->children;
    const auto place = static_cast<std::size_t>(row);
    return place < children.size() ? indexOf(children[place]) : QModelIndex();
}

QModelIndex GroupTreeModel::parent(const QModelIndex& index) const {
    const Node* parent = index.isValid() ? nodeAt(index)->parent : nullptr;
    return parent ? indexOf(*parent) : QModelIndex();
}

int GroupTreeModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? static_cast<int>(nodeAt(parent)->children.size()) : 1;
}

int GroupTreeModel::columnCount(const QModelIndex&) const {
    return 1;
}

bool GroupTreeModel::hasChildren(const QModelIndex& parent) const {
    return rowCount(parent) > 0;
}

Qt::ItemFlags GroupTreeModel::flags(const QModelIndex& index) const {
    if (!index.isValid()) return Qt::NoItemFlags;
    const Node& node = *nodeAt(index);
    Qt::ItemFlags flags = Qt::ItemIsEnabled;
    if (node.item) flags |= Qt::ItemIsSelectable;
    if (node.children.empty()) flags |= Qt::ItemNeverHasChildren;
    return flags;
}

const QString& GroupTreeModel::name(Node& node) const {
    // Data that have no node now are about to lose their row.
    const PBGroupItem* group = node.item->groupItem();
    if (node.name.isNull() && group) node.name = group->displayName(_tagWithTagId);
    return node.name;
}

QVariant GroupTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    Node& node = *nodeAt(index);
    if (!node.item)
        return role == Qt::DisplayRole ? QVariant(QStringLiteral("GroupItem")) : QVariant();
    const PBGroupItem* group = node.item->groupItem();
    switch (role) {
    case Qt::DisplayRole:
        return name(node);
    case Qt::ToolTipRole:
        return group ? group->fullDisplayName(_tagWithTagId) : QString();
    case Qt::AccessibleTextRole:
        return platform::localizedFormat(
            node.imageFileCount == 1 ? u"GroupRow_1" : u"GroupRow",
            {name(node), static_cast<qint64>(node.imageFileCount)});
    case IconRole:
        return group ? QVariant::fromValue(group->displayIcon()) : QVariant();
    case UnspecifiedRole:
        return !node.item->value().hasValue();
    case CountRole:
        return node.imageFileCount;
    default:
        return {};
    }
}
