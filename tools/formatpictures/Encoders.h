#pragma once

#include <QByteArray>
#include <QImage>

#include <vector>

/// Encoders for what the program reads but does not write: by the formats' own libraries, or byte
/// by byte. Single-threaded.
namespace formatpictures {

/// Three frames of 40 x 30: all red for 50 ms; then a blue square of 10 x 10 at (5, 5) for 120 ms,
/// whose first row is transparent, and which `disposal` removes before a third one, green, at
/// (25, 15) for 10 ms.
[[nodiscard]] QByteArray gif(int disposal, bool isInterlaced);
/// The same three frames, the disposal as there; `isBehindPicture`: behind one that is no frame.
[[nodiscard]] QByteArray animatedPng(int disposal, bool isBehindPicture);
/// A film: a field of noise over which a square moves, frame by frame, at 25 frames a second.
[[nodiscard]] QByteArray gifFilm(QSize size, int frames);
/// Two frames of 40 x 30, red for 50 ms and half-transparent blue for 120 ms.
[[nodiscard]] QByteArray animatedWebp();

/// An AV1 image sequence: frames of one colour and their milliseconds. Empty where the library has
/// no encoder.
[[nodiscard]] QByteArray avifFrames(QSize size, const std::vector<std::pair<QRgb, int>>& frames);

struct IconEntry {
    QImage image;
    int bits = 32; // 8 or 32 for a bitmap, 0 for PNG
};
[[nodiscard]] QByteArray icon(const std::vector<IconEntry>& entries);

/// 24 or 32 bits a pixel.
[[nodiscard]] QByteArray
tga(const QImage& image, int bits, bool hasRuns, bool isTopDown, bool isRightToLeft = false);

/// With alpha, if an RGB picture has it: a fourth channel, and a negative number of layers that
/// says that it is the transparency.
enum class PsdMode { Gray = 1, Rgb = 3, Cmyk = 4, Lab = 9 };
[[nodiscard]] QByteArray psd(const QImage& image, PsdMode mode, int depth, bool hasRuns);

/// Without loss; `isBare`: a code stream without the boxes around it.
[[nodiscard]] QByteArray jpeg2000(const QImage& image, bool isBare);
/// 8 or 16 bits, with alpha if the picture has it.
[[nodiscard]] QByteArray jpegXl(const QImage& image, int bits, bool isLossless);
struct JpegXlFrame {
    QImage image;
    int delay = 0; // milliseconds
};
/// Plays where there are several, of one size.
[[nodiscard]] QByteArray
jpegXlFrames(const std::vector<JpegXlFrame>& frames, int bits, bool isLossless);
/// 8 or 10 bits. Empty where the library has no encoder.
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

/// A digital negative of 64 x 48 pixels, to be turned by a quarter (6), ISO 200, 1/250 s, with the
/// photographic tags where TIFF/EP has them.
[[nodiscard]] QByteArray dng();

} // namespace formatpictures
