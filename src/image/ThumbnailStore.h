#pragma once

#include <QByteArray>
#include <QColorSpace>
#include <QImage>

class FMDatabase;

/// Thumbnails as they are stored: the bytes of a JPEG picture, or of a PNG one where the image has
/// transparent parts. A connection is used on its own thread; the rest may be called from any.
namespace ThumbnailStore {

[[nodiscard]] bool isThumbnailExist(FMDatabase& thumbnailDb, qint64 fileId);

/// The stored bytes; empty if there are none.
[[nodiscard]] QByteArray thumbnailData(FMDatabase& thumbnailDb, qint64 fileId);

/// The picture; null without one, or if its bytes are damaged. With `preload` it comes as a
/// decoded bitmap in the colour space (if that is valid), ready to be drawn.
[[nodiscard]] QImage
loadThumbnail(FMDatabase& thumbnailDb, qint64 fileId, bool preload, const QColorSpace& colorSpace);

/// The bytes to store for a picture; empty if it can't be encoded.
[[nodiscard]] QByteArray encode(const QImage& image);

} // namespace ThumbnailStore
