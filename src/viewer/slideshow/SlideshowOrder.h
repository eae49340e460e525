#pragma once

#include <cstdint>
#include <random>
#include <vector>

/// The order in which a show goes through its list: that of the list, or shuffled, every photograph
/// once. A value.
class SlideshowOrder {
public:
    [[nodiscard]] std::int64_t count() const { return _count; }
    /// The list's index at that place of the show, 0 up to the count.
    [[nodiscard]] std::int64_t indexAt(std::int64_t place) const;
    /// The way through so many photographs as they stand; answers the place of that index.
    std::int64_t arrange(std::int64_t count, std::int64_t index);
    /// A way that begins with that index and is otherwise left to chance; answers its place, 0.
    std::int64_t shuffle(std::int64_t count, std::int64_t index, std::mt19937& random);
    /// The place that lies so many steps on. Beyond an end: round the list if `wraps`, else -1.
    [[nodiscard]] std::int64_t placeAfter(std::int64_t place, std::int64_t steps, bool wraps) const;

private:
    std::int64_t _count = 0;
    std::vector<std::int64_t> _shuffled; // empty for the order of the list
};
