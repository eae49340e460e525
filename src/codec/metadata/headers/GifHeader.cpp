#include "codec/metadata/headers/Headers.h"

namespace codec::headers {

namespace {

std::size_t colorTableSize(int flags) {
    return flags & 0x80 ? std::size_t(3) << ((flags & 7) + 1) : 0;
}

/// The offset behind a chain of sub-blocks.
std::size_t skipBlocks(Bytes file, std::size_t offset) {
    while (offset < file.size() && file.u8(offset) != 0)
        offset += std::size_t(1) + file.u8(offset);
    return offset + 1;
}

} // namespace

/// A frame is shown on the whole screen, so that all have its size; only the delay is its own.
std::optional<ImageHeader> readGif(Bytes file, std::size_t frame) {
    ImageHeader header;
    header.width = file.le16(6);
    header.height = file.le16(8);
    header.depth = 8;
    header.colorModel = QStringLiteral("RGB");
    std::size_t offset = 13 + colorTableSize(file.u8(10));
    std::size_t count = 0;
    double delay = -1;
    while (offset < file.size()) {
        const int block = file.u8(offset);
        if (block == 0x21) {
            if (file.u8(offset + 1) == 0xF9) delay = file.le16(offset + 4) / 100.0;
            offset = skipBlocks(file, offset + 2);
        } else if (block == 0x2C) {
            // Old writers leave the screen's size empty.
            if (header.width == 0) header.width = file.le16(offset + 5);
            if (header.height == 0) header.height = file.le16(offset + 7);
            if (count++ == frame) {
                header.delay = delay;
                return header;
            }
            delay = -1;
            offset = skipBlocks(file, offset + 11 + colorTableSize(file.u8(offset + 9)));
        } else {
            break;
        }
    }
    return std::nullopt;
}

} // namespace codec::headers
