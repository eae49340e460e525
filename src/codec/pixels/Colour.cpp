#include "codec/pixels/Colour.h"

#include "codec/pixels/Profiles.h"
#include "codec/pixels/Samples.h"
#include "codec/pixels/ToneMapping.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <thread>

namespace codec {

using profiles::makeTransform;
using profiles::Profile;
using profiles::Transform;

namespace {

void premultiplyRow(QRgb* row, int width) {
    for (int x = 0; x < width; ++x)
        row[x] = qPremultiply(row[x]);
}

} // namespace

int PixelLayout::channels() const {
    if (isQRgb) return 4;
    const int colours = model == ColourModel::Gray ? 1 : model == ColourModel::Cmyk ? 4 : 3;
    return colours + (alpha == AlphaType::None ? 0 : 1);
}

std::size_t PixelLayout::bytesPerPixel() const {
    const std::size_t bytes = sample == SampleType::U8 ? 1 : sample == SampleType::U16 ? 2 : 4;
    return static_cast<std::size_t>(channels()) * bytes;
}

struct ColourConverter::Steps {
    PixelLayout layout;
    std::optional<ToneMapper> toneMapper;
    Transform rowTransform;  // source samples to BGRA of the target
    Transform lastTransform; // BGRA to BGRA, once the picture has its size
    std::vector<std::uint8_t> scratch;
    bool isLinear = false; // floating-point samples of light
    bool isInTarget = false;
    int threads = 1;

    void plainRow(const std::uint8_t* source, QRgb* destination, int width) const;
    template <typename Sample>
    void samplesRow(const Sample* source, QRgb* destination, int width) const;
    void floatRow(const float* source, QRgb* destination, int width);
    void transformRow(const std::uint8_t* source, QRgb* destination, int width);
};

ColourConverter::ColourConverter(
    const PixelLayout& layout, const ColourDescription& colours, const QByteArray& targetProfile,
    int threads)
    : _steps(std::make_unique<Steps>()) {
    Steps& steps = *_steps;
    steps.layout = layout;
    steps.threads = threads;
    const auto users = threads > 1 ? profiles::Users::Several : profiles::Users::One;
    steps.isInTarget = profiles::isUsableTarget(targetProfile);
    if (colours.isHighDynamicRange() && layout.model == ColourModel::Rgb &&
        layout.sample == SampleType::U16) {
        steps.toneMapper.emplace(colours.transfer, colours.primaries);
        steps.lastTransform =
            makeTransform(nullptr, TYPE_BGRA_8, targetProfile, TYPE_BGRA_8, false, users);
        return;
    }
    Profile from = profiles::profileOf(colours, layout.model);
    steps.isLinear = layout.sample == SampleType::Float && !from;
    if (layout.model == ColourModel::Lab) {
        from.reset(cmsCreateLab2Profile(nullptr));
    }
    const bool ownSpace = layout.model == ColourModel::Lab ||
                          (layout.model == ColourModel::Cmyk && from) ||
                          (layout.model == ColourModel::Gray && from);
    // With eight bits between there and the screen's colours, gradients would lose steps.
    const bool isDeep =
        layout.sample == SampleType::U16 && layout.model == ColourModel::Rgb && steps.isInTarget;
    const bool isPlain = steps.isLinear || (!from && !isDeep);
    if (!ownSpace && (layout.sample == SampleType::U8 || isPlain)) {
        // The samples stand for RGB already: one cheap step, and the profile on the final pixels.
        steps.lastTransform =
            makeTransform(std::move(from), TYPE_BGRA_8, targetProfile, TYPE_BGRA_8, false, users);
        return;
    }
    PixelLayout samples = layout;
    if (samples.sample == SampleType::Float) samples.sample = SampleType::U16;
    // Alpha is copied only between formats with equally many extra channels.
    const cmsUInt32Number format = profiles::lcmsFormat(samples);
    steps.rowTransform =
        makeTransform(std::move(from), format, targetProfile, TYPE_BGRA_8, ownSpace);
}

ColourConverter::~ColourConverter() = default;
ColourConverter::ColourConverter(ColourConverter&&) noexcept = default;
ColourConverter& ColourConverter::operator=(ColourConverter&&) noexcept = default;

bool ColourConverter::isInTarget() const {
    return _steps->isInTarget;
}

bool ColourConverter::copiesRows() const {
    return _steps->layout.isQRgb && _steps->layout.alpha != AlphaType::Straight &&
           !_steps->rowTransform;
}

void ColourConverter::convertRow(const void* source, QRgb* destination, int width) {
    Steps& steps = *_steps;
    const auto* bytes = static_cast<const std::uint8_t*>(source);
    if (steps.toneMapper) {
        steps.toneMapper->convertRow(
            static_cast<const std::uint16_t*>(source), steps.layout.channels(), destination, width);
    } else if (steps.layout.sample == SampleType::Float) {
        steps.floatRow(static_cast<const float*>(source), destination, width);
    } else if (steps.rowTransform) {
        steps.transformRow(bytes, destination, width);
    } else {
        steps.plainRow(bytes, destination, width);
    }
}

void ColourConverter::Steps::plainRow(
    const std::uint8_t* source, QRgb* destination, int width) const {
    if (layout.isQRgb) {
        std::memcpy(destination, source, static_cast<std::size_t>(width) * sizeof(QRgb));
        if (layout.alpha == AlphaType::Straight) premultiplyRow(destination, width);
    } else if (layout.sample == SampleType::U8) {
        samplesRow(source, destination, width);
    } else {
        samplesRow(reinterpret_cast<const std::uint16_t*>(source), destination, width);
    }
}

template <typename Sample>
void ColourConverter::Steps::samplesRow(const Sample* source, QRgb* destination, int width) const {
    const auto byte = [](Sample sample) -> int {
        if constexpr (sizeof(Sample) == 1)
            return sample;
        else
            return to8(sample);
    };
    const int channels = layout.channels();
    const bool hasAlpha = layout.alpha != AlphaType::None;
    for (int x = 0; x < width; ++x, source += channels) {
        const int alpha = hasAlpha ? byte(source[channels - 1]) : 255;
        if (layout.model == ColourModel::Gray) {
            const int gray = byte(source[0]);
            destination[x] = qRgba(gray, gray, gray, alpha);
        } else if (layout.model == ColourModel::Cmyk) {
            // Plain inks on white: what is left of the light after each.
            int light[4];
            for (int ink = 0; ink < 4; ++ink) {
                light[ink] = layout.isInverted ? byte(source[ink]) : 255 - byte(source[ink]);
            }
            const auto mix = [&](int ink) { return (light[ink] * light[3] + 127) / 255; };
            destination[x] = qRgba(mix(0), mix(1), mix(2), alpha);
        } else {
            destination[x] = qRgba(byte(source[0]), byte(source[1]), byte(source[2]), alpha);
        }
    }
    if (layout.alpha == AlphaType::Straight) premultiplyRow(destination, width);
}

void ColourConverter::Steps::floatRow(const float* source, QRgb* destination, int width) {
    const int channels = layout.channels();
    if (!isLinear) {
        std::vector<std::uint16_t> samples(
            static_cast<std::size_t>(width) * static_cast<std::size_t>(channels));
        std::transform(source, source + samples.size(), samples.begin(), [](float sample) {
            return to16(sample);
        });
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(samples.data());
        if (rowTransform)
            transformRow(bytes, destination, width);
        else
            samplesRow(samples.data(), destination, width);
        return;
    }
    const bool hasAlpha = layout.alpha != AlphaType::None;
    const int green = layout.model == ColourModel::Gray ? 0 : 1;
    for (int x = 0; x < width; ++x, source += channels) {
        const int alpha = hasAlpha ? to8(to16(source[channels - 1])) : 255;
        destination[x] = qPremultiply(qRgba(
            encodeSrgb(source[0]), encodeSrgb(source[green]), encodeSrgb(source[green * 2]),
            alpha));
    }
}

void ColourConverter::Steps::transformRow(
    const std::uint8_t* source, QRgb* destination, int width) {
    if (layout.model == ColourModel::Lab && layout.sample != SampleType::U8) {
        const std::size_t channels = static_cast<std::size_t>(layout.channels());
        const std::size_t count = static_cast<std::size_t>(width) * channels;
        scratch.resize(count * 2);
        auto* samples = reinterpret_cast<std::uint16_t*>(scratch.data());
        std::memcpy(samples, source, count * 2);
        profiles::toEngineLab(samples, count, channels);
        source = scratch.data();
    }
    if (layout.alpha == AlphaType::None) {
        // The transform leaves the alpha bytes alone.
        std::fill_n(destination, width, 0xFF000000U);
    }
    cmsDoTransform(rowTransform.get(), source, destination, static_cast<cmsUInt32Number>(width));
    if (layout.alpha == AlphaType::Straight) premultiplyRow(destination, width);
}

namespace {

/// Rows of a picture that several threads work on.
struct TransformedPicture {
    uchar* pixels;
    std::size_t stride; // bytes
    int width;
    bool hasAlpha;
    cmsHTRANSFORM transform;
    const StopFlag& stop;

    void transformRows(int begin, int end) const {
        for (int y = begin; y < end && !stop.isSet(); ++y) {
            auto* row = reinterpret_cast<QRgb*>(pixels + static_cast<std::size_t>(y) * stride);
            if (hasAlpha) {
                for (int x = 0; x < width; ++x)
                    row[x] = qUnpremultiply(row[x]);
            }
            cmsDoTransform(transform, row, row, static_cast<cmsUInt32Number>(width));
            if (hasAlpha) premultiplyRow(row, width);
        }
    }
};

void transformImage(QImage& image, cmsHTRANSFORM transform, int threads, const StopFlag& stop) {
    const TransformedPicture picture{
        image.bits(),  static_cast<std::size_t>(image.bytesPerLine()),
        image.width(), image.format() == QImage::Format_ARGB32_Premultiplied,
        transform,     stop};
    // For less it is not worth to start threads.
    constexpr qsizetype pixelsForThread = qsizetype{1} << 18;
    const int height = image.height();
    const auto worthwhile = qsizetype{image.width()} * height / pixelsForThread;
    const int parts = static_cast<int>(std::clamp<qsizetype>(worthwhile, 1, threads));
    std::vector<std::jthread> others;
    for (int part = 1; part < parts; ++part) {
        others.emplace_back([&picture, begin = height / parts * (part - 1), rows = height / parts] {
            picture.transformRows(begin, begin + rows);
        });
    }
    picture.transformRows(height / parts * (parts - 1), height);
}

} // namespace

void ColourConverter::finish(QImage& image, const StopFlag& stop) {
    if (_steps->lastTransform)
        transformImage(image, _steps->lastTransform.get(), _steps->threads, stop);
}

void convertColours(QImage& image, const QByteArray& from, const QByteArray& to) {
    Profile source = profiles::openProfile(from);
    if (source && cmsGetColorSpace(source.get()) != cmsSigRgbData) source.reset();
    const Transform transform =
        makeTransform(std::move(source), TYPE_BGRA_8, to, TYPE_BGRA_8, false);
    if (transform) transformImage(image, transform.get(), 1, {});
}

} // namespace codec
