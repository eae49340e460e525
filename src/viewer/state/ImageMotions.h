#pragma once

#include "viewer/geometry/GeometryAnimation.h"
#include "viewer/geometry/ImageGeometry.h"

#include <QPointF>

#include <functional>
#include <optional>
#include <variant>

/// The motions of the picture that run just now, by an injected clock. They change the geometry;
/// whoever owns it calls `tick` at every frame while `isRunning`. Main thread.
class ImageMotions {
public:
    /// Seconds from any fixed start; never runs backwards.
    using Clock = std::function<double()>;

    /// The geometry outlives this object.
    ImageMotions(ImageGeometry& geometry, Clock clock)
        : _geometry(geometry), _clock(std::move(clock)) {}

    [[nodiscard]] double now() const { return _clock(); }

    /// Of the scale or the angle, as the geometry gave it. A zoom holds another point, so that
    /// scrolling ends where it is.
    void start(const std::optional<GeometryAnimation>& animation);

    /// From where a running motion would end; animated, or at once.
    void scrollByDelta(const QPointF& delta, bool animation);
    /// Goes on by itself, in points a second.
    void fling(const QPointF& velocity);
    /// To where it would end.
    void finishScroll();
    void stopScroll() { _scroll = std::monostate(); }

    void startSwipe(const SwipeAnimation& animation);
    [[nodiscard]] bool isSwiping() const { return _swipe.has_value(); }
    /// A swipe under way is over at once: answers like `Step`.
    [[nodiscard]] int finishSwipe();

    [[nodiscard]] bool isRunning() const;
    struct Ended {
        bool hasEnded = false; ///< a motion of scale or angle
        int step = 0;          ///< a swipe flew out: 1 to the next photograph, -1 to the previous
    };
    /// Takes everything to where it should be by now. The offset of a swipe that flew out stays
    /// until the caller has gone where it leads, and is then to be set to 0.
    [[nodiscard]] Ended tick();
    /// Ends everything where it is; a swipe's picture goes back to its place.
    void stop();

private:
    template <typename Animation>
    struct Running {
        Animation animation;
        double startTime;
    };

    /// False when it is over.
    [[nodiscard]] bool advance(std::optional<Running<GeometryAnimation>>& running);

    ImageGeometry& _geometry;
    const Clock _clock;
    std::optional<Running<GeometryAnimation>> _zoom;
    std::optional<Running<GeometryAnimation>> _turn;
    std::variant<std::monostate, Running<ScrollAnimation>, Running<FlingAnimation>> _scroll;
    std::optional<Running<SwipeAnimation>> _swipe;
};
