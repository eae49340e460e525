#include "group/PBImageFileItem.h"
#include "group/ItemOrder.h"

#include "group/CatalogueFixture.h"
#include "support/Support.h"

#include <cmath>

using namespace group;
using support::makeItem;
using support::text;

namespace {

class PBImageFileItemTest : public support::CatalogueFixture {};

TEST_F(PBImageFileItemTest, searchLooksAtTheNameAndFilterBitsCombineAsAnd) {
    const auto item = makeItem(text(u"Étretat_Plage.jpg"));
    EXPECT_TRUE(item->isMatchedForSearchString({}, 0));
    EXPECT_TRUE(item->isMatchedForSearchString(text(u"ÉTRETAT"), 0));
    EXPECT_TRUE(item->isMatchedForSearchString(text(u"e.JPG"), 0));
    EXPECT_FALSE(item->isMatchedForSearchString(text(u"sea"), 0));
    EXPECT_FALSE(item->isMatchedForSearchString({}, FilterFlagged));
    item->setFlagged(true);
    EXPECT_TRUE(item->isMatchedForSearchString({}, FilterFlagged));
    EXPECT_FALSE(item->isMatchedForSearchString({}, FilterFlagged | FilterRated));
    item->setStar(4);
    EXPECT_TRUE(item->isMatchedForSearchString(text(u"plage"), FilterFlagged | FilterRated));
    item->setFlagged(false);
    EXPECT_TRUE(item->isMatchedForSearchString({}, FilterRated));
    EXPECT_FALSE(item->isMatchedForSearchString({}, FilterFlagged | FilterRated));
}

TEST_F(PBImageFileItemTest, ordersByEachSortType) {
    const auto small = makeItem(text(u"IMG_9.jpg"), 1, 10, 100.25);
    const auto large = makeItem(text(u"img_10.jpg"), 2, 0x8000000000000000U, 100.5);
    small->setImageSize({100, 50});
    large->setImageSize({50, 100});
    for (const int type : {SortFileName, SortFileSize, SortModificationDate, SortDateTaken}) {
        EXPECT_EQ(small->sortCompare(*large, type), -1) << type;
        EXPECT_EQ(large->sortCompare(*small, type), 1) << type;
        EXPECT_EQ(small->sortCompare(*small, type), 0) << type;
    }
    EXPECT_EQ(small->sortCompare(*large, SortPixelArea), 0);
    large->setImageSize({1e12, 1e12});
    EXPECT_EQ(small->sortCompare(*large, SortPixelArea), -1);
    large->setImageSize({std::nan(""), 5});
    EXPECT_EQ(small->sortCompare(*large, SortPixelArea), 1);
    for (const int type : {-1, 0, 7}) {
        EXPECT_EQ(small->sortCompare(*large, type), -2) << type;
        EXPECT_EQ(small->sortCompare(*small, type), 0) << type;
    }
}

TEST_F(PBImageFileItemTest, dateTakenFallsBackToModificationOnEachSideAlone) {
    const auto item = makeItem(text(u"a"), 1, 0, 1000);
    const auto other = makeItem(text(u"b"), 2, 0, 2000);
    item->setSortData(PBDate{3000});
    EXPECT_EQ(item->sortCompare(*other, SortDateTaken), 1);
    other->setSortData(PBNull{});
    EXPECT_EQ(item->sortCompare(*other, SortDateTaken), 1);
    other->setSortData(PBDate{3000});
    EXPECT_EQ(item->sortCompare(*other, SortDateTaken), 0);
    item->setSortData({});
    EXPECT_EQ(item->sortCompare(*other, SortDateTaken), -1);
}

TEST_F(PBImageFileItemTest, kindsWithoutAnExtensionHaveNoOrder) {
    const auto item = makeItem(text(u"a"));
    const auto other = makeItem(text(u"b"));
    EXPECT_EQ(item->sortCompare(*other, SortKind), -2);
    item->setSortData(text(u"jpg"));
    EXPECT_EQ(item->sortCompare(*other, SortKind), -2);
    other->setSortData(PBNull{});
    EXPECT_EQ(item->sortCompare(*other, SortKind), -2);
    other->setSortData(text(u"JPG"));
    EXPECT_EQ(item->sortCompare(*other, SortKind), 0);
    other->setSortData(text(u"png"));
    EXPECT_EQ(item->sortCompare(*other, SortKind), -1);
}

TEST_F(PBImageFileItemTest, quarterTurnsExchangeWidthAndHeight) {
    const auto item = makeItem(text(u"a"));
    item->setImageSize({300, 200});
    const std::pair<double, bool> turns[] = {{0, false},  {90, true},    {180, false},
                                             {270, true}, {450, true},   {-90, true},
                                             {45, false}, {89.9, false}, {std::nan(""), false}};
    for (const auto& [angle, exchanged] : turns) {
        item->setRotateAngle(angle);
        EXPECT_EQ(item->displaySize(), exchanged ? QSizeF(200, 300) : QSizeF(300, 200)) << angle;
    }
}

TEST_F(PBImageFileItemTest, readsColumnsOfItsRow) {
    const auto item = addImage({
        {text(u"UTIType"), text(u"public.jpeg")},
        {text(u"CreationDate"), 12.5},
        {text(u"ImageDPI"), 300},
        {text(u"ColorModel"), text(u"RGB")},
        {text(u"FileFlag"), 1},
        {text(u"FileStars"), 3},
        {text(u"Tag"), text(u"3,17")},
    });
    EXPECT_EQ(item->utiTypeWithDatabase(database), text(u"public.jpeg"));
    EXPECT_EQ(item->creationDateWithDatabase(database), 12.5);
    EXPECT_EQ(item->dpiWithDatabase(database), PBValue(300));
    EXPECT_EQ(item->colorModelWithDatabase(database), text(u"RGB"));
    EXPECT_TRUE(item->colorSyncProfileWithDatabase(database).isEmpty());
    EXPECT_TRUE(item->flaggedWithDatabase(database));
    EXPECT_EQ(item->starRatingWithDatabase(database), 3U);
    EXPECT_EQ(item->tagsWithDatabase(database), text(u"3,17"));
    EXPECT_EQ(item->star(), 0U) << "the fields are not the catalogue";

    const auto missing = makeItem(text(u"gone.jpg"), 999);
    EXPECT_TRUE(missing->utiTypeWithDatabase(database).isEmpty());
    EXPECT_EQ(missing->creationDateWithDatabase(database), 0.0);
    EXPECT_TRUE(missing->dpiWithDatabase(database).isAbsent());
    EXPECT_FALSE(missing->flaggedWithDatabase(database));
}

TEST_F(PBImageFileItemTest, locationTakesSignsFromReferencesAndRefusesWhatIsNotOnEarth) {
    const auto locationOf = [&](const PBDictionary& gps) {
        const auto item = addImage();
        EXPECT_TRUE(catalogue.insertGPSWithImageFileId(item->fileId(), gps));
        return item->locationWithDatabase(database);
    };
    const auto position = [](PBValue latitudeRef, PBValue latitude, PBValue longitude) {
        return PBDictionary{
            {text(u"LatitudeRef"), latitudeRef},
            {text(u"Latitude"), latitude},
            {text(u"LongitudeRef"), text(u"W")},
            {text(u"Longitude"), longitude}};
    };
    EXPECT_EQ(locationOf(position(text(u"s"), 33.5, 70.25)), PBValue(PBLocation{-33.5, -70.25}));
    EXPECT_EQ(locationOf(position(text(u"N"), 33.5, PBNull{})), PBValue(PBLocation{33.5, 0}));
    EXPECT_EQ(locationOf({}), PBValue(PBLocation{0, 0}));
    EXPECT_TRUE(locationOf(position(PBNull{}, 91, 0)).isAbsent());
    EXPECT_TRUE(locationOf(position(PBNull{}, INFINITY, 0)).isAbsent());
    EXPECT_TRUE(locationOf(position(PBNull{}, 5, 180.5)).isAbsent());
    EXPECT_TRUE(addImage()->locationWithDatabase(database).isAbsent());
}

TEST_F(PBImageFileItemTest, foldersAreLookedUpOncePerPass) {
    const support::KnownFolders folders({{1, text(u"/Photos/Sea")}, {2, text(u"/")}});
    FolderPathCache cache;
    const auto item = makeItem(text(u"a.jpg"));
    for (int round = 0; round < 3; ++round)
        EXPECT_EQ(item->filePath(folders, cache), text(u"/Photos/Sea/a.jpg"));
    EXPECT_EQ(folders.asked, 1);
    EXPECT_EQ(makeItem(text(u"b.jpg"), 2, 0, 0, 2)->filePath(folders), text(u"/b.jpg"));
    const auto lost = makeItem(text(u"c.jpg"), 3, 0, 0, 7);
    EXPECT_TRUE(lost->filePath(folders, cache).isEmpty());
    EXPECT_FALSE(cache.contains(7));
}

} // namespace
