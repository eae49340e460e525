#include "ui/WheelPixels.h"

#include <QGuiApplication>
#include <QWheelEvent>

QPoint pixelDeltaOf(const QWheelEvent& event) {
    static const bool isX11 = QGuiApplication::platformName() == QLatin1String("xcb");
    return isX11 ? QPoint() : event.pixelDelta();
}
