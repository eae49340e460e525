#include "codec/pixels/ToneMapping.h"

#include "codec/pixels/Rounding.h"

#include <algorithm>
#include <cmath>

namespace codec {

namespace {

constexpr double diffuseWhite = 203; // nits, BT.2408
constexpr double hybridPeak = 1000;  // nits of the nominal HLG display, BT.2100
constexpr float knee = 0.7F;         // light below it stays as it is
constexpr std::size_t encodeSteps = 8192;

using Matrix = std::array<double, 9>;

Matrix inverse(const Matrix& m) {
    const double determinant = m[0] * (m[4] * m[8] - m[5] * m[7]) -
                               m[1] * (m[3] * m[8] - m[5] * m[6]) +
                               m[2] * (m[3] * m[7] - m[4] * m[6]);
    Matrix result{m[4] * m[8] - m[5] * m[7], m[2] * m[7] - m[1] * m[8], m[1] * m[5] - m[2] * m[4],
                  m[5] * m[6] - m[3] * m[8], m[0] * m[8] - m[2] * m[6], m[2] * m[3] - m[0] * m[5],
                  m[3] * m[7] - m[4] * m[6], m[1] * m[6] - m[0] * m[7], m[0] * m[4] - m[1] * m[3]};
    for (double& value : result)
        value /= determinant;
    return result;
}

Matrix product(const Matrix& a, const Matrix& b) {
    Matrix result{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t k = 0; k < 3; ++k) {
                result[row * 3 + column] += a[row * 3 + k] * b[k * 3 + column];
            }
        }
    }
    return result;
}

/// Linear RGB to XYZ from chromaticities, white having Y = 1 (SMPTE RP 177).
Matrix toXyz(const Chromaticities& c) {
    Matrix primaries{};
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const double x = c[channel * 2];
        const double y = c[channel * 2 + 1];
        primaries[channel] = x / y;
        primaries[3 + channel] = 1;
        primaries[6 + channel] = (1 - x - y) / y;
    }
    const double white[] = {c[6] / c[7], 1, (1 - c[6] - c[7]) / c[7]};
    const Matrix inverted = inverse(primaries);
    for (std::size_t channel = 0; channel < 3; ++channel) {
        const double scale = inverted[channel * 3] * white[0] +
                             inverted[channel * 3 + 1] * white[1] +
                             inverted[channel * 3 + 2] * white[2];
        for (std::size_t row = 0; row < 3; ++row)
            primaries[row * 3 + channel] *= scale;
    }
    return primaries;
}

double fromPerceptualQuantiser(double signal) {
    const double power = std::pow(signal, 1 / 78.84375);
    const double top = std::max(power - 0.8359375, 0.0);
    return 10000 * std::pow(top / (18.8515625 - 18.6875 * power), 1 / 0.1593017578125);
}

double fromHybridLogGamma(double signal) {
    return signal <= 0.5 ? signal * signal / 3
                         : (std::exp((signal - 0.55991073) / 0.17883277) + 0.28466892) / 12;
}

/// The factor that brings the brightest channel below white.
float rollOff(float brightest) {
    if (brightest <= knee) return 1;
    const float over = (brightest - knee) / (1 - knee);
    return (knee + (1 - knee) * (over / (1 + over))) / brightest;
}

} // namespace

std::uint8_t encodeSrgb(float linear) {
    static const auto table = [] {
        std::array<std::uint8_t, encodeSteps + 1> codes{};
        for (std::size_t step = 0; step <= encodeSteps; ++step) {
            const double light = static_cast<double>(step) / encodeSteps;
            const double code =
                light <= 0.0031308 ? 12.92 * light : 1.055 * std::pow(light, 1 / 2.4) - 0.055;
            codes[step] = static_cast<std::uint8_t>(std::lround(code * 255));
        }
        return codes;
    }();
    if (!(linear > 0)) return 0; // not a number is black as well
    return table[rounded<std::size_t>(std::min(linear, 1.0F) * encodeSteps)];
}

Chromaticities chromaticitiesOf(int primaries) {
    switch (primaries) {
    case 4:
        return {0.67, 0.33, 0.21, 0.71, 0.14, 0.08, 0.310, 0.316};
    case 5:
        return {0.64, 0.33, 0.29, 0.60, 0.15, 0.06, 0.3127, 0.3290};
    case 6:
    case 7:
        return {0.630, 0.340, 0.310, 0.595, 0.155, 0.070, 0.3127, 0.3290};
    case 9:
        return {0.708, 0.292, 0.170, 0.797, 0.131, 0.046, 0.3127, 0.3290};
    case 11:
        return {0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.314, 0.351};
    case 12:
        return {0.680, 0.320, 0.265, 0.690, 0.150, 0.060, 0.3127, 0.3290};
    case 22:
        return {0.630, 0.340, 0.295, 0.605, 0.155, 0.077, 0.3127, 0.3290};
    default:
        return {0.64, 0.33, 0.30, 0.60, 0.15, 0.06, 0.3127, 0.3290};
    }
}

ToneMapper::ToneMapper(int transfer, int primaries)
    : _isHybridLogGamma(transfer == 18), _toLinear(4096), _matrix{} {
    for (std::size_t code = 0; code < _toLinear.size(); ++code) {
        const double signal = static_cast<double>(code) / static_cast<double>(_toLinear.size() - 1);
        _toLinear[code] = static_cast<float>(
            _isHybridLogGamma ? fromHybridLogGamma(signal)
                              : fromPerceptualQuantiser(signal) / diffuseWhite);
    }
    const Matrix matrix =
        product(inverse(toXyz(chromaticitiesOf(1))), toXyz(chromaticitiesOf(primaries)));
    std::ranges::transform(
        matrix, _matrix.begin(), [](double value) { return static_cast<float>(value); });
}

void ToneMapper::convertRow(
    const std::uint16_t* source, int channels, QRgb* destination, int width) const {
    for (int x = 0; x < width; ++x, source += channels) {
        float r = _toLinear[source[0] >> 4];
        float g = _toLinear[source[1] >> 4];
        float b = _toLinear[source[2] >> 4];
        if (_isHybridLogGamma) {
            // The display's gamma works on the luminance of the scene (BT.2100).
            const float luminance = 0.2627F * r + 0.6780F * g + 0.0593F * b;
            const float gain =
                std::pow(luminance, 0.2F) * static_cast<float>(hybridPeak / diffuseWhite);
            r *= gain;
            g *= gain;
            b *= gain;
        }
        const auto& m = _matrix;
        const float red = std::max(0.0F, m[0] * r + m[1] * g + m[2] * b);
        const float green = std::max(0.0F, m[3] * r + m[4] * g + m[5] * b);
        const float blue = std::max(0.0F, m[6] * r + m[7] * g + m[8] * b);
        const float scale = rollOff(std::max({red, green, blue}));
        const int alpha = channels == 4 ? source[3] >> 8 : 255;
        destination[x] = qPremultiply(qRgba(
            encodeSrgb(red * scale), encodeSrgb(green * scale), encodeSrgb(blue * scale), alpha));
    }
}

} // namespace codec
