#include "codec/formats/Formats.h"
#include "codec/formats/PngAnimation.h"
#include "codec/pixels/FrameWriter.h"

#include <algorithm>
#include <bit>
#include <csetjmp>
#include <cstring>
#include <optional>
#include <utility>

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

    explicit Session(std::span<const std::uint8_t> file) : reader(file) {
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

/// The first picture of the file, and the only one that the library knows of.
Frame readPicture(std::span<const std::uint8_t> file, const DecodeRequest& request) {
    Session session(file);
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

/// The picture as it stands after each frame, in the colours that are asked for.
class PngCanvas {
public:
    PngCanvas(QSize size, QByteArray profile)
        : _image(size, QImage::Format_ARGB32_Premultiplied), _profile(std::move(profile)) {
        if (!_image.isNull()) _image.fill(Qt::transparent);
    }

    [[nodiscard]] const QImage& image() const { return _image; }
    [[nodiscard]] const QByteArray& profile() const { return _profile; }
    /// Frames that were drawn.
    [[nodiscard]] std::size_t next() const { return _next; }

    /// The picture of the frame, which has its size.
    void draw(const QImage& picture, const PngAnimation::Frame& frame) {
        if (_disposal == PngAnimation::Disposal::Previous)
            place(_saved, _area, false);
        else if (_disposal == PngAnimation::Disposal::Clear)
            place({}, _area, false);
        _area = frame.area;
        _disposal = frame.disposal;
        const bool isKept = _disposal == PngAnimation::Disposal::Previous;
        _saved = isKept ? _image.copy(_area) : QImage();
        place(picture, _area, frame.isBlended);
        ++_next;
    }

private:
    static QRgb blended(QRgb above, QRgb below) {
        const auto left = static_cast<unsigned>(255 - qAlpha(above));
        QRgb sum = 0;
        for (int shift = 0; shift < 32; shift += 8) {
            const unsigned part = ((below >> shift & 0xFF) * left + 127) / 255;
            sum |= std::min((above >> shift & 0xFF) + part, 255U) << shift;
        }
        return sum;
    }

    /// A null picture clears.
    void place(const QImage& picture, const QRect& area, bool isBlended) {
        for (int y = 0; y < area.height(); ++y) {
            auto* target = reinterpret_cast<QRgb*>(_image.scanLine(area.y() + y)) + area.x();
            if (picture.isNull()) {
                std::fill_n(target, area.width(), 0U);
                continue;
            }
            const auto* source = reinterpret_cast<const QRgb*>(picture.constScanLine(y));
            for (int x = 0; x < area.width(); ++x)
                target[x] = isBlended ? blended(source[x], target[x]) : source[x];
        }
    }

    QImage _image;
    QImage _saved;
    QByteArray _profile;
    QRect _area;
    PngAnimation::Disposal _disposal = PngAnimation::Disposal::Keep;
    std::size_t _next = 0;
};

class PngDecoder final : public Decoder {
public:
    explicit PngDecoder(Source source) : _source(std::move(source)) {}

    std::size_t frameCount() override {
        return std::max<std::size_t>(_animation.frames().size(), 1);
    }
    bool isAnimation() override { return _animation.frames().size() > 1; }
    int frameDelay(std::size_t index) override {
        return isAnimation() && index < frameCount() ? _animation.frames()[index].delay : 0;
    }

    Frame frame(const DecodeRequest& request) override {
        if (request.frame >= frameCount()) return {};
        const bool isPicture = !isAnimation() || _animation.beginsWithPicture();
        return isPicture && request.frame == 0 ? readPicture(_source.bytes(), request)
                                               : composed(request);
    }

private:
    /// Each frame is drawn upon those before it: who asks for one after the other gets them in one
    /// go through the file.
    Frame composed(const DecodeRequest& request) {
        // Four bytes a pixel for the canvas, for what it goes back to, and for the frame.
        if (!withinLimits(_animation.size(), request.limits, 12)) return {};
        DecodeRequest part;
        if (request.depth == Depth::Screen) part.targetProfile = request.targetProfile;
        part.threads = request.threads;
        part.stop = request.stop;
        part.limits = request.limits;
        std::optional<PngCanvas> canvas = std::exchange(_canvas, std::nullopt);
        if (!canvas || canvas->next() > request.frame + 1 ||
            canvas->profile() != part.targetProfile)
            canvas.emplace(_animation.size(), part.targetProfile);
        if (canvas->image().isNull()) return {};
        bool isComplete = true;
        while (canvas->next() <= request.frame) {
            const PngAnimation::Frame& next = _animation.frames()[canvas->next()];
            const Frame drawn = readPicture(_animation.file(next), part);
            if (drawn.image.size() != next.area.size()) return {};
            isComplete = drawn.isComplete;
            if (!isComplete && canvas->next() < request.frame) return {};
            canvas->draw(drawn.image, next);
        }
        Frame frame = written(canvas->image(), canvas->profile(), request);
        frame.isComplete = isComplete;
        if (isComplete) _canvas = std::move(canvas);
        return frame;
    }

    static Frame
    written(const QImage& image, const QByteArray& profile, const DecodeRequest& request) {
        PixelLayout layout;
        layout.isQRgb = true;
        layout.alpha = AlphaType::Premultiplied;
        ColourDescription colours;
        colours.iccProfile = profile;
        FrameWriter writer(request, image.size(), image.size(), layout, colours);
        if (!writer.isUsable()) return {};
        for (int y = 0; y < image.height() && !writer.isStopped(); ++y) {
            std::memcpy(
                writer.row(), image.constScanLine(y),
                static_cast<std::size_t>(image.width()) * sizeof(QRgb));
            writer.rowDone();
        }
        return writer.finish();
    }

    const Source _source;
    const PngAnimation _animation{Bytes(_source.bytes())};
    std::optional<PngCanvas> _canvas;
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
