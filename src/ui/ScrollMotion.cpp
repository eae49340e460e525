#include "ui/ScrollMotion.h"

#include "platform/work/MainThread.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace {

// The motion follows a falling exponential of that base, as far as that power.
constexpr double scrollCurveDuration = 2.0;
constexpr double scrollCurveFactor = 3.0;

/// How much of the way is done when so much of the time is: quick at first and softly landing.
double fraction(double time) {
    return (1.0 - std::pow(scrollCurveFactor, -time * scrollCurveDuration)) /
           (1.0 - std::pow(scrollCurveFactor, -scrollCurveDuration));
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
    _scrollStartTime = _clock();
    _scrollStartPos = _target.scrollPosition();
    _scrollStopPos = _target.roundPosition(position);
    start();
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
    if (time >= scrollAnimationDuration) {
        _target.setScrollPosition(_scrollStopPos);
        stop();
        return;
    }
    const double done = fraction(time / scrollAnimationDuration);
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

void PhasedScrolling::ended() {
    platform::assertMainThread();
    if (_state != State::Moving) return;
    _state = State::Ending;
    _endTime = _clock();
}

bool PhasedScrolling::isMagicScrolling() const {
    return _state == State::Moving ||
           (_state == State::Ending && _clock() - _endTime < momentumGap);
}
