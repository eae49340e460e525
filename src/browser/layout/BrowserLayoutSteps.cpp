#include "browser/layout/BrowserLayout.h"

#include <algorithm>
#include <cmath>

namespace {

/// Longer jumps, in thumbnails, are not animated.
constexpr double animatedThumbnails = 50;

} // namespace

bool BrowserLayout::isShown(std::int64_t group) const {
    return !isCollapsed(group) && imageFileCount(group) > 0;
}

std::int64_t BrowserLayout::shownLeafAfter(std::int64_t group) const {
    for (std::int64_t next = group + 1; next < leafCount(); ++next)
        if (isShown(next)) return next;
    return -1;
}

std::int64_t BrowserLayout::shownLeafBefore(std::int64_t group) const {
    for (std::int64_t previous = std::min(group, leafCount()) - 1; previous >= 0; --previous)
        if (isShown(previous)) return previous;
    return -1;
}

PBImageBrowserIndex BrowserLayout::firstInShownLeafFrom(std::int64_t group) const {
    const std::int64_t leaf = shownLeafAfter(group - 1);
    return leaf < 0 ? PBImageBrowserIndex{} : PBImageBrowserIndex{leaf, 0};
}

PBImageBrowserIndex BrowserLayout::nextIndex(const PBImageBrowserIndex& index) const {
    if (!index.isValid()) return firstInShownLeafFrom(0);
    if (index.group >= leafCount()) return {};
    if (isShown(index.group) && index.item + 1 < imageFileCount(index.group))
        return {index.group, index.item + 1};
    return firstInShownLeafFrom(index.group + 1);
}

PBImageBrowserIndex BrowserLayout::prevIndex(const PBImageBrowserIndex& index) const {
    const bool isValid = index.isValid();
    if (isValid && index.group >= leafCount()) return {};
    if (isValid && isShown(index.group) && index.item > 0)
        return {index.group, std::min(index.item, imageFileCount(index.group)) - 1};
    const std::int64_t leaf = shownLeafBefore(isValid ? index.group : leafCount());
    return leaf < 0 ? PBImageBrowserIndex{} : PBImageBrowserIndex{leaf, imageFileCount(leaf) - 1};
}

PBImageBrowserIndex BrowserLayout::colNextIndex(const PBImageBrowserIndex& index) {
    if (!index.isValid()) return nextIndex(index);
    if (index.group >= leafCount()) return {};
    const std::int64_t last = imageFileCount(index.group) - 1;
    if (isShown(index.group) && index.item / _columns < last / _columns)
        return {index.group, std::min(index.item + _columns, last)};
    const BrowserBand band = bandOf(index.group);
    const std::int64_t leaf = shownLeafAfter(band.last);
    if (leaf < 0) return {};
    return indexInBand(bandOf(leaf), band.column + index.item % _columns);
}

PBImageBrowserIndex BrowserLayout::colPrevIndex(const PBImageBrowserIndex& index) {
    if (!index.isValid()) return prevIndex(index);
    if (index.group >= leafCount()) return {};
    if (isShown(index.group) && index.item >= _columns)
        return {index.group, std::min(index.item, imageFileCount(index.group)) - _columns};
    const BrowserBand band = bandOf(index.group);
    const std::int64_t leaf = shownLeafBefore(band.first);
    if (leaf < 0) return {};
    const std::int64_t column = band.column + index.item % _columns;
    const BrowserBand above = bandOf(leaf);
    if (above.isShared()) return indexInBand(above, column);
    const std::int64_t last = imageFileCount(leaf) - 1;
    return {leaf, std::min(last / _columns * _columns + column, last)};
}

double
BrowserLayout::scrollDistanceToShow(const PBImageBrowserIndex& index, const QRectF& visible) {
    if (!index.isValid()) return 0;
    const QRectF rect = cellRectAtIndex(index).adjusted(
        0, -BrowserMetrics::headHeight, 0, BrowserMetrics::headHeight);
    const double toTop = rect.top() - visible.top();
    const double toBottom = rect.bottom() - visible.bottom();
    if (toTop >= 0 && toBottom <= 0) return 0;
    return std::abs(toTop) < std::abs(toBottom) ? toTop : toBottom;
}

bool BrowserLayout::shouldAnimate(double distance) const {
    return std::rint(std::abs(distance) / _metrics.thumbnailSize) < animatedThumbnails;
}

std::int64_t BrowserLayout::pageItemCount(double height) const {
    const double rows = std::ceil(height / (_metrics.cellSpace() + _metrics.cellWidth()));
    return static_cast<std::int64_t>(rows) * _columns;
}
