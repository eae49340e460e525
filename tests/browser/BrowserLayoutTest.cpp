#include "FakeLeaves.h"
#include "support/Support.h"

namespace {

constexpr QSizeF landscape(3000, 2000);
constexpr QSizeF portrait(2000, 3000);

struct BrowserLayoutTest : ::testing::Test {
    /// Three columns of the default size.
    void show(std::vector<FakeLeaves::Leaf> all, double width = 3 * 166 + 4 * 15) {
        leaves.leaves = std::move(all);
        layout.setLeaves(&leaves);
        layout.setWidth(width, 0);
    }
    static FakeLeaves::Leaf leafOf(int count, QSizeF size = landscape, bool isCollapsed = false) {
        return {std::vector<QSizeF>(static_cast<std::size_t>(count), size), isCollapsed};
    }
    BrowserHit hitAt(const QPointF& point) { return layout.itemIndexByPoint(point, texts); }

    FakeLeaves leaves;
    FakeTextWidths texts;
    BrowserLayout layout;
};

TEST_F(BrowserLayoutTest, theSizeSliderHasAFlatMiddleAndReachesBothEnds) {
    const std::pair<double, double> cases[] = {{0, 64},   {44, 158}, {45, 160},
                                               {55, 160}, {56, 162}, {100, 256}};
    for (const auto& [slider, size] : cases) {
        EXPECT_EQ(sliderToThumbSize(slider), size) << slider;
        EXPECT_EQ(thumbSizeToSlider(size), size == 160 ? 50 : slider) << size;
    }
}

TEST_F(BrowserLayoutTest, columnsStayWhenTheScrollerAppears) {
    show({leafOf(1)}, 571);
    EXPECT_EQ(layout.cellColumn(), 3);
    layout.setWidth(571 - 14, 0);
    const std::int64_t withScroller = layout.cellColumn();
    layout.setWidth(571, 14);
    EXPECT_EQ(layout.cellColumn(), withScroller);
    layout.setWidth(100, 14);
    EXPECT_EQ(layout.cellColumn(), 1);
    EXPECT_LT(layout.cellHSpace(), 0);
}

TEST_F(BrowserLayoutTest, aPointHitsAPartOfACellOrNothing) {
    show({leafOf(2)});
    const QRectF cell = layout.cellRectAtIndex({0, 1});
    EXPECT_EQ(cell, QRectF(196, 38, 166, 158));
    const auto partAt = [&](double x, double y) { return hitAt({x, y}).part; };
    EXPECT_EQ(hitAt(cell.center()).index, (PBImageBrowserIndex{0, 1}));
    EXPECT_EQ(partAt(200, 45), BrowserPart::Thumbnail);
    EXPECT_EQ(partAt(197, 45), BrowserPart::None); // the frame
    EXPECT_EQ(partAt(279, cell.bottom() - 40), BrowserPart::FileName);
    EXPECT_EQ(partAt(279, cell.bottom() - 25), BrowserPart::ImageSize);
    EXPECT_EQ(partAt(279, cell.bottom() - 5), BrowserPart::FileSize);
    EXPECT_EQ(partAt(279 - 41, cell.bottom() - 40), BrowserPart::None); // beside the name
    for (const QPointF& gap :
         {QPointF(188, 80), QPointF(250, 30), QPointF(450, 80), QPointF(250, 500),
          QPointF(250, 10)})
        EXPECT_EQ(hitAt(gap).index, PBImageBrowserIndex{}) << gap.x() << "," << gap.y();
}

TEST_F(BrowserLayoutTest, smallImagesHaveATargetThatCanBeHit) {
    show({{{{20, 20}, portrait, {}, {1, 30000}}, false}});
    const QPointF middle =
        layout.thumbnailRectWithCellRect(layout.cellRectAtIndex({0, 0})).center();
    EXPECT_EQ(hitAt(middle + QPointF(14, 14)).part, BrowserPart::Thumbnail);
    EXPECT_EQ(hitAt(middle + QPointF(16, 0)).part, BrowserPart::None);
    layout.setMetrics({.style = BrowserMetrics::EnlargeSmallPhoto});
    EXPECT_EQ(hitAt(middle + QPointF(75, 75)).part, BrowserPart::Thumbnail);
    for (const std::int64_t item : {2, 3}) { // no size; a hair
        const QRectF target = layout.hitTarget(layout.cellRectAtIndex({0, item}), {0, item});
        EXPECT_GE(target.width(), 30);
        EXPECT_GE(target.height(), 30);
    }
}

TEST_F(BrowserLayoutTest, stepsSkipFoldedAndEmptyLeaves) {
    show({leafOf(0), leafOf(5), leafOf(4, landscape, true), leafOf(2)});
    using Index = PBImageBrowserIndex;
    using Step = Index (BrowserLayout::*)(const Index&) const;
    const auto check = [&](Step step, std::initializer_list<std::pair<Index, Index>> cases) {
        for (const auto& [from, to] : cases)
            EXPECT_EQ((layout.*step)(from), to) << from.group << ' ' << from.item;
    };
    check(
        &BrowserLayout::nextIndex,
        {{{}, {1, 0}}, {{1, 4}, {3, 0}}, {{3, 1}, {}}, {{2, 1}, {3, 0}}, {{9, 0}, {}}});
    check(&BrowserLayout::prevIndex, {{{}, {3, 1}}, {{3, 0}, {1, 4}}, {{1, 0}, {}}});
    // The last row is shorter.
    check(
        &BrowserLayout::colNextIndex,
        {{{1, 2}, {1, 4}}, {{1, 3}, {3, 0}}, {{1, 4}, {3, 1}}, {{3, 0}, {}}});
    check(
        &BrowserLayout::colPrevIndex,
        {{{3, 1}, {1, 4}}, {{3, 0}, {1, 3}}, {{1, 4}, {1, 1}}, {{1, 2}, {}}});
    show({leafOf(3, landscape, true)});
    EXPECT_EQ(layout.nextIndex({}), Index{});
    EXPECT_EQ(layout.prevIndex({}), Index{});
}

TEST_F(BrowserLayoutTest, theFirstHeadSticksUntilTheNextPushesItOff) {
    show({leafOf(1), leafOf(1, landscape, true), leafOf(1)});
    const double second = layout.groupItemPosition(1);
    const auto headsAt = [&](double y) { return layout.visibleHeads({0, y, 558, 100}); };
    EXPECT_EQ(headsAt(10.7).front().rect, QRectF(0, 10, 558, 23));
    const auto pushed = headsAt(second - 5);
    ASSERT_EQ(pushed.size(), 3U);
    EXPECT_EQ(pushed[0].rect.top(), second + 1 - 23);
    EXPECT_EQ(pushed[1].rect.top(), second);
    EXPECT_FALSE(pushed[0].hasTopLine);
    EXPECT_TRUE(pushed[1].hasTopLine);
    EXPECT_FALSE(pushed[2].hasTopLine); // right under a folded one
    EXPECT_EQ(headsAt(second).front().group, 1);
}

TEST_F(BrowserLayoutTest, scrollsAsLittleAsShowsACellClearOfTheHead) {
    show({leafOf(30)});
    const QRectF cell = layout.cellRectAtIndex({0, 12}).adjusted(0, -23, 0, 23);
    const auto distance = [&](double top) {
        return layout.scrollDistanceToShow({0, 12}, {0, top, 558, 400});
    };
    EXPECT_EQ(distance(cell.top() - 10), 0);
    EXPECT_EQ(distance(cell.top() + 10), -10);
    EXPECT_EQ(distance(cell.bottom() - 400 - 7), 7);
    EXPECT_EQ(layout.scrollDistanceToShow({}, {0, 0, 558, 400}), 0);
    EXPECT_TRUE(layout.shouldAnimate(-49 * 160.0));
    EXPECT_FALSE(layout.shouldAnimate(50 * 160.0));
}

TEST_F(BrowserLayoutTest, looksOnlyAsFarDownAsItIsAsked) {
    show({leafOf(40000), leafOf(40000)});
    static_cast<void>(layout.visibleRange(0, 1000));
    EXPECT_LT(leaves.measured, 1000);
    static_cast<void>(layout.contentHeight());
    EXPECT_LE(leaves.measured, 80000 + 1000);
    const std::int64_t all = leaves.measured;
    static_cast<void>(layout.visibleRange(2e6, 2e6 + 1000));
    static_cast<void>(layout.cellRectAtIndex({1, 39999}));
    EXPECT_EQ(leaves.measured, all);
    layout.invalidate();
    static_cast<void>(layout.visibleRange(0, 1000));
    EXPECT_GT(leaves.measured, all);
}

TEST_F(BrowserLayoutTest, sheetsMayBeTallerThanAnInt) {
    show({leafOf(3000, {2e6, 3e6})}, 100);
    layout.setMetrics({.thumbnailSize = 1e6, .style = 0});
    EXPECT_EQ(layout.contentHeight(), 23 + 3000 * (1e6 + 6) + 3001 * layout.metrics().cellSpace());
    const QRectF last = layout.cellRectAtIndex({0, 2999});
    EXPECT_GT(last.top(), 2147483648.0);
    const BrowserRange range = layout.visibleRange(last.top() + 1, last.top() + 2);
    EXPECT_EQ(range.begin, (PBImageBrowserIndex{0, 2999}));
}

} // namespace
