#include "viewer/slideshow/SlideshowOrder.h"

#include <algorithm>
#include <numeric>
#include <utility>

std::int64_t SlideshowOrder::indexAt(std::int64_t place) const {
    return _shuffled.empty() ? place : _shuffled.at(static_cast<std::size_t>(place));
}

std::int64_t SlideshowOrder::arrange(std::int64_t count, std::int64_t index) {
    _count = count;
    _shuffled.clear();
    return index;
}

std::int64_t SlideshowOrder::shuffle(std::int64_t count, std::int64_t index, std::mt19937& random) {
    _count = count;
    _shuffled.resize(static_cast<std::size_t>(count));
    std::iota(_shuffled.begin(), _shuffled.end(), 0);
    if (_shuffled.empty()) return index;
    std::swap(_shuffled.front(), _shuffled.at(static_cast<std::size_t>(index)));
    std::shuffle(std::next(_shuffled.begin()), _shuffled.end(), random);
    return 0;
}

std::int64_t SlideshowOrder::placeAfter(std::int64_t place, std::int64_t steps, bool wraps) const {
    const std::int64_t target = place + steps;
    if (_count == 0) return -1;
    if (target >= 0 && target < _count) return target;
    if (!wraps) return -1;
    const std::int64_t rest = target % _count;
    return rest < 0 ? rest + _count : rest;
}
