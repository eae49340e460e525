#include "scan/ScanSupport.h"

#include "catalogue/PBCatalogue.h"
#include "group/ItemOrder.h"

#include <QDir>
#include <QFile>

namespace {

QStringList names(std::initializer_list<const char*> list) {
    QStringList result;
    for (const char* name : list)
        result.append(QString::fromLatin1(name));
    return result;
}

} // namespace

TEST_F(ScanTest, UnderAFilterTheDiskIsNotAskedForNewFilesAndUnmatchedRowsStay) {
    makePicture(QStringLiteral("a.jpg"));
    makePicture(QStringLiteral("b.jpg"));
    scan();
    ASSERT_TRUE(files.executeUpdate(
        QStringLiteral("update ImageFile set FileFlag = 1 where FileName = 'a.jpg'")));
    makePicture(QStringLiteral("new.jpg"));
    QFile::remove(path(QStringLiteral("b.jpg")));
    browsing.filter = group::FilterFlagged;
    scan();
    EXPECT_EQ(shown(), names({"a.jpg"}));
    EXPECT_EQ(
        rows(QStringLiteral("select FileName from ImageFile order by 1")),
        names({"a.jpg", "b.jpg"}));
    // A search, on the other hand, looks at every row and every file.
    browsing.filter = 0;
    browsing.searchString = QStringLiteral("zzz");
    scan();
    EXPECT_EQ(shown(), QStringList());
    EXPECT_EQ(
        rows(QStringLiteral("select FileName from ImageFile order by 1")),
        names({"a.jpg", "new.jpg"}));
}

TEST_F(ScanTest, TheFirstPublicationComesWithTheHundredAndFirstRowOrAfterASecond) {
    for (int i = 0; i < 101; ++i)
        makePicture(QStringLiteral("%1.jpg").arg(i), {2, 2});
    scan();
    scan();
    EXPECT_EQ(publications(), 1U);
    EXPECT_EQ(shown().size(), 101);

    QFile::remove(path(QStringLiteral("7.jpg")));
    scan();
    EXPECT_EQ(publications(), 1U) << "at the end of the catalogue's pass";
    EXPECT_EQ(shown().size(), 100);
    EXPECT_GE(figures.firstPublication, 0.0);
}

TEST_F(ScanTest, AVanishedFolderTakesItsRowsAndThumbnailsAlong) {
    for (int i = 0; i < 5; ++i)
        makePicture(QStringLiteral("gone/%1.jpg").arg(i), {2, 2});
    makePicture(QStringLiteral("stays.jpg"));
    scan();
    QDir(path(QStringLiteral("gone"))).removeRecursively();
    scan();
    EXPECT_EQ(rows(QStringLiteral("select count(*) from ImageFile")), names({"1"}));
    EXPECT_EQ(rows(QStringLiteral("select count(*) from Folder")), names({"1"}));
    EXPECT_EQ(thumbnailRows(QStringLiteral("select count(*) from Thumbnail")), names({"1"}));
    expectConsistentCatalogue();

    // The whole root: the catalogue is emptied, and the scan ends.
    QDir(path({})).removeRecursively();
    finished = 0;
    scan();
    EXPECT_EQ(rows(QStringLiteral("select count(*) from ImageFile")), names({"0"}));
    EXPECT_EQ(finished, 1);
}
