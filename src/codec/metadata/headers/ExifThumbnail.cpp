#include "codec/metadata/headers/ExifThumbnail.h"

#include <optional>

namespace codec {

namespace {

using namespace std::string_view_literals;

/// Cameras write about ten segments before the pixels.
constexpr int mostSegments = 200;
constexpr std::uint16_t placeTag = 0x0201;
constexpr std::uint16_t lengthTag = 0x0202;
constexpr std::size_t entryBytes = 12;

/// The EXIF block's directories, from the byte order mark on.
Bytes exifBlock(Bytes file) {
    std::size_t at = 2;
    for (int segment = 0; segment < mostSegments && file.u8(at) == 0xFF; ++segment) {
        const int marker = file.u8(at + 1);
        if (marker == 0xDA || marker == 0xD9) break; // the pixels, the end
        const std::size_t length = file.be16(at + 2);
        if (length < 2) break;
        if (marker == 0xE1 && file.matches(at + 4, "Exif\0\0"sv))
            return file.part(at + 10, length - 8);
        at += 2 + length;
    }
    return {};
}

std::optional<std::uint32_t>
valueOf(const OrderedBytes& block, std::size_t directory, std::uint16_t tag) {
    const std::size_t count = block.u16(directory);
    for (std::size_t entry = 0; entry < count; ++entry) {
        const std::size_t at = directory + 2 + entry * entryBytes;
        if (!block.bytes().has(at, entryBytes)) break;
        if (block.u16(at) == tag) return block.u32(at + 8);
    }
    return std::nullopt;
}

} // namespace

Bytes exifThumbnail(Bytes jpegFile) {
    if (jpegFile.be16(0) != 0xFFD8) return {};
    const Bytes bytes = exifBlock(jpegFile);
    const bool isLittleEndian = bytes.matches(0, "II*\0"sv);
    if (!isLittleEndian && !bytes.matches(0, "MM\0*"sv)) return {};
    const OrderedBytes block(bytes, isLittleEndian);
    const std::size_t first = block.u32(4);
    const std::size_t second = block.u32(first + 2 + block.u16(first) * entryBytes);
    if (second == 0 || !bytes.has(second, 2)) return {};
    const auto place = valueOf(block, second, placeTag);
    const auto length = valueOf(block, second, lengthTag);
    if (!place || !length || !bytes.has(*place, *length)) return {};
    const Bytes thumbnail = bytes.part(*place, *length);
    return thumbnail.be16(0) == 0xFFD8 ? thumbnail : Bytes();
}

} // namespace codec
