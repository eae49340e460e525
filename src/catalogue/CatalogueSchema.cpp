#include "catalogue/CatalogueSchema.h"

#include <map>

namespace {

constexpr QStringView CountedKey = u"INTEGER PRIMARY KEY AUTOINCREMENT";
constexpr QStringView GivenKey = u"INTEGER NOT NULL PRIMARY KEY";
constexpr QStringView Integer = u"INTEGER";
constexpr QStringView Double = u"DOUBLE";
constexpr QStringView Text = u"TEXT";
constexpr QStringView Blob = u"BLOB";

constexpr CatalogueColumn versionColumns[] = {
    {u"Version", Text},
};

constexpr CatalogueColumn folderAliasColumns[] = {
    {u"Id", CountedKey},    {u"Data", Blob},     {u"Type", Integer},
    {u"ReservePath", Text}, {u"State", Integer},
};

constexpr CatalogueColumn folderColumns[] = {
    {u"Id", CountedKey},
    {u"AliasId", Integer},
    {u"RelativePath", Text},
};

constexpr CatalogueColumn imageFileColumns[] = {
    {u"Id", CountedKey},
    {u"FolderId", Integer},
    {u"FileName", Text},
    {u"FileSize", Integer},
    {u"ModificationDate", Double},
    {u"CreationDate", Double},
    {u"UTIType", Text},
    {u"ImageWidth", Integer},
    {u"ImageHeight", Integer},
    {u"ImageDPI", Integer},
    {u"ColorModel", Text},
    {u"ColorSyncProfile", Text},
    {u"RotateAngle", Double},
    {u"Tag", Text},
    {u"FileStars", Integer},
    {u"FileFlag", Integer},
};

constexpr CatalogueColumn exifColumns[] = {
    {u"FileId", GivenKey},
    {u"ExposureTime", Double},
    {u"FNumber", Double},
    {u"ExposureProgram", Integer},
    {u"SpectralSensitivity", Text},
    {u"ISOSpeedRatings", Text},
    {u"OECF", Text},
    {u"ExifVersion", Text},
    {u"DateTimeOriginal", Text},
    {u"DateTimeDigitized", Text},
    {u"ComponentsConfiguration", Text},
    {u"CompressedBitsPerPixel", Integer},
    {u"ShutterSpeedValue", Double},
    {u"ApertureValue", Double},
    {u"BrightnessValue", Double},
    {u"ExposureBiasValue", Double},
    {u"MaxApertureValue", Double},
    {u"SubjectDistance", Double},
    {u"MeteringMode", Integer},
    {u"LightSource", Integer},
    {u"Flash", Integer},
    {u"FocalLength", Double},
    {u"SubjectArea", Text},
    {u"MakerNote", Text},
    {u"UserComment", Text},
    {u"SubsecTime", Text},
    {u"SubsecTimeOriginal", Text},
    {u"SubsecTimeDigitized", Text},
    {u"FlashPixVersion", Text},
    {u"ColorSpace", Integer},
    {u"PixelXDimension", Integer},
    {u"PixelYDimension", Integer},
    {u"RelatedSoundFile", Text},
    {u"FlashEnergy", Double},
    {u"SpatialFrequencyResponse", Text},
    {u"FocalPlaneXResolution", Double},
    {u"FocalPlaneYResolution", Double},
    {u"FocalPlaneResolutionUnit", Integer},
    {u"SubjectLocation", Text},
    {u"ExposureIndex", Double},
    {u"SensingMethod", Integer},
    {u"FileSource", Integer},
    {u"SceneType", Integer},
    {u"CFAPattern", Text},
    {u"CustomRendered", Integer},
    {u"ExposureMode", Integer},
    {u"WhiteBalance", Integer},
    {u"DigitalZoomRatio", Double},
    {u"FocalLenIn35mmFilm", Integer},
    {u"SceneCaptureType", Integer},
    {u"GainControl", Integer},
    {u"Contrast", Integer},
    {u"Saturation", Integer},
    {u"Sharpness", Integer},
    {u"DeviceSettingDescription", Text},
    {u"SubjectDistRange", Integer},
    {u"ImageUniqueID", Text},
    {u"Gamma", Double},
    {u"CameraOwnerName", Text},
    {u"BodySerialNumber", Text},
    {u"LensSpecification", Text},
    {u"LensMake", Text},
    {u"LensModel", Text},
    {u"LensSerialNumber", Text},
};

constexpr CatalogueColumn tiffColumns[] = {
    {u"FileId", GivenKey},
    {u"Compression", Integer},
    {u"PhotometricInterpretation", Integer},
    {u"DocumentName", Text},
    {u"ImageDescription", Text},
    {u"Make", Text},
    {u"Model", Text},
    {u"Orientation", Integer},
    {u"XResolution", Integer},
    {u"YResolution", Integer},
    {u"ResolutionUnit", Integer},
    {u"Software", Text},
    {u"TransferFunction", Text},
    {u"DateTime", Text},
    {u"Artist", Text},
    {u"HostComputer", Text},
    {u"Copyright", Text},
    {u"WhitePoint", Integer},
    {u"PrimaryChromaticities", Text},
};

constexpr CatalogueColumn iptcColumns[] = {
    {u"FileId", GivenKey},
    {u"ObjectTypeReference", Text},
    {u"ObjectAttributeReference", Text},
    {u"ObjectName", Text},
    {u"EditStatus", Text},
    {u"EditorialUpdate", Text},
    {u"Urgency", Text},
    {u"SubjectReference", Text},
    {u"Category", Text},
    {u"SupplementalCategory", Text},
    {u"FixtureIdentifier", Text},
    {u"Keywords", Text},
    {u"ContentLocationCode", Text},
    {u"ContentLocationName", Text},
    {u"ReleaseDate", Text},
    {u"ReleaseTime", Text},
    {u"ExpirationDate", Text},
    {u"ExpirationTime", Text},
    {u"SpecialInstructions", Text},
    {u"ActionAdvised", Text},
    {u"ReferenceService", Text},
    {u"ReferenceDate", Text},
    {u"ReferenceNumber", Text},
    {u"DateCreated", Text},
    {u"TimeCreated", Text},
    {u"DigitalCreationDate", Text},
    {u"DigitalCreationTime", Text},
    {u"OriginatingProgram", Text},
    {u"ProgramVersion", Text},
    {u"ObjectCycle", Text},
    {u"Byline", Text},
    {u"BylineTitle", Text},
    {u"City", Text},
    {u"SubLocation", Text},
    {u"Province_State", Text},
    {u"Country_PrimaryLocationCode", Text},
    {u"Country_PrimaryLocationName", Text},
    {u"OriginalTransmissionReference", Text},
    {u"Headline", Text},
    {u"Credit", Text},
    {u"Source", Text},
    {u"CopyrightNotice", Text},
    {u"Contact", Text},
    {u"Caption_Abstract", Text},
    {u"Writer_Editor", Text},
    {u"ImageType", Text},
    {u"ImageOrientation", Text},
    {u"LanguageIdentifier", Text},
    {u"StarRating", Integer},
    {u"CiAdrCity", Text},
    {u"CiAdrCtry", Text},
    {u"CiAdrExtadr", Text},
    {u"CiAdrPcode", Text},
    {u"CiAdrRegion", Text},
    {u"CiEmailWork", Text},
    {u"CiTelWork", Text},
    {u"CiUrlWork", Text},
    {u"UsageTerms", Text},
    {u"Scene", Text},
};

constexpr CatalogueColumn gpsColumns[] = {
    {u"FileId", GivenKey},     {u"GPSVersion", Text},       {u"LatitudeRef", Text},
    {u"Latitude", Double},     {u"LongitudeRef", Text},     {u"Longitude", Double},
    {u"AltitudeRef", Text},    {u"Altitude", Double},       {u"TimeStamp", Text},
    {u"Satellites", Text},     {u"Status", Text},           {u"MeasureMode", Text},
    {u"DOP", Double},          {u"SpeedRef", Text},         {u"Speed", Double},
    {u"TrackRef", Text},       {u"Track", Double},          {u"ImgDirectionRef", Text},
    {u"ImgDirection", Double}, {u"MapDatum", Text},         {u"DestLatitudeRef", Text},
    {u"DestLatitude", Double}, {u"DestLongitudeRef", Text}, {u"DestLongitude", Double},
    {u"DestBearingRef", Text}, {u"DestBearing", Double},    {u"DestDistanceRef", Text},
    {u"DestDistance", Double}, {u"ProcessingMethod", Text}, {u"AreaInformation", Text},
    {u"DateStamp", Text},      {u"Differential", Integer},
};

constexpr CatalogueColumn geoColumns[] = {
    {u"GeoId", CountedKey},
    {u"Longitude", Blob},
    {u"Latitude", Blob},
    {u"AddressDict", Blob},
};

constexpr CatalogueColumn exifAuxColumns[] = {
    {u"FileId", GivenKey},
    {u"LensInfo", Text},
    {u"LensModel", Text},
    {u"SerialNumber", Text},
    {u"LensID", Text},
    {u"LensSerialNumber", Text},
    {u"ImageNumber", Text},
    {u"FlashCompensation", Text},
    {u"OwnerName", Text},
    {u"Firmware", Text},
    {u"FocusMode", Text},
    {u"FocusDistance", Double},
    {u"ImageStabilization", Double},
};

constexpr CatalogueColumn tagsColumns[] = {
    {u"Id", GivenKey},
    {u"Tag", Text},
    {u"UseCount", Integer},
};

constexpr CatalogueColumn thumbnailColumns[] = {
    {u"FileId", GivenKey},
    {u"Data", Blob},
};
constexpr CatalogueTable filesTableList[] = {
    {u"Version", versionColumns}, {u"FolderAlias", folderAliasColumns},
    {u"Folder", folderColumns},   {u"ImageFile", imageFileColumns},
    {u"Exif", exifColumns},       {u"Tiff", tiffColumns},
    {u"IPTC", iptcColumns},       {u"GPS", gpsColumns},
    {u"Geo", geoColumns},         {u"ExifAux", exifAuxColumns},
    {u"Tags", tagsColumns},
};

constexpr CatalogueTable thumbnailTableList[] = {
    {u"Version", versionColumns},
    {u"Thumbnail", thumbnailColumns},
};

constexpr CatalogueIndex filesIndexList[] = {
    {u"ImageFileByFolderId", u"ImageFile", u"FolderId"},
    {u"FolderByAliasId", u"Folder", u"AliasId"},
};

constexpr QStringView metadataTables[] = {u"Exif", u"ExifAux", u"Tiff", u"IPTC", u"GPS"};

using ColumnLists = std::map<QStringView, QStringList>;

ColumnLists makeColumnLists() {
    ColumnLists lists;
    for (const auto tables : {CatalogueSchema::filesTables(), CatalogueSchema::thumbnailTables()}) {
        for (const CatalogueTable& table : tables) {
            QStringList names;
            for (const CatalogueColumn& column : table.columns)
                names.append(column.name.toString());
            lists[table.name] = names;
        }
    }
    return lists;
}

const ColumnLists& columnLists() {
    static const ColumnLists lists = makeColumnLists();
    return lists;
}

ColumnLists makeMetadataColumnLists() {
    ColumnLists lists;
    for (const QStringView table : metadataTables)
        lists[table] = CatalogueSchema::columnsOfTable(table).mid(1);
    return lists;
}

const QStringList& listNamed(const ColumnLists& lists, QStringView name) {
    static const QStringList none;
    const auto found = lists.find(name);
    return found == lists.end() ? none : found->second;
}

} // namespace

std::span<const CatalogueTable> CatalogueSchema::filesTables() {
    return filesTableList;
}

std::span<const CatalogueTable> CatalogueSchema::thumbnailTables() {
    return thumbnailTableList;
}

std::span<const CatalogueIndex> CatalogueSchema::filesIndexes() {
    return filesIndexList;
}

const QStringList& CatalogueSchema::columnsOfTable(QStringView name) {
    return listNamed(columnLists(), name);
}

const QStringList& CatalogueSchema::metadataColumnsOfTable(QStringView name) {
    static const ColumnLists lists = makeMetadataColumnLists();
    return listNamed(lists, name);
}

QString CatalogueSchema::createStatement(const CatalogueTable& table) {
    QStringList columns;
    for (const CatalogueColumn& column : table.columns)
        columns.append(QStringLiteral("%1 %2").arg(column.name, column.sqlType));
    return QStringLiteral("create table %1 (%2)")
        .arg(table.name, columns.join(QStringLiteral(", ")));
}

QString CatalogueSchema::createStatement(const CatalogueIndex& index) {
    return QStringLiteral("create index if not exists %1 on %2 (%3)")
        .arg(index.name, index.table, index.column);
}
