#include "viewer/slideshow/transitions/RasterTransitions.h"

#include "viewer/slideshow/transitions/RasterPixels.h"
#include "viewer/slideshow/transitions/RasterSurfaces.h"
#include "viewer/slideshow/transitions/TransitionShapes.h"

#include <cstring>
#include <vector>

namespace RasterTransitions {

namespace {

using namespace RasterPixels;

struct Rows {
    const TransitionFrame& frame;
    const Target& target;
    int first;
    int end;

    [[nodiscard]] QSize size() const { return frame.from.size(); }
    /// Calls with the rows of target, old and new picture, and their number.
    template <typename Paint>
    void forEach(const Paint& paint) const {
        const Source from(frame.from);
        const Source to(frame.to);
        for (int y = first; y < end; ++y)
            paint(target.pixels + y * target.stride, from.row(y), to.row(y), y);
    }
};

void copyPixels(QRgb* target, const QRgb* source, int count) {
    if (count > 0) std::memcpy(target, source, static_cast<std::size_t>(count) * sizeof(QRgb));
}

void paintPlain(const Rows& rows, bool isNew) {
    const int width = rows.size().width();
    rows.forEach([=](QRgb* target, const QRgb* from, const QRgb* to, int) {
        copyPixels(target, isNew ? to : from, width);
    });
}

void paintFade(const Rows& rows) {
    const unsigned weight = weightOf(static_cast<float>(rows.frame.progress));
    const int width = rows.size().width();
    rows.forEach([=](QRgb* target, const QRgb* from, const QRgb* to, int) {
        for (int x = 0; x < width; ++x)
            target[x] = mixed(from[x], to[x], weight);
    });
}

/// The shadow of an edge, by the distance from it.
std::vector<unsigned> shadowOf(const TransitionShapes::Slide& slide) {
    std::vector<unsigned> shadow;
    for (float distance = 0.5F; distance < slide.reach; ++distance) {
        const float left = 1 - distance / slide.reach;
        shadow.push_back(weightOf(slide.shade * left * left));
    }
    return shadow;
}

void paintSlide(const Rows& rows) {
    const int width = rows.size().width();
    const auto slide = TransitionShapes::slideAt(rows.size(), rows.frame.progress);
    const int edge = slide.edge;
    const int rest = width - edge;
    const std::vector<unsigned> shadow = shadowOf(slide);
    const auto reach = static_cast<int>(shadow.size());
    switch (rows.frame.style) {
    case TransitionStyle::MoveIn:
        rows.forEach([&](QRgb* target, const QRgb* from, const QRgb* to, int) {
            copyPixels(target, to + rest, edge);
            copyPixels(target + edge, from + edge, rest);
            for (int x = 0; x < std::min(reach, rest); ++x)
                target[edge + x] = darkened(target[edge + x], shadow[static_cast<std::size_t>(x)]);
        });
        break;
    case TransitionStyle::Reveal:
        rows.forEach([&](QRgb* target, const QRgb* from, const QRgb* to, int) {
            copyPixels(target, to, edge);
            copyPixels(target + edge, from, rest);
            for (int x = 0; x < std::min(reach, edge); ++x)
                target[edge - 1 - x] =
                    darkened(target[edge - 1 - x], shadow[static_cast<std::size_t>(x)]);
        });
        break;
    default:
        rows.forEach([&](QRgb* target, const QRgb* from, const QRgb* to, int) {
            copyPixels(target, to + rest, edge);
            copyPixels(target + edge, from, rest);
        });
    }
}

void paintCopyMachine(const Rows& rows) {
    const int width = rows.size().width();
    const auto bar = TransitionShapes::copyMachineAt(rows.size(), rows.frame.progress);
    struct Column {
        unsigned isNew;
        int red, green, blue;
    };
    std::vector<Column> columns;
    for (int x = 0; x < width; ++x) {
        const float distance = static_cast<float>(x) + 0.5F - bar.position;
        const float left = std::max(0.0F, 1 - (distance / bar.width) * (distance / bar.width));
        const float light = 1.3F * 255 * left * left;
        columns.push_back(
            {weightOf(0.5F - distance / (0.2F * bar.width)), static_cast<int>(0.6F * light),
             static_cast<int>(light), static_cast<int>(0.8F * light)});
    }
    rows.forEach([&](QRgb* target, const QRgb* from, const QRgb* to, int) {
        for (int x = 0; x < width; ++x) {
            const Column& column = columns[static_cast<std::size_t>(x)];
            const QRgb colour = mixed(from[x], to[x], column.isNew);
            target[x] =
                column.green == 0 ? colour : lit(colour, column.red, column.green, column.blue);
        }
    });
}

void paintSwipe(const Rows& rows) {
    const int width = rows.size().width();
    const auto wipe = TransitionShapes::swipeAt(rows.size(), rows.frame.progress);
    std::vector<unsigned> columns;
    for (int x = 0; x < width; ++x) {
        const float part =
            std::clamp((static_cast<float>(x) + 0.5F - wipe.position) / wipe.width, 0.0F, 1.0F);
        columns.push_back(weightOf(part * part * (3 - 2 * part)));
    }
    rows.forEach([&](QRgb* target, const QRgb* from, const QRgb* to, int) {
        for (int x = 0; x < width; ++x)
            target[x] = mixed(from[x], to[x], columns[static_cast<std::size_t>(x)]);
    });
}

void paintThreshold(const Rows& rows, const TransitionShapes::Threshold& shape) {
    const TransitionMap& map = *rows.frame.map;
    const int width = rows.size().width();
    const float slope = 256 / shape.softness;
    const float edge = shape.edge * slope;
    const float step = slope / 65535;
    const auto newAt = [=](std::uint16_t value) {
        const float rounded =
            std::clamp(edge - static_cast<float>(value) * step, 0.0F, 256.0F) + 0.5F;
        return static_cast<unsigned>(rounded);
    };
    const unsigned dark = weightOf(shape.shadow);
    rows.forEach([&](QRgb* target, const QRgb* from, const QRgb* to, int y) {
        const std::uint16_t* values = map.row(y);
        if (shape.shadowOffset == 0) {
            for (int x = 0; x < width; ++x)
                target[x] = mixed(from[x], to[x], newAt(values[x]));
            return;
        }
        const std::uint16_t* above = map.row(std::max(y - shape.shadowOffset, 0));
        for (int x = 0; x < width; ++x) {
            const unsigned shadow = (256 - newAt(above[x])) * dark >> 8;
            target[x] = mixed(from[x], darkened(to[x], shadow), newAt(values[x]));
        }
    });
}

void paintFlash(const Rows& rows) {
    const TransitionMap& map = *rows.frame.map;
    const int width = rows.size().width();
    const auto burst = TransitionShapes::flashAt(rows.size(), rows.frame.progress);
    const unsigned weight = weightOf(burst.mix);
    const float middleX = static_cast<float>(width) / 2;
    const float middleY = static_cast<float>(rows.size().height()) / 2;
    const float light = 255 * burst.light;
    rows.forEach([&](QRgb* target, const QRgb* from, const QRgb* to, int y) {
        const std::uint16_t* rays = map.row(y);
        const float down = static_cast<float>(y) + 0.5F - middleY;
        for (int x = 0; x < width; ++x) {
            const float right = static_cast<float>(x) + 0.5F - middleX;
            const float distance = std::sqrt(right * right + down * down) / burst.radius;
            const float ray = static_cast<float>(rays[x]) / 65535.0F;
            const float core = std::max(0.0F, 1 - distance);
            const float outer = ray * std::max(0.0F, 1 - 0.7F * distance);
            const float glow = light * (core + 0.8F * outer);
            target[x] =
                lit(mixed(from[x], to[x], weight), static_cast<int>(glow),
                    static_cast<int>(0.87F * glow), static_cast<int>(0.7F * glow));
        }
    });
}

} // namespace

Target targetOf(QImage& image) {
    return {reinterpret_cast<QRgb*>(image.bits()), image.bytesPerLine() / qsizetype{sizeof(QRgb)}};
}

void paintRows(const TransitionFrame& frame, const Target& target, int firstRow, int endRow) {
    const Rows rows{frame, target, firstRow, endRow};
    if (frame.progress <= 0 || frame.progress >= 1) return paintPlain(rows, frame.progress >= 1);
    switch (frame.style) {
    case TransitionStyle::Fade:
        return paintFade(rows);
    case TransitionStyle::MoveIn:
    case TransitionStyle::Push:
    case TransitionStyle::Reveal:
        return paintSlide(rows);
    case TransitionStyle::CopyMachine:
        return paintCopyMachine(rows);
    case TransitionStyle::Disintegrate:
        return paintThreshold(rows, TransitionShapes::disintegrateAt(rows.size(), frame.progress));
    case TransitionStyle::Dissolve:
        return paintThreshold(rows, TransitionShapes::dissolveAt(frame.progress));
    case TransitionStyle::Mod:
        return paintThreshold(rows, TransitionShapes::modAt(frame.progress));
    case TransitionStyle::Flash:
        return paintFlash(rows);
    case TransitionStyle::PageCurl:
        return RasterSurfaces::paintPageCurl(frame, target, firstRow, endRow);
    case TransitionStyle::Ripple:
        return RasterSurfaces::paintRipple(frame, target, firstRow, endRow);
    case TransitionStyle::Swipe:
        return paintSwipe(rows);
    }
}

QImage paintedFrame(const TransitionFrame& frame) {
    QImage image(frame.from.size(), QImage::Format_RGB32);
    if (!image.isNull()) paintRows(frame, targetOf(image), 0, image.height());
    return image;
}

} // namespace RasterTransitions
