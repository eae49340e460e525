#include "group/GroupTypes.h"

#include "platform/program/LocalizedTexts.h"

#include <algorithm>
#include <array>
#include <limits>

namespace group {

namespace {

using K = IconName::Kind;
using S = GroupSource;

struct Row {
    QStringView dbKey;
    QStringView descriptionKey;
    K iconKind;
    QStringView icon;
    bool ascending;
    GroupSource source;
};

/// The one table of the types; a row's index is its number.
// clang-format off
constexpr std::array<Row, groupTypeCount> table{{
    {u"", u"", K::Named, u"total_n", true, S::None}, // 0
    {u"ModificationDate", u"GroupType_ModifiedDate_Year", K::Named, u"date_n", false, S::Item}, // 1
    {u"ModificationDate", u"GroupType_ModifiedDate_Month", K::Named, u"date_n", false, S::Item}, // 2
    {u"DateTimeOriginal", u"GroupType_CaptureDate_Year", K::Named, u"date_n", false, S::Exif}, // 3
    {u"DateTimeOriginal", u"GroupType_CaptureDate_Month", K::Named, u"date_n", false, S::Exif}, // 4
    {u"", u"GroupType_Folder", K::Folder, u"", true, S::Task}, // 5
    {u"UTIType", u"UTIType", K::TypeIdentifier, u"public.image", true, S::Row}, // 6
    {u"FileSize", u"FileSize", K::Named, u"fileSize_n", true, S::Item}, // 7
    {u"", u"ImageSize", K::Named, u"fileSize_n", true, S::Item}, // 8
    {u"ImageDPI", u"ImageDPI", K::Named, u"dpi_n", true, S::Row}, // 9
    {u"ColorModel", u"ColorModel", K::Named, u"colorModel_n", true, S::Row}, // 10
    {u"FileFlag", u"FileFlag", K::Named, u"flag_16_s", false, S::Row}, // 11
    {u"FileStars", u"FileStars", K::Named, u"star_16_s", false, S::Row}, // 12
    {u"Tag", u"Tag", K::Named, u"tag_n", true, S::Row}, // 13
    {u"", u"Location", K::Named, u"location_n", true, S::GPS}, // 14
    {u"Make", u"Make", K::Named, u"camera_n", true, S::Tiff}, // 15
    {u"Model", u"Model", K::Named, u"camera_n", true, S::Tiff}, // 16
    {u"LensMake", u"LensMake", K::Named, u"lens_n", true, S::Exif}, // 17
    {u"LensModel", u"LensModel", K::Named, u"lens_n", true, S::ExifAux}, // 18
    {u"LensInfo", u"LensInfo", K::Named, u"lens_n", true, S::ExifAux}, // 19
    {u"FocalLength", u"FocalLength", K::Named, u"focal_n", true, S::Exif}, // 20
    {u"FNumber", u"FNumber", K::Named, u"aperture_n", true, S::Exif}, // 21
    {u"ExposureTime", u"ExposureTime", K::Named, u"exposure_n", true, S::Exif}, // 22
    {u"ExposureBiasValue", u"ExposureBiasValue", K::Named, u"exposure_n", true, S::Exif}, // 23
    {u"ExposureMode", u"ExposureMode", K::Named, u"exposure_n", true, S::Exif}, // 24
    {u"ExposureProgram", u"ExposureProgram", K::Named, u"exposure_n", true, S::Exif}, // 25
    {u"ISOSpeedRatings", u"ISOSpeedRatings", K::Named, u"iso_n", true, S::Exif}, // 26
    {u"FocusDistance", u"FocusDistance", K::Named, u"focal_n", true, S::ExifAux}, // 27
    {u"SubjectDistance", u"SubjectDistance", K::FileExtension, u"jpeg", true, S::None}, // 28
    {u"Flash", u"Flash", K::Named, u"flash_n", true, S::Exif}, // 29
    {u"MeteringMode", u"MeteringMode", K::FileExtension, u"jpeg", true, S::Exif}, // 30
    {u"WhiteBalance", u"WhiteBalance", K::Named, u"whitebalance_n", true, S::Exif}, // 31
    {u"Contrast", u"Contrast", K::Named, u"contrast_n", true, S::Exif}, // 32
    {u"Saturation", u"Saturation", K::Named, u"saturation_n", true, S::Exif}, // 33
    {u"Sharpness", u"Sharpness", K::Named, u"sharpness_n", true, S::Exif}, // 34
    {u"ObjectName", u"ObjectName", K::Named, u"iptc_n", true, S::IPTC}, // 35
    {u"Headline", u"Headline", K::Named, u"iptc_n", true, S::IPTC}, // 36
    {u"Caption_Abstract", u"Caption_Abstract", K::Named, u"iptc_n", true, S::IPTC}, // 37
    {u"Writer_Editor", u"Writer_Editor", K::Named, u"iptc_n", true, S::IPTC}, // 38
    {u"Keywords", u"Keywords", K::Named, u"iptc_n", true, S::IPTC}, // 39
    {u"SubjectReference", u"SubjectReference", K::Named, u"iptc_n", true, S::IPTC}, // 40
    {u"Byline", u"Byline", K::Named, u"iptc_n", true, S::IPTC}, // 41
    {u"BylineTitle", u"BylineTitle", K::Named, u"iptc_n", true, S::IPTC}, // 42
    {u"CiAdrExtadr", u"CiAdrExtadr", K::Named, u"iptc_n", true, S::IPTC}, // 43
    {u"CiAdrCity", u"CiAdrCity", K::Named, u"iptc_n", true, S::IPTC}, // 44
    {u"CiAdrRegion", u"CiAdrRegion", K::Named, u"iptc_n", true, S::IPTC}, // 45
    {u"CiAdrPcode", u"CiAdrPcode", K::Named, u"iptc_n", true, S::IPTC}, // 46
    {u"CiAdrCtry", u"CiAdrCtry", K::Named, u"iptc_n", true, S::IPTC}, // 47
    {u"CiTelWork", u"CiTelWork", K::Named, u"iptc_n", true, S::IPTC}, // 48
    {u"CiEmailWork", u"CiEmailWork", K::Named, u"iptc_n", true, S::IPTC}, // 49
    {u"CiUrlWork", u"CiUrlWork", K::Named, u"iptc_n", true, S::IPTC}, // 50
    {u"CopyrightNotice", u"CopyrightNotice", K::Named, u"iptc_n", true, S::IPTC}, // 51
    {u"UsageTerms", u"UsageTerms", K::Named, u"iptc_n", true, S::IPTC}, // 52
    {u"ObjectAttributeReference", u"ObjectAttributeReference", K::Named, u"iptc_n", true, S::IPTC}, // 53
    {u"Scene", u"Scene", K::Named, u"iptc_n", true, S::IPTC}, // 54
    {u"SubLocation", u"SubLocation", K::Named, u"iptc_n", true, S::IPTC}, // 55
    {u"City", u"City", K::Named, u"iptc_n", true, S::IPTC}, // 56
    {u"Province_State", u"Province_State", K::Named, u"iptc_n", true, S::IPTC}, // 57
    {u"Country_PrimaryLocationName", u"Country_PrimaryLocationName", K::Named, u"iptc_n", true, S::IPTC}, // 58
    {u"Country_PrimaryLocationCode", u"Country_PrimaryLocationCode", K::Named, u"iptc_n", true, S::IPTC}, // 59
    {u"OriginalTransmissionReference", u"OriginalTransmissionReference", K::Named, u"iptc_n", true, S::IPTC}, // 60
    {u"SpecialInstructions", u"SpecialInstructions", K::Named, u"iptc_n", true, S::IPTC}, // 61
    {u"Source", u"Source", K::Named, u"iptc_n", true, S::IPTC}, // 62
    {u"Credit", u"Credit", K::Named, u"iptc_n", true, S::IPTC}, // 63
}};
// clang-format on

const Row* rowOf(int type) {
    return type >= 0 && type < groupTypeCount ? &table[static_cast<std::size_t>(type)] : nullptr;
}

/// The columns of one table, for each type of the chain that has its values from there.
ColumnDescriptors columnsOfSource(std::span<const int> chain, GroupSource source) {
    ColumnDescriptors descriptors;
    for (std::size_t position = 0; position < chain.size(); ++position) {
        const int type = chain[position];
        if (sourceOfGroupType(type) == source) {
            descriptors.push_back({{dbKeyWithGroupType(type)}, position, type});
        } else if (type == FocusDistance && source == GroupSource::Exif) {
            // Cameras that don't tell the distance of focus often tell that of the subject; the
            // table ExifAux, which is read later, has the last word.
            descriptors.push_back({{QStringLiteral("SubjectDistance")}, position, type});
        }
    }
    return descriptors;
}

struct Bucket {
    qint64 upperBound;
    QStringView label;
};

constexpr std::array<Bucket, 12> buckets{{
    {10240, u"0 ~ 10K"},
    {51200, u"10 ~ 50K"},
    {102400, u"50 ~ 100K"},
    {204800, u"100 ~ 200K"},
    {512000, u"200 ~ 500K"},
    {1048576, u"500K ~ 1M"},
    {5242880, u"1 ~ 5M"},
    {10485760, u"5 ~ 10M"},
    {20971520, u"10 ~ 20M"},
    {52428800, u"20 ~ 50M"},
    {104857600, u"50 ~ 100M"},
    {std::numeric_limits<qint64>::max(), u"> 100M"},
}};

} // namespace

bool isAscendingWithGroupType(int type) {
    const Row* row = rowOf(type);
    return !row || row->ascending;
}

QString dbKeyWithGroupType(int type) {
    const Row* row = rowOf(type);
    return row ? row->dbKey.toString() : QString();
}

QString descriptionWithDbKey(QStringView key) {
    return key.isEmpty() ? QString() : platform::localizedString(key);
}

QString descriptionWithGroupType(int type) {
    const Row* row = rowOf(type);
    return row ? descriptionWithDbKey(row->descriptionKey) : QString();
}

IconName imageWithGroupType(int type) {
    const Row* row = rowOf(type);
    return row ? IconName{row->iconKind, row->icon.toString()} : IconName{};
}

GroupSource sourceOfGroupType(int type) {
    const Row* row = rowOf(type);
    return row ? row->source : GroupSource::None;
}

ColumnDescriptors exifTypeForGroupType(std::span<const int> chain) {
    return columnsOfSource(chain, GroupSource::Exif);
}

ColumnDescriptors exifAuxiliaryTypeForGroupType(std::span<const int> chain) {
    return columnsOfSource(chain, GroupSource::ExifAux);
}

ColumnDescriptors tiffTypeForGroupType(std::span<const int> chain) {
    return columnsOfSource(chain, GroupSource::Tiff);
}

ColumnDescriptors iptcTypeForGroupType(std::span<const int> chain) {
    return columnsOfSource(chain, GroupSource::IPTC);
}

const QStringList& positionColumns() {
    static const QStringList columns{
        QStringLiteral("LatitudeRef"), QStringLiteral("Latitude"), QStringLiteral("LongitudeRef"),
        QStringLiteral("Longitude")};
    return columns;
}

ColumnDescriptors gpsTypeForGroupType(std::span<const int> chain) {
    ColumnDescriptors descriptors = columnsOfSource(chain, GroupSource::GPS);
    for (ColumnDescriptor& descriptor : descriptors)
        descriptor.columns = positionColumns();
    return descriptors;
}

int sizeBucket(qint64 size) {
    const auto bucket = std::ranges::lower_bound(buckets, size, {}, &Bucket::upperBound);
    return static_cast<int>(bucket - buckets.begin());
}

QString sizeBucketLabel(qint64 bucket) {
    if (bucket < 0 || bucket >= static_cast<qint64>(buckets.size())) return {};
    return buckets[static_cast<std::size_t>(bucket)].label.toString();
}

} // namespace group
