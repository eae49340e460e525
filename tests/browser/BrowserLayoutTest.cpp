#include "BrowserSheetTest.h"

namespace {

struct BrowserLayoutTest : BrowserSheetTest {
    BrowserHit hitAt(const QPointF& point) { return layout.itemIndexByPoint(point, *this); }
    void showSizes(const std::vector<QSizeF>& sizes) {
        show({static_cast<int>(sizes.size())});
        for (int item = 0; const QSizeF& size : sizes)
            tree.item(0, item++)->setImageSize(size);
    }
};

TEST_F(BrowserLayoutTest, theSizeSliderHasAFlatMiddleAndReachesBothEnds) {
    const std::pair<double, double> cases[] = {{0, 64},   {44, 158}, {45, 160},
                                               {55, 160}, {56, 162}, {100, 256}};
    for (const auto& [slider, size] : cases) {
        EXPECT_EQ(sliderToThumbSize(slider), size) << slider;
        EXPECT_EQ(thumbSizeToSlider(size), size == 160 ? 50 : slider) << size;
    }
    for (const auto& [size, space, dash] : {std::tuple(64, 10, 2), {160, 15, 3}, {256, 20, 4}}) {
        const BrowserMetrics metrics{.thumbnailSize = static_cast<double>(size)};
        EXPECT_EQ(metrics.cellSpace(), space);
        EXPECT_EQ(metrics.dashWidth(), dash);
    }
}

TEST_F(BrowserLayoutTest, columnsStayWhenTheScrollerAppears) {
    show({4});
    layout.setWidth(571.9, 0);
    EXPECT_EQ(layout.cellRectAtIndex({0, 1}), QRectF(202, 38, 166, 158));
    EXPECT_EQ(layout.contentHeight(), 23 + 15 + 2 * 173);
    constexpr int three = 3 * 166 + 4 * 8;
    for (const auto& [width, hidden, columns] :
         {std::tuple(three, 0, 3), {three - 1, 0, 2}, {three + 14, 14, 3}, {three + 13, 14, 2}}) {
        layout.setWidth(width, hidden);
        EXPECT_EQ(layout.cellColumn(), columns) << width;
    }
    layout.setWidth(100, 14);
    EXPECT_EQ(layout.contentHeight(), 23 + 15 + 4 * 173);
    EXPECT_LT(layout.cellHSpace(), 0);
}

TEST_F(BrowserLayoutTest, rowsAreAsTallAsTheirTallestPictureAndTheirTexts) {
    const QSizeF landscape(3000, 2000), portrait(2000, 3000), small(20, 40);
    const std::tuple<std::uint64_t, std::vector<QSizeF>, double> rows[] = {
        {14, {landscape, portrait, small}, 160 + 45 + 6},
        {2, {landscape}, 107 + 15 + 6},
        {0, {landscape}, 107 + 6},
        {0, {small}, 40 + 6},
        {16, {small}, 160 + 6},
        {0, {{}, {1, 30000}, {30000, 1}}, 160 + 6},
        {0, {{}, {0, 3000}, {30000, 1}}, 30 + 6}};
    for (const auto& [style, sizes, height] : rows) {
        layout.setMetrics({.style = style});
        showSizes(sizes);
        EXPECT_EQ(layout.cellRectAtIndex({0, 0}).height(), height) << style;
        EXPECT_EQ(layout.groupHeight(0), 15 + height + 15) << style;
    }
}

TEST_F(BrowserLayoutTest, whatLiesBetweenTwoLinesBeginsAndEndsWithRowsHeadsOrSpace) {
    show({4, 4, 0, 1});
    fold(1);
    // A line, what begins below it and what ends above.
    const std::tuple<double, Index, Index> lines[] = {
        {-100, {0, -1}, {0, -1}},  {22.9, {0, -1}, {0, -1}}, {23, {0, 0}, {0, -1}},
        {23.1, {0, 0}, {0, -2}},   {37.9, {0, 0}, {0, -2}},  {38, {0, 0}, {0, 2}},
        {195.9, {0, 0}, {0, 2}},   {196, {0, 3}, {0, 2}},    {210.9, {0, 3}, {0, 2}},
        {211, {0, 3}, {0, 3}},     {369, {0, -2}, {0, 3}},   {384, {1, -1}, {0, 3}},
        {384.1, {1, -1}, {1, -1}}, {407, {2, -1}, {1, -1}},  {430, {3, -1}, {2, -1}},
        {640, {3, -2}, {3, 0}},    {641, {}, {3, 0}}};
    for (const auto& [line, begin, end] : lines) {
        EXPECT_EQ(layout.visibleRange(line, 900).begin, begin) << line;
        EXPECT_EQ(layout.visibleRange(0, line).end, end) << line;
    }
    EXPECT_EQ(layout.visibleRange(0, 900).end, (Index{3, 0}));
    EXPECT_EQ(layout.visibleRange(500, 900).groupPos, 430);
    layout.setLeaves(nullptr);
    EXPECT_FALSE(layout.visibleRange(0, 900).isComplete());
}

TEST_F(BrowserLayoutTest, aPointHitsAPartOfACellOrNothing) {
    show({2});
    EXPECT_EQ(hitAt({279, 117}).index, (Index{0, 1}));
    const double bottom = 196;
    using enum BrowserPart;
    const std::pair<BrowserPart, std::vector<QPointF>> parts[] = {
        {Thumbnail, {{200, 45}, {199, 41}, {358.9, 147.9}}},
        {None, {{198.9, 45}, {200, 40.9}, {359, 45}, {200, 148}}}, // the frame
        {None, {{238, bottom - 40}}},                              // beside the name
        {FileName, {{279, bottom - 40}}},
        {ImageSize, {{279, bottom - 25}}},
        {FileSize, {{279, bottom - 5}}}};
    for (const auto& [part, points] : parts)
        for (const QPointF& point : points)
            EXPECT_EQ(hitAt(point).part, part) << point.x() << ' ' << point.y();
    nameWidth = 300; // the row is as wide as it is
    EXPECT_EQ(hitAt({279, bottom - 40}).partRect.width(), 166);
    nameWidth = 80;
    const BrowserColumns touched = layout.visibleColumns(181, 196);
    EXPECT_EQ(std::pair(touched.begin, touched.end), std::pair(0L, 1L));
    EXPECT_EQ(layout.visibleColumns(182, 195).begin, -1);
    EXPECT_EQ(hitAt({279, bottom - 5}).partRect, QRectF(259, 182, 40, 14));
    for (const auto& [style, row] : {std::pair(2, 1), {6, 2}, {10, 2}, {14, 3}, {8, 1}, {12, 2}}) {
        BrowserLayout other;
        other.setMetrics({.style = static_cast<std::uint64_t>(style)});
        const QRectF rows(0, 0, 166, 100);
        const bool hasName = style % 4 >= 2;
        EXPECT_EQ(
            hasName ? other.fileNameRectWithCellRect(rows) : other.imageSizeRectWithCellRect(rows),
            QRectF(0, 101 - 15 * row, 166, 14))
            << style;
    }
    const std::pair<double, double> gaps[] = {
        {188, 80}, {250, 30}, {450, 80}, {250, 500}, {250, 10}};
    for (const auto& [x, y] : gaps)
        EXPECT_EQ(hitAt({x, y}).index, Index{}) << x << ' ' << y;
}

TEST_F(BrowserLayoutTest, smallImagesHaveATargetThatCanBeHit) {
    showSizes({{20, 20}, {2000, 3000}, {}, {1, 30000}});
    const QRectF cell = layout.cellRectAtIndex({0, 0});
    const QPointF middle = layout.thumbnailRectWithCellRect(cell).center();
    EXPECT_EQ(hitAt(middle + QPointF(14, 14)).part, BrowserPart::Thumbnail);
    EXPECT_EQ(hitAt(middle + QPointF(16, 0)).part, BrowserPart::None);
    layout.setMetrics({.style = BrowserMetrics::EnlargeSmallPhoto});
    EXPECT_EQ(hitAt(middle + QPointF(75, 75)).part, BrowserPart::Thumbnail);
    for (const std::int64_t item : {2, 3}) { // no size; a hair
        const QRectF target = layout.hitTarget(layout.cellRectAtIndex({0, item}), {0, item});
        EXPECT_GE(std::min(target.width(), target.height()), 30);
    }
}

TEST_F(BrowserLayoutTest, stepsSkipFoldedAndEmptyLeaves) {
    show({0, 5, 4, 2});
    fold(2);
    const auto check = [&](auto step, std::initializer_list<std::pair<Index, Index>> cases) {
        for (const auto& [from, to] : cases)
            EXPECT_EQ((layout.*step)(from), to) << from.group << ' ' << from.item;
    };
    using Layout = BrowserLayout;
    check(
        &Layout::nextIndex,
        {{{}, {1, 0}}, {{1, 4}, {3, 0}}, {{3, 1}, {}}, {{2, 1}, {3, 0}}, {{9, 0}, {}}});
    check(&Layout::prevIndex, {{{}, {3, 1}}, {{3, 0}, {1, 4}}, {{1, 0}, {}}, {{1, 99}, {1, 4}}});
    // The last row is shorter.
    check(
        &Layout::colNextIndex,
        {{{1, 2}, {1, 4}}, {{1, 3}, {3, 0}}, {{1, 4}, {3, 1}}, {{3, 0}, {}}});
    check(
        &Layout::colPrevIndex,
        {{{3, 1}, {1, 4}}, {{1, 3}, {1, 0}}, {{1, 2}, {}}, {{1, 99}, {1, 2}}, {{9, 0}, {}}});
    show({3});
    fold(0);
    for (const auto step : {&Layout::nextIndex, &Layout::prevIndex})
        check(step, {{{}, {}}});
}

TEST_F(BrowserLayoutTest, theFirstHeadSticksUntilTheNextPushesItOff) {
    show({1, 1, 1});
    fold(1);
    const double second = layout.groupItemPosition(1);
    const auto headsAt = [&](double y) { return layout.visibleHeads({0, y, 558, 100}); };
    EXPECT_EQ(headsAt(10.7).front().rect, QRectF(0, 10, 558, 23));
    QList<std::pair<double, bool>> pushed;
    for (const BrowserHead& head : headsAt(second - 5))
        pushed.emplaceBack(head.rect.top(), head.hasTopLine);
    const double third = second + 23; // right under a folded one
    EXPECT_EQ(pushed, (decltype(pushed){{second - 22, false}, {second, true}, {third, false}}));
    EXPECT_EQ(headsAt(second).front().group, 1);
    EXPECT_EQ(headsAt(second - 100).size(), 1U); // the next begins at the very end
}

/// Held against what can be seen at once: no two things overlap, and every search finds all cells
/// that it should.
TEST_F(BrowserLayoutTest, shortGroupsStandSideBySideInTheCompactStyle) {
    layout.setMetrics({.style = BrowserMetrics::Compact});
    show({1, 1, 2, 5, 1, 2, 1, 1, 0, 1, 2, 3});
    tree.item(1, 0)->setImageSize({2000, 3000});
    fold(6);
    std::vector<std::pair<Index, QRectF>> cells;
    std::vector<QRectF> taken;
    QString places; // beside the head of the leaf before, or below it
    for (int group = 0; group < leaves.leafCount(); ++group) {
        taken.push_back(layout.headRect(group));
        places += taken.back().top() > taken.at(std::max(group - 1, 0)).top() ? u'v' : u'>';
    }
    EXPECT_EQ(places, u">>vvv>vvvv>v") << "four do not fit; a leaf without cells is alone";
    leaves.forEachImage(FoldedLeaves::Excluded, [&](const Index& index, const auto&) {
        cells.emplace_back(index, layout.cellRectAtIndex(index));
        taken.push_back(cells.back().second);
    });
    for (std::size_t a = 0; a < taken.size(); ++a)
        for (std::size_t b = 0; b < a; ++b)
            EXPECT_FALSE(taken[a].intersects(taken[b])) << a << ' ' << b;
    EXPECT_EQ(layout.cellRectAtIndex({0, 0}).height(), layout.cellRectAtIndex({1, 0}).height());
    EXPECT_EQ(layout.headRect(5).right(), 558);

    for (const auto& [index, cell] : cells)
        EXPECT_EQ(hitAt(cell.center()).index, index) << index.group;
    EXPECT_EQ(layout.colNextIndex({0, 0}), (Index{2, 0}));
    EXPECT_EQ(layout.colPrevIndex({7, 0}), (Index{4, 0}));
    EXPECT_EQ(hitAt({cells[1].second.right() + 30, cells[1].second.center().y()}).index, Index{});
    const double height = layout.contentHeight();
    for (double top = 0; top < height; top += 7) {
        for (const double page : {1.0, 40.0, 300.0}) {
            std::set<std::pair<qint64, qint64>> found;
            layout.forEachVisible(top, top + page, [&](const Index& index) {
                found.emplace(index.group, index.item);
                const QRectF cell = layout.cellRectAtIndex(index).adjusted(0, -15, 0, 15);
                EXPECT_TRUE(cell.bottom() >= top && cell.top() <= top + page) << top;
            });
            for (const auto& [index, cell] : cells) {
                if (cell.bottom() <= top || cell.top() >= top + page) continue;
                EXPECT_TRUE(found.contains({index.group, index.item})) << top << ' ' << page;
            }
        }
        const auto heads = layout.visibleHeads({0, top, 558, 300});
        for (std::size_t i = 1; i < heads.size(); ++i)
            EXPECT_FALSE(heads[i].rect.adjusted(0, 1, 0, 0).intersects(heads[i - 1].rect)) << top;
    }
}

TEST_F(BrowserLayoutTest, scrollsAsLittleAsShowsACellClearOfTheHead) {
    show({30});
    const QRectF cell = layout.cellRectAtIndex({0, 12}).adjusted(0, -23, 0, 23);
    const std::pair<double, double> tops[] = {
        {cell.top() - 10, 0}, {cell.top() + 10, -10}, {cell.bottom() - 400 - 7, 7}};
    for (const auto& [top, distance] : tops)
        EXPECT_EQ(layout.scrollDistanceToShow({0, 12}, {0, top, 558, 400}), distance);
    EXPECT_EQ(layout.scrollDistanceToShow({}, {0, 0, 558, 400}), 0);
    EXPECT_TRUE(layout.shouldAnimate(-49.49 * 160) && !layout.shouldAnimate(49.51 * 160));
    EXPECT_EQ(layout.pageItemCount(2 * 181), 6);
    EXPECT_EQ(layout.pageItemCount(2 * 181 + 1), 9);
}

/// Two leaves of 40000 images; notes how many of their sizes were asked for.
struct CountingLeaves final : BrowserLeaves {
    std::int64_t leafCount() const override { return 2; }
    std::int64_t imageFileCount(std::int64_t) const override { return 40000; }
    bool isCollapsedForBrowser(std::int64_t) const override { return false; }
    void displaySizes(std::int64_t, std::int64_t, std::span<QSizeF> sizes) const override {
        measured += std::ssize(sizes);
    }
    mutable std::int64_t measured = 0;
};

TEST_F(BrowserLayoutTest, looksOnlyAsFarDownAsItIsAsked) {
    const CountingLeaves counting;
    layout.setLeaves(&counting);
    static_cast<void>(layout.visibleRange(0, 1000));
    EXPECT_LT(counting.measured, 1000);
    static_cast<void>(layout.contentHeight());
    EXPECT_LE(counting.measured, 80000 + 1000);
    layout.setLeaves(nullptr);
}

TEST_F(BrowserLayoutTest, whatIsKeptAlsoAfterASwapGivesTheSameAsMeasuringAllAtOnce) {
    std::mt19937 random(20);
    const auto below = [&](std::size_t bound) { return static_cast<int>(random() % bound); };
    show({700, 1, 40, 600, 0, 300});
    const auto resize = [&](const auto& item) {
        item->setImageSize(QSizeF(below(6000), below(4000)));
    };
    leaves.forEachImage(
        FoldedLeaves::Included, [&](const Index&, const auto& item) { resize(item); });
    for (int round = 0; round < 240; ++round) {
        SCOPED_TRACE(round);
        tree.swapForCopy();
        for (int change = below(4); change > 0; --change) {
            const int group = below(tree.tree.size());
            const auto count = tree.node(group).imageFiles().size();
            if (below(3) > 0) {
                resize(tree.add(group, u"abcd"_s[below(4)] + QString::number(below(999))));
            } else if (count > 1) {
                // Often the first of a chunk: the row that it ends is another one then.
                const int gone = count > 256 && below(2) == 0 ? 256 : below(count);
                tree.remove(group, {tree.item(group, gone)});
            }
        }
        if (round % 7 == 0) std::swap(tree.tree[0], tree.tree[1 + random() % 3]);
        std::vector<PBGroupItem*> shown = tree.leaves();
        if (round % 5 == 0) shown.pop_back();
        layout.leavesDidChange(leaves.setLeafGroupItemArray(shown));
        if (round % 4 == 0) {
            tree.data(2 + below(4)).setIsCollapsedForBrowser(below(2) == 0);
            layout.setMetrics({.style = random() % 32});
            layout.setWidth(30 + below(2000), 0);
            layout.invalidate();
        }
        BrowserLayout whole = layout;
        whole.invalidate();
        const double height = whole.contentHeight();
        // In any order, with some lines at exact edges: what is known grows in different ways.
        for (int look = 0; look < 10; ++look) {
            const std::int64_t group = below(shown.size());
            const std::int64_t count = leaves.imageFileCount(group);
            const Index index{group, below(1200) % std::max(count, 1L)};
            double top = below(static_cast<std::size_t>(height) + 200) - 100;
            if (look % 5 == 0) top = whole.groupItemPosition(group) + below(3) * 23;
            // The first rows to be measured in one go are 64.
            const Index edge{group, std::min(64 * layout.cellColumn(), count) - 1};
            if (look % 5 == 1 && count > 0)
                top = whole.cellRectAtIndex(edge).bottom() + below(2) * 15;
            const double bottom = top + std::array{0.0, 15.0, 700.0}[random() % 3];
            const auto answersOf = [&](BrowserLayout& one) {
                const BrowserRange range = one.visibleRange(top, bottom);
                return std::tuple(
                    range.begin, range.end, range.groupPos,
                    look % 7 == 3 ? one.groupItemPosition(group) : 0,
                    count > 0 ? one.cellRectAtIndex(index) : QRectF());
            };
            ASSERT_EQ(answersOf(layout), answersOf(whole)) << top << " to " << bottom;
        }
        ASSERT_EQ(layout.contentHeight(), height);
    }
}

} // namespace
