#pragma once

#include "support/Support.h"

#include <QAbstractButton>
#include <QApplication>
#include <QNativeGestureEvent>
#include <QPointingDevice>
#include <QWheelEvent>

namespace support {

/// What a mouse does at a point of the widget; with Qt::NoButton it only passes over it.
[[nodiscard]] inline QMouseEvent mouseEvent(
    const QWidget& widget, QEvent::Type type, QPointF point, Qt::KeyboardModifiers modifiers = {},
    Qt::MouseButton button = Qt::LeftButton) {
    return {
        type,
        point,
        widget.mapToGlobal(point),
        type == QEvent::MouseMove ? Qt::NoButton : button,
        type == QEvent::MouseButtonRelease ? Qt::NoButton : button,
        modifiers};
}

/// Whether the widget keeps a key for itself that is a shortcut of the window, too.
[[nodiscard]] inline bool claimsShortcut(QWidget& widget, int key) {
    QKeyEvent event(QEvent::ShortcutOverride, key, {});
    event.ignore();
    QApplication::sendEvent(&widget, &event);
    return event.isAccepted();
}

/// Clicks the button with the text.
inline void pressButton(const QWidget& in, const QString& text) {
    for (auto* button : in.findChildren<QAbstractButton*>())
        if (button->text().remove(u'&') == text) return button->click();
    ADD_FAILURE() << "no button " << text.toStdString();
}

inline void sendMouse(
    QWidget& widget, QEvent::Type type, QPointF point, Qt::KeyboardModifiers modifiers = {},
    Qt::MouseButton button = Qt::LeftButton) {
    QMouseEvent event = mouseEvent(widget, type, point, modifiers, button);
    QApplication::sendEvent(&widget, &event);
}

/// A turn of the wheel, or fingers, over the middle of the widget.
inline void sendWheel(
    QWidget& widget, QPoint pixels, QPoint angle, Qt::KeyboardModifiers modifiers = {},
    Qt::ScrollPhase phase = Qt::NoScrollPhase) {
    const QPointF middle = QRectF(widget.rect()).center();
    QWheelEvent event(
        middle, widget.mapToGlobal(middle), pixels, angle, Qt::NoButton, modifiers, phase, false);
    QApplication::sendEvent(&widget, &event);
}

/// Of two fingers round the middle of the widget.
inline void sendGesture(QWidget& widget, Qt::NativeGestureType type, double value = 0) {
    const QPointF middle = QRectF(widget.rect()).center();
    QNativeGestureEvent event(
        type, QPointingDevice::primaryPointingDevice(), 2, middle, middle,
        widget.mapToGlobal(middle), value, {});
    QApplication::sendEvent(&widget, &event);
}

} // namespace support
