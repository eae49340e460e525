#include "codec/metadata/headers/Headers.h"

#include <map>

namespace codec::headers {

using namespace std::string_view_literals;

namespace {

/// The parts of a profile are numbered from 1 in each segment; a profile above this is not one.
constexpr std::size_t largestProfile = std::size_t(16) << 20;

/// A file of nothing but filler shall not be read to its end.
constexpr std::size_t mostSkipped = 65536;

QString profileOf(const std::map<int, Bytes>& parts) {
    if (parts.size() == 1) return profileDescription(parts.begin()->second);
    std::vector<std::uint8_t> whole;
    for (const auto& [number, part] : parts) {
        if (whole.size() + part.size() > largestProfile) return {};
        whole.insert(whole.end(), part.span().begin(), part.span().end());
    }
    return profileDescription(Bytes(whole));
}

bool isFrameHeader(int marker) {
    return marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
}

void readFrameHeader(Bytes segment, ImageHeader& header) {
    header.depth = segment.u8(0);
    header.height = segment.be16(1);
    header.width = segment.be16(3);
    switch (segment.u8(5)) {
    case 1:
        header.colorModel = QStringLiteral("Gray");
        break;
    case 3:
        header.colorModel = QStringLiteral("RGB");
        break;
    case 4:
        header.colorModel = QStringLiteral("CMYK");
        break;
    default:
        break;
    }
}

void readDensity(Bytes segment, ImageHeader& header) {
    const double perInch = segment.u8(7) == 1 ? 1.0 : segment.u8(7) == 2 ? 2.54 : 0.0;
    header.dpiWidth = segment.be16(8) * perInch;
    header.dpiHeight = segment.be16(10) * perInch;
}

} // namespace

std::optional<ImageHeader> readJpeg(Bytes file) {
    ImageHeader header;
    std::map<int, Bytes> profile;
    std::size_t offset = 2;
    std::size_t skipped = 0;
    bool found = false;
    while (!found && file.has(offset, 4)) {
        const int marker = file.u8(offset + 1);
        if (file.u8(offset) != 0xFF || marker == 0xFF) {
            // Bytes between segments are skipped, as decoders do.
            if (++skipped > mostSkipped) return std::nullopt;
            ++offset;
            continue;
        }
        if (marker == 0x00 || marker == 0x01 || (marker >= 0xD0 && marker <= 0xD8)) {
            offset += 2;
            continue;
        }
        if (marker == 0xD9 || marker == 0xDA) break;
        const std::size_t length = file.be16(offset + 2);
        if (length < 2) return std::nullopt;
        const Bytes segment = file.part(offset + 4, length - 2);
        if (isFrameHeader(marker)) {
            readFrameHeader(segment, header);
            found = true;
        } else if (marker == 0xE0 && segment.matches(0, "JFIF\0"sv)) {
            readDensity(segment, header);
        } else if (marker == 0xE2 && segment.matches(0, "ICC_PROFILE\0"sv)) {
            profile.emplace(segment.u8(12), segment.from(14));
        }
        offset += 2 + length;
    }
    if (!found) return std::nullopt;
    if (!profile.empty()) header.profileName = profileOf(profile);
    return header;
}

} // namespace codec::headers
