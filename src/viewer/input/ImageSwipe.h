#pragma once

#include "viewer/geometry/ImageGeometry.h"
#include "viewer/input/ImageInputHost.h"
#include "viewer/state/ImageMotions.h"

#include <optional>

/// Two fingers, or one on a touch screen, that pull a neighbour in from the side: idle, following
/// the fingers, on its way. Main thread.
class ImageSwipe {
public:
    ImageSwipe(ImageGeometry& geometry, ImageMotions& motions, ImageInputHost& host)
        : _geometry(geometry), _motions(motions), _host(host) {}

    /// One that is on its way is over at once.
    void begin();
    /// Points to the right.
    void moveBy(double way);
    /// The fingers were lifted; `velocity` is theirs, to the right, in points a second.
    void release(double velocity);
    /// The platform says that the lifted fingers had momentum.
    void momentumDidBegin();
    [[nodiscard]] bool isFollowing() const { return _isFollowing; }
    /// Goes to the photograph that a swipe flew out for: 1 the next, -1 the previous.
    void finish(int step);
    /// The end of the gesture was not heard.
    void cancel();

    [[nodiscard]] std::optional<double> nextTime() const { return _springBackTime; }
    void tick();

private:
    [[nodiscard]] double offset() const { return _geometry.placement().swapOffset(); }
    void doSwap(SwipeEnd end);

    ImageGeometry& _geometry;
    ImageMotions& _motions;
    ImageInputHost& _host;
    bool _isFollowing = false;
    std::optional<double> _springBackTime;
};
