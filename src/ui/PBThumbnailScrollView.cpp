#include "ui/PBThumbnailScrollView.h"

#include "platform/tasks/MainThread.h"

namespace {

constexpr int margin = 2;

} // namespace

PBThumbnailScrollView::PBThumbnailScrollView(Qt::Orientation axis, QWidget* parent)
    : PBScrollView(axis, parent) {}

double PBThumbnailScrollView::scrollLine() const {
    return _strip ? _strip->itemSize() * 0.5 : 0;
}

void PBThumbnailScrollView::layoutThumbnailView() {
    platform::assertMainThread();
    if (!parentWidget()) return;
    setGeometry(parentWidget()->rect().adjusted(margin, margin, -margin, -margin));
}

double PBThumbnailScrollView::roundPosition(double position) const {
    return _strip ? _strip->roundPosition(position) : position;
}

void PBThumbnailScrollView::scrollTimeDidEnd(std::int64_t direction) {
    PBScrollView::scrollTimeDidEnd(direction);
    if (_strip) _strip->scrollTimeDidEnd(direction);
}
