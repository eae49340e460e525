#include "browser/layout/BrowserLayout.h"

#include <algorithm>
#include <cmath>

BrowserBand BrowserLayout::bandOf(std::int64_t group) {
    if (!_metrics.has(BrowserMetrics::Compact) || group < 0 || group >= leafCount())
        return {group, group, 0};
    while (std::ssize(_bands) <= group)
        appendBand();
    return _bands[static_cast<std::size_t>(group)];
}

/// A folded or empty leaf has no cells that could stand beside others.
void BrowserLayout::appendBand() {
    BrowserBand band{std::ssize(_bands), std::ssize(_bands), 0};
    std::int64_t columns = imageFileCount(band.first);
    const auto fits = [&](std::int64_t leaf) {
        return leaf < leafCount() && isShown(leaf) && columns + imageFileCount(leaf) <= _columns;
    };
    if (isShown(band.first))
        while (fits(band.last + 1))
            columns += imageFileCount(++band.last);
    for (std::int64_t leaf = band.first; leaf <= band.last; ++leaf) {
        _bands.push_back(band);
        band.column += imageFileCount(leaf);
    }
}

/// All cells of the row get the height of the tallest.
void BrowserLayout::measureSharedRow(const BrowserBand& band) {
    double tallest = 0;
    for (std::int64_t leaf = band.first; leaf <= band.last; ++leaf)
        tallest = std::max(tallest, rowEnds(leaf, 1).front());
    for (std::int64_t leaf = band.first; leaf <= band.last; ++leaf)
        _rowEnds[static_cast<std::size_t>(leaf)].front() = tallest;
}

PBImageBrowserIndex BrowserLayout::indexInBand(const BrowserBand& band, std::int64_t column) {
    for (std::int64_t leaf = band.first; leaf < band.last; ++leaf) {
        const std::int64_t item = column - bandOf(leaf).column;
        if (item < imageFileCount(leaf)) return {leaf, item};
    }
    return {band.last, std::min(column - bandOf(band.last).column, imageFileCount(band.last) - 1)};
}

QRectF BrowserLayout::headRect(std::int64_t group) {
    const auto leftOf = [this](std::int64_t column) {
        const double space = cellHSpace();
        return column == 0
                   ? 0
                   : std::rint(
                         static_cast<double>(column) * (_metrics.cellWidth() + space) + space / 2);
    };
    const BrowserBand band = bandOf(group);
    const double left = leftOf(band.column);
    const double right =
        group == band.last ? _contentWidth : leftOf(band.column + imageFileCount(group));
    return {left, groupItemPosition(group), right - left, BrowserMetrics::headHeight};
}
