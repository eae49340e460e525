#include "viewer/feed/DisplayPicture.h"

#include "codec/Bitmaps.h"
#include "codec/pixels/Resampler.h"

#include <cmath>
#include <vector>

using codec::AxisMap;

namespace {

/// Above this many device pixels for each pixel of the file its pixels are shown as they are.
constexpr double mostSmooth = 2.0 + 1e-6;
constexpr double nothing = 1e-9;

/// Where a version lies on the device: a coordinate of the device is `factor` times one of the
/// version, plus `offset`.
struct AxisPlace {
    double factor = 1;
    double offset = 0;
};

struct Place {
    bool isOnItsSide = false; ///< the version's columns run down or up the device
    AxisPlace columns;
    AxisPlace rows;
    QRectF frame; ///< device pixels
};

std::optional<Place> placeOf(const DisplayState& state, QSize version) {
    const QTransform toFile = QTransform::fromScale(
        state.imageSize.width() / version.width(), state.imageSize.height() / version.height());
    const QTransform all = toFile * state.toDevicePixels;
    Place place;
    place.frame = all.mapRect(QRectF(QPointF(0, 0), version));
    if (std::abs(all.m12()) < nothing && std::abs(all.m21()) < nothing) {
        place.columns = {all.m11(), all.dx()};
        place.rows = {all.m22(), all.dy()};
    } else if (std::abs(all.m11()) < nothing && std::abs(all.m22()) < nothing) {
        place.isOnItsSide = true;
        place.columns = {all.m12(), all.dy()};
        place.rows = {all.m21(), all.dx()};
    } else {
        return std::nullopt;
    }
    const bool isPlaced =
        std::abs(place.columns.factor) > nothing && std::abs(place.rows.factor) > nothing;
    return isPlaced ? std::optional(place) : std::nullopt;
}

QRect roundedRect(const QRectF& rect) {
    const auto whole = [](double edge) {
        return static_cast<int>(std::lround(std::clamp(edge, -1e9, 1e9)));
    };
    const QPoint first(whole(rect.left()), whole(rect.top()));
    return {first, QPoint(whole(rect.right()) - 1, whole(rect.bottom()) - 1)};
}

AxisMap mapOf(const AxisPlace& place, int first, int count, int length, bool isFull) {
    const double pixels = std::abs(place.factor);
    const bool isSharp = isFull && pixels > mostSmooth;
    return {
        {.factor = place.factor, .offset = place.offset},
        first,
        count,
        length,
        isSharp ? AxisMap::Mode::Nearest : AxisMap::modeFor(pixels, length)};
}

QImage transposed(const QImage& image) {
    QImage turned(image.height(), image.width(), image.format());
    if (turned.isNull()) return {};
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x)
            reinterpret_cast<QRgb*>(turned.scanLine(x))[y] = row[x];
    }
    return turned;
}

} // namespace

std::optional<QRect> visibleRect(const DisplayState& state) {
    const QSize size = state.images ? state.images->imageAtIndex(state.frame).size() : QSize();
    if (size.isEmpty() || state.imageSize.isEmpty()) return std::nullopt;
    const auto place = placeOf(state, size);
    if (!place) return std::nullopt;
    return roundedRect(place->frame).intersected(state.visible);
}

double pixelsTouched(const DisplayState& state) {
    const auto rect = visibleRect(state);
    if (!rect || rect->isEmpty()) return 0;
    const QSize version = state.images->imageAtIndex(state.frame).size();
    const QRectF frame = state.toDevicePixels.mapRect(QRectF(QPointF(0, 0), state.imageSize));
    const double made = 1.0 * rect->width() * rect->height();
    const double read = 1.0 * version.width() * version.height() * made /
                        std::max(1.0, frame.width() * frame.height());
    return made + read;
}

DisplayPicture resampledPicture(const DisplayState& state, const std::function<bool()>& isStopped) {
    DisplayPicture made{state, {}, {}};
    const auto rect = visibleRect(state);
    if (!rect || rect->isEmpty()) return made;
    const QImage image = PBUtilities::standardBitmap(state.images->imageAtIndex(state.frame));
    const auto place = placeOf(state, image.size());
    if (!place) return made;

    // Along the version's own axes; a picture on its side is turned at the end.
    const QRect along =
        place->isOnItsSide ? QRect(rect->y(), rect->x(), rect->height(), rect->width()) : *rect;
    // A version of fewer pixels than the file is never sharp.
    const bool isFull =
        image.width() >= state.imageSize.width() && image.height() >= state.imageSize.height();
    const AxisMap columns = mapOf(place->columns, along.x(), along.width(), image.width(), isFull);
    const AxisMap rows = mapOf(place->rows, along.y(), along.height(), image.height(), isFull);
    made.image = codec::resampled(image, columns, rows, isStopped);
    if (place->isOnItsSide) made.image = transposed(made.image);
    if (!made.image.isNull()) made.rect = *rect;
    return made;
}
