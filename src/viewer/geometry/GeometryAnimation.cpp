#include "viewer/geometry/GeometryAnimation.h"

#include <algorithm>
#include <cmath>

namespace {

// The two control points; their other coordinates are 0 and 1.
constexpr double firstControl = 0.0;
constexpr double secondControl = 0.58;

constexpr double unseenWay = 0.5; // points

double bezier(double first, double second, double t) {
    const double rest = 1 - t;
    return 3 * rest * rest * t * first + 3 * rest * t * t * second + t * t * t;
}

/// A falling exponential as far as that power, as a part of the way that is done.
double fallen(double base, double power, double fullPower) {
    return (1 - std::pow(base, -power)) / (1 - std::pow(base, -fullPower));
}

double between(double from, double to, double fraction) {
    return from + (to - from) * fraction;
}

} // namespace

double easeOut(double progress) {
    if (!(progress > 0)) return 0;
    if (progress >= 1) return 1;
    // Time rises along the curve, so halving finds the place on it, to far below a pixel.
    double low = 0;
    double high = 1;
    for (int step = 0; step < 40; ++step) {
        const double middle = (low + high) / 2;
        (bezier(firstControl, secondControl, middle) < progress ? low : high) = middle;
    }
    return bezier(0, 1, (low + high) / 2);
}

double GeometryAnimation::valueAt(double elapsed) const {
    if (isFinished(elapsed)) return to;
    return between(from, to, easeOut(elapsed / duration));
}

QPointF ScrollAnimation::valueAt(double elapsed) const {
    if (isFinished(elapsed)) return stop;
    const double fraction = fallen(4, 4 * std::max(elapsed, 0.0), 4 * duration);
    return {between(start.x(), stop.x(), fraction), between(start.y(), stop.y(), fraction)};
}

QPointF FlingAnimation::valueAt(double elapsed) const {
    return start + velocity * decayTime * (1 - std::exp(-std::max(elapsed, 0.0) / decayTime));
}

bool FlingAnimation::isFinished(double elapsed) const {
    const double way = std::hypot(velocity.x(), velocity.y()) * decayTime;
    return !(way * std::exp(-elapsed / decayTime) > unseenWay);
}

double SwipeAnimation::valueAt(double elapsed) const {
    if (isFinished(elapsed)) return stop;
    return between(start, stop, fallen(3, 2 * std::max(elapsed, 0.0) / duration, 2));
}
