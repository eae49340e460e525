#include "browser/layout/BrowserLayout.h"

#include "codec/pixels/Geometry.h"

#include <algorithm>
#include <cmath>

namespace {

/// Origin rounded down, far edges rounded up.
QRectF integral(const QRectF& rect) {
    const double left = std::floor(rect.left());
    const double top = std::floor(rect.top());
    return {left, top, std::ceil(rect.right()) - left, std::ceil(rect.bottom()) - top};
}

/// The middle part of a row, as wide as its text.
QRectF narrowed(const QRectF& row, double width) {
    if (width >= row.width()) return row;
    return {row.x() + (row.width() - width) / 2, row.y(), width, row.height()};
}

} // namespace

QRectF BrowserLayout::cellRectAtIndex(const PBImageBrowserIndex& index) {
    const std::int64_t row = index.item / _columns;
    const double width = _metrics.cellWidth();
    const double space = cellHSpace();
    const auto column = static_cast<double>(bandOf(index.group).column + index.item % _columns);
    const double top = groupItemPosition(index.group) + BrowserMetrics::headHeight +
                       _metrics.cellSpace() + topAtRow(index.group, row);
    return integral(QRectF(
        std::rint(column * (width + space) + space), top, width, heightAtRow(index.group, row)));
}

QRectF BrowserLayout::thumbnailRectWithCellRect(const QRectF& cellRect) const {
    const double frame = _metrics.selectSize();
    return cellRect.adjusted(frame, frame, -frame, -_metrics.textRowsHeight() - frame);
}

QRectF BrowserLayout::fileSizeRectWithCellRect(const QRectF& cellRect) const {
    return {
        cellRect.x(), cellRect.y() + cellRect.height() - BrowserMetrics::textHeight,
        cellRect.width(), BrowserMetrics::textHeight};
}

QRectF BrowserLayout::imageSizeRectWithCellRect(const QRectF& cellRect) const {
    const bool hasRowBelow = _metrics.has(BrowserMetrics::FileSize);
    return fileSizeRectWithCellRect(cellRect).translated(
        0, hasRowBelow ? -BrowserMetrics::textRowHeight : 0);
}

QRectF BrowserLayout::fileNameRectWithCellRect(const QRectF& cellRect) const {
    const bool hasRowBelow = _metrics.has(BrowserMetrics::ImageSize);
    return imageSizeRectWithCellRect(cellRect).translated(
        0, hasRowBelow ? -BrowserMetrics::textRowHeight : 0);
}

QSizeF BrowserLayout::displaySize(const PBImageBrowserIndex& index) const {
    QSizeF size;
    if (_leaves) _leaves->displaySizes(index.group, index.item, std::span(&size, 1));
    return size;
}

QRectF BrowserLayout::placedRect(const QRectF& cellRect, const QSizeF& displaySize) const {
    QRectF rect = thumbnailRectWithCellRect(cellRect);
    if (!(displaySize.width() > 0) || !(displaySize.height() > 0))
        return {rect.center(), QSizeF(0, 0)};
    // Images are centred on whole points: soft edges would blur every one of them.
    PBUtilities::fitInRect(
        rect, displaySize.width(), displaySize.height(),
        _metrics.has(BrowserMetrics::EnlargeSmallPhoto));
    return integral(rect);
}

QSize BrowserLayout::picturePixels(const PBImageBrowserIndex& index, double pixelRatio) {
    const QSizeF size = displaySize(index);
    if (size.isEmpty()) return {};
    return (placedRect(cellRectAtIndex(index), size).size() * pixelRatio).toSize();
}

QRectF BrowserLayout::hitTarget(const QRectF& cellRect, const PBImageBrowserIndex& index) const {
    constexpr double smallest = BrowserMetrics::smallestHitTarget;
    QRectF rect = placedRect(cellRect, displaySize(index));
    if (rect.width() < smallest)
        rect = {
            rect.x() - std::rint((smallest - rect.width()) / 2), rect.y(), smallest, rect.height()};
    if (rect.height() < smallest)
        rect = {
            rect.x(), rect.y() - std::rint((smallest - rect.height()) / 2), rect.width(), smallest};
    return rect;
}

BrowserHit BrowserLayout::itemIndexByPoint(const QPointF& point, const BrowserTextWidths& texts) {
    const BrowserRange range = visibleRange(point.y(), point.y());
    const BrowserColumns columns = visibleColumns(point.x(), point.x());
    const BrowserBand band = bandOf(range.begin.group);
    if (!range.isComplete() || columns.begin < 0 || columns.begin != columns.end ||
        band.last != range.end.group || range.begin.item < 0 || range.end.item < 0)
        return {};
    PBImageBrowserIndex index{range.begin.group, range.begin.item + columns.begin};
    if (band.isShared()) index = indexInBand(band, columns.begin);
    if (bandOf(index.group).column + index.item % _columns != columns.begin ||
        index.item >= imageFileCount(index.group))
        return {};

    const QRectF cell = cellRectAtIndex(index);
    const auto hit = [&](BrowserPart part, const QRectF& rect) {
        // The far edges belong to the neighbours.
        const bool inside = point.x() >= rect.left() && point.x() < rect.right() &&
                            point.y() >= rect.top() && point.y() < rect.bottom();
        return inside ? BrowserHit{index, part, rect} : BrowserHit{};
    };
    BrowserHit result = hit(BrowserPart::Thumbnail, hitTarget(cell, index));
    if (result.part == BrowserPart::None && _metrics.has(BrowserMetrics::FileName))
        result =
            hit(BrowserPart::FileName,
                narrowed(fileNameRectWithCellRect(cell), texts.fileNameWidth(index)));
    if (result.part == BrowserPart::None && _metrics.has(BrowserMetrics::ImageSize))
        result =
            hit(BrowserPart::ImageSize,
                narrowed(imageSizeRectWithCellRect(cell), texts.imageSizeWidth()));
    if (result.part == BrowserPart::None && _metrics.has(BrowserMetrics::FileSize))
        result =
            hit(BrowserPart::FileSize,
                narrowed(fileSizeRectWithCellRect(cell), texts.fileSizeWidth(index)));
    return result;
}
