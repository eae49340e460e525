#pragma once

#include "formatpictures/ByteWriter.h"
#include "formatpictures/Encoders.h"

#include <array>

namespace formatpictures {

/// A sample of 8 bits or of more in two bytes.
void put(ByteWriter& writer, unsigned sample, int bits);

/// The red, green and blue samples of a row, with alpha if the picture has it, of 8 bits or of more
/// in two bytes each.
[[nodiscard]] QByteArray rowOf(const QImage& image, int y, int bits, bool isLittleEndian);

/// The samples of one pixel as the mode stores them, of 8 or 16 bits.
[[nodiscard]] std::array<unsigned, 4> modeSamples(QRgb pixel, PsdMode mode, int depth);

} // namespace formatpictures
