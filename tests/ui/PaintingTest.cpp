#include "support/Images.h"
#include "support/Support.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"
#include "ui/ShadowPatch.h"
#include "ui/TextLines.h"
#include "ui/ToolbarButton.h"

#include <QAction>
#include <QMenu>
#include <QPainter>
#include <QStyleOption>

namespace {

QImage canvas(QSize size) {
    return support::filled(size, Qt::transparent, QImage::Format_ARGB32_Premultiplied);
}

/// The first column that something is drawn in; -1 if there is none.
int firstInked(const QImage& image) {
    for (int x = 0; x < image.width(); ++x)
        for (int y = 0; y < image.height(); ++y)
            if (qAlpha(image.pixel(x, y)) > 60) return x;
    return -1;
}

TEST(ShadowPatchTest, fadesAlikeOnAllSidesAndFallsBelow) {
    ShadowPatch shadow;
    const auto alphasAt = [&](const QList<QPoint>& points, QRect rect = {20, 20, 40, 40}) {
        QImage image = canvas({80, 80});
        QPainter painter(&image);
        shadow.draw(painter, rect);
        QList<int> alphas;
        for (const QPoint point : points)
            alphas += qAlpha(image.pixel(point));
        return alphas;
    };
    EXPECT_EQ(alphasAt({{40, 40}}), QList{0}); // not prepared
    shadow.prepare(4, 0, Qt::black);
    const QList<int> sides = alphasAt({{18, 40}, {61, 40}, {40, 18}, {40, 61}});
    const QList<int> corners = alphasAt({{18, 18}, {61, 18}, {18, 61}, {61, 61}});
    EXPECT_EQ(sides, QList<int>(4, sides[0]));
    EXPECT_EQ(corners, QList<int>(4, corners[0]));
    EXPECT_TRUE(0 < corners[0] && corners[0] < sides[0] && 10 < sides[0] && sides[0] < 100);
    EXPECT_GT(alphasAt({{39, 39}}, {38, 38, 3, 3})[0], 60); // smaller than its corners
    shadow.prepare(4, 3, Qt::black);
    EXPECT_EQ(shadow.extent(), 7);
    EXPECT_EQ(alphasAt({{40, 64}, {18, 40}, {15, 40}}), (QList{sides[0], sides[0], 0}));
    for (const QColor color : {Qt::black, Qt::transparent}) {
        shadow.prepare(8, 0, color);
        EXPECT_EQ(alphasAt({{14, 40}})[0] > 0, color == Qt::black);
    }
}

TEST(TextLinesTest, namesOfFilesKeepWhatTellsThemFromTheirNeighbours) {
    const QFontMetricsF metrics{QFont()};
    const QString camera = u"IMG_20240512_0001.jpg"_s, walk = u"a walk along the river.jpeg"_s;
    const std::tuple<QString, int, QString> names[] = {
        {camera, 16, camera},
        {camera, 16, u"IMG_20…0001.jpg"_s}, // the whole number
        {camera, 16, u"…0512_0001"_s},
        {camera, 0, u"IMG_20…0001.jpg"_s},
        {walk, 0, u"a walk…iver.jpeg"_s},
        {walk, 7, u"a w…along the river.jpeg"_s},
        {walk, 7, u"a walk along the river…"_s},
        {u"a walk.in the wood"_s, 0, u"a walk.i…wood"_s}}; // that is no ending
    for (const auto& [name, differsFrom, shown] : names) {
        const double room = metrics.horizontalAdvance(shown) + 1;
        EXPECT_EQ(shortenedFileName(name, differsFrom, metrics, room), shown);
        for (double less = room; less > 0; less -= 10)
            EXPECT_LE(
                metrics.horizontalAdvance(shortenedFileName(name, differsFrom, metrics, less)),
                std::max(less, metrics.horizontalAdvance(u'…')));
    }
}

TEST(TextLinesTest, linesAreCentredOrLeadingAndLoseTheirMiddle) {
    QFont font;
    font.setPixelSize(12);
    const TextLines lines(font);
    const QString text(4, u'H');
    EXPECT_EQ(lines.width(u"a\nb"_s), lines.width(u"a b"_s));
    QImage image = canvas({200, 40});
    QPainter painter(&image);
    lines.drawCentred(painter, {0, 0, 200, 40}, text);
    EXPECT_NEAR(firstInked(image), (200 - lines.width(text)) / 2, 3);
    image.fill(Qt::transparent);
    EXPECT_EQ(lines.drawLeading(painter, {20, 0, 180, 40}, text), lines.width(text));
    EXPECT_NEAR(firstInked(image), 20, 3);
    EXPECT_EQ(firstInked(image.copy(0, 0, 200, 10)), -1); // in the middle of the height
    image.fill(Qt::transparent);
    const double taken = lines.drawLeading(painter, {0, 0, 60, 40}, QString(40, u'.') + text);
    EXPECT_LE(taken, 60); // the end is kept
    EXPECT_GT(firstInked(image.copy(static_cast<int>(taken) - 12, 10, 12, 20)), -1);
}

TEST(ToolbarButtonTest, showsItsStateAndItsPlaceInARow) {
    PBThemes::apply(PBThemes::Scheme::Light);
    QAction left, right;
    SegmentedControl row({&left, &right});
    left.setCheckable(true);
    row.resize(row.sizeHint());
    EXPECT_EQ(row.width(), 72);
    const auto colors = [&] {
        const QImage image = row.grab().toImage();
        return std::pair(image.pixelColor(8, 6), image.pixelColor(36 + 8, 6));
    };
    const auto rest = colors();
    left.setChecked(true);
    right.setEnabled(false);
    EXPECT_TRUE(colors().first != rest.first && colors().second != rest.second);
    const QImage image = row.grab().toImage();
    EXPECT_NE(image.pixelColor(1, 1), image.pixelColor(35, 1)); // only the ends are round
}

TEST(ProgramStyleTest, theSymbolOfAHighlightedEntryHasTheColourOfItsText) {
    PBThemes::apply(PBThemes::Scheme::Light);
    QMenu menu;
    QStyleOptionMenuItem option;
    option.initFrom(&menu);
    option.icon = Icons::named(u"search"_s);
    option.maxIconWidth = 24;
    option.menuItemType = QStyleOptionMenuItem::Normal;
    option.rect = QRect(0, 0, 40, 24);
    const auto whitePixels = [&] {
        QImage image = support::filled(option.rect.size(), Qt::black);
        QPainter painter(&image);
        QApplication::style()->drawControl(QStyle::CE_MenuItem, &option, &painter, &menu);
        int count = 0;
        for (int place = 0; place < 40 * 24; ++place)
            count += image.pixelColor(place % 40, place / 40).red() > 200 ? 1 : 0;
        return count;
    };
    EXPECT_EQ(whitePixels(), 0);
    option.state.setFlag(QStyle::State_Selected);
    EXPECT_GT(whitePixels(), 5);
}

TEST(PBThemesTest, secondaryTextCanBeReadOnEveryGround) {
    const auto luminance = [](const QColor& color) {
        const auto linear = [](double value) {
            return value <= 0.04045 ? value / 12.92 : std::pow((value + 0.055) / 1.055, 2.4);
        };
        return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
               0.0722 * linear(color.blueF());
    };
    for (const auto scheme : {PBThemes::Scheme::Light, PBThemes::Scheme::Dark}) {
        PBThemes::apply(scheme);
        const PBThemes::Colors& colors = PBThemes::colors();
        // As it is where the window isn't the active one.
        const auto textOn = [&](const QColor& ground) {
            QImage pixel = support::filled({1, 1}, ground);
            QPainter painter(&pixel);
            painter.setOpacity(PBThemes::inactiveStrength);
            painter.fillRect(pixel.rect(), colors.secondaryText);
            return pixel.pixelColor(0, 0);
        };
        for (const QColor& ground :
             {colors.sidebar, colors.browser, colors.bar, colors.sheet, colors.groupHead}) {
            const auto [darker, lighter] =
                std::minmax({luminance(textOn(ground)), luminance(ground)});
            EXPECT_GE((lighter + 0.05) / (darker + 0.05), 4.5) << ground.name().toStdString();
        }
    }
    PBThemes::apply(PBThemes::Scheme::Light);
}

} // namespace
