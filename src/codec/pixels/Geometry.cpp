#include "codec/pixels/Geometry.h"

#include <algorithm>
#include <cmath>

namespace PBUtilities {

double fitInRect(QRectF& rect, double width, double height, bool fitIn) {
    if (!(width > 0) || !(height > 0)) return 1.0;
    double x = rect.x();
    double y = rect.y();
    double placedWidth = rect.width();
    double placedHeight = rect.height();
    double scale = 1.0;
    if (placedWidth * height > placedHeight * width) {
        if (placedHeight > height && !fitIn) {
            y += (placedHeight - height) * 0.5;
            placedHeight = height;
        }
        const double newWidth = width * placedHeight / height;
        x += (placedWidth - newWidth) * 0.5;
        placedWidth = newWidth;
        scale = placedHeight / height;
    } else {
        if (placedWidth > width && !fitIn) {
            x += (placedWidth - width) * 0.5;
            placedWidth = width;
        }
        const double newHeight = height * placedWidth / width;
        y += (placedHeight - newHeight) * 0.5;
        placedHeight = newHeight;
        scale = placedWidth / width;
    }
    rect = QRectF(x, y, placedWidth, placedHeight);
    return scale;
}

namespace {

bool isQuarterTurn(double angle) {
    const double positive = positiveAngle(angle);
    return positive == 90 || positive == 270;
}

} // namespace

QSizeF rotateSize(QSizeF size, double rotateAngle) {
    return isQuarterTurn(rotateAngle) ? size.transposed() : size;
}

} // namespace PBUtilities

namespace codec {

QSize reducedSize(QSize size, int maxSize) {
    if (maxSize <= 0) return size;
    QRectF rect(0, 0, maxSize, maxSize);
    PBUtilities::fitInRect(rect, size.width(), size.height(), false);
    return {
        std::max(1, static_cast<int>(std::rint(rect.width()))),
        std::max(1, static_cast<int>(std::rint(rect.height())))};
}

bool sameShape(QSize one, QSize other) {
    // Reduced pictures are rounded to whole pixels, and often to whole blocks of 8 or 16; 4:3 and
    // 3:2 differ by 11 %.
    const double first = static_cast<double>(one.width()) * other.height();
    const double second = static_cast<double>(other.width()) * one.height();
    return std::abs(first - second) <= 0.03 * std::max(first, second);
}

} // namespace codec
