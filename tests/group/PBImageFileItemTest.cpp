#include "group/PBImageFileItem.h"
#include "group/ItemOrder.h"

#include "group/CatalogueFixture.h"

using namespace group;
using support::makeItem;
using support::text;

namespace {

class PBImageFileItemTest : public support::CatalogueFixture {};

TEST_F(PBImageFileItemTest, searchLooksAtTheNameAndFilterBitsCombineAsAnd) {
    const auto item = makeItem(u"Étretat_Plage.jpg"_s);
    for (const auto& search : {QString(), u"ÉTRETAT"_s, u"e.JPG"_s})
        EXPECT_TRUE(item->isMatchedForSearchString(search, 0)) << qPrintable(search);
    EXPECT_FALSE(item->isMatchedForSearchString(u"sea"_s, 0));
    for (const bool flagged : {false, true}) {
        for (const unsigned stars : {0U, 4U}) {
            item->setFlagged(flagged);
            item->setStar(stars);
            EXPECT_EQ(item->isMatchedForSearchString({}, FilterFlagged), flagged);
            EXPECT_EQ(item->isMatchedForSearchString({}, FilterRated), stars > 0);
            EXPECT_EQ(
                item->isMatchedForSearchString(u"plage"_s, FilterFlagged | FilterRated),
                flagged && stars > 0);
        }
    }
}

TEST_F(PBImageFileItemTest, ordersByEachSortType) {
    const auto small = makeItem(u"IMG_9.jpg"_s, 1, 10, 100.25);
    const auto large = makeItem(u"img_10.jpg"_s, 2, 0x8000000000000000U, 100.5);
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

TEST_F(PBImageFileItemTest, missingDatesAndKinds) {
    const std::tuple<int, PBValue, PBValue, int> cases[] = {
        // The date of modification stands in, on each side alone.
        {SortDateTaken, PBDate{3000}, {}, 1},
        {SortDateTaken, PBDate{3000}, PBNull{}, 1},
        {SortDateTaken, PBDate{3000}, PBDate{3000}, 0},
        {SortDateTaken, {}, PBDate{3000}, -1},
        // Kinds without an extension have no order.
        {SortKind, {}, {}, -2},
        {SortKind, u"jpg"_s, {}, -2},
        {SortKind, u"jpg"_s, PBNull{}, -2},
        {SortKind, u"jpg"_s, u"JPG"_s, 0},
        {SortKind, u"jpg"_s, u"png"_s, -1}};
    for (const auto& [type, data, otherData, order] : cases) {
        const auto item = makeItem(u"a"_s, 1, 0, 1000);
        const auto other = makeItem(u"b"_s, 2, 0, 2000);
        item->setSortData(data);
        other->setSortData(otherData);
        EXPECT_EQ(item->sortCompare(*other, type), order) << type << data.toText().toStdString();
    }
}

TEST_F(PBImageFileItemTest, quarterTurnsExchangeWidthAndHeight) {
    const auto item = makeItem(u"a"_s);
    item->setImageSize({300, 200});
    const std::pair<double, bool> turns[] = {{0, false},  {90, true},    {180, false},
                                             {270, true}, {450, true},   {-90, true},
                                             {45, false}, {89.9, false}, {std::nan(""), false}};
    for (const auto& [angle, exchanged] : turns) {
        item->setRotateAngle(angle);
        EXPECT_EQ(item->displaySize(), exchanged ? QSizeF(200, 300) : QSizeF(300, 200)) << angle;
    }
}

TEST_F(PBImageFileItemTest, locationTakesSignsFromReferencesAndRefusesWhatIsNotOnEarth) {
    const auto locationOf = [&](const PBDictionary& gps) {
        const auto item = addImage();
        EXPECT_TRUE(catalogue.insertGPSWithImageFileId(item->fileId(), gps));
        return item->locationWithDatabase(database);
    };
    const auto position = [](PBValue latitudeRef, PBValue latitude, PBValue longitude) {
        return PBDictionary{
            {u"LatitudeRef"_s, latitudeRef},
            {u"Latitude"_s, latitude},
            {u"LongitudeRef"_s, u"W"_s},
            {u"Longitude"_s, longitude}};
    };
    EXPECT_EQ(locationOf(position(u"s"_s, 33.5, 70.25)), PBValue(PBLocation{-33.5, -70.25}));
    EXPECT_EQ(locationOf(position(u"N"_s, 33.5, PBNull{})), PBValue(PBLocation{33.5, 0}));
    EXPECT_EQ(locationOf({}), PBValue(PBLocation{0, 0}));
    EXPECT_TRUE(locationOf(position(PBNull{}, 91, 0)).isAbsent());
    EXPECT_TRUE(locationOf(position(PBNull{}, INFINITY, 0)).isAbsent());
    EXPECT_TRUE(locationOf(position(PBNull{}, 5, 180.5)).isAbsent());
    EXPECT_TRUE(addImage()->locationWithDatabase(database).isAbsent());
}

} // namespace
