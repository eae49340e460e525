#include "codec/formats/Formats.h"
#include "codec/formats/JpegXlRunner.h"
#include "codec/pixels/FrameWriter.h"
#include "codec/pixels/Geometry.h"

#include <algorithm>
#include <cstring>
#include <utility>

#include <jxl/decode.h>

namespace codec::formats {

namespace {

struct DestroyDecoder {
    void operator()(JxlDecoder* decoder) const { JxlDecoderDestroy(decoder); }
};
using Handle = std::unique_ptr<JxlDecoder, DestroyDecoder>;

Handle start(const Source& source, int events) {
    Handle handle(JxlDecoderCreate(nullptr));
    if (!handle || JxlDecoderSubscribeEvents(handle.get(), events) != JXL_DEC_SUCCESS) return {};
    JxlDecoderSetKeepOrientation(handle.get(), JXL_TRUE);
    if (JxlDecoderSetInput(handle.get(), source.bytes().data(), source.size()) != JXL_DEC_SUCCESS) {
        return {};
    }
    JxlDecoderCloseInput(handle.get());
    return handle;
}

ColourDescription coloursOf(const JxlDecoder* handle, const JxlPixelFormat& format) {
    ColourDescription colours;
    JxlColorEncoding encoding{};
    if (JxlDecoderGetColorAsEncodedProfile(
            handle, &format, JXL_COLOR_PROFILE_TARGET_DATA, &encoding) == JXL_DEC_SUCCESS &&
        (encoding.transfer_function == JXL_TRANSFER_FUNCTION_PQ ||
         encoding.transfer_function == JXL_TRANSFER_FUNCTION_HLG)) {
        // The numbers of these enumerations are the code points of H.273, but for P3.
        colours.transfer = static_cast<int>(encoding.transfer_function);
        colours.primaries =
            encoding.primaries == JXL_PRIMARIES_P3 ? 12 : static_cast<int>(encoding.primaries);
        return colours;
    }
    std::size_t length = 0;
    if (JxlDecoderGetICCProfileSize(handle, &format, JXL_COLOR_PROFILE_TARGET_DATA, &length) ==
            JXL_DEC_SUCCESS &&
        length > 0 && length < (64U << 20)) {
        colours.iccProfile.resize(static_cast<qsizetype>(length));
        if (JxlDecoderGetColorAsICCProfile(
                handle, &format, JXL_COLOR_PROFILE_TARGET_DATA,
                reinterpret_cast<std::uint8_t*>(colours.iccProfile.data()),
                length) != JXL_DEC_SUCCESS) {
            colours.iccProfile.clear();
        }
    }
    return colours;
}

class JpegXlDecoder final : public Decoder {
public:
    explicit JpegXlDecoder(Source source) : _source(std::move(source)) {}

    std::size_t frameCount() override {
        scan();
        return _delays.size();
    }

    bool isAnimation() override { return frameCount() > 1; }

    int frameDelay(std::size_t index) override {
        scan();
        return index < _delays.size() ? _delays[index] : 0;
    }

    Frame frame(const DecodeRequest& request) override {
        // Each frame of an animation is drawn upon those before it: who asks for one after the
        // other gets them in one go through the file.
        std::unique_ptr<Playback> playback = std::exchange(_playback, nullptr);
        if (!playback || playback->next != request.frame) playback = Playback::at(_source, request);
        if (!playback) return {};
        playback->runner.setStop(request.stop);
        Frame frame = nextFrame(*playback, request);
        const bool goesOn = frame.isComplete && !frame.image.isNull() && playback->state.plays;
        if (goesOn) {
            ++playback->next;
            _playback = std::move(playback);
        }
        return frame;
    }

private:
    struct State {
        QSize size;
        PixelLayout layout;
        JxlPixelFormat format{};
        ColourDescription colours;
        std::vector<std::uint64_t> pixels;
        bool plays = false;
    };

    /// A walk through the file.
    struct Playback {
        JpegXlRunner runner; // outlives the handle
        Handle handle;
        State state;
        std::size_t next; ///< frame

        Playback(const Source& source, const DecodeRequest& request)
            : runner(request.threads), handle(start(source, eventsFor(source, request))),
              next(request.frame) {}

        /// The library takes some whole files for damaged once it has stopped half-way to a
        /// picture.
        static int eventsFor(const Source& source, const DecodeRequest& request) {
            constexpr int all = JXL_DEC_BASIC_INFO | JXL_DEC_COLOR_ENCODING | JXL_DEC_FULL_IMAGE;
            const Handle handle = start(source, JXL_DEC_BASIC_INFO);
            JxlBasicInfo info;
            const bool isReduced = handle &&
                                   JxlDecoderProcessInput(handle.get()) == JXL_DEC_BASIC_INFO &&
                                   JxlDecoderGetBasicInfo(handle.get(), &info) == JXL_DEC_SUCCESS &&
                                   isReducedEnough(info, request.maxSize);
            return isReduced ? all | JXL_DEC_FRAME_PROGRESSION : all;
        }

        static std::unique_ptr<Playback> at(const Source& source, const DecodeRequest& request) {
            auto playback = std::make_unique<Playback>(source, request);
            if (!playback->handle) return nullptr;
            playback->runner.attach(playback->handle.get());
            JxlDecoderSetProgressiveDetail(playback->handle.get(), kDC);
            JxlDecoderSkipFrames(playback->handle.get(), request.frame);
            return playback;
        }
    };

    static Frame nextFrame(Playback& playback, const DecodeRequest& request) {
        JxlDecoder* handle = playback.handle.get();
        State& state = playback.state;
        while (!request.stop.isSet()) {
            switch (JxlDecoderProcessInput(handle)) {
            case JXL_DEC_BASIC_INFO:
                if (!begin(handle, request, state)) return {};
                break;
            case JXL_DEC_COLOR_ENCODING:
                state.colours = coloursOf(handle, state.format);
                break;
            case JXL_DEC_NEED_IMAGE_OUT_BUFFER:
                if (!giveBuffer(handle, state)) return {};
                break;
            case JXL_DEC_FRAME_PROGRESSION:
                // One pixel in eight by eight is known: enough for a result that small.
                if (!state.pixels.empty() && JxlDecoderFlushImage(handle) == JXL_DEC_SUCCESS)
                    return write(request, state, true);
                break;
            case JXL_DEC_FULL_IMAGE:
                return write(request, state, true);
            case JXL_DEC_SUCCESS:
                return {}; // no frame is left
            default:
                // Damaged or cut off: what came so far, if anything did.
                if (request.stop.isSet() || state.pixels.empty() ||
                    JxlDecoderFlushImage(handle) != JXL_DEC_SUCCESS) {
                    return {};
                }
                return write(request, state, false);
            }
        }
        return {};
    }

    static bool isSize(const JxlBasicInfo& info) {
        return info.xsize <= 0x3FFFFFFF && info.ysize <= 0x3FFFFFFF;
    }
    static QSize sizeOf(const JxlBasicInfo& info) {
        return {static_cast<int>(info.xsize), static_cast<int>(info.ysize)};
    }

    static bool begin(const JxlDecoder* handle, const DecodeRequest& request, State& state) {
        JxlBasicInfo info;
        if (JxlDecoderGetBasicInfo(handle, &info) != JXL_DEC_SUCCESS || !isSize(info)) return false;
        state.size = sizeOf(info);
        // The library works in floating point, three channels and more.
        if (!withinLimits(state.size, request.limits, 24)) return false;
        state.plays = info.have_animation != 0;
        state.layout.model = info.num_color_channels == 1 ? ColourModel::Gray : ColourModel::Rgb;
        state.layout.sample = info.bits_per_sample > 8 ? SampleType::U16 : SampleType::U8;
        if (info.alpha_bits > 0) {
            state.layout.alpha =
                info.alpha_premultiplied ? AlphaType::Premultiplied : AlphaType::Straight;
        }
        state.format = {
            static_cast<std::uint32_t>(state.layout.channels()),
            info.bits_per_sample > 8 ? JXL_TYPE_UINT16 : JXL_TYPE_UINT8, JXL_NATIVE_ENDIAN, 0};
        return true;
    }

    static bool giveBuffer(JxlDecoder* handle, State& state) {
        std::size_t length = 0;
        if (JxlDecoderImageOutBufferSize(handle, &state.format, &length) != JXL_DEC_SUCCESS) {
            return false;
        }
        state.pixels.assign(length / 8 + 1, 0);
        return JxlDecoderSetImageOutBuffer(handle, &state.format, state.pixels.data(), length) ==
               JXL_DEC_SUCCESS;
    }

    static bool isReducedEnough(const JxlBasicInfo& info, int maxSize) {
        if (maxSize <= 0 || info.have_animation != 0 || !isSize(info)) return false;
        const QSize size = sizeOf(info);
        const QSize wanted = reducedSize(size, maxSize);
        return wanted.width() * 8 <= size.width() && wanted.height() * 8 <= size.height();
    }

    static Frame write(const DecodeRequest& request, const State& state, bool isComplete) {
        if (state.pixels.empty()) return {};
        FrameWriter writer(request, state.size, state.size, state.layout, state.colours);
        if (!writer.isUsable()) return {};
        const std::size_t stride =
            state.layout.bytesPerPixel() * static_cast<std::size_t>(state.size.width());
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(state.pixels.data());
        for (int y = 0; y < state.size.height(); ++y, bytes += stride) {
            std::memcpy(writer.row(), bytes, stride);
            writer.rowDone();
        }
        Frame frame = writer.finish();
        frame.isComplete = frame.isComplete && isComplete;
        return frame;
    }

    void scan() {
        if (!_delays.empty()) return;
        const Handle handle = start(_source, JXL_DEC_BASIC_INFO | JXL_DEC_FRAME);
        double ticks = 0; // a second
        for (bool goesOn = handle != nullptr; goesOn;) {
            const JxlDecoderStatus status = JxlDecoderProcessInput(handle.get());
            JxlBasicInfo info;
            JxlFrameHeader header;
            if (status == JXL_DEC_BASIC_INFO &&
                JxlDecoderGetBasicInfo(handle.get(), &info) == JXL_DEC_SUCCESS) {
                if (info.have_animation && info.animation.tps_denominator > 0) {
                    ticks = static_cast<double>(info.animation.tps_numerator) /
                            info.animation.tps_denominator;
                }
            } else if (
                status == JXL_DEC_FRAME &&
                JxlDecoderGetFrameHeader(handle.get(), &header) == JXL_DEC_SUCCESS) {
                const double delay = ticks > 0 ? header.duration * 1000.0 / ticks : 0;
                _delays.push_back(static_cast<int>(std::min(delay, 1e9)));
                if (header.is_last || _delays.size() >= mostFrames) break;
            } else {
                goesOn = false;
            }
        }
        if (_delays.empty()) _delays.push_back(0);
    }

    Source _source;
    std::vector<int> _delays; // milliseconds; empty: not looked yet
    std::unique_ptr<Playback> _playback;
};

} // namespace

const Codec jpegXl = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        using namespace std::string_view_literals;
        return hasSignature(head, "\xFF\x0A"sv) || hasSignature(head, "\0\0\0\x0CJXL \r\n\x87\n"sv)
                   ? u"public.jpeg-xl"
                   : QStringView();
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        return std::make_unique<JpegXlDecoder>(source);
    }};

} // namespace codec::formats
