#include "scan/ScanSupport.h"

#include "catalogue/PBCatalogue.h"
#include "group/ItemOrder.h"

TEST_F(ScanTest, UnderAFilterTheDiskIsNotAskedForNewFilesAndUnmatchedRowsStay) {
    makePicture(u"a.jpg"_s);
    makePicture(u"b.jpg"_s);
    scan();
    ASSERT_TRUE(
        files.executeUpdate(u"update ImageFile set FileFlag = 1 where FileName = 'a.jpg'"_s));
    makePicture(u"new.jpg"_s);
    QFile::remove(path(u"b.jpg"_s));
    browsing.filter = group::FilterFlagged;
    scan();
    EXPECT_EQ(shown(), names({"a.jpg"}));
    EXPECT_EQ(rows(u"select FileName from ImageFile order by 1"_s), names({"a.jpg", "b.jpg"}));
    // A search, on the other hand, looks at every row and every file.
    browsing.filter = 0;
    browsing.searchString = u"zzz"_s;
    scan();
    EXPECT_EQ(shown(), QStringList());
    EXPECT_EQ(rows(u"select FileName from ImageFile order by 1"_s), names({"a.jpg", "new.jpg"}));
}

TEST_F(ScanTest, TheFirstPublicationComesWithTheHundredAndFirstRowOrAfterASecond) {
    for (int i = 0; i < 101; ++i)
        makePicture(u"%1.jpg"_s.arg(i), {2, 2});
    scan();
    scan();
    EXPECT_EQ(publications(), 1U);
    EXPECT_EQ(shown().size(), 101);

    QFile::remove(path(u"7.jpg"_s));
    scan();
    EXPECT_EQ(publications(), 1U) << "at the end of the catalogue's pass";
    EXPECT_EQ(shown().size(), 100);
    EXPECT_GE(figures.firstPublication, 0.0);
}

TEST_F(ScanTest, AVanishedFolderTakesItsRowsAndThumbnailsAlong) {
    for (int i = 0; i < 5; ++i)
        makePicture(u"gone/%1.jpg"_s.arg(i), {2, 2});
    makePicture(u"stays.jpg"_s);
    scan();
    QDir(path(u"gone"_s)).removeRecursively();
    scan();
    EXPECT_EQ(rows(u"select count(*) from ImageFile"_s), names({"1"}));
    EXPECT_EQ(rows(u"select count(*) from Folder"_s), names({"1"}));
    EXPECT_EQ(thumbnailRows(u"select count(*) from Thumbnail"_s), names({"1"}));
    expectConsistentCatalogue();

    // The whole root: the catalogue is emptied, and the scan ends.
    QDir(path({})).removeRecursively();
    finished = 0;
    scan();
    EXPECT_EQ(rows(u"select count(*) from ImageFile"_s), names({"0"}));
    EXPECT_EQ(finished, 1);
}
