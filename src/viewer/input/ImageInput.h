#pragma once

#include "ui/TwoFingerGesture.h"
#include "viewer/input/ImageMouse.h"
#include "viewer/input/ImageWheel.h"

#include <optional>

enum class ImageKey {
    Up,
    Down,
    Left,
    Right,
    PageUp,
    PageDown,
    Home,
    End,
    Backspace,
    Space,
    Escape,
    Return,
    ZoomIn,
    ZoomOut,
    ActualSize,
    FitIn,
};

/// What mouse, wheel, fingers and keys mean on the picture: events in, changes of the geometry and
/// intentions out, by the clock of the motions. Main thread.
class ImageInput {
public:
    /// All outlive this object.
    ImageInput(ImageGeometry& geometry, ImageMotions& motions, ImageInputHost& host)
        : _geometry(geometry), _motions(motions), _host(host), _mouse(geometry, motions, host),
          _wheel(geometry, motions, host) {}

    [[nodiscard]] ImageMouse& mouse() { return _mouse; }
    [[nodiscard]] ImageWheel& wheel() { return _wheel; }

    /// Two fingers that pinch or turn, on a touchpad or a touch screen; one gesture turns once.
    void beginGesture();
    void endGesture();
    /// Degrees since the last update; positive turns left.
    void rotate(double rotation);
    /// What the distance of the fingers has grown by since the last update, in parts of what it was
    /// when they began.
    void magnify(double magnification, const QPointF& point);

    /// False if the key means nothing here.
    bool keyDown(ImageKey key, ImageModifiers modifiers);

    /// Something follows the user's hand: the picture is not at rest.
    [[nodiscard]] bool isFollowing() const {
        return _mouse.isFollowing() || _wheel.isFollowing() || _gesture.isZoom();
    }
    /// When `tick` has something to do besides the motions; in the clock's seconds.
    [[nodiscard]] std::optional<double> nextTime() const { return _wheel.nextTime(); }
    /// Takes motions and delays to where they should be by now. True when a motion of scale or
    /// angle has ended.
    bool tick();
    /// Forgets what the hand was about: another window, another picture, another gesture.
    void cancel();

private:
    [[nodiscard]] bool arrowDown(ImageKey key, ImageModifiers modifiers);
    bool stepTo(ImageStep step);
    void turn(TwoFingerGesture::Turn turn);

    ImageGeometry& _geometry;
    ImageMotions& _motions;
    ImageInputHost& _host;
    ImageMouse _mouse;
    ImageWheel _wheel;
    TwoFingerGesture _gesture;
    double _magnified = 0; // of the gesture's zoom, what the picture has followed
};
