#include "FakeLeaves.h"

#include "codec/pixels/Geometry.h"

namespace {

using Index = PBImageBrowserIndex;

constexpr QSizeF landscape(3000, 2000);

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
    for (const auto& [size, space, dash] : {std::tuple(64, 10, 2), {160, 15, 3}, {256, 20, 4}}) {
        const BrowserMetrics metrics{.thumbnailSize = static_cast<double>(size)};
        EXPECT_EQ(metrics.cellSpace(), space);
        EXPECT_EQ(metrics.dashWidth(), dash);
    }
}

TEST_F(BrowserLayoutTest, columnsStayWhenTheScrollerAppears) {
    show({leafOf(1)}, 571);
    EXPECT_EQ(layout.cellColumn(), 3);
    layout.setWidth(571 - 14, 0);
    const std::int64_t withScroller = layout.cellColumn();
    layout.setWidth(571, 14);
    EXPECT_EQ(layout.cellColumn(), withScroller);
    show({leafOf(4)}, 571.9);
    EXPECT_EQ(layout.contentWidth(), 571);
    EXPECT_EQ(layout.cellRectAtIndex({0, 1}), QRectF(202, 38, 166, 158));
    EXPECT_EQ(layout.contentHeight(), 23 + 15 + 2 * 173);
    layout.setWidth(3 * 181 + 14, 0); // one point too few
    EXPECT_EQ(layout.contentHeight(), 23 + 15 + 2 * 173);
    EXPECT_EQ(layout.cellColumn(), 2);
    layout.setWidth(100, 14);
    EXPECT_EQ(layout.contentHeight(), 23 + 15 + 4 * 173);
    EXPECT_LT(layout.cellHSpace(), 0);
}

TEST_F(BrowserLayoutTest, aPointHitsAPartOfACellOrNothing) {
    show({leafOf(2)});
    const QRectF cell = layout.cellRectAtIndex({0, 1});
    EXPECT_EQ(cell, QRectF(196, 38, 166, 158));
    EXPECT_EQ(hitAt(cell.center()).index, (Index{0, 1}));
    const double bottom = cell.bottom();
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
    texts.name = 300; // the row is as wide as it is
    EXPECT_EQ(hitAt({279, bottom - 40}).partRect.width(), 166);
    texts.name = 80;
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
    show({{{{20, 20}, {2000, 3000}, {}, {1, 30000}}, false}});
    const QRectF cell = layout.cellRectAtIndex({0, 0});
    const QPointF middle = layout.thumbnailRectWithCellRect(cell).center();
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
    using Step = Index (BrowserLayout::*)(const Index&) const;
    const auto check = [&](Step step, std::initializer_list<std::pair<Index, Index>> cases) {
        for (const auto& [from, to] : cases)
            EXPECT_EQ((layout.*step)(from), to) << from.group << ' ' << from.item;
    };
    check(
        &BrowserLayout::nextIndex,
        {{{}, {1, 0}}, {{1, 4}, {3, 0}}, {{3, 1}, {}}, {{2, 1}, {3, 0}}, {{9, 0}, {}}});
    check(
        &BrowserLayout::prevIndex,
        {{{}, {3, 1}}, {{3, 0}, {1, 4}}, {{1, 0}, {}}, {{1, 99}, {1, 4}}});
    // The last row is shorter.
    check(
        &BrowserLayout::colNextIndex,
        {{{1, 2}, {1, 4}}, {{1, 3}, {3, 0}}, {{1, 4}, {3, 1}}, {{3, 0}, {}}});
    check(
        &BrowserLayout::colPrevIndex,
        {{{3, 1}, {1, 4}}, {{3, 0}, {1, 3}}, {{1, 4}, {1, 1}}, {{1, 3}, {1, 0}}, {{1, 2}, {}}});
    check(&BrowserLayout::colPrevIndex, {{{1, 99}, {1, 2}}, {{9, 0}, {}}});
    show({leafOf(3, landscape, true)});
    check(&BrowserLayout::nextIndex, {{{}, {}}});
    check(&BrowserLayout::prevIndex, {{{}, {}}});
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
    EXPECT_EQ(headsAt(second - 100).size(), 1U); // the next begins at the very end
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
    EXPECT_TRUE(layout.shouldAnimate(-49.49 * 160));
    EXPECT_FALSE(layout.shouldAnimate(49.51 * 160));
    EXPECT_EQ(layout.pageItemCount(2 * 181), 6);
    EXPECT_EQ(layout.pageItemCount(2 * 181 + 1), 9);
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

/// The same geometry, of all lines at once.
struct PlainModel {
    struct Stop {
        double y;
        Index index;
        bool isAtLine = false; ///< the line itself counts
    };
    struct Row {
        double top, height;
    };

    PlainModel(const FakeLeaves& leaves, const BrowserLayout& layout)
        : metrics(layout.metrics()), columns(layout.cellColumn()) {
        for (std::int64_t group = 0; group < leaves.leafCount(); ++group) {
            const auto& [sizes, isCollapsed] = leaves.leaf(group);
            const std::int64_t count = std::ssize(sizes);
            lastIndex = {group, count - 1};
            tops.push_back(height);
            height += 23;
            begins.push_back({height, {group, -1}});
            ends.push_back({height, {group, -1}, true});
            if (!isCollapsed && count > 0)
                ends.push_back({height + metrics.cellSpace(), {group, -2}});
            double y = height + (count > 0 ? metrics.cellSpace() : 0);
            std::vector<Row>& all = rows.emplace_back();
            for (std::int64_t first = 0; first < count; first += columns) {
                const std::int64_t last = std::min(first + columns, count) - 1;
                all.push_back({y, rowHeight(std::span(sizes).subspan(first, last + 1 - first))});
                y += all.back().height + metrics.cellSpace();
                if (isCollapsed) continue;
                begins.push_back({y - metrics.cellSpace(), {group, first}});
                ends.push_back({y, {group, last}});
            }
            groupHeights.push_back(y - height);
            if (isCollapsed || count == 0) continue;
            height = y;
            begins.push_back({height, {group, -2}});
            ends.push_back({height, {group, count - 1}, true});
        }
    }
    double rowHeight(std::span<const QSizeF> sizes) const {
        double tallest = 30;
        for (const QSizeF& size : sizes) {
            if (!(size.width() > 0 && size.height() > 0)) continue;
            QRectF rect(0, 0, metrics.thumbnailSize, metrics.thumbnailSize);
            PBUtilities::fitInRect(rect, size.width(), size.height(), (metrics.style & 16) != 0);
            tallest = std::max(tallest, std::rint(rect.height()));
        }
        for (const std::uint64_t bit : {2, 4, 8})
            if (metrics.style & bit) tallest += 15;
        return tallest + 2 * metrics.selectSize();
    }
    BrowserRange range(double topLine, double bottomLine) const {
        BrowserRange range;
        if (!tops.empty()) range.groupPos = tops.back();
        const auto begin = std::ranges::find_if(begins, [&](auto& s) { return s.y > topLine; });
        if (begin != begins.end())
            range = {begin->index, lastIndex, tops[static_cast<std::size_t>(begin->index.group)]};
        const auto end = std::ranges::find_if(ends, [&](auto& stop) {
            return stop.isAtLine ? stop.y >= bottomLine : stop.y > bottomLine;
        });
        if (end != ends.end()) range.end = end->index;
        return range;
    }

    BrowserMetrics metrics;
    std::int64_t columns;
    double height = 0;
    std::vector<double> tops, groupHeights;
    std::vector<std::vector<Row>> rows;
    std::vector<Stop> begins, ends;
    Index lastIndex;
};

FakeLeaves randomLeaves(std::mt19937& random) {
    FakeLeaves result;
    const auto below = [&](int limit) { return static_cast<int>(random() % limit); };
    result.leaves.resize(static_cast<std::size_t>(below(9)));
    for (auto& leaf : result.leaves) {
        leaf.isCollapsed = below(5) == 0;
        const int count = below(4) == 0 ? 0 : below(3) == 0 ? 300 + below(900) : below(40);
        for (int item = 0; item < count; ++item) {
            const bool isStrange = below(15) == 0;
            leaf.sizes.emplace_back(
                isStrange ? below(2) * 30000.0 : 1 + below(6000), isStrange ? 1 : 1 + below(4000));
        }
    }
    return result;
}

TEST(BrowserLayoutModelTest, whatIsKeptGivesTheSameResultsAsWalkingFromTheTop) {
    std::mt19937 random(20);
    for (int round = 0; round < 60; ++round) {
        SCOPED_TRACE(round);
        FakeLeaves leaves = randomLeaves(random);
        BrowserLayout layout;
        layout.setLeaves(&leaves);
        layout.setMetrics(
            {.thumbnailSize = std::array{64.0, 101.0, 160.0, 256.0}[random() % 4],
             .style = random() % 32});
        layout.setWidth(static_cast<double>(30 + random() % 2000), random() % 2 ? 14 : 0);
        const PlainModel model(leaves, layout);
        // In any order, with some lines at exact edges: what is known grows in different ways.
        for (int look = 0; look < 30; ++look) {
            const std::size_t group = leaves.leaves.empty() ? 0 : random() % leaves.leaves.size();
            double line = static_cast<double>(random() % static_cast<unsigned>(model.height + 200));
            line -= 100;
            if (look % 5 == 0 && !leaves.leaves.empty())
                line = model.tops[group] + static_cast<double>(random() % 3) * 23;
            const double bottom = line + std::array{0.0, 15.0, 700.0}[random() % 3];
            const BrowserRange expected = model.range(line, bottom);
            const BrowserRange actual = layout.visibleRange(line, bottom);
            ASSERT_EQ(actual.begin, expected.begin) << line << " to " << bottom;
            ASSERT_EQ(actual.end, expected.end) << line << " to " << bottom;
            ASSERT_EQ(actual.groupPos, expected.groupPos) << line << " to " << bottom;
            if (leaves.leaves.empty()) continue;
            const auto at = static_cast<std::int64_t>(group);
            if (look % 7 == 3) {
                ASSERT_EQ(layout.groupItemPosition(at), model.tops[group]);
                ASSERT_EQ(layout.groupHeight(at), model.groupHeights[group]);
            }
            const auto& rows = model.rows[group];
            if (rows.empty()) continue;
            const std::size_t row = random() % rows.size();
            const auto item = static_cast<std::int64_t>(row) * layout.cellColumn();
            const QRectF cell = layout.cellRectAtIndex({at, item});
            ASSERT_EQ(cell.top(), rows[row].top);
            ASSERT_EQ(cell.height(), rows[row].height);
        }
        ASSERT_EQ(layout.contentHeight(), model.height);
    }
}

} // namespace
