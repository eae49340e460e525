#include "viewer/painting/ImagePainter.h"

#include "codec/pixels/Geometry.h"
#include "viewer/geometry/ImageTransform.h"
#include "viewer/geometry/SwipeGeometry.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>
#include <QPixmap>

#include <algorithm>
#include <cmath>

namespace ImagePainter {

namespace {

constexpr int groundLevel = 77;  // 0.3 of white
constexpr int lightGround = 127; // above, writing is dark
// Behind transparent pictures: quiet, and not to be taken for the ground.
constexpr float chequerLight = 0.42F;
constexpr float chequerDark = 0.36F;
constexpr int chequerSide = 8; // points

constexpr int messageFontSize = 16; // pixels at a ratio of 1
constexpr double messageAbove = 20; // points above the middle, where the line begins
constexpr double messageMargin = 24;
constexpr double messagePadding = 14;

/// Two by two squares, at the device's resolution.
QBrush chequers(double devicePixelRatio) {
    const int side = std::max(1, static_cast<int>(std::lround(chequerSide * devicePixelRatio)));
    QImage tile(2 * side, 2 * side, QImage::Format_RGB32);
    tile.fill(QColor::fromRgbF(chequerDark, chequerDark, chequerDark));
    QPainter painter(&tile);
    const QColor light = QColor::fromRgbF(chequerLight, chequerLight, chequerLight);
    painter.fillRect(0, 0, side, side, light);
    painter.fillRect(side, side, side, side, light);
    painter.end();
    return QBrush(tile);
}

/// Makes one unit of the painter one device pixel, with the origin in the view's first one.
void useDevicePixels(QPainter& painter, const ImageViewport& viewport) {
    painter.translate(viewport.rect().topLeft());
    painter.scale(1 / viewport.devicePixelRatio(), 1 / viewport.devicePixelRatio());
}

QTransform toDevicePixels(const ImageViewport& viewport) {
    const QPointF origin = viewport.rect().topLeft();
    const double ratio = viewport.devicePixelRatio();
    return QTransform::fromTranslate(-origin.x(), -origin.y()) *
           QTransform::fromScale(ratio, ratio);
}

/// The chequered ground under a picture that lets it through.
void paintChequers(
    QPainter& painter, const ImageViewport& viewport, const QTransform& transform,
    const QRectF& picture) {
    painter.save();
    useDevicePixels(painter, viewport);
    const QPolygonF shape = (transform * toDevicePixels(viewport)).map(QPolygonF(picture));
    const QPointF corner = shape.boundingRect().topLeft();
    painter.setBrush(chequers(viewport.devicePixelRatio()));
    painter.setBrushOrigin(corner.toPoint());
    painter.setPen(Qt::NoPen);
    painter.drawPolygon(shape);
    painter.restore();
}

void paintPicture(
    QPainter& painter, const ImageViewport& viewport, const QTransform& transform,
    const ImageScene::Picture& picture) {
    if (picture.image.isNull()) return;
    const QRectF target = coveredRect(picture.image.size(), picture.imageSize);
    if (picture.image.hasAlphaChannel()) paintChequers(painter, viewport, transform, target);
    painter.save();
    painter.setTransform(transform, true);
    painter.setRenderHint(QPainter::SmoothPixmapTransform, false);
    painter.drawImage(target, picture.image, QRectF(picture.image.rect()));
    painter.restore();
}

void paintDisplay(QPainter& painter, const ImageScene& scene) {
    const ImageViewport& viewport = scene.placement.viewport();
    const DisplayPicture& display = *scene.display;
    if (display.image.hasAlphaChannel())
        paintChequers(
            painter, viewport, scene.placement.drawTransform(),
            QRectF(QPointF(), scene.placement.imageSize()));
    painter.save();
    useDevicePixels(painter, viewport);
    painter.drawImage(display.rect.topLeft(), display.image);
    painter.restore();
}

/// The neighbour emerges out of the ground at its place, whatever the zoom of the present one.
void paintNeighbour(QPainter& painter, const ImageScene& scene) {
    const ImageViewport& viewport = scene.placement.viewport();
    const ImageScene::Picture& neighbour = *scene.neighbour;
    const ImagePlacement placement =
        ImagePlacement::fittedIn(viewport, neighbour.imageSize, neighbour.angle);
    const QTransform transform = placement.drawTransform();
    const QRectF frame =
        PBUtilities::imageFrameWithTransform(transform, neighbour.imageSize).adjusted(-1, -1, 1, 1);
    painter.save();
    painter.setClipRect(frame, Qt::IntersectClip);
    paintPicture(painter, viewport, transform, neighbour);
    QColor cover = scene.ground;
    cover.setAlphaF(
        static_cast<float>(neighbourCover(scene.placement.swapOffset(), viewport.rect().width())));
    painter.fillRect(frame, cover);
    painter.restore();
}

void paintMessage(QPainter& painter, const ImageScene& scene, const QFont& font) {
    const QRectF view = scene.placement.viewport().rect();
    QFont bold = font;
    bold.setPixelSize(messageFontSize);
    bold.setBold(true);
    const QFontMetricsF metrics(bold);
    const QString text = metrics.elidedText(
        scene.message, Qt::ElideMiddle, std::max(0.0, view.width() - 2 * messageMargin));
    const QRectF line(
        view.left(), view.center().y() - messageAbove, view.width(), metrics.height());
    const bool isOnPlate = scene.picture && !scene.picture->image.isNull();
    painter.save();
    if (isOnPlate) {
        // Over a picture of any colour.
        const double width = metrics.horizontalAdvance(text) + 2 * messagePadding;
        const QRectF plate = QRectF(line.center().x() - width / 2, line.top(), width, line.height())
                                 .adjusted(0, -messagePadding / 2, 0, messagePadding / 2);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(QColor(0, 0, 0, 165));
        painter.drawRoundedRect(plate, plate.height() / 2, plate.height() / 2);
    }
    painter.setFont(bold);
    const bool isOnLight = !isOnPlate && qGray(scene.ground.rgb()) > lightGround;
    painter.setPen(isOnLight ? Qt::white : Qt::black);
    painter.drawText(line.translated(0, 1), Qt::AlignCenter, text);
    painter.setPen(isOnLight ? Qt::black : Qt::white);
    painter.drawText(line, Qt::AlignCenter, text);
    painter.restore();
}

} // namespace

QColor groundColor() {
    return {groundLevel, groundLevel, groundLevel};
}

QRectF coveredRect(const QSize& picture, const QSizeF& imageSize) {
    QRectF whole(QPointF(), imageSize);
    if (picture.isEmpty() || codec::sameShape(picture, imageSize.toSize())) return whole;
    PBUtilities::fitInRect(whole, picture.width(), picture.height(), true);
    return whole;
}

DisplayState displayStateOf(
    const ImagePlacement& placement, std::shared_ptr<const PBImages> images, std::size_t frame) {
    const ImageViewport& viewport = placement.viewport();
    return {
        .images = std::move(images),
        .frame = frame,
        .imageSize = placement.imageSize(),
        .toDevicePixels = placement.drawTransform() * toDevicePixels(viewport),
        .visible = QRect(QPoint(), viewport.pixelSize().toSize())};
}

void paint(QPainter& painter, const ImageScene& scene, const QRectF& dirty, const QFont& font) {
    painter.fillRect(dirty, scene.ground);
    if (scene.neighbour) paintNeighbour(painter, scene);
    if (scene.display && !scene.display->image.isNull()) {
        paintDisplay(painter, scene);
    } else if (scene.picture) {
        paintPicture(
            painter, scene.placement.viewport(), scene.placement.drawTransform(), *scene.picture);
    }
    if (!scene.message.isEmpty()) paintMessage(painter, scene, font);
}

} // namespace ImagePainter
