#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>

namespace codec {

/// The bytes of one picture file, or of a picture in memory. Small files are read; others are
/// mapped read-only, so that a decoder pays for the pages that it looks at and no others. A file
/// that another program cuts short while it is mapped raises SIGBUS on access, and so does one that
/// its disk doesn't give: strangers' files are read in helper processes. Not changed after it was
/// made; any thread.
class Source {
public:
    /// The regular file behind an open descriptor, which is borrowed for this call only; nothing
    /// for a folder, a pipe or a device, or for an empty file. Where the file system can't map
    /// files, its first 256 MiB are read instead.
    [[nodiscard]] static std::optional<Source> fromDescriptor(int descriptor);
    /// Shares the byte array.
    [[nodiscard]] static Source fromBytes(const QByteArray& bytes);
    /// A piece of another source that stays alive with it; cut to what is there.
    [[nodiscard]] Source part(std::uint64_t offset, std::uint64_t length) const;

    [[nodiscard]] std::span<const std::uint8_t> bytes() const { return _bytes; }
    [[nodiscard]] std::size_t size() const { return _bytes.size(); }

private:
    Source(std::shared_ptr<const void> owner, std::span<const std::uint8_t> bytes)
        : _owner(std::move(owner)), _bytes(bytes) {}

    std::shared_ptr<const void> _owner;
    std::span<const std::uint8_t> _bytes;
};

/// Reads numbers from bytes that may end too soon: past the end every read gives 0 and `failed`
/// becomes true for good.
class ByteReader {
public:
    explicit ByteReader(std::span<const std::uint8_t> bytes, std::size_t position = 0)
        : _bytes(bytes), _position(position) {}

    [[nodiscard]] bool failed() const { return _failed; }
    [[nodiscard]] std::size_t position() const { return _position; }
    [[nodiscard]] std::size_t left() const {
        return _position < _bytes.size() ? _bytes.size() - _position : 0;
    }
    void seek(std::uint64_t position);
    void skip(std::uint64_t count) {
        seek(_position + std::min<std::uint64_t>(count, SIZE_MAX / 2));
    }

    std::uint8_t u8();
    std::uint16_t u16be() { return static_cast<std::uint16_t>(bigEndian(2)); }
    std::uint32_t u32be() { return static_cast<std::uint32_t>(bigEndian(4)); }
    std::uint64_t u64be() { return bigEndian(8); }
    std::uint16_t u16le() { return static_cast<std::uint16_t>(littleEndian(2)); }
    std::uint32_t u32le() { return static_cast<std::uint32_t>(littleEndian(4)); }
    std::int32_t i32le() { return static_cast<std::int32_t>(u32le()); }
    /// The next bytes; fewer, and failed, when they are not all there.
    std::span<const std::uint8_t> take(std::uint64_t count);

private:
    std::uint64_t bigEndian(int count);
    std::uint64_t littleEndian(int count);

    std::span<const std::uint8_t> _bytes;
    std::size_t _position = 0;
    bool _failed = false;
};

} // namespace codec
