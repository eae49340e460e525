#pragma once

/// Two fingers on a touchpad or a touch screen: one turn or a zoom, whichever they clearly mean
/// first. They always do a little of both. Main thread.
class TwoFingerGesture {
public:
    /// A turn that the fingers just came to mean; once for each gesture.
    enum class Turn { None, Left, Right };

    void begin();
    Turn end();
    /// Degrees since the last update; positive turns left. Comes before the zoom of its update.
    Turn rotate(double rotation);
    /// What the distance of the fingers has grown by since the last update, in parts of what it
    /// was when they began.
    Turn magnify(double magnification);

    [[nodiscard]] bool isZoom() const { return _status == Status::Zoom; }
    /// Since the gesture began: 0 for the distance of the begin.
    [[nodiscard]] double magnification() const { return _magnification; }

private:
    enum class Status { None, Undecided, Zoom, Rotation };

    Turn decide();

    Status _status = Status::None;
    double _rotation = 0;
    double _magnification = 0;
};
