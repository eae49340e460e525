#include "catalogue/CatalogueSchema.h"
#include "info/rows/DateTexts.h"
#include "info/rows/GeneralMerge.h"
#include "info/rows/MoreInfoRows.h"
#include "support/Rows.h"

namespace {

using support::entries;
using Category = MetadataCategory;

const QLocale english(QLocale::English, QLocale::UnitedKingdom);

/// "key=value", "key" alone for mixed ones.
QStringList told(const InfoRows& rows) {
    return support::listed(rows, [](const InfoRow& row) {
        return row.state == InfoRow::State::Mixed ? row.key : row.key + u'=' + row.text;
    });
}

/// One photograph after the other, each by the row that it has of the category; none for "".
MoreInfoDict merged(Category category, const std::vector<const char*>& photographs) {
    MetadataMerge merge;
    for (const char* photograph : photographs) {
        PBDictionary values = entries(photograph);
        PBArray row;
        if (!values.empty())
            for (const QString& column :
                 CatalogueSchema::metadataColumnsOfTable(propertyTypeOfCategory(category)))
                row.push_back(values.try_emplace(column, PBNull()).first->second);
        merge.add(category, row);
    }
    return merge.moreInfoDict();
}

QStringList rowsOf(Category category, const std::vector<const char*>& photographs) {
    return told(MoreInfo::rows(merged(category, photographs), category, english));
}

TEST(InfoRowsTest, metadataStayWhereAllPhotographsAgree) {
    const auto tiff = Category::TIFF;
    const std::pair<std::vector<const char*>, const char*> cases[] = {
        {{"Make=Canon Model=A", "Make=Canon Model=B"}, "Make=Canon Model"},
        {{"Make=canon", "Make=CANON", "Make=canon"}, "Make=canon"},
        // Numbers are the same however they are written; what a later one has not is mixed.
        {{"Make=a XResolution=300", "Make=A XResolution=300.0"}, "Make=a XResolution=300"},
        {{"Make=a Model=b", "Make=a"}, "Make=a Model"},
        // One that only later ones have, and one that comes back after it was mixed.
        {{"Make=a", "Make=a Artist=b", "Make=a"}, "Make=a Artist"},
        {{"Make=a", "Make=b", "Make=a"}, "Make"}};
    for (const auto& [photographs, rows] : cases)
        EXPECT_EQ(rowsOf(tiff, photographs), support::words(rows));
    EXPECT_TRUE(merged(tiff, {"Make=a", "", "Make=a"}).empty()) << "one has no such row";
    MetadataMerge merge;
    EXPECT_TRUE(merge.wants(tiff));
    merge.add(tiff, {});
    EXPECT_FALSE(merge.wants(tiff));
    EXPECT_TRUE(merge.wants(Category::GPS));
}

TEST(InfoRowsTest, exifShowsThreeDictionariesInOneOrder) {
    MoreInfoDict all;
    all[Category::TIFF] = entries("Model=M Make=K Software=S");
    all[Category::Exif] = entries("FNumber=2.8 LensSerialNumber=1 DateTimeOriginal=x");
    all[Category::ExifAux] = entries("LensModel=L LensSerialNumber=2 FocusDistance=3 LensID=7");
    const auto rows = MoreInfo::rows(all, Category::Exif, english);
    EXPECT_EQ(
        told(rows),
        support::words("Make=K Model=M LensModel=L FNumber=F/2.8 FocusDistance=3\u00a0m "
                       "DateTimeOriginal=x LensSerialNumber=1 "
                       "LensSerialNumber=2 LensID=7")
            .replaceInStrings(u"\u00a0"_s, u" "_s));
    // A place for the date of digitisation is kept.
    EXPECT_EQ(MoreInfo::heightInRows(Category::Exif, rows), rows.size() + 1);
    all[Category::Exif][u"LensModel"_s] = PBNull();
    EXPECT_EQ(told(MoreInfo::rows(all, Category::Exif, english)).value(2), u"LensModel"_s);
    EXPECT_EQ(MoreInfo::heightInRows(Category::Exif, {}), 0);
    EXPECT_EQ(
        rowsOf(
            Category::Exif, {"CompressedBitsPerPixel=3.9893515 "
                             "LensSpecification=1.5700000524639703,9,0.00012345,2.8"}),
        support::words("CompressedBitsPerPixel=3.99 LensSpecification=1.57,9,0.000123,2.8"));
}

TEST(InfoRowsTest, positionsAreDegreesWithTheirReferenceInOneRow) {
    const auto gps = Category::GPS;
    const std::pair<std::vector<const char*>, QStringList> cases[] = {
        {{"LatitudeRef=N Latitude=52.5"}, {u"Latitude=52° 30´ 0.0˝ N"_s}},
        // 17.99999 minutes, and seconds that round up to a minute and a degree.
        {{"LatitudeRef=S Latitude=52.3"}, {u"Latitude=52° 18´ 0.0˝ S"_s}},
        {{"Longitude=12.99999999"}, {u"Longitude=13° 0´ 0.0˝"_s}},
        {{"LongitudeRef=W Longitude=0.0026"}, {u"Longitude=0° 0´ 9.4˝ W"_s}},
        {{"Latitude=1e300"}, {u"Latitude=1e+300"_s}},
        {{"LatitudeRef=N"}, {u"Latitude=N"_s}},
        {{"LatitudeRef=N Latitude=5", "LatitudeRef=S Latitude=5"}, {u"Latitude"_s}},
        {{"LatitudeRef=N Latitude=5", "LatitudeRef=N Latitude=6"}, {u"Latitude"_s}},
        {{"SpeedRef=K Speed=12.345"}, {u"Speed=12.35 km/h"_s}},
        {{"DestDistance=3"}, {u"DestDistance=3.00"_s}},
        {{"TrackRef=T Track=90.5"}, {u"TrackRef=True north"_s, u"Track=90.5"_s}}};
    for (const auto& [photographs, rows] : cases)
        EXPECT_EQ(rowsOf(gps, photographs), rows);
    const auto height = [&](const char* photograph) {
        return MoreInfo::heightInRows(gps, MoreInfo::rows(merged(gps, {photograph}), gps, english));
    };
    EXPECT_EQ(height("LatitudeRef=N Latitude=5"), 1);
    EXPECT_EQ(height("LatitudeRef=N LongitudeRef=E Longitude=7"), 3);
}

TEST(InfoRowsTest, aPlaceIsOneThatAllHave) {
    const auto place = [](const std::vector<const char*>& photographs) {
        return MoreInfo::location(merged(Category::GPS, photographs));
    };
    const char* lima = "Latitude=12.25 LatitudeRef=s Longitude=77.5 LongitudeRef=W";
    EXPECT_EQ(place({lima, lima}), (PBLocation{-12.25, -77.5}));
    EXPECT_EQ(place({"Latitude=1 Longitude=2"}), (PBLocation{1, 2}));
    EXPECT_FALSE(place({lima, "Latitude=12.25 LatitudeRef=N Longitude=77.5 LongitudeRef=W"}));
    EXPECT_FALSE(place({"Latitude=1"}));
    EXPECT_FALSE(place({"Latitude=91 Longitude=2"}));
    EXPECT_FALSE(place({"Latitude=nan Longitude=2"}));
}

TEST(InfoRowsTest, segmentsAreOfferedAndChosenByTheirKeys) {
    MoreInfoDict all;
    EXPECT_FALSE(MoreInfo::chosenCategory(all, u"{Exif}"));
    all[Category::ExifAux] = entries("LensID=1");
    all[Category::GPS] = entries("Latitude=1");
    EXPECT_EQ(MoreInfo::segments(all), (std::vector{Category::Exif, Category::GPS}));
    EXPECT_EQ(MoreInfo::chosenCategory(all, u"{gps}"), Category::GPS);
    EXPECT_EQ(MoreInfo::chosenCategory(all, u"{IPTC}"), Category::Exif);
    // With auxiliary EXIF alone a click lands one further on.
    EXPECT_EQ(MoreInfo::categoryOfClick(all, 0), Category::GPS);
    EXPECT_EQ(MoreInfo::categoryOfClick(all, 1), std::nullopt);
    all[Category::Exif] = entries("FNumber=2");
    EXPECT_EQ(MoreInfo::categoryOfClick(all, 1), Category::GPS);
}

TEST(InfoRowsTest, datesStandInTheOrderOfTheLocale) {
    const QDateTime date(QDate(2021, 6, 2), QTime(9, 5, 7), Qt::UTC);
    const std::pair<const char*, QString> cases[] = {
        {"en_GB", u"2 Jun 2021, 09:05:07"_s},      {"en_US", u"Jun 2, 2021, 9:05:07 AM"_s},
        {"de_DE", u"2. Juni 2021, 09:05:07"_s},    {"fr_FR", u"2 juin 2021, 09:05:07"_s},
        {"ja_JP", u"2021年6月2日, 9時05分07秒"_s}, {"sv_SE", u"2 juni 2021, 09:05:07"_s},
    };
    for (const auto& [locale, text] : cases)
        EXPECT_EQ(DateTexts::dateTimeText(date, QLocale(QString::fromLatin1(locale))), text)
            << locale;
    // What cameras write is what their clock showed, also in the hour that summer time skips.
    const support::TimeZone berlin("Europe/Berlin");
    const auto camera = [](const char* text) {
        return DateTexts::cameraDateText(QString::fromLatin1(text), english).value_or(u"-"_s);
    };
    EXPECT_EQ(camera("2021:03:28 02:30:00"), u"28 Mar 2021, 02:30:00"_s);
    EXPECT_EQ(camera("2021:03:28"), u"28 Mar 2021"_s);
    for (const char* none : {"0000:00:00 00:00:00", "2021:03:28T02:30:00"})
        EXPECT_EQ(camera(none), u"-"_s) << none;
}

TEST(InfoRowsTest, generalFactsStayWhereAllPhotographsAgree) {
    const auto facts = [](const char* name, PBValue dpi, const char* profile, const char* tags) {
        GeneralFacts made;
        made[GeneralRow::FileName] = QString::fromLatin1(name);
        made[GeneralRow::ImageDPI] = dpi;
        if (*profile != 0) made[GeneralRow::ColorSyncProfile] = QString::fromLatin1(profile);
        made[GeneralRow::FileFlag] = true;
        made.tagIds = tagIdsOf(QString::fromLatin1(tags));
        return made;
    };
    GeneralMerge merge;
    merge.add(facts("a.jpg", 72, "sRGB", "7,3,7, x,5"));
    merge.add(facts("A.JPG", 72.0, "", "3,9"));
    EXPECT_FALSE(merge.wants(GeneralRow::ColorSyncProfile));
    merge.add(facts("a.jpg", 72, "sRGB", "9,3"));
    const auto row = [&](GeneralRow which, bool isComplete = true) {
        return merge.rows(isComplete, english)[static_cast<std::size_t>(which)];
    };
    EXPECT_EQ(row(GeneralRow::FileName).text + row(GeneralRow::ImageDPI).text, u"a.jpg72"_s);
    EXPECT_EQ(row(GeneralRow::ColorSyncProfile).state, InfoRow::State::Mixed);
    EXPECT_EQ(row(GeneralRow::ColorModel).state, InfoRow::State::Missing);
    // Before all are read, only that two differ is certain.
    EXPECT_EQ(row(GeneralRow::ColorSyncProfile, false).state, InfoRow::State::Mixed);
    EXPECT_EQ(row(GeneralRow::FileName, false).state, InfoRow::State::Gathering);
    EXPECT_TRUE(std::ranges::equal(merge.tagIds(), std::array<qint64, 4>{7, 3, 5, 9}));
    const MergedTags tags = merge.tags({{3, u"c"_s}, {7, u"g"_s}, {9, u"i"_s}});
    EXPECT_EQ(tags, (MergedTags{{u"c"_s}, {u"g"_s, u"i"_s}}));
    EXPECT_EQ(imageSizeValue(4000.9, 3000), u"4000 x 3000"_s);
}

} // namespace
