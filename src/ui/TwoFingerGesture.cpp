#include "ui/TwoFingerGesture.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>

namespace {

// What two fingers do by accident while they mean the other.
constexpr double leastRotation = 15;        // degrees
constexpr double leastMagnification = 0.06; // of their distance

} // namespace

void TwoFingerGesture::begin() {
    platform::assertMainThread();
    _status = Status::Undecided;
    _rotation = 0;
    _magnification = 0;
}

TwoFingerGesture::Turn TwoFingerGesture::end() {
    platform::assertMainThread();
    const Turn turn = decide();
    _status = Status::None;
    return turn;
}

TwoFingerGesture::Turn TwoFingerGesture::rotate(double rotation) {
    platform::assertMainThread();
    // The update before this one is complete by now; of this one the zoom is still to come.
    const Turn turn = decide();
    _rotation += rotation;
    return turn;
}

TwoFingerGesture::Turn TwoFingerGesture::magnify(double magnification) {
    platform::assertMainThread();
    _magnification += magnification;
    return decide();
}

TwoFingerGesture::Turn TwoFingerGesture::decide() {
    if (_status != Status::Undecided) return Turn::None;
    const double rotation = std::abs(_rotation) / leastRotation;
    const double magnification = std::abs(_magnification) / leastMagnification;
    if (std::max(rotation, magnification) < 1) return Turn::None;
    if (magnification >= rotation) {
        _status = Status::Zoom;
        return Turn::None;
    }
    _status = Status::Rotation;
    return _rotation > 0 ? Turn::Left : Turn::Right;
}
