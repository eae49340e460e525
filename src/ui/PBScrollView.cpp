#include "ui/PBScrollView.h"

#include "platform/tasks/MainThread.h"
#include "ui/PBScroller.h"
#include "ui/TouchPush.h"
#include "ui/WheelPixels.h"

#include <QKeyEvent>
#include <QTimerEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr int anglePerTurn = 120;
/// A touchpad's step of less than a point comes with no pixels, but with 12 of an angle for a
/// point.
constexpr int mostAngleWithoutPixels = 12;

QPointF turnsOf(const QWheelEvent& event) {
    return QPointF(event.angleDelta()) / anglePerTurn;
}

/// That of the axis that moves more.
template <class Point>
auto larger(const Point& delta) {
    return std::abs(delta.x()) > std::abs(delta.y()) ? delta.x() : delta.y();
}

} // namespace

PBScrollView::PBScrollView(Qt::Orientation axis, QWidget* parent)
    : QAbstractScrollArea(parent), _axis(axis), _motion(*this),
      _clock(ScrollMotion::monotonicClock()), _scroller(new PBScroller(axis)) {
    setFrameShape(QFrame::NoFrame);
    setFocusPolicy(Qt::NoFocus);
    if (axis == Qt::Vertical) {
        setVerticalScrollBar(_scroller);
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    } else {
        setHorizontalScrollBar(_scroller);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    }
    connect(_scroller, &PBScroller::trackingStarted, this, [this] {
        _ignoreReflectScroller = true;
        _knobHeld.emplace(); // what is shown stays under it, also while it is held still
    });
    connect(_scroller, &PBScroller::trackingStopped, this, [this] {
        _ignoreReflectScroller = false;
        _knobHeld.reset();
        if (!isScrolling()) reflectScrolledClipView();
    });
    connect(_scroller, &PBScroller::positionRequested, this, [this](double position) {
        scrollToPosition(position, true);
    });
    connect(_scroller, &PBScroller::moveRequested, this, &PBScrollView::scrollBy);
    connect(_scroller, &PBScroller::wheelTurned, this, [this](QWheelEvent& event) {
        wheelEvent(&event);
    });
}

PBScrollView::~PBScrollView() = default;

void PBScrollView::setDocumentView(QWidget* view) {
    platform::assertMainThread();
    _documentView = view;
    view->setParent(viewport());
    view->setGeometry(viewport()->rect());
    view->show();
    new TouchPush(*this, *view); // a child of this object
}

void PBScrollView::setDocumentSize(const QSizeF& size) {
    platform::assertMainThread();
    _documentSize = size;
    updateScrollers();
    setPbScrollPoint(_scrollPoint);
}

QRectF PBScrollView::documentVisibleRect() const {
    return {_scrollPoint, QSizeF(viewport()->size())};
}

QPointF PBScrollView::maxScrollPoint() const {
    return {
        std::max(0.0, std::ceil(_documentSize.width()) - viewport()->width()),
        std::max(0.0, std::ceil(_documentSize.height()) - viewport()->height())};
}

void PBScrollView::setPbScrollPoint(const QPointF& point) {
    platform::assertMainThread();
    const QPointF farthest = maxScrollPoint();
    const QPointF rounded(
        std::clamp(std::rint(point.x()), 0.0, farthest.x()),
        std::clamp(std::rint(point.y()), 0.0, farthest.y()));
    if (rounded == _scrollPoint) return;
    _scrollPoint = rounded;
    reflectScrolledClipView();
    Q_EMIT didScroll();
}

double PBScrollView::scrollPosition() const {
    return horizontalScroll() ? _scrollPoint.x() : _scrollPoint.y();
}

void PBScrollView::setScrollPosition(double position) {
    setPbScrollPoint(
        horizontalScroll() ? QPointF(position, _scrollPoint.y())
                           : QPointF(_scrollPoint.x(), position));
}

void PBScrollView::scrollToPosition(double position, bool animation) {
    _motion.scrollToPosition(position, animation);
}

void PBScrollView::scrollBy(double delta) {
    _motion.scrollBy(delta);
}

bool PBScrollView::isScrolling() const {
    return _motion.isRunning() || _phases.isMagicScrolling();
}

int PBScrollView::scrollerWidth() const {
    const QSize hint = _scroller->sizeHint();
    return horizontalScroll() ? hint.height() : hint.width();
}

void PBScrollView::setClock(const ScrollMotion::Clock& clock) {
    _clock = clock;
    _motion.setClock(clock);
    _phases.setClock(clock);
}

void PBScrollView::scrollTimeWillBegin() {
    _scrollTimer.start(scrollFrameInterval, Qt::PreciseTimer, this);
}

void PBScrollView::scrollTimeDidEnd(std::int64_t direction) {
    static_cast<void>(direction);
    _scrollTimer.stop();
    Q_EMIT motionDidEnd();
}

void PBScrollView::timerEvent(QTimerEvent* event) {
    if (event->timerId() != _scrollTimer.timerId()) return QAbstractScrollArea::timerEvent(event);
    _motion.tick();
    if (!_motion.isFling()) return;
    const QPointF farthest = maxScrollPoint();
    const double end = horizontalScroll() ? farthest.x() : farthest.y();
    const double position = scrollPosition();
    const bool isAtEnd = _motion.scrollPosFlag() < 0 ? position <= 0 : position >= end;
    if (isAtEnd) _motion.stop();
}

void PBScrollView::keyPressEvent(QKeyEvent* event) {
    event->ignore(); // The document view decides what keys do.
}

void PBScrollView::wheelEvent(QWheelEvent* event) {
    event->accept();
    if (event->phase() != Qt::NoScrollPhase && useMagicScroll()) return scrollNatively(*event);
    if (event->phase() == Qt::ScrollMomentum) return;
    const QPointF pixels = pixelDeltaOf(*event);
    const QPointF deltas = pixels.isNull() ? turnsOf(*event) * scrollLine() : pixels;
    if (!useMagicScroll() || !isFineStep(*event)) return _motion.wheel(larger(deltas));
    if (!_phases.isMagicScrolling()) _fraction = {};
    _phases.stepped();
    moveBy(deltas);
}

/// Touchpads of an X server tell no phases, but parts of a turn, now and then a whole one.
bool PBScrollView::isFineStep(const QWheelEvent& event) const {
    return !pixelDeltaOf(event).isNull() || larger(event.angleDelta()) % anglePerTurn != 0 ||
           _phases.isMagicScrolling();
}

void PBScrollView::scrollNatively(const QWheelEvent& event) {
    if (event.phase() == Qt::ScrollBegin) beginPush();
    const bool hasPixelDelta = !event.pixelDelta().isNull();
    _hasPixelDeltas = _hasPixelDeltas || hasPixelDelta;
    QPointF delta = event.pixelDelta();
    // Less than a point yet; its fraction comes with a later step.
    const bool isLessThanPixel =
        _hasPixelDeltas || std::abs(larger(event.angleDelta())) <= mostAngleWithoutPixels;
    if (!hasPixelDelta && !isLessThanPixel) delta = turnsOf(event) * scrollLine();
    if (event.phase() == Qt::ScrollEnd) {
        moveBy(delta);
        endPush(event.timestamp());
    } else if (event.phase() == Qt::ScrollMomentum) {
        _phases.moved();
        moveBy(delta);
    } else {
        pushBy(delta, event.timestamp());
    }
}

double PBScrollView::timeOf(quint64 timestamp) const {
    // Events may have waited for a busy loop.
    return timestamp != 0 ? static_cast<double>(timestamp) / 1000 : now();
}

void PBScrollView::beginPush() {
    platform::assertMainThread();
    if (_motion.isFling()) _motion.stop();
    _velocity.clear();
    _fraction = {};
    _hasPixelDeltas = false;
    _phases.moved();
}

void PBScrollView::pushBy(const QPointF& way, quint64 timestamp) {
    platform::assertMainThread();
    _phases.moved();
    _velocity.add(timeOf(timestamp), way);
    moveBy(way);
}

void PBScrollView::endPush(quint64 timestamp) {
    platform::assertMainThread();
    _phases.ended();
    const QPointF velocity = _velocity.at(timeOf(timestamp));
    _velocity.clear();
    const double onAxis = horizontalScroll() ? velocity.x() : velocity.y();
    if (onAxis != 0) return _motion.fling(-onAxis);
    Q_EMIT motionDidEnd();
}

void PBScrollView::moveBy(const QPointF& way) {
    // A touchpad that lies still must not stop a motion that something else began.
    if (way.isNull()) return;
    _motion.stop();
    const QPointF wanted = _scrollPoint + _fraction - way;
    setPbScrollPoint(wanted);
    _fraction = wanted - _scrollPoint;
    if (std::abs(larger(_fraction)) > 0.5) _fraction = {}; // beyond the end
}

bool PBScrollView::event(QEvent* event) {
    // The end of a gesture may go elsewhere.
    const QEvent::Type type = event->type();
    if (type == QEvent::Leave || type == QEvent::WindowDeactivate || type == QEvent::Hide) {
        _phases.cancel();
        _velocity.clear();
        if (!isScrolling()) Q_EMIT motionDidEnd();
    }
    return QAbstractScrollArea::event(event);
}

void PBScrollView::resizeEvent(QResizeEvent* event) {
    QAbstractScrollArea::resizeEvent(event);
    if (_documentView) _documentView->setGeometry(viewport()->rect());
    updateScrollers();
    setPbScrollPoint(_scrollPoint);
}

bool PBScrollView::viewportEvent(QEvent* event) {
    // The document view covers the viewport and draws all of it.
    if (event->type() == QEvent::Paint && _documentView) return true;
    return QAbstractScrollArea::viewportEvent(event);
}

void PBScrollView::updateScrollers() {
    const QPointF farthest = maxScrollPoint();
    if (horizontalScroll()) {
        _scroller->setDocument(farthest.x(), viewport()->width(), scrollLine());
    } else {
        _scroller->setDocument(farthest.y(), viewport()->height(), scrollLine());
    }
    reflectScrolledClipView();
}

void PBScrollView::reflectScrolledClipView() {
    if (!_ignoreReflectScroller) _scroller->setPosition(scrollPosition());
}
