#include "app/PhotographTime.h"

#include "viewer/PBImageView.h"

#include <QEvent>

#include <utility>

PhotographTime::PhotographTime(PBImageView& view, std::function<void()> isPainted)
    : _view(view), _isPainted(std::move(isPainted)) {
    _view.installEventFilter(this);
}

bool PhotographTime::eventFilter(QObject* watched, QEvent* event) {
    // The view paints behind this.
    if (watched == &_view && event->type() == QEvent::Paint)
        QMetaObject::invokeMethod(this, &PhotographTime::look, Qt::QueuedConnection);
    return false;
}

void PhotographTime::look() {
    using Painted = PBImageView::Painted;
    const bool isSharp = _view.painted() == Painted::FitIn || _view.painted() == Painted::Original;
    if (!isSharp || !_isPainted) return;
    std::exchange(_isPainted, {})();
    _view.removeEventFilter(this);
}
