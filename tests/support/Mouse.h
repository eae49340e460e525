#pragma once

#include "support/Support.h"

#include <QApplication>
#include <QMouseEvent>
#include <QWidget>

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

inline void sendMouse(
    QWidget& widget, QEvent::Type type, QPointF point, Qt::KeyboardModifiers modifiers = {},
    Qt::MouseButton button = Qt::LeftButton) {
    QMouseEvent event = mouseEvent(widget, type, point, modifiers, button);
    QApplication::sendEvent(&widget, &event);
}

} // namespace support
