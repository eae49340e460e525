#include "viewer/input/ImageTouch.h"

#include "platform/tasks/MainThread.h"

#include <QLineF>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double tremble = 10;        // points that a finger which taps moves by
constexpr double doubleTapTime = 0.4; // seconds
constexpr double doubleTapDistance = 30;
constexpr double leastDistance = 10; // of two fingers

double distance(const QPointF& one, const QPointF& other) {
    return QLineF(one, other).length();
}

} // namespace

ImageTouch::Pair::Pair(std::span<const QPointF> points)
    : middle((points[0] + points[1]) / 2),
      distance(std::max(::distance(points[0], points[1]), leastDistance)),
      angle(-QLineF(points[0], points[1]).angle()) {}

void ImageTouch::touch(std::span<const QPointF> points, double time) {
    platform::assertMainThread();
    if (points.empty()) return lifted(time);
    if (points.size() >= 2) {
        if (_status == Status::Pinch)
            movePinch(points);
        else
            beginPinch(points);
        return;
    }
    if (_status == Status::Pinch) {
        _input.endGesture();
        _status = Status::Rest;
    }
    if (_status == Status::None) {
        _status = Status::Tap;
        _last = points.front();
        _motions.finishScroll();
        return;
    }
    moveOne(points.front(), time);
}

void ImageTouch::beginPinch(std::span<const QPointF> points) {
    _input.wheel().cancel();
    _lastTap.reset();
    _status = Status::Pinch;
    _first = Pair(points);
    _pair = _first;
    _input.beginGesture();
}

void ImageTouch::movePinch(std::span<const QPointF> points) {
    const Pair pair(points);
    const Pair was = std::exchange(_pair, pair);
    // By the short way round; fingers turn clockwise where the angle grows.
    _input.rotate(-std::remainder(pair.angle - was.angle, 360.0));
    _input.magnify((pair.distance - was.distance) / _first.distance, pair.middle);
}

void ImageTouch::moveOne(const QPointF& point, double time) {
    if (_status == Status::Tap) {
        if (distance(point, _last) < tremble) return;
        // What the finger trembled by so far is no way.
        _status = Status::Move;
        _last = point;
        return _input.wheel().fingersDidBegin();
    }
    if (_status != Status::Move) return;
    _input.wheel().fingersDidMove(point - std::exchange(_last, point), time);
}

void ImageTouch::lifted(double time) {
    const Status status = std::exchange(_status, Status::None);
    if (status == Status::Move) return _input.wheel().fingersDidEnd(time);
    if (status == Status::Pinch) return _input.endGesture();
    if (status != Status::Tap) return;
    const auto before = std::exchange(_lastTap, Tap{_last, time});
    if (!before || time - before->time > doubleTapTime ||
        distance(before->point, _last) > doubleTapDistance)
        return;
    _lastTap.reset();
    _motions.start(_geometry.toggleActualSizeAtPoint(_last));
}

void ImageTouch::cancel() {
    platform::assertMainThread();
    const Status status = std::exchange(_status, Status::None);
    if (status == Status::Move) _input.wheel().cancel();
    if (status == Status::Pinch) _input.endGesture();
    _lastTap.reset();
}
