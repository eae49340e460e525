#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

namespace codec {

/// A read-only view of a file's bytes for header parsers. Every access is checked: what lies beyond
/// the end reads as 0, and parts that reach beyond it are cut. Doesn't own the bytes.
class Bytes {
public:
    Bytes() = default;
    explicit Bytes(std::span<const std::uint8_t> data) : _data(data) {}

    [[nodiscard]] std::size_t size() const { return _data.size(); }
    [[nodiscard]] bool isEmpty() const { return _data.empty(); }
    [[nodiscard]] const std::uint8_t* data() const { return _data.data(); }
    [[nodiscard]] std::span<const std::uint8_t> span() const { return _data; }

    [[nodiscard]] bool has(std::size_t offset, std::size_t length) const {
        return offset <= _data.size() && length <= _data.size() - offset;
    }
    /// The bytes from an offset on; empty beyond the end.
    [[nodiscard]] Bytes from(std::size_t offset) const {
        return Bytes(_data.subspan(std::min(offset, _data.size())));
    }
    [[nodiscard]] Bytes part(std::size_t offset, std::size_t length) const {
        const Bytes rest = from(offset);
        return Bytes(rest._data.first(std::min(length, rest.size())));
    }

    [[nodiscard]] std::uint8_t u8(std::size_t offset) const {
        return offset < _data.size() ? _data[offset] : std::uint8_t(0);
    }
    [[nodiscard]] std::uint16_t be16(std::size_t offset) const {
        return static_cast<std::uint16_t>(u8(offset) << 8 | u8(offset + 1));
    }
    [[nodiscard]] std::uint16_t le16(std::size_t offset) const {
        return static_cast<std::uint16_t>(u8(offset) | u8(offset + 1) << 8);
    }
    [[nodiscard]] std::uint32_t be32(std::size_t offset) const {
        return std::uint32_t(be16(offset)) << 16 | be16(offset + 2);
    }
    [[nodiscard]] std::uint32_t le32(std::size_t offset) const {
        return le16(offset) | std::uint32_t(le16(offset + 2)) << 16;
    }
    [[nodiscard]] std::uint64_t be64(std::size_t offset) const {
        return std::uint64_t(be32(offset)) << 32 | be32(offset + 4);
    }
    [[nodiscard]] std::uint64_t le64(std::size_t offset) const {
        return le32(offset) | std::uint64_t(le32(offset + 4)) << 32;
    }

    /// Whether exactly these bytes stand at the offset.
    [[nodiscard]] bool matches(std::size_t offset, std::string_view text) const {
        if (!has(offset, text.size())) return false;
        return std::ranges::equal(
            _data.subspan(offset, text.size()), text, [](std::uint8_t byte, char letter) {
                return byte == static_cast<std::uint8_t>(letter);
            });
    }

private:
    std::span<const std::uint8_t> _data;
};

/// The same with the numbers in the file's own byte order.
class OrderedBytes {
public:
    OrderedBytes(Bytes bytes, bool littleEndian) : _bytes(bytes), _littleEndian(littleEndian) {}

    [[nodiscard]] Bytes bytes() const { return _bytes; }
    [[nodiscard]] bool isLittleEndian() const { return _littleEndian; }
    [[nodiscard]] std::uint16_t u16(std::uint64_t at) const {
        return _littleEndian ? _bytes.le16(at) : _bytes.be16(at);
    }
    [[nodiscard]] std::uint32_t u32(std::uint64_t at) const {
        return _littleEndian ? _bytes.le32(at) : _bytes.be32(at);
    }
    [[nodiscard]] std::uint64_t u64(std::uint64_t at) const {
        return _littleEndian ? _bytes.le64(at) : _bytes.be64(at);
    }

private:
    Bytes _bytes;
    bool _littleEndian;
};

} // namespace codec
