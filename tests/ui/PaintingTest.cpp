#include "support/Support.h"
#include "ui/HeaderBar.h"
#include "ui/PBThemes.h"
#include "ui/ShadowPatch.h"
#include "ui/TextLines.h"
#include "ui/ToolbarButton.h"

#include <QAction>
#include <QPainter>

namespace {

QImage canvas(QSize size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    return image;
}

/// The columns that something is drawn in, first and last.
std::pair<int, int> inked(const QImage& image) {
    std::pair<int, int> columns{-1, -1};
    for (int x = 0; x < image.width(); ++x)
        for (int y = 0; y < image.height(); ++y)
            if (qAlpha(image.pixel(x, y)) > 60)
                columns = {columns.first < 0 ? x : columns.first, x};
    return columns;
}

TEST(ShadowPatchTest, fadesAlikeOnAllSidesAndFallsBelow) {
    ShadowPatch shadow;
    const auto alphaAt = [&](int x, int y, QRect rect = {20, 20, 40, 40}) {
        QImage image = canvas({80, 80});
        QPainter painter(&image);
        shadow.draw(painter, rect);
        painter.end();
        return qAlpha(image.pixel(x, y));
    };
    EXPECT_EQ(alphaAt(40, 40), 0); // not prepared
    shadow.prepare(4, 0, Qt::black);
    EXPECT_EQ(shadow.extent(), 4);
    const int side = alphaAt(18, 40);
    const int corner = alphaAt(18, 18);
    EXPECT_GT(side, std::max(corner, 10));
    EXPECT_LT(side, 100);
    EXPECT_GT(corner, 0);
    for (const auto& [x, y] : {std::pair(61, 40), {40, 18}, {40, 61}})
        EXPECT_EQ(alphaAt(x, y), side);
    for (const auto& [x, y] : {std::pair(61, 18), {18, 61}, {61, 61}})
        EXPECT_EQ(alphaAt(x, y), corner);
    EXPECT_EQ(alphaAt(15, 40), 0);
    EXPECT_GT(alphaAt(39, 39, {38, 38, 3, 3}), 60); // smaller than its corners
    EXPECT_EQ(alphaAt(0, 0, {}), 0);
    shadow.prepare(4, 3, Qt::black);
    EXPECT_EQ(shadow.extent(), 7);
    EXPECT_EQ(alphaAt(40, 64), side);
    EXPECT_EQ(alphaAt(18, 40), side);
    shadow.prepare(8, 0, Qt::black);
    EXPECT_GT(alphaAt(14, 40), 0);
    shadow.prepare(8, 0, Qt::transparent);
    EXPECT_EQ(alphaAt(14, 40), 0);
}

TEST(TextLinesTest, linesAreCentredOrLeadingAndLoseTheirMiddle) {
    QFont font;
    font.setPixelSize(12);
    const TextLines lines(font);
    EXPECT_EQ(lines.width(u"a\nb"_s), lines.width(u"a b"_s));
    const QString text(4, u'H');
    const double width = lines.width(text);
    QImage image = canvas({200, 40});
    QPainter painter(&image);
    lines.drawCentred(painter, {0, 0, 200, 40}, text);
    const auto [first, last] = inked(image);
    EXPECT_NEAR(first, (200 - width) / 2, 3);
    EXPECT_NEAR(first + last, 199, 3);
    image.fill(Qt::transparent);
    EXPECT_EQ(lines.drawLeading(painter, {20, 0, 180, 40}, text), width);
    EXPECT_NEAR(inked(image).first, 20, 3);
    EXPECT_EQ(inked(image.copy(0, 0, 200, 10)).first, -1); // in the middle of the height
    image.fill(Qt::transparent);
    const double taken = lines.drawLeading(painter, {0, 0, 60, 40}, QString(40, u'.') + text);
    EXPECT_LE(taken, 60); // the end is kept
    EXPECT_GT(inked(image.copy(static_cast<int>(taken) - 12, 10, 12, 20)).first, -1);
}

TEST(HeaderBarTest, theLineLiesTowardsThePane) {
    PBThemes::apply(PBThemes::Scheme::Light);
    using enum HeaderBar::Line;
    for (const auto& [side, y] : {std::pair(Below, 27), {Above, 0}}) {
        HeaderBar bar(u"Title"_s, side);
        bar.resize(200, bar.height());
        const QImage image = bar.grab().toImage();
        EXPECT_EQ(image.pixelColor(150, y), PBThemes::colors().separator);
        EXPECT_EQ(image.pixelColor(150, 27 - y), PBThemes::colors().bar);
    }
}

TEST(ToolbarButtonTest, showsItsStateAndItsPlaceInARow) {
    PBThemes::apply(PBThemes::Scheme::Light);
    QAction left, right;
    SegmentedControl row({&left, &right});
    left.setCheckable(true);
    row.resize(row.sizeHint());
    EXPECT_EQ(row.width(), 72);
    const auto at = [&](int x, int y) { return row.grab().toImage().pixelColor(x, y); };
    const QColor rest = at(8, 6);
    EXPECT_EQ(at(36 + 8, 6), rest);
    left.setChecked(true);
    EXPECT_NE(at(8, 6), rest);
    EXPECT_EQ(at(36 + 8, 6), rest);
    right.setEnabled(false);
    EXPECT_NE(at(36 + 8, 6), rest);
    EXPECT_NE(at(1, 1), at(35, 1)); // only the ends are round
    EXPECT_EQ(at(36 + 35, 0), at(0, 0));
    ToolbarButton button(&left);
    button.setHasArrow();
    EXPECT_EQ(button.sizeHint(), QSize(47, 28));
}

} // namespace
