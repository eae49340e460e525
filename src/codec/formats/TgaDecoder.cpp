#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"

#include <algorithm>

namespace codec::formats {

namespace {

struct Header {
    int type = 0; // 1 palette, 2 colour, 3 gray, 9 to 11 the same with runs
    int paletteBits = 0;
    int paletteFirst = 0;
    int paletteLength = 0;
    QSize size;
    int bits = 0;
    int alphaBits = 0;
    bool isTopDown = false;
    bool isRightToLeft = false;
    std::size_t palette = 0; // offset
    std::size_t pixels = 0;  // offset

    [[nodiscard]] bool hasRuns() const { return type >= 9; }
    [[nodiscard]] int kind() const { return type & 7; }
};

std::optional<Header> readHeader(std::span<const std::uint8_t> bytes) {
    ByteReader reader(bytes);
    Header header;
    const int identifierLength = reader.u8();
    const int hasPalette = reader.u8();
    header.type = reader.u8();
    header.paletteFirst = reader.u16le();
    header.paletteLength = reader.u16le();
    header.paletteBits = reader.u8();
    reader.skip(4);
    const int width = reader.u16le();
    header.size = QSize(width, reader.u16le());
    header.bits = reader.u8();
    const int descriptor = reader.u8();
    header.alphaBits = descriptor & 15;
    header.isRightToLeft = (descriptor & 16) != 0;
    header.isTopDown = (descriptor & 32) != 0;
    static constexpr int types[] = {1, 2, 3, 9, 10, 11};
    static constexpr int depths[] = {8, 15, 16, 24, 32};
    if (reader.failed() || hasPalette > 1 || std::ranges::count(types, header.type) == 0 ||
        std::ranges::count(depths, header.bits) == 0 || header.size.isEmpty()) {
        return std::nullopt;
    }
    if (header.kind() == 1 && (hasPalette == 0 || header.bits > 16)) return std::nullopt;
    header.palette = reader.position() + static_cast<std::size_t>(identifierLength);
    header.pixels = header.palette;
    if (hasPalette == 1) {
        header.pixels += static_cast<std::size_t>(header.paletteLength) *
                         static_cast<std::size_t>((header.paletteBits + 7) / 8);
    }
    return header;
}

QRgb colour(std::span<const std::uint8_t> bytes, int bits, bool hasAlpha) {
    if (bits == 8) return qRgb(bytes[0], bytes[0], bytes[0]);
    if (bits >= 24)
        return qRgba(bytes[2], bytes[1], bytes[0], bits == 32 && hasAlpha ? bytes[3] : 255);
    const unsigned value = bytes[0] | static_cast<unsigned>(bytes[1]) << 8;
    const auto channel = [value](int shift) {
        return static_cast<int>((value >> shift & 31) * 255 / 31);
    };
    return qRgba(
        channel(10), channel(5), channel(0),
        hasAlpha && bits == 16 && (value & 0x8000) == 0 ? 0 : 255);
}

/// Reads pixels one after the other, runs or not.
class PixelReader {
public:
    PixelReader(const Header& header, std::span<const std::uint8_t> bytes)
        : _header(header), _reader(bytes, std::min(header.pixels, bytes.size())),
          _pixelBytes(static_cast<std::size_t>((header.bits + 7) / 8)) {
        if (header.kind() != 1) return;
        const auto entryBytes = static_cast<std::size_t>((header.paletteBits + 7) / 8);
        ByteReader palette(bytes, std::min(header.palette, bytes.size()));
        for (int index = 0; index < header.paletteLength && entryBytes > 0; ++index) {
            const auto entry = palette.take(entryBytes);
            if (entry.size() < entryBytes) break;
            _palette.push_back(colour(entry, header.paletteBits, header.alphaBits > 0));
        }
    }

    [[nodiscard]] bool failed() const { return _reader.failed(); }

    QRgb next() {
        if (_header.hasRuns()) {
            if (_left == 0) {
                const int packet = _reader.u8();
                _left = (packet & 127) + 1;
                _isRun = packet > 127;
                if (_isRun) _value = read();
            }
            --_left;
            return _isRun ? _value : read();
        }
        return read();
    }

private:
    QRgb read() {
        const auto bytes = _reader.take(_pixelBytes);
        if (bytes.size() < _pixelBytes) return 0xFF000000U;
        if (_header.kind() != 1) return colour(bytes, _header.bits, _header.alphaBits > 0);
        const int index = bytes[0] + (_pixelBytes > 1 ? bytes[1] * 256 : 0) - _header.paletteFirst;
        const auto position = static_cast<std::size_t>(index);
        return index >= 0 && position < _palette.size() ? _palette[position] : 0xFF000000U;
    }

    const Header& _header;
    ByteReader _reader;
    std::size_t _pixelBytes;
    std::vector<QRgb> _palette;
    int _left = 0;
    bool _isRun = false;
    QRgb _value = 0;
};

class TgaDecoder final : public Decoder {
public:
    TgaDecoder(Source source, const Header& header) : _source(std::move(source)), _header(header) {}

    Frame frame(const DecodeRequest& request) override {
        if (request.frame != 0 || !withinLimits(_header.size, request.limits, 8)) return {};
        const int width = _header.size.width();
        const int height = _header.size.height();
        PixelReader reader(_header, _source.bytes());
        // Rows usually come from the bottom, and runs can't be read backwards.
        std::vector<QRgb> pixels(
            static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0xFF808080U);
        int rows = 0;
        for (; rows < height && !reader.failed() && !request.stop.isSet(); ++rows) {
            const int y = _header.isTopDown ? rows : height - 1 - rows;
            QRgb* row =
                pixels.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(width);
            for (int x = 0; x < width && !reader.failed(); ++x) {
                const QRgb pixel = reader.next();
                if (!reader.failed()) row[_header.isRightToLeft ? width - 1 - x : x] = pixel;
            }
        }
        PixelLayout layout;
        layout.isQRgb = true;
        if (_header.alphaBits > 0) layout.alpha = AlphaType::Straight;
        FrameWriter writer(request, _header.size, _header.size, layout, {});
        if (!writer.isUsable()) return {};
        const auto* bytes = reinterpret_cast<const std::uint8_t*>(pixels.data());
        const std::size_t stride = static_cast<std::size_t>(width) * sizeof(QRgb);
        for (int y = 0; y < height; ++y, bytes += stride) {
            std::copy_n(bytes, stride, writer.row());
            writer.rowDone();
        }
        Frame frame = writer.finish();
        frame.isComplete = !reader.failed() && rows == height;
        return frame;
    }

private:
    Source _source;
    Header _header;
};

} // namespace

const Codec tga = {
    // The format has no signature: the file's name has to say so.
    [](std::span<const std::uint8_t> head, QStringView typeHint) -> QStringView {
        return typeHint == u"com.truevision.tga-image" && readHeader(head)
                   ? u"com.truevision.tga-image"
                   : QStringView();
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        const auto header = readHeader(source.bytes());
        if (!header || header->pixels >= source.size()) return nullptr;
        return std::make_unique<TgaDecoder>(source, *header);
    }};

} // namespace codec::formats
