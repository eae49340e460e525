#pragma once

#include "platform/tasks/MainLoop.h"
#include "ui/ScrollMotion.h"
#include "ui/ScrollVelocity.h"

#include <QAbstractScrollArea>
#include <QBasicTimer>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <optional>

class PBScroller;

/// A scroll area with one eased axis. Its document may be taller than any widget: the document view
/// fills the viewport and draws the part at `pbScrollPoint`. Positions are whole points. Main
/// thread.
class PBScrollView : public QAbstractScrollArea, protected ScrollTarget {
    Q_OBJECT

public:
    explicit PBScrollView(Qt::Orientation axis = Qt::Vertical, QWidget* parent = nullptr);
    ~PBScrollView() override;

    /// What shows the document; becomes a child that fills the viewport. Wheel events that it
    /// ignores come here.
    void setDocumentView(QWidget* view);
    /// Never smaller than the viewport along the axis.
    void setDocumentSize(const QSizeF& size);
    [[nodiscard]] QSizeF documentSize() const { return _documentSize; }
    /// The part of the document on show.
    [[nodiscard]] QRectF documentVisibleRect() const;

    [[nodiscard]] QPointF pbScrollPoint() const { return _scrollPoint; }
    /// Rounds to whole points and keeps within the document.
    void setPbScrollPoint(const QPointF& point);
    [[nodiscard]] QPointF maxScrollPoint() const;
    void scrollToPosition(double position, bool animation);
    /// A relative move, eased.
    void scrollBy(double delta);
    void updateScrollAmtByOffset(double offset) { _motion.updateScrollAmtByOffset(offset); }
    [[nodiscard]] bool isScrolling() const;
    /// Fingers lie on the document: what they began before comes to rest.
    void beginPush();
    /// They push it by so many points, at once. The time is that of the event, in milliseconds; 0
    /// where it is not known.
    void pushBy(const QPointF& way, quint64 timestamp);
    /// They are lifted: it goes on as they pushed it, and comes to rest.
    void endPush(quint64 timestamp);

    [[nodiscard]] bool horizontalScroll() const { return _axis == Qt::Horizontal; }
    [[nodiscard]] PBScroller& scroller() const { return *_scroller; }
    /// The width that the scroller takes, or would take if it were on show.
    [[nodiscard]] int scrollerWidth() const;
    [[nodiscard]] ScrollMotion& motion() { return _motion; }
    /// Seconds by the clock that its motions go by.
    [[nodiscard]] double now() const { return _clock(); }
    /// For tests.
    void setClock(const ScrollMotion::Clock& clock);

    /// What one turn of a wheel moves by, in points.
    [[nodiscard]] virtual double scrollLine() const { return 0; }
    /// Gestures with phases move the document directly.
    [[nodiscard]] virtual bool useMagicScroll() const { return true; }

Q_SIGNALS:
    /// The position changed.
    void didScroll();
    /// A motion or gesture is over, or about to be.
    void motionDidEnd();

protected:
    [[nodiscard]] double scrollPosition() const override;
    void setScrollPosition(double position) override;
    void scrollTimeWillBegin() override;
    void scrollTimeDidEnd(std::int64_t direction) override;

    bool event(QEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    bool viewportEvent(QEvent* event) override;

private:
    void scrollNatively(const QWheelEvent& event);
    [[nodiscard]] bool isFineStep(const QWheelEvent& event) const;
    void moveBy(const QPointF& way);
    [[nodiscard]] double timeOf(quint64 timestamp) const;
    void reflectScrolledClipView();
    void updateScrollers();

    const Qt::Orientation _axis;
    ScrollMotion _motion;
    PhasedScrolling _phases;
    ScrollVelocity _velocity;
    QPointF _fraction;            // of a point, that a push could not be shown by
    bool _hasPixelDeltas = false; // in the present gesture
    ScrollMotion::Clock _clock;
    QBasicTimer _scrollTimer;
    QWidget* _documentView = nullptr;
    PBScroller* _scroller; // owned by the base class
    QSizeF _documentSize;
    QPointF _scrollPoint;
    bool _ignoreReflectScroller = false;
    std::optional<platform::TrackingScope> _knobHeld;
};
