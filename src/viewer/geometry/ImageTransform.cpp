#include "viewer/geometry/ImageTransform.h"

namespace PBUtilities {

QTransform transformWithImageAnchor(
    const QPointF& imageAnchor, const QPointF& drawAnchor, double angle, double scale) {
    QTransform transform = QTransform::fromTranslate(drawAnchor.x(), drawAnchor.y());
    transform.scale(scale, scale);
    transform.rotate(positiveAngle(angle)); // exact for quarter turns
    transform.translate(-imageAnchor.x(), -imageAnchor.y());
    return transform;
}

QRectF imageFrameWithTransform(const QTransform& transform, const QSizeF& imageSize) {
    return transform.mapRect(QRectF(QPointF(), imageSize));
}

double fitInScaleWithAngle(
    double angle, const QSizeF& imageSize, const QSizeF& drawSize, bool fitInSmall) {
    const QRectF frame =
        imageFrameWithTransform(transformWithImageAnchor({}, {}, angle, 1.0), imageSize);
    QRectF placed(QPointF(), drawSize);
    return fitInRect(placed, frame.width(), frame.height(), fitInSmall);
}

FitInValues
calcFitInWithAngle(double angle, const QSizeF& imageSize, const QSizeF& drawSize, bool fitInSmall) {
    return {
        QPointF(imageSize.width() / 2, imageSize.height() / 2),
        QPointF(drawSize.width() / 2, drawSize.height() / 2),
        fitInScaleWithAngle(angle, imageSize, drawSize, fitInSmall)};
}

} // namespace PBUtilities
