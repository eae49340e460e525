#include "group/GroupDataLoader.h"

#include "core/Texts.h"
#include "group/CatalogueFixture.h"
#include "group/ItemOrder.h"

using namespace group;
using support::text;

namespace {

struct GroupDataLoaderTest : support::CatalogueFixture {
    PBArray load(const PBImageFileItem& item, const std::vector<int>& chain) {
        PBArray data(chain.size(), PBNull{});
        EXPECT_TRUE(GroupDataLoader(chain, SortFileName)
                        .loadGroupAndSortData(item, data, database)
                        .isAbsent());
        return data;
    }
    PBValue sortDate(const PBImageFileItem& item) {
        return GroupDataLoader({}, SortDateTaken).loadGroupAndSortData(item, {}, database);
    }
    std::shared_ptr<PBImageFileItem> imageWithExif(const PBDictionary& exif) {
        auto item = addImage();
        EXPECT_TRUE(catalogue.insertExifWithImageFileId(item->fileId(), exif));
        return item;
    }
    const PBValue taken = *PBUtilities::exifDate(u"2019:07:14 10:00:00");
    const PBValue digitized = *PBUtilities::exifDate(u"2020:01:02 03:04:05");
};

TEST_F(GroupDataLoaderTest, groupsByOriginalSortsByDigitizedDateAndFallsBackToModification) {
    const auto dated = imageWithExif(
        {{u"DateTimeOriginal"_s, u"2019:07:14 10:00:00"_s},
         {u"DateTimeDigitized"_s, u"2020:01:02 03:04:05"_s}});
    EXPECT_EQ(load(*dated, {CaptureYear, CaptureMonth}), (PBArray{taken, taken}));
    EXPECT_EQ(sortDate(*dated), digitized);
    const PBValue fallback = modified;
    const auto bare = addImage();
    EXPECT_EQ(load(*bare, {CaptureYear}), PBArray{fallback});
    EXPECT_EQ(sortDate(*bare), fallback);
    const auto empty = imageWithExif({});
    EXPECT_EQ(load(*empty, {CaptureMonth}), PBArray{fallback});
    EXPECT_EQ(sortDate(*empty), fallback);
    for (const auto& broken :
         {PBValue(u"0000:00:00 00:00:00"_s), PBValue(u"yesterday"_s), PBValue(QString()),
          PBValue(QByteArray("\xff\x00", 2)), PBValue(20190714)}) {
        const auto item =
            imageWithExif({{u"DateTimeOriginal"_s, broken}, {u"DateTimeDigitized"_s, broken}});
        EXPECT_EQ(load(*item, {CaptureYear}), PBArray{fallback}) << broken.toText().toStdString();
        EXPECT_TRUE(sortDate(*item).isAbsent()) << broken.toText().toStdString();
    }
}

TEST_F(GroupDataLoaderTest, textsAreCleanedAndBlankOnesCountAsNothing) {
    const auto item = addImage();
    catalogue.insertTiffWithImageFileId(
        item->fileId(), {{u"Make"_s, u"n/a"_s}, {u"Model"_s, u"\n"_s}});
    catalogue.insertIPTCWithImageFileId(
        item->fileId(), {{u"Headline"_s, u"two\nlines"_s}, {u"Credit"_s, u"N/A"_s}});
    EXPECT_EQ(
        load(*item, {15, 16, 36, 63, 35}),
        (PBArray{PBNull{}, PBNull{}, u"two lines"_s, u"N/A"_s, PBNull{}}));
}

TEST_F(GroupDataLoaderTest, focusDistanceHasTheLastWordOverSubjectDistance) {
    const auto subjectOnly = imageWithExif({{u"SubjectDistance"_s, 2.5}});
    EXPECT_EQ(load(*subjectOnly, {FocusDistance}), PBArray{2.5});
    catalogue.insertExifAuxWithImageFileId(subjectOnly->fileId(), {{u"FocusDistance"_s, PBNull{}}});
    EXPECT_EQ(load(*subjectOnly, {FocusDistance}), PBArray{2.5});
    const auto both = imageWithExif({{u"SubjectDistance"_s, 2.5}});
    catalogue.insertExifAuxWithImageFileId(both->fileId(), {{u"FocusDistance"_s, 3.5}});
    EXPECT_EQ(load(*both, {CaptureYear, FocusDistance})[1], PBValue(3.5));
}

TEST_F(GroupDataLoaderTest, positionsNeedTwoNumbersOnEarth) {
    const auto positionOf = [&](const PBDictionary& gps) {
        const auto item = addImage();
        catalogue.insertGPSWithImageFileId(item->fileId(), gps);
        return load(*item, {Folder, Place})[1];
    };
    const PBDictionary good{
        {u"LatitudeRef"_s, u"S"_s},
        {u"Latitude"_s, 33.5},
        {u"LongitudeRef"_s, u"e"_s},
        {u"Longitude"_s, 151}};
    EXPECT_EQ(positionOf(good), PBValue(PBLocation{-33.5, 151}));
    for (const PBValue& latitude :
         {PBValue(PBNull{}), PBValue(91), PBValue(INFINITY), PBValue(std::nan("")),
          PBValue(u"north"_s), PBValue(QByteArray("x"))}) {
        PBDictionary broken = good;
        broken[u"Latitude"_s] = latitude;
        EXPECT_TRUE(positionOf(broken).isNull()) << latitude.toText().toStdString();
    }
    EXPECT_TRUE(positionOf({}).isNull());
}

TEST_F(GroupDataLoaderTest, readingAheadGivesTheSameAsOneImageAtATime) {
    std::mt19937 random(13);
    std::vector<std::shared_ptr<PBImageFileItem>> items;
    std::vector<qint64> fileIds;
    for (int number = 0; number < 300; ++number) {
        items.push_back(addImage());
        const qint64 id = items.back()->fileId();
        fileIds.push_back(id);
        if (random() % 3)
            catalogue.insertExifWithImageFileId(
                id, {{u"DateTimeOriginal"_s, u"20%1:01:02 03:04:05"_s.arg(10 + id % 9)}});
        if (random() % 3) catalogue.insertTiffWithImageFileId(id, {{u"Model"_s, u"M%1"_s.arg(id)}});
        if (random() % 3)
            catalogue.insertGPSWithImageFileId(
                id, {{u"Latitude"_s, double(id % 80)}, {u"Longitude"_s, PBNull{}}});
    }
    const std::vector<int> chain{CameraModel, CaptureYear, 63, Place};
    GroupDataLoader ahead(chain, SortDateTaken);
    std::ranges::shuffle(items, random);
    // Others come in between, some are left out, one comes twice and one is not in the catalogue.
    fileIds.erase(fileIds.begin() + 200, fileIds.begin() + 210);
    items.erase(items.begin() + 50, items.begin() + 60);
    items.push_back(items.front());
    items.push_back(support::makeItem(u"x"_s, 9999));
    for (const bool inOrder : {false, true}) {
        if (inOrder) std::ranges::sort(items, {}, &PBImageFileItem::fileId);
        ahead.willLoad(fileIds);
        for (const auto& item : items) {
            PBArray data(chain.size(), PBNull{});
            PBArray expected = data;
            GroupDataLoader single(chain, SortDateTaken);
            const PBValue date = ahead.loadGroupAndSortData(*item, data, database);
            ASSERT_EQ(single.loadGroupAndSortData(*item, expected, database), date);
            ASSERT_EQ(data, expected) << item->fileId();
            ASSERT_EQ(ahead.lastLocation(), item->locationWithDatabase(database));
        }
    }
}

TEST_F(GroupDataLoaderTest, valuesOfAnyTypeAreTakenAndAFailingQueryCountsAsAMissingRow) {
    const auto item =
        imageWithExif({{u"FNumber"_s, u"wide open"_s}, {u"Flash"_s, QByteArray("\x01\xff")}});
    EXPECT_EQ(
        load(*item, {21, 29, 26}), (PBArray{u"wide open"_s, QByteArray("\x01\xff"), PBNull{}}));
    catalogue.insertTiffWithImageFileId(item->fileId(), {{u"Model"_s, u"X100V"_s}});
    ASSERT_TRUE(database.executeUpdate(u"drop table Exif"_s));
    EXPECT_EQ(
        load(*item, {21, CaptureYear, CameraModel}), (PBArray{PBNull{}, modified, u"X100V"_s}));
}

} // namespace
