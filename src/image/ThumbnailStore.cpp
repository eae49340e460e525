#include "image/ThumbnailStore.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/PBCatalogue.h"
#include "codec/Bitmaps.h"

namespace ThumbnailStore {

namespace {

QByteArray column(FMDatabase& thumbnailDb, qint64 fileId, const QString& name, bool* exists) {
    const PBArray values =
        PBCatalogue(thumbnailDb).thumbnailDataWithFileIdAndFields(fileId, {name});
    *exists = !values.empty();
    return values.empty() ? QByteArray() : values.front().toBytes();
}

} // namespace

QByteArray thumbnailData(FMDatabase& thumbnailDb, qint64 fileId) {
    bool exists = false;
    return column(thumbnailDb, fileId, QStringLiteral("Data"), &exists);
}

bool isThumbnailExist(FMDatabase& thumbnailDb, qint64 fileId) {
    bool exists = false;
    column(thumbnailDb, fileId, QStringLiteral("FileId"), &exists);
    return exists;
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
