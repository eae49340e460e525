#pragma once

#include "codec/metadata/MetadataReader.h"

namespace codec {

/// Reads metadata out of the containers that the metadata library does not open, or opens without
/// finding anything: HEIF and JPEG XL through the libraries of these formats; and the EXIF of WebP,
/// which it may take from the wrong place. Adds to `metadata`; never throws. The library's lock is
/// held.
void recoverMetadata(Bytes file, Container container, Metadata& metadata);

} // namespace codec
