#pragma once

#include "codec/pixels/ReducedImage.h"
#include "codec/pixels/Source.h"
#include "codec/pixels/StopFlag.h"

#include <QByteArray>
#include <QImage>
#include <QSize>
#include <QString>
#include <QStringView>

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>

/// Decoders: one small class per library behind sniff, open and frame. They run in helper processes
/// when a pool is installed (see codec/process/DecoderPool.h), in this process otherwise.
namespace codec {

/// What a decode may cost at most; beyond it the answer is nothing.
struct Limits {
    /// Pixels that the file declares for the frame.
    std::uint64_t pixels = std::uint64_t{1} << 30;
    /// Bytes that the decode may hold at once, the result included.
    std::uint64_t bytes = std::uint64_t{3} << 30;
};

/// Who waits for an answer, the most urgent first.
enum class Urgency : std::uint8_t {
    Focus,           ///< the user looks at it, or at the place where it should be
    Next,            ///< what the user may look at next
    ThumbnailOnShow, ///< of a picture that is on the screen
    Thumbnail,
    Properties,
};

/// What the pixels of a result are.
enum class Depth : std::uint8_t {
    Screen, ///< 8 bits a channel, in the profile that the request names
    Source, ///< as many as the picture has, 8 or 16, in its own profile
};

/// Makes the bitmap of a result, so that it can lie in shared memory; a null image is a refusal.
using BitmapAllocator = std::function<QImage(QSize size, QImage::Format format)>;

struct DecodeRequest {
    std::size_t frame = 0;
    /// Longest side of the result in pixels; 0 for the full size. Pictures are never enlarged.
    int maxSize = 0;
    /// How it is made smaller beyond what the format does itself.
    Reduction reduction = Reduction::Mean;
    /// Only a smaller picture that the file holds beside the frame is wanted, however small it is.
    bool onlyEmbedded = false;
    /// ICC profile of the result's colours; empty for sRGB. Not used with `Depth::Source`.
    QByteArray targetProfile = {};
    Depth depth = Depth::Screen;
    Urgency urgency = Urgency::Thumbnail;
    /// How many threads the decode may use where its library can; not below 1.
    int threads = 1;
    StopFlag stop = {};
    Limits limits = {};
    /// Empty for the heap.
    BitmapAllocator allocate = {};
};

struct Frame {
    /// `Format_ARGB32_Premultiplied`, or `Format_RGB32` when every pixel is opaque; with
    /// `Depth::Source` and more than 8 bits, `Format_RGBA64_Premultiplied` or `Format_RGBX64`. As
    /// stored: the orientation is not applied. Null: nothing could be decoded.
    QImage image;
    /// False when the file was damaged and the rest of the picture is filler.
    bool isComplete = true;
    /// ICC profile of the image's colours; empty for sRGB. For `Depth::Screen` the one that was
    /// asked for, unless that can't be used; for `Depth::Source` that of the file, or sRGB for
    /// pictures that are not in a space of red, green and blue, or brighter than white.
    QByteArray profile = {};
};

/// One opened picture. Used by one thread at a time.
class Decoder {
public:
    Decoder() = default;
    Decoder(const Decoder&) = delete;
    Decoder& operator=(const Decoder&) = delete;
    virtual ~Decoder() = default;

    /// At least 1 for a picture that can be read.
    [[nodiscard]] virtual std::size_t frameCount() { return 1; }
    /// Decodes in the cheapest way that the format has for the wanted size. Answers a null image on
    /// refusal, damage or stop.
    [[nodiscard]] virtual Frame frame(const DecodeRequest& request) = 0;
    /// The smaller picture that a camera put beside the frame, as stored; a null image where there
    /// is none. It may have another shape, with black bars.
    [[nodiscard]] virtual Frame embedded(const DecodeRequest& /*request*/) { return {}; }
    /// What the request wants of the two.
    [[nodiscard]] Frame wanted(const DecodeRequest& request) {
        return request.onlyEmbedded ? embedded(request) : frame(request);
    }
    /// Whether the frames are to be played one after the other: the pages of a document are not.
    [[nodiscard]] virtual bool isAnimation() { return false; }
    /// Time that the frame of an animation stays, in milliseconds, as the file says it; 0 for a
    /// still picture.
    [[nodiscard]] virtual int frameDelay(std::size_t /*index*/) { return 0; }
};

/// More frames than any animation has; what goes beyond is not looked at.
inline constexpr std::size_t mostFrames = 100'000;

/// For how long a frame whose file says so many milliseconds is shown: files that say nothing, or a
/// hundredth of a second, were made for programs that took a tenth.
[[nodiscard]] constexpr int shownDelay(int milliseconds) {
    constexpr int tooShort = 10;
    constexpr int usual = 100;
    return milliseconds <= tooShort ? usual : milliseconds;
}

/// One row of the table of decoders.
struct Codec {
    /// The type identifier that the first bytes say, or an empty view when it is another format.
    /// Gets the first `sniffLength` bytes, or all of a shorter file, and the type that the file's
    /// name says (may be empty).
    QStringView (*sniff)(std::span<const std::uint8_t> head, QStringView typeHint);
    /// Nothing when the header is unusable.
    std::unique_ptr<Decoder> (*open)(const Source& source);
};
using CodecTable = std::span<const Codec>;
inline constexpr std::size_t sniffLength = 64;

} // namespace codec
