#include "image/DecodeAhead.h"

#include <algorithm>

namespace {

constexpr int fewestPlaces = 2; ///< for each core
constexpr int mostPlaces = 6;
/// What all places together may take, where there are more than the fewest.
constexpr std::chrono::milliseconds longestLine(20);
/// So many of the last works make the mean.
constexpr int worksInMean = 8;

} // namespace

DecodeAhead::DecodeAhead(int cores, Clock clock)
    : _cores(cores), _clock(std::move(clock)), _capacity(cores > 1 ? fewestPlaces * cores : 0),
      _queue(QStringLiteral("decode"), cores) {}

DecodeAhead::Place DecodeAhead::takePlace() {
    if (_taken->fetch_add(1) >= _capacity) {
        _taken->fetch_sub(1);
        return nullptr;
    }
    return Place(_taken.get(), [taken = _taken](const void*) { taken->fetch_sub(1); });
}

void DecodeAhead::run(std::function<void()> work) {
    _queue.addOperation([this, work = std::move(work)] {
        const auto begin = _clock();
        work();
        noteTime(_clock() - begin);
    });
}

void DecodeAhead::noteTime(std::chrono::nanoseconds spent) {
    // Two at once may lose one of their times.
    const auto former = _mean.load();
    const auto mean = former.count() > 0 ? former + (spent - former) / worksInMean : spent;
    _mean = mean;
    const auto line = _cores * std::chrono::nanoseconds(longestLine) /
                      std::max(mean, std::chrono::nanoseconds(1));
    _capacity = static_cast<int>(
        std::clamp<std::int64_t>(line, fewestPlaces * _cores, mostPlaces * _cores));
}
