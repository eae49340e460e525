#include "codec/metadata/headers/Boxes.h"
#include "codec/metadata/headers/Headers.h"

#include <cmath>

namespace codec::headers {

using namespace std::string_view_literals;

namespace {

void readCodestream(Bytes stream, ImageHeader& header) {
    // SOC, then SIZ: marker, length, capabilities, sizes and offsets of the image.
    if (!stream.matches(0, "\xFF\x4F\xFF\x51"sv)) return;
    const std::uint32_t right = stream.be32(8);
    const std::uint32_t bottom = stream.be32(12);
    const std::uint32_t left = stream.be32(16);
    const std::uint32_t top = stream.be32(20);
    header.width = right > left ? right - left : 0;
    header.height = bottom > top ? bottom - top : 0;
    header.depth = (stream.u8(42) & 0x7F) + 1;
    if (header.colorModel.isEmpty()) {
        const int components = stream.be16(40);
        header.colorModel = components <= 2 ? QStringLiteral("Gray") : QStringLiteral("RGB");
    }
}

void readColor(Bytes box, ImageHeader& header) {
    const int method = box.u8(0);
    if (method == 2 || method == 3) {
        const Bytes profile = box.from(3);
        header.profileName = profileDescription(profile);
        if (profile.matches(16, "CMYK"sv)) header.colorModel = QStringLiteral("CMYK");
        if (profile.matches(16, "Lab "sv)) header.colorModel = QStringLiteral("Lab");
        return;
    }
    switch (box.be32(3)) {
    case 12:
        header.colorModel = QStringLiteral("CMYK");
        break;
    case 14:
        header.colorModel = QStringLiteral("Lab");
        break;
    case 16:
    case 18:
        header.profileName = signalledProfileName(1, 13);
        break;
    case 17:
        header.colorModel = QStringLiteral("Gray");
        break;
    default:
        break;
    }
}

/// Resolution box: numerators, denominators and exponents of pixels a metre, vertical first.
void readResolution(Bytes box, ImageHeader& header) {
    const auto dots = [&](std::size_t at, std::size_t exponentAt) {
        const int denominator = box.be16(at + 2);
        const auto exponent = static_cast<std::int8_t>(box.u8(exponentAt));
        if (denominator == 0 || std::abs(exponent) > 9) return 0.0;
        return box.be16(at) / double(denominator) * std::pow(10.0, exponent) / inchesPerMeter;
    };
    header.dpiHeight = dots(0, 8);
    header.dpiWidth = dots(4, 9);
}

void readBoxes(Bytes bytes, ImageHeader& header, int level) {
    for (const Box& box : boxesIn(bytes)) {
        if ((box.is("jp2h"sv) || box.is("res "sv)) && level < 2) {
            readBoxes(box.content, header, level + 1);
        } else if (box.is("colr"sv)) {
            readColor(box.content, header);
        } else if (box.is("resc"sv) || (box.is("resd"sv) && header.dpiWidth <= 0)) {
            readResolution(box.content, header);
        } else if (box.is("jp2c"sv)) {
            readCodestream(box.content, header);
            return;
        }
    }
}

} // namespace

std::optional<ImageHeader> readJpeg2000(Bytes file, Container container) {
    ImageHeader header;
    if (container == Container::Jpeg2000Codestream) {
        readCodestream(file, header);
    } else {
        readBoxes(file, header, 0);
    }
    return header;
}

} // namespace codec::headers
