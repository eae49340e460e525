#include "browser/state/BrowserLeafList.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <array>
#include <unordered_map>
#include <utility>

namespace {

/// Images before and after the place where a search begins.
constexpr std::int64_t nearCount = 1024;

} // namespace

std::vector<BrowserLayout::Former>
BrowserLeafList::setLeafGroupItemArray(const std::vector<PBGroupItem*>& leaves) {
    platform::assertMainThread();
    const std::vector<Leaf> before = std::exchange(_leaves, {});
    std::unordered_map<const PBGroupItemData*, std::size_t> places;
    for (std::size_t place = 0; place < before.size(); ++place)
        places.emplace(before[place].data.get(), place);
    _leaves.reserve(leaves.size());
    std::vector<BrowserLayout::Former> formers(leaves.size());
    for (const PBGroupItem* leaf : leaves) {
        const Leaf& now = _leaves.emplace_back(Leaf{leaf->data(), leaf->imageFiles()});
        const auto place = places.find(now.data.get());
        if (place == places.end()) continue;
        const auto& images = before[place->second].imageFiles;
        formers[_leaves.size() - 1] = {
            static_cast<std::int64_t>(place->second),
            static_cast<std::int64_t>(now.imageFiles.commonBegin(images))};
    }
    return formers;
}

void BrowserLeafList::refresh() {
    platform::assertMainThread();
    for (Leaf& leaf : _leaves)
        if (const PBGroupItem* live = leaf.data->groupItem()) leaf.imageFiles = live->imageFiles();
}

std::int64_t BrowserLeafList::imageFileCount(std::int64_t group) const {
    return static_cast<std::int64_t>(leaf(group).imageFiles.size());
}

bool BrowserLeafList::isCollapsedForBrowser(std::int64_t group) const {
    return leaf(group).data->isCollapsedForBrowser();
}

void BrowserLeafList::displaySizes(
    std::int64_t group, std::int64_t first, std::span<QSizeF> sizes) const {
    // This reads every image of a tree once: the items ahead are fetched while one is looked at.
    // Without that a million take twice as long.
    constexpr std::size_t ahead = 16;
    const auto& images = leaf(group).imageFiles;
    auto toFetch = images.begin() + first;
    std::array<const PBImageFileItem*, ahead> fetched{};
    std::size_t next = 0;
    for (; next < std::min(ahead, sizes.size()); ++next, ++toFetch) {
        fetched[next % ahead] = toFetch->get();
        __builtin_prefetch(fetched[next % ahead]);
    }
    for (std::size_t index = 0; index < sizes.size(); ++index) {
        const PBImageFileItem& item = *fetched[index % ahead];
        if (next < sizes.size()) {
            fetched[next++ % ahead] = toFetch->get();
            __builtin_prefetch(fetched[index % ahead]);
            ++toFetch;
        }
        sizes[index] = item.rotateAngle() == 0 ? item.imageSize() : item.displaySize();
    }
}

std::shared_ptr<PBImageFileItem>
BrowserLeafList::imageFileAtIndex(const PBImageBrowserIndex& index) const {
    if (!index.isValid() || index.group >= leafCount() || index.item >= imageFileCount(index.group))
        return nullptr;
    return leaf(index.group).imageFiles[static_cast<std::size_t>(index.item)];
}

PBImageBrowserIndex BrowserLeafList::findNear(
    const PBImageFileItem& imageFile, const PBImageBrowserIndex& start) const {
    std::int64_t looked = 0;
    std::int64_t item = std::max<std::int64_t>(start.item - nearCount, 0);
    for (std::int64_t group = start.group; group < leafCount() && looked < 2 * nearCount; ++group) {
        const std::int64_t stop = std::min(imageFileCount(group), item + 2 * nearCount - looked);
        auto found = leaf(group).imageFiles.begin() + item;
        for (; item < stop; ++item, ++found, ++looked)
            if (found->get() == &imageFile) return {group, item};
        item = 0;
    }
    return {};
}

PBImageBrowserIndex BrowserLeafList::indexForImageFile(const PBImageFileItem& imageFile) const {
    if (_visible.group >= 0 && _visible.group < leafCount()) {
        const PBImageBrowserIndex index = findNear(imageFile, _visible);
        if (index.isValid()) return index;
    }
    for (std::int64_t group = 0; group < leafCount(); ++group) {
        const auto& images = leaf(group).imageFiles;
        const auto found =
            std::ranges::find(images, &imageFile, [](const auto& shared) { return shared.get(); });
        if (found != images.end()) return {group, static_cast<std::int64_t>(found.index())};
    }
    return {};
}

PBImageBrowserIndex BrowserLeafList::indexOfSamePhotograph(const PBImageFileItem& imageFile) const {
    PBImageBrowserIndex found;
    auto most = PBImageFileItem::Sameness::None;
    forEachImage(FoldedLeaves::Included, [&](const PBImageBrowserIndex& index, const auto& item) {
        const auto sameness = item->samenessWith(imageFile);
        if (sameness <= most) return;
        most = sameness;
        found = index;
    });
    return found;
}

std::int64_t BrowserLeafList::groupOfData(const PBGroupItemData& data) const {
    const auto found =
        std::ranges::find(_leaves, &data, [](const Leaf& leaf) { return leaf.data.get(); });
    return found == _leaves.end() ? -1 : found - _leaves.begin();
}
