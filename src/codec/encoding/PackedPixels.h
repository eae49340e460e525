#pragma once

#include <QColor>

#include <cstdint>

namespace codec::encoders {

/// A line of pixels as red, green, blue and, where it is wanted, alpha, a byte each. The toolkit's
/// conversions start threads that a confined process can't have.
inline void packLine(const QRgb* pixels, int width, bool hasAlpha, std::uint8_t* target) {
    for (int x = 0; x < width; ++x) {
        const QRgb pixel = pixels[x];
        *target++ = static_cast<std::uint8_t>(qRed(pixel));
        *target++ = static_cast<std::uint8_t>(qGreen(pixel));
        *target++ = static_cast<std::uint8_t>(qBlue(pixel));
        if (hasAlpha) *target++ = static_cast<std::uint8_t>(qAlpha(pixel));
    }
}

} // namespace codec::encoders
