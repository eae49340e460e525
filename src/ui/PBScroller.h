#pragma once

#include <QScrollBar>

/// A scroller whose positions are doubles, so that documents of any length can be reached: the
/// integer steps of the base class are spread over the document. Main thread.
class PBScroller final : public QScrollBar {
    Q_OBJECT

public:
    explicit PBScroller(Qt::Orientation orientation, QWidget* parent = nullptr);

    /// The farthest position, what is visible at once, and what an arrow moves by, in points.
    void setDocument(double maximum, double page, double line);
    /// How much stays in sight when the document is moved on by a page.
    void setPageScroll(double overlap) { _pageOverlap = overlap; }
    /// Moves the knob only.
    void setPosition(double position);

Q_SIGNALS:
    /// The user took the knob, and let it go.
    void trackingStarted();
    void trackingStopped();
    /// The user wants that position.
    void positionRequested(double position);
    /// The user wants to move on by so much.
    void moveRequested(double delta);
    /// It is the document's, wherever the mouse is.
    void wheelTurned(QWheelEvent& event);

protected:
    /// With the option key held the knob moves at a quarter of the mouse's speed.
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    /// Lets go of the knob: the mouse is released somewhere else.
    void hideEvent(QHideEvent* event) override;
    void wheelEvent(QWheelEvent* event) override { Q_EMIT wheelTurned(*event); }

private:
    void handleAction(int action);

    double _scale = 1; // points a step
    double _maximum = 0;
    double _page = 0;
    double _pageOverlap = 0;
    QPointF _lastMouse;  // where it was
    QPointF _knobOffset; // how far the knob has fallen behind it
};
