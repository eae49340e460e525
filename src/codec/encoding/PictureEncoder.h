#pragma once

#include "codec/metadata/MetadataBlocks.h"

#include <QByteArray>
#include <QImage>
#include <QString>
#include <QStringList>

#include <functional>
#include <stop_token>

namespace codec {

/// How a picture is written.
struct EncodeSettings {
    QString type;            ///< identifier, one of `writableTypes`
    double quality = 0.8;    ///< from 0 to 1; for types that have one
    int tiffCompression = 1; ///< TIFF's number of it (TIFF 6.0, tag 259); 1: none
    int threads = 1;         ///< that slow encoders may use
    /// Ends an encoding early, without a file; see `EncodeApart`.
    std::stop_token stop = {};
};

/// The types that can be written here, in the order in which they are offered. HEIC is one where
/// its library has an encoder.
[[nodiscard]] QStringList writableTypes();
/// Whether the type has a quality to choose.
[[nodiscard]] bool hasQuality(const QString& type);
/// Whether metadata can be written into files of the type.
[[nodiscard]] bool hasMetadata(const QString& type);

/// Whether those of IPTC have a place of their own in such a file; else they are told in XMP.
[[nodiscard]] bool hasIptc(const QString& type);

/// What became of the encoding of a picture.
struct EncodedPicture {
    QByteArray bytes;              ///< a whole file; empty: the picture can't be written so
    bool isMetadataWritten = true; ///< false: not all of it is in the file
};

/// Puts metadata and a profile into an encoded file; false leaves it as it was. Of types whose
/// encoders don't: see `FrameReader::embedMetadata`.
using Embed = std::function<bool(
    QByteArray& file, const MetadataBlocks& metadata, const QByteArray& profile)>;

/// Encodes pixels as a type whose library can't be asked to stop (JPEG 2000, JPEG XL, AVIF, HEIC),
/// wherever that can be ended: see `FrameReader::encode`. Empty where it failed or was stopped.
using EncodeApart = std::function<QByteArray(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings)>;

/// The same in this process, to the end. The image as `encodePicture` hands it on.
[[nodiscard]] QByteArray encodeToTheEnd(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings);

/// The file of a picture. The image is one of the formats that decoders answer with. Of 16 bits a
/// channel PNG, TIFF, JPEG 2000 and JPEG XL keep all, AVIF and HEIC ten, which is what their
/// readers know, the others eight. Types without transparency get a white ground. `profile`: ICC
/// bytes of the image's colours, embedded; empty for sRGB, which is not. JPEG, PNG and TIFF files
/// say how many of its pixels go to a meter. Without `apart` all is encoded in this process. Any
/// thread.
[[nodiscard]] EncodedPicture encodePicture(
    const QImage& image, const QByteArray& profile, const MetadataBlocks& metadata,
    const EncodeSettings& settings, const Embed& embed, const EncodeApart& apart = {});

} // namespace codec
