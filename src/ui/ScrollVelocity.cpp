#include "ui/ScrollVelocity.h"

#include <QtMath>

#include <algorithm>

namespace {

constexpr double window = 0.1; // seconds
/// Touchpads tell of their fingers every 7 to 16 milliseconds: after such a pause they rest.
constexpr double restingTime = 0.05;
constexpr double leastVelocity = 120; // points a second: slower ones were put where they are
constexpr double mostVelocity = 12000;

} // namespace

void ScrollVelocity::add(double time, const QPointF& way) {
    while (!_steps.empty() && time - _steps.front().time > window)
        _steps.pop_front();
    _steps.push_back({time, way});
}

QPointF ScrollVelocity::at(double time) const {
    if (_steps.size() < 2 || time - _steps.back().time > restingTime) return {};
    const double duration = _steps.back().time - _steps.front().time;
    if (!(duration > 0)) return {};
    QPointF way; // the first step was made before its time
    for (auto step = _steps.begin() + 1; step != _steps.end(); ++step)
        way += step->way;
    const double velocity = std::hypot(way.x(), way.y()) / duration;
    if (velocity < leastVelocity) return {};
    return way / duration * std::min(1.0, mostVelocity / velocity);
}
