#include "viewer/input/ImageInput.h"

#include "platform/tasks/MainThread.h"

#include <algorithm>

namespace {

constexpr double scrollStep = 100; // points, of the keys
/// Fingers that touch are no distance at all.
constexpr double leastDistance = 0.02;

} // namespace

void ImageInput::beginGesture() {
    _gesture.begin();
    _magnified = 0;
    _mouse.cancel();
}

void ImageInput::endGesture() {
    turn(_gesture.end());
}

void ImageInput::rotate(double rotation) {
    turn(_gesture.rotate(rotation));
}

void ImageInput::magnify(double magnification, const QPointF& point) {
    turn(_gesture.magnify(magnification));
    if (!_gesture.isZoom()) return;
    const double wanted = std::max(_gesture.magnification(), leastDistance - 1);
    _motions.stopScroll();
    _geometry.magnifyAtPoint((1 + wanted) / (1 + _magnified) - 1, point);
    _magnified = wanted;
}

void ImageInput::turn(TwoFingerGesture::Turn turn) {
    if (turn == TwoFingerGesture::Turn::None || _geometry.isRotating()) return;
    _host.perform(
        turn == TwoFingerGesture::Turn::Left ? ImageCommand::RotateLeft
                                             : ImageCommand::RotateRight);
}

bool ImageInput::keyDown(ImageKey key, ImageModifiers modifiers) {
    platform::assertMainThread();
    switch (key) {
    case ImageKey::Up:
    case ImageKey::Down:
    case ImageKey::Left:
    case ImageKey::Right:
        return arrowDown(key, modifiers);
    case ImageKey::Space:
        _host.perform(ImageCommand::ToggleFlag);
        return true;
    case ImageKey::Escape:
        _host.perform(ImageCommand::LeaveLargeView);
        return true;
    default:
        break;
    }
    // With a modifier they are shortcuts.
    if (modifiers.isZoom()) return false;
    switch (key) {
    case ImageKey::Home:
        return stepTo(ImageStep::First);
    case ImageKey::End:
        return stepTo(ImageStep::Last);
    case ImageKey::PageUp:
    case ImageKey::Backspace:
        return stepTo(ImageStep::Previous);
    case ImageKey::PageDown:
        return stepTo(ImageStep::Next);
    case ImageKey::Return:
        _host.perform(ImageCommand::LeaveLargeView);
        return true;
    case ImageKey::ZoomIn:
        _motions.start(_geometry.zoomInAtPoint());
        return true;
    case ImageKey::ZoomOut:
        _motions.start(_geometry.zoomOutAtPoint());
        return true;
    case ImageKey::ActualSize:
        _motions.start(_geometry.actualSize());
        return true;
    case ImageKey::FitIn:
        _motions.start(_geometry.fitInWithAnimation(true));
        return true;
    default:
        return false;
    }
}

bool ImageInput::arrowDown(ImageKey key, ImageModifiers modifiers) {
    const bool isVertical = key == ImageKey::Up || key == ImageKey::Down;
    const bool isToStart = key == ImageKey::Up || key == ImageKey::Left;
    if (modifiers.shift) {
        if (modifiers.isZoom()) return false;
        const double way = isToStart ? scrollStep : -scrollStep;
        _motions.scrollByDelta(isVertical ? QPointF(0, way) : QPointF(way, 0), true);
        return true;
    }
    if (isVertical) {
        if (!modifiers.isZoom()) return false;
        _motions.start(isToStart ? _geometry.zoomInAtPoint() : _geometry.zoomOutAtPoint());
        return true;
    }
    // With a modifier they are shortcuts, through photographs and folders.
    return !modifiers.isZoom() && stepTo(isToStart ? ImageStep::Previous : ImageStep::Next);
}

bool ImageInput::stepTo(ImageStep step) {
    _host.step(step);
    return true;
}

bool ImageInput::tick() {
    const ImageMotions::Ended ended = _motions.tick();
    if (ended.step != 0) _wheel.swipe().finish(ended.step);
    _wheel.tick();
    return ended.hasEnded;
}

void ImageInput::cancel() {
    _mouse.cancel();
    _wheel.cancel();
    _gesture.end();
}
