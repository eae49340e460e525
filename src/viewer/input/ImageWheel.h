#pragma once

#include "ui/ScrollMotion.h"
#include "ui/ScrollVelocity.h"
#include "viewer/input/ImageSwipe.h"

#include <QPointF>

#include <optional>

/// One event of a wheel or a touchpad.
struct WheelMove {
    /// `None` where the device tells neither begin nor end: wheels, and touchpads of an X server.
    enum class Phase { None, Begin, Update, End, Momentum };

    Phase phase = Phase::None;
    QPointF point;
    QPointF pixels; ///< points; null where the device tells only turns
    QPointF turns;  ///< notches of the wheel, or parts of one
    bool isZoom = false;
    double time = 0; ///< seconds, of the event
};

/// What wheels and moving fingers do: with the zoom key they zoom, on a picture that is larger than
/// the view they move it, else they step or pull a neighbour in. Main thread.
class ImageWheel {
public:
    ImageWheel(ImageGeometry& geometry, ImageMotions& motions, ImageInputHost& host);

    void wheel(const WheelMove& move);
    /// A wheel zooms without the zoom key, and does with it what it does without otherwise. Fingers
    /// on a touchpad that tells of them mean what they always do.
    void setZooms(bool zooms) { _zooms = zooms; }
    /// Fingers that move the picture itself, in points.
    void fingersDidBegin();
    void fingersDidMove(const QPointF& way, double time);
    void fingersDidEnd(double time);
    /// The end of a gesture was not heard, or is not to mean anything.
    void cancel();

    /// Fingers are on the picture, or just were.
    [[nodiscard]] bool isFollowing() const;
    [[nodiscard]] ImageSwipe& swipe() { return _swipe; }
    [[nodiscard]] std::optional<double> nextTime() const;
    void tick();

private:
    enum class Fingers { None, Pan, Swipe };

    void zoom(const WheelMove& move) const;
    void scroll(const WheelMove& move);
    void turn(const QPointF& turns);
    void phased(const WheelMove& move);
    /// Of an event with a phase, in points.
    [[nodiscard]] QPointF fingerWay(const WheelMove& move);
    void pan(const QPointF& way);
    [[nodiscard]] bool isFineStep(const WheelMove& move) const;

    ImageGeometry& _geometry;
    ImageMotions& _motions;
    ImageInputHost& _host;
    ImageSwipe _swipe;
    Fingers _fingers = Fingers::None;
    ScrollVelocity _velocity;
    PhasedScrolling _phases; // of steps without phases
    QPointF _fraction;       // of a device pixel, that the picture was not moved by yet
    bool _hasPixels = false; // in the present gesture
    bool _zooms = false;
    double _turned = 0; // parts of a notch towards a step
    double _turnTime = 0;
    struct WaitingStep {
        ImageStep step;
        double time;
    };
    std::optional<WaitingStep> _waitingStep;
};
