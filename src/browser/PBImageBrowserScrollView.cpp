#include "browser/PBImageBrowserScrollView.h"

#include "browser/BrowserServices.h"
#include "platform/OperationQueue.h"
#include "ui/PBScroller.h"

PBImageBrowserScrollView::PBImageBrowserScrollView(BrowserServices& services, QWidget* parent)
    : PBScrollView(Qt::Vertical, parent), _services(services) {}

void PBImageBrowserScrollView::scrollTimeWillBegin() {
    PBScrollView::scrollTimeWillBegin();
    _services.buildThumbOperationQueue().setSuspended(true);
}

void PBImageBrowserScrollView::scrollTimeDidEnd(std::int64_t direction) {
    PBScrollView::scrollTimeDidEnd(direction);
    _services.buildThumbOperationQueue().setSuspended(false);
}

void PBImageBrowserScrollView::resizeEvent(QResizeEvent* event) {
    scroller().setPageScroll(viewport()->height() / 4.0);
    PBScrollView::resizeEvent(event);
}
