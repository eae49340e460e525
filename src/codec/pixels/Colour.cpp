#include "codec/pixels/Colour.h"

#include "codec/pixels/Rounding.h"
#include "codec/pixels/ToneMapping.h"

#include <lcms2.h>

#include <algorithm>
#include <cmath>
#include <cstring>

namespace codec {

namespace {

struct CloseProfile {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, CloseProfile>;
struct DeleteTransform {
    void operator()(void* transform) const { cmsDeleteTransform(transform); }
};
using Transform = std::unique_ptr<void, DeleteTransform>;
struct FreeCurve {
    void operator()(cmsToneCurve* curve) const { cmsFreeToneCurve(curve); }
};
using Curve = std::unique_ptr<cmsToneCurve, FreeCurve>;

Profile openProfile(const QByteArray& icc) {
    if (icc.isEmpty()) return nullptr;
    return Profile(
        cmsOpenProfileFromMem(icc.constData(), static_cast<cmsUInt32Number>(icc.size())));
}

cmsColorSpaceSignature signatureOf(ColourModel model) {
    switch (model) {
    case ColourModel::Gray:
        return cmsSigGrayData;
    case ColourModel::Cmyk:
        return cmsSigCmykData;
    case ColourModel::Lab:
        return cmsSigLabData;
    case ColourModel::Rgb:
        break;
    }
    return cmsSigRgbData;
}

Curve srgbCurve() {
    const double parameters[] = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
    return Curve(cmsBuildParametricToneCurve(nullptr, 4, parameters));
}

/// The curve that a code point of H.273 stands for. Pictures marked with a television curve are
/// made for screens all the same, so that they read as sRGB.
Curve curveOf(const ColourDescription& colours) {
    if (colours.gamma > 0) return Curve(cmsBuildGamma(nullptr, colours.gamma));
    switch (colours.transfer) {
    case 4:
        return Curve(cmsBuildGamma(nullptr, 2.2));
    case 5:
        return Curve(cmsBuildGamma(nullptr, 2.8));
    case 8:
        return Curve(cmsBuildGamma(nullptr, 1.0));
    default:
        return srgbCurve();
    }
}

bool hasOwnCurve(const ColourDescription& colours) {
    return colours.gamma > 0 || colours.transfer == 4 || colours.transfer == 5 ||
           colours.transfer == 8;
}

bool hasOwnPrimaries(const ColourDescription& colours) {
    static constexpr int known[] = {4, 5, 6, 7, 9, 11, 12, 22};
    return colours.chromaticities || std::ranges::count(known, colours.primaries) > 0;
}

/// The profile that the description stands for without its ICC bytes; nothing for sRGB.
Profile describedProfile(const ColourDescription& colours, ColourModel model) {
    if (model != ColourModel::Rgb && model != ColourModel::Gray) return nullptr;
    if (!hasOwnCurve(colours) && (model == ColourModel::Gray || !hasOwnPrimaries(colours))) {
        return nullptr;
    }
    const Curve curve = curveOf(colours);
    if (!curve) return nullptr;
    if (model == ColourModel::Gray) {
        return Profile(cmsCreateGrayProfile(cmsD50_xyY(), curve.get()));
    }
    const Chromaticities c =
        colours.chromaticities ? *colours.chromaticities : chromaticitiesOf(colours.primaries);
    if (std::ranges::any_of(c, [](double value) { return !(value > 0 && value < 1); })) {
        return nullptr;
    }
    const cmsCIExyY white{c[6], c[7], 1};
    const cmsCIExyYTRIPLE primaries{{c[0], c[1], 1}, {c[2], c[3], 1}, {c[4], c[5], 1}};
    cmsToneCurve* curves[] = {curve.get(), curve.get(), curve.get()};
    return Profile(cmsCreateRGBProfile(&white, &primaries, curves));
}

/// Whether the difference from sRGB is below what 8 bits can show: most files carry a copy of it.
bool isSrgb(cmsHPROFILE profile) {
    if (cmsGetColorSpace(profile) != cmsSigRgbData || !cmsIsMatrixShaper(profile)) return false;
    // sRGB's colorants, adapted to D50 (IEC 61966-2-1).
    static constexpr double colorants[3][3] = {
        {0.4360, 0.2225, 0.0139}, {0.3851, 0.7169, 0.0971}, {0.1431, 0.0606, 0.7141}};
    static constexpr cmsTagSignature colorantTags[] = {
        cmsSigRedColorantTag, cmsSigGreenColorantTag, cmsSigBlueColorantTag};
    static constexpr cmsTagSignature curveTags[] = {
        cmsSigRedTRCTag, cmsSigGreenTRCTag, cmsSigBlueTRCTag};
    for (int channel = 0; channel < 3; ++channel) {
        const auto* xyz = static_cast<const cmsCIEXYZ*>(cmsReadTag(profile, colorantTags[channel]));
        const auto* curve =
            static_cast<const cmsToneCurve*>(cmsReadTag(profile, curveTags[channel]));
        if (!xyz || !curve) return false;
        const double found[] = {xyz->X, xyz->Y, xyz->Z};
        for (int axis = 0; axis < 3; ++axis) {
            if (std::abs(found[axis] - colorants[channel][axis]) > 0.002) return false;
        }
        for (const float code : {0.02F, 0.1F, 0.25F, 0.5F, 0.75F, 0.9F}) {
            const double light =
                code <= 0.04045 ? code / 12.92 : std::pow((code + 0.055) / 1.055, 2.4);
            if (std::abs(cmsEvalToneCurveFloat(curve, code) - light) > 0.003) return false;
        }
    }
    return true;
}

/// Nothing where the two are the same for all purposes.
Transform makeTransform(
    Profile from, cmsUInt32Number fromFormat, const QByteArray& targetIcc, cmsUInt32Number toFormat,
    bool evenIfSame) {
    Profile to = openProfile(targetIcc);
    if (to && (cmsGetColorSpace(to.get()) != cmsSigRgbData || isSrgb(to.get()))) to.reset();
    if (from && isSrgb(from.get())) from.reset();
    if (!from && !to && !evenIfSame) return nullptr;
    if (!from) from.reset(cmsCreate_sRGBProfile());
    if (!to) to.reset(cmsCreate_sRGBProfile());
    // The library's table of a transform from Lab is too coarse for the dark colours.
    const cmsUInt32Number exact =
        cmsGetColorSpace(from.get()) == cmsSigLabData ? cmsFLAGS_NOOPTIMIZE : 0U;
    return Transform(cmsCreateTransform(
        from.get(), fromFormat, to.get(), toFormat, INTENT_RELATIVE_COLORIMETRIC,
        cmsFLAGS_COPY_ALPHA | cmsFLAGS_BLACKPOINTCOMPENSATION | exact));
}

cmsUInt32Number lcmsFormat(const PixelLayout& layout) {
    const cmsUInt32Number bytes = layout.sample == SampleType::U8 ? 1 : 2;
    const cmsUInt32Number extra = layout.alpha == AlphaType::None ? 0 : 1;
    cmsUInt32Number format = BYTES_SH(bytes) | EXTRA_SH(extra);
    switch (layout.model) {
    case ColourModel::Gray:
        return format | COLORSPACE_SH(PT_GRAY) | CHANNELS_SH(1U);
    case ColourModel::Cmyk:
        return format | COLORSPACE_SH(PT_CMYK) | CHANNELS_SH(4U) |
               FLAVOR_SH(layout.isInverted ? 1U : 0U);
    case ColourModel::Lab:
        return format | COLORSPACE_SH(bytes == 2 ? PT_LabV2 : PT_Lab) | CHANNELS_SH(3U);
    case ColourModel::Rgb:
        break;
    }
    return format | COLORSPACE_SH(PT_RGB) | CHANNELS_SH(3U);
}

constexpr std::uint8_t to8(std::uint16_t sample) {
    return static_cast<std::uint8_t>((sample * 255U + 32895U) >> 16); // rounded division by 257
}

std::uint16_t to16(float sample) {
    return sample > 0 ? rounded<std::uint16_t>(std::min(sample, 1.0F) * 65535.0F) : 0;
}

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

    void plainRow(const std::uint8_t* source, QRgb* destination, int width) const;
    template <typename Sample>
    void samplesRow(const Sample* source, QRgb* destination, int width) const;
    void floatRow(const float* source, QRgb* destination, int width);
    void transformRow(const std::uint8_t* source, QRgb* destination, int width);
};

ColourConverter::ColourConverter(
    const PixelLayout& layout, const ColourDescription& colours, const QByteArray& targetProfile)
    : _steps(std::make_unique<Steps>()) {
    Steps& steps = *_steps;
    steps.layout = layout;
    if (colours.isHighDynamicRange() && layout.model == ColourModel::Rgb &&
        layout.sample == SampleType::U16) {
        steps.toneMapper.emplace(colours.transfer, colours.primaries);
        steps.lastTransform =
            makeTransform(nullptr, TYPE_BGRA_8, targetProfile, TYPE_BGRA_8, false);
        return;
    }
    Profile from = openProfile(colours.iccProfile);
    if (from && cmsGetColorSpace(from.get()) != signatureOf(layout.model)) from.reset();
    if (!from) from = describedProfile(colours, layout.model);
    steps.isLinear = layout.sample == SampleType::Float && !from;
    if (layout.model == ColourModel::Lab) {
        from.reset(cmsCreateLab2Profile(nullptr));
    }
    const bool ownSpace = layout.model == ColourModel::Lab ||
                          (layout.model == ColourModel::Cmyk && from) ||
                          (layout.model == ColourModel::Gray && from);
    if (!ownSpace && (layout.sample == SampleType::U8 || !from || steps.isLinear)) {
        // The samples stand for RGB already: one cheap step, and the profile on the final pixels.
        steps.lastTransform =
            makeTransform(std::move(from), TYPE_BGRA_8, targetProfile, TYPE_BGRA_8, false);
        return;
    }
    PixelLayout samples = layout;
    if (samples.sample == SampleType::Float) samples.sample = SampleType::U16;
    // Alpha is copied only between formats with equally many extra channels.
    const cmsUInt32Number format = lcmsFormat(samples);
    steps.rowTransform =
        makeTransform(std::move(from), format, targetProfile, TYPE_BGRA_8, ownSpace);
}

ColourConverter::~ColourConverter() = default;
ColourConverter::ColourConverter(ColourConverter&&) noexcept = default;
ColourConverter& ColourConverter::operator=(ColourConverter&&) noexcept = default;

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
        std::transform(source, source + samples.size(), samples.begin(), to16);
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
        // The transform's 16-bit encoding (ICC version 2) has L = 100 at 0xFF00.
        const std::size_t channels = static_cast<std::size_t>(layout.channels());
        const std::size_t count = static_cast<std::size_t>(width) * channels;
        scratch.resize(count * 2);
        auto* samples = reinterpret_cast<std::uint16_t*>(scratch.data());
        std::memcpy(samples, source, count * 2);
        for (std::size_t index = 0; index < count; index += channels) {
            samples[index] = static_cast<std::uint16_t>(samples[index] * 0xFF00U / 0xFFFFU);
        }
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

void transformImage(QImage& image, cmsHTRANSFORM transform) {
    const bool hasAlpha = image.format() == QImage::Format_ARGB32_Premultiplied;
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        if (hasAlpha) {
            for (int x = 0; x < image.width(); ++x)
                row[x] = qUnpremultiply(row[x]);
        }
        cmsDoTransform(transform, row, row, static_cast<cmsUInt32Number>(image.width()));
        if (hasAlpha) premultiplyRow(row, image.width());
    }
}

} // namespace

void ColourConverter::finish(QImage& image) {
    if (_steps->lastTransform) transformImage(image, _steps->lastTransform.get());
}

void convertColours(QImage& image, const QByteArray& from, const QByteArray& to) {
    Profile source = openProfile(from);
    if (source && cmsGetColorSpace(source.get()) != cmsSigRgbData) source.reset();
    const Transform transform =
        makeTransform(std::move(source), TYPE_BGRA_8, to, TYPE_BGRA_8, false);
    if (transform) transformImage(image, transform.get());
}

} // namespace codec
