#include "ui/PBScroller.h"

#include "platform/tasks/MainThread.h"

#include <QMouseEvent>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

// Well within an int, and finer than any screen.
constexpr double mostSteps = 1 << 30;
/// Of the mouse's, for the knob with the option key held.
constexpr double fineSpeed = 0.25;

} // namespace

PBScroller::PBScroller(Qt::Orientation orientation, QWidget* parent)
    : QScrollBar(orientation, parent) {
    connect(this, &QAbstractSlider::sliderPressed, this, &PBScroller::trackingStarted);
    connect(this, &QAbstractSlider::sliderReleased, this, &PBScroller::trackingStopped);
    connect(this, &QAbstractSlider::actionTriggered, this, &PBScroller::handleAction);
}

void PBScroller::setDocument(double maximum, double page, double line) {
    platform::assertMainThread();
    _maximum = std::max(maximum, 0.0);
    _page = page;
    _scale = std::max(1.0, _maximum / mostSteps);
    setRange(0, static_cast<int>(std::ceil(_maximum / _scale)));
    setPageStep(std::max(1, static_cast<int>(page / _scale)));
    setSingleStep(std::max(1, static_cast<int>(line / _scale)));
}

void PBScroller::setPosition(double position) {
    platform::assertMainThread();
    setValue(static_cast<int>(std::rint(position / _scale)));
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

void PBScroller::hideEvent(QHideEvent* event) {
    QScrollBar::hideEvent(event);
    setSliderDown(false);
}

void PBScroller::handleAction(int action) {
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
