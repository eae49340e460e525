#include "library/PBSourceTreeDataSource.h"

#include "core/Paths.h"
#include "library/PBAliasManager.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <utility>

namespace {

constexpr int oneLineRow = 20;
constexpr int twoLineRow = 32;

} // namespace

PBSourceTreeDataSource::PBSourceTreeDataSource(PBAliasManager& aliasManager, PBFolderLister& lister)
    : _aliasManager(aliasManager), _lister(lister),
      _context(std::make_shared<const PBFolderItemContext>(PBFolderItemContext{
          lister, [this](PBFolderItem& item) { Q_EMIT childrenDidArrive(&item); }})),
      _categories{
          PBSourceCategoryItem::sourceCategoryWithName(platform::localizedString(u"LocalDisks")),
          PBSourceCategoryItem::sourceCategoryWithName(platform::localizedString(u"NetworkDisks")),
          PBSourceCategoryItem::sourceCategoryWithName(
              platform::localizedString(u"RemovableDisks"))} {}

PBSourceCategoryItem* PBSourceTreeDataSource::categoryForType(std::uint64_t type) const {
    return type < _categories.size() ? _categories[type].get() : nullptr;
}

std::shared_ptr<PBFolderAliasItem>
PBSourceTreeDataSource::makeFolderAliasItem(std::shared_ptr<PBAliasObject> aliasObject) const {
    return PBFolderAliasItem::folderAliasItemWithAliasObject(std::move(aliasObject), _context);
}

void PBSourceTreeDataSource::reloadCategoryItem() {
    platform::assertMainThread();
    std::array<PBSourceCategoryItem::Children, 3> children;
    for (const auto& root : _aliasManager.aliasArray()) {
        const PBSourceCategoryItem* category = categoryForType(root->type());
        if (root->isZombie() || !category) continue;
        auto item = category->folderAliasItemForAliasObject(*root);
        children[root->type()].push_back(item ? std::move(item) : makeFolderAliasItem(root));
    }
    for (std::size_t i = 0; i < _categories.size(); ++i)
        _categories[i]->setFolderAliasItems(std::move(children[i]));
    Q_EMIT itemsDidChange();
}

void PBSourceTreeDataSource::insertFolderAlias(std::shared_ptr<PBFolderAliasItem> item) {
    platform::assertMainThread();
    PBSourceCategoryItem* category = categoryForType(item->aliasObject()->type());
    if (!category) return;
    PBSourceCategoryItem::Children children = category->folderAliasItems();
    children.push_back(std::move(item));
    category->setFolderAliasItems(std::move(children));
    Q_EMIT itemsDidChange();
}

void PBSourceTreeDataSource::removeFolderAlias(const PBFolderAliasItem& item) {
    platform::assertMainThread();
    PBSourceCategoryItem* category = categoryForType(item.aliasObject()->type());
    if (!category) return;
    PBSourceCategoryItem::Children children = category->folderAliasItems();
    std::erase_if(children, [&](const auto& child) { return child.get() == &item; });
    category->setFolderAliasItems(std::move(children));
    Q_EMIT itemsDidChange();
}

bool PBSourceTreeDataSource::refreshAliasObject(const PBAliasObject& aliasObject) {
    platform::assertMainThread();
    PBSourceCategoryItem* category = categoryForType(aliasObject.type());
    if (aliasObject.isZombie() || !category) return false;
    return category->refreshAliasObject(aliasObject);
}

bool PBSourceTreeDataSource::refreshChilden(const QString& path, bool refreshChildren) {
    platform::assertMainThread();
    bool changed = false;
    for (const auto& category : _categories) {
        if (category->refreshChilden(path, refreshChildren)) changed = true;
    }
    return changed;
}

bool PBSourceTreeDataSource::refreshInBackground(const QString& path, bool refreshChildren) {
    _lister.setWaits(false);
    const bool changed = refreshChilden(path, refreshChildren);
    _lister.setWaits(true);
    return changed;
}

bool PBSourceTreeDataSource::hasFolderAliasItem() const {
    return std::ranges::any_of(
        _categories, [](const auto& category) { return !category->folderAliasItems().empty(); });
}

std::shared_ptr<PBFolderAliasItem>
PBSourceTreeDataSource::folderAliasItemWithAliasObject(const PBAliasObject& aliasObject) const {
    const QString path = aliasObject.path();
    for (const auto& category : _categories) {
        for (const auto& item : category->folderAliasItems()) {
            if (item->aliasObject().get() == &aliasObject) return item;
            // Unmounted roots have no place and are never at the same one.
            if (!path.isEmpty() && PBUtilities::comparePath(item->folderPath(), path) == 0) {
                return item;
            }
        }
    }
    return nullptr;
}

std::shared_ptr<PBFolderItem> PBSourceTreeDataSource::folderItemWithAliasObject(
    const PBAliasObject& aliasObject, const QString& relativePath, bool tryLoad) const {
    std::shared_ptr<PBFolderItem> item = folderAliasItemWithAliasObject(aliasObject);
    QString way = relativePath;
    if (!item) {
        const QString path = PBAliasManager::pathWithAliasObject(aliasObject, relativePath);
        const auto holder = _aliasManager.appropriateAliasObjectForPath(path, &way, true);
        if (holder) item = folderAliasItemWithAliasObject(*holder);
    }
    for (const QString& name : PBUtilities::pathComponents(way)) {
        if (!item) break;
        item = item->childFolderWithFolderName(name, tryLoad);
    }
    return item;
}

std::vector<std::shared_ptr<PBSourceCategoryItem>> PBSourceTreeDataSource::shownCategories() const {
    std::vector<std::shared_ptr<PBSourceCategoryItem>> shown;
    for (const auto& category : _categories) {
        if (!category->folderAliasItems().empty()) shown.push_back(category);
    }
    return shown;
}

bool PBSourceTreeDataSource::isGroupItem(const PBOutlineItem& item) {
    return dynamic_cast<const PBSourceCategoryItem*>(&item) != nullptr;
}

bool PBSourceTreeDataSource::isSelectable(const PBOutlineItem& item) {
    return !isGroupItem(item) && !item.displayName().isEmpty();
}

int PBSourceTreeDataSource::heightOfRow(const PBOutlineItem& item) {
    return item.description().isEmpty() ? oneLineRow : twoLineRow;
}

void PBSourceTreeDataSource::setContextMenuItem(std::shared_ptr<PBOutlineItem> item) {
    platform::assertMainThread();
    _contextMenuItem = std::move(item);
    Q_EMIT itemsDidChange();
}
