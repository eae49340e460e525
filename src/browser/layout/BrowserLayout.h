#pragma once

#include "browser/layout/BrowserLeaves.h"
#include "browser/layout/BrowserMetrics.h"
#include "image/PBImageBrowserIndex.h"

#include <QPointF>
#include <QRectF>

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

/// What a point of a cell belongs to.
enum class BrowserPart { None = 0, Thumbnail = 1, FileName = 2, ImageSize = 3, FileSize = 4 };

/// The widths of texts in the font of the text rows, in points.
class BrowserTextWidths {
public:
    virtual ~BrowserTextWidths() = default;
    [[nodiscard]] virtual double fileNameWidth(const PBImageBrowserIndex& index) const = 0;
    [[nodiscard]] virtual double fileSizeWidth(const PBImageBrowserIndex& index) const = 0;
    /// The same for every image: that of a usual one.
    [[nodiscard]] virtual double imageSizeWidth() const = 0;
};

/// What lies between two horizontal lines of the sheet.
struct BrowserRange {
    PBImageBrowserIndex begin;
    PBImageBrowserIndex end;
    /// The top of the head of the begin's leaf.
    double groupPos = 0;
    [[nodiscard]] bool isComplete() const { return begin.group >= 0 && end.group >= 0; }
};

/// The columns from `begin` to `end`; both -1 if there is none.
struct BrowserColumns {
    std::int64_t begin = -1;
    std::int64_t end = -1;
};

struct BrowserHit {
    PBImageBrowserIndex index;
    BrowserPart part = BrowserPart::None;
    QRectF partRect;
};

/// Images of one leaf, both ends included.
struct BrowserItems {
    std::int64_t first = 0;
    std::int64_t last = 0;
};

/// The leaves that share a row of cells, both ends included, and the column of the first cell of
/// the leaf that was asked for. Unless the style is compact, each leaf is alone.
struct BrowserBand {
    std::int64_t first = 0;
    std::int64_t last = 0;
    std::int64_t column = 0;
    [[nodiscard]] bool isShared() const { return first != last; }
};

/// A group head on show.
struct BrowserHead {
    std::int64_t group = 0;
    QRectF rect; ///< on the sheet; the first one sticks to the top of what is visible
    bool hasTopLine = false;
};

/// The geometry of the sheet: for each leaf a head, then rows of cells, all in points from the
/// sheet's top left corner. Positions are doubles: a sheet may be taller than any widget.
///
/// Nothing is laid out in advance. The tops of groups and rows are kept once they have been
/// computed, from the top down and no farther than asked for, until something changes; a search is
/// then logarithmic in groups and rows. Main thread.
class BrowserLayout {
public:
    BrowserLayout() = default;

    /// The leaves outlive this object or are taken away by nullptr.
    void setLeaves(const BrowserLeaves* leaves);
    void setMetrics(const BrowserMetrics& metrics);
    /// The width of the sheet, and of the scroller when it takes none of it at the moment: columns
    /// don't change when it appears.
    void setWidth(double contentWidth, double hiddenScrollerWidth);
    /// Forgets what was computed: sizes, counts or folding may have changed.
    void invalidate();
    /// What a leaf was at the last look: its place then, -1 if there was none, and how many of its
    /// first images are the same.
    struct Former {
        std::int64_t group = -1;
        std::int64_t images = 0;
    };
    /// Leaves have come or gone, or some of their images; what is known of the others' rows stays.
    /// One entry for each leaf.
    void leavesDidChange(std::span<const Former> formers);

    [[nodiscard]] const BrowserMetrics& metrics() const { return _metrics; }
    [[nodiscard]] double contentWidth() const { return _contentWidth; }
    [[nodiscard]] std::int64_t cellColumn() const { return _columns; }
    /// Left of each column and right of the last; negative when the sheet is narrower than a cell.
    [[nodiscard]] double cellHSpace() const;
    [[nodiscard]] std::int64_t leafCount() const { return _leaves ? _leaves->leafCount() : 0; }
    [[nodiscard]] std::int64_t imageFileCount(std::int64_t group) const;
    [[nodiscard]] bool isCollapsed(std::int64_t group) const;

    /// Looks at every image, once.
    [[nodiscard]] double contentHeight();
    /// The cells of a group without its head; 0 for one without images. Folding doesn't matter.
    [[nodiscard]] double groupHeight(std::int64_t group);
    /// The top of a leaf's head; -1 if there is no such leaf.
    [[nodiscard]] double groupItemPosition(std::int64_t group);
    /// As wide as the sheet, or as the leaf's part of the row that it shares.
    [[nodiscard]] QRectF headRect(std::int64_t group);
    [[nodiscard]] BrowserBand bandOf(std::int64_t group);

    /// In whole points. The index has to be within its leaf.
    [[nodiscard]] QRectF cellRectAtIndex(const PBImageBrowserIndex& index);
    /// The part of a cell that thumbnails are placed in, and the text rows.
    [[nodiscard]] QRectF thumbnailRectWithCellRect(const QRectF& cellRect) const;
    [[nodiscard]] QRectF fileNameRectWithCellRect(const QRectF& cellRect) const;
    [[nodiscard]] QRectF imageSizeRectWithCellRect(const QRectF& cellRect) const;
    [[nodiscard]] QRectF fileSizeRectWithCellRect(const QRectF& cellRect) const;
    /// Where an image of that size as shown lies in its cell, in whole points; empty, in the
    /// middle, for a size that is not above 0.
    [[nodiscard]] QRectF placedRect(const QRectF& cellRect, const QSizeF& displaySize) const;
    /// The same for an image, no smaller than can be hit.
    [[nodiscard]] QRectF hitTarget(const QRectF& cellRect, const PBImageBrowserIndex& index) const;

    /// Without a begin there is nothing below the top line.
    [[nodiscard]] BrowserRange visibleRange(double topLine, double bottomLine);
    [[nodiscard]] BrowserColumns visibleColumns(double leftLine, double rightLine) const;
    /// The images of a leaf within a range that includes the leaf.
    [[nodiscard]] std::optional<BrowserItems> itemsInRange(
        std::int64_t group, const PBImageBrowserIndex& begin, const PBImageBrowserIndex& end) const;
    /// Calls with each image of the shown leaves between the lines, in order.
    template <typename Function>
    void forEachVisible(double topLine, double bottomLine, Function&& function);

    [[nodiscard]] BrowserHit itemIndexByPoint(const QPointF& point, const BrowserTextWidths& texts);
    /// The device pixels that the picture of a cell is drawn with, as it is shown; empty where its
    /// size is not known. The same at every place on the screen.
    [[nodiscard]] QSize picturePixels(const PBImageBrowserIndex& index, double pixelRatio);
    /// The heads that show in that part of the sheet, from the top.
    [[nodiscard]] std::vector<BrowserHead> visibleHeads(const QRectF& visible);

    /// Steps over the sheet, past folded and empty leaves. From an invalid index they go to the
    /// first or last image; past the ends they give an invalid one.
    [[nodiscard]] PBImageBrowserIndex nextIndex(const PBImageBrowserIndex& index) const;
    [[nodiscard]] PBImageBrowserIndex prevIndex(const PBImageBrowserIndex& index) const;
    [[nodiscard]] PBImageBrowserIndex colNextIndex(const PBImageBrowserIndex& index);
    [[nodiscard]] PBImageBrowserIndex colPrevIndex(const PBImageBrowserIndex& index);

    /// How far to scroll so that the cell shows, clear of the sticky head; 0 if it does.
    [[nodiscard]] double
    scrollDistanceToShow(const PBImageBrowserIndex& index, const QRectF& visible);
    /// Longer ways are jumped.
    [[nodiscard]] bool shouldAnimate(double distance) const;
    /// Images on a page of that height, the last row counted whole.
    [[nodiscard]] std::int64_t pageItemCount(double height) const;

private:
    /// Tops of rows are kept as the ends of those before: row r lies between entries r - 1 and r,
    /// the space below it included.
    using RowEnds = std::vector<double>;

    [[nodiscard]] double heightAtRow(std::int64_t group, std::int64_t row);
    /// From the top of the first row.
    [[nodiscard]] double topAtRow(std::int64_t group, std::int64_t row);
    [[nodiscard]] std::int64_t rowCount(std::int64_t group) const;
    [[nodiscard]] bool isShown(std::int64_t group) const;
    [[nodiscard]] QSizeF displaySize(const PBImageBrowserIndex& index) const;
    [[nodiscard]] PBImageBrowserIndex firstInShownLeafFrom(std::int64_t group) const;
    [[nodiscard]] std::int64_t shownLeafAfter(std::int64_t group) const;
    [[nodiscard]] std::int64_t shownLeafBefore(std::int64_t group) const;
    [[nodiscard]] double extra() const {
        return 2 * _metrics.selectSize() + _metrics.textRowsHeight();
    }

    const RowEnds& rowEnds(std::int64_t group, std::int64_t rows);
    const RowEnds& rowEndsPast(std::int64_t group, double line);
    void measureRows(std::int64_t group, RowEnds& ends, std::int64_t rows) const;
    /// Goes on until the leaf, or the line, lies within what is known.
    void measureGroups(std::int64_t group);
    void measurePast(double line);
    void measureSharedRow(const BrowserBand& band);
    void appendBand();
    /// The image at that column of a row that leaves share; past the last one it is that.
    [[nodiscard]] PBImageBrowserIndex indexInBand(const BrowserBand& band, std::int64_t column);
    [[nodiscard]] std::int64_t groupEndingBelow(double line, bool orAt);
    [[nodiscard]] std::int64_t beginRowByLine(std::int64_t group, double line);
    [[nodiscard]] std::int64_t endRowByLine(std::int64_t group, double line);
    void updateColumns();

    const BrowserLeaves* _leaves = nullptr;
    BrowserMetrics _metrics;
    double _contentWidth = 0;
    double _hiddenScrollerWidth = 0;
    std::int64_t _columns = 1;

    std::vector<RowEnds> _rowEnds;   // by group, as many rows as were asked for
    std::vector<double> _tops;       // of the heads; the last entry is the end of what is known
    std::vector<BrowserBand> _bands; // by group, as many as were asked for; compact style only
};

template <typename Function>
void BrowserLayout::forEachVisible(double topLine, double bottomLine, Function&& function) {
    const BrowserRange range = visibleRange(topLine, bottomLine);
    if (!range.isComplete()) return;
    for (std::int64_t group = range.begin.group; group <= range.end.group; ++group) {
        if (isCollapsed(group)) continue;
        const auto items = itemsInRange(group, range.begin, range.end);
        if (!items) continue;
        for (std::int64_t item = items->first; item <= items->last; ++item)
            function(PBImageBrowserIndex{group, item});
    }
}
