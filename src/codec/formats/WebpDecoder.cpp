#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"
#include "codec/pixels/Geometry.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include <webp/decode.h>
#include <webp/demux.h>

namespace codec::formats {

namespace {

struct DeleteDemuxer {
    void operator()(WebPDemuxer* demuxer) const { WebPDemuxDelete(demuxer); }
};
struct DeleteAnimation {
    void operator()(WebPAnimDecoder* animation) const { WebPAnimDecoderDelete(animation); }
};

class WebpDecoder final : public Decoder {
public:
    WebpDecoder(Source source, std::unique_ptr<WebPDemuxer, DeleteDemuxer> demuxer)
        : _source(std::move(source)),
          _demuxer(std::move(demuxer)), _data{_source.bytes().data(), _source.size()} {}

    std::size_t frameCount() override {
        const std::size_t count = WebPDemuxGetI(_demuxer.get(), WEBP_FF_FRAME_COUNT);
        return std::clamp<std::size_t>(count, 1, mostFrames);
    }

    bool isAnimation() override { return hasAnimation() && frameCount() > 1; }

    Frame frame(const DecodeRequest& request) override {
        if (request.frame >= frameCount()) return {};
        return hasAnimation() ? animatedFrame(request) : stillFrame(request);
    }

    int frameDelay(std::size_t index) override {
        WebPIterator iterator;
        if (!hasAnimation() || index >= frameCount() ||
            !WebPDemuxGetFrame(_demuxer.get(), static_cast<int>(index) + 1, &iterator)) {
            return 0;
        }
        const int delay = iterator.duration;
        WebPDemuxReleaseIterator(&iterator);
        return delay;
    }

private:
    [[nodiscard]] bool hasAnimation() const {
        return (WebPDemuxGetI(_demuxer.get(), WEBP_FF_FORMAT_FLAGS) & ANIMATION_FLAG) != 0;
    }

    [[nodiscard]] ColourDescription colours() const {
        ColourDescription description;
        WebPChunkIterator chunk;
        if (WebPDemuxGetChunk(_demuxer.get(), "ICCP", 1, &chunk)) {
            description.iccProfile = QByteArray(
                reinterpret_cast<const char*>(chunk.chunk.bytes),
                static_cast<qsizetype>(chunk.chunk.size));
            WebPDemuxReleaseChunkIterator(&chunk);
        }
        return description;
    }

    Frame stillFrame(const DecodeRequest& request) const {
        WebPDecoderConfig config;
        if (!WebPInitDecoderConfig(&config) ||
            WebPGetFeatures(_data.bytes, _data.size, &config.input) != VP8_STATUS_OK) {
            return {};
        }
        const QSize full(config.input.width, config.input.height);
        // The library reduces while it decodes, by areas: some way only where a filter comes next.
        const int room = request.reduction == Reduction::Filtered ? 3 : 1;
        const QSize wanted = reducedSize(full, std::min(request.maxSize, INT_MAX / room) * room);
        if (!withinLimits(full, request.limits, 8)) return {};
        PixelLayout layout;
        layout.isQRgb = true;
        layout.alpha = config.input.has_alpha ? AlphaType::Premultiplied : AlphaType::None;
        FrameWriter writer(request, full, wanted, layout, colours());
        if (!writer.isUsable()) return {};
        const std::size_t stride = static_cast<std::size_t>(wanted.width()) * sizeof(QRgb);
        std::vector<QRgb> pixels(
            static_cast<std::size_t>(wanted.width()) * static_cast<std::size_t>(wanted.height()));
        config.options.use_threads = request.threads > 1 ? 1 : 0;
        config.options.use_scaling = wanted != full;
        config.options.scaled_width = wanted.width();
        config.options.scaled_height = wanted.height();
        config.output.colorspace = config.input.has_alpha ? MODE_bgrA : MODE_BGRA;
        config.output.is_external_memory = 1;
        config.output.u.RGBA = {
            reinterpret_cast<std::uint8_t*>(pixels.data()), static_cast<int>(stride),
            pixels.size() * sizeof(QRgb)};
        const int rows = decodeRows(config, wanted.height(), request.stop);
        WebPFreeDecBuffer(&config.output);
        if (request.stop.isSet()) return {};
        for (int y = 0; y < rows; ++y) {
            std::memcpy(
                writer.row(),
                pixels.data() +
                    static_cast<std::size_t>(y) * static_cast<std::size_t>(wanted.width()),
                stride);
            writer.rowDone();
        }
        return writer.finish();
    }

    /// The number of rows that are good. The library gets the file bit by bit, so that it can be
    /// stopped in between.
    int decodeRows(WebPDecoderConfig& config, int height, const StopFlag& stop) const {
        constexpr std::size_t bit = std::size_t{32} << 10;
        WebPIDecoder* incremental = WebPIDecode(nullptr, 0, &config);
        if (!incremental) return 0;
        VP8StatusCode status = VP8_STATUS_SUSPENDED;
        for (std::size_t given = 0; status == VP8_STATUS_SUSPENDED && given < _data.size;) {
            if (stop.isSet()) break;
            given = std::min(given + bit, _data.size);
            status = WebPIUpdate(incremental, _data.bytes, given);
        }
        int rows = 0;
        if (status == VP8_STATUS_OK)
            rows = height;
        else
            WebPIDecGetRGB(incremental, &rows, nullptr, nullptr, nullptr);
        WebPIDelete(incremental);
        return std::clamp(rows, 0, height);
    }

    Frame animatedFrame(const DecodeRequest& request) {
        const QSize size(
            static_cast<int>(WebPDemuxGetI(_demuxer.get(), WEBP_FF_CANVAS_WIDTH)),
            static_cast<int>(WebPDemuxGetI(_demuxer.get(), WEBP_FF_CANVAS_HEIGHT)));
        if (!withinLimits(size, request.limits, 12)) return {};
        WebPAnimDecoderOptions options;
        if (!WebPAnimDecoderOptionsInit(&options)) return {};
        options.color_mode = MODE_bgrA;
        options.use_threads = request.threads > 1 ? 1 : 0;
        // The library draws one frame upon the other, and goes forwards only.
        if (!_animation || _next > request.frame + 1) {
            _animation.reset(WebPAnimDecoderNew(&_data, &options));
            _next = 0;
        }
        while (_animation && _next <= request.frame) {
            int time = 0;
            if (request.stop.isSet()) return {};
            if (WebPAnimDecoderGetNext(_animation.get(), &_canvas, &time)) {
                ++_next;
            } else {
                _animation.reset();
            }
        }
        if (!_animation) return {};
        const std::uint8_t* pixels = _canvas;
        PixelLayout layout;
        layout.isQRgb = true;
        layout.alpha = AlphaType::Premultiplied;
        FrameWriter writer(request, size, size, layout, colours());
        if (!writer.isUsable()) return {};
        const std::size_t stride = static_cast<std::size_t>(size.width()) * sizeof(QRgb);
        for (int y = 0; y < size.height(); ++y, pixels += stride) {
            std::memcpy(writer.row(), pixels, stride);
            writer.rowDone();
        }
        return writer.finish();
    }

    Source _source;
    std::unique_ptr<WebPDemuxer, DeleteDemuxer> _demuxer;
    WebPData _data;
    std::unique_ptr<WebPAnimDecoder, DeleteAnimation> _animation;
    std::size_t _next = 0;           // frame of the animation
    std::uint8_t* _canvas = nullptr; // of the animation, as the frame before that left it
};

} // namespace

const Codec webp = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        return hasSignature(head, "RIFF") && hasSignature(head, "WEBP", 8) ? u"org.webmproject.webp"
                                                                           : QStringView();
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        const WebPData data{source.bytes().data(), source.size()};
        WebPDemuxState state{};
        std::unique_ptr<WebPDemuxer, DeleteDemuxer> demuxer(WebPDemuxPartial(&data, &state));
        if (!demuxer) return nullptr;
        return std::make_unique<WebpDecoder>(source, std::move(demuxer));
    }};

} // namespace codec::formats
