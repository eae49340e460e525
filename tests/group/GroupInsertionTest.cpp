#include "group/GroupingStep.h"

#include "core/LocalizedCompare.h"
#include "group/CatalogueFixture.h"
#include "group/ItemOrder.h"
#include "support/Support.h"

#include <QDateTime>

#include <algorithm>
#include <random>

using namespace group;
using support::describe;
using support::text;

namespace {

/// An image with all that can decide its place, and a straightforward way to compare it.
struct Photo {
    std::shared_ptr<PBImageFileItem> item;
    PBDate taken;
    QString folder;
    int stars;
    PBValue model;
    double aperture;

    [[nodiscard]] PBValue value(int type) const {
        switch (type) {
        case CaptureYear:
        case CaptureMonth:
            return taken;
        case Folder:
            return folder;
        case StarRating:
            return stars;
        case CameraModel:
            return model;
        default:
            return aperture;
        }
    }
};

int sign(auto number, auto other) {
    return number < other ? -1 : number > other ? 1 : 0;
}

/// The order of groups as the user expects it, told without order keys.
int compareGroups(int type, const Photo& photo, const Photo& other) {
    const auto date = [](const Photo& one) {
        return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(one.taken.secondsSince1970))
            .date();
    };
    switch (type) {
    case CaptureYear:
        return sign(date(other).year(), date(photo).year());
    case CaptureMonth:
        return sign(
            date(other).year() * 100 + date(other).month(),
            date(photo).year() * 100 + date(photo).month());
    case Folder:
        return PBUtilities::localizedStandardCompare(photo.folder, other.folder);
    case StarRating:
        return sign(other.stars, photo.stars);
    case CameraModel:
        if (photo.model.isNull() || other.model.isNull())
            return sign(photo.model.isNull(), other.model.isNull());
        return sign(photo.model.toText().toLower(), other.model.toText().toLower());
    default:
        return sign(photo.aperture, other.aperture);
    }
}

std::vector<Photo> randomPhotos(std::mt19937& random, int count) {
    const PBValue models[] = {
        text(u"X100V"), text(u"x100v"), text(u"EOS R5"), text(u"Z 9"), PBNull{}};
    std::vector<Photo> photos;
    for (int number = 0; number < count; ++number) {
        const auto seconds = 1.0e9 + static_cast<double>(random() % 250'000'000);
        const auto item = PBImageFileItem::imageFileItemWithId(
            number, 1, text(u"IMG_%1.jpg").arg(random() % 2000), random() % 300, seconds);
        item->setImageSize({double(random() % 30), double(random() % 30)});
        item->setSortData(random() % 3 ? PBValue(PBDate{seconds / 2}) : PBValue(PBNull{}));
        photos.push_back(
            {item, PBDate{1.0e9 + static_cast<double>(random() % 100'000'000)},
             text(u"/Photos/Trip %1").arg(random() % 15), static_cast<int>(random() % 6),
             models[random() % 5], static_cast<double>(random() % 8) / 2});
    }
    return photos;
}

PBGroupItemArray insertAll(
    const std::vector<Photo>& photos, const std::vector<int>& chain, int sortType,
    bool descending) {
    PBGroupItemArray tree;
    for (const Photo& photo : photos) {
        PBArray data;
        for (const int type : chain)
            data.push_back(photo.value(type));
        pushImageFileItemToWorkGroupItemArray(
            {photo.item, tree, chain, data, sortType, descending});
    }
    return tree;
}

/// The tree that a stable sort and one pass give, described like a tree.
QString
modelOf(std::vector<Photo> photos, const std::vector<int>& chain, int sortType, bool descending) {
    // A group shows the value that came first.
    std::vector<std::vector<PBValue>> shown(photos.size());
    const auto samePath = [&](const Photo& photo, const Photo& other, std::size_t links) {
        return std::ranges::all_of(std::span(chain).first(links), [&](int type) {
            return compareGroups(type, photo, other) == 0;
        });
    };
    const std::vector<Photo> arrival = photos;
    std::ranges::stable_sort(photos, [&](const Photo& photo, const Photo& other) {
        for (const int type : chain)
            if (const int order = compareGroups(type, photo, other)) return order < 0;
        if (sortType == SortNone) return false;
        const auto order = photo.item->sortCompare(*other.item, sortType);
        return descending ? order > 0 : order < 0;
    });
    const auto valueText = [&](const Photo& photo, std::size_t link) {
        const auto first = std::ranges::find_if(
            arrival, [&](const Photo& early) { return samePath(early, photo, link + 1); });
        const PBValue value = first->value(chain[link]);
        return value.isNull() ? text(u"null") : value.toText();
    };
    QString described;
    for (std::size_t index = 0; index < photos.size(); ++index) {
        const Photo& photo = photos[index];
        std::size_t common = 0;
        if (index > 0)
            while (common < chain.size() && samePath(photos[index - 1], photo, common + 1))
                ++common;
        if (index > 0) {
            described += QString(static_cast<qsizetype>(chain.size() - common), u')');
            described += u' ';
        } else if (chain.empty()) {
            described += text(u"absent(");
        }
        for (std::size_t link = common; link < chain.size(); ++link)
            described += valueText(photo, link) + u'(';
        described += photo.item->fileName();
    }
    return described +
           QString(static_cast<qsizetype>(std::max<std::size_t>(chain.size(), 1)), u')');
}

TEST(GroupInsertionTest, treesEqualAStableSortGroupedInOnePass) {
    std::mt19937 random(2024);
    const std::vector<std::vector<int>> chains{
        {},
        {CaptureYear},
        {StarRating, CameraModel},
        {CaptureYear, Folder},
        {21, Folder},
        {CaptureMonth, CameraModel, StarRating},
        {CameraModel, CaptureYear, 21, Folder}};
    for (const auto& chain : chains) {
        for (int sortType = SortNone; sortType <= SortPixelArea; ++sortType) {
            if (sortType == SortKind) continue; // has no total order
            const bool descending = random() % 2 != 0;
            const auto photos = randomPhotos(random, 130);
            ASSERT_EQ(
                describe(insertAll(photos, chain, sortType, descending)),
                modelOf(photos, chain, sortType, descending))
                << "chain of " << chain.size() << ", sort type " << sortType;
        }
    }
}

TEST(GroupInsertionTest, orderOfArrivalDoesNotMatterForDistinctItems) {
    std::mt19937 random(5);
    auto photos = randomPhotos(random, 2000);
    int number = 0;
    for (Photo& photo : photos) {
        photo.item->setFileName(text(u"P%1").arg(++number));
        if (photo.model == PBValue(text(u"x100v"))) photo.model = text(u"X100V");
        photo.taken.secondsSince1970 = 1.0e9 + (number % 10) * 3.2e7;
    }
    const std::vector<int> chain{CaptureYear, Folder, CameraModel};
    const QString sorted = describe(insertAll(photos, chain, SortFileName, true));
    for (int round = 0; round < 3; ++round) {
        std::ranges::shuffle(photos, random);
        ASSERT_EQ(describe(insertAll(photos, chain, SortFileName, true)), sorted);
    }
}

/// Addresses of two places; notes what is to be looked up.
class TwoPlaces final : public PlaceAddresses {
public:
    PBValue addressDictionaryWithLocation(const PBLocation& location) override {
        if (location.latitude > 60) return _north;
        if (location.latitude < -60) return PBNull{};
        return {};
    }
    void addLocationToReverseGeocoding(const PBLocation& location) override {
        wanted.push_back(location);
    }
    std::vector<PBLocation> wanted;

private:
    const PBValue _north = PBDictionary{{text(u"City"), text(u"Alta")}};
};

class GroupingStepTest : public support::CatalogueFixture {
protected:
    GroupingStep stepFor(std::vector<int> chain, int sortType = SortFileName) {
        tree = std::make_shared<PBGroupItemArray>();
        return GroupingStep(
            {tree, std::move(chain), sortType, false, searchString, filter}, database, &places);
    }
    /// Puts the images of the catalogue through the step, as a scan does.
    void insertRows(GroupingStep& step) {
        const auto& parameters = step.parameters();
        FMResultSet rows = database.executeQuery(
            ImageFileRow::queryForFolder(
                parameters.sortType, parameters.descendingSort, parameters.filter),
            1);
        std::vector<ImageFileRow> read;
        while (rows.next())
            read.push_back(ImageFileRow::fromResultSet(rows));
        for (const auto& row : read)
            step.insert(row, text(u"/Photos"));
    }
    qint64 addRow(const QString& name, PBDictionary columns = {}) {
        columns[text(u"FileName")] = name;
        columns[text(u"FolderId")] = 1;
        columns.try_emplace(text(u"ModificationDate"), modified.secondsSince1970);
        return catalogue.insertImageFileWithDictionary(columns);
    }
    QString grouped(std::vector<int> chain, int sortType = SortFileName) {
        GroupingStep step = stepFor(std::move(chain), sortType);
        insertRows(step);
        return describe(*tree);
    }
    QString searchString;
    quint64 filter = 0;
    TwoPlaces places;
    std::shared_ptr<PBGroupItemArray> tree;
};

TEST_F(GroupingStepTest, slotsOfTheRow) {
    addRow(
        text(u"a"), {{text(u"UTIType"), text(u"public.jpeg")},
                     {text(u"FileSize"), 10241},
                     {text(u"ImageWidth"), 400},
                     {text(u"ImageHeight"), 300},
                     {text(u"ColorModel"), text(u"RGB")},
                     {text(u"FileFlag"), 1},
                     {text(u"FileStars"), 4},
                     {text(u"Tag"), text(u"3")}});
    addRow(text(u"b"));
    const auto year = [&] { return text(u"2021-06-02 12:00:00 +0000(a b)"); };
    EXPECT_EQ(grouped({}), text(u"absent(a b)"));
    EXPECT_EQ(grouped({ModificationYear}), year());
    EXPECT_EQ(grouped({CaptureMonth}), year());
    EXPECT_EQ(grouped({Folder}), text(u"/Photos(a b)"));
    EXPECT_EQ(grouped({FileKind}), text(u"jpg(a) null(b)"));
    EXPECT_EQ(grouped({FileKind}, SortKind), text(u"jpg(a) null(b)"));
    EXPECT_EQ(grouped({FileSizeBucket, PixelCountBucket}), text(u"0(0(b)) 1(3(a))"));
    EXPECT_EQ(grouped({Resolution}), text(u"72(a b)"));
    EXPECT_EQ(grouped({ColorModel}), text(u"RGB(a) null(b)"));
    EXPECT_EQ(grouped({Flag, StarRating}), text(u"1(4(a)) 0(0(b))"));
    EXPECT_EQ(grouped({Tags}), text(u"3(a) null(b)"));
    EXPECT_EQ(grouped({28}), text(u"null(a b)"));
    EXPECT_EQ(grouped({77}), text(u"null(a b)"));
}

TEST_F(GroupingStepTest, columnsOfTheWrongTypeDoNoHarm) {
    const PBValue odd[] = {text(u"many"), QByteArray("\x00\xff", 2), -7, 1e300, PBNull{}};
    int number = 0;
    for (const PBValue& value : odd) {
        PBDictionary columns;
        for (const auto* name :
             {u"FileSize", u"ModificationDate", u"UTIType", u"ImageWidth", u"ImageHeight",
              u"ImageDPI", u"ColorModel", u"RotateAngle", u"Tag", u"FileStars", u"FileFlag"})
            columns[text(name)] = value;
        addRow(text(u"%1").arg(++number), columns);
    }
    std::vector<int> all;
    for (int type = 0; type < groupTypeCount; ++type)
        all.push_back(type);
    for (int sortType = SortNone; sortType <= SortPixelArea; ++sortType) {
        for (const int type : all) {
            GroupingStep step = stepFor({type, Tags}, sortType);
            insertRows(step);
            std::size_t count = 0;
            for (const auto& node : *tree) {
                count += node->imageFileCount();
                EXPECT_FALSE(node->displayName({}).isNull());
            }
            EXPECT_EQ(count, 5U) << "group type " << type << ", sort type " << sortType;
        }
    }
}

TEST_F(GroupingStepTest, searchAndFilterLeaveRowsOut) {
    addRow(text(u"Sea.jpg"), {{text(u"FileStars"), 2}, {text(u"FileFlag"), 1}});
    addRow(text(u"sea 2.jpg"), {{text(u"FileStars"), 5}});
    addRow(text(u"hill.jpg"), {{text(u"FileFlag"), 1}});
    searchString = text(u"SEA");
    EXPECT_EQ(grouped({}), text(u"absent(sea 2.jpg Sea.jpg)"));
    filter = FilterFlagged;
    EXPECT_EQ(grouped({}), text(u"absent(Sea.jpg)"));
    searchString.clear();
    filter = FilterRated;
    EXPECT_EQ(grouped({}), text(u"absent(sea 2.jpg Sea.jpg)"));
    filter = FilterRated | FilterFlagged;
    EXPECT_EQ(grouped({}), text(u"absent(Sea.jpg)"));
    searchString = text(u"hill");
    EXPECT_EQ(grouped({}), QString());
}

TEST_F(GroupingStepTest, placesKnownUnknownAndNone) {
    const auto addAt = [&](const QString& name, double latitude) {
        catalogue.insertGPSWithImageFileId(
            addRow(name), {{text(u"Latitude"), latitude}, {text(u"Longitude"), 20}});
    };
    addRow(text(u"no row"));
    addAt(text(u"unknown"), 10);
    addAt(text(u"ice"), -70);
    addAt(text(u"north"), 70);
    addAt(text(u"broken"), 91);
    EXPECT_EQ(grouped({Place}), text(u"City=Alta(north) null(ice unknown) absent(broken no row)"));
    EXPECT_EQ(places.wanted, (std::vector{PBLocation{10, 20}}));
    // Grouped by something else, every position is asked for.
    places.wanted.clear();
    EXPECT_EQ(grouped({Folder}), text(u"/Photos(broken ice no row north unknown)"));
    EXPECT_EQ(places.wanted.size(), 3U);
}

TEST_F(GroupingStepTest, editedItemsComeBackAtTheirNewPlace) {
    addRow(text(u"a"), {{text(u"ImageDPI"), 300}});
    addRow(text(u"b"), {{text(u"ImageDPI"), 300}});
    filter = 0;
    GroupingStep step = stepFor({StarRating, Resolution});
    EXPECT_TRUE(step.needsRow());
    EXPECT_FALSE(stepFor({StarRating, CaptureYear}).needsRow());
    EXPECT_TRUE(stepFor({StarRating}, SortKind).needsRow());
    GroupingStep again = stepFor({StarRating, Resolution});
    insertRows(again);
    EXPECT_EQ(describe(*tree), text(u"0(300(a b))"));
    const auto item = tree->front()->children()[0]->imageFiles()[0];
    PBImageFileList list{item};
    tree->front()->removeImageFiles(list);
    item->setStar(5);
    ImageFileRow row;
    row.imageDPI = 300;
    EXPECT_TRUE(again.reinsert(item, row, text(u"/Photos")));
    EXPECT_EQ(describe(*tree), text(u"5(300(a)) 0(300(b))"));

    filter = FilterFlagged;
    EXPECT_FALSE(stepFor({StarRating}).reinsert(item, {}, PBNull{}));
    EXPECT_TRUE(tree->empty());
}

} // namespace
