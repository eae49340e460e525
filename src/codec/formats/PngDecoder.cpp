#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"

#include <bit>
#include <csetjmp>
#include <cstring>

#include <png.h>

namespace codec::formats {

namespace {

struct Session {
    png_structp png = nullptr;
    png_infop info = nullptr;
    ByteReader reader;
    std::unique_ptr<FrameWriter> writer;
    ColourDescription colours;
    std::vector<std::uint64_t> pixels; // an interlaced picture, whole
    std::vector<png_bytep> rows;
    std::size_t rowBytes = 0;
    bool hasRows = false; // of an interlaced picture
    bool isWhole = false;

    explicit Session(const Source& source) : reader(source.bytes()) {
        png = png_create_read_struct(
            PNG_LIBPNG_VER_STRING, nullptr,
            [](png_structp png_, png_const_charp) { png_longjmp(png_, 1); },
            [](png_structp, png_const_charp) {});
        if (png) info = png_create_info_struct(png);
    }
    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;
    ~Session() { png_destroy_read_struct(&png, &info, nullptr); }
};

void readBytes(png_structp png, png_bytep destination, std::size_t length) {
    auto* session = static_cast<Session*>(png_get_io_ptr(png));
    const auto bytes = session->reader.take(length);
    if (bytes.size() < length) png_error(png, "end of file");
    std::memcpy(destination, bytes.data(), length);
}

void readColours(Session& session) {
    png_charp name = nullptr;
    png_bytep profile = nullptr;
    png_uint_32 length = 0;
    int number = 0;
    if (png_get_iCCP(session.png, session.info, &name, &number, &profile, &length)) {
        session.colours.iccProfile =
            QByteArray(reinterpret_cast<const char*>(profile), static_cast<qsizetype>(length));
        return;
    }
    if (png_get_sRGB(session.png, session.info, &number)) return;
    double gamma = 0;
    if (!png_get_gAMA(session.png, session.info, &gamma) || gamma < 0.05 || gamma > 5) return;
    Chromaticities c{};
    if (png_get_cHRM(
            session.png, session.info, &c[6], &c[7], &c[0], &c[1], &c[2], &c[3], &c[4], &c[5])) {
        session.colours.chromaticities = c;
    }
    // 0.45455 means sRGB in practice, as its own chunk says of old readers.
    const bool isUsual = std::abs(gamma - 0.45455) < 0.001;
    if (!isUsual || session.colours.chromaticities) session.colours.gamma = 1 / gamma;
}

PixelLayout expand(Session& session) {
    png_structp png = session.png;
    const int type = png_get_color_type(png, session.info);
    const int depth = png_get_bit_depth(png, session.info);
    const bool hasAlpha =
        (type & PNG_COLOR_MASK_ALPHA) != 0 || png_get_valid(png, session.info, PNG_INFO_tRNS) != 0;
    PixelLayout layout;
    layout.alpha = hasAlpha ? AlphaType::Straight : AlphaType::None;
    png_set_expand(png);
    if (depth == 16) {
        layout.sample = SampleType::U16;
        if constexpr (std::endian::native == std::endian::little) png_set_swap(png);
    }
    if ((type & PNG_COLOR_MASK_COLOR) == 0) {
        layout.model = ColourModel::Gray;
    } else if (depth != 16) {
        layout.isQRgb = true;
        png_set_bgr(png);
        if (!hasAlpha) png_set_filler(png, 0xFF, PNG_FILLER_AFTER);
    }
    return layout;
}

void readRows(Session& session, const DecodeRequest& request) {
    png_structp png = session.png;
    if (setjmp(png_jmpbuf(png)) != 0) return; // What was written so far is the result.
    png_set_read_fn(png, &session, readBytes);
    png_set_crc_action(png, PNG_CRC_QUIET_USE, PNG_CRC_QUIET_USE);
    png_set_user_limits(png, 0x7FFFFFFF, 0x7FFFFFFF);
    png_set_chunk_malloc_max(png, 64U << 20);
    png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, 0);
    png_read_info(png, session.info);
    const QSize size(
        static_cast<int>(png_get_image_width(png, session.info)),
        static_cast<int>(png_get_image_height(png, session.info)));
    // Before the library makes its row buffers: one row may be declared as long as a picture. It
    // holds two of them, of up to eight bytes a pixel.
    if (!withinLimits(size, request.limits) ||
        !withinLimits(QSize(size.width(), 1), request.limits, 16)) {
        return;
    }
    readColours(session);
    const PixelLayout layout = expand(session);
    const int passes = png_set_interlace_handling(png);
    png_read_update_info(png, session.info);
    const std::size_t rowBytes = session.rowBytes = png_get_rowbytes(png, session.info);
    if (rowBytes != layout.bytesPerPixel() * static_cast<std::size_t>(size.width())) return;
    if (!withinLimits(size, request.limits, passes > 1 ? layout.bytesPerPixel() : 0)) return;
    session.writer = std::make_unique<FrameWriter>(request, size, size, layout, session.colours);
    if (!session.writer->isUsable()) return;
    if (passes > 1) {
        const auto height = static_cast<std::size_t>(size.height());
        // What a cut-off file leaves out is gray, or clear where the picture has alpha.
        const std::uint64_t missing = layout.alpha != AlphaType::None ? 0
                                      : layout.isQRgb                 ? 0xFF808080FF808080U
                                                                      : 0x8080808080808080U;
        session.pixels.assign(rowBytes * height / 8 + 1, missing);
        auto* bytes = reinterpret_cast<png_bytep>(session.pixels.data());
        for (std::size_t y = 0; y < height; ++y)
            session.rows.push_back(bytes + y * rowBytes);
        for (int pass = 0; pass < passes; ++pass) {
            for (png_bytep row : session.rows) {
                if (session.writer->isStopped()) return;
                // Fills the blocks that later passes refine.
                png_read_row(png, nullptr, row);
                session.hasRows = true;
            }
        }
        session.isWhole = true;
        return;
    }
    for (int y = 0; y < size.height(); ++y) {
        if (session.writer->isStopped()) return;
        png_read_row(png, session.writer->row(), nullptr);
        session.writer->rowDone();
    }
}

class PngDecoder final : public Decoder {
public:
    explicit PngDecoder(Source source) : _source(std::move(source)) {}

    Frame frame(const DecodeRequest& request) override {
        if (request.frame != 0) return {};
        Session session(_source);
        if (!session.info) return {};
        readRows(session, request);
        if (!session.writer) return {};
        if (session.rows.empty()) return session.writer->finish();
        if (!session.hasRows) return {};
        for (const png_bytep row : session.rows) {
            std::memcpy(session.writer->row(), row, session.rowBytes);
            session.writer->rowDone();
        }
        Frame frame = session.writer->finish();
        frame.isComplete = session.isWhole;
        return frame;
    }

private:
    Source _source;
};

} // namespace

const Codec png = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        return hasSignature(head, "\x89PNG\r\n\x1A\n") ? u"public.png" : QStringView();
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        return std::make_unique<PngDecoder>(source);
    }};

} // namespace codec::formats
