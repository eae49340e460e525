#pragma once

#include "group/PBGroupTreeDataSource.h"

#include <QAbstractItemModel>
#include <QHash>

#include <memory>
#include <span>
#include <vector>

/// The live group tree as rows for the group panel. There is one row at the top, `rootIndex`, which
/// stands for the tree as a whole and is not shown; the groups are below it. Row objects are the
/// groups' `PBGroupItemData`, which outlive a change of trees. Keeps the shape of the tree as it
/// was when it was last told to look, so that nothing dangles while trees come and go. Main thread.
class GroupTreeModel final : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Role {
        IconRole = Qt::UserRole, ///< group::IconName
        UnspecifiedRole,         ///< a group of the row has no value, bool
        CountRole                ///< photographs below the row, qulonglong
    };

    /// The data source outlives the model.
    GroupTreeModel(
        const PBGroupTreeDataSource& dataSource, group::TagLookup tagWithTagId,
        QObject* parent = nullptr);
    ~GroupTreeModel() override;

    /// Looks at the live tree again. With the same groups as before rows only change what they
    /// show; otherwise the model is reset.
    void reloadData();

    [[nodiscard]] QModelIndex rootIndex() const;
    /// The groups that share the row: one, and below it each that is the only one of the one
    /// before. Empty for an index that is no group.
    [[nodiscard]] std::span<const std::shared_ptr<PBGroupItemData>>
    itemsForIndex(const QModelIndex& index) const;
    /// The last of them; nullptr for an index that is no group.
    [[nodiscard]] std::shared_ptr<PBGroupItemData> itemForIndex(const QModelIndex& index) const;
    /// Invalid for a group that has no row.
    [[nodiscard]] QModelIndex indexForItem(const PBGroupItemData& item) const;

    /// Calls for each row that has children.
    void forEachExpandable(
        const std::function<void(const PBGroupItemData& item, const QModelIndex& index)>& call)
        const;

    [[nodiscard]] QModelIndex
    index(int row, int column, const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& index) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] bool hasChildren(const QModelIndex& parent = {}) const override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

private:
    struct Node;

    [[nodiscard]] static Node* nodeAt(const QModelIndex& index);
    [[nodiscard]] QModelIndex indexOf(const Node& node) const;
    [[nodiscard]] const QString& name(const Node& node) const;
    [[nodiscard]] QString fullName(const Node& node) const;
    /// Names all rows below the node; folders of one name get the nearest parents that differ.
    void nameLevel(Node& parent) const;
    static void tellApart(const std::vector<Node*>& nodes);
    void readLevel(Node& parent, const PBGroupItemArray& items);
    [[nodiscard]] static bool hasShapeOf(const Node& node, const PBGroupItemArray& items);
    void updateLevel(Node& parent, const PBGroupItemArray& items);

    const PBGroupTreeDataSource& _dataSource;
    const group::TagLookup _tagWithTagId;
    std::unique_ptr<Node> _root;
    QHash<const PBGroupItemData*, Node*> _nodes;
};
