#pragma once

#include "support/Support.h"

#include <QImage>

/// Encoded pictures of every format, made here: by the formats' own encoders, or byte by byte.
namespace made {

/// Red fades to the right, green downwards: wrong rows, sizes and channels all show.
[[nodiscard]] QImage gradient(QSize size);

/// The red, green and blue samples of a row, with alpha if the picture has it, of 8 bits or of more
/// in two bytes each.
[[nodiscard]] QByteArray rowOf(const QImage& image, int y, int bits, bool isLittleEndian);

/// What an encoder writes that wants a path.
[[nodiscard]] QByteArray throughFile(const std::function<void(const char* path)>& encoder);

struct Picture {
    const char* name;
    QByteArray bytes;
    /// The type that the file's name would say, where the bytes do not.
    QString typeHint = {};
    /// How far colours may be off: what the format or its encoder loses.
    int tolerance = 3;
    bool isGray = false;
};

/// Three frames of 40 x 30: all red for 50 ms; then a blue square of 10 x 10 at (5, 5) for 120 ms,
/// whose first row is transparent, and which `disposal` removes before a third one, green, at
/// (25, 15) for 10 ms.
[[nodiscard]] QByteArray gif(int disposal, bool isInterlaced);
/// Two frames of 40 x 30, red for 50 ms and half-transparent blue for 120 ms.
[[nodiscard]] QByteArray animatedWebp();

struct IconEntry {
    QImage image;
    int bits = 32; // 8 or 32 for a bitmap, 0 for PNG
};
[[nodiscard]] QByteArray icon(const std::vector<IconEntry>& entries);

/// 24 or 32 bits a pixel.
[[nodiscard]] QByteArray
tga(const QImage& image, int bits, bool hasRuns, bool isTopDown, bool isRightToLeft = false);

enum class PsdMode { Gray = 1, Rgb = 3, Cmyk = 4, Lab = 9 };
[[nodiscard]] QByteArray psd(const QImage& image, PsdMode mode, int depth, bool hasRuns);

/// Without loss; `isBare`: a code stream without the boxes around it.
[[nodiscard]] QByteArray jpeg2000(const QImage& image, bool isBare);
/// 8 or 16 bits, with alpha if the picture has it.
[[nodiscard]] QByteArray jpegXl(const QImage& image, int bits, bool isLossless);
/// Empty where the library has no encoder. 8 or 10 bits.
[[nodiscard]] QByteArray heif(const QImage& image, bool isAv1, int bits = 8);

struct TiffShape {
    bool isBig = false;
    bool isTiled = false;
    bool isPlanar = false;
    int bits = 8;
    int compression = 1;
    bool isCmyk = false;
    bool isLab = false;
};
[[nodiscard]] QByteArray tiff(const QImage& image, const TiffShape& shape);

/// 8 or 16 bits; the samples are written as they are, under the given profile.
[[nodiscard]] QByteArray
png(const QImage& image, int bits, bool isInterlaced, const QByteArray& profile = {});
/// A profile of sRGB with the roles of red and blue exchanged.
[[nodiscard]] QByteArray swappedProfile();

/// Inks stored upside down, as one maker's programs always did, or as they are.
[[nodiscard]] QByteArray cmykJpeg(const QImage& image, bool isInverted);

/// The same gradient of 160 x 96 in every format and variation.
[[nodiscard]] std::vector<Picture> gradients();

} // namespace made
