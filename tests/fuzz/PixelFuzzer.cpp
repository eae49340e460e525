// Any bytes as a picture file, through the decoders. The last byte says what is asked for, so that
// files that were not made for this are good seeds as they are.

#include "codec/formats/Codecs.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

/// What the file's name may say where it decides; most inputs go by their content.
constexpr std::array<QStringView, 4> typeHints{
    u"", u"public.jpeg", u"com.truevision.tga-image", u"com.adobe.raw-image"};
constexpr codec::Limits limits{std::uint64_t{1} << 18, std::uint64_t{32} << 20};

/// Every pixel of a result has to be there to be read, and a reduced one has to be reduced.
void checkFrame(const codec::Frame& frame, int maxSize) {
    const QImage& image = frame.image;
    if (image.isNull()) return;
    const bool isReduced = maxSize == 0 || (image.width() <= maxSize && image.height() <= maxSize);
    const bool isDeep = image.depth() == 64;
    const auto opaque = isDeep ? QImage::Format_RGBX64 : QImage::Format_RGB32;
    const auto other =
        isDeep ? QImage::Format_RGBA64_Premultiplied : QImage::Format_ARGB32_Premultiplied;
    const bool isStandard = image.format() == opaque || image.format() == other;
    const auto pixels = static_cast<std::uint64_t>(image.width()) * unsigned(image.height());
    if (!isReduced || !isStandard || pixels > limits.pixels) std::abort();
    unsigned sum = 0;
    for (int y = 0; y < image.height(); ++y) {
        const auto* row = reinterpret_cast<const QRgb*>(image.constScanLine(y));
        for (int x = 0; x < image.width() * (isDeep ? 2 : 1); ++x)
            sum += row[x];
    }
    asm volatile("" : : "r"(sum));
}

/// Some frames one after the other, and then the first again.
void play(const codec::Source& source, QStringView hint, codec::DecodeRequest& request) {
    try {
        const auto decoder = codec::openDecoder(source, hint);
        if (!decoder) return;
        for (const std::size_t frame : {0U, 1U, 2U, 3U, 0U}) {
            request.frame = frame;
            checkFrame(decoder->frame(request), request.maxSize);
            if (decoder->frameDelay(frame) < 0) std::abort();
        }
    } catch (const std::exception&) { // as the decoders' processes take it: no picture
        return;
    }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 2) return 0;
    const std::uint8_t wish = data[size - 1];
    const QByteArray bytes(reinterpret_cast<const char*>(data), static_cast<qsizetype>(size - 1));
    codec::DecodeRequest request;
    request.maxSize = (wish & 8U) != 0 ? 48 : 0;
    request.frame = wish >> 5U;
    request.limits = limits;
    if ((wish & 4U) != 0) request.depth = codec::Depth::Source;
    const auto source = codec::Source::fromBytes(bytes);
    if ((wish & 16U) != 0) play(source, typeHints[wish & 3U], request);
    checkFrame(codec::decode(source, typeHints[wish & 3U], request), request.maxSize);
    if (codec::countFrames(source, typeHints[wish & 3U]) > codec::mostFrames) std::abort();
    return 0;
}
