#pragma once

#include "codec/metadata/MetadataReader.h"
#include "platform/values/PBValue.h"

namespace codec {

/// The dictionary "{ExifAux}": what makers write of lens and camera outside of EXIF's own tags,
/// from their notes, from DNG's tags and from XMP's auxiliary schema. "LensModel" is given for
/// every photograph whose lens has a name, wherever that stands. The metadata library's lock is
/// held.
[[nodiscard]] PBDictionary auxProperties(const Metadata& metadata);

/// The film speed out of a maker's notes, for cameras that leave EXIF's own tag empty; nothing when
/// it is not there either. The metadata library's lock is held.
[[nodiscard]] std::optional<PBValue> makerFilmSpeed(const Metadata& metadata);

/// Every key that `auxProperties` can answer.
[[nodiscard]] QStringList auxPropertyKeys();

} // namespace codec
