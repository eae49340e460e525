#pragma once

#include "library/PBFolderItem.h"
#include "library/PBFolderLister.h"
#include "library/PBSourceCategoryItem.h"

#include <QObject>
#include <QString>

#include <array>
#include <memory>
#include <vector>

class PBAliasManager;

/// The sidebar's tree without its view: four categories, the folder roots in them, and the folders
/// on disk below. Main thread.
class PBSourceTreeDataSource final : public QObject {
    Q_OBJECT

public:
    /// Both outlive this object.
    PBSourceTreeDataSource(PBAliasManager& aliasManager, PBFolderLister& lister);

    /// Puts every root that is no zombie into its category; items of roots that are there already
    /// stay, with their children.
    void reloadCategoryItem();
    /// Has the view look at all items again.
    void reloadData() { Q_EMIT itemsDidChange(); }
    /// Adds the item to the category of its root.
    void insertFolderAlias(std::shared_ptr<PBFolderAliasItem> item);
    void removeFolderAlias(const PBFolderAliasItem& item);
    [[nodiscard]] std::shared_ptr<PBFolderAliasItem>
    makeFolderAliasItem(std::shared_ptr<PBAliasObject> aliasObject) const;

    /// Both answer whether anything changed. Zombies have no items.
    bool refreshAliasObject(const PBAliasObject& aliasObject);
    bool refreshChilden(const QString& path, bool refreshChildren);
    /// The same, without waiting for the disk: what changed is told by `childrenDidArrive`.
    bool refreshInBackground(const QString& path, bool refreshChildren);

    [[nodiscard]] bool hasFolderAliasItem() const;
    /// The item of that root, or of one at the same place.
    [[nodiscard]] std::shared_ptr<PBFolderAliasItem>
    folderAliasItemWithAliasObject(const PBAliasObject& aliasObject) const;
    /// The item of a folder of the root, or, where the root has no item, of the root that holds it.
    /// `tryLoad` lists folders on the way; else only what is loaded is found.
    [[nodiscard]] std::shared_ptr<PBFolderItem> folderItemWithAliasObject(
        const PBAliasObject& aliasObject, const QString& relativePath, bool tryLoad) const;

    // What the view asks

    /// The rows at the top: categories that have roots.
    [[nodiscard]] std::vector<std::shared_ptr<PBSourceCategoryItem>> shownCategories() const;
    [[nodiscard]] static bool isGroupItem(const PBOutlineItem& item);
    [[nodiscard]] static bool isSelectable(const PBOutlineItem& item);
    /// Points.
    [[nodiscard]] static int heightOfRow(const PBOutlineItem& item);

    /// The row on which a context menu is open.
    [[nodiscard]] std::shared_ptr<PBOutlineItem> contextMenuItem() const {
        return _contextMenuItem;
    }
    void setContextMenuItem(std::shared_ptr<PBOutlineItem> item);
    /// While set, changes of the selection do nothing.
    [[nodiscard]] bool ignoreSelectionChanged() const { return _ignoreSelectionChanged; }
    void setIgnoreSelectionChanged(bool ignore) { _ignoreSelectionChanged = ignore; }

Q_SIGNALS:
    /// Rows of the tree came, went or look different.
    void itemsDidChange();
    /// A slow disk has answered.
    void childrenDidArrive(PBFolderItem* item);

private:
    /// nullptr for a type that nobody knows.
    [[nodiscard]] PBSourceCategoryItem* categoryOf(const PBAliasObject& aliasObject) const;

    PBAliasManager& _aliasManager;
    PBFolderLister& _lister;
    const std::shared_ptr<const PBFolderItemContext> _context;
    /// Local, network, external, in the order of the types; then what was opened. So are the rows.
    std::array<std::shared_ptr<PBSourceCategoryItem>, 4> _categories;
    std::shared_ptr<PBOutlineItem> _contextMenuItem;
    bool _ignoreSelectionChanged = false;
};
