#include "FakeLeaves.h"

#include "image/codec/Geometry.h"
#include "support/Support.h"

namespace {

/// The same geometry without anything kept, walked from the top each time.
struct PlainModel {
    PlainModel(const FakeLeaves& leaves, const BrowserLayout& layout)
        : _leaves(leaves), _metrics(layout.metrics()), _columns(layout.cellColumn()) {}

    double rowHeight(std::int64_t group, std::int64_t row) const {
        const auto& sizes = _leaves.leaf(group).sizes;
        double tallest = 30;
        const std::int64_t stop = std::min((row + 1) * _columns, std::ssize(sizes));
        for (std::int64_t item = row * _columns; item < stop; ++item) {
            const QSizeF size = sizes[static_cast<std::size_t>(item)];
            if (!(size.width() > 0 && size.height() > 0)) continue;
            QRectF rect(0, 0, _metrics.thumbnailSize, _metrics.thumbnailSize);
            PBUtilities::fitInRect(rect, size.width(), size.height(), (_metrics.style & 16) != 0);
            tallest = std::max(tallest, std::rint(rect.height()));
        }
        for (const std::uint64_t bit : {2, 4, 8})
            if (_metrics.style & bit) tallest += 15;
        return tallest + 2 * _metrics.selectSize();
    }
    double groupHeight(std::int64_t group) const {
        const std::int64_t count = _leaves.imageFileCount(group);
        if (count == 0) return 0;
        double height = space();
        for (std::int64_t row = 0; row < (count - 1) / _columns + 1; ++row)
            height += rowHeight(group, row) + space();
        return height;
    }
    double top(std::int64_t group) const {
        double y = 0;
        for (std::int64_t before = 0; before < group; ++before)
            y += 23 + (_leaves.leaf(before).isCollapsed ? 0 : groupHeight(before));
        return y;
    }
    BrowserRange range(double topLine, double bottomLine) const {
        BrowserRange range;
        const auto beginHere = [&](double limit, PBImageBrowserIndex index) {
            if (range.begin.group < 0 && limit > topLine) range.begin = index;
        };
        const auto endHere = [&](bool isReached, PBImageBrowserIndex index) {
            if (range.end.group < 0 && isReached) range.end = index;
        };
        double y = 0;
        for (std::int64_t group = 0; group < _leaves.leafCount(); ++group) {
            if (range.begin.group < 0) range.groupPos = y;
            y += 23;
            beginHere(y, {group, -1});
            endHere(y >= bottomLine, {group, -1});
            const std::int64_t count = _leaves.imageFileCount(group);
            if (_leaves.leaf(group).isCollapsed || count == 0) continue;
            endHere(y + space() > bottomLine, {group, -2});
            for (std::int64_t first = 0; first < count; first += _columns) {
                y += rowHeight(group, first / _columns) + space();
                beginHere(y, {group, first});
                endHere(y + space() > bottomLine, {group, std::min(first + _columns, count) - 1});
            }
            y += space();
            beginHere(y, {group, -2});
            endHere(y >= bottomLine, {group, count - 1});
        }
        const std::int64_t last = _leaves.leafCount() - 1;
        if (range.begin.group >= 0) endHere(true, {last, _leaves.imageFileCount(last) - 1});
        return range;
    }

private:
    double space() const { return _metrics.cellSpace(); }

    const FakeLeaves& _leaves;
    BrowserMetrics _metrics;
    std::int64_t _columns;
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
        const double height = model.top(leaves.leafCount());
        // In any order, with some lines at exact edges: what is known grows in different ways.
        for (int look = 0; look < 30; ++look) {
            double line = static_cast<double>(random() % static_cast<unsigned>(height + 200)) - 100;
            if (look % 5 == 0 && leaves.leafCount() > 0)
                line = model.top(static_cast<int>(random() % leaves.leaves.size())) +
                       static_cast<double>(random() % 3) * 23;
            const double bottom = line + std::array{0.0, 15.0, 700.0}[random() % 3];
            const BrowserRange expected = model.range(line, bottom);
            const BrowserRange actual = layout.visibleRange(line, bottom);
            ASSERT_EQ(actual.begin, expected.begin) << line << " to " << bottom;
            ASSERT_EQ(actual.end, expected.end) << line << " to " << bottom;
            ASSERT_EQ(actual.groupPos, expected.groupPos) << line << " to " << bottom;
            if (leaves.leafCount() == 0) continue;
            const auto group = static_cast<std::int64_t>(random() % leaves.leaves.size());
            if (look % 7 == 3) {
                ASSERT_EQ(layout.groupItemPosition(group), model.top(group));
                ASSERT_EQ(layout.groupHeight(group), model.groupHeight(group));
            }
            const std::int64_t count = leaves.imageFileCount(group);
            if (count == 0) continue;
            const auto item = static_cast<std::int64_t>(random() % static_cast<unsigned>(count));
            const QRectF cell = layout.cellRectAtIndex({group, item});
            double y = model.top(group) + 23 + layout.metrics().cellSpace();
            for (std::int64_t row = 0; row < item / layout.cellColumn(); ++row)
                y += model.rowHeight(group, row) + layout.metrics().cellSpace();
            ASSERT_EQ(cell.top(), y);
            ASSERT_EQ(cell.height(), model.rowHeight(group, item / layout.cellColumn()));
        }
        ASSERT_EQ(layout.contentHeight(), height);
    }
}

} // namespace
