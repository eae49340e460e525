#pragma once

#include "codec/pixels/Decoder.h"

#include <QColorSpace>
#include <QString>

/// What the large view asks of decoders. Pure functions, any thread.
namespace LoadRequests {

/// Whether a file of this type may play. Of all others the first picture is all that is shown.
[[nodiscard]] bool mayPlay(const QString& type);

/// For a picture with this longer side (pixels, 1 and above; 0: its own) in these colours
/// (invalid: sRGB).
[[nodiscard]] codec::DecodeRequest make(double longerSide, const QColorSpace& colorSpace);

} // namespace LoadRequests
