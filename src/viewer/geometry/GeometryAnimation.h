#pragma once

#include <QPointF>

#include <cstdint>

/// Motions of the large view as functions of the seconds since their start. The clock is the
/// caller's. Before their start they stand where they began, after their end exactly where they
/// end. Pure, any thread.

/// Quick at first and softly landing: the Bézier curve of (0, 0) and (0.58, 1), 0 to 1 for 0 to 1.
[[nodiscard]] double easeOut(double progress);

inline constexpr double zoomAnimationDuration = 0.5;
inline constexpr double rotationAnimationDuration = 0.35;

/// A number that goes from one value to another along `easeOut`; `ImageGeometry` makes and applies
/// them.
struct GeometryAnimation {
    enum class Property { Scale, Angle };
    /// What the end changes besides the number.
    enum class Ending {
        Stays,
        FitsIn,         // the picture follows the view's size from then on
        ForgetsZoomStep // the next step starts from the scale then shown
    };

    Property property = Property::Scale;
    double from = 0; // device pixels for each pixel of the picture, or degrees
    double to = 0;
    double duration = 0; // seconds
    Ending ending = Ending::Stays;
    /// Which of the geometry's animations it is: one that was replaced changes nothing any more.
    std::uint64_t serial = 0;

    [[nodiscard]] double valueAt(double elapsed) const;
    [[nodiscard]] bool isFinished(double elapsed) const { return !(elapsed < duration); }
};

/// The draw anchor on its way, when keys or a wheel move the picture.
struct ScrollAnimation {
    static constexpr double duration = 0.5;

    QPointF start;
    QPointF stop;

    [[nodiscard]] QPointF valueAt(double elapsed) const;
    [[nodiscard]] bool isFinished(double elapsed) const { return !(elapsed < duration); }
};

/// The draw anchor on its way after fingers that moved were lifted: as on other touch screens.
struct FlingAnimation {
    /// Seconds in which all but 1/e of the velocity is lost.
    static constexpr double decayTime = 0.325;

    QPointF start;
    QPointF velocity; // points a second

    [[nodiscard]] QPointF valueAt(double elapsed) const;
    /// What is left of the way is less than anybody sees.
    [[nodiscard]] bool isFinished(double elapsed) const;
};

/// The offset of a swipe on its way, after the fingers were lifted.
struct SwipeAnimation {
    static constexpr double duration = 0.35;

    double start = 0;
    double stop = 0;

    [[nodiscard]] double valueAt(double elapsed) const;
    [[nodiscard]] bool isFinished(double elapsed) const { return !(elapsed < duration); }
};
