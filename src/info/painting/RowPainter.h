#pragma once

#include "info/rows/InfoRow.h"
#include "ui/TextLines.h"

#include <QFont>
#include <QRect>
#include <QRectF>
#include <QSize>

class QPainter;

/// Where rows lie, in points of a page whose rows begin at its top. With the usual font a row is 35
/// points high; it grows with the font. A value.
struct RowMetrics {
    /// For pages in this font.
    explicit RowMetrics(const QFont& font);

    QFont font; ///< of values
    int textHeight = 13;
    int rowHeight = 35;

    [[nodiscard]] int top(int row) const { return row * rowHeight; }
    [[nodiscard]] QRect rowRect(int row, int width) const;
    [[nodiscard]] QRect labelRect(int row, int width) const;
    [[nodiscard]] QRect valueRect(int row, int width) const;
    /// The middle of a control beside the label of its row.
    [[nodiscard]] int controlMiddle(int row) const;
    /// The row at this height; it need not exist.
    [[nodiscard]] int rowAt(int y) const { return y / rowHeight; }
};

/// Draws the rows of all pages. Main thread.
class RowPainter {
public:
    explicit RowPainter(const QFont& font);

    void setFont(const QFont& font);
    [[nodiscard]] const RowMetrics& metrics() const { return _metrics; }
    /// The width of a label.
    [[nodiscard]] int labelWidth(const QString& label) const;

    enum class Highlight { None, Dim, Full };
    /// A label that has its control beside it stands level with that.
    void
    drawRow(QPainter& painter, int row, int width, const InfoRow& shown, Highlight highlight) const;
    /// The dashed line over a row.
    void drawLine(QPainter& painter, int row, int width) const;
    /// "(Multiple values)" behind a control that ends there.
    void drawMixedMark(QPainter& painter, int row, int left, int width) const;
    /// The one text of a page without rows.
    void drawEmptyText(QPainter& painter, const QSize& page, const QString& text) const;
    /// Whether the value has room in its row.
    [[nodiscard]] bool fits(const InfoRow& shown, int width) const;

private:
    [[nodiscard]] const TextLines& linesOf(InfoRow::State state) const;

    RowMetrics _metrics;
    TextLines _labels;
    TextLines _values;
    TextLines _remarks; ///< italic
    TextLines _emptyText;
};
