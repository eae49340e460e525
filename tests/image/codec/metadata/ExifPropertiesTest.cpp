#include "image/codec/metadata/Pictures.h"

#include "catalogue/CatalogueSchema.h"
#include "catalogue/MetadataKeys.h"
#include "image/codec/metadata/AuxProperties.h"
#include "image/codec/metadata/ExifProperties.h"
#include "image/codec/metadata/IptcProperties.h"
#include "support/Support.h"

#include <gtest/gtest.h>

namespace {

using pictures::entry;
using pictures::propertiesOf;

std::optional<PBDictionary> jpegWith(const pictures::Writer& writer) {
    return propertiesOf(pictures::withMetadata(pictures::jpeg(), writer));
}

struct Expected {
    const char16_t* key;
    const char16_t* text;
};

void expectEntries(
    const std::optional<PBDictionary>& properties, QStringView dictionary,
    std::initializer_list<Expected> rows) {
    for (const Expected& row : rows) {
        EXPECT_EQ(entry(properties, dictionary, row.key), QString::fromUtf16(row.text))
            << QString::fromUtf16(row.key).toStdString();
    }
}

QStringList sorted(QStringList names) {
    names.sort();
    return names;
}

TEST(ExifPropertiesTest, everyColumnHasAPropertyAndEveryPropertyAColumn) {
    using CatalogueSchema::metadataColumnsOfTable;
    using codec::ExifDictionary;
    QStringList exif = codec::exifPropertyKeys(ExifDictionary::Exif);
    EXPECT_EQ(sorted(exif), sorted(metadataColumnsOfTable(u"Exif")));
    EXPECT_EQ(
        sorted(codec::exifPropertyKeys(ExifDictionary::Tiff)),
        sorted(metadataColumnsOfTable(u"Tiff")));
    EXPECT_EQ(
        sorted(codec::exifPropertyKeys(ExifDictionary::Gps)),
        sorted(metadataColumnsOfTable(u"GPS")));
    EXPECT_EQ(sorted(codec::auxPropertyKeys()), sorted(metadataColumnsOfTable(u"ExifAux")));
    QStringList iptc;
    for (const QString& key : codec::iptcPropertyKeys())
        iptc.append(PBUtilities::databaseKeyFromIPTCKey(key));
    EXPECT_EQ(sorted(iptc), sorted(metadataColumnsOfTable(u"IPTC")));
}

TEST(ExifPropertiesTest, valuesReadAsTheColumnsHoldThem) {
    const auto properties = jpegWith([](Exiv2::ExifData& exif, auto&, auto&) {
        exif["Exif.Photo.ExposureTime"] = "1/250";
        exif["Exif.Photo.FNumber"] = "28/10";
        exif["Exif.Photo.ISOSpeedRatings"] = uint16_t(100);
        exif["Exif.Photo.ExifVersion"] = "48 50 51 48";
        exif["Exif.Photo.FlashpixVersion"] = "48 49 48 48";
        exif["Exif.Photo.ComponentsConfiguration"] = "1 2 3 0";
        exif["Exif.Photo.LensSpecification"] = "24/1 70/1 28/10 0/0";
        exif["Exif.Photo.SubjectArea"] = "10 20 30 40";
        exif["Exif.Photo.ExposureBiasValue"] = "-2/3";
        exif["Exif.Photo.FileSource"] = "3";
        exif["Exif.Photo.SceneType"] = "1";
        exif["Exif.Photo.DateTimeOriginal"] = "2010:07:01 12:00:00";
        exif["Exif.Photo.DateTimeDigitized"] = "0000:00:00 00:00:00";
        exif["Exif.Photo.SubSecTimeOriginal"] = "054";
        exif["Exif.Photo.UserComment"] = "charset=Unicode Grüße 你好";
        exif["Exif.Photo.FocalLengthIn35mmFilm"] = uint16_t(0);
        exif["Exif.Photo.SubjectDistance"] = "4294967295/1000";
        exif["Exif.Photo.BrightnessValue"] = "1/0";
        exif["Exif.Photo.RecommendedExposureIndex"] = uint32_t(100);
        exif["Exif.Image.Make"] = "Maker";
        exif["Exif.Image.XResolution"] = "300/1";
        exif["Exif.Image.YResolution"] = "118/1";
        exif["Exif.Image.WhitePoint"] = "3127/10000 329/1000";
        exif["Exif.Image.Orientation"] = uint16_t(6);
    });
    expectEntries(
        properties, u"{Exif}",
        {{u"ExposureTime", u"0.004"},
         {u"FNumber", u"2.8"},
         {u"ISOSpeedRatings", u"100"},
         {u"ExifVersion", u"2,3,0"},
         {u"FlashPixVersion", u"1,0,0"},
         {u"ComponentsConfiguration", u"1,2,3,0"},
         {u"LensSpecification", u"24,70,2.8,0"},
         {u"SubjectArea", u"10,20,30,40"},
         {u"ExposureBiasValue", u"-0.6666666666666666"},
         {u"FileSource", u"3"},
         {u"SceneType", u"1"},
         {u"DateTimeOriginal", u"2010:07:01 12:00:00"},
         {u"DateTimeDigitized", u""},
         {u"SubsecTimeOriginal", u"054"},
         {u"UserComment", u"Grüße 你好"},
         {u"FocalLenIn35mmFilm", u""},
         {u"SubjectDistance", u""},
         {u"BrightnessValue", u""},
         {u"RecommendedExposureIndex", u""}});
    expectEntries(
        properties, u"{TIFF}",
        {{u"Make", u"Maker"}, {u"XResolution", u"300"}, {u"WhitePoint", u"0.3127,0.329"}});
    expectEntries(
        properties, u"",
        {{u"PixelWidth", u"40"},
         {u"PixelHeight", u"30"},
         {u"DPIWidth", u"300"},
         {u"DPIHeight", u"118"},
         {u"Orientation", u"6"},
         {u"ColorModel", u"RGB"},
         {u"Depth", u"8"}});
    EXPECT_TRUE(properties->at(QStringLiteral("{Exif}"))
                    .dictionary()
                    ->at(QStringLiteral("ISOSpeedRatings"))
                    .isArray());
}

TEST(ExifPropertiesTest, anOrientationThatMeansNothingIsLeftOut) {
    const auto properties = jpegWith([](Exiv2::ExifData& exif, auto&, auto&) {
        exif["Exif.Image.Orientation"] = uint16_t(0);
        exif["Exif.Image.Make"] = "Maker";
        exif["Exif.Image.XResolution"] = "118/1";
        exif["Exif.Image.ResolutionUnit"] = uint16_t(3);
    });
    EXPECT_EQ(entry(properties, u"", u"Orientation"), QString());
    EXPECT_EQ(entry(properties, u"{TIFF}", u"Orientation"), QString());
    EXPECT_EQ(entry(properties, u"", u"DPIWidth"), QStringLiteral("300"));
}

TEST(ExifPropertiesTest, positionsAreUnsignedDegreesWithTheirReferences) {
    const auto properties = jpegWith([](Exiv2::ExifData& exif, auto&, auto&) {
        exif["Exif.GPSInfo.GPSVersionID"] = "2 2 0 0";
        exif["Exif.GPSInfo.GPSLatitudeRef"] = "S";
        exif["Exif.GPSInfo.GPSLatitude"] = "52/1 30/1 36/1";
        exif["Exif.GPSInfo.GPSLongitudeRef"] = "E";
        exif["Exif.GPSInfo.GPSLongitude"] = "13/1 2400/100 0/0";
        exif["Exif.GPSInfo.GPSAltitudeRef"] = "1";
        exif["Exif.GPSInfo.GPSAltitude"] = "345/10";
        exif["Exif.GPSInfo.GPSTimeStamp"] = "9/1 5/1 7999/1000";
        exif["Exif.GPSInfo.GPSDateStamp"] = "2010:07:01";
        exif["Exif.GPSInfo.GPSProcessingMethod"] = "charset=Ascii GPS";
        exif["Exif.GPSInfo.GPSDestLatitude"] = "91/1 0/1 0/1";
        exif["Exif.GPSInfo.GPSDestLongitude"] = "0/0 0/0 0/0";
    });
    expectEntries(
        properties, u"{GPS}",
        {{u"GPSVersion", u"2,2,0,0"},
         {u"LatitudeRef", u"S"},
         {u"Latitude", u"52.51"},
         {u"Longitude", u"13.4"},
         {u"AltitudeRef", u"1"},
         {u"Altitude", u"34.5"},
         {u"TimeStamp", u"09:05:08.00"},
         {u"DateStamp", u"2010:07:01"},
         {u"ProcessingMethod", u"GPS"},
         {u"DestLatitude", u""},
         {u"DestLongitude", u""}});
}

TEST(ExifPropertiesTest, tagsOfTheWrongTypeAreReadAsFarAsTheyMakeSense) {
    const auto properties = jpegWith([](Exiv2::ExifData& exif, auto&, auto&) {
        exif.add(
            Exiv2::ExifKey("Exif.Photo.FNumber"), Exiv2::Value::create(Exiv2::asciiString).get());
        exif["Exif.Photo.FNumber"].setValue("5.6");
        Exiv2::AsciiValue words("F five");
        exif.add(Exiv2::ExifKey("Exif.Photo.FocalLength"), &words);
        Exiv2::UShortValue number;
        number.read("17");
        exif.add(Exiv2::ExifKey("Exif.Image.Software"), &number);
        exif.add(Exiv2::ExifKey("Exif.Photo.ExifVersion"), &words);
    });
    EXPECT_EQ(entry(properties, u"{Exif}", u"FNumber"), QStringLiteral("5.6"));
    EXPECT_EQ(entry(properties, u"{Exif}", u"FocalLength"), QString());
    EXPECT_EQ(entry(properties, u"{Exif}", u"ExifVersion"), QString());
    EXPECT_EQ(entry(properties, u"{TIFF}", u"Software"), QStringLiteral("17"));
}

TEST(ExifPropertiesTest, lensAndCameraComeFromTheMakersNotes) {
    const auto properties = jpegWith([](Exiv2::ExifData& exif, auto&, auto&) {
        exif["Exif.Image.Make"] = "Canon";
        exif["Exif.Image.Model"] = "Canon EOS 40D";
        exif["Exif.CanonCs.LensType"] = uint16_t(2);
        exif["Exif.CanonCs.Lens"] = "28 28 1";
        exif["Exif.CanonCs.MaxAperture"] = uint16_t(96);
        exif["Exif.CanonCs.FocusMode"] = uint16_t(0);
        exif["Exif.Canon.OwnerName"] = "Jo";
        exif["Exif.Canon.FirmwareVersion"] = "Firmware 1.0.5";
        exif["Exif.Canon.SerialNumber"] = uint32_t(620423455);
        exif["Exif.CanonSi.ISOSpeed"] = uint16_t(160);
        exif["Exif.CanonSi.FlashBias"] = uint16_t(0);
        exif["Exif.CanonSi.SubjectDistance"] = uint16_t(126);
    });
    expectEntries(
        properties, u"{ExifAux}",
        {{u"LensID", u"2"},
         {u"LensInfo", u"28,28,0,0"},
         {u"OwnerName", u"Jo"},
         {u"Firmware", u"Firmware 1.0.5"},
         {u"SerialNumber", u"620423455"},
         {u"FlashCompensation", u"0"},
         {u"FocusDistance", u"1.26"}});
    EXPECT_EQ(entry(properties, u"{ExifAux}", u"LensModel"), QStringLiteral("Canon EF 28mm f/2.8"));
    EXPECT_EQ(entry(properties, u"{Exif}", u"ISOSpeedRatings"), QStringLiteral("100"));

    // A lens without a name in the notes: EXIF's own is enough, an empty one is none.
    const auto named = jpegWith(
        [](Exiv2::ExifData& exif, auto&, auto&) { exif["Exif.Photo.LensModel"] = "50mm F1.4"; });
    EXPECT_EQ(entry(named, u"{ExifAux}", u"LensModel"), QStringLiteral("50mm F1.4"));
    for (const char* nothing : {"----", "n/a", "0.0 mm f/0.0", "(22048)", "0 0 0"}) {
        const auto unnamed = jpegWith([nothing](Exiv2::ExifData& exif, auto&, auto&) {
            exif["Exif.Photo.LensModel"] = nothing;
        });
        EXPECT_EQ(entry(unnamed, u"{ExifAux}", u"LensModel"), QString()) << nothing;
    }
}

TEST(ExifPropertiesTest, whatOnlyXmpHasIsTakenOverWithTheClockOnTheSpot) {
    const auto properties = jpegWith([](Exiv2::ExifData& exif, auto&, Exiv2::XmpData& xmp) {
        exif["Exif.Photo.FocalLength"] = "50/1";
        xmp["Xmp.exif.FNumber"] = "56/10";
        xmp["Xmp.exif.FocalLength"] = "35/1";
        xmp["Xmp.exif.DateTimeOriginal"] = "2010-07-01T23:30:15.25-07:00";
        xmp["Xmp.xmp.CreateDate"] = "2011-02-03";
        xmp["Xmp.xmp.ModifyDate"] = "yesterday";
        xmp["Xmp.exif.GPSLatitude"] = "52,30.6N";
        xmp["Xmp.aux.Lens"] = "35.0 mm f/2.0";
        xmp["Xmp.aux.LensInfo"] = "35/1 35/1 2/1 2/1";
    });
    expectEntries(
        properties, u"{Exif}",
        {{u"FNumber", u"5.6"},
         {u"FocalLength", u"50"},
         {u"DateTimeOriginal", u"2010:07:01 23:30:15"},
         {u"DateTimeDigitized", u"2011:02:03 00:00:00"}});
    EXPECT_EQ(entry(properties, u"{TIFF}", u"DateTime"), QString());
    EXPECT_EQ(entry(properties, u"{GPS}", u"Latitude"), QStringLiteral("52.51"));
    EXPECT_EQ(entry(properties, u"{GPS}", u"LatitudeRef"), QStringLiteral("N"));
    EXPECT_EQ(entry(properties, u"{ExifAux}", u"LensInfo"), QStringLiteral("35,35,2,2"));
    EXPECT_EQ(entry(properties, u"{ExifAux}", u"LensModel"), QStringLiteral("35.0 mm f/2.0"));
}

TEST(IptcPropertiesTest, repeatedSetsAreArraysAndXmpFillsTheGaps) {
    const auto properties =
        jpegWith([](Exiv2::ExifData&, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
            const auto add = [&](const char* key, const std::string& text) {
                Exiv2::StringValue value(text);
                iptc.add(Exiv2::IptcKey(key), &value);
            };
            add("Iptc.Application2.Keywords", "mer");
            add("Iptc.Application2.Keywords", "\xE9t\xE9"); // Latin-1
            add("Iptc.Application2.City", "Saint-Malo");
            iptc["Iptc.Application2.DateCreated"] = "2010-07-01";
            iptc["Iptc.Application2.TimeCreated"] = "12:00:05+02:00";
            xmp["Xmp.dc.subject"] = "not used";
            xmp["Xmp.photoshop.City"] = "not used";
            xmp["Xmp.photoshop.Country"] = "France";
            xmp["Xmp.dc.description"] = "lang=x-default La mer";
            xmp["Xmp.xmpRights.UsageTerms"] = "lang=x-default ask first";
            xmp["Xmp.iptc.Scene"] = "010100";
            xmp["Xmp.xmp.Rating"] = "4";
            Exiv2::XmpTextValue contact;
            contact.setXmpStruct();
            xmp.add(Exiv2::XmpKey("Xmp.iptc.CreatorContactInfo"), &contact);
            xmp["Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiAdrCity"] = "Rennes";
            xmp["Xmp.iptc.CreatorContactInfo/Iptc4xmpCore:CiEmailWork"] = "a@example.org";
        });
    expectEntries(
        properties, u"{IPTC}",
        {{u"Keywords", u"mer,été"},
         {u"City", u"Saint-Malo"},
         {u"DateCreated", u"20100701"},
         {u"TimeCreated", u"120005+0200"},
         {u"Country/PrimaryLocationName", u"France"},
         {u"Caption/Abstract", u"La mer"},
         {u"UsageTerms", u"ask first"},
         {u"Scene", u"010100"},
         {u"StarRating", u"4"}});
    const PBDictionary columns = PBUtilities::databaseDictFromIPTCPropDict(
        *properties->at(QStringLiteral("{IPTC}")).dictionary());
    EXPECT_EQ(columns.at(QStringLiteral("CiAdrCity")).toText(), QStringLiteral("Rennes"));
    EXPECT_EQ(columns.at(QStringLiteral("CiEmailWork")).toText(), QStringLiteral("a@example.org"));
    EXPECT_EQ(columns.at(QStringLiteral("Caption_Abstract")).toText(), QStringLiteral("La mer"));

    const auto rejected =
        jpegWith([](auto&, auto&, Exiv2::XmpData& xmp) { xmp["Xmp.xmp.Rating"] = "-1"; });
    EXPECT_FALSE(rejected->contains(QStringLiteral("{IPTC}")));
}

} // namespace
