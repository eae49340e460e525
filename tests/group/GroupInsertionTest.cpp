#include "group/GroupingStep.h"

#include "core/Texts.h"
#include "group/CatalogueFixture.h"

using namespace group;

using support::describe;
using support::entries;

namespace {

TEST(GroupInsertionTest, groupsAndImagesStandInOrderAndEqualOnesAsTheyCame) {
    for (const bool descending : {false, true}) {
        PBGroupItemArray tree;
        // Stars, model, name and size.
        for (const QString& told :
             support::words("1,Z9,a,5 3,,b,5 3,X100V,c,7 2,Z9,d,5 3,x100v,e,5 3,X100V,f,7 "
                            "3,EOS,g,5 3,X100V,h,6")) {
            const QStringList image = told.split(u',');
            const PBValue model = image[1].isEmpty() ? PBValue(PBNull{}) : PBValue(image[1]);
            const PBArray data{image[0].toInt(), model};
            pushImageFileItemToWorkGroupItemArray(
                {support::makeItem(image[2], 1, image[3].toULongLong()), tree,
                 std::array<int, 2>{StarRating, CameraModel}, data, SortFileSize, descending});
        }
        const QString bySize = descending ? u"c f h e"_s : u"e h c f"_s;
        EXPECT_EQ(describe(tree), u"3(EOS(g) X100V(%1) null(b)) 2(Z9(d)) 1(Z9(a))"_s.arg(bySize));
    }
}

/// Knows the addresses of two places; notes what is to be looked up.
struct GroupingStepTest : support::CatalogueFixture, PlaceAddresses {
    PBValue addressDictionaryWithLocation(const PBLocation& location) override {
        if (location.latitude > 60) return PBDictionary{{u"City"_s, u"Alta"_s}};
        return location.latitude < -60 ? PBValue(PBNull{}) : PBValue();
    }
    void addLocationToReverseGeocoding(const PBLocation& location) override {
        wanted.push_back(location);
    }
    GroupingStep stepFor(std::vector<int> chain, int sortType = SortFileName) {
        tree = std::make_shared<PBGroupItemArray>();
        return GroupingStep({tree, std::move(chain), sortType, false, {}, 0}, database, this);
    }
    qint64 addRow(const QString& name, PBDictionary columns = {}) {
        columns[u"FileName"_s] = name;
        columns[u"FolderId"_s] = 1;
        columns.try_emplace(u"ModificationDate"_s, modified.secondsSince1970);
        return catalogue.insertImageFileWithDictionary(columns);
    }
    /// Puts the images of the catalogue through the step, as a scan does.
    QString grouped(std::vector<int> chain, int sortType = SortFileName) {
        GroupingStep step = stepFor(std::move(chain), sortType);
        FMResultSet rows =
            database.executeQuery(ImageFileRow::queryForFolder(sortType, false, {}), 1);
        while (rows.next())
            step.insert(ImageFileRow::fromResultSet(rows), u"/Photos"_s);
        return describe(*tree);
    }
    std::vector<PBLocation> wanted;
    std::shared_ptr<PBGroupItemArray> tree;
};

TEST_F(GroupingStepTest, slotsOfTheRow) {
    addRow(
        u"a"_s, entries("UTIType=public.jpeg FileSize=10241 ImageWidth=400 ImageHeight=300 "
                        "RotateAngle=-90 ColorModel=RGB FileFlag=1 FileStars=4 Tag=3"));
    addRow(u"b"_s, {{u"Tag"_s, u", "_s}}); // as where the last one was taken away
    const std::pair<std::vector<int>, QString> cases[] = {
        {{}, u"absent(a b)"_s},
        {{ModificationYear, Folder, Resolution}, u"2021-06-02 12:00:00 +0000(/Photos(72(a b)))"_s},
        {{CaptureMonth}, u"2021-06-02 12:00:00 +0000(a b)"_s},
        {{FileKind, ColorModel, Tags}, u"jpg(RGB(3(a))) null(null(null(b)))"_s},
        {{FileSizeBucket, PixelCountBucket}, u"0(0(b)) 1(3(a))"_s},
        {{Flag, StarRating}, u"1(4(a)) 0(0(b))"_s},
        {{28, 77}, u"null(null(a b))"_s}};
    for (const auto& [chain, expected] : cases)
        EXPECT_EQ(grouped(chain), expected);
    EXPECT_EQ(grouped({FileKind}, SortKind), u"jpg(a) null(b)"_s);
    EXPECT_TRUE(stepFor({}, SortKind).needsRow() && !stepFor({StarRating}).needsRow());
    grouped({StarRating});
    const PBImageFileItem& item = *tree->front()->imageFiles()[0];
    const std::tuple read(
        item.imageSize(), item.rotateAngle(), item.star(), item.flagged(), item.fileSize(),
        item.folderId(), item.modifiedDate());
    EXPECT_EQ(read, std::tuple(QSizeF(400, 300), -90, 4, true, 10241, 1, 1622635200));
}

TEST_F(GroupingStepTest, columnsOfTheWrongTypeDoNoHarm) {
    const PBValue odd[] = {u"many"_s, QByteArray("\x00\xff", 2), -7, 1e300, PBNull{}};
    int number = 0;
    for (const PBValue& value : odd) {
        PBDictionary columns;
        for (const QString& name :
             support::words("FileSize ModificationDate UTIType ImageWidth ImageHeight ImageDPI "
                            "ColorModel RotateAngle Tag FileStars FileFlag"))
            columns[name] = value;
        addRow(u"%1"_s.arg(++number), columns);
    }
    for (int type = 0; type < groupTypeCount; ++type) {
        grouped({type, Tags}, type % (SortPixelArea + 1));
        std::size_t count = 0;
        for (const auto& node : *tree) {
            count += node->imageFileCount();
            EXPECT_FALSE(node->displayName({}).isNull());
        }
        EXPECT_EQ(count, 5U) << "group type " << type;
    }
}

TEST_F(GroupingStepTest, placesKnownUnknownAndNone) {
    const auto addAt = [&](const QString& name, double latitude) {
        const qint64 id = addRow(name);
        catalogue.insertGPSWithImageFileId(id, {{u"Latitude"_s, latitude}, {u"Longitude"_s, 20}});
    };
    addRow(u"no row"_s);
    addAt(u"unknown"_s, 10);
    addAt(u"ice"_s, -70);
    addAt(u"north"_s, 70);
    addAt(u"broken"_s, 91);
    EXPECT_EQ(grouped({Place}), u"City=Alta(north) null(ice unknown) absent(broken no row)"_s);
    EXPECT_EQ(wanted, (std::vector{PBLocation{10, 20}}));
    // Grouped by something else, every position is asked for.
    wanted.clear();
    EXPECT_EQ(grouped({Folder}), u"/Photos(broken ice no row north unknown)"_s);
    EXPECT_EQ(wanted.size(), 3U);
}

struct GroupDataLoaderTest : support::CatalogueFixture {
    PBArray load(const PBImageFileItem& item, const std::vector<int>& chain) {
        PBArray data(chain.size(), PBNull{});
        GroupDataLoader loader(chain, SortFileName);
        EXPECT_TRUE(loader.loadGroupAndSortData(item, data, database).isAbsent());
        return data;
    }
    std::shared_ptr<PBImageFileItem> imageWithExif(const PBDictionary& exif) {
        auto item = addImage();
        EXPECT_TRUE(catalogue.insertExifWithImageFileId(item->fileId(), exif));
        return item;
    }
    void expectDates(const PBImageFileItem& item, const PBValue& group, const PBValue& sort) {
        EXPECT_EQ(load(item, {CaptureYear, CaptureMonth}), (PBArray{group, group}));
        GroupDataLoader sorting({}, SortDateTaken);
        EXPECT_EQ(sorting.loadGroupAndSortData(item, {}, database), sort);
    }
};

TEST_F(GroupDataLoaderTest, groupsByOriginalSortsByDigitizedDateAndFallsBackToModification) {
    const auto dated = [&](const PBValue& original, const PBValue& digitized) {
        return imageWithExif(
            {{u"DateTimeOriginal"_s, original}, {u"DateTimeDigitized"_s, digitized}});
    };
    const QString original = u"2019:07:14 10:00:00"_s;
    const QString digitized = u"2020:01:02 03:04:05"_s;
    expectDates(
        *dated(original, digitized), *PBUtilities::exifDate(original),
        *PBUtilities::exifDate(digitized));
    expectDates(*addImage(), modified, modified);
    expectDates(*imageWithExif({}), modified, modified);
    for (const auto& broken :
         {PBValue(u"0000:00:00 00:00:00"_s), PBValue(u"yesterday"_s), PBValue(QString()),
          PBValue(QByteArray("\xff\x00", 2)), PBValue(20190714)})
        expectDates(*dated(broken, broken), modified, {});
}

TEST_F(GroupDataLoaderTest, textsAreCleanedAndFocusDistanceHasTheLastWordOverSubjectDistance) {
    const auto item = imageWithExif({{u"SubjectDistance"_s, 2.5}});
    const qint64 id = item->fileId();
    catalogue.insertTiffWithImageFileId(id, {{u"Make"_s, u"n/a"_s}, {u"Model"_s, u"\n"_s}});
    catalogue.insertIPTCWithImageFileId(
        id, {{u"Headline"_s, u"two\nlines"_s}, {u"Credit"_s, u"N/A"_s}});
    catalogue.insertExifAuxWithImageFileId(id, {{u"FocusDistance"_s, PBNull{}}});
    EXPECT_EQ(
        load(*item, {15, 16, 36, 63, 35, FocusDistance}),
        (PBArray{PBNull{}, PBNull{}, u"two lines"_s, u"N/A"_s, PBNull{}, 2.5}));
    ASSERT_TRUE(database.executeUpdate(u"update ExifAux set FocusDistance = 3.5"_s));
    EXPECT_EQ(load(*item, {CaptureYear, FocusDistance})[1], PBValue(3.5));
}

TEST_F(GroupDataLoaderTest, positionsNeedTwoNumbersOnEarth) {
    const PBValue none;
    // Columns; the position if both numbers have to be there, and if not.
    const std::tuple<PBArray, PBValue, PBValue> cases[] = {
        {{u"s"_s, 90, u"W"_s, 180}, PBLocation{-90, -180}, PBLocation{-90, -180}},
        {{u"S"_s, 90.001, u"W"_s, 180}, none, none},
        {{u"S"_s, 90, u"W"_s, 180.001}, none, none},
        {{none, 33.5, none, PBNull{}}, none, PBLocation{33.5, 0}},
        {{none, u"north"_s, none, 1}, none, PBLocation{0, 1}},
        {{none, std::nan(""), none, 1}, none, none},
        {{none, 1, none}, none, none}};
    for (const auto& [columns, strict, lenient] : cases) {
        EXPECT_EQ(locationFromColumns(columns, false), strict) << columns[1].toText().toStdString();
        EXPECT_EQ(locationFromColumns(columns, true), lenient) << columns[1].toText().toStdString();
    }
    const auto item = addImage();
    catalogue.insertGPSWithImageFileId(
        item->fileId(), entries("LatitudeRef=S Latitude=33.5 LongitudeRef=e Longitude=151"));
    EXPECT_EQ(load(*item, {Folder, Place})[1], PBValue(PBLocation{-33.5, 151}));
    ASSERT_TRUE(database.executeUpdate(u"update GPS set Longitude = null"_s));
    EXPECT_TRUE(load(*item, {Folder, Place})[1].isNull());
    EXPECT_EQ(item->locationWithDatabase(database), PBValue(PBLocation{-33.5, 0}));
}

TEST_F(GroupDataLoaderTest, readingAheadGivesTheSameAsOneImageAtATime) {
    std::mt19937 random(13);
    std::vector<std::shared_ptr<PBImageFileItem>> items;
    std::vector<qint64> fileIds;
    for (int number = 0; number < 300; ++number) {
        items.push_back(addImage());
        const qint64 id = items.back()->fileId();
        fileIds.push_back(id);
        const QString date = u"20%1:01:02 03:04:05"_s.arg(10 + id % 9);
        if (random() % 3) catalogue.insertExifWithImageFileId(id, {{u"DateTimeOriginal"_s, date}});
        if (random() % 3) catalogue.insertTiffWithImageFileId(id, {{u"Model"_s, u"M%1"_s.arg(id)}});
        if (random() % 3) catalogue.insertGPSWithImageFileId(id, {{u"Latitude"_s, id % 80}});
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
    const PBValue bytes = QByteArray("\x01\xff");
    const auto item = imageWithExif({{u"FNumber"_s, u"wide open"_s}, {u"Flash"_s, bytes}});
    EXPECT_EQ(load(*item, {21, 29, 26}), (PBArray{u"wide open"_s, bytes, PBNull{}}));
    catalogue.insertTiffWithImageFileId(item->fileId(), {{u"Model"_s, u"X100V"_s}});
    ASSERT_TRUE(database.executeUpdate(u"drop table Exif"_s));
    EXPECT_EQ(
        load(*item, {21, CaptureYear, CameraModel}), (PBArray{PBNull{}, modified, u"X100V"_s}));
}

} // namespace
