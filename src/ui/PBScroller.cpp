#include "ui/PBScroller.h"

#include <QMouseEvent>

#include <algorithm>
#include <cmath>

namespace {

// Well within an int, and finer than any screen.
constexpr double mostSteps = 1 << 30;
constexpr int slideSteps = 1000;
/// Of the mouse's, for the knob with the option key held.
constexpr double fineSpeed = 0.25;

} // namespace

PBScroller::PBScroller(Qt::Orientation orientation, QWidget* parent)
    : QScrollBar(orientation, parent) {
    connect(this, &QAbstractSlider::sliderPressed, this, &PBScroller::trackingStarted);
    connect(this, &QAbstractSlider::sliderReleased, this, [this] {
        if (_isSlideMode) setValue(slideSteps / 2);
        Q_EMIT trackingStopped();
    });
    connect(this, &QAbstractSlider::actionTriggered, this, &PBScroller::handleAction);
}

void PBScroller::setDocument(double maximum, double page, double line) {
    _maximum = std::max(maximum, 0.0);
    _page = page;
    _line = line;
    if (_isSlideMode) return;
    _scale = std::max(1.0, _maximum / mostSteps);
    setRange(0, static_cast<int>(std::ceil(_maximum / _scale)));
    setPageStep(std::max(1, static_cast<int>(page / _scale)));
    setSingleStep(std::max(1, static_cast<int>(line / _scale)));
}

void PBScroller::setPosition(double position) {
    _position = position;
    if (!_isSlideMode) setValue(static_cast<int>(std::rint(position / _scale)));
}

void PBScroller::setSlideMode(bool isSlideMode) {
    if (_isSlideMode == isSlideMode) return;
    _isSlideMode = isSlideMode;
    if (isSlideMode) {
        setRange(0, slideSteps);
        setPageStep(slideSteps / 5);
        setValue(slideSteps / 2);
    } else {
        setDocument(_maximum, _page, _line);
        setPosition(_position);
    }
}

void PBScroller::mousePressEvent(QMouseEvent* event) {
    _lastMouse = event->position();
    _knobOffset = {};
    QScrollBar::mousePressEvent(event);
}

void PBScroller::mouseMoveEvent(QMouseEvent* event) {
    const QPointF way = event->position() - std::exchange(_lastMouse, event->position());
    if (event->modifiers().testFlag(Qt::AltModifier)) _knobOffset -= way * (1 - fineSpeed);
    QMouseEvent knob(
        event->type(), event->position() + _knobOffset, event->scenePosition(),
        event->globalPosition(), event->button(), event->buttons(), event->modifiers());
    QScrollBar::mouseMoveEvent(&knob);
    event->setAccepted(knob.isAccepted());
}

void PBScroller::handleAction(int action) {
    if (_isSlideMode) {
        if (action == SliderMove)
            Q_EMIT slideRequested(static_cast<double>(sliderPosition()) / slideSteps - 0.5);
        return;
    }
    const double wanted = sliderPosition() * _scale;
    if (action == SliderMove || action == SliderToMinimum || action == SliderToMaximum) {
        if (!isSliderDown()) setSliderPosition(value());
        Q_EMIT positionRequested(std::min(wanted, _maximum));
        return;
    }
    double delta = wanted - value() * _scale;
    if (action == SliderPageStepAdd) delta = _page - _pageOverlap;
    if (action == SliderPageStepSub) delta = _pageOverlap - _page;
    // The knob follows the eased motion instead of jumping ahead of it.
    setSliderPosition(value());
    if (delta != 0) Q_EMIT moveRequested(delta);
}
