#include "library/PBSourceTreeDataSource.h"

#include "core/Paths.h"
#include "library/OpenedRoots.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <map>
#include <utility>

namespace {

constexpr int oneLineRow = 20;
constexpr int twoLineRow = 32;
constexpr std::size_t openedCategory = 3;

} // namespace

PBSourceTreeDataSource::PBSourceTreeDataSource(PBAliasManager& aliasManager, PBFolderLister& lister)
    : _aliasManager(aliasManager), _lister(lister),
      _context(std::make_shared<const PBFolderItemContext>(PBFolderItemContext{
          lister, [this](PBFolderItem& item) { Q_EMIT childrenDidArrive(&item); }})),
      _categories{
          PBSourceCategoryItem::sourceCategoryWithName(platform::localizedString(u"LocalDisks")),
          PBSourceCategoryItem::sourceCategoryWithName(platform::localizedString(u"NetworkDisks")),
          PBSourceCategoryItem::sourceCategoryWithName(
              platform::localizedString(u"RemovableDisks")),
          PBSourceCategoryItem::sourceCategoryWithName(
              platform::localizedString(u"OpenedFolders"))} {}

PBSourceCategoryItem* PBSourceTreeDataSource::categoryOf(const PBAliasObject& aliasObject) const {
    if (OpenedRoots::isOpened(aliasObject)) return _categories[openedCategory].get();
    const std::uint64_t type = aliasObject.type();
    return type < openedCategory ? _categories[type].get() : nullptr;
}

std::shared_ptr<PBFolderAliasItem>
PBSourceTreeDataSource::makeFolderAliasItem(std::shared_ptr<PBAliasObject> aliasObject) const {
    return PBFolderAliasItem::folderAliasItemWithAliasObject(std::move(aliasObject), _context);
}

void PBSourceTreeDataSource::reloadCategoryItem() {
    platform::assertMainThread();
    std::map<const PBSourceCategoryItem*, PBSourceCategoryItem::Children> children;
    for (const auto& root : _aliasManager.aliasArray()) {
        const PBSourceCategoryItem* category = categoryOf(*root);
        if (root->isZombie() || !category) continue;
        auto item = category->folderAliasItemForAliasObject(*root);
        children[category].push_back(item ? std::move(item) : makeFolderAliasItem(root));
    }
    for (const auto& category : _categories)
        category->setFolderAliasItems(std::move(children[category.get()]));
    Q_EMIT itemsDidChange();
}

void PBSourceTreeDataSource::insertFolderAlias(std::shared_ptr<PBFolderAliasItem> item) {
    platform::assertMainThread();
    PBSourceCategoryItem* category = categoryOf(*item->aliasObject());
    if (!category) return;
    PBSourceCategoryItem::Children children = category->folderAliasItems();
    children.push_back(std::move(item));
    category->setFolderAliasItems(std::move(children));
    Q_EMIT itemsDidChange();
}

void PBSourceTreeDataSource::removeFolderAlias(const PBFolderAliasItem& item) {
    platform::assertMainThread();
    // Its root may be one of another category by now.
    for (const auto& category : _categories) {
        PBSourceCategoryItem::Children children = category->folderAliasItems();
        std::erase_if(children, [&](const auto& child) { return child.get() == &item; });
        category->setFolderAliasItems(std::move(children));
    }
    Q_EMIT itemsDidChange();
}

bool PBSourceTreeDataSource::refreshAliasObject(const PBAliasObject& aliasObject) {
    platform::assertMainThread();
    PBSourceCategoryItem* category = categoryOf(aliasObject);
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
