#include "group/GroupDataLoader.h"

#include "core/Texts.h"
#include "group/CatalogueFixture.h"
#include "group/ItemOrder.h"
#include "support/Support.h"

#include <algorithm>
#include <cmath>
#include <random>

using namespace group;
using support::text;

namespace {

class GroupDataLoaderTest : public support::CatalogueFixture {
protected:
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

TEST_F(GroupDataLoaderTest, groupsByOriginalDateAndSortsByDigitizedDate) {
    const auto item = imageWithExif(
        {{text(u"DateTimeOriginal"), text(u"2019:07:14 10:00:00")},
         {text(u"DateTimeDigitized"), text(u"2020:01:02 03:04:05")}});
    EXPECT_EQ(load(*item, {CaptureYear, CaptureMonth}), (PBArray{taken, taken}));
    EXPECT_EQ(sortDate(*item), digitized);
}

TEST_F(GroupDataLoaderTest, datesFallBackToModification) {
    const PBValue fallback = modified;
    const auto bare = addImage();
    EXPECT_EQ(load(*bare, {CaptureYear}), PBArray{fallback});
    EXPECT_EQ(sortDate(*bare), fallback);
    const auto empty = imageWithExif({});
    EXPECT_EQ(load(*empty, {CaptureMonth}), PBArray{fallback});
    EXPECT_EQ(sortDate(*empty), fallback);
    for (const auto& broken :
         {PBValue(text(u"0000:00:00 00:00:00")), PBValue(text(u"yesterday")), PBValue(QString()),
          PBValue(QByteArray("\xff\x00", 2)), PBValue(20190714)}) {
        const auto item = imageWithExif(
            {{text(u"DateTimeOriginal"), broken}, {text(u"DateTimeDigitized"), broken}});
        EXPECT_EQ(load(*item, {CaptureYear}), PBArray{fallback}) << broken.toText().toStdString();
        EXPECT_TRUE(sortDate(*item).isAbsent()) << broken.toText().toStdString();
    }
}

TEST_F(GroupDataLoaderTest, textsAreCleanedAndBlankOnesCountAsNothing) {
    const auto item = addImage();
    catalogue.insertTiffWithImageFileId(
        item->fileId(), {{text(u"Make"), text(u"n/a")}, {text(u"Model"), text(u"\n")}});
    catalogue.insertIPTCWithImageFileId(
        item->fileId(),
        {{text(u"Headline"), text(u"two\nlines")}, {text(u"Credit"), text(u"N/A")}});
    EXPECT_EQ(
        load(*item, {15, 16, 36, 63, 35}),
        (PBArray{PBNull{}, PBNull{}, text(u"two lines"), text(u"N/A"), PBNull{}}));
}

TEST_F(GroupDataLoaderTest, focusDistanceHasTheLastWordOverSubjectDistance) {
    const auto subjectOnly = imageWithExif({{text(u"SubjectDistance"), 2.5}});
    EXPECT_EQ(load(*subjectOnly, {FocusDistance}), PBArray{2.5});
    catalogue.insertExifAuxWithImageFileId(
        subjectOnly->fileId(), {{text(u"FocusDistance"), PBNull{}}});
    EXPECT_EQ(load(*subjectOnly, {FocusDistance}), PBArray{2.5});
    const auto both = imageWithExif({{text(u"SubjectDistance"), 2.5}});
    catalogue.insertExifAuxWithImageFileId(both->fileId(), {{text(u"FocusDistance"), 3.5}});
    EXPECT_EQ(load(*both, {CaptureYear, FocusDistance})[1], PBValue(3.5));
}

TEST_F(GroupDataLoaderTest, positionsNeedTwoNumbersOnEarth) {
    const auto positionOf = [&](const PBDictionary& gps) {
        const auto item = addImage();
        catalogue.insertGPSWithImageFileId(item->fileId(), gps);
        return load(*item, {Folder, Place})[1];
    };
    const PBDictionary good{
        {text(u"LatitudeRef"), text(u"S")},
        {text(u"Latitude"), 33.5},
        {text(u"LongitudeRef"), text(u"e")},
        {text(u"Longitude"), 151},
    };
    EXPECT_EQ(positionOf(good), PBValue(PBLocation{-33.5, 151}));
    for (const PBValue& latitude :
         {PBValue(PBNull{}), PBValue(91), PBValue(INFINITY), PBValue(std::nan("")),
          PBValue(text(u"north")), PBValue(QByteArray("x"))}) {
        PBDictionary broken = good;
        broken[text(u"Latitude")] = latitude;
        EXPECT_TRUE(positionOf(broken).isNull()) << latitude.toText().toStdString();
    }
    EXPECT_TRUE(positionOf({}).isNull());
}

TEST_F(GroupDataLoaderTest, valuesOfAnyTypeInAnyColumnAreTaken) {
    const auto item = imageWithExif(
        {{text(u"FNumber"), text(u"wide open")}, {text(u"Flash"), QByteArray("\x01\xff")}});
    EXPECT_EQ(
        load(*item, {21, 29, 26}), (PBArray{text(u"wide open"), QByteArray("\x01\xff"), PBNull{}}));
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
                id, {{text(u"DateTimeOriginal"), text(u"20%1:01:02 03:04:05").arg(10 + id % 9)}});
        if (random() % 3)
            catalogue.insertTiffWithImageFileId(id, {{text(u"Model"), text(u"M%1").arg(id)}});
        if (random() % 3)
            catalogue.insertGPSWithImageFileId(
                id, {{text(u"Latitude"), double(id % 80)}, {text(u"Longitude"), PBNull{}}});
    }
    const std::vector<int> chain{CameraModel, CaptureYear, 63, Place};
    GroupDataLoader ahead(chain, SortDateTaken);
    std::ranges::shuffle(items, random);
    // Others come in between, some are left out, one comes twice and one is not in the catalogue.
    fileIds.erase(fileIds.begin() + 200, fileIds.begin() + 210);
    items.erase(items.begin() + 50, items.begin() + 60);
    items.push_back(items.front());
    items.push_back(support::makeItem(text(u"x"), 9999));
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

TEST_F(GroupDataLoaderTest, aFailingQueryCountsAsAMissingRow) {
    const auto item = imageWithExif({{text(u"FNumber"), 8}});
    catalogue.insertTiffWithImageFileId(item->fileId(), {{text(u"Model"), text(u"X100V")}});
    ASSERT_TRUE(database.executeUpdate(text(u"drop table Exif")));
    EXPECT_EQ(
        load(*item, {21, CaptureYear, CameraModel}), (PBArray{PBNull{}, modified, text(u"X100V")}));
}

} // namespace
