#include "codec/formats/AvifSequence.h"

#include "codec/pixels/FrameWriter.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include <avif/avif.h>

namespace codec::formats {

namespace {

struct DestroyDecoder {
    void operator()(avifDecoder* decoder) const { avifDecoderDestroy(decoder); }
};
using Handle = std::unique_ptr<avifDecoder, DestroyDecoder>;

ColourDescription coloursOf(const avifImage& image) {
    ColourDescription colours;
    if (image.icc.size > 0) {
        colours.iccProfile = QByteArray(
            reinterpret_cast<const char*>(image.icc.data), static_cast<qsizetype>(image.icc.size));
    }
    colours.primaries = image.colorPrimaries;
    colours.transfer = image.transferCharacteristics;
    return colours;
}

class AvifSequenceDecoder final : public Decoder {
public:
    AvifSequenceDecoder(Source source, Handle handle)
        : _source(std::move(source)), _handle(std::move(handle)) {}

    std::size_t frameCount() override {
        return std::min(static_cast<std::size_t>(_handle->imageCount), mostFrames);
    }
    bool isAnimation() override { return true; }

    int frameDelay(std::size_t index) override {
        avifImageTiming timing;
        if (index >= frameCount() ||
            avifDecoderNthImageTiming(_handle.get(), static_cast<std::uint32_t>(index), &timing) !=
                AVIF_RESULT_OK) {
            return 0;
        }
        constexpr double longest = 1e9;
        const double milliseconds = std::rint(timing.duration * 1000);
        return milliseconds > 0 ? static_cast<int>(std::min(milliseconds, longest)) : 0;
    }

    Frame frame(const DecodeRequest& request) override {
        if (request.frame >= frameCount()) return {};
        const avifImage& image = *_handle->image;
        const QSize size(static_cast<int>(image.width), static_cast<int>(image.height));
        const bool isDeep = image.depth > 8;
        // The library keeps the frames that others are drawn upon.
        if (!withinLimits(size, request.limits, isDeep ? 32 : 16)) return {};
        _handle->maxThreads = std::max(request.threads, 1);
        // The next frame goes on from the one before; any other begins at the nearest whole one.
        if (avifDecoderNthImage(_handle.get(), static_cast<std::uint32_t>(request.frame)) !=
                AVIF_RESULT_OK ||
            request.stop.isSet()) {
            return {};
        }
        return write(*_handle->image, request);
    }

private:
    static Frame write(const avifImage& image, const DecodeRequest& request) {
        const QSize size(static_cast<int>(image.width), static_cast<int>(image.height));
        PixelLayout layout;
        layout.sample = image.depth > 8 ? SampleType::U16 : SampleType::U8;
        if (image.alphaPlane) layout.alpha = AlphaType::Straight;
        avifRGBImage rgb;
        avifRGBImageSetDefaults(&rgb, &image);
        rgb.depth = image.depth > 8 ? 16 : 8;
        rgb.format = image.alphaPlane ? AVIF_RGB_FORMAT_RGBA : AVIF_RGB_FORMAT_RGB;
        rgb.alphaPremultiplied = AVIF_FALSE;
        const std::size_t stride = layout.bytesPerPixel() * static_cast<std::size_t>(size.width());
        std::vector<std::uint64_t> pixels(stride * static_cast<std::size_t>(size.height()) / 8 + 1);
        rgb.pixels = reinterpret_cast<std::uint8_t*>(pixels.data());
        rgb.rowBytes = static_cast<std::uint32_t>(stride);
        if (avifImageYUVToRGB(&image, &rgb) != AVIF_RESULT_OK) return {};
        FrameWriter writer(request, size, size, layout, coloursOf(image));
        if (!writer.isUsable()) return {};
        for (int y = 0; y < size.height() && !writer.isStopped(); ++y) {
            std::memcpy(writer.row(), rgb.pixels + static_cast<std::size_t>(y) * stride, stride);
            writer.rowDone();
        }
        return writer.finish();
    }

    Source _source;
    Handle _handle;
};

} // namespace

std::unique_ptr<Decoder> openAvifSequence(const Source& source) {
    Handle handle(avifDecoderCreate());
    if (!handle) return nullptr;
    handle->ignoreExif = AVIF_TRUE;
    handle->ignoreXMP = AVIF_TRUE;
    handle->imageCountLimit = static_cast<std::uint32_t>(mostFrames);
    // What other programs write is not always to the letter.
    handle->strictFlags = AVIF_STRICT_DISABLED;
    if (avifDecoderSetSource(handle.get(), AVIF_DECODER_SOURCE_TRACKS) != AVIF_RESULT_OK ||
        avifDecoderSetIOMemory(handle.get(), source.bytes().data(), source.size()) !=
            AVIF_RESULT_OK ||
        avifDecoderParse(handle.get()) != AVIF_RESULT_OK || handle->imageCount < 2) {
        return nullptr;
    }
    return std::make_unique<AvifSequenceDecoder>(source, std::move(handle));
}

} // namespace codec::formats
