#include "group/GroupingStep.h"

#include "core/LocalizedCompare.h"
#include "group/CatalogueFixture.h"
#include "group/ItemOrder.h"

#include <QDateTime>

using namespace group;
using support::describe;
using support::text;

namespace {

/// An image with the values that decide its group, by group type. Its id tells its arrival.
struct Photo {
    std::shared_ptr<PBImageFileItem> item;
    std::map<int, PBValue> values;
};

int sign(auto number, auto other) {
    return number < other ? -1 : number > other ? 1 : 0;
}

/// The order of groups as the user expects it, told without order keys.
int compareGroups(int type, const Photo& photo, const Photo& other) {
    const PBValue& one = photo.values.at(type);
    const PBValue& two = other.values.at(type);
    const auto month = [](const PBValue& taken) {
        const QDate date =
            QDateTime::fromSecsSinceEpoch(static_cast<qint64>(taken.toDouble())).date();
        return date.year() * 100 + date.month();
    };
    switch (type) {
    case CaptureYear:
        return sign(month(two) / 100, month(one) / 100);
    case CaptureMonth:
        return sign(month(two), month(one));
    case Folder:
        return PBUtilities::localizedStandardCompare(one.toText(), two.toText());
    case StarRating:
        return sign(two.toInteger(), one.toInteger());
    case CameraModel:
        if (one.isNull() || two.isNull()) return sign(one.isNull(), two.isNull());
        return sign(one.toText().toLower(), two.toText().toLower());
    default:
        return sign(one.toDouble(), two.toDouble());
    }
}

std::vector<Photo> randomPhotos(std::mt19937& random, int count) {
    const PBValue models[] = {u"X100V"_s, u"x100v"_s, u"EOS R5"_s, u"Z 9"_s, PBNull{}};
    std::vector<Photo> photos;
    for (int number = 0; number < count; ++number) {
        const auto seconds = 1.0e9 + static_cast<double>(random() % 250'000'000);
        const auto item = PBImageFileItem::imageFileItemWithId(
            number, 1, u"IMG_%1.jpg"_s.arg(random() % 2000), random() % 300, seconds);
        item->setImageSize({double(random() % 30), double(random() % 30)});
        item->setSortData(random() % 3 ? PBValue(PBDate{seconds / 2}) : PBValue(PBNull{}));
        const PBDate taken{1.0e9 + static_cast<double>(random() % 100'000'000)};
        photos.push_back(
            {item,
             {{CaptureYear, taken},
              {CaptureMonth, taken},
              {Folder, u"/Photos/Trip %1"_s.arg(random() % 15)},
              {StarRating, static_cast<int>(random() % 6)},
              {CameraModel, models[random() % 5]},
              {21, static_cast<double>(random() % 8) / 2}}});
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
            data.push_back(photo.values.at(type));
        pushImageFileItemToWorkGroupItemArray(
            {photo.item, tree, chain, data, sortType, descending});
    }
    return tree;
}

/// Sorted photographs in groups by the links of the chain, described like a tree.
QString describeGroups(std::span<const Photo> photos, std::span<const int> chain) {
    QStringList parts;
    while (!photos.empty()) {
        if (chain.empty()) {
            parts.append(photos.front().item->fileName());
            photos = photos.subspan(1);
            continue;
        }
        const auto end = std::ranges::find_if(photos, [&](const Photo& photo) {
            return compareGroups(chain.front(), photos.front(), photo) != 0;
        });
        const auto group = photos.first(static_cast<std::size_t>(end - photos.begin()));
        // A group shows the value that came first.
        const auto first = std::ranges::min_element(
            group, {}, [](const Photo& photo) { return photo.item->fileId(); });
        const PBValue& value = first->values.at(chain.front());
        parts.append(
            (value.isNull() ? u"null"_s : value.toText()) + u'(' +
            describeGroups(group, chain.subspan(1)) + u')');
        photos = photos.subspan(group.size());
    }
    return parts.join(u' ');
}

/// The tree that a stable sort gives.
QString
modelOf(std::vector<Photo> photos, const std::vector<int>& chain, int sortType, bool descending) {
    const auto isBefore = [&](const Photo& photo, const Photo& other) {
        for (const int type : chain)
            if (const int order = compareGroups(type, photo, other)) return order < 0;
        if (sortType == SortNone) return false;
        const auto order = photo.item->sortCompare(*other.item, sortType);
        return descending ? order > 0 : order < 0;
    };
    std::ranges::stable_sort(photos, isBefore);
    const QString groups = describeGroups(photos, chain);
    return chain.empty() ? u"absent(%1)"_s.arg(groups) : groups;
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

/// Addresses of two places; notes what is to be looked up.
struct TwoPlaces final : PlaceAddresses {
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
    const PBValue _north = PBDictionary{{u"City"_s, u"Alta"_s}};
};

struct GroupingStepTest : support::CatalogueFixture {
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
            step.insert(row, u"/Photos"_s);
    }
    qint64 addRow(const QString& name, PBDictionary columns = {}) {
        columns[u"FileName"_s] = name;
        columns[u"FolderId"_s] = 1;
        columns.try_emplace(u"ModificationDate"_s, modified.secondsSince1970);
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
        u"a"_s, {{u"UTIType"_s, u"public.jpeg"_s},
                 {u"FileSize"_s, 10241},
                 {u"ImageWidth"_s, 400},
                 {u"ImageHeight"_s, 300},
                 {u"ColorModel"_s, u"RGB"_s},
                 {u"FileFlag"_s, 1},
                 {u"FileStars"_s, 4},
                 {u"Tag"_s, u"3"_s}});
    addRow(u"b"_s);
    const QString year = u"2021-06-02 12:00:00 +0000(a b)"_s;
    const std::pair<std::vector<int>, QString> cases[] = {
        {{}, u"absent(a b)"_s},
        {{ModificationYear}, year},
        {{CaptureMonth}, year},
        {{Folder}, u"/Photos(a b)"_s},
        {{FileKind}, u"jpg(a) null(b)"_s},
        {{FileSizeBucket, PixelCountBucket}, u"0(0(b)) 1(3(a))"_s},
        {{Resolution}, u"72(a b)"_s},
        {{ColorModel}, u"RGB(a) null(b)"_s},
        {{Flag, StarRating}, u"1(4(a)) 0(0(b))"_s},
        {{Tags}, u"3(a) null(b)"_s},
        {{28}, u"null(a b)"_s},
        {{77}, u"null(a b)"_s}};
    for (const auto& [chain, expected] : cases)
        EXPECT_EQ(grouped(chain), expected);
    EXPECT_EQ(grouped({FileKind}, SortKind), u"jpg(a) null(b)"_s);
}

TEST_F(GroupingStepTest, columnsOfTheWrongTypeDoNoHarm) {
    const PBValue odd[] = {u"many"_s, QByteArray("\x00\xff", 2), -7, 1e300, PBNull{}};
    int number = 0;
    for (const PBValue& value : odd) {
        PBDictionary columns;
        for (const auto* name :
             {u"FileSize", u"ModificationDate", u"UTIType", u"ImageWidth", u"ImageHeight",
              u"ImageDPI", u"ColorModel", u"RotateAngle", u"Tag", u"FileStars", u"FileFlag"})
            columns[text(name)] = value;
        addRow(u"%1"_s.arg(++number), columns);
    }
    for (int sortType = SortNone; sortType <= SortPixelArea; ++sortType) {
        for (int type = 0; type < groupTypeCount; ++type) {
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
    addRow(u"Sea.jpg"_s, {{u"FileStars"_s, 2}, {u"FileFlag"_s, 1}});
    addRow(u"sea 2.jpg"_s, {{u"FileStars"_s, 5}});
    addRow(u"hill.jpg"_s, {{u"FileFlag"_s, 1}});
    const std::tuple<QString, quint64, QString> cases[] = {
        {u"SEA"_s, 0, u"absent(sea 2.jpg Sea.jpg)"_s},
        {u"SEA"_s, FilterFlagged, u"absent(Sea.jpg)"_s},
        {{}, FilterRated, u"absent(sea 2.jpg Sea.jpg)"_s},
        {{}, FilterRated | FilterFlagged, u"absent(Sea.jpg)"_s},
        {u"hill"_s, FilterRated | FilterFlagged, {}}};
    for (const auto& [search, bits, expected] : cases) {
        searchString = search;
        filter = bits;
        EXPECT_EQ(grouped({}), expected) << qPrintable(search) << bits;
    }
}

TEST_F(GroupingStepTest, placesKnownUnknownAndNone) {
    const auto addAt = [&](const QString& name, double latitude) {
        catalogue.insertGPSWithImageFileId(
            addRow(name), {{u"Latitude"_s, latitude}, {u"Longitude"_s, 20}});
    };
    addRow(u"no row"_s);
    addAt(u"unknown"_s, 10);
    addAt(u"ice"_s, -70);
    addAt(u"north"_s, 70);
    addAt(u"broken"_s, 91);
    EXPECT_EQ(grouped({Place}), u"City=Alta(north) null(ice unknown) absent(broken no row)"_s);
    EXPECT_EQ(places.wanted, (std::vector{PBLocation{10, 20}}));
    // Grouped by something else, every position is asked for.
    places.wanted.clear();
    EXPECT_EQ(grouped({Folder}), u"/Photos(broken ice no row north unknown)"_s);
    EXPECT_EQ(places.wanted.size(), 3U);
}

TEST_F(GroupingStepTest, editedItemsComeBackAtTheirNewPlace) {
    addRow(u"a"_s, {{u"ImageDPI"_s, 300}});
    addRow(u"b"_s, {{u"ImageDPI"_s, 300}});
    filter = 0;
    GroupingStep step = stepFor({StarRating, Resolution});
    EXPECT_TRUE(step.needsRow());
    EXPECT_FALSE(stepFor({StarRating, CaptureYear}).needsRow());
    EXPECT_TRUE(stepFor({StarRating}, SortKind).needsRow());
    GroupingStep again = stepFor({StarRating, Resolution});
    insertRows(again);
    EXPECT_EQ(describe(*tree), u"0(300(a b))"_s);
    const auto item = tree->front()->children()[0]->imageFiles()[0];
    PBImageFileList list{item};
    tree->front()->removeImageFiles(list);
    item->setStar(5);
    ImageFileRow row;
    row.imageDPI = 300;
    EXPECT_TRUE(again.reinsert(item, row, u"/Photos"_s));
    EXPECT_EQ(describe(*tree), u"5(300(a)) 0(300(b))"_s);

    filter = FilterFlagged;
    EXPECT_FALSE(stepFor({StarRating}).reinsert(item, {}, PBNull{}));
    EXPECT_TRUE(tree->empty());
}

} // namespace
