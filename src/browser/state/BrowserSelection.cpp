#include "browser/state/BrowserSelection.h"

#include "group/FolderPaths.h"
#include "platform/tasks/MainThread.h"

#include <algorithm>

namespace {

bool setSelected(PBImageFileItem& item, bool select) {
    if (item.isSelected() == select) return false;
    item.setIsSelected(select);
    return true;
}

bool isSelected(const std::shared_ptr<PBImageFileItem>& item) {
    return item->isSelected();
}

} // namespace

template <typename Wanted>
bool BrowserSelection::selectWhere(FoldedLeaves folded, Wanted wanted) const {
    platform::assertMainThread();
    bool hasChanged = false;
    _leaves.forEachImage(folded, [&](const PBImageBrowserIndex&, const auto& item) {
        hasChanged |= setSelected(*item, wanted(*item));
    });
    return hasChanged;
}

bool BrowserSelection::selectAll(FoldedLeaves folded) const {
    return selectWhere(folded, [](const PBImageFileItem&) { return true; });
}

bool BrowserSelection::invert(FoldedLeaves folded) const {
    return selectWhere(folded, [](const PBImageFileItem& item) { return !item.isSelected(); });
}

bool BrowserSelection::selectWithStars(quint64 stars, FoldedLeaves folded) const {
    return selectWhere(
        folded, [stars](const PBImageFileItem& item) { return item.star() == stars; });
}

bool BrowserSelection::deselectAll() const {
    platform::assertMainThread();
    if (PBImageFileItem::selectedCount() == 0) return false;
    bool hasChanged = false;
    _leaves.forEachImage(FoldedLeaves::Included, [&](const PBImageBrowserIndex&, const auto& item) {
        hasChanged |= setSelected(*item, false);
    });
    return hasChanged;
}

bool BrowserSelection::selectFrom(
    const PBImageBrowserIndex& from, const PBImageBrowserIndex& to) const {
    platform::assertMainThread();
    if (!from.isValid() || !to.isValid()) return false;
    const bool isOrdered = compareIndex(from, to) >= 0;
    const PBImageBrowserIndex& begin = isOrdered ? from : to;
    const PBImageBrowserIndex& end = isOrdered ? to : from;
    bool hasChanged = false;
    const std::int64_t lastGroup = std::min(end.group, _leaves.leafCount() - 1);
    for (std::int64_t group = begin.group; group <= lastGroup; ++group) {
        if (_leaves.isCollapsedForBrowser(group)) continue;
        const auto& images = _leaves.leaf(group).imageFiles;
        const std::int64_t count = _leaves.imageFileCount(group);
        const std::int64_t first = group == begin.group ? std::min(begin.item, count) : 0;
        const std::int64_t stop = group == end.group ? std::min(end.item + 1, count) : count;
        auto image = images.begin() + first;
        for (std::int64_t item = first; item < stop; ++item, ++image)
            hasChanged |= setSelected(**image, true);
    }
    return hasChanged;
}

void BrowserSelection::storeCommandSelect() const {
    platform::assertMainThread();
    _leaves.forEachImage(FoldedLeaves::Included, [](const PBImageBrowserIndex&, const auto& item) {
        item->setStoredSelect(item->isSelected());
    });
}

std::int64_t BrowserSelection::itemCount(FoldedLeaves folded) const {
    std::int64_t count = 0;
    for (std::int64_t group = 0; group < _leaves.leafCount(); ++group)
        if (_leaves.takesPart(group, folded)) count += _leaves.imageFileCount(group);
    return count;
}

std::int64_t BrowserSelection::selectCount(FoldedLeaves folded) const {
    if (PBImageFileItem::selectedCount() == 0) return 0;
    std::int64_t count = 0;
    _leaves.forEachImage(folded, [&](const PBImageBrowserIndex&, const auto& item) {
        count += item->isSelected() ? 1 : 0;
    });
    return count;
}

bool BrowserSelection::hasSelect(FoldedLeaves folded) const {
    return firstSelectItem(folded).isValid();
}

PBImageBrowserIndex BrowserSelection::firstSelectItem(FoldedLeaves folded) const {
    if (PBImageFileItem::selectedCount() == 0) return {};
    for (std::int64_t group = 0; group < _leaves.leafCount(); ++group) {
        if (!_leaves.takesPart(group, folded)) continue;
        const auto& images = _leaves.leaf(group).imageFiles;
        const auto found = std::ranges::find_if(images, isSelected);
        if (found != images.end()) return {group, static_cast<std::int64_t>(found.index())};
    }
    return {};
}

PBImageFileList BrowserSelection::selectedFileArray(FoldedLeaves folded) const {
    PBImageFileList selected;
    if (PBImageFileItem::selectedCount() == 0) return selected;
    _leaves.forEachImage(folded, [&](const PBImageBrowserIndex&, const auto& item) {
        if (item->isSelected()) selected.push_back(item);
    });
    return selected;
}

QStringList
BrowserSelection::selectedFilePath(const group::FolderPaths& folders, FoldedLeaves folded) const {
    QStringList paths;
    group::FolderPathCache cache;
    for (const auto& item : selectedFileArray(folded)) {
        const QString path = item->filePath(folders, cache);
        if (!path.isEmpty()) paths.append(path);
    }
    return paths;
}

std::vector<PBGroupItemChain>
BrowserSelection::selectedFileGroupTreeArray(FoldedLeaves folded) const {
    std::vector<PBGroupItemChain> chains;
    for (std::int64_t group = 0; group < _leaves.leafCount(); ++group) {
        if (!_leaves.takesPart(group, folded)) continue;
        const auto& [data, imageFiles] = _leaves.leaf(group);
        if (std::ranges::none_of(imageFiles, isSelected)) continue;
        std::shared_ptr<PBGroupItem> leaf = PBGroupItem::groupItemWithParent(nullptr, data);
        for (const auto& item : imageFiles)
            if (item->isSelected()) leaf->sortAddImageFileItem(item, 0, false);
        PBGroupItemChain chain{leaf};
        if (const PBGroupItem* live = data->groupItem())
            for (const PBGroupItem* node = live->parent(); node; node = node->parent())
                chain.insert(
                    chain.begin(), PBGroupItem::groupItemWithParent(nullptr, node->data()));
        chains.push_back(std::move(chain));
    }
    return chains;
}
