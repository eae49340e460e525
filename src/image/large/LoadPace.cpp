#include "image/large/LoadPace.h"

#include <algorithm>
#include <cstdlib>
#include <utility>

namespace {

using namespace std::chrono_literals;
using Seconds = std::chrono::duration<double>;

/// Steps that lie farther apart are single ones, however long the loads take.
constexpr LoadPace::Duration slowestHaste = 250ms;
/// A loop that is late for a moment must not look like a pause.
constexpr LoadPace::Duration shortestPause = 80ms;
constexpr LoadPace::Duration longestPause = 200ms;
constexpr int intervalsOfPause = 3;
/// What begins while a key is held gets so much more time than it should need.
constexpr double margin = 1.25;
/// A single load that took many times as long as others, on a busy machine, says little.
constexpr double mostAbove = 4;

} // namespace

LoadPace::LoadPace(Clock clock) : _clock(std::move(clock)) {}

LoadPace::Duration LoadPace::loadTime(const Load& load) const {
    const Rate& rate = _rates.at(load.isOriginal ? 1 : 0);
    return std::chrono::duration_cast<Duration>(Seconds(load.pixels * rate.secondsPerPixel));
}

void LoadPace::didStep(std::int64_t index) {
    const Time now = _clock();
    const std::int64_t distance = index - _index;
    if (_lastStep && distance != 0) {
        const Duration interval = std::max<Duration>(now - *_lastStep, 1ms);
        // A jump leads to what the user wants to see.
        const bool isStep = std::abs(distance) == 1;
        const bool wasHurried = std::exchange(_isHurried, isStep && interval < slowestHaste);
        // A step that was late makes the next one look early.
        _interval = wasHurried && _isHurried ? (_interval + interval) / 2 : interval;
        _direction = distance > 0 ? 1 : -1;
    }
    _lastStep = now;
    _index = index;
}

double LoadPace::seenRate(Duration time, const Load& load) const {
    const Rate& rate = _rates.at(load.isOriginal ? 1 : 0);
    const double seen = Seconds(time).count() / load.pixels;
    return rate.isMeasured ? std::min(seen, mostAbove * rate.secondsPerPixel) : seen;
}

void LoadPace::didLoad(Duration time, const Load& load) {
    if (load.pixels <= 0) return;
    const double seen = seenRate(time, load);
    Rate& rate = rateOf(load);
    const bool isFirst = !std::exchange(rate.isMeasured, true);
    // Rather too slow than too fast: what is begun too late is stopped half-way.
    const double weight = isFirst ? 1 : seen > rate.secondsPerPixel ? 0.5 : 0.25;
    rate.secondsPerPixel += weight * (seen - rate.secondsPerPixel);
}

void LoadPace::didStop(Duration time, const Load& load) {
    if (load.pixels <= 0) return;
    Rate& rate = rateOf(load);
    rate.secondsPerPixel = std::max(rate.secondsPerPixel, seenRate(time, load));
}

bool LoadPace::isHurried() const {
    return _isHurried && _clock() - *_lastStep < pause();
}

bool LoadPace::mayBegin(const Load& load) const {
    if (!isHurried()) return true;
    const std::int64_t ahead = (load.index - _index) * _direction;
    const Duration untilPassed = (ahead + 1) * _interval - (_clock() - *_lastStep);
    return ahead >= 0 && Seconds(untilPassed) >= margin * Seconds(loadTime(load));
}

std::optional<LoadPace::Duration> LoadPace::untilPause() const {
    if (!isHurried()) return std::nullopt;
    return pause() - (_clock() - *_lastStep);
}

LoadPace::Duration LoadPace::pause() const {
    return std::clamp<Duration>(intervalsOfPause * _interval, shortestPause, longestPause);
}
