#include "scan/ScanSupport.h"

#include <unistd.h>

using support::words;

TEST_F(ScanTest, UnderAFilterTheDiskIsNotAskedForNewFilesAndUnmatchedRowsStay) {
    makePictures("a.jpg b.jpg gone/c.jpg gone/d.jpg other.jpg");
    scan();
    execute(u"update ImageFile set FileFlag = 1 where FileName in ('a.jpg','c.jpg','other.jpg')"_s);
    makePicture(u"new.jpg"_s);
    makePicture(u"other.jpg"_s, {9, 9});
    QFile::remove(path(u"b.jpg"_s));
    QDir(path(u"gone"_s)).removeRecursively();
    browsing.filter = group::FilterFlagged;
    scan();
    EXPECT_EQ(shown(), words("a.jpg"));
    EXPECT_EQ(images(), words("a.jpg b.jpg d.jpg"));
    expectConsistentCatalogue();
    // A search, on the other hand, looks at every row and every file.
    browsing.filter = 0;
    browsing.searchString = u"zzz"_s;
    scan();
    EXPECT_EQ(shown(), QStringList());
    EXPECT_EQ(images(), words("a.jpg new.jpg other.jpg"));
}

TEST_F(ScanTest, RowsArePublishedAbove100AndNewFilesAbove200OrAfterASecond) {
    using Counts = std::vector<std::size_t>;
    for (int i = 0; i < 202; ++i)
        makePicture(u"%1.jpg"_s.arg(i), {2, 2});
    scan();
    EXPECT_EQ(publishedCounts(), (Counts{201, 202})) << "from the disk";
    scan();
    EXPECT_EQ(publishedCounts(), (Counts{101, 202})) << "from the catalogue";
    // A display that has not shown the last one gets the next when it has, and the whole at the
    // end.
    int asked = 0;
    changeServices(
        [&](ScanServices& changed) { changed.waitsForDisplay = [&] { return ++asked < 50; }; });
    scan();
    EXPECT_EQ(publishedCounts(), (Counts{150, 202}));
    changeServices([](ScanServices& changed) { changed.waitsForDisplay = [] { return true; }; });
    scan();
    EXPECT_EQ(publishedCounts(), Counts{202});
    EXPECT_GE(figures.firstPublication, 0.0);

    // Each look at the clock finds it a quarter of a second later.
    changeServices([this](ScanServices& changed) {
        changed.waitsForDisplay = {};
        changed.now = [this] { return now = now + 0.25; };
    });
    for (int i = 0; i < 12; ++i)
        makePicture(u"slow/%1.jpg"_s.arg(i), {2, 2});
    for (const char* when : {"from the disk", "from the catalogue"}) {
        scan(u"slow"_s);
        EXPECT_EQ(publishedCounts(), (Counts{5, 10, 12})) << when;
    }
}

static QString placesIn(const PBScanFinishedManager& manager) {
    const auto placeOf = [](const auto& entry) { return entry.relativePath().value_or(u"-"_s); };
    return support::sorted(support::listed(manager.scanFinishedArray(), placeOf)).join(u' ');
}

TEST_F(ScanTest, TheRegistryKeepsTheUppermostFinishedFolders) {
    const auto other = addRoot(u"other"_s);
    PBScanFinishedManager manager;
    const auto finish = [&](const auto& alias, const std::optional<QString>& relativePath) {
        manager.scanFinished(PBScanFinishedObject(alias, relativePath));
        return placesIn(manager);
    };
    finish(root, u"a/b"_s);
    finish(root, u"a/c"_s);
    EXPECT_EQ(finish(root, u"ab"_s), u"a/b a/c ab"_s);
    EXPECT_EQ(finish(root, u"a"_s), u"a ab"_s);
    EXPECT_EQ(finish(root, u"a/b"_s), u"a ab"_s);
    EXPECT_EQ(finish(root, u"A"_s), u"A a ab"_s) << "another folder";
    EXPECT_EQ(finish(other, {}), u"- A a ab"_s);
    EXPECT_EQ(finish(root, {}), u"- -"_s);
    EXPECT_EQ(finish(root, u"a"_s), u"- -"_s);
}

/// A disk that takes no note of case finds rows also by spellings that it has no more.
TEST_F(ScanTest, RowsUnderAFormerSpellingMakeRoomForThePresentOne) {
    makePictures("Trip/B.jpg Trip/x/d.jpg");
    scan();
    execute(u"update Folder set RelativePath = 'trip/x' where RelativePath = 'Trip/x'"_s);
    execute(u"update ImageFile set FileName = 'b.jpg' where FileName = 'B.jpg'"_s);
    ASSERT_TRUE(QFile::link(path(u"Trip"_s), path(u"trip"_s)));
    ASSERT_EQ(::link(path(u"Trip/B.jpg"_s).toUtf8(), path(u"Trip/b.jpg"_s).toUtf8()), 0);
    const platform::NamesOnDisk disk{
        platform::NamesOnDisk::real().identity, [](const QString& folder) {
            return platform::NamesOnDisk::real().names(folder)->subtract({u"trip"_s, u"b.jpg"_s});
        }};
    changeServices([&](ScanServices& changed) {
        changed.namesOnDisk = &disk;
        changed.isBeingWritten = [](const QString& file) { return file.endsWith(u"/b.jpg"); };
    });
    scan();
    EXPECT_EQ(shown(), words("B.jpg d.jpg"));
    EXPECT_EQ(figures.rowsRemoved, 2U);
    EXPECT_EQ(rows(u"select RelativePath from Folder order by 1"_s), words("Trip Trip/x"));
    // While it is shown, too.
    items()[0]->setFileName(u"b.jpg"_s);
    watch(true);
    EXPECT_EQ(shown(), words("d.jpg"));
}

TEST_F(ScanTest, ACancelledScanRegistersOnlyTheFoldersThatItFinished) {
    makePictures("x/1.jpg y/2.jpg z/3.jpg");
    int read = 0;
    importers.willRead = [&](const QString&) {
        if (++read == 2) scanQueue.cancelAllOperations();
    };
    scan();
    EXPECT_EQ(finished, 0);
    EXPECT_EQ(finishedManager.scanFinishedArray().size(), 1u);
    importers.willRead = {};
    scan();
    EXPECT_EQ(finished, 1);
    EXPECT_EQ(placesIn(finishedManager), u"-"_s);
    EXPECT_EQ(shown().size(), 3);
}

/// Scans that are cut off at any moment, on files that come and go meanwhile.
TEST_F(ScanTest, WhateverMomentAScanIsCancelledAtTheCatalogueIsConsistent) {
    constexpr std::size_t folders = 6;
    constexpr std::size_t all = folders * 20;
    std::mt19937 random(20);
    const auto nameOf = [](std::size_t i) { return u"%1/%2.jpg"_s.arg(i % folders).arg(i); };
    for (std::size_t i = 0; i < all; ++i)
        makePicture(nameOf(i), {2, 2});
    // From tens to thousands of rounds, as the environment says.
    const int rounds = std::max(120, qEnvironmentVariableIntValue("VELMORA_ROUNDS"));
    ReadAhead ahead(2, importers);
    changeServices([&](ScanServices& changed) { changed.readAhead = &ahead; });
    std::atomic<int> readsLeft = 0;
    importers.properties[u"0.jpg"_s] = {{u"{Exif}"_s, PBDictionary{{u"FNumber"_s, 2.8}}}};
    importers.willRead = [&](const QString&) {
        now += 0.2;
        if (--readsLeft == 0) scanQueue.cancelAllOperations();
    };
    for (int round = 0; round < rounds; ++round) {
        for (int change = 0; change < 8; ++change) {
            const QString name = nameOf(random() % all);
            if (random() % 2 == 0)
                QFile::remove(path(name));
            else
                makePicture(name, {3, 1 + static_cast<int>(random() % 9)});
        }
        readsLeft = static_cast<int>(random() % 12);
        startScan(random() % 3 == 0 ? u"1"_s : QString());
        // What the watcher does, into the midst of it.
        if (round % 5 == 2)
            tell(
                random() % 2 == 0,
                {{path(QString::number(random() % folders)), random() % 2 == 0}});
        if (round % 2 == 1) {
            // Another folder is selected, at any moment.
            while (figures.items < random() % 50 && scanQueue.operationCount() != 0)
                std::this_thread::yield();
            startScan(QString::number(random() % folders));
        }
        scanQueue.waitUntilAllOperationsAreFinished();
        expectConsistentCatalogue();
        if (HasFailure()) return;
    }
    importers.willRead = {};
    scan();
    QStringList onDisk;
    for (std::size_t i = 0; i < all; ++i)
        if (QFile::exists(path(nameOf(i)))) onDisk.append(u"%1.jpg"_s.arg(i));
    EXPECT_EQ(images(), support::sorted(onDisk));
    EXPECT_EQ(shown().size(), onDisk.size());
    EXPECT_GE(count(thumbnails, "Thumbnail"), onDisk.size());
}
