#include "grouptree/Pictures.h"

#include "FMDB/FMDatabase.h"
#include "catalogue/MetadataKeys.h"
#include "codec/metadata/ImageProperties.h"
#include "core/FileTypes.h"
#include "platform/files/FileManager.h"

#include <QDirIterator>
#include <QFile>

#include <map>

namespace {

PBValue entry(const PBDictionary& properties, const QString& key) {
    const auto found = properties.find(key);
    return found == properties.end() ? PBValue(PBNull{}) : found->second;
}

PBDictionary nested(const PBDictionary& properties, const QString& key) {
    const PBValue value = entry(properties, key);
    return value.isDictionary() ? *value.dictionary() : PBDictionary();
}

bool addPicture(PBCatalogue& catalogue, const QFileInfo& info, qint64 folderId) {
    const QString path = info.absoluteFilePath();
    const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(path));
    QFile file(path);
    const auto values = platform::FileManager::resourceValues(path);
    if (type.isEmpty() || !values || !file.open(QIODevice::ReadOnly)) return false;
    const auto properties = codec::readImageProperties(file.handle(), type, 0);
    if (!properties) return false;
    const qint64 id = catalogue.insertImageFileWithDictionary({
        {QStringLiteral("FolderId"), folderId},
        {QStringLiteral("FileName"), info.fileName()},
        {QStringLiteral("FileSize"), values->fileSize},
        {QStringLiteral("ModificationDate"), values->modificationDate},
        {QStringLiteral("UTIType"), type},
        {QStringLiteral("ImageWidth"), entry(*properties, QStringLiteral("PixelWidth"))},
        {QStringLiteral("ImageHeight"), entry(*properties, QStringLiteral("PixelHeight"))},
        {QStringLiteral("ImageDPI"), entry(*properties, QStringLiteral("DPIWidth"))},
        {QStringLiteral("ColorModel"), entry(*properties, QStringLiteral("ColorModel"))},
    });
    using namespace PBUtilities;
    const auto part = [&](const char* key) {
        return nested(*properties, QString::fromLatin1(key));
    };
    catalogue.insertExifWithImageFileId(id, databaseDictFromExifPropDict(part("{Exif}")));
    catalogue.insertExifAuxWithImageFileId(id, databaseDictFromExifAuxPropDict(part("{ExifAux}")));
    catalogue.insertTiffWithImageFileId(id, databaseDictFromTiffPropDict(part("{TIFF}")));
    catalogue.insertIPTCWithImageFileId(id, databaseDictFromIPTCPropDict(part("{IPTC}")));
    const PBDictionary gps = databaseDictFromGPSPropDict(part("{GPS}"));
    if (!gps.empty()) catalogue.insertGPSWithImageFileId(id, gps);
    return true;
}

} // namespace

int catalogueFolder(PBCatalogue& catalogue, const QString& folder) {
    int count = 0;
    std::map<QString, qint64> folderIds;
    QDirIterator files(folder, QDir::Files, QDirIterator::Subdirectories);
    while (files.hasNext()) {
        files.next();
        const QFileInfo info = files.fileInfo();
        qint64& folderId = folderIds[info.absolutePath()];
        if (folderId == 0) {
            const qint64 aliasId =
                catalogue.insertFolderAliasWithData({}, 0, info.absolutePath(), 0);
            folderId = catalogue.insertFolderWithAliasId(aliasId, {});
        }
        if (addPicture(catalogue, info, folderId)) ++count;
    }
    return count;
}
