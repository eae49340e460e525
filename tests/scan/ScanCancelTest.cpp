#include "scan/ScanSupport.h"

/// Scans that are cut off at any moment, on files that come and go meanwhile.
TEST_F(ScanTest, WhateverMomentAScanIsCancelledAtTheCatalogueIsConsistent) {
    constexpr int folders = 6;
    constexpr int filesEach = 20;
    std::mt19937 random(20);
    for (int i = 0; i < folders * filesEach; ++i)
        makePicture(u"%1/%2.jpg"_s.arg(i % folders).arg(i), {2, 2});
    // From tens to thousands of rounds, as the environment says.
    const int rounds = std::max(120, qEnvironmentVariableIntValue("VELMORA_ROUNDS"));
    ReadAhead ahead(2);
    auto reading = std::make_shared<ScanServices>(*services);
    reading->readAhead = &ahead;
    factory = std::make_unique<ScanFactory>(
        ScanFactory::Environment{scanFiles, scanQueue, reading, [] {}});
    std::atomic<int> readsLeft = 0;
    importers.properties[u"0.jpg"_s] = {{u"{Exif}"_s, PBDictionary{{u"FNumber"_s, 2.8}}}};
    importers.willRead = [&](const QString&) {
        now += 0.2;
        if (--readsLeft == 0) scanQueue.cancelAllOperations();
    };
    for (int round = 0; round < rounds; ++round) {
        for (int change = 0; change < 8; ++change) {
            const unsigned pick = random() % (folders * filesEach);
            const QString name = u"%1/%2.jpg"_s.arg(pick % folders).arg(pick);
            if (random() % 2 == 0)
                QFile::remove(path(name));
            else
                makePicture(name, {3, 2}, static_cast<int>(random()));
        }
        readsLeft = static_cast<int>(random() % 12);
        startScan(random() % 3 == 0 ? u"1"_s : QString());
        if (round % 5 == 2) {
            // What the watcher does, into the midst of it.
            WatchedChanges changes;
            changes.checkExist = random() % 2 == 0;
            changes.rescans = {{path(QString::number(random() % folders)), random() % 2 == 0}};
            factory->attachChanges(changes, workTree, browsing);
        }
        if (round % 4 == 3) {
            // Another folder is selected, which waits for nothing.
            while (figures.items < random() % 40 && scanQueue.operationCount() != 0)
                std::this_thread::yield();
            startScan(QString::number(random() % folders));
        }
        if (round % 4 == 1) {
            // From another thread, at a moment of its own.
            std::thread([&] {
                while (figures.items < random() % 60 && scanQueue.operationCount() != 0)
                    std::this_thread::yield();
                scanQueue.cancelAllOperations();
                buildQueue.cancelAllOperations();
            }).join();
        }
        scanQueue.waitUntilAllOperationsAreFinished();
        expectConsistentCatalogue();
        if (HasFailure()) return;
    }
    importers.willRead = {};
    scan();
    QStringList onDisk;
    for (int i = 0; i < folders; ++i)
        for (const QString& name : QDir(path(QString::number(i))).entryList(QDir::Files))
            onDisk.append(name);
    onDisk.sort();
    EXPECT_EQ(rows(u"select FileName from ImageFile order by FileName"_s), onDisk);
    EXPECT_EQ(shown().size(), onDisk.size());
    EXPECT_EQ(
        thumbnailRows(u"select count(*) from Thumbnail"_s).value(0).toInt() >= onDisk.size(), true);
}
