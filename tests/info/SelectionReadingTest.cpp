#include "info/reading/SelectionReading.h"

#include "group/CatalogueFixture.h"

namespace {

using support::entries;

struct SelectionReadingTest : support::CatalogueFixture {
    /// A photograph with a place, and with these columns of its TIFF row.
    std::shared_ptr<PBImageFileItem> add(const char* tiff = "Make=Canon") {
        const auto item = addImage(entries("Tag=1,2 FileStars=3"));
        const qint64 id = item->fileId();
        EXPECT_TRUE(catalogue.insertGPSWithImageFileId(id, entries("Latitude=5")));
        EXPECT_TRUE(catalogue.insertTiffWithImageFileId(id, entries(tiff)));
        return item;
    }
    PBImageFileList many(std::size_t count) {
        PBImageFileList items(count);
        for (auto& item : items)
            item = add();
        return items;
    }

    /// Each look at the clock takes that many milliseconds.
    SelectionReading::Clock clock(double milliseconds) {
        return [this, milliseconds] { return now += milliseconds / 1000; };
    }
    /// In how many slices.
    static int readAll(auto& reading) {
        int slices = 1;
        while (!reading.readSome())
            ++slices;
        return slices;
    }
    double now = 0;
    support::KnownFolders folders{{{1, u"/photos"_s}}};
};

TEST_F(SelectionReadingTest, aSliceEndsBeforeABatchThatWouldPassItsEnd) {
    // The milliseconds of a batch.
    const std::pair<double, int> cases[] = {{0.5, 1}, {3, 3}, {7, 5}, {50, 5}};
    const PBImageFileList items = many(5 * FileRows::most - 3);
    for (const auto& [milliseconds, expected] : cases) {
        MoreReading reading(items, database, clock(milliseconds));
        EXPECT_EQ(readAll(reading), expected) << milliseconds;
        EXPECT_EQ(reading.merged().moreInfoDict().size(), 2U);
    }
}

TEST_F(SelectionReadingTest, theLastOfManyCountsAsMuchAsTheFirst) {
    for (const char* tag : {"a", "b"})
        support::addTag(database, QString::fromLatin1(tag));
    PBImageFileList items = many(2 * FileRows::most);
    items.push_back(add("Make=Nikon"));
    MoreReading more(items, database);
    readAll(more);
    const auto dictionaries = more.merged().moreInfoDict();
    EXPECT_TRUE(dictionaries.at(MetadataCategory::TIFF).at(u"Make"_s).isNull());
    EXPECT_EQ(dictionaries.at(MetadataCategory::GPS).at(u"Latitude"_s), PBValue(5.0));
    EXPECT_FALSE(dictionaries.contains(MetadataCategory::Exif));

    database.executeUpdate(
        u"update ImageFile set Tag = '2', FileStars = 4 where Id = ?"_s, items.back()->fileId());
    GeneralReading general(items, database, folders);
    readAll(general);
    const GeneralMerge& merged = general.merged();
    EXPECT_EQ(merged.count(), items.size());
    EXPECT_TRUE(merged.value(GeneralRow::FileStars).isNull());
    EXPECT_EQ(merged.value(GeneralRow::FileLocation), PBValue(u"/photos"_s));
    EXPECT_EQ(folders.asked, 1);
    EXPECT_EQ(general.tags(), (MergedTags{{u"b"_s}, {u"a"_s}}));
}

TEST_F(SelectionReadingTest, whatTheCatalogueDoesNotSayIsNotMadeUp) {
    const auto bare = addImage();
    GeneralReading reading({bare}, database, folders);
    EXPECT_TRUE(reading.readSome());
    const GeneralMerge& merged = reading.merged();
    EXPECT_EQ(merged.value(GeneralRow::ImageDPI), PBValue(72));
    for (const auto row : {GeneralRow::CreationDate, GeneralRow::UTIType, GeneralRow::ImageSize})
        EXPECT_TRUE(merged.value(row).isAbsent()) << static_cast<int>(row);
    // One has no resolution, one has the usual one: not mixed.
    const auto usual = addImage({{u"ImageDPI"_s, 72}});
    GeneralReading both({bare, usual}, database, folders);
    EXPECT_TRUE(both.readSome());
    EXPECT_EQ(both.merged().value(GeneralRow::ImageDPI), PBValue(72));
    // As it is shown.
    usual->setImageSize({40, 30});
    usual->setRotateAngle(90);
    GeneralReading turned({usual}, database, folders);
    EXPECT_TRUE(turned.readSome());
    EXPECT_EQ(turned.merged().value(GeneralRow::ImageSize), PBValue(u"30 x 40"_s));
    // Not to be read is not the same as having nothing.
    EXPECT_TRUE(database.executeUpdate(u"drop table IPTC"_s));
    MoreReading broken({bare}, database);
    EXPECT_TRUE(broken.readSome() && broken.hasFailed());
    EXPECT_TRUE(database.executeUpdate(u"drop table Tags"_s));
    GeneralReading withoutTags({add()}, database, folders);
    EXPECT_TRUE(withoutTags.readSome() && withoutTags.hasFailed());
}

} // namespace
