#include "codec/metadata/headers/Headers.h"

#include <zlib.h>

namespace codec::headers {

using namespace std::string_view_literals;

namespace {

/// The profile of an iCCP chunk: name, NUL, method, deflated profile. The description in the
/// profile is preferred to the chunk's own name, which many writers fill with "ICC Profile".
QString embeddedProfile(Bytes chunk) {
    constexpr std::size_t largestProfile = std::size_t(4) << 20;
    std::size_t nameEnd = 0;
    while (nameEnd < 80 && chunk.u8(nameEnd) != 0)
        ++nameEnd;
    const Bytes packed = chunk.from(nameEnd + 2);
    std::vector<std::uint8_t> profile(std::min(largestProfile, packed.size() * 64 + 1024));
    uLongf length = profile.size();
    if (uncompress(profile.data(), &length, packed.data(), packed.size()) == Z_OK) {
        const QString name = profileDescription(Bytes({profile.data(), length}));
        if (!name.isEmpty()) return name;
    }
    return QString::fromLatin1(
        reinterpret_cast<const char*>(chunk.data()), static_cast<qsizetype>(nameEnd));
}

void readStart(Bytes chunk, ImageHeader& header) {
    header.width = chunk.be32(0);
    header.height = chunk.be32(4);
    const int kind = chunk.u8(9);
    header.depth = kind == 3 ? 8 : chunk.u8(8);
    header.colorModel = kind == 0 || kind == 4 ? QStringLiteral("Gray") : QStringLiteral("RGB");
}

} // namespace

std::optional<ImageHeader> readPng(Bytes file, std::size_t frame) {
    ImageHeader header;
    bool started = false;
    bool named = false;
    std::size_t controls = 0;
    std::size_t offset = 8;
    for (int count = 0; count < mostChunks && file.has(offset, 12); ++count) {
        const std::size_t length = file.be32(offset);
        const Bytes chunk = file.part(offset + 8, length);
        const auto is = [&](std::string_view name) { return file.matches(offset + 4, name); };
        if (is("IHDR"sv)) {
            readStart(chunk, header);
            started = true;
        } else if (is("pHYs"sv) && chunk.u8(8) == 1) {
            header.dpiWidth = chunk.be32(0) / inchesPerMeter;
            header.dpiHeight = chunk.be32(4) / inchesPerMeter;
        } else if (is("iCCP"sv) && !named) {
            header.profileName = embeddedProfile(chunk);
            named = true;
        } else if (is("sRGB"sv) && !named) {
            header.profileName = signalledProfileName(1, 13);
        } else if (is("cICP"sv)) {
            header.profileName = signalledProfileName(chunk.u8(0), chunk.u8(1));
            named = true;
        } else if (is("fcTL"sv) && controls++ == frame) {
            const int denominator = chunk.be16(22);
            header.delay = chunk.be16(20) / double(denominator == 0 ? 100 : denominator);
        } else if (is("IEND"sv) || (is("IDAT"sv) && (frame == 0 || controls == 0))) {
            break;
        }
        offset += 12 + length;
    }
    if (!started) return std::nullopt;
    return header;
}

} // namespace codec::headers
