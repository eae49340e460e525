#include "image/large/LoadPace.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

using namespace std::chrono_literals;

/// Steps that lie farther apart are single ones, however long the loads take.
constexpr LoadPace::Duration slowestHaste = 250ms;
/// A loop that is late for a moment must not look like a pause.
constexpr LoadPace::Duration shortestPause = 80ms;
constexpr LoadPace::Duration longestPause = 200ms;
constexpr int intervalsOfPause = 3;
/// What is begun ahead gets so much more time than it should need.
constexpr double margin = 1.25;

} // namespace

LoadPace::LoadPace(Clock clock) : _clock(std::move(clock)) {}

LoadPace::Duration LoadPace::loadTime(double pixels) const {
    return std::chrono::duration_cast<Duration>(
        std::chrono::duration<double>(pixels * _secondsPerPixel));
}

void LoadPace::didStep(std::int64_t index, double pixels) {
    const Time now = _clock();
    const std::int64_t distance = index - _index;
    if (_lastStep && distance != 0) {
        const Duration interval = now - *_lastStep;
        _isHurried = interval < std::min(slowestHaste, loadTime(pixels));
        _interval = std::max<Duration>(interval, 1ms);
        _direction = distance > 0 ? 1 : -1;
    }
    _lastStep = now;
    _index = index;
}

void LoadPace::didLoad(Duration time, double pixels) {
    if (pixels <= 0) return;
    const double rate = std::chrono::duration<double>(time).count() / pixels;
    // Rather too slow than too fast: what is begun too late is stopped half-way.
    const bool isFirst = !std::exchange(_hasMeasured, true);
    _secondsPerPixel = isFirst ? rate : std::max(rate, 0.75 * _secondsPerPixel + 0.25 * rate);
}

void LoadPace::didStop(Duration time, double pixels) {
    if (pixels <= 0) return;
    const double least = std::chrono::duration<double>(time).count() / pixels;
    _secondsPerPixel = std::max(_secondsPerPixel, least);
}

bool LoadPace::isHurried() const {
    return _isHurried && _clock() - *_lastStep < pause();
}

bool LoadPace::mayBegin(std::int64_t index, double pixels) const {
    if (!isHurried()) return true;
    const double steps = std::ceil(
        margin * std::chrono::duration<double>(loadTime(pixels)) /
        std::chrono::duration<double>(_interval));
    return static_cast<double>((index - _index) * _direction) >= steps + 1;
}

std::optional<LoadPace::Duration> LoadPace::untilPause() const {
    if (!isHurried()) return std::nullopt;
    return pause() - (_clock() - *_lastStep);
}

LoadPace::Duration LoadPace::pause() const {
    return std::clamp<Duration>(intervalsOfPause * _interval, shortestPause, longestPause);
}
