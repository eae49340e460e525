#include "codec/metadata/BigTiff.h"

#include <optional>

namespace codec {

namespace {

constexpr std::uint16_t exifDirectory = 0x8769;
constexpr std::uint16_t gpsDirectory = 0x8825;
/// Of one value, and of all together: a hostile file may point thousands of tags at one block.
constexpr std::uint64_t largestValue = std::uint64_t(4) << 20;
constexpr std::uint64_t largestTotal = std::uint64_t(16) << 20;
constexpr std::uint64_t mostEntries = 4096;

std::size_t sizeOfType(int type) {
    constexpr std::size_t sizes[] = {0, 1, 1, 2, 4, 8, 1, 1, 2, 4, 8, 4, 8, 4, 0, 0, 8, 8, 8};
    return type >= 0 && type < 19 ? sizes[type] : 0;
}

class Converter {
public:
    explicit Converter(Bytes file) : _file(file, file.u8(0) == 'I') {}

    std::vector<std::uint8_t> convert() {
        _out.assign(_file.bytes().span().begin(), _file.bytes().span().begin() + 2);
        append16(42);
        append32(8);
        writeDirectory(_file.u64(8), 0);
        return std::move(_out);
    }

private:
    struct Entry {
        std::uint16_t tag = 0;
        std::uint16_t type = 0;
        std::uint32_t count = 0;
        std::vector<std::uint8_t> value;
        std::uint64_t directory = 0; // of the two tags that point to one
    };

    [[nodiscard]] std::optional<Entry> entryAt(std::uint64_t at) const {
        Entry entry{_file.u16(at), _file.u16(at + 2), 0, {}, 0};
        const std::uint64_t count = _file.u64(at + 4);
        const std::size_t unit = sizeOfType(entry.type);
        if (unit == 0 || count == 0 || count > largestValue / unit) return std::nullopt;
        const std::uint64_t offset = count * unit <= 8 ? at + 12 : _file.u64(at + 12);
        entry.count = static_cast<std::uint32_t>(count);
        if (entry.type >= 16) {
            // 64-bit numbers have no place in the classic layout but for these two.
            if (entry.tag != exifDirectory && entry.tag != gpsDirectory) return std::nullopt;
            entry.type = 4;
            entry.directory = _file.u64(offset);
            entry.value.resize(4);
            return entry;
        }
        const Bytes value = _file.bytes().part(offset, count * unit);
        if (value.size() < count * unit) return std::nullopt;
        entry.value.assign(value.span().begin(), value.span().end());
        if (entry.tag == exifDirectory || entry.tag == gpsDirectory) {
            entry.directory =
                entry.type == 4 || entry.type == 13 ? _file.u32(offset) : _file.u16(offset);
            entry.type = 4;
            entry.value.resize(4);
        }
        return entry;
    }

    std::vector<Entry> entriesOf(std::uint64_t directory) {
        std::vector<Entry> entries;
        if (!_file.bytes().has(directory, 8)) return entries;
        const std::uint64_t count = std::min(_file.u64(directory), mostEntries);
        for (std::uint64_t position = 0; position < count; ++position) {
            const std::uint64_t at = directory + 8 + position * 20;
            if (!_file.bytes().has(at, 20)) break;
            auto entry = entryAt(at);
            if (!entry || (_total += entry->value.size()) > largestTotal) continue;
            entries.push_back(std::move(*entry));
        }
        return entries;
    }

    /// Appends a directory with its values; answers where it stands.
    std::uint32_t writeDirectory(std::uint64_t directory, int level) {
        const std::vector<Entry> entries = entriesOf(directory);
        const auto start = static_cast<std::uint32_t>(_out.size());
        _out.resize(_out.size() + 2 + entries.size() * 12 + 4);
        put16(start, static_cast<std::uint16_t>(entries.size()));
        std::size_t at = start + 2;
        for (const Entry& entry : entries) {
            put16(at, entry.tag);
            put16(at + 2, entry.type);
            put32(at + 4, entry.count);
            if (entry.directory != 0 && level == 0) {
                put32(at + 8, writeDirectory(entry.directory, level + 1));
            } else if (entry.value.size() <= 4) {
                std::ranges::copy(entry.value, _out.begin() + static_cast<std::ptrdiff_t>(at) + 8);
            } else {
                put32(at + 8, static_cast<std::uint32_t>(_out.size()));
                _out.insert(_out.end(), entry.value.begin(), entry.value.end());
            }
            at += 12;
        }
        return start;
    }

    void put16(std::size_t at, std::uint16_t number) {
        const auto low = static_cast<std::uint8_t>(number & 0xFF);
        const auto high = static_cast<std::uint8_t>(number >> 8);
        _out[at] = _file.isLittleEndian() ? low : high;
        _out[at + 1] = _file.isLittleEndian() ? high : low;
    }
    void put32(std::size_t at, std::uint32_t number) {
        const auto low = static_cast<std::uint16_t>(number & 0xFFFF);
        const auto high = static_cast<std::uint16_t>(number >> 16);
        put16(at, _file.isLittleEndian() ? low : high);
        put16(at + 2, _file.isLittleEndian() ? high : low);
    }
    void append16(std::uint16_t number) {
        _out.resize(_out.size() + 2);
        put16(_out.size() - 2, number);
    }
    void append32(std::uint32_t number) {
        _out.resize(_out.size() + 4);
        put32(_out.size() - 4, number);
    }

    OrderedBytes _file;
    std::vector<std::uint8_t> _out;
    std::uint64_t _total = 0;
};

} // namespace

std::vector<std::uint8_t> classicTiff(Bytes bigTiff) {
    if (bigTiff.size() < 16) return {};
    return Converter(bigTiff).convert();
}

} // namespace codec
