#include "image/ThumbnailStore.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "codec/Bitmaps.h"

namespace ThumbnailStore {

bool isThumbnailExist(FMDatabase& thumbnailDb, qint64 fileId) {
    return !PBCatalogue(thumbnailDb)
                .thumbnailDataWithFileIdAndFields(fileId, {QStringLiteral("FileId")})
                .empty();
}

QByteArray thumbnailData(FMDatabase& thumbnailDb, qint64 fileId) {
    const PBArray values =
        PBCatalogue(thumbnailDb).thumbnailDataWithFileIdAndFields(fileId, {QStringLiteral("Data")});
    return values.empty() ? QByteArray() : values.front().toBytes();
}

QImage
loadThumbnail(FMDatabase& thumbnailDb, qint64 fileId, bool preload, const QColorSpace& colorSpace) {
    const QByteArray data = thumbnailData(thumbnailDb, fileId);
    if (data.isEmpty()) return {};
    const QImage image = PBUtilities::dataToCGImageRef(data);
    if (image.isNull() || !preload) return image;
    const QImage preloaded = PBUtilities::preloadedImageRef(image, colorSpace);
    return preloaded.isNull() ? image : preloaded;
}

QByteArray encode(const QImage& image) {
    return image.hasAlphaChannel() ? PBUtilities::cgImageRefToPngData(image)
                                   : PBUtilities::cgImageRefToJpegData(image);
}

} // namespace ThumbnailStore
