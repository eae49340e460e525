#pragma once

#include <QRectF>

#include <cstdint>

/// Where the cells of a strip of thumbnails lie: squares as high as the strip, with small gaps, and
/// so much room at both ends that the first and the last cell can stand in the middle. Lengths are
/// points. Pure, any thread.
class StripGeometry {
public:
    static constexpr double gap = 2;

    /// Cells from the first to the last; none when the last comes before the first.
    struct Range {
        std::int64_t first = 0;
        std::int64_t last = -1;

        [[nodiscard]] std::int64_t count() const { return last < first ? 0 : last - first + 1; }
        [[nodiscard]] bool contains(std::int64_t index) const {
            return index >= first && index <= last;
        }
        friend bool operator==(const Range&, const Range&) = default;
    };

    StripGeometry() = default;
    /// The height of the strip, the width of what shows it, the number of cells.
    StripGeometry(double height, double width, std::int64_t count);

    /// The side of a cell, at least 1.
    [[nodiscard]] double itemSize() const { return _itemSize; }
    [[nodiscard]] std::int64_t count() const { return _count; }
    /// Where the first cell begins.
    [[nodiscard]] double contentOffset() const { return (_width - _itemSize) / 2; }
    [[nodiscard]] QRectF rectOfIndex(std::int64_t index) const;
    [[nodiscard]] double contentWidth() const;

    /// The nearest scroll position at which a cell stands in the middle.
    [[nodiscard]] double roundPosition(double position) const;
    /// The scroll position with that cell in the middle.
    [[nodiscard]] double positionOfIndex(std::int64_t index) const;
    /// The cell in the middle at a scroll position; -1 without cells.
    [[nodiscard]] std::int64_t indexAtPosition(double position) const;
    /// The cell at a point of the strip; -1 in a gap and beyond the ends.
    [[nodiscard]] std::int64_t indexAtPoint(const QPointF& point) const;

    /// The cells that the part of the strip shows. Of cells smaller than 40 points, no more than
    /// would fit if they had that size, those in the middle.
    [[nodiscard]] Range calcVisibleForRect(const QRectF& part) const;

private:
    [[nodiscard]] double pitch() const { return _itemSize + gap; }

    double _itemSize = 1;
    double _width = 0;
    std::int64_t _count = 0;
};
