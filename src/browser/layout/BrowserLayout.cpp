#include "browser/layout/BrowserLayout.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace {

/// Images whose sizes are fetched at once.
constexpr std::int64_t batchSize = 512;

} // namespace

void BrowserLayout::setLeaves(const BrowserLeaves* leaves) {
    _leaves = leaves;
    invalidate();
}

void BrowserLayout::setMetrics(const BrowserMetrics& metrics) {
    platform::assertMainThread();
    if (metrics == _metrics) return;
    _metrics = metrics;
    updateColumns();
    invalidate();
}

void BrowserLayout::setWidth(double contentWidth, double hiddenScrollerWidth) {
    platform::assertMainThread();
    _contentWidth = std::trunc(contentWidth);
    _hiddenScrollerWidth = hiddenScrollerWidth;
    const std::int64_t before = _columns;
    updateColumns();
    if (_columns != before) invalidate();
}

void BrowserLayout::updateColumns() {
    const double space = _metrics.tightestCellSpace();
    const double room = _contentWidth - _hiddenScrollerWidth - space;
    _columns =
        std::max<std::int64_t>(1, static_cast<std::int64_t>(room / (_metrics.cellWidth() + space)));
}

void BrowserLayout::invalidate() {
    platform::assertMainThread();
    _rowEnds.clear();
    _rowEnds.resize(static_cast<std::size_t>(leafCount()));
    _tops.assign(1, 0.0);
    _bands.clear();
}

void BrowserLayout::leavesDidChange(std::span<const Former> formers) {
    std::vector<RowEnds> known = std::move(_rowEnds);
    invalidate();
    if (_metrics.has(BrowserMetrics::Compact)) return; // rows are as tall as their neighbours
    for (std::size_t group = 0; group < formers.size(); ++group) {
        const auto [former, images] = formers[group];
        if (former < 0) continue;
        RowEnds& ends = known[static_cast<std::size_t>(former)];
        // The last row may get more cells.
        const auto rows = static_cast<std::size_t>(images / _columns);
        ends.resize(std::min(ends.size(), rows));
        _rowEnds[group] = std::move(ends);
    }
}

double BrowserLayout::cellHSpace() const {
    const auto columns = static_cast<double>(_columns);
    return (_contentWidth - columns * _metrics.cellWidth()) / (columns + 1);
}

std::int64_t BrowserLayout::imageFileCount(std::int64_t group) const {
    return _leaves ? _leaves->imageFileCount(group) : 0;
}

bool BrowserLayout::isCollapsed(std::int64_t group) const {
    return _leaves && _leaves->isCollapsedForBrowser(group);
}

std::int64_t BrowserLayout::rowCount(std::int64_t group) const {
    return (imageFileCount(group) + _columns - 1) / _columns;
}

void BrowserLayout::measureRows(std::int64_t group, RowEnds& ends, std::int64_t rows) const {
    const std::int64_t count = imageFileCount(group);
    const double space = _metrics.cellSpace();
    const double around = extra();
    std::array<QSizeF, batchSize> sizes;
    double end = ends.empty() ? 0 : ends.back();
    double tallest = BrowserMetrics::smallestThumbnailHeight;
    std::int64_t item = static_cast<std::int64_t>(ends.size()) * _columns;
    std::int64_t leftInRow = _columns;
    const std::int64_t stop = std::min(count, rows * _columns);
    ends.reserve(static_cast<std::size_t>(rows));
    while (item < stop) {
        const std::int64_t fetched = std::min(stop - item, batchSize);
        const std::span batch = std::span(sizes).first(static_cast<std::size_t>(fetched));
        _leaves->displaySizes(group, item, batch);
        item += fetched;
        for (const QSizeF& size : batch) {
            tallest = std::max(tallest, _metrics.fittedHeight(size.width(), size.height()));
            if (--leftInRow > 0) continue;
            end += tallest + around + space;
            ends.push_back(end);
            tallest = BrowserMetrics::smallestThumbnailHeight;
            leftInRow = _columns;
        }
    }
    // The last row of a leaf may be incomplete.
    if (leftInRow < _columns) ends.push_back(end + tallest + around + space);
}

const BrowserLayout::RowEnds& BrowserLayout::rowEnds(std::int64_t group, std::int64_t rows) {
    RowEnds& ends = _rowEnds[static_cast<std::size_t>(group)];
    const std::int64_t wanted = std::min(rows, rowCount(group));
    if (static_cast<std::int64_t>(ends.size()) < wanted) measureRows(group, ends, wanted);
    return ends;
}

/// As many rows as reach beyond the line, counted from the top of the first row.
const BrowserLayout::RowEnds& BrowserLayout::rowEndsPast(std::int64_t group, double line) {
    RowEnds& ends = _rowEnds[static_cast<std::size_t>(group)];
    const std::int64_t rows = rowCount(group);
    while (static_cast<std::int64_t>(ends.size()) < rows && (ends.empty() || ends.back() <= line)) {
        // Twice as many each time: a line far below costs no more rounds than a near one.
        const std::int64_t known = std::ssize(ends);
        measureRows(group, ends, std::min(rows, std::max<std::int64_t>(2 * known, known + 64)));
    }
    return ends;
}

double BrowserLayout::groupHeight(std::int64_t group) {
    if (group < 0 || group >= leafCount() || imageFileCount(group) <= 0) return 0;
    return _metrics.cellSpace() + rowEnds(group, rowCount(group)).back();
}

void BrowserLayout::measureGroups(std::int64_t group) {
    while (std::ssize(_tops) <= std::min(group, leafCount())) {
        const std::int64_t next = std::ssize(_tops) - 1;
        const BrowserBand band = bandOf(next);
        if (band.isShared()) measureSharedRow(band);
        const double cells = isCollapsed(next) ? 0 : groupHeight(next);
        const double top = _tops.back();
        _tops.insert(_tops.end(), static_cast<std::size_t>(band.last - next), top);
        _tops.push_back(top + BrowserMetrics::headHeight + cells);
    }
}

void BrowserLayout::measurePast(double line) {
    while (std::ssize(_tops) <= leafCount() && _tops.back() <= line) {
        const std::int64_t next = std::ssize(_tops) - 1;
        if (!isCollapsed(next) && imageFileCount(next) > 0) {
            // Enough of the leaf's rows are known for its end to be below the line: leave the rest.
            const double inside =
                line - _tops.back() - BrowserMetrics::headHeight - _metrics.cellSpace();
            const RowEnds& ends = rowEndsPast(next, inside);
            if (std::ssize(ends) < rowCount(next) && ends.back() > inside) return;
        }
        measureGroups(next + 1);
    }
}

double BrowserLayout::contentHeight() {
    measureGroups(leafCount());
    return _tops.back();
}

double BrowserLayout::groupItemPosition(std::int64_t group) {
    if (group < 0 || group >= leafCount()) return -1;
    measureGroups(group);
    return _tops[static_cast<std::size_t>(group)];
}

double BrowserLayout::topAtRow(std::int64_t group, std::int64_t row) {
    return row <= 0 ? 0 : rowEnds(group, row)[static_cast<std::size_t>(row - 1)];
}

double BrowserLayout::heightAtRow(std::int64_t group, std::int64_t row) {
    const RowEnds& ends = rowEnds(group, row + 1);
    if (row < 0 || row >= std::ssize(ends))
        return BrowserMetrics::smallestThumbnailHeight + extra();
    const double top = row == 0 ? 0 : ends[static_cast<std::size_t>(row - 1)];
    return ends[static_cast<std::size_t>(row)] - top - _metrics.cellSpace();
}

/// The first leaf whose end lies below the line, or at it; the count of leaves if there is none.
std::int64_t BrowserLayout::groupEndingBelow(double line, bool orAt) {
    measurePast(line);
    const auto ends = _tops.begin() + 1;
    const auto found = orAt ? std::lower_bound(ends, _tops.end(), line)
                            : std::upper_bound(ends, _tops.end(), line);
    return found - ends;
}

std::int64_t BrowserLayout::beginRowByLine(std::int64_t group, double line) {
    if (line < 0) return 0;
    const RowEnds& ends = rowEndsPast(group, line);
    const auto found = std::ranges::upper_bound(ends, line);
    return found == ends.end() ? -1 : found - ends.begin();
}

std::int64_t BrowserLayout::endRowByLine(std::int64_t group, double line) {
    const double fromFirstRow = line - _metrics.cellSpace();
    if (fromFirstRow < 0) return -1;
    const RowEnds& ends = rowEndsPast(group, fromFirstRow);
    const auto found = std::ranges::upper_bound(ends, fromFirstRow);
    return std::min(found - ends.begin(), std::ssize(ends) - 1);
}

BrowserRange BrowserLayout::visibleRange(double topLine, double bottomLine) {
    BrowserRange range;
    const std::int64_t leaves = leafCount();
    if (leaves == 0) return range;
    const std::int64_t first = groupEndingBelow(topLine, false);
    range.groupPos = groupItemPosition(std::min(first, leaves - 1));
    if (first < leaves) {
        const double cells = range.groupPos + BrowserMetrics::headHeight;
        const BrowserBand band = bandOf(first);
        range.begin = {band.first, -1};
        if (cells <= topLine) {
            const std::int64_t row = beginRowByLine(first, topLine - cells);
            range.begin = row < 0 ? PBImageBrowserIndex{band.last, -2}
                                  : PBImageBrowserIndex{band.first, row * _columns};
        }
    }
    const std::int64_t last = groupEndingBelow(bottomLine, true);
    if (last < leaves) {
        const double cells = groupItemPosition(last) + BrowserMetrics::headHeight;
        const BrowserBand band = bandOf(last);
        range.end = {band.first, -1};
        if (cells < bottomLine) {
            const std::int64_t row = endRowByLine(band.last, bottomLine - cells);
            if (row < 0)
                range.end.item = -2;
            else
                range.end = {
                    band.last, std::min((row + 1) * _columns, imageFileCount(band.last)) - 1};
        }
    } else if (first < leaves) {
        range.end = {leaves - 1, imageFileCount(leaves - 1) - 1};
    }
    return range;
}

BrowserColumns BrowserLayout::visibleColumns(double leftLine, double rightLine) const {
    BrowserColumns columns;
    const double width = _metrics.cellWidth();
    const double space = cellHSpace();
    for (std::int64_t column = 0; column < _columns; ++column) {
        const double x = static_cast<double>(column) * (width + space) + space;
        if (rightLine < x || x + width < leftLine) continue;
        if (columns.begin < 0) columns.begin = column;
        columns.end = column;
    }
    return columns;
}

std::optional<BrowserItems> BrowserLayout::itemsInRange(
    std::int64_t group, const PBImageBrowserIndex& begin, const PBImageBrowserIndex& end) const {
    BrowserItems items{0, imageFileCount(group) - 1};
    if (group == begin.group) {
        if (begin.item < -1) return std::nullopt;
        items.first = std::max<std::int64_t>(begin.item, 0);
    }
    if (group == end.group) {
        if (end.item < 0) return std::nullopt;
        items.last = std::min(items.last, end.item);
    }
    if (items.first > items.last) return std::nullopt;
    return items;
}

std::vector<BrowserHead> BrowserLayout::visibleHeads(const QRectF& visible) {
    std::vector<BrowserHead> heads;
    const BrowserRange range = visibleRange(visible.top(), visible.bottom());
    if (!range.isComplete()) return heads;
    const BrowserBand sticky = bandOf(range.begin.group);
    for (std::int64_t group = sticky.first; group <= bandOf(range.end.group).last; ++group) {
        const QRectF rect = headRect(group);
        const bool isSticky = group <= sticky.last;
        if (!isSticky && rect.top() >= visible.bottom()) break;
        heads.push_back({group, rect, !isSticky && isShown(bandOf(group).first - 1)});
    }
    // The first ones stick, until the next reach them and push them off.
    double top = std::trunc(visible.top());
    if (heads.back().group > sticky.last)
        top = std::min(top, groupItemPosition(sticky.last + 1) + 1 - BrowserMetrics::headHeight);
    for (BrowserHead& head : heads)
        if (head.group <= sticky.last) head.rect.moveTop(top);
    return heads;
}
