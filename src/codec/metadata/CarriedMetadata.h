#pragma once

#include "codec/metadata/MetadataBlocks.h"

#include <QByteArray>
#include <QSize>

namespace codec {

/// What is said anew in metadata that go along with other pixels.
struct NewPicture {
    QSize size;
    bool isSrgb = true;      ///< else a profile says what its colours are
    bool hasIptc = true;     ///< false: what IPTC says is said in XMP
    bool hasLocation = true; ///< false: nothing tells where the photograph was taken
};

/// The blocks for an upright picture, each of `largestMetadataBlock` at most. Parses what strangers
/// wrote, as `embedMetadata` does: where the program itself asks, it asks `FrameReader`. Any
/// thread; calls wait for each other.
[[nodiscard]] MetadataBlocks
carriedMetadata(const MetadataBlocks& blocks, const NewPicture& picture);

/// Puts metadata and profile into an encoded JPEG, PNG, TIFF or JPEG 2000 file; false leaves it as
/// it was. Never throws. Any thread; calls wait for each other.
[[nodiscard]] bool
embedMetadata(QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile);

} // namespace codec
