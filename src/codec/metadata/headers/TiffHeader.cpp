#include "codec/metadata/headers/Headers.h"

namespace codec::headers {

namespace {

/// A directory of the classic or the big layout in either byte order.
class TiffFile {
public:
    explicit TiffFile(Bytes file) : _file(file, file.u8(0) == 'I'), _big(_file.u16(2) == 43) {}

    [[nodiscard]] std::uint64_t firstDirectory() const {
        return _big ? _file.u64(8) : _file.u32(4);
    }
    [[nodiscard]] std::uint64_t entryCount(std::uint64_t at) const {
        // No writer comes near this many tags; a damaged count shall not cost time.
        return std::min<std::uint64_t>(_big ? _file.u64(at) : _file.u16(at), 4096);
    }
    [[nodiscard]] std::uint64_t nextDirectory(std::uint64_t at) const {
        const std::uint64_t link = at + (_big ? 8 : 2) + entryCount(at) * (_big ? 20 : 12);
        return _big ? _file.u64(link) : _file.u32(link);
    }

    struct Entry {
        int tag = 0;
        int type = 0;
        std::uint64_t count = 0;
        /// Where the values stand, in the entry itself or elsewhere.
        std::uint64_t offset = 0;
    };
    [[nodiscard]] Entry entry(std::uint64_t directory, std::uint64_t position) const {
        const std::uint64_t at = directory + (_big ? 8 : 2) + position * (_big ? 20 : 12);
        Entry entry{
            _file.u16(at), _file.u16(at + 2), _big ? _file.u64(at + 4) : _file.u32(at + 4),
            at + (_big ? 12 : 8)};
        const bool inside = entry.count <= (_big ? 8U : 4U) / typeSize(entry.type);
        if (!inside) entry.offset = _big ? _file.u64(entry.offset) : _file.u32(entry.offset);
        return entry;
    }
    [[nodiscard]] std::uint64_t integer(const Entry& entry) const {
        switch (entry.type) {
        case 1:
            return _file.bytes().u8(entry.offset);
        case 3:
            return _file.u16(entry.offset);
        case 16:
            return _file.u64(entry.offset);
        default:
            return _file.u32(entry.offset);
        }
    }
    [[nodiscard]] double rational(const Entry& entry) const {
        if (entry.type != 5) return static_cast<double>(integer(entry));
        const std::uint32_t denominator = _file.u32(entry.offset + 4);
        return denominator == 0 ? 0.0 : _file.u32(entry.offset) / double(denominator);
    }
    [[nodiscard]] Bytes block(const Entry& entry) const {
        return _file.bytes().part(entry.offset, entry.count);
    }

private:
    static std::uint64_t typeSize(int type) {
        switch (type) {
        case 3:
        case 8:
            return 2;
        case 4:
        case 9:
        case 11:
        case 13:
            return 4;
        case 5:
        case 10:
        case 12:
        case 16:
        case 17:
        case 18:
            return 8;
        default:
            return 1;
        }
    }

    OrderedBytes _file;
    bool _big;
};

QString colorModelOf(std::uint64_t photometric) {
    switch (photometric) {
    case 0:
    case 1:
        return QStringLiteral("Gray");
    case 5:
        return QStringLiteral("CMYK");
    case 8:
    case 9:
    case 10:
        return QStringLiteral("Lab");
    default:
        return QStringLiteral("RGB");
    }
}

ImageHeader readDirectory(const TiffFile& tiff, std::uint64_t directory) {
    ImageHeader header;
    header.depth = 1;
    header.orientation = 1;
    std::uint64_t unit = 2;
    for (std::uint64_t position = 0; position < tiff.entryCount(directory); ++position) {
        const TiffFile::Entry entry = tiff.entry(directory, position);
        const std::uint64_t number = tiff.integer(entry);
        switch (entry.tag) {
        case 256:
            header.width = static_cast<std::uint32_t>(number);
            break;
        case 257:
            header.height = static_cast<std::uint32_t>(number);
            break;
        case 258:
            header.depth = static_cast<int>(std::min<std::uint64_t>(number, 64));
            break;
        case 262:
            header.colorModel = colorModelOf(number);
            break;
        case 274:
            header.orientation = number >= 1 && number <= 8 ? static_cast<int>(number) : 1;
            break;
        case 282:
            header.dpiWidth = tiff.rational(entry);
            break;
        case 283:
            header.dpiHeight = tiff.rational(entry);
            break;
        case 296:
            unit = number;
            break;
        case 34675:
            header.profileName = profileDescription(tiff.block(entry));
            break;
        default:
            break;
        }
    }
    const double perInch = unit == 2 ? 1.0 : unit == 3 ? 2.54 : 0.0;
    header.dpiWidth *= perInch;
    header.dpiHeight *= perInch;
    return header;
}

} // namespace

std::optional<ImageHeader> readTiff(Bytes file, std::size_t frame) {
    constexpr std::size_t mostPages = 65536;
    const TiffFile tiff(file);
    std::uint64_t directory = tiff.firstDirectory();
    for (std::size_t page = 0; page < std::min(frame, mostPages); ++page) {
        if (directory == 0 || directory >= file.size()) return std::nullopt;
        directory = tiff.nextDirectory(directory);
    }
    if (directory == 0 || directory >= file.size()) return std::nullopt;
    return readDirectory(tiff, directory);
}

} // namespace codec::headers
