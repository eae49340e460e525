#pragma once

#include "codec/metadata/PictureProperties.h"

#include <QByteArray>

#include <optional>

namespace codec {

/// The metadata of a photograph as they can be put into another file: without the small picture,
/// and without what says how the former file's pixels are stored.
struct MetadataBlocks {
    QByteArray exif; ///< as in a TIFF file of its own, the bytes "Exif" not included
    QByteArray iptc; ///< its data sets
    QByteArray xmp;  ///< a packet
    /// False: some were left out, since they are damaged or larger than any file should carry.
    bool isComplete = true;

    [[nodiscard]] bool isEmpty() const { return exif.isEmpty() && iptc.isEmpty() && xmp.isEmpty(); }
};

/// Bytes of one block at most.
inline constexpr qsizetype largestMetadataBlock = qsizetype{1} << 20;

/// The same with what a missing answer means, as for properties.
struct ReadMetadata {
    PropertiesStatus status = PropertiesStatus::NotNow;
    MetadataBlocks blocks; ///< empty unless they were read
};

/// Reads the blocks of an open file, whose descriptor may stand anywhere and stays open; empty
/// where it holds none or is damaged, nothing where it can't be read. Never throws. Any thread;
/// calls wait for each other.
[[nodiscard]] std::optional<MetadataBlocks> readMetadataBlocks(int descriptor);

} // namespace codec
