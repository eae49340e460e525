#pragma once

#include "ui/ScrollVelocity.h"

#include <QObject>
#include <QPointF>

#include <memory>

class PBScrollView;
class QMouseEvent;
class QWidget;

/// A finger on a touch screen pushes the document of a scroll view. Without a push it is a click:
/// the document gets the press only when the finger is lifted. Main thread.
class TouchPush final : public QObject {
public:
    /// Looks at the events of the document. Owned by the scroll view.
    TouchPush(PBScrollView& scrollView, QWidget& document);
    ~TouchPush() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void press(const QMouseEvent& event);
    void move(const QMouseEvent& event);
    void release(const QMouseEvent& event);

    PBScrollView& _scrollView;
    QWidget& _document;
    std::unique_ptr<QMouseEvent> _press; // waits for what it means
    QPointF _last;                       // on the screen
    bool _isPushing = false;
    bool _isSending = false;
};
