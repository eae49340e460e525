#include "library/PBSourceCategoryItem.h"

std::shared_ptr<PBSourceCategoryItem>
PBSourceCategoryItem::sourceCategoryWithName(const QString& name) {
    return std::shared_ptr<PBSourceCategoryItem>(new PBSourceCategoryItem(name));
}

PBOutlineItems PBSourceCategoryItem::children() {
    return {_children.begin(), _children.end()};
}

std::shared_ptr<PBFolderAliasItem>
PBSourceCategoryItem::folderAliasItemForAliasObject(const PBAliasObject& aliasObject) const {
    for (const auto& child : _children) {
        if (child->aliasObject().get() == &aliasObject) return child;
    }
    return nullptr;
}

bool PBSourceCategoryItem::refreshChilden(const QString& path, bool refreshChildren) {
    bool changed = false;
    for (const auto& child : Children(_children)) {
        if (child->refreshChilden(path, refreshChildren)) changed = true;
    }
    return changed;
}

bool PBSourceCategoryItem::refreshAliasObject(const PBAliasObject& aliasObject) {
    const auto child = folderAliasItemForAliasObject(aliasObject);
    return child && child->refreshChilden({}, true);
}
