#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"
#include "codec/pixels/Geometry.h"
#include "platform/files/TypeIdentifiers.h"

#include <algorithm>
#include <cstring>

#include <libraw/libraw.h>

/// Of the runtime that the library is built with: how many threads the caller's next loops get.
/// Declared here, since its header belongs to one compiler.
extern "C" void omp_set_num_threads(int count);

namespace codec::formats {

namespace {

struct ClearImage {
    void operator()(libraw_processed_image_t* image) const { LibRaw::dcraw_clear_mem(image); }
};
using ProcessedImage = std::unique_ptr<libraw_processed_image_t, ClearImage>;

/// A camera raw file: the preview that the camera put into it where that is large enough, else the
/// sensor's data, developed. The library's object is unusable after some errors, so that each step
/// takes a new one; opening reads the header only.
class RawDecoder final : public Decoder {
public:
    RawDecoder(Source source, QSize full) : _source(std::move(source)), _full(full) {}

    static std::unique_ptr<LibRaw> openRaw(const Source& source) {
        auto raw = std::make_unique<LibRaw>(LIBRAW_OPIONS_NO_DATAERR_CALLBACK);
        raw->imgdata.params.user_flip = 0; // as stored
        auto* bytes = const_cast<std::uint8_t*>(source.bytes().data());
        if (raw->open_buffer(bytes, source.size()) != LIBRAW_SUCCESS) return nullptr;
        return raw;
    }

    Frame frame(const DecodeRequest& request) override {
        if (request.frame != 0 || !withinLimits(_full, request.limits)) return {};
        Frame frame = previewFrame(request);
        if (!frame.image.isNull() || request.stop.isSet()) return frame;
        return developedFrame(request);
    }

    Frame embedded(const DecodeRequest& request) override { return previewFrame(request); }

private:
    Frame previewFrame(const DecodeRequest& request) const {
        const auto raw = openRaw(_source);
        if (!raw) return {};
        const libraw_thumbnail_t& preview = raw->imgdata.thumbnail;
        if (preview.twidth > 0 && !isLargeEnough(QSize(preview.twidth, preview.theight), request)) {
            return {};
        }
        if (raw->unpack_thumb() != LIBRAW_SUCCESS || !preview.thumb) return {};
        if (preview.tformat != LIBRAW_THUMBNAIL_JPEG) return {};
        const Source content =
            Source::fromBytes(QByteArray(preview.thumb, static_cast<qsizetype>(preview.tlength)));
        // Its real size is known only now: some files keep it to themselves.
        if (jpeg.sniff(content.bytes(), {}).isEmpty()) return {};
        DecodeRequest inner = request;
        inner.frame = 0;
        Frame frame = jpeg.open(content)->frame(inner);
        return isLargeEnough(frame.image.size(), request) ? frame : Frame();
    }

    /// Whether a preview of this size can stand for the picture at the wanted size. Previews of the
    /// full size differ by the sensor's border.
    [[nodiscard]] bool isLargeEnough(QSize size, const DecodeRequest& request) const {
        if (request.onlyEmbedded) return !size.isEmpty();
        if (size.isEmpty() || !sameShape(size, _full)) return false;
        const QSize wanted = reducedSize(_full, request.maxSize);
        const int part = request.maxSize == 0 || wanted == _full ? 96 : 98;
        return size.width() * 100LL >= wanted.width() * part * 1LL;
    }

    Frame developedFrame(const DecodeRequest& request) const {
        const auto raw = openRaw(_source);
        if (!raw) return {};
        const QSize sensor(raw->imgdata.sizes.raw_width, raw->imgdata.sizes.raw_height);
        if (!withinLimits(sensor, request.limits, 20)) return {};
        const QSize wanted = reducedSize(_full, request.maxSize);
        auto& parameters = raw->imgdata.params;
        parameters.use_camera_wb = 1;
        const bool isDeep = request.depth == Depth::Source;
        parameters.output_bps = isDeep ? 16 : 8;
        parameters.output_color = 1; // sRGB
        parameters.user_qual = 2;    // patterned pixel grouping
        parameters.half_size =
            wanted.width() * 2 <= _full.width() && wanted.height() * 2 <= _full.height() ? 1 : 0;
        raw->set_progress_handler(
            [](void* stop, LibRaw_progress, int, int) {
                return static_cast<const StopFlag*>(stop)->isSet() ? 1 : 0;
            },
            const_cast<StopFlag*>(&request.stop));
        // It takes all cores otherwise, for each of the thumbnails that are made side by side.
        omp_set_num_threads(std::max(1, request.threads));
        if (raw->unpack() != LIBRAW_SUCCESS || raw->dcraw_process() != LIBRAW_SUCCESS) return {};
        int error = LIBRAW_SUCCESS;
        const ProcessedImage image(raw->dcraw_make_mem_image(&error));
        if (!image || image->type != LIBRAW_IMAGE_BITMAP || image->bits != parameters.output_bps ||
            (image->colors != 3 && image->colors != 1)) {
            return {};
        }
        PixelLayout layout;
        layout.model = image->colors == 1 ? ColourModel::Gray : ColourModel::Rgb;
        layout.sample = isDeep ? SampleType::U16 : SampleType::U8;
        const QSize size(image->width, image->height);
        FrameWriter writer(request, _full, size, layout, {});
        const std::size_t stride = static_cast<std::size_t>(size.width()) * layout.bytesPerPixel();
        if (!writer.isUsable() || stride * image->height > image->data_size) return {};
        for (int y = 0; y < size.height(); ++y) {
            std::memcpy(writer.row(), image->data + static_cast<std::size_t>(y) * stride, stride);
            writer.rowDone();
        }
        return writer.finish();
    }

    Source _source;
    QSize _full;
};

std::unique_ptr<Decoder> openRawDecoder(const Source& source) {
    const auto raw = RawDecoder::openRaw(source);
    if (!raw || raw->adjust_sizes_info_only() != LIBRAW_SUCCESS) return nullptr;
    const QSize full(raw->imgdata.sizes.iwidth, raw->imgdata.sizes.iheight);
    if (full.isEmpty()) return nullptr;
    return std::make_unique<RawDecoder>(source, full);
}

} // namespace

const Codec raw = {
    [](std::span<const std::uint8_t>, QStringView typeHint) -> QStringView {
        using namespace platform::TypeIdentifiers;
        return conformsTo(typeHint, cameraRawImage) ? typeHint : QStringView();
    },
    openRawDecoder};

const Codec rawBySignature = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        using namespace std::string_view_literals;
        if (hasSignature(head, "FUJIFILMCCD-RAW")) return u"com.fuji.raw-image";
        if (hasSignature(head, "ftypcrx ", 4)) return u"com.canon.cr3-raw-image";
        if (hasSignature(head, "HEAPCCDR", 6)) return u"com.canon.crw-raw-image";
        if (hasSignature(head, "CR\2", 8)) return u"com.canon.cr2-raw-image";
        if (hasSignature(head, "FOVb")) return u"com.sigma.raw-image";
        if (hasSignature(head, "\0MRM"sv)) return u"com.konicaminolta.raw-image";
        if (hasSignature(head, "IIU\0"sv)) return u"com.panasonic.rw2-raw-image";
        for (const std::string_view signature : {"IIRO", "IIRS", "MMOR"}) {
            if (hasSignature(head, signature)) return u"com.olympus.raw-image";
        }
        return {};
    },
    openRawDecoder};

} // namespace codec::formats
