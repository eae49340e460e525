#pragma once

#include "codec/pixels/Rounding.h"

#include <algorithm>
#include <cstdint>

namespace codec {

/// Samples of one depth as samples of another, 0 and the maximum standing for themselves.
[[nodiscard]] constexpr std::uint8_t to8(std::uint16_t sample) {
    return static_cast<std::uint8_t>((sample * 255U + 32895U) >> 16); // rounded division by 257
}
[[nodiscard]] constexpr std::uint16_t to16(std::uint8_t sample) {
    return static_cast<std::uint16_t>(sample * 257U);
}
/// 0 to 1; what lies outside, or is no number, is cut off.
[[nodiscard]] constexpr std::uint16_t to16(float sample) {
    return sample > 0 ? rounded<std::uint16_t>(std::min(sample, 1.0F) * 65535.0F)
                      : std::uint16_t{0};
}

} // namespace codec
