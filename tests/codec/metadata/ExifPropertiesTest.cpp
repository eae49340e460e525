#include "codec/metadata/Pictures.h"

#include "catalogue/CatalogueSchema.h"
#include "catalogue/MetadataKeys.h"
#include "codec/metadata/AuxProperties.h"
#include "codec/metadata/ExifProperties.h"
#include "codec/metadata/IptcProperties.h"

namespace {

using pictures::entry;
using pictures::propertiesOf;

/// A tag that is written into a picture, of EXIF where it names nothing else, and an entry of the
/// properties that are read from it. The entry names its dictionary, such as "Exif.FNumber";
/// ".Depth" is one of the top level. A row may lack either.
struct Row {
    const char* tag;
    const char* value;
    const char* entry;
    const char16_t* expected;
};

void write(const Row& row, Exiv2::ExifData& exif, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
    const std::string_view tag(row.tag);
    if (tag.starts_with("Xmp.")) {
        xmp[row.tag] = row.value;
    } else if (tag.starts_with("Iptc.")) { // which may be repeated
        Exiv2::StringValue text(row.value);
        iptc.add(Exiv2::IptcKey(row.tag), &text);
    } else if (!tag.empty()) {
        exif["Exif." + std::string(tag)] = row.value;
    }
}

/// Reads a JPEG file with the tags of all rows, and holds its properties against their entries.
std::optional<PBDictionary>
expectRead(std::initializer_list<Row> rows, const pictures::Writer& more = {}) {
    const auto properties = propertiesOf(pictures::withMetadata(
        pictures::jpeg(), [&](Exiv2::ExifData& exif, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
            for (const Row& row : rows)
                write(row, exif, iptc, xmp);
            if (more) more(exif, iptc, xmp);
        }));
    for (const Row& row : rows) {
        if (*row.entry == '\0') continue;
        const QString read = entry(properties, QString::fromLatin1(row.entry));
        EXPECT_EQ(read, QString::fromUtf16(row.expected)) << row.entry;
    }
    return properties;
}

QStringList sorted(QStringList names) {
    names.sort();
    return names;
}

TEST(ExifPropertiesTest, everyColumnHasAPropertyAndEveryPropertyAColumn) {
    using CatalogueSchema::metadataColumnsOfTable;
    using codec::ExifDictionary;
    const std::pair<QStringList, const char16_t*> tables[] = {
        {codec::exifPropertyKeys(ExifDictionary::Exif), u"Exif"},
        {codec::exifPropertyKeys(ExifDictionary::Tiff), u"Tiff"},
        {codec::exifPropertyKeys(ExifDictionary::Gps), u"GPS"},
        {codec::auxPropertyKeys(), u"ExifAux"},
        {support::listed(codec::iptcPropertyKeys(), PBUtilities::databaseKeyFromIPTCKey), u"IPTC"}};
    for (const auto& [keys, table] : tables)
        EXPECT_EQ(sorted(keys), sorted(metadataColumnsOfTable(table)));
}

TEST(ExifPropertiesTest, valuesReadAsTheColumnsHoldThem) {
    const auto properties = expectRead(
        {{"Photo.ExposureTime", "1/250", "Exif.ExposureTime", u"0.004"},
         {"Photo.FNumber", "28/10", "Exif.FNumber", u"2.8"},
         {"Photo.ISOSpeedRatings", "100", "Exif.ISOSpeedRatings", u"100"},
         {"Photo.ExifVersion", "48 50 51 48", "Exif.ExifVersion", u"2,3,0"},
         {"Photo.ComponentsConfiguration", "1 2 3 0", "Exif.ComponentsConfiguration", u"1,2,3,0"},
         {"Photo.LensSpecification", "24/1 70/1 28/10 0/0", "Exif.LensSpecification",
          u"24,70,2.8,0"},
         {"Photo.ExposureBiasValue", "-2/3", "Exif.ExposureBiasValue", u"-0.6666666666666666"},
         {"Photo.FileSource", "3", "Exif.FileSource", u"3"},
         {"Photo.DateTimeOriginal", "2010:07:01 12:00:00", "Exif.DateTimeOriginal",
          u"2010:07:01 12:00:00"},
         {"Photo.DateTimeDigitized", "0000:00:00 00:00:00", "Exif.DateTimeDigitized", u""},
         {"Photo.SubSecTimeOriginal", "054", "Exif.SubsecTimeOriginal", u"054"},
         {"Photo.UserComment", "charset=Unicode Grüße 你好", "Exif.UserComment", u"Grüße 你好"},
         {"Photo.FocalLengthIn35mmFilm", "0", "Exif.FocalLenIn35mmFilm", u""},
         {"Photo.SubjectDistance", "4294967295/1000", "Exif.SubjectDistance", u""},
         {"Photo.BrightnessValue", "1/0", "Exif.BrightnessValue", u""},
         {"Photo.RecommendedExposureIndex", "100", "Exif.RecommendedExposureIndex", u""},
         {"Image.Make", "Maker", "TIFF.Make", u"Maker"},
         {"Image.XResolution", "300/1", "TIFF.XResolution", u"300"},
         {"Image.YResolution", "118/1", ".DPIHeight", u"118"},
         {"Image.Orientation", "6", ".Orientation", u"6"},
         {"", "", ".DPIWidth", u"300"},
         {"", "", ".Depth", u"8"}});
    EXPECT_TRUE(properties->at(u"{Exif}"_s).dictionary()->at(u"ISOSpeedRatings"_s).isArray());
    // An orientation that means nothing is left out; dots a centimetre become dots an inch.
    expectRead(
        {{"Image.Orientation", "8", ".Orientation", u"8"},
         {"Image.XResolution", "1/2", ".DPIWidth", u"1"},
         {"Image.YResolution", "49/100", ".DPIHeight", u""},
         {"Photo.ColorSpace", "2", ".ProfileName", u"Adobe RGB (1998)"},
         {"Photo.ISOSpeedRatings", "65534", "Exif.ISOSpeedRatings", u"65534"},
         {"GPSInfo.GPSLatitude", "90/1 0/1 0/1", "GPS.Latitude", u"90"},
         {"GPSInfo.GPSLongitude", "180/1 0/1 0/1", "GPS.Longitude", u"180"},
         {"GPSInfo.GPSDestLongitude", "180/1 0/1 1/1", "GPS.DestLongitude", u""},
         {"GPSInfo.GPSTimeStamp", "23/1 59/1 59999/1000", "GPS.TimeStamp", u"23:59:59.99"},
         {"Image.Rating", "5", "IPTC.StarRating", u"5"}});
    expectRead(
        {{"Image.Orientation", "9", ".Orientation", u""},
         {"Image.XResolution", "72/1", ".DPIWidth", u"100"},
         {"Image.ResolutionUnit", "1", "", u""},
         {"Photo.ColorSpace", "1", ".ProfileName", u"sRGB IEC61966-2.1"},
         {"Photo.ISOSpeedRatings", "65535", "Exif.ISOSpeedRatings", u""},
         {"GPSInfo.GPSTimeStamp", "24/1 0/1 0/1", "GPS.TimeStamp", u""},
         {"Image.Rating", "1", "", u""},
         {"Xmp.xmp.Rating", "6", "IPTC.StarRating", u""}});
    expectRead(
        {{"Image.Orientation", "0", ".Orientation", u""},
         {"Image.Make", "Maker", "TIFF.Orientation", u""},
         {"Image.XResolution", "118/1", ".DPIWidth", u"300"},
         {"Image.ResolutionUnit", "3", "", u""}});
}

TEST(ExifPropertiesTest, positionsAreUnsignedDegreesWithTheirReferences) {
    expectRead(
        {{"GPSInfo.GPSVersionID", "2 2 0 0", "GPS.GPSVersion", u"2,2,0,0"},
         {"GPSInfo.GPSLatitudeRef", "S", "GPS.LatitudeRef", u"S"},
         {"GPSInfo.GPSLatitude", "52/1 30/1 36/1", "GPS.Latitude", u"52.51"},
         {"GPSInfo.GPSLongitudeRef", "E", "", u""},
         {"GPSInfo.GPSLongitude", "13/1 2400/100 0/0", "GPS.Longitude", u"13.4"},
         {"GPSInfo.GPSAltitudeRef", "1", "GPS.AltitudeRef", u"1"},
         {"GPSInfo.GPSAltitude", "345/10", "GPS.Altitude", u"34.5"},
         {"GPSInfo.GPSTimeStamp", "9/1 5/1 7999/1000", "GPS.TimeStamp", u"09:05:08.00"},
         {"GPSInfo.GPSDateStamp", "2010:07:01", "GPS.DateStamp", u"2010:07:01"},
         {"GPSInfo.GPSProcessingMethod", "charset=Ascii GPS", "GPS.ProcessingMethod", u"GPS"},
         {"GPSInfo.GPSDestLatitude", "91/1 0/1 0/1", "GPS.DestLatitude", u""},
         {"GPSInfo.GPSDestLongitude", "0/0 0/0 0/0", "GPS.DestLongitude", u""}});
}

TEST(ExifPropertiesTest, tagsOfTheWrongTypeAreReadAsFarAsTheyMakeSense) {
    expectRead(
        {{"", "", "Exif.FNumber", u"5.6"},
         {"", "", "Exif.FocalLength", u""},
         {"", "", "Exif.ExifVersion", u""},
         {"", "", "TIFF.Software", u"17"}},
        [](Exiv2::ExifData& exif, auto&, auto&) {
            const Exiv2::AsciiValue aperture("5.6"), words("F five");
            exif.add(Exiv2::ExifKey("Exif.Photo.FNumber"), &aperture);
            exif.add(Exiv2::ExifKey("Exif.Photo.FocalLength"), &words);
            exif.add(Exiv2::ExifKey("Exif.Photo.ExifVersion"), &words);
            exif["Exif.Image.Software"] = uint16_t(17);
        });
}

TEST(ExifPropertiesTest, lensAndCameraComeFromTheMakersNotes) {
    expectRead(
        {{"Image.Make", "Canon", "", u""},
         {"Image.Model", "Canon EOS 40D", "", u""},
         {"CanonCs.LensType", "2", "ExifAux.LensID", u"2"},
         {"CanonCs.Lens", "28 28 1", "ExifAux.LensInfo", u"28,28,0,0"},
         {"CanonCs.MaxAperture", "96", "ExifAux.LensModel", u"Canon EF 28mm f/2.8"},
         {"CanonCs.FocusMode", "0", "", u""},
         {"Canon.OwnerName", "Jo", "ExifAux.OwnerName", u"Jo"},
         {"Canon.FirmwareVersion", "Firmware 1.0.5", "ExifAux.Firmware", u"Firmware 1.0.5"},
         {"Canon.SerialNumber", "620423455", "ExifAux.SerialNumber", u"620423455"},
         {"CanonSi.ISOSpeed", "160", "Exif.ISOSpeedRatings", u"100"},
         {"CanonSi.FlashBias", "0", "ExifAux.FlashCompensation", u"0"},
         {"CanonSi.SubjectDistance", "126", "ExifAux.FocusDistance", u"1.26"}});
    expectRead(
        {{"Image.Make", "Canon", "", u""},
         {"Photo.ISOSpeedRatings", "65535", "Exif.ISOSpeedRatings", u"100"},
         {"CanonSi.ISOSpeed", "160", "", u""},
         {"CanonSi.SubjectDistance", "60001", "ExifAux.FocusDistance", u""}});
    // A lens without a name in the notes: EXIF's own is enough, an empty one is none.
    expectRead({{"Photo.LensModel", "50mm F1.4", "ExifAux.LensModel", u"50mm F1.4"}});
    for (const char* nothing : {"----", "n/a", "0.0 mm f/0.0", "(22048)", "0 0 0"})
        expectRead({{"Photo.LensModel", nothing, "ExifAux.LensModel", u""}});
}

TEST(ExifPropertiesTest, whatOnlyXmpHasIsTakenOverWithTheClockOnTheSpot) {
    expectRead(
        {{"Photo.FocalLength", "50/1", "Exif.FocalLength", u"50"},
         {"Xmp.exif.FocalLength", "35/1", "", u""},
         {"Xmp.exif.FNumber", "56/10", "Exif.FNumber", u"5.6"},
         {"Xmp.exif.DateTimeOriginal", "2010-07-01T23:30:15.25-07:00", "Exif.DateTimeOriginal",
          u"2010:07:01 23:30:15"},
         {"Xmp.xmp.CreateDate", "2011-02-03", "Exif.DateTimeDigitized", u"2011:02:03 00:00:00"},
         {"Xmp.xmp.ModifyDate", "yesterday", "TIFF.DateTime", u""},
         {"Xmp.exif.GPSLatitude", "52,30.6N", "GPS.Latitude", u"52.51"},
         {"", "", "GPS.LatitudeRef", u"N"},
         {"Xmp.aux.Lens", "35.0 mm f/2.0", "ExifAux.LensModel", u"35.0 mm f/2.0"},
         {"Xmp.aux.LensInfo", "35/1 35/1 2/1 2/1", "ExifAux.LensInfo", u"35,35,2,2"}});
}

TEST(IptcPropertiesTest, repeatedSetsAreArraysAndXmpFillsTheGaps) {
    const auto properties = expectRead(
        {{"Iptc.Application2.Keywords", "mer", "", u""},
         {"Iptc.Application2.Keywords", "\xE9t\xE9", "IPTC.Keywords", u"mer,été"}, // Latin-1
         {"Iptc.Application2.City", "Saint-Malo", "IPTC.City", u"Saint-Malo"},
         {"Xmp.dc.subject", "not used", "", u""},
         {"Xmp.photoshop.City", "not used", "", u""},
         {"Xmp.photoshop.Country", "France", "IPTC.Country/PrimaryLocationName", u"France"},
         {"Xmp.dc.description", "lang=x-default La mer", "IPTC.Caption/Abstract", u"La mer"},
         {"Xmp.xmpRights.UsageTerms", "lang=x-default ask first", "IPTC.UsageTerms", u"ask first"},
         {"Xmp.iptc.Scene", "010100", "IPTC.Scene", u"010100"},
         {"Xmp.xmp.Rating", "4", "IPTC.StarRating", u"4"},
         {"", "", "IPTC.DateCreated", u"20100701"},
         {"", "", "IPTC.TimeCreated", u"120005+0200"}},
        [](auto&, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
            iptc["Iptc.Application2.DateCreated"] = "2010-07-01";
            iptc["Iptc.Application2.TimeCreated"] = "12:00:05+02:00";
            Exiv2::XmpTextValue contact;
            contact.setXmpStruct();
            xmp.add(Exiv2::XmpKey("Xmp.iptc.CreatorContactInfo"), &contact);
            xmp["Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrCity"] = "Rennes";
            xmp["Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiEmailWork"] = "a@example.org";
        });
    const PBDictionary columns =
        PBUtilities::databaseDictFromIPTCPropDict(*properties->at(u"{IPTC}"_s).dictionary());
    EXPECT_EQ(columns.at(u"CiAdrCity"_s).toText(), u"Rennes"_s);
    EXPECT_EQ(columns.at(u"CiEmailWork"_s).toText(), u"a@example.org"_s);
    EXPECT_EQ(columns.at(u"Caption_Abstract"_s).toText(), u"La mer"_s);

    const auto rejected = expectRead({{"Xmp.xmp.Rating", "-1", "", u""}});
    EXPECT_FALSE(rejected->contains(u"{IPTC}"_s));
}

} // namespace
