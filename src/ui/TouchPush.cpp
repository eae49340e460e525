#include "ui/TouchPush.h"

#include "ui/PBScrollView.h"

#include <QApplication>
#include <QMouseEvent>
#include <QPointingDevice>
#include <QStyleHints>

#include <utility>

TouchPush::TouchPush(PBScrollView& scrollView, QWidget& document)
    : QObject(&scrollView), _scrollView(scrollView), _document(document) {
    document.installEventFilter(this);
}

TouchPush::~TouchPush() = default;

bool TouchPush::eventFilter(QObject* watched, QEvent* event) {
    const QEvent::Type type = event->type();
    const bool isPress = type == QEvent::MouseButtonPress || type == QEvent::MouseButtonDblClick;
    if (_isSending || (!isPress && type != QEvent::MouseMove && type != QEvent::MouseButtonRelease))
        return QObject::eventFilter(watched, event);
    const auto& mouse = static_cast<const QMouseEvent&>(*event);
    const QPointingDevice* device = mouse.pointingDevice();
    if (!device || device->type() != QInputDevice::DeviceType::TouchScreen) return false;
    if (isPress) {
        press(mouse);
    } else if (type == QEvent::MouseMove) {
        move(mouse);
    } else {
        release(mouse);
    }
    return true;
}

void TouchPush::press(const QMouseEvent& event) {
    _isPushing = false;
    _last = event.globalPosition();
    // A finger on a moving document stops it, and means nothing else.
    const bool isCatch = _scrollView.isScrolling();
    _scrollView.beginPush();
    _press.reset(isCatch ? nullptr : event.clone());
}

void TouchPush::move(const QMouseEvent& event) {
    if (event.buttons() == Qt::NoButton) return;
    const QPointF way = event.globalPosition() - _last;
    if (!_isPushing && way.manhattanLength() < QGuiApplication::styleHints()->startDragDistance())
        return;
    _last = event.globalPosition();
    // What the finger trembled by so far is no push.
    if (!std::exchange(_isPushing, true)) return;
    _scrollView.pushBy(way, event.timestamp());
}

void TouchPush::release(const QMouseEvent& event) {
    const auto press = std::move(_press);
    _scrollView.endPush(event.timestamp());
    if (_isPushing || !press) return;
    _isSending = true;
    QApplication::sendEvent(&_document, press.get());
    const std::unique_ptr<QMouseEvent> release(event.clone());
    QApplication::sendEvent(&_document, release.get());
    _isSending = false;
}
