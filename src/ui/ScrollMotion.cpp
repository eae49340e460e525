#include "ui/ScrollMotion.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace {

// The motion follows a falling exponential of that base, as far as that power.
constexpr double scrollCurveDuration = 2.0;
constexpr double scrollCurveFactor = 3.0;

/// Seconds in which a fling loses all but 1/e of its velocity, as on other touch screens.
constexpr double flingTime = 0.325;
/// The rest of its way, in points, that nobody sees.
constexpr double flingRest = 0.5;

/// How much of the way is done when so much of the time is: quick at first and softly landing.
double fraction(double time, double curveDuration) {
    return (1.0 - std::pow(scrollCurveFactor, -time * curveDuration)) /
           (1.0 - std::pow(scrollCurveFactor, -curveDuration));
}

std::int64_t signOf(double value) {
    return value < 0 ? -1 : value > 0 ? 1 : 0;
}

} // namespace

ScrollMotion::ScrollMotion(ScrollTarget& target, Clock clock)
    : _target(target), _clock(std::move(clock)) {}

ScrollMotion::Clock ScrollMotion::monotonicClock() {
    return [] {
        const auto now = std::chrono::steady_clock::now().time_since_epoch();
        return std::chrono::duration<double>(now).count();
    };
}

void ScrollMotion::scrollToPosition(double position, bool animation) {
    platform::assertMainThread();
    if (!animation) {
        _target.setScrollPosition(_target.roundPosition(position));
        stop();
        return;
    }
    if (_isRunning) tick();
    _isFling = false;
    _duration = scrollAnimationDuration;
    _curveDuration = scrollCurveDuration;
    begin(_target.roundPosition(position));
}

void ScrollMotion::begin(double stopPos) {
    _scrollStartTime = _clock();
    _scrollStartPos = _target.scrollPosition();
    _scrollStopPos = stopPos;
    start();
}

void ScrollMotion::fling(double velocity) {
    platform::assertMainThread();
    const double way = std::abs(velocity) * flingTime;
    if (way <= 2 * flingRest) return;
    if (_isRunning) tick();
    const double powers = std::log(way / flingRest); // of e
    _isFling = true;
    _duration = flingTime * powers;
    _curveDuration = powers / std::log(scrollCurveFactor);
    _scrollPosFlag = signOf(velocity);
    begin(
        _target.roundPosition(_target.scrollPosition() + std::copysign(way - flingRest, velocity)));
}

double ScrollMotion::animationScrollDestinationPositionWithDelta(double delta) {
    const std::int64_t direction = signOf(delta);
    const bool extends = _isRunning && direction != 0 && direction == _scrollPosFlag;
    _scrollPosFlag = direction;
    return (extends ? _scrollStopPos : _target.scrollPosition()) + delta;
}

void ScrollMotion::scrollBy(double delta) {
    platform::assertMainThread();
    // A motion that is over by now must not end, and forget its direction, within the next one.
    if (_isRunning) tick();
    scrollToPosition(animationScrollDestinationPositionWithDelta(delta), true);
}

void ScrollMotion::wheel(double delta) {
    platform::assertMainThread();
    if (delta == 0) return;
    if (_isRunning) tick();
    const bool against = (_amtScrollFlag > 0 && delta < 0) || (_amtScrollFlag < 0 && delta > 0);
    if (!against) scrollBy(-delta);
    _amtScrollFlag = std::clamp<std::int64_t>(_amtScrollFlag + signOf(delta), -2, 2);
}

void ScrollMotion::updateScrollAmtByOffset(double offset) {
    platform::assertMainThread();
    if (!_isRunning) return;
    _scrollStartPos += offset;
    _scrollStopPos += offset;
}

void ScrollMotion::tick() {
    platform::assertMainThread();
    if (!_isRunning) return;
    const double time = _clock() - _scrollStartTime;
    if (time >= _duration) {
        _target.setScrollPosition(_scrollStopPos);
        stop();
        return;
    }
    const double done = fraction(time / _duration, _curveDuration);
    _target.setScrollPosition(_scrollStartPos + (_scrollStopPos - _scrollStartPos) * done);
}

void ScrollMotion::start() {
    if (std::exchange(_isRunning, true)) return;
    _target.scrollTimeWillBegin();
}

void ScrollMotion::stop() {
    platform::assertMainThread();
    const std::int64_t direction = std::exchange(_scrollPosFlag, 0);
    _amtScrollFlag = 0;
    if (std::exchange(_isRunning, false)) _target.scrollTimeDidEnd(direction);
}

void PhasedScrolling::moved() {
    platform::assertMainThread();
    _state = State::Moving;
    _lastTime = _clock();
}

void PhasedScrolling::ended() {
    platform::assertMainThread();
    if (_state == State::Moving) stepped();
}

void PhasedScrolling::stepped() {
    platform::assertMainThread();
    _state = State::Ending;
    _lastTime = _clock();
}

bool PhasedScrolling::isMagicScrolling() const {
    if (_state == State::Resting) return false;
    return _clock() - _lastTime < (_state == State::Moving ? longestPause : momentumGap);
}
