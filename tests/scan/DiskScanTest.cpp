#include "scan/ScanSupport.h"

#include "catalogue/PBCatalogue.h"
#include "platform/FileManager.h"

#include <QImage>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString imageNames = u"select FileName from ImageFile order by FileName"_s;
const QString imageCount = u"select count(*) from ImageFile"_s;

} // namespace

TEST_F(ScanTest, WhatIsOnDiskComesIntoTheCatalogueAndNothingElse) {
    for (const char* name :
         {"a.jpg", "b.PNG", "sub/c.jpg", "sub/deep/d.jpg", ".hidden.jpg", ".hid/e.jpg",
          "Lib.photoslibrary/f.jpg", "none/g/.h.jpg"})
        makePicture(QString::fromLatin1(name));
    support::writeFile(path(u"none/notes.txt"_s), "no picture");
    support::writeFile(path(u"sub/damaged.jpg"_s), "no picture either");
    const QByteArray pipe = QFile::encodeName(path(u"none/pipe.jpg"_s));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(path({}), path(u"sub/around"_s)));
    scan();

    EXPECT_EQ(rows(imageNames), names({"a.jpg", "b.PNG", "c.jpg", "d.jpg", "damaged.jpg"}));
    EXPECT_EQ(shown(), names({"a.jpg", "b.PNG", "c.jpg", "d.jpg", "damaged.jpg"}));
    EXPECT_EQ(
        rows(u"select ifnull(RelativePath,'-') from Folder order by 1"_s),
        names({"-", "sub", "sub/deep"}));
    EXPECT_EQ(thumbnailRows(u"select count(*) from Thumbnail"_s), names({"4"}));
    EXPECT_EQ(figures.rowsInserted, 5U);
    EXPECT_EQ(finished, 1);

    const auto onDisk = platform::FileManager::resourceValues(path(u"a.jpg"_s));
    FMResultSet row = files.executeQuery(
        u"select FileSize,ModificationDate,CreationDate,ImageWidth,ImageHeight,UTIType,FileStars,"
        "FileFlag from ImageFile where FileName = 'a.jpg'"_s);
    ASSERT_TRUE(row.next());
    EXPECT_EQ(row.longLongIntForColumnIndex(0), onDisk->fileSize);
    EXPECT_EQ(row.doubleForColumnIndex(1), onDisk->modificationDate);
    EXPECT_EQ(row.doubleForColumnIndex(2), onDisk->creationDate);
    EXPECT_EQ(row.intForColumnIndex(3), 8);
    EXPECT_EQ(row.intForColumnIndex(4), 6);
    EXPECT_EQ(row.stringForColumnIndex(5), u"public.jpeg");
    EXPECT_EQ(row.objectForColumnIndex(6), PBValue(0));
    EXPECT_EQ(row.objectForColumnIndex(7), PBValue(0));
}

TEST_F(ScanTest, ASecondVisitTakesExactlyWhatChanged) {
    for (const char* name :
         {"kept.jpg", "touched.jpg", "replaced.jpg", "renamed.jpg", "gone.jpg", "sub/x.jpg",
          "removed/y.jpg"})
        makePicture(QString::fromLatin1(name));
    scan();
    const auto idOf = [&](const char* name) {
        return rows(
                   u"select Id from ImageFile where FileName = '%1'"_s.arg(QLatin1StringView(name)))
            .value(0);
    };
    const QString kept = idOf("kept.jpg");
    const QString touched = idOf("touched.jpg");
    const int decoded = importers.decoded;
    scan();
    EXPECT_EQ(figures.rowsInserted, 7U);
    EXPECT_EQ(figures.rowsRemoved, 0U);
    EXPECT_EQ(importers.decoded, decoded);
    EXPECT_EQ(shown().size(), 7);

    QFile file(path(u"touched.jpg"_s));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(
        QDateTime::fromMSecsSinceEpoch(1'600'000'000'001), QFileDevice::FileModificationTime));
    file.close();
    makePicture(u"replaced.jpg"_s, {300, 20}, 5);
    QFile::rename(path(u"renamed.jpg"_s), path(u"new name.jpg"_s));
    QFile::remove(path(u"gone.jpg"_s));
    QDir(path(u"removed"_s)).removeRecursively();
    makePicture(u"sub/added.jpg"_s);
    scan();
    EXPECT_EQ(
        rows(imageNames),
        names({"added.jpg", "kept.jpg", "new name.jpg", "replaced.jpg", "touched.jpg", "x.jpg"}));
    EXPECT_EQ(figures.rowsInserted - 7, 4U);
    EXPECT_EQ(figures.rowsRemoved, 5U);
    EXPECT_EQ(idOf("kept.jpg"), kept);
    EXPECT_NE(idOf("touched.jpg"), touched);
    EXPECT_EQ(rows(u"select count(*) from Folder"_s), names({"2"}));
    // The thumbnails of rows that went are gone, and those of the new rows there.
    EXPECT_EQ(thumbnailRows(u"select count(*) from Thumbnail"_s), names({"6"}));
    expectConsistentCatalogue();
}

TEST_F(ScanTest, MetadataGoToTheirTablesAndOrientationToTheRotation) {
    makePicture(u"a.jpg"_s);
    importers.properties[u"a.jpg"_s] = {
        {u"DPIWidth"_s, 300},
        {u"ColorModel"_s, u"RGB"_s},
        {u"{TIFF}"_s, PBDictionary{{u"Orientation"_s, 6}, {u"Make"_s, u"M"_s}}},
        {u"{GPS}"_s, PBDictionary{{u"Latitude"_s, 1.5}, {u"Longitude"_s, 2.5}}}};
    scan();
    EXPECT_EQ(
        rows(u"select RotateAngle,ImageDPI,ColorModel,ColorSyncProfile is null "
             "from ImageFile"_s),
        names({"-90.0|300|RGB|1"}));
    EXPECT_EQ(rows(u"select Make from Tiff"_s), names({"M"}));
    EXPECT_EQ(rows(u"select Latitude,Longitude from GPS"_s), names({"1.5|2.5"}));
    EXPECT_EQ(rows(u"select count(*) from Exif"_s), names({"0"}));
}

TEST_F(ScanTest, NewFilesAreStoredInBatchesOfMoreThan200OrASecond) {
    for (int i = 0; i < 201; ++i)
        makePicture(u"%1.jpg"_s.arg(i), {2, 2});
    scan();
    EXPECT_EQ(publications(), 1U) << "the 201st makes the batch full, and the end finds none";
    for (int i = 0; i < 3; ++i)
        makePicture(u"later/%1.jpg"_s.arg(i), {2, 2});
    importers.willRead = [this](const QString&) { now = now + 1.1; };
    scan(u"later"_s);
    EXPECT_EQ(publications(), 3U) << "each takes longer than a second";
    EXPECT_EQ(rows(imageCount), names({"204"}));
}

TEST_F(ScanTest, AFileThatIsStillWrittenIsLeftForLater) {
    makePicture(u"a.jpg"_s);
    makePicture(u"b.jpg"_s);
    auto cautious = std::make_shared<ScanServices>(*services);
    cautious->isBeingWritten = [](const QString& file) { return file.endsWith(u"/b.jpg"); };
    factory = std::make_unique<ScanFactory>(
        ScanFactory::Environment{scanFiles, scanQueue, cautious, [] {}});
    scan();
    EXPECT_EQ(rows(imageNames), names({"a.jpg"}));
}

TEST_F(ScanTest, NestedRootsTakeOverTheirOwnFolders) {
    makePicture(u"a.jpg"_s);
    makePicture(u"zombie/b.jpg"_s);
    makePicture(u"zombie/nested/c.jpg"_s);
    const auto zombie = addRoot(u"zombie"_s, PBAliasObject::zombieState);
    const auto nested = addRoot(u"zombie/nested"_s);
    scan();
    EXPECT_EQ(shown(), names({"a.jpg", "b.jpg", "c.jpg"}));
    EXPECT_EQ(
        rows(u"select AliasId,RelativePath is null from Folder order by 1"_s),
        (QStringList{
            u"%1|1"_s.arg(root->aliasId()), u"%1|1"_s.arg(zombie->aliasId()),
            u"%1|1"_s.arg(nested->aliasId())}));
}

TEST_F(ScanTest, AFullDiskLosesNothingThatIsStored) {
    makePicture(u"old.jpg"_s);
    scan();
    const QStringList before = rows(imageNames);
    FMResultSet pages = scanFiles.executeQuery(u"pragma page_count"_s);
    ASSERT_TRUE(pages.next());
    const QString limit = u"pragma max_page_count = %1"_s.arg(pages.intForColumnIndex(0));
    pages.close();
    FMResultSet set = scanFiles.executeQuery(limit);
    ASSERT_TRUE(set.next());
    set.close();
    for (int i = 0; i < 150; ++i)
        makePicture(u"%1-%2.jpg"_s.arg(QString(200, u'n')).arg(i), {2, 2});
    testing::internal::CaptureStderr();
    scan();
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("files.db"), std::string::npos) << said;
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    EXPECT_EQ(rows(u"select FileName from ImageFile where FileName = 'old.jpg'"_s), before);
    EXPECT_EQ(finished, 2);
    expectConsistentCatalogue();
}
