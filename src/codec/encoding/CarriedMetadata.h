#pragma once

#include <QByteArray>
#include <QSize>

namespace codec {

/// The metadata of a photograph, fit to go into another file: for upright pixels, without the small
/// picture of the former ones, and without what only a raw file needs.
struct CarriedMetadata {
    QByteArray exif; ///< as in a TIFF file of its own, the bytes "Exif" not included
    QByteArray iptc; ///< its data sets
    QByteArray xmp;  ///< a packet

    [[nodiscard]] bool isEmpty() const { return exif.isEmpty() && iptc.isEmpty() && xmp.isEmpty(); }
};

/// What a file holds, with orientation 1 and the size of the new picture; without `location` no
/// position is among it. Empty where the file holds nothing, or is damaged. Any thread; calls wait
/// for each other.
[[nodiscard]] CarriedMetadata carriedMetadata(const QByteArray& file, QSize size, bool location);

/// Puts metadata and profile into an encoded JPEG, PNG, TIFF, WebP or JPEG 2000 file; false leaves
/// it as it was.
[[nodiscard]] bool
embedMetadata(QByteArray& file, const CarriedMetadata& metadata, const QByteArray& profile);

} // namespace codec
