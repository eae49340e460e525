#include "scan/FileProperties.h"

#include "catalogue/MetadataKeys.h"
#include "core/Angles.h"
#include "core/FileTypes.h"

#include <algorithm>

namespace {

PBValue orNull(const PBValue& value) {
    return value.isAbsent() ? PBValue(PBNull{}) : value;
}

std::optional<PBDictionary> columnsOf(
    const PBDictionary& properties, const QString& key,
    PBDictionary (*convert)(const PBDictionary&)) {
    const PBDictionary* part = valueForKey(properties, key).dictionary();
    if (!part) return std::nullopt;
    return convert(*part);
}

double rotationOf(const PBDictionary& properties) {
    const PBDictionary* tiff = valueForKey(properties, QStringLiteral("{TIFF}")).dictionary();
    if (!tiff) return 0;
    const qint64 orientation = valueForKey(*tiff, QStringLiteral("Orientation")).toInteger();
    return PBUtilities::orientationToAngle(static_cast<int>(orientation));
}

} // namespace

FileProperty makeFileProperty(
    const QString& folderPath, const QString& fileName, qint64 folderId, NewFile file) {
    const platform::ResourceValues& values = *file.values;
    const PBDictionary& properties = file.properties.properties;
    const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(fileName));
    // Nothing rather than 0 of what was looked at and is no picture. 0 stands in rows of former
    // versions, whatever it was that went wrong.
    const auto size = [&](const QString& key) -> PBValue {
        if (file.properties.status == codec::PropertiesStatus::Unreadable) return PBNull{};
        return static_cast<quint64>(std::max<qint64>(valueForKey(properties, key).toInteger(), 0));
    };
    FileProperty property;
    property.parentFolderPath = folderPath;
    property.identity = values.identity;
    property.baseProperty = {
        {QStringLiteral("FolderId"), static_cast<quint64>(folderId)},
        {QStringLiteral("FileName"), fileName},
        {QStringLiteral("FileSize"), values.fileSize},
        {QStringLiteral("ModificationDate"), PBDate{values.modificationDate}},
        {QStringLiteral("CreationDate"), PBDate{values.creationDate}},
        {QStringLiteral("UTIType"), type.isEmpty() ? PBValue(PBNull{}) : PBValue(type)},
        {QStringLiteral("ImageWidth"), size(QStringLiteral("PixelWidth"))},
        {QStringLiteral("ImageHeight"), size(QStringLiteral("PixelHeight"))},
        {QStringLiteral("ImageDPI"), orNull(valueForKey(properties, QStringLiteral("DPIWidth")))},
        {QStringLiteral("ColorModel"),
         orNull(valueForKey(properties, QStringLiteral("ColorModel")))},
        {QStringLiteral("ColorSyncProfile"),
         orNull(valueForKey(properties, QStringLiteral("ProfileName")))},
        {QStringLiteral("RotateAngle"), rotationOf(properties)},
        {QStringLiteral("FileStars"), 0},
        {QStringLiteral("FileFlag"), false},
    };
    property.exifProperty =
        columnsOf(properties, QStringLiteral("{Exif}"), &PBUtilities::databaseDictFromExifPropDict);
    property.exifAuxProperty = columnsOf(
        properties, QStringLiteral("{ExifAux}"), &PBUtilities::databaseDictFromExifAuxPropDict);
    property.tiffProperty =
        columnsOf(properties, QStringLiteral("{TIFF}"), &PBUtilities::databaseDictFromTiffPropDict);
    property.iptcProperty =
        columnsOf(properties, QStringLiteral("{IPTC}"), &PBUtilities::databaseDictFromIPTCPropDict);
    property.gpsProperty =
        columnsOf(properties, QStringLiteral("{GPS}"), &PBUtilities::databaseDictFromGPSPropDict);
    property.imageImporter = std::move(file.importer);
    return property;
}
