#include "info/InfoScrollArea.h"

#include "info/InfoRowsView.h"

#include <QScrollBar>

InfoScrollArea::InfoScrollArea(InfoRowsView* view, QWidget* parent) : QScrollArea(parent) {
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setWidget(view);
    setFocusProxy(view);
    connect(view, &InfoRowsView::visibilityWanted, this, [this](const QRect& rect) {
        ensureVisible(0, rect.bottom(), 0, 0);
        ensureVisible(0, rect.top(), 0, 0);
    });
}

void InfoScrollArea::scrollToTop() {
    verticalScrollBar()->setValue(0);
}
