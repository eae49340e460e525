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

/// Images before the one found last that are looked at first: steps back are as near as steps on.
constexpr std::int64_t nearby = 64;
/// So many are looked for where one was last; more are met soon, and better in order.
constexpr std::int64_t few = 64;

} // namespace

template <typename Function>
void BrowserSelection::forEachSelected(FoldedLeaves folded, Function&& function) const {
    // An image is in one leaf only.
    std::int64_t left = PBImageFileItem::selectedCount();
    const std::int64_t leafCount = _leaves.leafCount();
    if (left <= 0 || leafCount == 0) return;
    const PBImageBrowserIndex near = left <= few ? _found : PBImageBrowserIndex{0, 0};
    const std::int64_t startGroup = std::clamp<std::int64_t>(near.group, 0, leafCount - 1);
    const std::int64_t startItem =
        std::clamp<std::int64_t>(near.item - nearby, 0, _leaves.imageFileCount(startGroup));
    // All round, and the beginning of the first leaf at the end.
    for (std::int64_t walked = 0; walked <= leafCount && left > 0; ++walked) {
        const std::int64_t group = (startGroup + walked) % leafCount;
        if (!_leaves.takesPart(group, folded)) continue;
        const auto& images = _leaves.leaf(group).imageFiles;
        const std::int64_t end = walked == leafCount ? startItem : _leaves.imageFileCount(group);
        std::int64_t item = walked == 0 ? startItem : 0;
        for (auto image = images.begin() + item; item < end && left > 0; ++item, ++image) {
            if (!(*image)->isSelected()) continue;
            --left;
            _found = {group, item};
            if (!function(_found, *image)) return;
        }
    }
}

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
    const PBImageFileList selected = selectedFileArray(FoldedLeaves::Included);
    for (const auto& item : selected)
        item->setIsSelected(false);
    return !selected.empty();
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
    std::int64_t count = 0;
    forEachSelected(folded, [&](const PBImageBrowserIndex&, const auto&) { return ++count > 0; });
    return count;
}

bool BrowserSelection::hasSelect(FoldedLeaves folded) const {
    return firstSelectItem(folded).isValid();
}

PBImageBrowserIndex BrowserSelection::firstSelectItem(FoldedLeaves folded) const {
    PBImageBrowserIndex first;
    forEachSelected(folded, [&](const PBImageBrowserIndex& index, const auto&) {
        if (!first.isValid() || compareIndex(index, first) > 0) first = index;
        return PBImageFileItem::selectedCount() <= few;
    });
    return first;
}

PBImageFileList BrowserSelection::selectedFileArray(FoldedLeaves folded) const {
    std::vector<std::pair<PBImageBrowserIndex, std::shared_ptr<PBImageFileItem>>> found;
    forEachSelected(folded, [&](const PBImageBrowserIndex& index, const auto& item) {
        found.emplace_back(index, item);
        return true;
    });
    const auto isBefore = [](const auto& one, const auto& other) {
        return compareIndex(one.first, other.first) > 0;
    };
    if (std::ssize(found) <= few) std::ranges::sort(found, isBefore);
    PBImageFileList selected;
    selected.reserve(found.size());
    for (auto& [index, item] : found)
        selected.push_back(std::move(item));
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
