#include "scan/ScanSupport.h"

#include <future>

#include <fcntl.h>
#include <sys/stat.h>

using support::entries;
using support::words;

TEST_F(ScanTest, WhatIsOnDiskComesIntoTheCatalogueAndNothingElse) {
    makePictures("a.jpg b.PNG sub/c.jpg sub/deep/d.jpg .hidden.jpg .hid/e.jpg "
                 "Lib.photoslibrary/f.jpg none/g/.h.jpg sub/half.jpg");
    QStringList leftOut;
    changeServices([&leftOut](ScanServices& cautious) {
        cautious.leftOutForItsName = [&leftOut](const QString& folder, const QString& name) {
            leftOut += folder + u'/' + name;
        };
        cautious.isBeingWritten = [](const QString& file) { return file.endsWith(u"/half.jpg"); };
    });
    support::writeFile(path(u"none/notes.txt"_s), "no picture");
    support::writeFile(path(u"sub/damaged.jpg"_s), "no picture either");
    ASSERT_EQ(::mkfifo(qPrintable(path(u"none/pipe.jpg"_s)), 0600), 0);
    QDir().mkpath(path(u"none/folder.jpg"_s));
    ASSERT_TRUE(QFile::link(path({}), path(u"sub/around"_s)));
    ASSERT_TRUE(QFile::link(u"itself.jpg"_s, path(u"none/itself.jpg"_s)));
    ASSERT_TRUE(QFile::link(u"nowhere"_s, path(u"none/dangling.jpg"_s)));
    for (const char* name : {"/\xfc.jpg", "/\xfc.txt"}) {
        const QByteArray undecodable = QFile::encodeName(path(u"sub"_s)) + name;
        ::close(::open(undecodable.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));
    }
    ASSERT_EQ(::mkdir(QFile::encodeName(path(u"sub"_s)) + "/\xfc", 0700), 0);
    const QString longest = QString(251, u'n') + u".jpg"_s;
    makePicture(longest);
    scan();

    EXPECT_EQ(images(), words("a.jpg b.PNG c.jpg d.jpg damaged.jpg") + QStringList{longest});
    EXPECT_EQ(shown(), images());
    leftOut.sort();
    EXPECT_EQ(leftOut, (QStringList{path(u"sub/\uFFFD"_s), path(u"sub/\uFFFD.jpg"_s)}));
    EXPECT_EQ(rows(u"select RelativePath from Folder order by 1"_s), words("NULL sub sub/deep"));
    EXPECT_EQ(count(thumbnails, "Thumbnail"), 5);
    EXPECT_EQ(figures.rowsInserted, 6U);
    EXPECT_EQ(finished, 1);

    const auto onDisk = platform::FileManager::resourceValues(path(u"a.jpg"_s));
    const QStringList ids = rows(u"select Id from ImageFile where FileName = 'a.jpg'"_s);
    EXPECT_EQ(
        PBCatalogue(files).imageFileDataWithIdAndFields(
            ids[0].toLongLong(), words("FileSize ModificationDate CreationDate ImageWidth "
                                       "ImageHeight UTIType FileStars FileFlag")),
        (PBArray{
            onDisk->fileSize, onDisk->modificationDate, onDisk->creationDate, 8, 6,
            u"public.jpeg"_s, 0, 0}));
}

TEST_F(ScanTest, NewFilesThatASearchLeavesOutAreStoredTogetherAsWell) {
    for (int i = 0; i < 40; ++i)
        makePicture(u"%1.jpg"_s.arg(i));
    browsing.searchString = u"none"_s;
    importers.willRead = [this](const QString&) { now = now + 0.15; };
    const int before = support::storedChanges(files);
    scan();
    EXPECT_EQ(images().size(), 40);
    EXPECT_LE(support::storedChanges(files) - before, 40 / 7 + 3) << "once a second";
}

TEST_F(ScanTest, ASecondVisitTakesExactlyWhatChanged) {
    makePictures("kept.jpg touched.jpg grown.jpg renamed.jpg gone.jpg sub/x.jpg removed/y.jpg "
                 "Kept.jpg Sub/x.jpg"); // others, though by their case only
    scan();
    const QString idOf = u"select Id from ImageFile where FileName = '%1'"_s;
    const QStringList kept = rows(idOf.arg(u"kept.jpg"));
    const QStringList touched = rows(idOf.arg(u"touched.jpg"));
    const int decoded = importers.decoded;
    scan();
    EXPECT_EQ(figures.rowsInserted, 9U);
    EXPECT_EQ(figures.rowsRemoved, 0U);
    EXPECT_EQ(importers.decoded, decoded);
    EXPECT_EQ(shown().size(), 9);
    EXPECT_EQ(figures.items, 9U) << "of the present scan";
    EXPECT_EQ(figures.folders, 8U) << "four in the catalogue, four on disk";

    const QFileInfo touchedFile(path(u"touched.jpg"_s));
    alter(u"touched.jpg"_s, touchedFile.size(), touchedFile.lastModified().addMSecs(1));
    const QFileInfo grownFile(path(u"grown.jpg"_s));
    alter(u"grown.jpg"_s, grownFile.size() + 1, grownFile.lastModified());
    QFile::rename(path(u"renamed.jpg"_s), path(u"new.jpg"_s));
    QFile::remove(path(u"gone.jpg"_s));
    QDir(path(u"removed"_s)).removeRecursively();
    makePicture(u"sub/added.jpg"_s);
    scan();
    EXPECT_EQ(
        images(), words("Kept.jpg added.jpg grown.jpg kept.jpg new.jpg touched.jpg x.jpg x.jpg"));
    EXPECT_EQ(figures.rowsInserted - 9, 4U);
    EXPECT_EQ(figures.rowsRemoved, 5U);
    EXPECT_EQ(rows(idOf.arg(u"kept.jpg")), kept);
    EXPECT_NE(rows(idOf.arg(u"touched.jpg")), touched);
    EXPECT_EQ(count(files, "Folder"), 3);
    // The thumbnails of rows that went are gone, and those of the new rows there.
    EXPECT_EQ(count(thumbnails, "Thumbnail"), 8);
    expectConsistentCatalogue();

    // The whole root goes: the scan ends, and what that means is not a scan's to say.
    QDir(path({})).removeRecursively();
    scan();
    EXPECT_EQ(images().size(), 8);
    EXPECT_EQ(finished, 4);
}

TEST_F(ScanTest, MetadataGoToTheirTablesAndOrientationToTheRotation) {
    makePicture(u"a.jpg"_s);
    importers.properties[u"a.jpg"_s] = entries("DPIWidth=300 ColorModel=RGB ProfileName=P3");
    importers.properties[u"a.jpg"_s].merge(PBDictionary{
        {u"{Exif}"_s, entries("FNumber=2.8")},
        {u"{ExifAux}"_s, entries("LensModel=L")},
        {u"{IPTC}"_s, entries("Headline=H")},
        {u"{TIFF}"_s, entries("Orientation=6 Make=M")},
        {u"{GPS}"_s, entries("Latitude=1.5 Longitude=2.5")}});
    scan();
    EXPECT_EQ(
        rows(u"select RotateAngle,ImageDPI,ColorModel,ColorSyncProfile,FNumber,ExifAux.LensModel,"
             "Headline,Make,Latitude,Longitude from ImageFile,Exif,ExifAux,IPTC,Tiff,GPS"_s),
        words("-90.0|300|RGB|P3|2.8|L|H|M|1.5|2.5"));
    for (const char* when : {"from the disk", "from the catalogue"}) {
        ASSERT_EQ(items().size(), 1U) << when;
        const auto item = items()[0];
        EXPECT_EQ(item->imageSize(), QSizeF(8, 6)) << when;
        const QString told =
            u"%1|%2|%3"_s.arg(item->fileId()).arg(item->folderId()).arg(item->rotateAngle());
        EXPECT_EQ(rows(u"select Id,FolderId,-90 from ImageFile"_s), QStringList{told}) << when;
        scan();
    }
}

TEST_F(ScanTest, FilesAreReadAheadSixteenAtATime) {
    std::atomic<int> read = 0;
    importers.willRead = [&](const QString&) { ++read; };
    ReadAhead ahead(1, importers);
    EXPECT_EQ(ReadAhead(0, importers).capacity(), ahead.capacity())
        << "nobody knows how many cores";
    std::vector<ReadAhead::Reading> readings;
    const auto begin = [&](int number) {
        const QString file = path(u"%1.jpg"_s.arg(number));
        if (number != 3) makePicture(u"%1.jpg"_s.arg(number), {number + 1, 1});
        readings.push_back(ahead.read(file, importers.imageImporterForImageURL(file)));
    };
    for (int number = 0; number < 15; ++number)
        begin(number);
    EXPECT_EQ(read, 0);
    begin(15);
    EXPECT_TRUE(support::spinUntil([&] { return read == 15; })) << "all but the missing one";
    begin(16);
    for (int number = 0; number < 17; ++number) {
        const auto file = ahead.wait(std::move(readings[static_cast<std::size_t>(number)]), {});
        EXPECT_EQ(file.values.has_value(), number != 3);
        if (number == 3) continue;
        EXPECT_EQ(file.properties.properties.at(u"PixelWidth"_s), PBValue(number + 1))
            << "not another's";
    }
}

TEST_F(ScanTest, WhatHoldsAReadingUpHoldsNeitherACancellationNorTheNextScanUp) {
    std::atomic<bool> isStopped = false;
    std::atomic<bool> isAnswering = false;
    std::promise<void> begun;
    std::promise<void> letGo;
    importers.cannotRead = [&](const QString&, const std::stop_token& stop) {
        if (isAnswering) return false;
        const std::stop_callback note(stop, [&] { isStopped = true; });
        begun.set_value();
        letGo.get_future().wait();
        return true;
    };
    ReadAhead ahead(1, importers);
    makePicture(u"a.jpg"_s);
    changeServices([&](ScanServices& reading) { reading.readAhead = &ahead; });
    startScan();
    begun.get_future().wait();
    EXPECT_FALSE(isStopped);
    scanQueue.cancelAllOperations();
    scanQueue.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(isStopped);
    EXPECT_EQ(images(), QStringList());
    isAnswering = true;
    startScan();
    EXPECT_TRUE(support::spinUntil([this] { return finished == 1; }));
    EXPECT_EQ(shown(), words("a.jpg"));
    letGo.set_value();
}

/// A row that says that nothing is known of a picture is for what was looked at.
TEST_F(ScanTest, WhatCannotBeReadNowIsTriedAgainAndLeftForAnotherScan) {
    makePictures("a.jpg busy.jpg lost.jpg");
    support::writeFile(path(u"damaged.jpg"_s), "no picture");
    int busy = 0;
    bool isLost = true;
    importers.cannotRead = [&](const QString& file, const std::stop_token&) {
        return (file.endsWith(u"busy.jpg") && ++busy == 1) ||
               (file.endsWith(u"lost.jpg") && isLost);
    };
    testing::internal::CaptureStderr();
    scan();
    EXPECT_NE(testing::internal::GetCapturedStderr().find("lost.jpg"), std::string::npos);
    EXPECT_EQ(shown(), words("a.jpg busy.jpg damaged.jpg"));
    EXPECT_TRUE(finishedManager.scanFinishedArray().empty());
    isLost = false;
    scan();
    EXPECT_EQ(images(), words("a.jpg busy.jpg damaged.jpg lost.jpg"));

    // As a former version stored what it could not read, whyever.
    execute(u"update ImageFile set ImageWidth = 0, ImageHeight = 0 where FileName = 'a.jpg'"_s);
    const QString damaged = u"select Id from ImageFile where FileName = 'damaged.jpg'"_s;
    const QStringList before = rows(damaged);
    browsing.filter = 1;
    scan();
    EXPECT_EQ(images().size(), 4);
    browsing.filter = 0;
    scan();
    EXPECT_EQ(rows(u"select ImageWidth from ImageFile order by FileName"_s), words("8 8 NULL 8"));
    EXPECT_EQ(rows(damaged), before) << "it was looked at, and is not read at each visit";
}
