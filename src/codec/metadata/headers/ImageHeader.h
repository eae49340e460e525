#pragma once

#include "codec/metadata/headers/Bytes.h"
#include "codec/metadata/headers/Container.h"

#include <QString>

#include <cstdint>
#include <optional>

namespace codec {

/// What a file's own header says of one frame, without its metadata.
struct ImageHeader {
    /// Pixels as they are stored, before any rotation.
    std::uint32_t width = 0;
    std::uint32_t height = 0;
    /// Bits of one colour component; 0 when unknown.
    int depth = 0;
    /// "RGB", "Gray", "CMYK" or "Lab"; empty when unknown.
    QString colorModel;
    /// Name of the embedded or signalled colour profile; empty when there is none.
    QString profileName;
    /// Dots per inch; 0 when the header does not say.
    double dpiWidth = 0;
    double dpiHeight = 0;
    /// 1 to 8 as in EXIF, where the container has a say of its own; else 0.
    int orientation = 0;
    /// How long the frame of an animation stands, in seconds as written; negative when still.
    double delay = -1;

    bool operator==(const ImageHeader&) const = default;
};

/// Reads the header of a frame; `container` must be what the bytes are. Nothing for a damaged
/// header, a frame that does not exist, or a picture without pixels. Never throws.
[[nodiscard]] std::optional<ImageHeader>
readImageHeader(Bytes file, Container container, std::size_t frame);

/// The header of a camera raw file by the raw library: pixels as they are developed, before any
/// rotation. Makes up for what the metadata reader does not understand through `RawDetails`.
struct RawDetails {
    ImageHeader header;
    QString make;
    QString model;
    QString lens;
    /// ISO, seconds, f-number, millimetres; 0 when unknown.
    double iso = 0;
    double exposureTime = 0;
    double aperture = 0;
    double focalLength = 0;
    /// Seconds since 1970 of the capture, in the system's zone; 0 when unknown.
    std::int64_t captured = 0;
};
[[nodiscard]] std::optional<RawDetails> readRawDetails(Bytes file);

/// The description of an ICC profile; empty when it is none or has none.
[[nodiscard]] QString profileDescription(Bytes profile);

/// The customary name for colours signalled by ITU-T H.273 code points; empty for a mixture without
/// a name.
[[nodiscard]] QString
signalledProfileName(std::uint32_t primaries, std::uint32_t transferCharacteristics);

} // namespace codec
