#include "codec/pixels/Source.h"

#include <algorithm>
#include <cerrno>

#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace codec {

namespace {

/// Of a file that can't be mapped.
constexpr std::size_t largestCopy = std::size_t(256) << 20;
/// To read that little costs less than to map it, touch it and let go of it.
constexpr std::size_t smallFile = std::size_t(64) << 10;

QByteArray readAll(int descriptor, std::size_t length) {
    QByteArray content(static_cast<qsizetype>(std::min(length, largestCopy)), Qt::Uninitialized);
    qsizetype filled = 0;
    while (filled < content.size()) {
        const ssize_t count = ::pread(
            descriptor, content.data() + filled, static_cast<std::size_t>(content.size() - filled),
            filled);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) break;
        filled += count;
    }
    content.truncate(filled);
    return content;
}

} // namespace

std::optional<Source> Source::fromDescriptor(int descriptor) {
    struct stat status {};
    if (::fstat(descriptor, &status) != 0 || !S_ISREG(status.st_mode) || status.st_size <= 0) {
        return std::nullopt;
    }
    const auto length = static_cast<std::size_t>(status.st_size);
    if (length <= smallFile) {
        const QByteArray content = readAll(descriptor, length);
        if (static_cast<std::size_t>(content.size()) == length) return fromBytes(content);
        // One that can't be read shall be lost in the way of all others.
    }
    void* address = ::mmap(nullptr, length, PROT_READ, MAP_PRIVATE, descriptor, 0);
    if (address == MAP_FAILED) {
        const QByteArray content = readAll(descriptor, length);
        if (content.isEmpty()) return std::nullopt;
        return fromBytes(content);
    }
    std::shared_ptr<const void> owner(
        address, [length](const void* mapped) { ::munmap(const_cast<void*>(mapped), length); });
    return Source(std::move(owner), {static_cast<const std::uint8_t*>(address), length});
}

Source Source::fromBytes(const QByteArray& bytes) {
    auto owner = std::make_shared<const QByteArray>(bytes);
    const auto* data = reinterpret_cast<const std::uint8_t*>(owner->constData());
    return Source(owner, {data, static_cast<std::size_t>(owner->size())});
}

Source Source::part(std::uint64_t offset, std::uint64_t length) const {
    const std::size_t begin = std::min<std::uint64_t>(offset, _bytes.size());
    const std::size_t count = std::min<std::uint64_t>(length, _bytes.size() - begin);
    return Source(_owner, _bytes.subspan(begin, count));
}

void ByteReader::seek(std::uint64_t position) {
    if (position > _bytes.size()) _failed = true;
    _position = std::min<std::uint64_t>(position, _bytes.size());
}

std::uint8_t ByteReader::u8() {
    if (_position >= _bytes.size()) {
        _failed = true;
        return 0;
    }
    return _bytes[_position++];
}

std::uint64_t ByteReader::bigEndian(int count) {
    if (left() < static_cast<std::size_t>(count)) {
        _failed = true;
        return 0;
    }
    std::uint64_t value = 0;
    for (int index = 0; index < count; ++index)
        value = value << 8 | _bytes[_position++];
    return value;
}

std::uint64_t ByteReader::littleEndian(int count) {
    if (left() < static_cast<std::size_t>(count)) {
        _failed = true;
        return 0;
    }
    std::uint64_t value = 0;
    for (int index = 0; index < count; ++index) {
        value |= static_cast<std::uint64_t>(_bytes[_position++]) << (8 * index);
    }
    return value;
}

std::span<const std::uint8_t> ByteReader::take(std::uint64_t count) {
    const std::size_t given = std::min<std::uint64_t>(count, left());
    if (given < count) _failed = true;
    const auto bytes = _bytes.subspan(_position, given);
    _position += given;
    return bytes;
}

} // namespace codec
