#include "browser/input/BrowserInput.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>
#include <cmath>

namespace {

/// Fifteen turns lead from the smallest thumbnails to the largest.
constexpr double zoomOfTurn = 1.1;

} // namespace

void BrowserInput::beginGesture() {
    _gesture.begin();
    _gestureThumbnailSize = _layout.metrics().thumbnailSize;
}

void BrowserInput::endGesture() {
    turn(_gesture.end());
}

void BrowserInput::rotate(double rotation) {
    turn(_gesture.rotate(rotation));
}

void BrowserInput::magnify(double magnification) {
    turn(_gesture.magnify(magnification));
    if (!_gesture.isZoom()) return;
    // Always from the size at the begin, so that slow fingers lose nothing by rounding.
    const double wanted = std::clamp(
        std::rint(_gestureThumbnailSize * (1 + _gesture.magnification())),
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

void BrowserInput::turn(TwoFingerGesture::Turn turn) {
    if (turn == TwoFingerGesture::Turn::None) return;
    _host.perform(
        turn == TwoFingerGesture::Turn::Left ? BrowserCommand::RotateLeft
                                             : BrowserCommand::RotateRight);
}
