#include "info/rows/MoreInfoRows.h"

#include "group/GroupTypes.h"
#include "group/ShownNumbers.h"
#include "group/ValueTexts.h"
#include "info/rows/DateTexts.h"
#include "platform/program/LocalizedTexts.h"

#include <algorithm>
#include <cmath>

using platform::localizedString;
using Category = MetadataCategory;

namespace MoreInfo {

namespace {

/// A place in the list of the EXIF page, which shows three dictionaries.
struct ExifRow {
    QStringView key;
    Category category = Category::Exif;
    /// Left out where this key of EXIF has a value.
    bool yieldsToExif = false;
};

constexpr ExifRow exifRows[] = {
    {u"Make", Category::TIFF},
    {u"Model", Category::TIFF},
    {u"LensMake"},
    {u"LensModel"},
    {u"LensModel", Category::ExifAux, true},
    {u"FocalLength"},
    {u"FocalLenIn35mmFilm"},
    {u"FNumber"},
    {u"ExposureTime"},
    {u"ExposureBiasValue"},
    {u"ExposureMode"},
    {u"ExposureProgram"},
    {u"ISOSpeedRatings"},
    {u"MeteringMode"},
    {u"FocusDistance", Category::ExifAux},
    {u"Flash"},
    {u"FlashEnergy"},
    {u"FlashCompensation", Category::ExifAux},
    {u"DateTimeOriginal"},
    {u"DateTimeDigitized"},
    {u"WhiteBalance"},
    {u"BrightnessValue"},
    {u"Contrast"},
    {u"Saturation"},
    {u"Sharpness"},
    {u"ImageUniqueID"},
    {u"PixelXDimension"},
    {u"PixelYDimension"},
    {u"ComponentsConfiguration"},
    {u"CompressedBitsPerPixel"},
    {u"ColorSpace"},
    {u"UserComment"},
    {u"ExifVersion"},
    {u"MakerNote"},
    {u"CameraOwnerName"},
    {u"BodySerialNumber"},
    {u"SerialNumber", Category::ExifAux},
    {u"LensSerialNumber"},
    {u"LensSerialNumber", Category::ExifAux},
    {u"LensID", Category::ExifAux},
    {u"LensSpecification"},
    {u"LensInfo", Category::ExifAux},
    {u"SpectralSensitivity"},
    {u"OECF"},
    {u"ShutterSpeedValue"},
    {u"ApertureValue"},
    {u"MaxApertureValue"},
    {u"SubjectDistance"},
    {u"LightSource"},
    {u"SubjectArea"},
    {u"SubsecTime"},
    {u"SubsecTimeOriginal"},
    {u"SubsecTimeDigitized"},
    {u"FlashPixVersion"},
    {u"SpatialFrequencyResponse"},
    {u"FocalPlaneXResolution"},
    {u"FocalPlaneYResolution"},
    {u"FocalPlaneResolutionUnit"},
    {u"SubjectLocation"},
    {u"ExposureIndex"},
    {u"SensingMethod"},
    {u"FileSource"},
    {u"SceneType"},
    {u"CFAPattern"},
    {u"CustomRendered"},
    {u"DigitalZoomRatio"},
    {u"SceneCaptureType"},
    {u"GainControl"},
    {u"DeviceSettingDescription"},
    {u"SubjectDistRange"},
    {u"Gamma"},
};

constexpr QStringView tiffKeys[] = {
    u"Make",
    u"Model",
    u"Software",
    u"HostComputer",
    u"Artist",
    u"Copyright",
    u"DocumentName",
    u"ImageDescription",
    u"DateTime",
    u"XResolution",
    u"YResolution",
    u"ResolutionUnit",
    u"Orientation",
    u"Compression",
    u"WhitePoint",
    u"PhotometricInterpretation",
    u"PrimaryChromaticities",
    u"TransferFunction",
};

constexpr QStringView iptcKeys[] = {
    u"ObjectName",
    u"Headline",
    u"Caption_Abstract",
    u"Writer_Editor",
    u"Keywords",
    u"SubjectReference",
    u"Byline",
    u"BylineTitle",
    u"CiAdrExtadr",
    u"CiAdrCity",
    u"CiAdrRegion",
    u"CiAdrPcode",
    u"CiAdrCtry",
    u"CiTelWork",
    u"CiEmailWork",
    u"CiUrlWork",
    u"CopyrightNotice",
    u"UsageTerms",
    u"ObjectAttributeReference",
    u"Scene",
    u"SubLocation",
    u"City",
    u"Province_State",
    u"Country_PrimaryLocationName",
    u"Country_PrimaryLocationCode",
    u"OriginalTransmissionReference",
    u"SpecialInstructions",
    u"Source",
    u"Credit",
};

/// A reference and its value make one row.
enum class Pair { None, Degrees, Measure };
struct GpsRow {
    QStringView key;
    QStringView reference = {};
    Pair pair = Pair::None;
};

constexpr GpsRow gpsRows[] = {
    {u"GPSVersion"},
    {u"TimeStamp"},
    {u"DateStamp"},
    {u"AltitudeRef"},
    {u"Altitude"},
    {u"Latitude", u"LatitudeRef", Pair::Degrees},
    {u"Longitude", u"LongitudeRef", Pair::Degrees},
    {u"DestLatitude", u"DestLatitudeRef", Pair::Degrees},
    {u"DestLongitude", u"DestLongitudeRef", Pair::Degrees},
    {u"DestBearingRef"},
    {u"DestBearing"},
    {u"DestDistance", u"DestDistanceRef", Pair::Measure},
    {u"Satellites"},
    {u"Status"},
    {u"MeasureMode"},
    {u"DOP"},
    {u"Speed", u"SpeedRef", Pair::Measure},
    {u"TrackRef"},
    {u"Track"},
    {u"ImgDirectionRef"},
    {u"ImgDirection"},
    {u"MapDatum"},
    {u"ProcessingMethod"},
    {u"AreaInformation"},
    {u"Differential"},
};

/// Beyond that, no position on the Earth is meant.
constexpr double mostDegrees = 100000;

const PBValue& valueIn(const MoreInfoDict& dictionaries, Category category, QStringView key) {
    static const PBValue absent;
    const auto found = dictionaries.find(category);
    return found == dictionaries.end() ? absent : valueForKey(found->second, key.toString());
}

bool isCameraDate(QStringView key) {
    return key == u"DateTimeOriginal" || key == u"DateTimeDigitized" || key == u"DateTime" ||
           key == u"DateStamp";
}

/// Without the digits that a fraction leaves behind it.
QString briefNumber(const QString& text) {
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    if (!isNumber) return text;
    constexpr int digits = 3; // of what is less than one
    return std::abs(number) < 1
               ? QString::number(number, 'g', digits)
               : QLocale::c().toString(
                     group::roundedToHundredths(number), 'f', QLocale::FloatingPointShortest);
}

QString valueText(QStringView key, const PBValue& value, const QLocale& locale) {
    if (isCameraDate(key)) {
        if (const auto date = DateTexts::cameraDateText(value.toText(), locale)) return *date;
    }
    const QString text = group::stringWithDbKey(key, value, {});
    const bool isList = key == u"LensSpecification" || key == u"LensInfo";
    if (!isList) return value.isFloating() && text == value.toText() ? briefNumber(text) : text;
    QStringList numbers = text.split(u',');
    for (QString& number : numbers)
        number = briefNumber(number);
    return numbers.join(u',');
}

void addRow(InfoRows& rows, QStringView key, const PBValue& value, const QLocale& locale) {
    if (value.isAbsent()) return;
    InfoRow row{.key = key.toString(), .label = group::descriptionWithDbKey(key)};
    if (value.isNull()) {
        row.state = InfoRow::State::Mixed;
    } else {
        row.text = valueText(key, value, locale);
    }
    rows.push_back(std::move(row));
}

/// In tenths of a second first, so that no second is shown as 60.0.
QString degreesText(const PBValue& value) {
    const double degrees = value.toDouble();
    if (!(std::abs(degrees) < mostDegrees)) return value.toText();
    const auto tenths = static_cast<qint64>(std::llround(std::abs(degrees) * 36000));
    const QString text = platform::formatText(
        u"%d° %d´ %.1f˝",
        {tenths / 36000, tenths / 600 % 60, static_cast<double>(tenths % 600) / 10});
    return degrees < 0 && tenths > 0 ? QChar(0x2212) + text : text;
}

QString referenceText(const GpsRow& row, const PBValue& reference) {
    if (row.pair == Pair::Measure) return group::stringWithDbKey(row.reference, reference, {});
    const QString letter = reference.toText();
    return letter.size() == 1 ? localizedString(letter.toUpper()) : letter;
}

void addPairedRow(InfoRows& rows, const GpsRow& row, const MoreInfoDict& dictionaries) {
    const PBValue& value = valueIn(dictionaries, Category::GPS, row.key);
    const PBValue& reference = valueIn(dictionaries, Category::GPS, row.reference);
    if (value.isAbsent() && reference.isAbsent()) return;
    InfoRow made{.key = row.key.toString(), .label = group::descriptionWithDbKey(row.key)};
    if (value.isNull() || reference.isNull()) {
        made.state = InfoRow::State::Mixed;
    } else {
        // A reference alone is no position at zero degrees.
        const QString text = value.isAbsent() ? QString()
                             : row.pair == Pair::Degrees
                                 ? degreesText(value)
                                 : platform::formatText(u"%.2f", {value.toDouble()});
        made.text = (text + u' ' + referenceText(row, reference)).trimmed();
    }
    rows.push_back(std::move(made));
}

InfoRows exifPage(const MoreInfoDict& dictionaries, const QLocale& locale) {
    InfoRows rows;
    for (const ExifRow& row : exifRows) {
        if (row.yieldsToExif && !valueIn(dictionaries, Category::Exif, row.key).isAbsent())
            continue;
        addRow(rows, row.key, valueIn(dictionaries, row.category, row.key), locale);
    }
    return rows;
}

InfoRows gpsPage(const MoreInfoDict& dictionaries, const QLocale& locale) {
    InfoRows rows;
    for (const GpsRow& row : gpsRows) {
        if (row.pair != Pair::None) {
            addPairedRow(rows, row, dictionaries);
        } else {
            addRow(rows, row.key, valueIn(dictionaries, Category::GPS, row.key), locale);
        }
    }
    return rows;
}

bool hasRow(const InfoRows& rows, QStringView key) {
    return std::ranges::any_of(rows, [&](const InfoRow& row) { return row.key == key; });
}

/// The four that have a segment.
constexpr Category segmentCategories[] = {
    Category::Exif, Category::IPTC, Category::TIFF, Category::GPS};

} // namespace

std::vector<Category> segments(const MoreInfoDict& dictionaries) {
    std::vector<Category> found;
    for (const Category category : segmentCategories) {
        if (dictionaries.contains(category) ||
            (category == Category::Exif && dictionaries.contains(Category::ExifAux)))
            found.push_back(category);
    }
    return found;
}

QString segmentTitle(Category category) {
    const QStringView key = keyOfCategory(category);
    return localizedString(key.sliced(1, key.size() - 2));
}

std::optional<Category> categoryOfClick(const MoreInfoDict& dictionaries, int segment) {
    for (const Category category : segmentCategories) {
        if (dictionaries.contains(category) && segment-- == 0) return category;
    }
    return std::nullopt;
}

std::optional<Category> chosenCategory(const MoreInfoDict& dictionaries, QStringView key) {
    const std::vector<Category> offered = segments(dictionaries);
    const auto chosen = std::ranges::find_if(offered, [&](Category category) {
        return keyOfCategory(category).compare(key, Qt::CaseInsensitive) == 0;
    });
    if (chosen != offered.end()) return *chosen;
    return offered.empty() ? std::nullopt : std::optional(offered.front());
}

InfoRows rows(const MoreInfoDict& dictionaries, Category category, const QLocale& locale) {
    if (category == Category::Exif || category == Category::ExifAux)
        return exifPage(dictionaries, locale);
    if (category == Category::GPS) return gpsPage(dictionaries, locale);
    InfoRows made;
    const std::span<const QStringView> keys =
        category == Category::TIFF ? std::span<const QStringView>(tiffKeys) : iptcKeys;
    for (const QStringView key : keys)
        addRow(made, key, valueIn(dictionaries, category, key), locale);
    return made;
}

int heightInRows(Category category, const InfoRows& rows) {
    const auto count = static_cast<int>(rows.size());
    if (count == 0) return 0;
    if (category == Category::Exif) {
        // The two dates have their place whether they are there or not.
        return count + (hasRow(rows, u"DateTimeOriginal") ? 0 : 1) +
               (hasRow(rows, u"DateTimeDigitized") ? 0 : 1);
    }
    // One row below a position, for what can be done with it.
    const bool hasPosition =
        category == Category::GPS && hasRow(rows, u"Latitude") && hasRow(rows, u"Longitude");
    return count + (hasPosition ? 1 : 0);
}

std::optional<PBLocation> location(const MoreInfoDict& dictionaries) {
    const PBValue& latitude = valueIn(dictionaries, Category::GPS, u"Latitude");
    const PBValue& longitude = valueIn(dictionaries, Category::GPS, u"Longitude");
    const PBValue& latitudeRef = valueIn(dictionaries, Category::GPS, u"LatitudeRef");
    const PBValue& longitudeRef = valueIn(dictionaries, Category::GPS, u"LongitudeRef");
    if (!latitude.hasValue() || !longitude.hasValue() || latitudeRef.isNull() ||
        longitudeRef.isNull())
        return std::nullopt;
    const auto isLetter = [](const PBValue& reference, QStringView letter) {
        return reference.toText().compare(letter, Qt::CaseInsensitive) == 0;
    };
    PBLocation place{latitude.toDouble(), longitude.toDouble()};
    if (isLetter(latitudeRef, u"S")) place.latitude = -place.latitude;
    if (isLetter(longitudeRef, u"W")) place.longitude = -place.longitude;
    if (!(std::abs(place.latitude) <= 90) || !(std::abs(place.longitude) <= 180))
        return std::nullopt;
    return place;
}

} // namespace MoreInfo
