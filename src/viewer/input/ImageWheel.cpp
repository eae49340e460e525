#include "viewer/input/ImageWheel.h"

#include "platform/tasks/MainThread.h"
#include "viewer/geometry/ZoomScales.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr double scrollLine = 50; // points for a notch
/// Collects the notches of one turn of the wheel into one step, in seconds.
constexpr double stepWait = 0.08;
/// After such a pause parts of a notch are forgotten, in seconds.
constexpr double longestTurnPause = 0.3;
constexpr double mostTurns = 20; // of one event
/// A whole notch may come as parts that were rounded.
constexpr double notch = 0.99;
/// A touchpad's step of less than a point comes with no points, but with that part of a notch for a
/// point.
constexpr double turnsOfPoint = 0.1;

/// Some platforms turn a wheel with Alt into a horizontal one: the axis that has a value.
double larger(const QPointF& deltas) {
    return std::abs(deltas.x()) > std::abs(deltas.y()) ? deltas.x() : deltas.y();
}

double signOf(double value) {
    return value > 0 ? 1 : value < 0 ? -1 : 0;
}

QPointF wayOf(const WheelMove& move) {
    return move.pixels.isNull() ? move.turns * scrollLine : move.pixels;
}

} // namespace

ImageWheel::ImageWheel(ImageGeometry& geometry, ImageMotions& motions, ImageInputHost& host)
    : _geometry(geometry), _motions(motions), _host(host), _swipe(geometry, motions, host),
      _phases([&motions] { return motions.now(); }) {}

void ImageWheel::wheel(const WheelMove& move) {
    platform::assertMainThread();
    const bool isWheel = move.phase == WheelMove::Phase::None;
    if (move.isZoom != (_zooms && isWheel) && _fingers == Fingers::None) return zoom(move);
    if (move.phase != WheelMove::Phase::None) return phased(move);
    if (_geometry.placement().shouldShowNavigation()) return scroll(move);
    turn(move.turns);
}

void ImageWheel::zoom(const WheelMove& move) const {
    if (move.phase == WheelMove::Phase::Momentum) return;
    const double turns = std::clamp(
        larger(move.turns.isNull() ? move.pixels / scrollLine : move.turns), -mostTurns, mostTurns);
    const double factor = move.phase == WheelMove::Phase::None
                              ? std::pow(wheelZoomFactor, turns)
                              : std::pow(touchpadZoomFactor, signOf(turns));
    _motions.start(_geometry.wheelZoomAtPoint(factor, move.point));
}

bool ImageWheel::isFineStep(const WheelMove& move) const {
    const double turns = larger(move.turns);
    return !move.pixels.isNull() || turns != std::rint(turns) || _phases.isMagicScrolling();
}

void ImageWheel::scroll(const WheelMove& move) {
    if (!isFineStep(move)) return _motions.scrollByDelta(wayOf(move), true);
    _phases.stepped();
    pan(wayOf(move));
}

void ImageWheel::turn(const QPointF& turns) {
    const double turned = turns.y() != 0 ? turns.y() : turns.x();
    const double time = _motions.now();
    if (time - std::exchange(_turnTime, time) > longestTurnPause || turned * _turned < 0)
        _turned = 0;
    _turned += turned;
    // The rest of a turn that steps already adds to it.
    if (_waitingStep) _waitingStep->time = time + stepWait;
    if (std::abs(_turned) < notch) return;
    const bool isNext = std::exchange(_turned, 0) < 0;
    const SwipeNeighbours neighbours = _host.neighbours();
    if (isNext ? neighbours.hasNext : neighbours.hasPrevious)
        _waitingStep = {isNext ? ImageStep::Next : ImageStep::Previous, time + stepWait};
}

QPointF ImageWheel::fingerWay(const WheelMove& move) {
    _hasPixels = _hasPixels || !move.pixels.isNull();
    // What is less than a point comes with a later step.
    const bool isLessThanPoint = _hasPixels || std::abs(larger(move.turns)) <= turnsOfPoint;
    return isLessThanPoint ? move.pixels : wayOf(move);
}

void ImageWheel::phased(const WheelMove& move) {
    switch (move.phase) {
    case WheelMove::Phase::Begin:
        fingersDidBegin();
        _hasPixels = false;
        return fingersDidMove(fingerWay(move), move.time);
    case WheelMove::Phase::End:
        fingersDidMove(fingerWay(move), move.time);
        return fingersDidEnd(move.time);
    case WheelMove::Phase::Momentum:
        if (_swipe.isFollowing()) return _swipe.momentumDidBegin();
        if (_fingers == Fingers::None && _geometry.placement().shouldShowNavigation())
            pan(fingerWay(move));
        return;
    default:
        return fingersDidMove(fingerWay(move), move.time);
    }
}

void ImageWheel::fingersDidBegin() {
    platform::assertMainThread();
    _velocity.clear();
    _fraction = {};
    _motions.finishScroll();
    if (_geometry.placement().shouldShowNavigation()) {
        _swipe.cancel();
        _fingers = Fingers::Pan;
        return;
    }
    _swipe.begin();
    _fingers = Fingers::Swipe;
}

void ImageWheel::fingersDidMove(const QPointF& way, double time) {
    platform::assertMainThread();
    if (_fingers == Fingers::None || way.isNull()) return;
    _velocity.add(time, way);
    if (_fingers == Fingers::Pan)
        pan(way);
    else
        _swipe.moveBy(way.x());
}

void ImageWheel::fingersDidEnd(double time) {
    platform::assertMainThread();
    const Fingers fingers = std::exchange(_fingers, Fingers::None);
    const QPointF velocity = _velocity.at(time);
    _velocity.clear();
    if (fingers == Fingers::Swipe) return _swipe.release(velocity.x());
    if (fingers == Fingers::Pan && !velocity.isNull()) _motions.fling(velocity);
}

void ImageWheel::pan(const QPointF& way) {
    _motions.finishScroll();
    _geometry.centerAnchor();
    const QPointF wanted = _geometry.placement().drawAnchor() + _fraction + way;
    _geometry.setDrawAnchor(wanted);
    _fraction = wanted - _geometry.placement().drawAnchor();
    if (_fraction.manhattanLength() > 2) _fraction = {}; // it fits in meanwhile
}

void ImageWheel::cancel() {
    platform::assertMainThread();
    _fingers = Fingers::None;
    _velocity.clear();
    _waitingStep.reset();
    _turned = 0;
    _phases.cancel();
    _swipe.cancel();
}

bool ImageWheel::isFollowing() const {
    return _fingers != Fingers::None || _swipe.isFollowing() || _phases.isMagicScrolling();
}

std::optional<double> ImageWheel::nextTime() const {
    if (!_waitingStep) return _swipe.nextTime();
    return std::min(_waitingStep->time, _swipe.nextTime().value_or(_waitingStep->time));
}

void ImageWheel::tick() {
    platform::assertMainThread();
    _swipe.tick();
    if (!_waitingStep || _motions.now() < _waitingStep->time) return;
    _host.step(std::exchange(_waitingStep, std::nullopt)->step);
}
