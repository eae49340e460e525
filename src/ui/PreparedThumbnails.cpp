#include "ui/PreparedThumbnails.h"

#include "codec/pixels/Geometry.h"
#include "platform/tasks/MainThread.h"

#include <QPainter>
#include <QTransform>

#include <algorithm>
#include <cmath>
#include <memory>

int quarterTurns(double rotateAngle) {
    const double turns = PBUtilities::positiveAngle(rotateAngle) / 90;
    return turns == std::floor(turns) ? static_cast<int>(turns) % 4 : 0;
}

void PreparedThumbnails::setCapacity(qsizetype bytes) {
    platform::assertMainThread();
    _pictures.setMaxCost(std::max<qsizetype>(bytes / 1024, 1024));
}

QImage PreparedThumbnails::prepare(const QImage& thumbnail, QSize pixels, double rotateAngle) {
    const int turns = quarterTurns(rotateAngle);
    const QSize unturned = turns % 2 == 0 ? pixels : pixels.transposed();
    QImage picture = thumbnail;
    if (picture.size() != unturned)
        picture = picture.scaled(unturned, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    if (turns != 0) picture = picture.transformed(QTransform().rotate(-90.0 * turns));
    if (!picture.hasAlphaChannel()) return picture.convertToFormat(QImage::Format_RGB32);
    QImage onWhite(picture.size(), QImage::Format_RGB32);
    onWhite.fill(Qt::white);
    QPainter(&onWhite).drawImage(0, 0, picture);
    return onWhite;
}

QImage PreparedThumbnails::picture(
    const QImage& thumbnail, QSize pixels, double rotateAngle, bool mayPrepare) {
    if (pixels.isEmpty()) return {};
    const Key key{thumbnail.cacheKey(), pixels.width(), pixels.height(), quarterTurns(rotateAngle)};
    if (const QImage* known = _pictures.object(key)) return *known;
    if (!mayPrepare) return {};
    const QImage picture = prepare(thumbnail, pixels, rotateAngle);
    _pictures.insert(
        key, std::make_unique<QImage>(picture).release(), // the cache owns it
        std::max<qsizetype>(picture.sizeInBytes() / 1024, 1));
    return picture;
}
