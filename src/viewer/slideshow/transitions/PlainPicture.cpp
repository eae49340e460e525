#include "viewer/slideshow/transitions/PlainPicture.h"

#include "codec/pixels/ReducedImage.h"
#include "viewer/geometry/ImageTransform.h"

#include <QPainter>

#include <cmath>

namespace {

/// Reduced in its own direction, so that turning it moves pixels only.
QImage reduced(const QImage& picture, double scale) {
    const QSize size(
        std::max(1, static_cast<int>(std::lround(picture.width() * scale))),
        std::max(1, static_cast<int>(std::lround(picture.height() * scale))));
    const QImage plain = picture.convertToFormat(
        picture.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    if (size == picture.size()) return plain;
    return codec::reduceImage(plain, size.boundedTo(plain.size()), codec::Reduction::Filtered);
}

} // namespace

QImage plainPicture(const QImage& picture, double angle, const QSize& size) {
    QImage view(size, QImage::Format_RGB32);
    if (view.isNull()) return view;
    view.fill(Qt::black);
    if (picture.isNull()) return view;
    const double scale = PBUtilities::calcFitInWithAngle(angle, picture.size(), size, false).scale;
    const QImage image = reduced(picture, scale);
    const auto place = PBUtilities::calcFitInWithAngle(angle, image.size(), size, false);
    QTransform transform =
        PBUtilities::transformWithImageAnchor(place.imageAnchor, place.drawAnchor, angle, 1.0);
    const QPointF corner = PBUtilities::imageFrameWithTransform(transform, image.size()).topLeft();
    const bool isQuarterTurn = std::fmod(angle, 90.0) == 0;
    if (isQuarterTurn)
        transform *= QTransform::fromTranslate(
            std::floor(corner.x()) - corner.x(), std::floor(corner.y()) - corner.y());
    QPainter painter(&view);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, !isQuarterTurn);
    painter.setTransform(transform);
    painter.drawImage(QPointF(), image);
    return view;
}
