#include "scan/ScanSupport.h"
#include "support/FaultyDisk.h"

using support::words;

namespace {

/// Scans over a disk that fails under the catalogue. Every picture's metadata name the picture.
struct DiskFaultsTest : support::FaultyDisk, ScanTest {
    DiskFaultsTest() : FaultyDisk(u"/files.db"_s) {}
    void makeMarked(const QStringList& names) {
        for (const QString& name : names) {
            makePicture(name, {2, 2});
            importers.properties[name] = {
                {u"{Exif}"_s, PBDictionary{{u"UserComment"_s, name}}},
                {u"{TIFF}"_s, PBDictionary{{u"Make"_s, name}}}};
        }
    }
    /// Nothing is stored in part, and no thumbnail is another's or nobody's.
    void expectWhole(const QStringList& stored) {
        EXPECT_EQ(images(), stored);
        EXPECT_EQ(figures.rowsInserted - figures.rowsRemoved, std::size(stored));
        QStringList onDisk = stored;
        onDisk.removeIf([this](const QString& name) { return !QFile::exists(path(name)); });
        EXPECT_TRUE(shown() == onDisk || said.contains(u"can't be read")) << said.toStdString();
        for (const QString& name : shown())
            EXPECT_TRUE(onDisk.contains(name)) << name.toStdString();
        expectConsistentCatalogue();
        const QString inPart =
            u"select FileName from ImageFile left join Exif on Exif.FileId = Id left join Tiff on "
            "Tiff.FileId = Id where UserComment is not FileName or Make is not FileName"_s;
        EXPECT_EQ(rows(inPart), QStringList());
        const QStringList ids = support::rowsOf(thumbnails, u"select FileId from Thumbnail"_s);
        EXPECT_FALSE(ids.contains(u"0"_s));
        for (const QString& id : rows(u"select Id from ImageFile"_s))
            EXPECT_TRUE(ids.contains(id)) << id.toStdString();
    }
    QString said;
};

TEST_F(DiskFaultsTest, WhateverCallFailsPicturesComeAndGoWhole) {
    const QStringList sets[] = {words("a0.jpg a1.jpg a2.jpg"), words("b0.jpg b1.jpg b2.jpg")};
    // So many that their rows do not stay in memory.
    QStringList kept;
    for (int i = 10; i < 50; ++i)
        kept.append(u"z%1%2.jpg"_s.arg(i).arg(QString(100, u'z')));
    makeMarked(sets[0] + kept);
    scan();
    ASSERT_TRUE(scanFiles.executeUpdate(u"pragma cache_size = 2"_s));
    bool hasFailed = true;
    for (int call = 1; hasFailed && !HasFailure(); ++call) {
        SCOPED_TRACE(call);
        const QStringList& old = sets[(call + 1) % 2];
        const QStringList& added = sets[call % 2];
        for (const QString& name : old)
            QFile::remove(path(name));
        makeMarked(added);
        ASSERT_TRUE(scanFiles.executeUpdate(u"pragma shrink_memory"_s));
        failAt(call);
        figures.toldFailure = figures.toldUnreadCatalogue = false;
        testing::internal::CaptureStderr();
        scan();
        said = QString::fromStdString(testing::internal::GetCapturedStderr());
        hasFailed = FaultyDisk::hasFailed();
        failAt(0);
        EXPECT_TRUE(hasFailed || call > 50) << "too few calls to say anything";
        QStringList stored = images();
        const bool isOldKept = stored.contains(old[0]);
        expectWhole(stored);
        for (const QString& name : old)
            EXPECT_EQ(stored.removeAll(name), isOldKept);
        EXPECT_TRUE(stored == kept || stored == added + kept) << stored.join(u' ').toStdString();
        said.clear();
        scan();
        expectWhole(added + kept);
    }
}

TEST_F(DiskFaultsTest, OnePictureThatIsNotTakenKeepsNoOtherOutAndComesLater) {
    const QStringList all = words("a.jpg b.jpg c.jpg");
    makeMarked(all);
    support::refuse(files, u"insert on Tiff when new.Make = 'b.jpg'"_s);
    scan();
    expectWhole(words("a.jpg c.jpg"));
    EXPECT_EQ(figures.rowsInserted, 2U);
    support::permit(files);
    scan();
    expectWhole(all);
}

TEST_F(DiskFaultsTest, AFolderThatCouldNotBeListedDoesNotCountAsScanned) {
    makePictures("1.jpg x/2.jpg y/3.jpg");
    importers.willRead = [this](const QString&) { QDir(path(u"x"_s)).removeRecursively(); };
    scan();
    EXPECT_EQ(finished, 1) << "the scan ends all the same";
    const auto places = finishedManager.scanFinishedArray();
    ASSERT_EQ(places.size(), 1U);
    EXPECT_EQ(places[0].relativePath(), u"y"_s);
}

} // namespace
