#pragma once

#include "viewer/input/ImageInput.h"

#include <QPointF>

#include <optional>
#include <span>

/// Fingers on a touch screen: one moves the picture or pulls a neighbour in, two pinch and turn, a
/// double tap is a double click. Main thread.
class ImageTouch {
public:
    ImageTouch(ImageGeometry& geometry, ImageMotions& motions, ImageInput& input)
        : _geometry(geometry), _motions(motions), _input(input) {}

    /// Where the fingers are, at a time in seconds. Fewer than before have been lifted.
    void touch(std::span<const QPointF> points, double time);
    void cancel();

private:
    enum class Status {
        None,
        Tap,   // one finger, which has not moved
        Move,  // one finger
        Pinch, // two
        Rest   // what is left of a pinch
    };
    struct Pair {
        QPointF middle;
        double distance = 0;
        double angle = 0; // degrees, clockwise
        explicit Pair(std::span<const QPointF> points);
        Pair() = default;
    };

    void beginPinch(std::span<const QPointF> points);
    void movePinch(std::span<const QPointF> points);
    void moveOne(const QPointF& point, double time);
    void lifted(double time);

    ImageGeometry& _geometry;
    ImageMotions& _motions;
    ImageInput& _input;
    Status _status = Status::None;
    QPointF _last;
    Pair _first;
    Pair _pair;
    struct Tap {
        QPointF point;
        double time;
    };
    std::optional<Tap> _lastTap;
};
