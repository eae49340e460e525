#pragma once

#include "library/PBFolderItem.h"
#include "library/PBOutlineItem.h"

#include <QString>

#include <memory>
#include <vector>

/// One of the sidebar's groups of folder roots.
class PBSourceCategoryItem final : public PBOutlineItem {
public:
    using Children = std::vector<std::shared_ptr<PBFolderAliasItem>>;

    [[nodiscard]] static std::shared_ptr<PBSourceCategoryItem>
    sourceCategoryWithName(const QString& name);

    [[nodiscard]] QString displayName() const override { return _categoryName; }
    [[nodiscard]] PBOutlineItems children() override;
    [[nodiscard]] const Children& folderAliasItems() const { return _children; }
    void setFolderAliasItems(Children children) { _children = std::move(children); }

    [[nodiscard]] std::shared_ptr<PBFolderAliasItem>
    folderAliasItemForAliasObject(const PBAliasObject& aliasObject) const;

    bool refreshChilden(const QString& path, bool refreshChildren);
    /// Refreshes all that is loaded of one root.
    bool refreshAliasObject(const PBAliasObject& aliasObject);

private:
    explicit PBSourceCategoryItem(QString name) : _categoryName(std::move(name)) {}

    const QString _categoryName;
    Children _children;
};
