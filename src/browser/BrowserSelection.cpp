#include "browser/BrowserSelection.h"

#include "group/FolderPaths.h"

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

bool BrowserSelection::selectAll(bool select, bool includeCollapse) const {
    bool hasChanged = false;
    _leaves.forEachImage(includeCollapse, [&](const PBImageBrowserIndex&, const auto& item) {
        hasChanged |= setSelected(*item, select);
    });
    return hasChanged;
}

bool BrowserSelection::selectFrom(
    const PBImageBrowserIndex& from, const PBImageBrowserIndex& to, bool select,
    bool includeCollapse) const {
    if (!from.isValid() || !to.isValid()) return false;
    const bool isOrdered = compareIndex(from, to) >= 0;
    const PBImageBrowserIndex& begin = isOrdered ? from : to;
    const PBImageBrowserIndex& end = isOrdered ? to : from;
    bool hasChanged = false;
    const std::int64_t lastGroup = std::min(end.group, _leaves.leafCount() - 1);
    for (std::int64_t group = begin.group; group <= lastGroup; ++group) {
        if (!includeCollapse && _leaves.isCollapsedForBrowser(group)) continue;
        const auto& images = _leaves.leaf(group).imageFiles;
        const std::int64_t count = _leaves.imageFileCount(group);
        const std::int64_t first = group == begin.group ? std::min(begin.item, count) : 0;
        const std::int64_t stop = group == end.group ? std::min(end.item + 1, count) : count;
        auto image = images.begin() + first;
        for (std::int64_t item = first; item < stop; ++item, ++image)
            hasChanged |= setSelected(**image, select);
    }
    return hasChanged;
}

void BrowserSelection::storeCommandSelect(bool includeCollapse) const {
    _leaves.forEachImage(includeCollapse, [](const PBImageBrowserIndex&, const auto& item) {
        item->setStoredSelect(item->isSelected());
    });
}

std::int64_t BrowserSelection::itemCount(bool includeCollapse) const {
    std::int64_t count = 0;
    for (std::int64_t group = 0; group < _leaves.leafCount(); ++group)
        if (includeCollapse || !_leaves.isCollapsedForBrowser(group))
            count += _leaves.imageFileCount(group);
    return count;
}

std::int64_t BrowserSelection::selectCount(bool includeCollapse) const {
    std::int64_t count = 0;
    _leaves.forEachImage(includeCollapse, [&](const PBImageBrowserIndex&, const auto& item) {
        count += item->isSelected() ? 1 : 0;
    });
    return count;
}

bool BrowserSelection::hasSelect(bool includeCollapse) const {
    return firstSelectItem(includeCollapse).isValid();
}

PBImageBrowserIndex BrowserSelection::firstSelectItem(bool includeCollapse) const {
    for (std::int64_t group = 0; group < _leaves.leafCount(); ++group) {
        if (!includeCollapse && _leaves.isCollapsedForBrowser(group)) continue;
        const auto& images = _leaves.leaf(group).imageFiles;
        const auto found = std::ranges::find_if(images, isSelected);
        if (found != images.end()) return {group, static_cast<std::int64_t>(found.index())};
    }
    return {};
}

PBImageBrowserIndex BrowserSelection::lastSelectItem(bool includeCollapse) const {
    for (std::int64_t group = _leaves.leafCount() - 1; group >= 0; --group) {
        if (!includeCollapse && _leaves.isCollapsedForBrowser(group)) continue;
        const auto& images = _leaves.leaf(group).imageFiles;
        for (auto image = images.end(); image != images.begin();)
            if (isSelected(*--image)) return {group, static_cast<std::int64_t>(image.index())};
    }
    return {};
}

PBImageFileList BrowserSelection::selectedFileArray(bool includeCollapse) const {
    PBImageFileList selected;
    _leaves.forEachImage(includeCollapse, [&](const PBImageBrowserIndex&, const auto& item) {
        if (item->isSelected()) selected.push_back(item);
    });
    return selected;
}

QStringList
BrowserSelection::selectedFilePath(const group::FolderPaths& folders, bool includeCollapse) const {
    QStringList paths;
    group::FolderPathCache cache;
    for (const auto& item : selectedFileArray(includeCollapse)) {
        const QString path = item->filePath(folders, cache);
        if (!path.isEmpty()) paths.append(path);
    }
    return paths;
}

std::vector<PBGroupItemChain>
BrowserSelection::selectedFileGroupTreeArray(bool includeCollapse) const {
    std::vector<PBGroupItemChain> chains;
    for (std::int64_t group = 0; group < _leaves.leafCount(); ++group) {
        if (!includeCollapse && _leaves.isCollapsedForBrowser(group)) continue;
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
