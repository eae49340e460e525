#include "codec/metadata/headers/Headers.h"

namespace codec::headers {

using namespace std::string_view_literals;

namespace {

QString colorModelOf(int mode) {
    switch (mode) {
    case 0:
    case 1:
    case 8:
        return QStringLiteral("Gray");
    case 4:
        return QStringLiteral("CMYK");
    case 9:
        return QStringLiteral("Lab");
    default:
        return QStringLiteral("RGB");
    }
}

void readResource(int number, Bytes block, ImageHeader& header) {
    constexpr int resolution = 0x03ED;
    constexpr int profile = 0x040F;
    if (number == resolution) {
        // 16.16 fixed point, always per inch; the unit beside it is only how it is shown.
        header.dpiWidth = block.be32(0) / 65536.0;
        header.dpiHeight = block.be32(8) / 65536.0;
    } else if (number == profile) {
        header.profileName = profileDescription(block);
    }
}

} // namespace

std::optional<ImageHeader> readPhotoshop(Bytes file) {
    ImageHeader header;
    header.height = file.be32(14);
    header.width = file.be32(18);
    header.depth = file.be16(22);
    header.colorModel = colorModelOf(file.be16(24));
    const std::size_t resources = std::size_t(26) + 4 + file.be32(26);
    const std::size_t end = resources + 4 + file.be32(resources);
    std::size_t offset = resources + 4;
    while (offset + 12 <= end && file.matches(offset, "8BIM"sv)) {
        const std::size_t nameLength = (std::size_t(file.u8(offset + 6)) + 2) & ~std::size_t(1);
        const std::size_t sizeAt = offset + 6 + nameLength;
        const std::size_t size = file.be32(sizeAt);
        readResource(file.be16(offset + 4), file.part(sizeAt + 4, size), header);
        offset = sizeAt + 4 + size + (size & 1);
    }
    return header;
}

} // namespace codec::headers
