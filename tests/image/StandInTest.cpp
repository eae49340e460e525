#include "image/StandIn.h"

#include "support/Images.h"
#include "support/Support.h"

#include <QPainter>

namespace {

/// Gray, with bars of the colour where the picture in the middle leaves room.
QImage barred(QSize size, QRect middle, QColor bars = Qt::black) {
    QImage image = support::filled(size, bars);
    QPainter(&image).fillRect(middle, QColor(120, 120, 120));
    return image;
}

TEST(StandInTest, onlyAPictureOfThePhotographsShapeStandsInWithoutItsBars) {
    const QSize small(160, 120);
    const QRect wide(0, 7, 160, 106);
    const QRect tall(35, 0, 90, 120);
    // The picture in the file, the photograph's size, and what stands in; 0 x 0: none.
    const std::tuple<QImage, QSizeF, QSize> rows[] = {
        {barred(small, wide), {6000, 4000}, {160, 105}},
        {barred(small, tall), {3000, 4000}, {88, 120}},
        {barred(small, {QPoint(), small}), {4000, 3000}, small},
        {barred(small, wide), {4032, 3024}, small}, // its own bars: the photograph is as dark
        {barred(small, wide, Qt::gray), {6000, 4000}, {0, 0}},
        {barred(small, wide.adjusted(0, -4, 0, 0)), {6000, 4000}, {0, 0}}, // it shows more
        {barred(small, wide), {}, small},
        {barred({1, 1}, {0, 0, 1, 1}), {6000, 4000}, {0, 0}},
        {{}, {6000, 4000}, {0, 0}}};
    for (const auto& [embedded, photograph, expected] : rows) {
        const QImage standIn = standInFor(embedded, photograph);
        EXPECT_EQ(standIn.size(), expected) << photograph.width();
        if (standIn.isNull() || expected == small) continue;
        EXPECT_GT(qRed(standIn.pixel(standIn.width() / 2, 0)), 100) << "a bar is left";
        EXPECT_GT(qRed(standIn.pixel(0, standIn.height() - 1)), 100);
    }
}

} // namespace
