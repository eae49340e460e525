#include "viewer/input/ImageDragOut.h"

#include "codec/pixels/Geometry.h"
#include "ui/DragOut.h"

#include <QPainter>

#include <algorithm>
#include <cmath>

namespace ImageDragOut {

QImage picture(const QImage& thumbnail, double rotateAngle, double ratio) {
    const int pixels = static_cast<int>(std::lround(side * ratio));
    QImage image(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    image.setDevicePixelRatio(ratio);
    image.fill(Qt::transparent);
    if (thumbnail.isNull()) return image;
    const QSizeF turned = PBUtilities::rotateSize(QSizeF(thumbnail.size()), rotateAngle);
    QRectF placed(0, 0, side, side);
    PBUtilities::fitInRect(placed, turned.width(), turned.height(), false);
    const QRect whole = placed.toAlignedRect();
    const QSize size(std::max(whole.width(), 1), std::max(whole.height(), 1));
    QPainter painter(&image);
    painter.drawImage(whole.topLeft(), DragOut::picture(thumbnail, size, rotateAngle, 1, ratio));
    return image;
}

} // namespace ImageDragOut
