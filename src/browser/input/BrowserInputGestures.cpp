#include "browser/input/BrowserInput.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>

namespace {

// What two fingers do by accident while they mean the other.
constexpr double leastRotation = 15;        // degrees
constexpr double leastMagnification = 0.06; // of their distance
/// Fifteen turns lead from the smallest thumbnails to the largest.
constexpr double zoomOfTurn = 1.1;

} // namespace

void BrowserInput::beginGesture() {
    platform::assertMainThread();
    _gestureStatus = Gesture::Undecided;
    _gestureRotation = 0;
    _gestureMagnification = 0;
    _gestureThumbnailSize = _layout.metrics().thumbnailSize;
}

void BrowserInput::endGesture() {
    platform::assertMainThread();
    decideGesture();
    _gestureStatus = Gesture::None;
}

void BrowserInput::rotate(double rotation) {
    platform::assertMainThread();
    // The update before this one is complete by now; of this one the zoom is still to come.
    decideGesture();
    _gestureRotation += rotation;
}

void BrowserInput::magnify(double magnification) {
    platform::assertMainThread();
    _gestureMagnification += magnification;
    decideGesture();
    if (_gestureStatus != Gesture::Zoom) return;
    // Always from the size at the begin, so that slow fingers lose nothing by rounding.
    const double wanted = std::clamp(
        std::rint(_gestureThumbnailSize * (1 + _gestureMagnification)),
        BrowserMetrics::minThumbnailSize, BrowserMetrics::maxThumbnailSize);
    if (wanted != _layout.metrics().thumbnailSize) _host.applyThumbnailSize(wanted);
}

void BrowserInput::zoom(double turns) {
    platform::assertMainThread();
    const double present = _layout.metrics().thumbnailSize;
    if (std::rint(_wheelThumbnailSize) != present) _wheelThumbnailSize = present;
    _wheelThumbnailSize = std::clamp(
        _wheelThumbnailSize * std::pow(zoomOfTurn, turns), BrowserMetrics::minThumbnailSize,
        BrowserMetrics::maxThumbnailSize);
    const double wanted = std::rint(_wheelThumbnailSize);
    if (wanted != present) _host.applyThumbnailSize(wanted);
}

void BrowserInput::decideGesture() {
    if (_gestureStatus != Gesture::Undecided) return;
    const double rotation = std::abs(_gestureRotation) / leastRotation;
    const double magnification = std::abs(_gestureMagnification) / leastMagnification;
    if (std::max(rotation, magnification) < 1) return;
    if (magnification >= rotation) {
        _gestureStatus = Gesture::Zoom;
        return;
    }
    _gestureStatus = Gesture::Rotation;
    _host.perform(_gestureRotation > 0 ? BrowserCommand::RotateLeft : BrowserCommand::RotateRight);
}
