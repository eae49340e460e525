#include "ui/PBSplitView.h"

#include "ui/PBThemes.h"

#include <QPainter>

#include <algorithm>

namespace {

class HairLine final : public QSplitterHandle {
public:
    using QSplitterHandle::QSplitterHandle;

protected:
    void paintEvent(QPaintEvent*) override {
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
};

} // namespace

PBSplitView::PBSplitView(Qt::Orientation orientation, QWidget* parent)
    : QSplitter(orientation, parent) {
    setHandleWidth(1);
    setChildrenCollapsible(false);
}

QSplitterHandle* PBSplitView::createHandle() {
    return new HairLine(orientation(), this);
}

void PBSplitView::setPanes(QWidget* first, QWidget* second, int fixed, Limits limits) {
    _fixed = fixed;
    _limits = limits;
    addWidget(first);
    addWidget(second);
    QWidget* pane = fixed == 0 ? first : second;
    if (orientation() == Qt::Horizontal) {
        pane->setMinimumWidth(limits.minimum);
        pane->setMaximumWidth(limits.maximum);
    } else {
        pane->setMinimumHeight(limits.minimum);
        pane->setMaximumHeight(limits.maximum);
    }
    setCollapsible(fixed, true);
    setStretchFactor(fixed, 0);
    setStretchFactor(1 - fixed, 1);
}

int PBSplitView::fixedPaneSize() const {
    return sizes().value(_fixed);
}

void PBSplitView::setFixedPaneSize(int size) {
    QList<int> both = sizes();
    const int total = both.value(0) + both.value(1);
    const int held = size == 0 ? 0 : std::clamp(size, _limits.minimum, _limits.maximum);
    both[_fixed] = held;
    both[1 - _fixed] = std::max(0, total - held);
    setSizes(both);
}

bool PBSplitView::isPaneCollapsed(int index) const {
    return sizes().value(index) == 0;
}
