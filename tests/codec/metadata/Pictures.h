#pragma once

#include "codec/process/Descriptor.h"
#include "formatpictures/ByteWriter.h"
#include "platform/values/PBValue.h"
#include "support/Support.h"

#include <QImage>

#include <exiv2/exiv2.hpp>

namespace pictures {

using formatpictures::ByteWriter;

using Writer = std::function<void(Exiv2::ExifData&, Exiv2::IptcData&, Exiv2::XmpData&)>;

/// The image as the toolkit's writer of the format, such as "PNG", encodes it.
[[nodiscard]] QByteArray saved(const QImage& image, const char* format);
/// A JPEG file of 40 x 30 pixels without metadata.
[[nodiscard]] QByteArray jpeg();
/// A file with the metadata that the writer puts in.
[[nodiscard]] QByteArray withMetadata(const QByteArray& picture, const Writer& writer);

/// A file in memory of the bytes, with zeros behind them up to that size.
[[nodiscard]] codec::process::Descriptor fileOf(const QByteArray& bytes, qint64 size = 0);
/// What `readImageProperties` answers for the bytes as a file.
[[nodiscard]] std::optional<PBDictionary>
propertiesOf(const QByteArray& bytes, const QString& type = {}, std::size_t frame = 0);

/// The text form of an entry, such as "Exif.FNumber"; ".Depth" is one of the top level. Empty where
/// there is none.
[[nodiscard]] QString entry(const std::optional<PBDictionary>& properties, const QString& path);

/// A box of the ISO base media format.
[[nodiscard]] QByteArray box(const char* name, const QByteArray& content);

/// The boxes of a HEIF file with one item of 4000 x 3000 pixels and these further properties, but
/// without a picture.
[[nodiscard]] QByteArray heif(const QList<QByteArray>& properties);

/// Tag, type (3: short, 4: long, 5: fraction), count and value of an entry of a TIFF directory, or
/// where its values lie; a fraction has room for itself only in a big file.
using TiffEntry = std::tuple<unsigned, unsigned, unsigned, quint64>;
/// A directory, and where the next one lies.
void writeDirectory(
    ByteWriter& file, bool isBig, std::span<const TiffEntry> entries, quint64 next = 0);

/// A TIFF file of one page of 40 x 30 gray pixels at 300 dots an inch, with the strip at `stripAt`.
[[nodiscard]] QByteArray tiff(bool big, quint64 stripAt);

} // namespace pictures
