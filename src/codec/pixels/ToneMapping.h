#pragma once

#include "codec/pixels/Colour.h"

#include <array>
#include <cstdint>
#include <vector>

namespace codec {

/// sRGB's code for linear light, 0 and 1 being black and white.
[[nodiscard]] std::uint8_t encodeSrgb(float linear);

/// Brings pictures with the perceptual quantiser (SMPTE ST 2084) or hybrid log-gamma (ITU-R
/// BT.2100) to a screen: 203 nits, the diffuse white of ITU-R BT.2408, lands just below white, and
/// highlights are rolled off above it without a change of hue.
class ToneMapper {
public:
    ToneMapper(int transfer, int primaries);

    /// 16-bit samples, three or four a pixel (the fourth straight alpha), to sRGB.
    void convertRow(const std::uint16_t* source, int channels, QRgb* destination, int width) const;

private:
    bool _isHybridLogGamma;
    std::vector<float> _toLinear; // by the 12 upper bits of a sample; 1 is diffuse white
    std::array<float, 9> _matrix; // to linear sRGB
};

/// Chromaticities of a code point of ITU-T H.273; those of sRGB for an unknown one.
[[nodiscard]] Chromaticities chromaticitiesOf(int primaries);

} // namespace codec
