#pragma once

#include <QPointF>

#include <deque>

/// How fast fingers move a document: the mean of the last tenth of a second. Main thread.
class ScrollVelocity {
public:
    /// A step by so many points, at a time in seconds.
    void add(double time, const QPointF& way);
    void clear() { _steps.clear(); }
    /// Points a second; none where the fingers have rested before, or hardly moved.
    [[nodiscard]] QPointF at(double time) const;

private:
    struct Step {
        double time;
        QPointF way;
    };
    std::deque<Step> _steps;
};
