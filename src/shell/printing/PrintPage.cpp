#include "shell/printing/PrintPage.h"

#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"

#include <QFontMetricsF>
#include <QPainter>

#include <algorithm>
#include <cmath>

namespace {

constexpr QSizeF usualShape(3, 2); // of a photograph that was not looked into yet
/// Many photographs of one shape need no more looks.
constexpr std::size_t mostShapes = 500;
constexpr double textPartOfLine = 0.7;
constexpr QColor toCome(232, 232, 232);

bool isQuarterTurn(double angle) {
    return qRound(std::abs(angle) / 90) % 2 == 1;
}

/// Of the photographs together, with cells of that size.
double areaIn(const QSizeF& cell, std::span<const PrintedPhotograph> photographs) {
    double area = 0;
    for (const PrintedPhotograph& photograph :
         photographs.first(std::min(mostShapes, photographs.size()))) {
        const QSizeF shown = photograph.displaySize().scaled(cell, Qt::KeepAspectRatio);
        area += shown.width() * shown.height();
    }
    return area;
}

void setTextHeight(QPainter& painter, double height) {
    QFont font = painter.font();
    font.setPixelSize(std::max(1, static_cast<int>(height * textPartOfLine)));
    painter.setFont(font);
}

void paintLine(QPainter& painter, const QRectF& line, const QString& text) {
    setTextHeight(painter, line.height());
    painter.setPen(Qt::black);
    const QFontMetricsF metrics(painter.font(), painter.device());
    painter.drawText(
        line, Qt::AlignCenter,
        metrics.elidedText(platform::harmlessText(text), Qt::ElideMiddle, line.width()));
}

} // namespace

QSizeF PrintedPhotograph::displaySize() const {
    if (imageSize.isEmpty()) return usualShape;
    return isQuarterTurn(angle) ? imageSize.transposed() : imageSize;
}

PrintPage::Grid PrintPage::bestGrid(
    const QSizeF& paper, int perPage, std::span<const PrintedPhotograph> photographs) {
    Grid best;
    double bestArea = -1;
    for (const auto orientation : {QPageLayout::Portrait, QPageLayout::Landscape}) {
        const QSizeF area = orientation == QPageLayout::Portrait ? paper : paper.transposed();
        for (int columns = 1; columns <= perPage; ++columns) {
            const int rows = (perPage + columns - 1) / columns;
            // Full rows, of which the last one may lack some.
            if (columns > 1 && (rows * columns - perPage) >= columns) continue;
            const double covered =
                areaIn({area.width() / columns, area.height() / rows}, photographs);
            if (covered <= bestArea) continue;
            bestArea = covered;
            best = {orientation, columns, rows};
        }
    }
    return best;
}

QRectF PrintPage::cellRect(const Grid& grid, int index, const QRectF& area, double gap) {
    const double width = (area.width() - gap * (grid.columns - 1)) / grid.columns;
    const double height = (area.height() - gap * (grid.rows - 1)) / grid.rows;
    const int column = index % grid.columns;
    const int row = index / grid.columns;
    return {area.left() + column * (width + gap), area.top() + row * (height + gap), width, height};
}

int PrintPage::pageCount(qsizetype photographs, int perPage) {
    return static_cast<int>((photographs + perPage - 1) / perPage);
}

void PrintPage::paintPhotograph(
    QPainter& painter, const QRectF& cell, const PrintedPhotograph& photograph,
    const std::optional<QImage>& picture, double nameHeight) {
    painter.save();
    const QRectF area = cell.adjusted(0, 0, 0, -nameHeight);
    PrintedPhotograph shown = photograph;
    // What was decoded is what is there, whatever the catalogue knows.
    if (picture && !picture->isNull()) shown.imageSize = QSizeF(picture->size());
    const QSizeF size = shown.displaySize().scaled(area.size(), Qt::KeepAspectRatio);
    QRectF frame(QPointF(), size);
    frame.moveCenter(area.center());
    if (nameHeight > 0)
        paintLine(
            painter, {cell.left(), frame.bottom(), cell.width(), nameHeight}, photograph.name);
    if (!picture) {
        painter.fillRect(frame, toCome);
    } else if (picture->isNull()) {
        painter.setPen(Qt::gray);
        painter.drawRect(frame);
        const double line = std::min(frame.height(), frame.width() / 12);
        paintLine(
            painter, {frame.left(), frame.center().y() - line / 2, frame.width(), line},
            platform::localizedString(u"PrintUnreadable"));
    } else {
        const QSizeF stored = isQuarterTurn(photograph.angle) ? size.transposed() : size;
        painter.translate(frame.center());
        painter.rotate(-photograph.angle);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(
            QRectF(-stored.width() / 2, -stored.height() / 2, stored.width(), stored.height()),
            *picture);
    }
    painter.restore();
}
