#include "codec/formats/Formats.h"
#include "codec/metadata/headers/ExifThumbnail.h"
#include "codec/pixels/FrameWriter.h"
#include "codec/pixels/Geometry.h"

#include <climits>
#include <csetjmp>
#include <cstdio>
#include <cstdlib>

#include <jpeglib.h>

namespace codec::formats {

namespace {

/// More scans than any encoder writes; each costs a pass over the whole picture.
constexpr int maxScans = 100;

struct ErrorState {
    jpeg_error_mgr manager;
    std::jmp_buf jump;
};

[[noreturn]] void leave(j_common_ptr info) {
    std::longjmp(reinterpret_cast<ErrorState*>(info->err)->jump, 1);
}

struct Progress {
    jpeg_progress_mgr manager;
    const StopFlag* stop;
};

void watch(j_common_ptr info) {
    auto* progress = reinterpret_cast<Progress*>(info->progress);
    const auto* decompress = reinterpret_cast<j_decompress_ptr>(info);
    if (progress->stop->isSet() || decompress->input_scan_number > maxScans) leave(info);
}

/// Everything that has to outlive a jump out of the library.
struct Session {
    jpeg_decompress_struct info{};
    ErrorState error{};
    Progress progress{};
    std::unique_ptr<FrameWriter> writer;
    unsigned char* profile = nullptr;
    ColourDescription colours;

    Session() = default;
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() {
        jpeg_destroy_decompress(&info);
        std::free(profile);
    }
};

/// The strongest reduction of the library that is still as large as the result.
void chooseScale(jpeg_decompress_struct& info, int maxSize) {
    info.scale_num = 8;
    info.scale_denom = 8;
    if (maxSize <= 0) return;
    const QSize full(static_cast<int>(info.image_width), static_cast<int>(info.image_height));
    const QSize wanted = reducedSize(full, maxSize);
    for (const unsigned eighths : {1U, 2U, 4U}) {
        info.scale_num = eighths;
        const auto scaled = [eighths](int side) {
            return static_cast<int>((static_cast<unsigned>(side) * eighths + 7) / 8);
        };
        if (scaled(full.width()) >= wanted.width() && scaled(full.height()) >= wanted.height()) {
            return;
        }
    }
    info.scale_num = 8;
}

PixelLayout chooseLayout(jpeg_decompress_struct& info) {
    PixelLayout layout;
    switch (info.jpeg_color_space) {
    case JCS_GRAYSCALE:
        info.out_color_space = JCS_GRAYSCALE;
        layout.model = ColourModel::Gray;
        break;
    case JCS_CMYK:
    case JCS_YCCK:
        info.out_color_space = JCS_CMYK;
        layout.model = ColourModel::Cmyk;
        layout.isInverted =
            info.saw_Adobe_marker; // as that maker's programs have always written it
        break;
    default:
        info.out_color_space = JCS_EXT_BGRA;
        layout.isQRgb = true;
    }
    return layout;
}

void readRows(Session& session, const Source& source, const DecodeRequest& request) {
    jpeg_decompress_struct& info = session.info;
    info.err = jpeg_std_error(&session.error.manager);
    session.error.manager.error_exit = leave;
    session.error.manager.emit_message = [](j_common_ptr common, int level) {
        if (level < 0) ++common->err->num_warnings; // damage that was bridged
    };
    session.error.manager.output_message = [](j_common_ptr) {};
    if (setjmp(session.error.jump) != 0) return; // What was written so far is the result.
    jpeg_create_decompress(&info);
    info.mem->max_memory_to_use =
        static_cast<long>(std::min<std::uint64_t>(request.limits.bytes, LONG_MAX));
    session.progress.manager.progress_monitor = watch;
    session.progress.stop = &request.stop;
    info.progress = &session.progress.manager;
    jpeg_mem_src(&info, source.bytes().data(), source.size());
    jpeg_save_markers(&info, JPEG_APP0 + 2, 0xFFFF);
    if (jpeg_read_header(&info, TRUE) != JPEG_HEADER_OK) return;
    const QSize full(static_cast<int>(info.image_width), static_cast<int>(info.image_height));
    // A file of several scans is kept as coefficients until the last one.
    if (!withinLimits(full, request.limits, jpeg_has_multiple_scans(&info) ? 6 : 0)) return;
    chooseScale(info, request.maxSize);
    const PixelLayout layout = chooseLayout(info);
    unsigned profileLength = 0;
    if (jpeg_read_icc_profile(&info, &session.profile, &profileLength)) {
        session.colours.iccProfile = QByteArray(
            reinterpret_cast<const char*>(session.profile), static_cast<qsizetype>(profileLength));
    }
    jpeg_calc_output_dimensions(&info);
    const QSize decoded(static_cast<int>(info.output_width), static_cast<int>(info.output_height));
    session.writer = std::make_unique<FrameWriter>(request, full, decoded, layout, session.colours);
    if (!session.writer->isUsable() || !jpeg_start_decompress(&info)) return;
    while (info.output_scanline < info.output_height) {
        JSAMPROW row = session.writer->row();
        if (jpeg_read_scanlines(&info, &row, 1) != 1) return;
        session.writer->rowDone();
    }
}

class JpegDecoder final : public Decoder {
public:
    explicit JpegDecoder(Source source) : _source(std::move(source)) {}

    Frame frame(const DecodeRequest& request) override {
        if (request.frame != 0) return {};
        Session session;
        readRows(session, _source, request);
        if (!session.writer) return {};
        Frame frame = session.writer->finish();
        // The library fills what is missing with gray by itself, and warns.
        if (session.error.manager.num_warnings > 0) frame.isComplete = false;
        return frame;
    }

    Frame embedded(const DecodeRequest& request) override {
        const auto thumbnail = exifThumbnail(Bytes(_source.bytes())).span();
        if (thumbnail.empty()) return {};
        const auto offset = static_cast<std::uint64_t>(thumbnail.data() - _source.bytes().data());
        return JpegDecoder(_source.part(offset, thumbnail.size())).frame(request);
    }

private:
    Source _source;
};

} // namespace

const Codec jpeg = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        return hasSignature(head, "\xFF\xD8\xFF") ? u"public.jpeg" : QStringView();
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        return std::make_unique<JpegDecoder>(source);
    }};

} // namespace codec::formats
