#pragma once

#include <QImage>
#include <QPageLayout>
#include <QRectF>
#include <QSizeF>
#include <QString>

#include <optional>
#include <span>
#include <vector>

class QPainter;

/// A photograph as it goes to paper.
struct PrintedPhotograph {
    QString path;
    QString name;
    /// Of the stored picture, in pixels, before any rotation; empty where it is not known.
    QSizeF imageSize;
    /// Display rotation in degrees, counter-clockwise.
    double angle = 0;

    /// As it is seen.
    [[nodiscard]] QSizeF displaySize() const;
};

/// Pages of photographs: pure geometry and painting over the units of a painter. Any thread.
namespace PrintPage {

/// How the photographs of a document lie on its pages, all of which are alike.
struct Grid {
    QPageLayout::Orientation orientation = QPageLayout::Portrait;
    int columns = 1;
    int rows = 1;

    friend bool operator==(const Grid&, const Grid&) = default;
};

/// The orientation, and the grid with room for so many, in which the photographs become largest.
/// `paper` is what may be painted on, standing upright; only its shape counts. A page with one
/// photograph thus lies as that does.
[[nodiscard]] Grid
bestGrid(const QSizeF& paper, int perPage, std::span<const PrintedPhotograph> photographs);

/// The place of the photograph with that number on its page, row by row, within the page's area.
/// `gap` lies between places.
[[nodiscard]] QRectF cellRect(const Grid& grid, int index, const QRectF& area, double gap);

[[nodiscard]] int pageCount(qsizetype photographs, int perPage);

/// As large as the rectangle lets it be, in its middle, turned as it is seen. Below it stands the
/// name where there is a height for its line. In the place of a null picture stands that it can't
/// be read; one that is still to come is grey.
void paintPhotograph(
    QPainter& painter, const QRectF& cell, const PrintedPhotograph& photograph,
    const std::optional<QImage>& picture, double nameHeight);

} // namespace PrintPage
