#include "ui/PBSplitView.h"

#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBThemes.h"

#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <optional>
#include <utility>

namespace {

class HairLine final : public QSplitterHandle {
public:
    HairLine(PBSplitView& splitView) : QSplitterHandle(splitView.orientation(), &splitView) {}

protected:
    void paintEvent(QPaintEvent*) override {
        auto* view = static_cast<PBSplitView*>(splitter());
        if (view->isPaneCollapsed(0) || view->isPaneCollapsed(1)) return;
        // The handle overlaps the panes so that it can be taken hold of; the line is in its middle.
        QPainter painter(this);
        QRect line = contentsRect();
        if (orientation() == Qt::Horizontal) {
            line.setWidth(1);
        } else {
            line.setHeight(1);
        }
        painter.fillRect(line, PBThemes::colors().separator);
    }
    void mousePressEvent(QMouseEvent* event) override {
        auto* view = static_cast<PBSplitView*>(splitter());
        // A divider that moves by itself can't be dragged as well.
        if (view->isAnimationRunning()) return;
        if (event->button() == Qt::LeftButton) {
            _grip = along(*event) - view->splitPosition();
            _held.emplace();
        }
        QSplitterHandle::mousePressEvent(event);
    }
    void mouseMoveEvent(QMouseEvent* event) override {
        // The toolkit takes the edge of this handle for the line, which would jump when it is taken
        // hold of.
        if (_grip) moveSplitter(along(*event) - *_grip);
    }
    void mouseReleaseEvent(QMouseEvent* event) override {
        letGo();
        QSplitterHandle::mouseReleaseEvent(event);
        Q_EMIT static_cast<PBSplitView*>(splitter())->dividerReleased();
    }

    void hideEvent(QHideEvent* event) override {
        letGo();
        QSplitterHandle::hideEvent(event);
    }

private:
    void letGo() {
        _grip.reset();
        _held.reset();
    }
    /// Where the mouse is, along the split.
    int along(const QMouseEvent& event) const {
        const QPoint point = splitter()->mapFromGlobal(event.globalPosition().toPoint());
        return orientation() == Qt::Horizontal ? point.x() : point.y();
    }

    std::optional<int> _grip; ///< where the mouse holds the divider, from its line
    std::optional<platform::TrackingScope> _held;
};

} // namespace

PBSplitView::PBSplitView(Qt::Orientation orientation, QWidget* parent)
    : QSplitter(orientation, parent) {
    setHandleWidth(1);
    setChildrenCollapsible(false);
    _animation.setEasingCurve(QEasingCurve::InOutQuad);
    connect(&_animation, &QVariantAnimation::valueChanged, this, [this](const QVariant& value) {
        place(value.toInt());
    });
    connect(&_animation, &QAbstractAnimation::finished, this, &PBSplitView::finishAnimation);
    connect(this, &QSplitter::splitterMoved, this, [this] {
        noteAsked(splitPosition());
        Q_EMIT splitViewDidResizeSubviews();
    });
}

QSplitterHandle* PBSplitView::createHandle() {
    return new HairLine(*this);
}

void PBSplitView::setPanes(
    QWidget* first, QWidget* second, int fixed, Limits limits, int otherMinimum) {
    _fixed = fixed;
    _limits = limits;
    _otherMinimum = otherMinimum;
    addWidget(first);
    addWidget(second);
    QWidget* pane = fixed == 0 ? first : second;
    if (orientation() == Qt::Horizontal) {
        pane->setMaximumWidth(limits.maximum);
    } else {
        pane->setMaximumHeight(limits.maximum);
    }
    finishAnimation();
    setCollapsible(fixed, true);
    setStretchFactor(fixed, 0);
    setStretchFactor(1 - fixed, 1);
}

void PBSplitView::setMinimums(int first, int second) {
    const auto set = [this](QWidget* pane, int minimum) {
        if (orientation() == Qt::Horizontal) {
            pane->setMinimumWidth(minimum);
        } else {
            pane->setMinimumHeight(minimum);
        }
    };
    set(widget(0), first);
    set(widget(1), second);
}

int PBSplitView::fixedPaneSize() const {
    return sizes().value(_fixed);
}

int PBSplitView::length() const {
    const QList<int> both = sizes();
    return both.value(0) + both.value(1);
}

void PBSplitView::setFixedPaneSize(int size) {
    const int held = size == 0 ? 0 : std::clamp(size, _limits.minimum, _limits.maximum);
    // Before the view has its size, the pane can't have it either.
    if (held > 0) _asked = held;
    place(_fixed == 0 ? held : std::max(0, length() - held));
}

void PBSplitView::setSplitPosition(int position) {
    noteAsked(position);
    place(position);
}

void PBSplitView::noteAsked(int position) {
    const int size = _fixed == 0 ? position : length() - position;
    if (size > 0) _asked = size;
}

void PBSplitView::place(int position) {
    platform::assertMainThread();
    const int total = length();
    position = std::clamp(position, 0, total);
    setSizes({position, total - position});
    Q_EMIT splitViewDidResizeSubviews();
}

void PBSplitView::animateToPosition(int position, std::function<void()> completion) {
    platform::assertMainThread();
    _animation.stop();
    noteAsked(position);
    _completion = std::move(completion);
    // 1 is the smallest that counts: with 0 the content of a pane would set its minimum.
    setMinimums(1, 1);
    const int duration =
        isVisible() ? style()->styleHint(QStyle::SH_Widget_Animation_Duration, nullptr, this) : 0;
    if (duration <= 0) {
        place(position);
        return finishAnimation();
    }
    _animation.setDuration(duration);
    _animation.setStartValue(splitPosition());
    _animation.setEndValue(std::clamp(position, 0, length()));
    _animation.start();
}

void PBSplitView::finishAnimation() {
    setMinimums(
        _fixed == 0 ? _limits.minimum : _otherMinimum,
        _fixed == 0 ? _otherMinimum : _limits.minimum);
    if (const auto completion = std::exchange(_completion, nullptr)) completion();
}

bool PBSplitView::isPaneCollapsed(int index) const {
    return sizes().value(index) == 0;
}

void PBSplitView::resizeEvent(QResizeEvent* event) {
    QSplitter::resizeEvent(event);
    giveWay();
    Q_EMIT splitViewDidResizeSubviews();
}

void PBSplitView::giveWay() {
    if (_roomKept == 0 || _asked == 0 || isAnimationRunning() || isPaneCollapsed(_fixed)) return;
    const int total = length();
    const int size = std::max(_limits.minimum, std::min(_asked, total - _roomKept));
    if (size == fixedPaneSize()) return;
    setSizes(_fixed == 0 ? QList<int>{size, total - size} : QList<int>{total - size, size});
}
