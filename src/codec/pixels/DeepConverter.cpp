#include "codec/pixels/DeepConverter.h"

#include "codec/pixels/Profiles.h"
#include "codec/pixels/Samples.h"
#include "codec/pixels/ToneMapping.h"

#include <cmath>
#include <vector>

namespace codec {

namespace {

constexpr std::uint16_t full = 0xFFFF;

std::uint16_t multiplied(std::uint16_t one, std::uint16_t other) {
    return static_cast<std::uint16_t>((std::uint32_t{one} * other + full / 2) / full);
}

/// sRGB's code of linear light (IEC 61966-2-1).
float encoded(float light) {
    if (!(light > 0.0031308F)) return light * 12.92F;
    return 1.055F * std::pow(light, 1 / 2.4F) - 0.055F;
}

/// One sample of the layout's depth.
class SampleReader {
public:
    SampleReader(const void* row, const PixelLayout& layout, bool isLinear)
        : _row(row), _sample(layout.sample), _isLinear(isLinear) {}

    [[nodiscard]] std::uint16_t colour(std::size_t index) const {
        if (_sample != SampleType::Float) return other(index);
        const float value = static_cast<const float*>(_row)[index];
        return to16(_isLinear ? encoded(value) : value);
    }
    [[nodiscard]] std::uint16_t alpha(std::size_t index) const {
        return _sample == SampleType::Float ? to16(static_cast<const float*>(_row)[index])
                                            : other(index);
    }

private:
    [[nodiscard]] std::uint16_t other(std::size_t index) const {
        return static_cast<const std::uint16_t*>(_row)[index];
    }

    const void* _row;
    SampleType _sample;
    bool _isLinear;
};

} // namespace

struct DeepConverter::Steps {
    PixelLayout layout;
    bool isLinear = false; // floating-point samples of light
    std::optional<ToneMapper> toneMapper;
    profiles::Transform transform; // to RGBA of 16 bits
    QByteArray profile;
    std::vector<QRgb> mapped;
    std::vector<std::uint16_t> scratch;

    void mappedRow(const void* source, std::uint16_t* destination, int width);
    void transformedRow(const void* source, std::uint16_t* destination, int width);
    void plainRow(const void* source, std::uint16_t* destination, int width) const;
    void premultiply(std::uint16_t* row, int width) const;
};

DeepConverter::DeepConverter(const PixelLayout& layout, const ColourDescription& colours)
    : _steps(std::make_unique<Steps>()) {
    Steps& steps = *_steps;
    steps.layout = layout;
    if (colours.isHighDynamicRange() && layout.model == ColourModel::Rgb &&
        layout.sample == SampleType::U16) {
        steps.toneMapper.emplace(colours.transfer, colours.primaries);
        return;
    }
    const bool isLab = layout.model == ColourModel::Lab;
    profiles::Profile from(
        isLab ? profiles::Profile(cmsCreateLab2Profile(nullptr))
              : profiles::profileOf(colours, layout.model));
    if (from && layout.model != ColourModel::Rgb) {
        PixelLayout samples = layout;
        if (samples.sample == SampleType::Float) samples.sample = SampleType::U16;
        steps.transform = profiles::makeTransform(
            std::move(from), profiles::lcmsFormat(samples), {}, TYPE_RGBA_16, true);
        return;
    }
    steps.isLinear = layout.sample == SampleType::Float && !from;
    if (from) steps.profile = profiles::ownProfile(colours, layout.model);
}

DeepConverter::~DeepConverter() = default;
DeepConverter::DeepConverter(DeepConverter&&) noexcept = default;
DeepConverter& DeepConverter::operator=(DeepConverter&&) noexcept = default;

const QByteArray& DeepConverter::profile() const {
    return _steps->profile;
}

void DeepConverter::convertRow(const void* source, std::uint16_t* destination, int width) {
    Steps& steps = *_steps;
    if (steps.toneMapper)
        steps.mappedRow(source, destination, width);
    else if (steps.transform)
        steps.transformedRow(source, destination, width);
    else
        steps.plainRow(source, destination, width);
}

void DeepConverter::Steps::mappedRow(const void* source, std::uint16_t* destination, int width) {
    mapped.resize(static_cast<std::size_t>(width));
    toneMapper->convertRow(
        static_cast<const std::uint16_t*>(source), layout.channels(), mapped.data(), width);
    for (const QRgb pixel : mapped) {
        for (const int sample : {qRed(pixel), qGreen(pixel), qBlue(pixel), qAlpha(pixel)})
            *destination++ = to16(static_cast<std::uint8_t>(sample));
    }
}

void DeepConverter::Steps::transformedRow(
    const void* source, std::uint16_t* destination, int width) {
    const auto channels = static_cast<std::size_t>(layout.channels());
    const std::size_t count = static_cast<std::size_t>(width) * channels;
    const bool isLab = layout.model == ColourModel::Lab;
    if (layout.sample == SampleType::Float || (isLab && layout.sample == SampleType::U16)) {
        scratch.resize(count);
        const SampleReader samples(source, layout, false);
        for (std::size_t index = 0; index < count; ++index)
            scratch[index] = samples.colour(index);
        if (isLab) profiles::toEngineLab(scratch.data(), count, channels);
        source = scratch.data();
    }
    // The transform leaves the alpha of opaque pictures alone.
    std::fill_n(destination, static_cast<std::size_t>(width) * 4, full);
    cmsDoTransform(transform.get(), source, destination, static_cast<cmsUInt32Number>(width));
    premultiply(destination, width);
}

void DeepConverter::Steps::plainRow(
    const void* source, std::uint16_t* destination, int width) const {
    const SampleReader samples(source, layout, isLinear);
    const auto channels = static_cast<std::size_t>(layout.channels());
    const bool hasAlpha = layout.alpha != AlphaType::None;
    for (int x = 0; x < width; ++x, destination += 4) {
        const std::size_t first = static_cast<std::size_t>(x) * channels;
        destination[3] = hasAlpha ? samples.alpha(first + channels - 1) : full;
        for (std::size_t colour = 0; colour < 3; ++colour) {
            const bool isGray = layout.model == ColourModel::Gray;
            destination[colour] = samples.colour(isGray ? first : first + colour);
        }
        if (layout.model == ColourModel::Cmyk) {
            // Plain inks on white: what is left of the light after each.
            const auto light = [&](std::uint16_t ink) {
                return layout.isInverted ? ink : static_cast<std::uint16_t>(full - ink);
            };
            const std::uint16_t black = light(samples.colour(first + 3));
            for (std::size_t colour = 0; colour < 3; ++colour)
                destination[colour] = multiplied(light(destination[colour]), black);
        }
    }
    premultiply(destination - static_cast<std::ptrdiff_t>(width) * 4, width);
}

void DeepConverter::Steps::premultiply(std::uint16_t* row, int width) const {
    if (layout.alpha != AlphaType::Straight) return;
    for (int x = 0; x < width; ++x, row += 4) {
        for (int colour = 0; colour < 3; ++colour)
            row[colour] = multiplied(row[colour], row[3]);
    }
}

} // namespace codec
