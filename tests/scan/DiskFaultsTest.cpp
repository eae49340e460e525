#include "scan/ScanSupport.h"
#include "support/FaultyDisk.h"

using support::words;

namespace {

struct Faults {
    support::FaultyDisk disk{u"/files.db"_s};
};

/// Scans over a disk that fails under the catalogue. Every picture's metadata name the picture.
struct DiskFaultsTest : Faults, ScanTest {
    void makeMarked(const QString& name) {
        makePicture(name, {2, 2});
        importers.properties[name] = {
            {u"{Exif}"_s, PBDictionary{{u"UserComment"_s, name}}},
            {u"{TIFF}"_s, PBDictionary{{u"Make"_s, name}}}};
    }
    /// What the scan says on standard error.
    std::string faultyScan() {
        testing::internal::CaptureStderr();
        scan();
        return testing::internal::GetCapturedStderr();
    }
    /// Nothing is stored in part, and no thumbnail is another's or nobody's.
    void expectWhole() {
        expectConsistentCatalogue();
        EXPECT_EQ(
            rows(u"select FileName from ImageFile left join Exif on Exif.FileId = Id left join "
                 "Tiff on Tiff.FileId = Id where UserComment is not FileName or Make is not "
                 "FileName"_s),
            QStringList());
        const QStringList ids = support::rowsOf(thumbnails, u"select FileId from Thumbnail"_s);
        EXPECT_FALSE(ids.contains(u"0"_s));
        for (const QString& id : rows(u"select Id from ImageFile"_s))
            EXPECT_TRUE(ids.contains(id)) << id.toStdString();
        for (const auto& item : items())
            EXPECT_GT(item->fileId(), 0) << item->fileName().toStdString();
    }
};

TEST_F(DiskFaultsTest, WhateverCallFailsPicturesComeAndGoWhole) {
    const QStringList sets[] = {words("a0.jpg a1.jpg a2.jpg"), words("b0.jpg b1.jpg b2.jpg")};
    for (const QString& name : sets[0])
        makeMarked(name);
    scan();
    ASSERT_TRUE(scanFiles.executeUpdate(u"pragma cache_size = 2"_s));
    bool hasFailed = true;
    for (int call = 1; hasFailed; ++call) {
        SCOPED_TRACE(call);
        const QStringList& old = sets[(call + 1) % 2];
        const QStringList& added = sets[call % 2];
        for (const QString& name : old)
            QFile::remove(path(name));
        for (const QString& name : added)
            makeMarked(name);
        ASSERT_TRUE(scanFiles.executeUpdate(u"pragma shrink_memory"_s));
        disk.failAt(call);
        faultyScan();
        hasFailed = disk.hasFailed();
        disk.failAt(0);
        expectWhole();
        QStringList stored = images();
        if (stored.contains(old[0])) {
            for (const QString& name : old)
                EXPECT_EQ(stored.removeAll(name), 1);
        }
        EXPECT_TRUE(stored.isEmpty() || stored == added) << stored.join(u' ').toStdString();
        EXPECT_EQ(shown(), stored);
        scan();
        EXPECT_EQ(images(), added);
        EXPECT_EQ(shown(), added);
        expectWhole();
        if (HasFailure()) return;
        ASSERT_TRUE(hasFailed || call > 50) << "too few calls to say anything";
    }
}

TEST_F(DiskFaultsTest, AFullDiskTakesABatchLaterOrNotAtAll) {
    makeMarked(u"old.jpg"_s);
    scan();
    const QString pages = support::rowsOf(scanFiles, u"pragma page_count"_s).constFirst();
    support::rowsOf(scanFiles, u"pragma max_page_count = %1"_s.arg(pages.toInt() + 12));
    for (int i = 0; i < 150; ++i)
        makeMarked(u"%1-%2.jpg"_s.arg(QString(150, u'n')).arg(i));
    const std::string said = faultyScan();
    EXPECT_NE(said.find("files.db"), std::string::npos) << said;
    EXPECT_NE(said.find("full"), std::string::npos) << said;
    EXPECT_EQ(std::ranges::count(said, '\n'), 1) << said;
    EXPECT_EQ(images(), words("old.jpg"));
    EXPECT_EQ(shown(), words("old.jpg"));
    EXPECT_EQ(finished, 2);
    support::rowsOf(scanFiles, u"pragma max_page_count = 100000"_s);
    scan();
    EXPECT_EQ(images().size(), 151);
    expectWhole();
}

/// One picture that the tables refuse keeps no other out, and leaves nothing of itself.
TEST_F(DiskFaultsTest, ARefusedPictureStaysOutAlone) {
    for (const QString& name : words("a.jpg b.jpg c.jpg"))
        makeMarked(name);
    ASSERT_TRUE(files.executeUpdate(
        u"create trigger T before insert on Tiff when new.Make = 'b.jpg' begin select "
        "raise(abort, 'no'); end"_s));
    EXPECT_NE(faultyScan(), "");
    EXPECT_EQ(images(), words("a.jpg c.jpg"));
    EXPECT_EQ(shown(), images());
    EXPECT_EQ(figures.rowsInserted, 2U);
    expectWhole();
    // No write is taken at all: what can't be stored is not shown, either.
    ASSERT_TRUE(files.executeUpdate(u"drop trigger T"_s));
    ASSERT_TRUE(scanFiles.executeUpdate(u"pragma query_only = on"_s));
    faultyScan();
    EXPECT_EQ(shown(), words("a.jpg c.jpg"));
    expectWhole();
}

TEST_F(DiskFaultsTest, AFolderThatCouldNotBeListedDoesNotCountAsScanned) {
    for (const QString& name : words("1.jpg x/2.jpg y/3.jpg"))
        makePicture(name);
    importers.willRead = [this](const QString&) { QDir(path(u"x"_s)).removeRecursively(); };
    scan();
    EXPECT_EQ(finished, 1) << "the scan ends all the same";
    EXPECT_EQ(shown(), words("1.jpg 3.jpg"));
    const auto places = finishedManager.scanFinishedArray();
    ASSERT_EQ(places.size(), 1U);
    EXPECT_EQ(places[0].relativePath(), u"y"_s);
}

} // namespace
