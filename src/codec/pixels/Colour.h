#pragma once

#include "codec/pixels/StopFlag.h"

#include <QByteArray>
#include <QImage>
#include <QRgb>

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace codec {

/// Chromaticities x and y of red, green, blue and white.
using Chromaticities = std::array<double, 8>;

/// What a file says of its colours. Nothing said means sRGB (or gray with sRGB's curve; plain
/// inks).
struct ColourDescription {
    /// Wins over the rest where it can be read and fits the picture's colour model.
    QByteArray iccProfile;
    /// Code points of ITU-T H.273; 0 or 2 means unspecified.
    int primaries = 0;
    int transfer = 0;
    /// Exponent that decodes samples to light, such as 2.2; 0 means none.
    double gamma = 0;
    std::optional<Chromaticities> chromaticities;

    /// Perceptual quantiser or hybrid log-gamma: brighter than a screen's white.
    [[nodiscard]] bool isHighDynamicRange() const {
        return iccProfile.isEmpty() && (transfer == 16 || transfer == 18);
    }
};

enum class ColourModel { Gray, Rgb, Cmyk, Lab };
enum class SampleType { U8, U16, Float };
enum class AlphaType { None, Straight, Premultiplied };

/// How a decoder delivers pixels: colour channels in the model's order, then alpha if there is one;
/// samples in the machine's byte order. Lab samples have L from 0 to the type's maximum, a and b
/// with 128 (of 256) as zero. Ink is full at the maximum.
struct PixelLayout {
    ColourModel model = ColourModel::Rgb;
    SampleType sample = SampleType::U8;
    AlphaType alpha = AlphaType::None;
    /// 8-bit RGB only: pixels lie as `QRgb`, the alpha byte 255 where there is no alpha.
    bool isQRgb = false;
    /// CMYK only: ink is full at 0.
    bool isInverted = false;

    [[nodiscard]] int channels() const;
    [[nodiscard]] std::size_t bytesPerPixel() const;
};

/// Turns rows of one layout and colour space into premultiplied pixels of the target. Not shared
/// between threads.
class ColourConverter {
public:
    /// `targetProfile`: ICC bytes, empty for sRGB; one that can't be read counts as sRGB.
    /// `threads`: how many may work on what is done at the end.
    ColourConverter(
        const PixelLayout& layout, const ColourDescription& colours,
        const QByteArray& targetProfile, int threads = 1);
    ~ColourConverter();
    ColourConverter(ColourConverter&&) noexcept;
    ColourConverter& operator=(ColourConverter&&) noexcept;

    /// Rows go through unchanged, so that a decoder may write them where they belong.
    [[nodiscard]] bool copiesRows() const;
    /// Not thread-safe; `destination` must not overlap the source.
    void convertRow(const void* source, QRgb* destination, int width);
    /// What is left to do once the picture has its final size: cheaper on few pixels than on many.
    /// Stopped, it is left half done.
    void finish(QImage& image, const StopFlag& stop = {});
    /// Whether the target is what was asked for; else it is sRGB.
    [[nodiscard]] bool isInTarget() const;

private:
    struct Steps;
    std::unique_ptr<Steps> _steps;
};

/// Converts a picture (32 bits, premultiplied or opaque) between ICC profiles in place; empty bytes
/// stand for sRGB.
void convertColours(QImage& image, const QByteArray& from, const QByteArray& to);

} // namespace codec
