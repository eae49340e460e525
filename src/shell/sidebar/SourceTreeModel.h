#pragma once

#include "library/PBOutlineItem.h"

#include <QAbstractItemModel>
#include <QHash>

#include <memory>

class PBFolderItem;
class PBSourceTreeDataSource;

/// The sidebar's tree as rows for a view. Keeps a copy of which rows the view knows, so that the
/// items may change as they like: `reloadData` then tells the view the differences alone, and rows
/// that stay keep their selection and their expanded state. Main thread.
class SourceTreeModel final : public QAbstractItemModel {
    Q_OBJECT

public:
    enum Role {
        DescriptionRole = Qt::UserRole, ///< second line, text
        IconsRole,                      ///< names of icons, list of texts
        GroupRole,                      ///< the row is a category, bool
        UnmountedRole,                  ///< the row is a folder root out of reach, bool
        ContextRole,                    ///< a context menu is open on the row, bool
        HeightRole                      ///< points, int
    };

    /// The data source outlives the model.
    explicit SourceTreeModel(PBSourceTreeDataSource& dataSource, QObject* parent = nullptr);
    ~SourceTreeModel() override;

    /// nullptr for an invalid index.
    [[nodiscard]] std::shared_ptr<PBOutlineItem> itemForIndex(const QModelIndex& index) const;
    /// Invalid for an item that has no row (yet).
    [[nodiscard]] QModelIndex indexForItem(const PBOutlineItem& item) const;

    /// Rows are coming or going: the view knows some of what will be, and indexes shift.
    [[nodiscard]] bool isChanging() const { return _changes > 0; }

    /// Brings the rows in step with the items, and has all rows drawn anew.
    void reloadData();
    /// The same for what is below one item.
    void reloadChildren(const PBFolderItem& item);

    [[nodiscard]] QModelIndex
    index(int row, int column, const QModelIndex& parent = {}) const override;
    [[nodiscard]] QModelIndex parent(const QModelIndex& index) const override;
    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] bool hasChildren(const QModelIndex& parent = {}) const override;
    [[nodiscard]] bool canFetchMore(const QModelIndex& parent) const override;
    void fetchMore(const QModelIndex& parent) override;
    [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

Q_SIGNALS:
    /// Rows have come or gone, or may have.
    void didChange();

private:
    struct Node;
    class Change;

    [[nodiscard]] Node* nodeAt(const QModelIndex& index) const;
    [[nodiscard]] QModelIndex indexOf(const Node& node) const;
    [[nodiscard]] PBOutlineItems wantedChildren(const Node& node) const;
    void synchronize(Node& node);
    void removeUnwanted(Node& node, const PBOutlineItems& wanted);
    void insertMissing(Node& node, const PBOutlineItems& wanted);
    void removeNodes(Node& node, std::size_t first, std::size_t last);
    void forget(const Node& node);

    PBSourceTreeDataSource& _dataSource;
    const std::unique_ptr<Node> _top;
    QHash<const PBOutlineItem*, Node*> _nodes;
    int _changes = 0;
};
