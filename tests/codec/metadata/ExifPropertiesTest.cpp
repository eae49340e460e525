#include "codec/metadata/Pictures.h"

#include "catalogue/CatalogueSchema.h"
#include "catalogue/MetadataKeys.h"
#include "codec/metadata/AuxProperties.h"
#include "codec/metadata/ExifProperties.h"
#include "codec/metadata/IptcProperties.h"

namespace {

using pictures::entry;
using pictures::propertiesOf;

/// Writes what is told as "tag=value".
void write(const QString& told, Exiv2::ExifData& exif, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
    const std::string tag = told.section(u'=', 0, 0).toStdString();
    const std::string value = told.section(u'=', 1).toStdString();
    if (tag.starts_with("Xmp.")) {
        xmp[tag] = value;
    } else if (tag.starts_with("Iptc.")) { // which may be repeated
        Exiv2::StringValue text(value);
        iptc.add(Exiv2::IptcKey(tag), &text);
    } else if (!tag.empty()) {
        exif["Exif." + tag] = value;
    }
}

/// Reads a JPEG file with tags, and holds its properties against what is expected of them. Told as
/// "tag=value > entry=text", with "; " in between: a tag, of EXIF where it names nothing else, and
/// an entry with its dictionary, such as "Exif.FNumber"; ".Depth" is one of the top level. Either
/// may be lacking.
std::optional<PBDictionary> expectRead(const QByteArray& told, const pictures::Writer& more = {}) {
    const QStringList rows = QString::fromUtf8(told).split(u"; "_s);
    const auto properties = propertiesOf(pictures::withMetadata(
        pictures::jpeg(), [&](Exiv2::ExifData& exif, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
            for (const QString& row : rows)
                write(row.section(u'>', 0, 0).trimmed(), exif, iptc, xmp);
            if (more) more(exif, iptc, xmp);
        }));
    for (const QString& row : rows) {
        const QString expected = row.section(u"> "_s, 1);
        if (expected.isEmpty()) continue;
        const QString read = entry(properties, expected.section(u'=', 0, 0));
        EXPECT_EQ(read, expected.section(u'=', 1)) << qPrintable(row);
    }
    return properties;
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
        EXPECT_EQ(support::sorted(keys), support::sorted(metadataColumnsOfTable(table)));
}

TEST(ExifPropertiesTest, valuesReadAsTheColumnsHoldThem) {
    const auto properties = expectRead(
        "Photo.ExposureTime=1/250 > Exif.ExposureTime=0.004; "
        "Photo.FNumber=28/10 > Exif.FNumber=2.8; "
        "Photo.ISOSpeedRatings=100 > Exif.ISOSpeedRatings=100; "
        "Photo.ExifVersion=48 50 51 48 > Exif.ExifVersion=2,3,0; "
        "Photo.ComponentsConfiguration=1 2 3 0 > Exif.ComponentsConfiguration=1,2,3,0; "
        "Photo.LensSpecification=24/1 70/1 28/10 0/0 > Exif.LensSpecification=24,70,2.8,0; "
        "Photo.ExposureBiasValue=-2/3 > Exif.ExposureBiasValue=-0.6666666666666666; "
        "Photo.FileSource=3 > Exif.FileSource=3; "
        "Photo.DateTimeOriginal=2010:07:01 12:00:00 > Exif.DateTimeOriginal=2010:07:01 12:00:00; "
        "Photo.DateTimeDigitized=0000:00:00 00:00:00 > Exif.DateTimeDigitized=; "
        "Photo.SubSecTimeOriginal=054 > Exif.SubsecTimeOriginal=054; "
        "Photo.UserComment=charset=Unicode Grüße 你好 > Exif.UserComment=Grüße 你好; "
        "Photo.FocalLengthIn35mmFilm=0 > Exif.FocalLenIn35mmFilm=; "
        "Photo.SubjectDistance=4294967295/1000 > Exif.SubjectDistance=; "
        "Photo.BrightnessValue=1/0 > Exif.BrightnessValue=; "
        "Photo.RecommendedExposureIndex=100 > Exif.RecommendedExposureIndex=; "
        "Image.Make=Maker > TIFF.Make=Maker; Image.XResolution=300/1 > TIFF.XResolution=300; "
        "Image.YResolution=118/1 > .DPIHeight=118; Image.Orientation=6 > .Orientation=6; "
        "> .DPIWidth=300; > .Depth=8");
    EXPECT_TRUE(properties->at(u"{Exif}"_s).dictionary()->at(u"ISOSpeedRatings"_s).isArray());
    // An orientation that means nothing is left out; dots a centimetre become dots an inch.
    expectRead("Image.Orientation=8 > .Orientation=8; Image.XResolution=1/2 > .DPIWidth=1; "
               "Image.YResolution=49/100 > .DPIHeight=; "
               "Photo.ColorSpace=2 > .ProfileName=Adobe RGB (1998); "
               "Photo.ISOSpeedRatings=65534 > Exif.ISOSpeedRatings=65534; "
               "GPSInfo.GPSLatitude=90/1 0/1 0/1 > GPS.Latitude=90; "
               "GPSInfo.GPSLongitude=180/1 0/1 0/1 > GPS.Longitude=180; "
               "GPSInfo.GPSDestLongitude=180/1 0/1 1/1 > GPS.DestLongitude=; "
               "GPSInfo.GPSTimeStamp=23/1 59/1 59999/1000 > GPS.TimeStamp=23:59:59.99; "
               "Image.Rating=5 > IPTC.StarRating=5");
    expectRead("Image.Orientation=9 > .Orientation=; Image.XResolution=72/1 > .DPIWidth=100; "
               "Image.ResolutionUnit=1; Photo.ColorSpace=1 > .ProfileName=sRGB IEC61966-2.1; "
               "Photo.ISOSpeedRatings=65535 > Exif.ISOSpeedRatings=; "
               "GPSInfo.GPSTimeStamp=24/1 0/1 0/1 > GPS.TimeStamp=; Image.Rating=1; "
               "Xmp.xmp.Rating=6 > IPTC.StarRating=");
    expectRead("Image.Orientation=0 > .Orientation=; Image.Make=Maker > TIFF.Orientation=; "
               "Image.XResolution=118/1 > .DPIWidth=300; Image.ResolutionUnit=3");
}

TEST(ExifPropertiesTest, positionsAreUnsignedDegreesWithTheirReferences) {
    expectRead(
        "GPSInfo.GPSVersionID=2 2 0 0 > GPS.GPSVersion=2,2,0,0; "
        "GPSInfo.GPSLatitudeRef=S > GPS.LatitudeRef=S; "
        "GPSInfo.GPSLatitude=52/1 30/1 36/1 > GPS.Latitude=52.51; GPSInfo.GPSLongitudeRef=E; "
        "GPSInfo.GPSLongitude=13/1 2400/100 0/0 > GPS.Longitude=13.4; "
        "GPSInfo.GPSAltitudeRef=1 > GPS.AltitudeRef=1; "
        "GPSInfo.GPSAltitude=345/10 > GPS.Altitude=34.5; "
        "GPSInfo.GPSTimeStamp=9/1 5/1 7999/1000 > GPS.TimeStamp=09:05:08.00; "
        "GPSInfo.GPSDateStamp=2010:07:01 > GPS.DateStamp=2010:07:01; "
        "GPSInfo.GPSProcessingMethod=charset=Ascii GPS > GPS.ProcessingMethod=GPS; "
        "GPSInfo.GPSDestLatitude=91/1 0/1 0/1 > GPS.DestLatitude=; "
        "GPSInfo.GPSDestLongitude=0/0 0/0 0/0 > GPS.DestLongitude=");
}

TEST(ExifPropertiesTest, tagsOfTheWrongTypeAreReadAsFarAsTheyMakeSense) {
    expectRead(
        "> Exif.FNumber=5.6; > Exif.FocalLength=; > Exif.ExifVersion=; > TIFF.Software=17; "
        "> GPS.ProcessingMethod=gps",
        [](Exiv2::ExifData& exif, auto&, auto&) {
            const Exiv2::AsciiValue aperture("5.6"), words("F five"), method("gps");
            exif.add(Exiv2::ExifKey("Exif.GPSInfo.GPSProcessingMethod"), &method);
            exif.add(Exiv2::ExifKey("Exif.Photo.FNumber"), &aperture);
            exif.add(Exiv2::ExifKey("Exif.Photo.FocalLength"), &words);
            exif.add(Exiv2::ExifKey("Exif.Photo.ExifVersion"), &words);
            exif["Exif.Image.Software"] = uint16_t(17);
        });
}

TEST(ExifPropertiesTest, lensAndCameraComeFromTheMakersNotes) {
    expectRead(
        "Image.Make=Canon; Image.Model=Canon EOS 40D; CanonCs.LensType=2 > ExifAux.LensID=2; "
        "CanonCs.Lens=28 28 1 > ExifAux.LensInfo=28,28,0,0; "
        "CanonCs.MaxAperture=96 > ExifAux.LensModel=Canon EF 28mm f/2.8; CanonCs.FocusMode=0; "
        "Canon.OwnerName=Jo > ExifAux.OwnerName=Jo; "
        "Canon.FirmwareVersion=Firmware 1.0.5 > ExifAux.Firmware=Firmware 1.0.5; "
        "Canon.SerialNumber=620423455 > ExifAux.SerialNumber=620423455; "
        "CanonSi.ISOSpeed=160 > Exif.ISOSpeedRatings=100; "
        "CanonSi.FlashBias=0 > ExifAux.FlashCompensation=0; "
        "CanonSi.SubjectDistance=126 > ExifAux.FocusDistance=1.26");
    expectRead(
        "Image.Make=Canon; Photo.ISOSpeedRatings=65535 > Exif.ISOSpeedRatings=100; "
        "CanonSi.ISOSpeed=160; CanonSi.SubjectDistance=60001 > ExifAux.FocusDistance=; "
        "CanonCs.LensType=65535 > ExifAux.LensID=; CanonCs.Lens=0 950 7 > ExifAux.LensInfo=");
    // A lens without a name in the notes: EXIF's own is enough, an empty one is none.
    expectRead("Photo.LensModel=50mm F1.4 > ExifAux.LensModel=50mm F1.4");
    for (const char* nothing : {"----", "n/a", "0.0 mm f/0.0", "(22048)", "0 0 0"})
        expectRead("Photo.LensModel=" + QByteArray(nothing) + " > ExifAux.LensModel=");
}

TEST(ExifPropertiesTest, inWebPFilesOtherMarksOfAStartMeanNothing) {
    const auto chunk = [](const char* name, const QByteArray& content) {
        pictures::ByteWriter header(true);
        return header.text(name).u32(static_cast<quint64>(content.size())).bytes() + content +
               QByteArray(content.size() % 2, '\0');
    };
    const QByteArray xmp =
        "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-"
        "syntax-ns#'><rdf:Description rdf:about='' xmlns:tiff='http://ns.adobe.com/tiff/1.0/' "
        "tiff:Model='Kit'/></rdf:RDF></x:xmpmeta>";
    const QByteArray exif =
        QByteArray::fromHex("4d4d002a 00000008 0001 010f 0002 00000004 49492a00 00000000");
    const QByteArray file = chunk(
        "RIFF", "WEBP" + chunk("VP8X", QByteArray::fromHex("0c000000 1d0000 130000")) +
                    chunk("EXIF", exif) + chunk("XMP ", xmp));
    EXPECT_EQ(entry(propertiesOf(file), u"TIFF.Make"_s), u"II*"_s);
    EXPECT_EQ(entry(propertiesOf(file), u"TIFF.Model"_s), u"Kit"_s);
}

TEST(ExifPropertiesTest, whatOnlyXmpHasIsTakenOverWithTheClockOnTheSpot) {
    expectRead("Photo.FocalLength=50/1 > Exif.FocalLength=50; Xmp.exif.FocalLength=35/1; "
               "Xmp.exif.FNumber=56/10 > Exif.FNumber=5.6; "
               "Xmp.exif.DateTimeOriginal=2010-07-01T23:30:15.25-07:00 > "
               "Exif.DateTimeOriginal=2010:07:01 23:30:15; "
               "Xmp.xmp.CreateDate=2011-02-03 > Exif.DateTimeDigitized=2011:02:03 00:00:00; "
               "Xmp.xmp.ModifyDate=yesterday > TIFF.DateTime=; "
               "Xmp.exif.GPSLatitude=52,30.6N > GPS.Latitude=52.51; > GPS.LatitudeRef=N; "
               "Xmp.aux.Lens=35.0 mm f/2.0 > ExifAux.LensModel=35.0 mm f/2.0; "
               "Xmp.aux.LensInfo=35/1 35/1 2/1 2/1 > ExifAux.LensInfo=35,35,2,2");
}

TEST(IptcPropertiesTest, repeatedSetsAreArraysAndXmpFillsTheGaps) {
    const auto properties = expectRead(
        "Iptc.Application2.Keywords=mer; > IPTC.Keywords=mer,été; "
        "Iptc.Application2.City=Saint-Malo > IPTC.City=Saint-Malo; Xmp.dc.subject=not used; "
        "Xmp.photoshop.City=not used; "
        "Xmp.photoshop.Country=France > IPTC.Country/PrimaryLocationName=France; "
        "Xmp.dc.description=lang=x-default La mer > IPTC.Caption/Abstract=La mer; "
        "Xmp.xmpRights.UsageTerms=lang=x-default ask first > IPTC.UsageTerms=ask first; "
        "Xmp.iptc.Scene=010100 > IPTC.Scene=010100; Xmp.xmp.Rating=4 > IPTC.StarRating=4; "
        "> IPTC.DateCreated=20100701; > IPTC.TimeCreated=120005+0200",
        [](auto&, Exiv2::IptcData& iptc, Exiv2::XmpData& xmp) {
            Exiv2::StringValue latin("\xE9t\xE9");
            iptc.add(Exiv2::IptcKey("Iptc.Application2.Keywords"), &latin);
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

    const auto rejected = expectRead("Xmp.xmp.Rating=-1");
    EXPECT_FALSE(rejected->contains(u"{IPTC}"_s));
}

} // namespace
