#include "app/PaintWatch.h"

#include <QEvent>
#include <QWidget>

#include <utility>

PaintWatch::PaintWatch(QWidget& widget, std::function<bool()> look)
    : _widget(widget), _look(std::move(look)) {
    _widget.installEventFilter(this);
}

bool PaintWatch::eventFilter(QObject* watched, QEvent* event) {
    // The widget paints behind this.
    if (watched == &_widget && event->type() == QEvent::Paint)
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (_look && _look()) _look = {};
            },
            Qt::QueuedConnection);
    return false;
}
