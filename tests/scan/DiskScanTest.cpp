#include "scan/ScanSupport.h"

#include "catalogue/PBCatalogue.h"
#include "platform/FileManager.h"
#include "support/Support.h"

#include <QDir>
#include <QFile>
#include <QImage>

#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString imageNames = QStringLiteral("select FileName from ImageFile order by FileName");
const QString imageCount = QStringLiteral("select count(*) from ImageFile");

QStringList names(std::initializer_list<const char*> list) {
    QStringList result;
    for (const char* name : list)
        result.append(QString::fromLatin1(name));
    return result;
}

} // namespace

TEST_F(ScanTest, WhatIsOnDiskComesIntoTheCatalogueAndNothingElse) {
    for (const char* name :
         {"a.jpg", "b.PNG", "sub/c.jpg", "sub/deep/d.jpg", ".hidden.jpg", ".hid/e.jpg",
          "Lib.photoslibrary/f.jpg", "none/g/.h.jpg"})
        makePicture(QString::fromLatin1(name));
    support::writeFile(path(QStringLiteral("none/notes.txt")), "no picture");
    support::writeFile(path(QStringLiteral("sub/damaged.jpg")), "no picture either");
    const QByteArray pipe = QFile::encodeName(path(QStringLiteral("none/pipe.jpg")));
    ASSERT_EQ(::mkfifo(pipe.constData(), 0600), 0);
    ASSERT_TRUE(QFile::link(path({}), path(QStringLiteral("sub/around"))));
    scan();

    EXPECT_EQ(rows(imageNames), names({"a.jpg", "b.PNG", "c.jpg", "d.jpg", "damaged.jpg"}));
    EXPECT_EQ(shown(), names({"a.jpg", "b.PNG", "c.jpg", "d.jpg", "damaged.jpg"}));
    EXPECT_EQ(
        rows(QStringLiteral("select ifnull(RelativePath,'-') from Folder order by 1")),
        names({"-", "sub", "sub/deep"}));
    EXPECT_EQ(thumbnailRows(QStringLiteral("select count(*) from Thumbnail")), names({"4"}));
    EXPECT_EQ(figures.rowsInserted, 5U);
    EXPECT_EQ(finished, 1);

    const auto onDisk = platform::FileManager::resourceValues(path(QStringLiteral("a.jpg")));
    FMResultSet row = files.executeQuery(QStringLiteral(
        "select FileSize,ModificationDate,CreationDate,ImageWidth,ImageHeight,UTIType,FileStars,"
        "FileFlag from ImageFile where FileName = 'a.jpg'"));
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
        return rows(QStringLiteral("select Id from ImageFile where FileName = '%1'")
                        .arg(QLatin1StringView(name)))
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

    QFile file(path(QStringLiteral("touched.jpg")));
    ASSERT_TRUE(file.open(QIODevice::ReadWrite));
    ASSERT_TRUE(file.setFileTime(
        QDateTime::fromMSecsSinceEpoch(1'600'000'000'001), QFileDevice::FileModificationTime));
    file.close();
    makePicture(QStringLiteral("replaced.jpg"), {300, 20}, 5);
    QFile::rename(path(QStringLiteral("renamed.jpg")), path(QStringLiteral("new name.jpg")));
    QFile::remove(path(QStringLiteral("gone.jpg")));
    QDir(path(QStringLiteral("removed"))).removeRecursively();
    makePicture(QStringLiteral("sub/added.jpg"));
    scan();
    EXPECT_EQ(
        rows(imageNames),
        names({"added.jpg", "kept.jpg", "new name.jpg", "replaced.jpg", "touched.jpg", "x.jpg"}));
    EXPECT_EQ(figures.rowsInserted - 7, 4U);
    EXPECT_EQ(figures.rowsRemoved, 5U);
    EXPECT_EQ(idOf("kept.jpg"), kept);
    EXPECT_NE(idOf("touched.jpg"), touched);
    EXPECT_EQ(rows(QStringLiteral("select count(*) from Folder")), names({"2"}));
    // The thumbnails of rows that went are gone, and those of the new rows there.
    EXPECT_EQ(thumbnailRows(QStringLiteral("select count(*) from Thumbnail")), names({"6"}));
    expectConsistentCatalogue();
}

TEST_F(ScanTest, MetadataGoToTheirTablesAndOrientationToTheRotation) {
    makePicture(QStringLiteral("a.jpg"));
    importers.properties[QStringLiteral("a.jpg")] = {
        {QStringLiteral("DPIWidth"), 300},
        {QStringLiteral("ColorModel"), QStringLiteral("RGB")},
        {QStringLiteral("{TIFF}"),
         PBDictionary{
             {QStringLiteral("Orientation"), 6}, {QStringLiteral("Make"), QStringLiteral("M")}}},
        {QStringLiteral("{GPS}"),
         PBDictionary{{QStringLiteral("Latitude"), 1.5}, {QStringLiteral("Longitude"), 2.5}}},
    };
    scan();
    EXPECT_EQ(
        rows(QStringLiteral("select RotateAngle,ImageDPI,ColorModel,ColorSyncProfile is null "
                            "from ImageFile")),
        names({"-90.0|300|RGB|1"}));
    EXPECT_EQ(rows(QStringLiteral("select Make from Tiff")), names({"M"}));
    EXPECT_EQ(rows(QStringLiteral("select Latitude,Longitude from GPS")), names({"1.5|2.5"}));
    EXPECT_EQ(rows(QStringLiteral("select count(*) from Exif")), names({"0"}));
}

TEST_F(ScanTest, NewFilesAreStoredInBatchesOfMoreThan200OrASecond) {
    for (int i = 0; i < 201; ++i)
        makePicture(QStringLiteral("%1.jpg").arg(i), {2, 2});
    scan();
    EXPECT_EQ(publications(), 1U) << "the 201st makes the batch full, and the end finds none";
    for (int i = 0; i < 3; ++i)
        makePicture(QStringLiteral("later/%1.jpg").arg(i), {2, 2});
    importers.willRead = [this](const QString&) { now = now + 1.1; };
    scan(QStringLiteral("later"));
    EXPECT_EQ(publications(), 3U) << "each takes longer than a second";
    EXPECT_EQ(rows(imageCount), names({"204"}));
}

TEST_F(ScanTest, AFileThatIsStillWrittenIsLeftForLater) {
    makePicture(QStringLiteral("a.jpg"));
    makePicture(QStringLiteral("b.jpg"));
    auto cautious = std::make_shared<ScanServices>(*services);
    cautious->isBeingWritten = [](const QString& file) { return file.endsWith(u"/b.jpg"); };
    factory = std::make_unique<ScanFactory>(
        ScanFactory::Environment{scanFiles, scanQueue, cautious, [] {}});
    scan();
    EXPECT_EQ(rows(imageNames), names({"a.jpg"}));
}

TEST_F(ScanTest, NestedRootsTakeOverTheirOwnFolders) {
    makePicture(QStringLiteral("a.jpg"));
    makePicture(QStringLiteral("zombie/b.jpg"));
    makePicture(QStringLiteral("zombie/nested/c.jpg"));
    const auto zombie = addRoot(QStringLiteral("zombie"), PBAliasObject::zombieState);
    const auto nested = addRoot(QStringLiteral("zombie/nested"));
    scan();
    EXPECT_EQ(shown(), names({"a.jpg", "b.jpg", "c.jpg"}));
    EXPECT_EQ(
        rows(QStringLiteral("select AliasId,RelativePath is null from Folder order by 1")),
        (QStringList{
            QStringLiteral("%1|1").arg(root->aliasId()),
            QStringLiteral("%1|1").arg(zombie->aliasId()),
            QStringLiteral("%1|1").arg(nested->aliasId())}));
}

TEST_F(ScanTest, AFullDiskLosesNothingThatIsStored) {
    makePicture(QStringLiteral("old.jpg"));
    scan();
    const QStringList before = rows(imageNames);
    FMResultSet pages = scanFiles.executeQuery(QStringLiteral("pragma page_count"));
    ASSERT_TRUE(pages.next());
    const QString limit =
        QStringLiteral("pragma max_page_count = %1").arg(pages.intForColumnIndex(0));
    pages.close();
    FMResultSet set = scanFiles.executeQuery(limit);
    ASSERT_TRUE(set.next());
    set.close();
    for (int i = 0; i < 150; ++i)
        makePicture(QStringLiteral("%1-%2.jpg").arg(QString(200, u'n')).arg(i), {2, 2});
    testing::internal::CaptureStderr();
    scan();
    const std::string said = testing::internal::GetCapturedStderr();
    EXPECT_NE(said.find("files.db"), std::string::npos) << said;
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    EXPECT_EQ(
        rows(QStringLiteral("select FileName from ImageFile where FileName = 'old.jpg'")), before);
    EXPECT_EQ(finished, 2);
    expectConsistentCatalogue();
}
