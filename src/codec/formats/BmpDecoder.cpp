#include "codec/formats/Bitmap.h"

#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"

#include <algorithm>
#include <bit>

namespace codec::formats {

namespace {

enum Compression : std::uint32_t {
    None = 0,
    Rle8 = 1,
    Rle4 = 2,
    BitFields = 3,
    AlphaBitFields = 6
};

/// One colour channel within a pixel of 16 or 32 bits.
struct Mask {
    std::uint32_t bits = 0;
    int shift = 0;
    std::uint32_t most = 0;

    Mask() = default;
    explicit Mask(std::uint32_t mask)
        : bits(mask), shift(mask ? std::countr_zero(mask) : 0), most(mask >> shift) {}
    [[nodiscard]] int value(std::uint32_t pixel) const {
        if (most == 0) return 255;
        return static_cast<int>(std::uint64_t{(pixel & bits) >> shift} * 255 / most);
    }
};

struct Header {
    QSize size;
    bool isTopDown = false;
    int bits = 0;
    std::uint32_t compression = None;
    Mask red, green, blue, alpha;
    std::vector<QRgb> palette;
    std::size_t pixels = 0; // offset of the first row
};

std::optional<Header>
readHeader(std::span<const std::uint8_t> bytes, std::size_t offset, bool isIcon) {
    ByteReader reader(bytes, offset);
    Header header;
    const std::uint32_t headerSize = reader.u32le();
    const bool isOld = headerSize == 12;
    if (!isOld && headerSize < 16) return std::nullopt;
    const std::int64_t width = isOld ? reader.u16le() : reader.i32le();
    std::int64_t height = isOld ? reader.u16le() : reader.i32le();
    reader.skip(2);
    header.bits = reader.u16le();
    std::uint32_t colours = 0;
    if (headerSize >= 40) {
        header.compression = reader.u32le();
        reader.skip(12);
        colours = reader.u32le();
        reader.skip(4);
    }
    header.isTopDown = height < 0;
    height = std::abs(height);
    if (isIcon) height /= 2; // the mask follows below
    if (reader.failed() || width < 1 || height < 1 || height > INT_MAX) return std::nullopt;
    header.size = QSize(static_cast<int>(width), static_cast<int>(height));
    if (header.bits == 16) {
        header.red = Mask(0x7C00), header.green = Mask(0x03E0), header.blue = Mask(0x001F);
    } else {
        header.red = Mask(0xFF0000), header.green = Mask(0xFF00), header.blue = Mask(0xFF);
        if (isIcon && header.bits == 32) header.alpha = Mask(0xFF000000);
    }
    if (header.compression == BitFields || header.compression == AlphaBitFields) {
        header.red = Mask(reader.u32le());
        header.green = Mask(reader.u32le());
        header.blue = Mask(reader.u32le());
        if (headerSize >= 56 || header.compression == AlphaBitFields) {
            header.alpha = Mask(reader.u32le());
        }
    }
    std::size_t position = std::max(offset + headerSize, reader.position());
    if (header.bits <= 8) {
        const std::size_t entrySize = isOld ? 3 : 4;
        const std::size_t most = std::size_t{1} << header.bits;
        const std::size_t count = colours == 0 ? most : std::min<std::size_t>(colours, most);
        reader.seek(position);
        for (std::size_t index = 0; index < count; ++index) {
            const auto entry = reader.take(entrySize);
            if (entry.size() < entrySize) break;
            header.palette.push_back(qRgb(entry[2], entry[1], entry[0]));
        }
        header.palette.resize(most, 0xFF000000U);
        position += count * entrySize;
    }
    header.pixels = position;
    return header;
}

/// Run-length rows of 4 or 8 bits, unpacked to one byte a pixel, bottom row first.
std::vector<std::uint8_t>
unpackRuns(const Header& header, ByteReader reader, const StopFlag& stop) {
    const int width = header.size.width();
    const int height = header.size.height();
    std::vector<std::uint8_t> pixels(
        static_cast<std::size_t>(width) * static_cast<std::size_t>(height), 0);
    int x = 0;
    int y = 0;
    const auto put = [&](std::uint8_t value) {
        if (x < width && y < height) {
            pixels
                [static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                 static_cast<std::size_t>(x)] = value;
        }
        ++x;
    };
    const bool isNarrow = header.compression == Rle4;
    const auto nibble = [&](std::uint8_t byte, int index) -> std::uint8_t {
        if (!isNarrow) return byte;
        return index % 2 == 0 ? byte >> 4 : byte & 15;
    };
    while (!reader.failed() && y < height && !stop.isSet()) {
        const std::uint8_t count = reader.u8();
        const std::uint8_t value = reader.u8();
        if (count > 0) {
            for (int index = 0; index < count; ++index)
                put(nibble(value, index));
        } else if (value == 0) {
            x = 0;
            ++y;
        } else if (value == 1) {
            break;
        } else if (value == 2) {
            x = std::min(x + reader.u8(), width);
            y = std::min(y + reader.u8(), height);
        } else {
            const int bytes = isNarrow ? (value + 1) / 2 : value;
            const auto literal = reader.take(static_cast<std::uint64_t>(bytes));
            for (int index = 0; index < value; ++index) {
                const std::size_t at = static_cast<std::size_t>(isNarrow ? index / 2 : index);
                if (at < literal.size()) put(nibble(literal[at], index));
            }
            if (bytes % 2 != 0) reader.skip(1);
        }
    }
    return pixels;
}

std::uint32_t pixelAt(std::span<const std::uint8_t> row, int bits, std::size_t x) {
    switch (bits) {
    case 32:
        return ByteReader(row, x * 4).u32le();
    case 16:
        return ByteReader(row, x * 2).u16le();
    case 8:
        return row[x];
    default: {
        const std::size_t bit = x * static_cast<std::size_t>(bits);
        const int shift = 8 - bits - static_cast<int>(bit % 8);
        return static_cast<std::uint32_t>(row[bit / 8] >> shift) & ((1U << bits) - 1);
    }
    }
}

void convertRow(const Header& header, std::span<const std::uint8_t> row, int bits, QRgb* target) {
    const auto width = static_cast<std::size_t>(header.size.width());
    for (std::size_t x = 0; x < width; ++x) {
        if (bits == 24) {
            target[x] = qRgb(row[x * 3 + 2], row[x * 3 + 1], row[x * 3]);
            continue;
        }
        const std::uint32_t pixel = pixelAt(row, bits, x);
        target[x] = bits <= 8 ? header.palette[pixel % header.palette.size()]
                              : qRgba(
                                    header.red.value(pixel), header.green.value(pixel),
                                    header.blue.value(pixel), header.alpha.value(pixel));
    }
}

/// An icon's 1-bit mask: what is set is transparent.
void applyMask(const Header& header, std::span<const std::uint8_t> mask, QRgb* target) {
    for (std::size_t x = 0; x < static_cast<std::size_t>(header.size.width()); ++x) {
        if (x / 8 < mask.size() && (mask[x / 8] >> (7 - x % 8) & 1U) != 0) target[x] = 0;
    }
}

/// Whether an icon's 32-bit pixels have any alpha: old ones leave the byte 0 and rely on the mask.
bool hasAlpha(std::span<const std::uint8_t> rows) {
    for (std::size_t index = 3; index < rows.size(); index += 4) {
        if (rows[index] != 0) return true;
    }
    return false;
}

} // namespace

Frame readBitmap(
    const Source& source, std::size_t offset, std::size_t pixels, bool isIcon,
    const DecodeRequest& request) {
    auto header = readHeader(source.bytes(), offset, isIcon);
    if (!header) return {};
    if (pixels > offset) header->pixels = pixels;
    static constexpr int depths[] = {1, 2, 4, 8, 16, 24, 32};
    if (std::ranges::count(depths, header->bits) == 0) return {};
    const bool isPacked = header->compression == Rle4 || header->compression == Rle8;
    if (isPacked ? header->bits > 8
                 : header->compression != None && header->compression != BitFields &&
                       header->compression != AlphaBitFields) {
        return {};
    }
    if (!withinLimits(header->size, request.limits, isPacked ? 1 : 0)) return {};
    const auto height = static_cast<std::size_t>(header->size.height());
    const int bits = isPacked ? 8 : header->bits;
    std::vector<std::uint8_t> unpacked;
    std::span<const std::uint8_t> rows = source.bytes();
    rows = rows.subspan(std::min(header->pixels, rows.size()));
    std::size_t stride =
        (static_cast<std::size_t>(header->size.width()) * static_cast<std::size_t>(bits) + 31) /
        32 * 4;
    const std::size_t used =
        (static_cast<std::size_t>(header->size.width()) * static_cast<std::size_t>(bits) + 7) / 8;
    if (isPacked) {
        unpacked = unpackRuns(*header, ByteReader(rows), request.stop);
        rows = unpacked;
        stride = static_cast<std::size_t>(header->size.width());
    }
    const std::size_t maskStride = (static_cast<std::size_t>(header->size.width()) + 31) / 32 * 4;
    std::span<const std::uint8_t> mask;
    if (isIcon && rows.size() > stride * height) mask = rows.subspan(stride * height);
    if (isIcon && bits == 32 && !hasAlpha(rows.first(std::min(rows.size(), stride * height)))) {
        header->alpha = Mask();
    }
    PixelLayout layout;
    layout.isQRgb = true;
    if (isIcon || header->alpha.bits != 0) layout.alpha = AlphaType::Straight;
    FrameWriter writer(request, header->size, header->size, layout, {});
    if (!writer.isUsable()) return {};
    for (std::size_t y = 0; y < height; ++y) {
        const std::size_t index = header->isTopDown ? y : height - 1 - y;
        if (writer.isStopped()) return {};
        auto* target = reinterpret_cast<QRgb*>(writer.row());
        if (rows.size() < stride * index + used) {
            if (header->isTopDown) break;
            // Rows come from the bottom: what is missing is at the top.
            std::fill_n(target, header->size.width(), 0xFF808080U);
        } else {
            convertRow(*header, rows.subspan(stride * index, used), bits, target);
            if (mask.size() >= maskStride * (index + 1)) {
                applyMask(*header, mask.subspan(maskStride * index, maskStride), target);
            }
        }
        writer.rowDone();
    }
    if (rows.size() < used) return {};
    Frame frame = writer.finish();
    frame.isComplete = frame.isComplete && rows.size() >= stride * (height - 1) + used;
    return frame;
}

namespace {

class BmpDecoder final : public Decoder {
public:
    explicit BmpDecoder(Source source) : _source(std::move(source)) {}

    Frame frame(const DecodeRequest& request) override {
        if (request.frame != 0) return {};
        ByteReader reader(_source.bytes(), 10);
        return readBitmap(_source, 14, reader.u32le(), false, request);
    }

private:
    Source _source;
};

} // namespace

const Codec bmp = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        return hasSignature(head, "BM") && head.size() > 18 && head[15] == 0 && head[16] == 0
                   ? u"com.microsoft.bmp"
                   : QStringView();
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        return std::make_unique<BmpDecoder>(source);
    }};

} // namespace codec::formats
