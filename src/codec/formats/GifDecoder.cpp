#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>
#include <utility>

#include <gif_lib.h>

namespace codec::formats {

namespace {

/// What stands before one picture of an animation.
struct Control {
    int disposal = DISPOSAL_UNSPECIFIED;
    int transparent = NO_TRANSPARENT_COLOR;
    int delay = 0; // hundredths of a second
};

struct CloseGif {
    void operator()(GifFileType* file) const { DGifCloseFile(file, nullptr); }
};

/// Walks through the records of the file.
class Walker {
public:
    explicit Walker(const Source& source) : _reader(source.bytes()) {
        _file.reset(DGifOpen(&_reader, read, nullptr));
    }

    /// The header of the next picture is read; its pixels wait.
    bool next() {
        if (!_file) return false;
        _control = {};
        GifRecordType type = UNDEFINED_RECORD_TYPE;
        while (DGifGetRecordType(_file.get(), &type) == GIF_OK && type != TERMINATE_RECORD_TYPE) {
            if (type == IMAGE_DESC_RECORD_TYPE) return DGifGetImageDesc(_file.get()) == GIF_OK;
            if (type == EXTENSION_RECORD_TYPE && !readExtension()) return false;
        }
        return false;
    }

    bool skipPixels() {
        int size = 0;
        GifByteType* block = nullptr;
        if (DGifGetCode(_file.get(), &size, &block) != GIF_OK) return false;
        while (block) {
            if (DGifGetCodeNext(_file.get(), &block) != GIF_OK) return false;
        }
        return true;
    }

    [[nodiscard]] GifFileType* file() const { return _file.get(); }
    [[nodiscard]] const Control& control() const { return _control; }

private:
    static int read(GifFileType* file, GifByteType* destination, int length) {
        auto* reader = static_cast<ByteReader*>(file->UserData);
        const auto bytes = reader->take(static_cast<std::uint64_t>(length));
        std::memcpy(destination, bytes.data(), bytes.size());
        return static_cast<int>(bytes.size());
    }

    bool readExtension() {
        int code = 0;
        GifByteType* block = nullptr;
        if (DGifGetExtension(_file.get(), &code, &block) != GIF_OK) return false;
        while (block) {
            GraphicsControlBlock graphics;
            if (code == GRAPHICS_EXT_FUNC_CODE &&
                DGifExtensionToGCB(block[0], block + 1, &graphics) == GIF_OK) {
                _control = {graphics.DisposalMode, graphics.TransparentColor, graphics.DelayTime};
            }
            if (DGifGetExtensionNext(_file.get(), &block) != GIF_OK) return false;
        }
        return true;
    }

    ByteReader _reader;
    std::unique_ptr<GifFileType, CloseGif> _file;
    Control _control;
};

/// The picture as it stands after each frame.
class Canvas {
public:
    explicit Canvas(QSize size) : _size(size), _pixels(area(size), 0) {}

    /// Draws one picture; false when the file ended within it.
    bool draw(GifFileType* file, const Control& control, const StopFlag& stop) {
        dispose();
        const GifImageDesc& image = file->Image;
        const QRect frame(image.Left, image.Top, image.Width, image.Height);
        _previousRect = frame.intersected(QRect(QPoint(0, 0), _size));
        _previousDisposal = control.disposal;
        if (control.disposal == DISPOSE_PREVIOUS) _saved = _pixels;
        const ColorMapObject* colours = image.ColorMap ? image.ColorMap : file->SColorMap;
        if (image.Width < 1 || !colours) return false;
        const Palette palette = paletteOf(*colours, control.transparent);
        std::vector<GifPixelType> row(static_cast<std::size_t>(image.Width), 0);
        static constexpr int starts[] = {0, 4, 2, 1};
        static constexpr int steps[] = {8, 8, 4, 2};
        for (int pass = 0; pass < (image.Interlace ? 4 : 1); ++pass) {
            const int step = image.Interlace ? steps[pass] : 1;
            for (int y = image.Interlace ? starts[pass] : 0; y < image.Height; y += step) {
                if (stop.isSet() || DGifGetLine(file, row.data(), image.Width) != GIF_OK)
                    return false;
                drawRow(row, frame.left(), frame.top() + y, palette);
            }
        }
        return true;
    }

    [[nodiscard]] const QRgb* row(int y) const {
        return _pixels.data() +
               static_cast<std::size_t>(y) * static_cast<std::size_t>(_size.width());
    }

private:
    static std::size_t area(QSize size) {
        return static_cast<std::size_t>(size.width()) * static_cast<std::size_t>(size.height());
    }

    /// What each index draws; 0: nothing, since colours are opaque.
    using Palette = std::array<QRgb, 256>;

    static Palette paletteOf(const ColorMapObject& colours, int transparent) {
        Palette palette{};
        const int count = std::min(colours.ColorCount, static_cast<int>(palette.size()));
        for (int index = 0; index < count; ++index) {
            const GifColorType& colour = colours.Colors[index];
            if (index != transparent)
                palette[static_cast<std::size_t>(index)] =
                    qRgb(colour.Red, colour.Green, colour.Blue);
        }
        return palette;
    }

    void drawRow(const std::vector<GifPixelType>& row, int left, int y, const Palette& palette) {
        if (y < 0 || y >= _size.height()) return;
        QRgb* target =
            _pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(_size.width());
        const int end = std::min(static_cast<int>(row.size()), _size.width() - left);
        for (int x = std::max(0, -left); x < end; ++x) {
            const QRgb colour = palette[row[static_cast<std::size_t>(x)]];
            target[left + x] = colour != 0 ? colour : target[left + x];
        }
    }

    void dispose() {
        if (_previousDisposal == DISPOSE_PREVIOUS && !_saved.empty()) {
            _pixels = std::move(_saved);
            _saved.clear();
        } else if (_previousDisposal == DISPOSE_BACKGROUND) {
            for (int y = _previousRect.top(); y <= _previousRect.bottom(); ++y) {
                const auto begin =
                    static_cast<std::size_t>(y) * static_cast<std::size_t>(_size.width()) +
                    static_cast<std::size_t>(_previousRect.left());
                std::fill_n(
                    _pixels.begin() + static_cast<std::ptrdiff_t>(begin), _previousRect.width(),
                    0U);
            }
        }
    }

    QSize _size;
    std::vector<QRgb> _pixels;
    std::vector<QRgb> _saved;
    QRect _previousRect;
    int _previousDisposal = DISPOSAL_UNSPECIFIED;
};

class GifDecoder final : public Decoder {
public:
    explicit GifDecoder(Source source) : _source(std::move(source)) {}

    std::size_t frameCount() override {
        scan();
        return _delays.size();
    }

    bool isAnimation() override { return frameCount() > 1; }

    int frameDelay(std::size_t index) override {
        scan();
        return index < _delays.size() && _delays.size() > 1 ? _delays[index] * 10 : 0;
    }

    Frame frame(const DecodeRequest& request) override {
        // Each frame is drawn upon those before it: who asks for one after the other gets them in
        // one go through the file.
        std::unique_ptr<Playback> playback = std::exchange(_playback, nullptr);
        if (!playback || playback->next > request.frame + 1) playback = start(request.limits);
        if (!playback || !withinLimits(playback->size, request.limits, 8)) return {};
        bool isComplete = true;
        while (playback->next <= request.frame) {
            if (playback->next > 0 && !playback->walker.next()) return {};
            isComplete = playback->canvas->draw(
                playback->walker.file(), playback->walker.control(), request.stop);
            if (!isComplete && playback->next < request.frame) return {};
            ++playback->next;
        }
        const Canvas& canvas = *playback->canvas;
        const QSize size = playback->size;
        PixelLayout layout;
        layout.isQRgb = true;
        layout.alpha = AlphaType::Premultiplied;
        FrameWriter writer(request, size, size, layout, {});
        if (!writer.isUsable()) return {};
        for (int y = 0; y < size.height(); ++y) {
            std::memcpy(
                writer.row(), canvas.row(y), static_cast<std::size_t>(size.width()) * sizeof(QRgb));
            writer.rowDone();
        }
        Frame frame = writer.finish();
        frame.isComplete = isComplete;
        if (isComplete) _playback = std::move(playback);
        return frame;
    }

private:
    /// A walk through the file, with what it has drawn.
    struct Playback {
        explicit Playback(const Source& source) : walker(source) {}
        Walker walker;
        QSize size;
        std::optional<Canvas> canvas;
        std::size_t next = 0; ///< frame
    };

    [[nodiscard]] std::unique_ptr<Playback> start(const Limits& limits) const {
        auto playback = std::make_unique<Playback>(_source);
        if (!playback->walker.next()) return nullptr;
        const GifFileType* file = playback->walker.file();
        playback->size = QSize(file->SWidth, file->SHeight);
        if (playback->size.isEmpty()) playback->size = QSize(file->Image.Width, file->Image.Height);
        if (!withinLimits(playback->size, limits, 8)) return nullptr;
        playback->canvas.emplace(playback->size);
        return playback;
    }

    void scan() {
        if (!_delays.empty()) return;
        Walker walker(_source);
        while (_delays.size() < mostFrames && walker.next()) {
            _delays.push_back(walker.control().delay);
            if (!walker.skipPixels()) break;
        }
        if (_delays.empty()) _delays.push_back(0);
    }

    Source _source;
    std::vector<int> _delays; // empty: not looked yet
    std::unique_ptr<Playback> _playback;
};

} // namespace

const Codec gif = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        return hasSignature(head, "GIF87a") || hasSignature(head, "GIF89a") ? u"com.compuserve.gif"
                                                                            : QStringView();
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        return std::make_unique<GifDecoder>(source);
    }};

} // namespace codec::formats
