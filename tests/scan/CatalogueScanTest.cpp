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

TEST_F(ScanTest, FilterSearchSortAndRecursionDecideWhatIsShown) {
    makePicture(QStringLiteral("a2.jpg"), {40, 40});
    makePicture(QStringLiteral("a10.png"), {10, 10});
    makePicture(QStringLiteral("B.jpg"), {20, 20});
    makePicture(QStringLiteral("sub/c.jpg"), {5, 5});
    scan();
    for (const char* sql :
         {"update ImageFile set FileFlag = 1 where FileName in ('a2.jpg','c.jpg')",
          "update ImageFile set FileStars = 3 where FileName in ('a2.jpg','B.jpg')"})
        ASSERT_TRUE(files.executeUpdate(QString::fromLatin1(sql)));

    struct Case {
        quint64 filter;
        const char* search;
        int sortType;
        bool descending;
        bool recursive;
        QStringList shown;
        int finished; ///< by the catalogue's pass when there is a filter
    };
    for (const Case& one : std::vector<Case>{
             {0, "", group::SortFileName, false, true,
              names({"a2.jpg", "a10.png", "B.jpg", "c.jpg"}), 1},
             {0, "", group::SortFileName, true, false, names({"B.jpg", "a10.png", "a2.jpg"}), 1},
             {0, "", group::SortPixelArea, false, true,
              names({"c.jpg", "a10.png", "B.jpg", "a2.jpg"}), 1},
             {0, "A", group::SortFileName, false, true, names({"a2.jpg", "a10.png"}), 1},
             {1, "", group::SortFileName, false, true, names({"a2.jpg", "c.jpg"}), 1},
             {2, "", group::SortFileName, false, true, names({"a2.jpg", "B.jpg"}), 1},
             {3, "", group::SortFileName, false, true, names({"a2.jpg"}), 1},
             {3, "B", group::SortFileName, false, true, {}, 1},
         }) {
        browsing.filter = one.filter;
        browsing.searchString = QString::fromLatin1(one.search);
        browsing.sortType = one.sortType;
        browsing.descendingSort = one.descending;
        browsing.recurseSubFolder = one.recursive;
        finished = 0;
        scan();
        EXPECT_EQ(shown(), one.shown) << one.filter << one.search << one.sortType;
        EXPECT_EQ(finished, one.finished) << one.filter << one.search;
    }
    EXPECT_EQ(figures.rowsInserted, 4U);
}

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
