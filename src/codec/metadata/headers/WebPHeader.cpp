#include "codec/metadata/headers/Headers.h"

namespace codec::headers {

using namespace std::string_view_literals;

namespace {

std::uint32_t le24(Bytes bytes, std::size_t offset) {
    return bytes.le16(offset) | std::uint32_t(bytes.u8(offset + 2)) << 16;
}

} // namespace

std::optional<ImageHeader> readWebP(Bytes file, std::size_t frame) {
    ImageHeader header;
    header.depth = 8;
    header.colorModel = QStringLiteral("RGB");
    std::size_t frames = 0;
    std::size_t offset = 12;
    for (int count = 0; count < mostChunks && file.has(offset, 8); ++count) {
        const std::size_t length = file.le32(offset + 4);
        const Bytes chunk = file.part(offset + 8, length);
        const auto is = [&](std::string_view name) { return file.matches(offset, name); };
        if (is("VP8X"sv)) {
            header.width = le24(chunk, 4) + 1;
            header.height = le24(chunk, 7) + 1;
        } else if (is("ICCP"sv)) {
            header.profileName = profileDescription(chunk);
        } else if (is("VP8 "sv) || is("VP8L"sv)) {
            if (header.width == 0 && is("VP8 "sv)) {
                header.width = chunk.le16(6) & 0x3FFF;
                header.height = chunk.le16(8) & 0x3FFF;
            } else if (header.width == 0) {
                header.width = (chunk.le32(1) & 0x3FFF) + 1;
                header.height = (chunk.le32(1) >> 14 & 0x3FFF) + 1;
            }
            break;
        } else if (is("ANMF"sv) && frames++ == frame) {
            header.delay = le24(chunk, 12) / 1000.0;
            break;
        }
        offset += 8 + length + (length & 1);
    }
    return header;
}

} // namespace codec::headers
