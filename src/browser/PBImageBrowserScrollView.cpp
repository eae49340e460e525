#include "browser/PBImageBrowserScrollView.h"

#include "browser/feed/BrowserServices.h"
#include "platform/tasks/MainThread.h"
#include "platform/tasks/OperationQueue.h"
#include "ui/PBScroller.h"

PBImageBrowserScrollView::PBImageBrowserScrollView(BrowserServices& services, QWidget* parent)
    : PBScrollView(Qt::Vertical, parent), _services(services) {}

void PBImageBrowserScrollView::scrollTimeWillBegin() {
    platform::assertMainThread();
    PBScrollView::scrollTimeWillBegin();
    _services.buildThumbOperationQueue().setSuspended(true);
}

void PBImageBrowserScrollView::scrollTimeDidEnd(std::int64_t direction) {
    platform::assertMainThread();
    PBScrollView::scrollTimeDidEnd(direction);
    _services.buildThumbOperationQueue().setSuspended(false);
}

void PBImageBrowserScrollView::resizeEvent(QResizeEvent* event) {
    scroller().setPageScroll(viewport()->height() / 4.0);
    PBScrollView::resizeEvent(event);
}
