#include "shell/groups/GroupTreeModel.h"

#include "core/Paths.h"
#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <QSet>

#include <algorithm>
#include <utility>
#include <vector>

namespace {

/// The groups of one row from the upper to the lower: the group, and as long as it holds just one,
/// that.
std::vector<const PBGroupItem*> groupsOfRow(const PBGroupItem& group) {
    std::vector<const PBGroupItem*> groups{&group};
    while (groups.back()->children().size() == 1)
        groups.push_back(groups.back()->children().front().get());
    return groups;
}

} // namespace

struct GroupTreeModel::Node {
    std::vector<std::shared_ptr<PBGroupItemData>> items; // empty for the root
    Node* parent = nullptr;
    int row = 0;
    std::vector<Node> children;
    qulonglong imageFileCount = 0;
    QString name; // null until it was asked for

    [[nodiscard]] const std::shared_ptr<PBGroupItemData>& lowest() const { return items.back(); }
    void count(const std::vector<const PBGroupItem*>& groups) {
        imageFileCount = 0;
        for (const PBGroupItem* group : groups)
            imageFileCount += group->imageFiles().size();
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
        const auto groups = groupsOfRow(*items[row]);
        for (const PBGroupItem* group : groups) {
            node.items.push_back(group->data());
            _nodes.insert(group->data().get(), &node);
        }
        node.parent = &parent;
        node.row = static_cast<int>(row);
        readLevel(node, groups.back()->children());
        node.count(groups);
    }
}

bool GroupTreeModel::hasShapeOf(const Node& node, const PBGroupItemArray& items) {
    if (node.children.size() != items.size()) return false;
    for (std::size_t row = 0; row < items.size(); ++row) {
        const Node& child = node.children[row];
        const auto groups = groupsOfRow(*items[row]);
        const bool areSame = std::ranges::equal(
            child.items, groups, {}, {}, [](const PBGroupItem* group) { return group->data(); });
        if (!areSame || !hasShapeOf(child, groups.back()->children())) return false;
    }
    return true;
}

void GroupTreeModel::updateLevel(Node& parent, const PBGroupItemArray& items) {
    for (std::size_t row = 0; row < items.size(); ++row) {
        Node& node = parent.children[row];
        const auto groups = groupsOfRow(*items[row]);
        updateLevel(node, groups.back()->children());
        node.count(groups);
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
    const auto items = itemsForIndex(index);
    return items.empty() ? nullptr : items.back();
}

std::span<const std::shared_ptr<PBGroupItemData>>
GroupTreeModel::itemsForIndex(const QModelIndex& index) const {
    if (!index.isValid()) return {};
    return nodeAt(index)->items;
}

QModelIndex GroupTreeModel::indexForItem(const PBGroupItemData& item) const {
    const Node* node = _nodes.value(&item);
    return node ? indexOf(*node) : QModelIndex();
}

void GroupTreeModel::forEachExpandable(
    const std::function<void(const PBGroupItemData& item, const QModelIndex& index)>& call) const {
    for (auto entry = _nodes.cbegin(); entry != _nodes.cend(); ++entry) {
        const Node& node = **entry;
        if (entry.key() == node.lowest().get() && !node.children.empty())
            call(*node.lowest(), indexOf(node));
    }
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
    if (!node.items.empty()) flags |= Qt::ItemIsSelectable;
    if (node.children.empty()) flags |= Qt::ItemNeverHasChildren;
    return flags;
}

const QString& GroupTreeModel::name(const Node& node) const {
    if (node.name.isNull()) nameLevel(*node.parent);
    return node.name;
}

void GroupTreeModel::nameLevel(Node& parent) const {
    QHash<QString, std::vector<Node*>> alike;
    for (Node& node : parent.children) {
        QStringList names;
        for (const auto& item : node.items) {
            // Data that have no node now are about to lose their row.
            if (const PBGroupItem* group = item->groupItem())
                names.append(group->displayName(_tagWithTagId));
        }
        node.name = names.join(QStringLiteral(" › "));
        alike[node.name].push_back(&node);
    }
    for (const auto& nodes : alike)
        if (nodes.size() > 1) tellApart(nodes);
}

void GroupTreeModel::tellApart(const std::vector<Node*>& nodes) {
    std::vector<QStringList> folders; // above the one that gives the name, the nearest first
    qsizetype deepest = 0;
    for (const Node* node : nodes) {
        const PBGroupItemData& last = *node->lowest();
        if (last.type() != group::Folder || !last.value().hasValue()) return;
        QStringList parts = PBUtilities::pathComponents(last.value().toText());
        std::ranges::reverse(parts);
        folders.push_back(parts.mid(1));
        deepest = std::max(deepest, folders.back().size());
    }
    const auto above = [&](std::size_t index, qsizetype depth) {
        QStringList parts = folders[index].first(std::min(depth, folders[index].size()));
        std::ranges::reverse(parts);
        return parts.join(u'/');
    };
    for (qsizetype depth = 1; depth <= deepest; ++depth) {
        QSet<QString> told;
        for (std::size_t index = 0; index < nodes.size(); ++index)
            told.insert(above(index, depth));
        if (told.size() < static_cast<qsizetype>(nodes.size()) && depth < deepest) continue;
        for (std::size_t index = 0; index < nodes.size(); ++index)
            nodes[index]->name =
                platform::localizedFormat(u"GroupRowIn", {nodes[index]->name, above(index, depth)});
        return;
    }
}

QString GroupTreeModel::fullName(const Node& node) const {
    QStringList names;
    for (const auto& item : node.items)
        if (const PBGroupItem* group = item->groupItem())
            names.append(group->fullDisplayName(_tagWithTagId));
    return platform::harmlessText(names.join(QStringLiteral(" › ")));
}

QVariant GroupTreeModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Node& node = *nodeAt(index);
    if (node.items.empty())
        return role == Qt::DisplayRole ? QVariant(QStringLiteral("GroupItem")) : QVariant();
    const PBGroupItem* group = node.items.front()->groupItem();
    switch (role) {
    case Qt::DisplayRole:
        return name(node);
    case Qt::ToolTipRole:
        return fullName(node);
    case Qt::AccessibleTextRole:
        return platform::localizedFormat(
            node.imageFileCount == 1 ? u"GroupRow_1" : u"GroupRow",
            {name(node), static_cast<qint64>(node.imageFileCount)});
    case IconRole:
        return group ? QVariant::fromValue(group->displayIcon()) : QVariant();
    case UnspecifiedRole:
        return !std::ranges::all_of(
            node.items, [](const auto& item) { return item->value().hasValue(); });
    case CountRole:
        return node.imageFileCount;
    default:
        return {};
    }
}
