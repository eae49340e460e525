#pragma once

#include <QByteArray>
#include <QSize>

#include <cstdint>
#include <cstdio>
#include <functional>

#include <jpeglib.h>

namespace support {

struct JpegShape {
    QSize size;
    J_COLOR_SPACE samples = JCS_EXT_BGRX; ///< of four bytes a pixel
    int quality = 75;
    bool hasAdobeMarker = false;
};

/// A JPEG file by the library's encoder and nothing else. `row` answers the samples of a row, which
/// stay valid until it is called again.
[[nodiscard]] QByteArray
writeJpeg(const JpegShape& shape, const std::function<const std::uint8_t*(int)>& row);

} // namespace support
