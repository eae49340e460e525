#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"
#include "codec/pixels/Geometry.h"

#include <algorithm>
#include <cstring>

#include <openjpeg.h>

namespace codec::formats {

namespace {

struct DestroyCodec {
    void operator()(opj_codec_t* object) const { opj_destroy_codec(object); }
};
struct DestroyStream {
    void operator()(opj_stream_t* stream) const { opj_stream_destroy(stream); }
};
struct DestroyImage {
    void operator()(opj_image_t* image) const { opj_image_destroy(image); }
};
using CodecHandle = std::unique_ptr<opj_codec_t, DestroyCodec>;
using Stream = std::unique_ptr<opj_stream_t, DestroyStream>;
using ImageHandle = std::unique_ptr<opj_image_t, DestroyImage>;

/// The file, until somebody wants no more of it. The library can't be stopped otherwise: within a
/// tile it works on without asking.
struct Input {
    ByteReader reader;
    const StopFlag& stop;
};

/// Read at once, so that small tiles are few between two looks at the stop.
constexpr OPJ_SIZE_T bytesAtOnce = OPJ_SIZE_T{64} << 10;

Stream openStream(Input& input, std::size_t length) {
    Stream stream(opj_stream_create(bytesAtOnce, OPJ_TRUE));
    if (!stream) return {};
    opj_stream_set_user_data(stream.get(), &input, nullptr);
    opj_stream_set_user_data_length(stream.get(), length);
    opj_stream_set_read_function(
        stream.get(), [](void* target, OPJ_SIZE_T count, void* user) -> OPJ_SIZE_T {
            auto* file = static_cast<Input*>(user);
            if (file->stop.isSet()) return static_cast<OPJ_SIZE_T>(-1);
            const auto bytes = file->reader.take(count);
            if (bytes.empty()) return static_cast<OPJ_SIZE_T>(-1);
            std::memcpy(target, bytes.data(), bytes.size());
            return bytes.size();
        });
    opj_stream_set_skip_function(stream.get(), [](OPJ_OFF_T count, void* user) -> OPJ_OFF_T {
        auto* bytes = &static_cast<Input*>(user)->reader;
        if (count < 0 || static_cast<std::uint64_t>(count) > bytes->left()) return -1;
        bytes->skip(static_cast<std::uint64_t>(count));
        return count;
    });
    opj_stream_set_seek_function(stream.get(), [](OPJ_OFF_T position, void* user) -> OPJ_BOOL {
        auto* bytes = &static_cast<Input*>(user)->reader;
        if (position < 0 ||
            static_cast<std::uint64_t>(position) > bytes->position() + bytes->left()) {
            return OPJ_FALSE;
        }
        bytes->seek(static_cast<std::uint64_t>(position));
        return OPJ_TRUE;
    });
    return stream;
}

/// How many halvings still leave the picture as large as the result.
OPJ_UINT32 chooseReduction(opj_codec_t* handle, QSize full, int maxSize) {
    if (maxSize <= 0) return 0;
    opj_codestream_info_v2_t* info = opj_get_cstr_info(handle);
    OPJ_UINT32 most = 0;
    if (info && info->m_default_tile_info.tccp_info) {
        most = info->m_default_tile_info.tccp_info[0].numresolutions;
    }
    opj_destroy_cstr_info(&info);
    const QSize wanted = reducedSize(full, maxSize);
    OPJ_UINT32 factor = 0;
    while (factor + 1 < most && full.width() >> (factor + 1) >= wanted.width() &&
           full.height() >> (factor + 1) >= wanted.height()) {
        ++factor;
    }
    return factor;
}

/// One component's value at a pixel of the first component's grid, spread over 16 bits.
unsigned
sampleAt(const opj_image_comp_t& component, unsigned x, unsigned y, const opj_image_comp_t& first) {
    const std::uint64_t column = std::uint64_t{x} * component.w / first.w;
    const std::uint64_t row = std::uint64_t{y} * component.h / first.h;
    std::int64_t value = component.data[row * component.w + column];
    if (component.sgnd) value += std::int64_t{1} << (component.prec - 1);
    const std::int64_t most = (std::int64_t{1} << component.prec) - 1;
    return static_cast<unsigned>(std::clamp<std::int64_t>(value, 0, most) * 65535 / most);
}

bool isUsable(const opj_image_t& image) {
    if (image.numcomps < 1 || !image.comps) return false;
    for (OPJ_UINT32 index = 0; index < image.numcomps; ++index) {
        const opj_image_comp_t& component = image.comps[index];
        if (!component.data || component.w == 0 || component.h == 0 || component.prec < 1 ||
            component.prec > 31) {
            return false;
        }
    }
    return true;
}

void fromLumaChroma(std::uint16_t* pixel) {
    const double luma = pixel[0];
    const double blue = pixel[1] - 32768.0;
    const double red = pixel[2] - 32768.0;
    const double rgb[] = {
        luma + 1.402 * red, luma - 0.344136 * blue - 0.714136 * red, luma + 1.772 * blue};
    for (int channel = 0; channel < 3; ++channel) {
        pixel[channel] = static_cast<std::uint16_t>(std::clamp(rgb[channel], 0.0, 65535.0));
    }
}

Frame write(const opj_image_t& image, QSize full, const DecodeRequest& request) {
    PixelLayout layout;
    layout.sample = SampleType::U16;
    OPJ_UINT32 colours = image.numcomps >= 3 ? 3 : 1;
    if (image.color_space == OPJ_CLRSPC_CMYK && image.numcomps >= 4) {
        layout.model = ColourModel::Cmyk;
        colours = 4;
    } else if (colours == 1) {
        layout.model = ColourModel::Gray;
    }
    if (image.numcomps > colours && colours != 4) layout.alpha = AlphaType::Straight;
    ColourDescription description;
    if (image.icc_profile_buf && image.icc_profile_len > 0) {
        description.iccProfile = QByteArray(
            reinterpret_cast<const char*>(image.icc_profile_buf),
            static_cast<qsizetype>(image.icc_profile_len));
    }
    const bool hasChroma = colours == 3 && (image.color_space == OPJ_CLRSPC_SYCC ||
                                            image.color_space == OPJ_CLRSPC_EYCC ||
                                            image.comps[1].dx != image.comps[0].dx);
    const opj_image_comp_t& first = image.comps[0];
    const QSize size(static_cast<int>(first.w), static_cast<int>(first.h));
    FrameWriter writer(request, full, size, layout, description);
    if (!writer.isUsable()) return {};
    const auto channels = static_cast<OPJ_UINT32>(layout.channels());
    for (unsigned y = 0; y < first.h && !writer.isStopped(); ++y) {
        auto* pixel = reinterpret_cast<std::uint16_t*>(writer.row());
        for (unsigned x = 0; x < first.w; ++x, pixel += channels) {
            for (OPJ_UINT32 channel = 0; channel < channels; ++channel) {
                pixel[channel] =
                    static_cast<std::uint16_t>(sampleAt(image.comps[channel], x, y, first));
            }
            if (hasChroma) fromLumaChroma(pixel);
        }
        writer.rowDone();
    }
    return writer.finish();
}

class Jpeg2000Decoder final : public Decoder {
public:
    explicit Jpeg2000Decoder(Source source) : _source(std::move(source)) {}

    Frame frame(const DecodeRequest& request) override {
        if (request.frame != 0) return {};
        const bool isBare = _source.bytes()[0] == 0xFF;
        const CodecHandle handle(opj_create_decompress(isBare ? OPJ_CODEC_J2K : OPJ_CODEC_JP2));
        Input input{ByteReader(_source.bytes()), request.stop};
        const Stream stream = openStream(input, _source.size());
        opj_dparameters_t parameters;
        opj_set_default_decoder_parameters(&parameters);
        if (!handle || !stream || !opj_setup_decoder(handle.get(), &parameters)) return {};
        // The library's lenient mode reads past its buffers on damaged packets: a picture that is
        // cut off is nothing.
        opj_decoder_set_strict_mode(handle.get(), OPJ_TRUE);
        if (request.threads > 1) opj_codec_set_threads(handle.get(), request.threads);
        opj_image_t* found = nullptr;
        const bool hasHeader = opj_read_header(stream.get(), handle.get(), &found);
        const ImageHandle image(found);
        if (!hasHeader || !image || image->x1 <= image->x0 || image->y1 <= image->y0) return {};
        const OPJ_UINT32 width = image->x1 - image->x0;
        const OPJ_UINT32 height = image->y1 - image->y0;
        if (width > 0x3FFFFFFF || height > 0x3FFFFFFF) return {};
        const QSize full(static_cast<int>(width), static_cast<int>(height));
        const OPJ_UINT32 factor = chooseReduction(handle.get(), full, request.maxSize);
        const QSize decoded(
            std::max(1, full.width() >> factor), std::max(1, full.height() >> factor));
        const std::uint64_t bytes = std::uint64_t{8} * std::max(1U, image->numcomps);
        if (!withinLimits(full, request.limits) || !withinLimits(decoded, request.limits, bytes)) {
            return {};
        }
        if (factor > 0 && !opj_set_decoded_resolution_factor(handle.get(), factor)) return {};
        const bool isComplete = opj_decode(handle.get(), stream.get(), image.get());
        if (!isUsable(*image) || request.stop.isSet()) return {};
        Frame frame = write(*image, full, request);
        frame.isComplete = frame.isComplete && isComplete;
        return frame;
    }

private:
    Source _source;
};

} // namespace

const Codec jpeg2000 = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        using namespace std::string_view_literals;
        return hasSignature(head, "\0\0\0\x0CjP  \r\n\x87\n"sv) ||
                       hasSignature(head, "\xFF\x4F\xFF\x51"sv)
                   ? u"public.jpeg-2000"
                   : QStringView();
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        return std::make_unique<Jpeg2000Decoder>(source);
    }};

} // namespace codec::formats
