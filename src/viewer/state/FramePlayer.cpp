#include "viewer/state/FramePlayer.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>

namespace {

// Files of the early web say 0 or 0.01 s and mean "soon".
constexpr double tooShort = 0.01;
constexpr double insteadOfTooShort = 0.1;
constexpr double waitForFrame = 0.02;

} // namespace

double FramePlayer::shownTime(double delay) {
    constexpr double tolerance = 1e-6;
    return std::isfinite(delay) && delay > tooShort + tolerance ? delay : insteadOfTooShort;
}

void FramePlayer::startPlayTimer(const Frames& frames) {
    platform::assertMainThread();
    if (_nextTime || !frames.canPlay()) return;
    _indexOfImages = std::min(_indexOfImages, frames.count - 1);
    _nextTime = _clock() + shownTime(frames.delayTimeAtIndex(_indexOfImages));
}

void FramePlayer::stopPlayTimer() {
    platform::assertMainThread();
    _nextTime.reset();
    _indexOfImages = 0;
}

bool FramePlayer::playTimerMethod(const Frames& frames) {
    platform::assertMainThread();
    const double time = _clock();
    if (!_nextTime || time < *_nextTime) return false;
    const double due = *_nextTime;
    _nextTime.reset();
    if (!frames.canPlay()) return false;
    const std::size_t next = _indexOfImages + 1 < frames.count ? _indexOfImages + 1 : 0;
    if (!frames.isReady(next)) {
        _nextTime = time + waitForFrame;
        return false;
    }
    _indexOfImages = next;
    // In its own rhythm, unless it fell behind.
    const double shown = shownTime(frames.delayTimeAtIndex(next));
    _nextTime = (time - due < shown ? due : time) + shown;
    return true;
}
