#include "ui/PBScrollView.h"

#include "platform/work/MainThread.h"
#include "ui/PBScroller.h"

#include <QKeyEvent>
#include <QTimerEvent>
#include <QWheelEvent>

#include <algorithm>
#include <cmath>

namespace {

constexpr double anglePerTurn = 120;

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
}

PBScrollView::~PBScrollView() = default;

void PBScrollView::setDocumentView(QWidget* view) {
    platform::assertMainThread();
    _documentView = view;
    view->setParent(viewport());
    view->setGeometry(viewport()->rect());
    view->show();
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

void PBScrollView::scrollToPoint(const QPointF& point, bool animation) {
    scrollToPosition(horizontalScroll() ? point.x() : point.y(), animation);
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
}

void PBScrollView::keyPressEvent(QKeyEvent* event) {
    event->ignore(); // The document view decides what keys do.
}

void PBScrollView::wheelEvent(QWheelEvent* event) {
    event->accept();
    if (event->phase() != Qt::NoScrollPhase && useMagicScroll()) return scrollNatively(*event);
    if (event->phase() == Qt::ScrollMomentum) return;
    const bool isPrecise = !event->pixelDelta().isNull();
    const QPointF turns = QPointF(event->angleDelta()) / anglePerTurn;
    const QPointF deltas = isPrecise ? QPointF(event->pixelDelta()) : turns * scrollLine();
    _motion.wheel(std::abs(deltas.x()) > std::abs(deltas.y()) ? deltas.x() : deltas.y());
}

void PBScrollView::scrollNatively(const QWheelEvent& event) {
    if (event.phase() == Qt::ScrollBegin || event.phase() == Qt::ScrollMomentum) _phases.began();
    if (event.phase() == Qt::ScrollEnd) {
        _phases.ended();
        Q_EMIT motionDidEnd();
    }
    const QPointF delta = event.pixelDelta().isNull()
                              ? QPointF(event.angleDelta()) / anglePerTurn * scrollLine()
                              : QPointF(event.pixelDelta());
    // A touchpad that lies still must not stop a motion that something else began.
    if (delta.isNull()) return;
    _motion.stop();
    setPbScrollPoint(_scrollPoint - delta);
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
