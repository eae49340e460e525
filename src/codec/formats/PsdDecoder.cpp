#include "codec/formats/Formats.h"
#include "codec/pixels/FrameWriter.h"

#include <algorithm>
#include <bit>
#include <cstring>

namespace codec::formats {

namespace {

enum Mode {
    BitmapMode = 0,
    GrayMode = 1,
    IndexedMode = 2,
    RgbMode = 3,
    CmykMode = 4,
    DuotoneMode = 8,
    LabMode = 9
};

struct Header {
    bool isLarge = false;
    int channels = 0;
    QSize size;
    int depth = 0;
    int mode = 0;
    std::span<const std::uint8_t> palette; // 256 reds, greens, blues
    QByteArray profile;
    bool hasTransparency = false;
    int compression = 0; // 0 none, 1 runs
    std::size_t pixels = 0;
};

void readResources(std::span<const std::uint8_t> bytes, Header& header) {
    ByteReader reader(bytes);
    while (reader.left() >= 12) {
        reader.skip(4);
        const int identifier = reader.u16be();
        const int nameLength = reader.u8();
        reader.skip(static_cast<std::uint64_t>(nameLength | 1)); // padded, its length byte included
        const std::uint32_t length = reader.u32be();
        const auto content = reader.take(length);
        if (reader.failed()) return;
        if (identifier == 0x040F) {
            header.profile = QByteArray(
                reinterpret_cast<const char*>(content.data()),
                static_cast<qsizetype>(content.size()));
        }
        if (length % 2 != 0) reader.skip(1);
    }
}

std::optional<Header> readHeader(std::span<const std::uint8_t> bytes) {
    ByteReader reader(bytes, 4);
    Header header;
    header.isLarge = reader.u16be() == 2;
    reader.skip(6);
    header.channels = reader.u16be();
    const std::uint32_t height = reader.u32be();
    const std::uint32_t width = reader.u32be();
    header.depth = reader.u16be();
    header.mode = reader.u16be();
    if (width > 300000 || height > 300000 || width < 1 || height < 1 || header.channels < 1 ||
        header.channels > 56) {
        return std::nullopt;
    }
    header.size = QSize(static_cast<int>(width), static_cast<int>(height));
    header.palette = reader.take(reader.u32be());
    readResources(reader.take(reader.u32be()), header);
    const std::uint64_t layers = header.isLarge ? reader.u64be() : reader.u32be();
    const auto layerBytes = reader.take(layers);
    if (layers > 6) {
        // A negative number of layers: the first extra channel is the picture's transparency.
        const std::size_t at = header.isLarge ? 8 : 4;
        header.hasTransparency = static_cast<std::int16_t>(ByteReader(layerBytes, at).u16be()) < 0;
    }
    header.compression = reader.u16be();
    header.pixels = reader.position();
    if (reader.failed() || header.compression > 1) return std::nullopt;
    return header;
}

std::optional<PixelLayout> layoutOf(const Header& header) {
    PixelLayout layout;
    int colours = 1;
    switch (header.mode) {
    case BitmapMode:
        if (header.depth != 1) return {};
        layout.model = ColourModel::Gray;
        break;
    case GrayMode:
    case DuotoneMode:
        layout.model = ColourModel::Gray;
        break;
    case IndexedMode:
        if (header.depth != 8 || header.palette.size() < 768) return {};
        break;
    case RgbMode:
        colours = 3;
        break;
    case CmykMode:
        layout.model = ColourModel::Cmyk, layout.isInverted = true, colours = 4;
        break;
    case LabMode:
        layout.model = ColourModel::Lab, colours = 3;
        break;
    default:
        return {};
    }
    if (header.channels < colours) return {};
    switch (header.depth) {
    case 1:
        if (header.mode != BitmapMode) return {};
        break;
    case 8:
        break;
    case 16:
        layout.sample = SampleType::U16;
        break;
    case 32:
        if (header.mode == CmykMode || header.mode == LabMode) return {};
        layout.sample = SampleType::Float;
        break;
    default:
        return {};
    }
    if (header.hasTransparency && header.channels > colours &&
        (header.mode == RgbMode || header.mode == GrayMode)) {
        layout.alpha = AlphaType::Straight;
    }
    return layout;
}

/// Reads the rows of each channel wherever they lie: channel after channel.
class RowReader {
public:
    RowReader(const Header& header, std::span<const std::uint8_t> bytes, int channels)
        : _header(header), _bytes(bytes), _rowBytes(
                                              (static_cast<std::size_t>(header.size.width()) *
                                                   static_cast<std::size_t>(header.depth) +
                                               7) /
                                              8) {
        if (header.compression == 0) return;
        const auto height = static_cast<std::size_t>(header.size.height());
        const std::size_t rows = height * static_cast<std::size_t>(header.channels);
        ByteReader reader(bytes, header.pixels);
        std::uint64_t offset = header.pixels + rows * (header.isLarge ? 4 : 2);
        const std::size_t wanted = height * static_cast<std::size_t>(channels);
        for (std::size_t row = 0; row < wanted && !reader.failed(); ++row) {
            const std::uint64_t length = header.isLarge ? reader.u32be() : reader.u16be();
            _rows.emplace_back(offset, length);
            offset += length;
        }
    }

    [[nodiscard]] std::size_t rowBytes() const { return _rowBytes; }

    /// False when the row is not all there.
    bool read(int channel, int y, std::vector<std::uint8_t>& row) const {
        row.assign(_rowBytes, 0);
        const std::size_t index =
            static_cast<std::size_t>(channel) * static_cast<std::size_t>(_header.size.height()) +
            static_cast<std::size_t>(y);
        if (_header.compression == 0) {
            const std::size_t begin = _header.pixels + index * _rowBytes;
            if (begin + _rowBytes > _bytes.size()) return false;
            std::copy_n(
                _bytes.begin() + static_cast<std::ptrdiff_t>(begin), _rowBytes, row.begin());
            return true;
        }
        if (index >= _rows.size() || _rows[index].first > _bytes.size()) return false;
        ByteReader reader(_bytes, _rows[index].first);
        return unpack(reader.take(_rows[index].second), row);
    }

private:
    static bool unpack(std::span<const std::uint8_t> packed, std::vector<std::uint8_t>& row) {
        std::size_t at = 0;
        std::size_t index = 0;
        while (index + 1 < packed.size() && at < row.size()) {
            const int code = static_cast<std::int8_t>(packed[index++]);
            if (code >= 0) {
                const std::size_t count = std::min(
                    {static_cast<std::size_t>(code) + 1, row.size() - at, packed.size() - index});
                std::copy_n(
                    packed.begin() + static_cast<std::ptrdiff_t>(index), count,
                    row.begin() + static_cast<std::ptrdiff_t>(at));
                index += count;
                at += count;
            } else if (code != -128) {
                const std::size_t count =
                    std::min(static_cast<std::size_t>(1 - code), row.size() - at);
                std::fill_n(row.begin() + static_cast<std::ptrdiff_t>(at), count, packed[index++]);
                at += count;
            }
        }
        return at == row.size();
    }

    const Header& _header;
    std::span<const std::uint8_t> _bytes;
    std::size_t _rowBytes;
    std::vector<std::pair<std::uint64_t, std::uint64_t>> _rows; // offset and length
};

/// Puts one channel's samples where the layout has them.
void spread(
    const Header& header, const PixelLayout& layout, const std::vector<std::uint8_t>& row,
    int channel, std::uint8_t* target) {
    const auto width = static_cast<std::size_t>(header.size.width());
    const auto step = static_cast<std::size_t>(layout.channels());
    const auto first = static_cast<std::size_t>(channel);
    ByteReader reader(row);
    for (std::size_t x = 0; x < width; ++x) {
        if (header.mode == BitmapMode) {
            target[x] = (row[x / 8] >> (7 - x % 8) & 1U) != 0 ? 0 : 255;
        } else if (header.mode == IndexedMode) {
            for (std::size_t colour = 0; colour < 3; ++colour) {
                target[x * 3 + colour] = header.palette[colour * 256 + row[x]];
            }
        } else if (layout.sample == SampleType::U8) {
            target[x * step + first] = row[x];
        } else if (layout.sample == SampleType::U16) {
            reinterpret_cast<std::uint16_t*>(target)[x * step + first] = reader.u16be();
        } else {
            reinterpret_cast<float*>(target)[x * step + first] =
                std::bit_cast<float>(reader.u32be());
        }
    }
}

/// The merged picture is blended with white where it is transparent; this takes the white out.
void takeOutWhite(const PixelLayout& layout, std::uint8_t* row, int width) {
    const int channels = layout.channels();
    const auto clear = [&](auto* pixel, int most) {
        for (int x = 0; x < width; ++x, pixel += channels) {
            const std::int64_t alpha = pixel[channels - 1];
            if (alpha == 0 || alpha == most) continue;
            for (int channel = 0; channel < channels - 1; ++channel) {
                const std::int64_t own = (pixel[channel] - (most - alpha)) * most / alpha;
                pixel[channel] = static_cast<std::remove_reference_t<decltype(*pixel)>>(
                    std::clamp<std::int64_t>(own, 0, most));
            }
        }
    };
    if (layout.sample == SampleType::U8) clear(row, 255);
    if (layout.sample == SampleType::U16) clear(reinterpret_cast<std::uint16_t*>(row), 65535);
}

/// The merged picture of a layered document; the layers themselves are not looked at.
class PsdDecoder final : public Decoder {
public:
    PsdDecoder(Source source, Header header)
        : _source(std::move(source)), _header(std::move(header)) {}

    Frame frame(const DecodeRequest& request) override {
        const auto layout = layoutOf(_header);
        if (request.frame != 0 || !layout) return {};
        ColourDescription colours;
        colours.iccProfile = _header.profile;
        FrameWriter writer(request, _header.size, _header.size, *layout, colours);
        if (!writer.isUsable()) return {};
        const int channels = _header.mode == IndexedMode ? 1 : layout->channels();
        const RowReader reader(_header, _source.bytes(), channels);
        std::vector<std::uint8_t> row;
        bool isComplete = true;
        for (int y = 0; y < _header.size.height() && !writer.isStopped(); ++y) {
            bool hasRow = false;
            for (int channel = 0; channel < channels; ++channel) {
                const bool isGood = reader.read(channel, y, row);
                hasRow = hasRow || isGood;
                isComplete = isComplete && isGood;
                spread(_header, *layout, row, channel, writer.row());
            }
            if (!hasRow) break;
            if (layout->alpha == AlphaType::Straight) {
                takeOutWhite(*layout, writer.row(), _header.size.width());
            }
            writer.rowDone();
        }
        Frame frame = writer.finish();
        frame.isComplete = frame.isComplete && isComplete;
        return frame;
    }

private:
    Source _source;
    Header _header;
};

} // namespace

const Codec psd = {
    [](std::span<const std::uint8_t> head, QStringView) -> QStringView {
        using namespace std::string_view_literals;
        if (hasSignature(head, "8BPS\0\1"sv)) return u"com.adobe.photoshop-image";
        if (hasSignature(head, "8BPS\0\2"sv)) return u"com.adobe.photoshop-large-image";
        return {};
    },
    [](const Source& source) -> std::unique_ptr<Decoder> {
        auto header = readHeader(source.bytes());
        if (!header) return nullptr;
        return std::make_unique<PsdDecoder>(source, std::move(*header));
    }};

} // namespace codec::formats
