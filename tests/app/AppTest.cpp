#include "FMDB/FMDatabase.h"
#include "app/DamagedCatalogue.h"
#include "app/IdleWatch.h"
#include "app/ScanControl.h"
#include "app/ScanPipeline.h"
#include "catalogue/PBCatalogue.h"
#include "platform/MainLoop.h"
#include "platform/OperationQueue.h"

#include "support/Support.h"

#include <latch>

namespace {

/// A scan control without a window; the one root is at the path, if there is any.
struct ScanControlTest : testing::Test {
    ScanControlTest() {
        for (FMDatabase* db : {&files, &scanFiles, &buildThumbnails})
            EXPECT_TRUE(db->open());
        PBCatalogue(files).checkTables_FilesDb();
        PBCatalogue(buildThumbnails).checkTables_Thumbnail();
    }
    ~ScanControlTest() override {
        for (platform::OperationQueue* queue : {&preload, &scan, &build}) {
            queue->cancelAllOperations();
            queue->waitUntilAllOperationsAreFinished();
        }
    }
    void select(const QString& path) {
        root = path.isEmpty()
                   ? nullptr
                   : PBAliasObject::aliasObjectWithId(1, {}, QUrl::fromLocalFile(path), path, 0, 0);
    }

    class NoServices final : public PBAliasServices {
        platform::Resolution resolveAlias(const PBAliasObject&, bool, QString*) override {
            return {};
        }
        bool storeReservePath(std::int64_t, const QString&) override { return true; }
    };

    QTemporaryDir folder;
    FMDatabase files{folder.filePath(u"files.db"_s)};
    FMDatabase scanFiles{files.databasePath()};
    FMDatabase buildThumbnails{folder.filePath(u"thumbnail.db"_s)};
    NoServices aliasServices;
    PBAliasManager aliases{{files, aliasServices, {}}};
    PBGeoManager places{nullptr, [](const std::function<void()>&) {}};
    std::mutex lock;
    int changes = 0;
    std::shared_ptr<PBAliasObject> root;
    platform::OperationQueue preload{u"preload"_s};
    platform::OperationQueue scan{u"scan"_s};
    platform::OperationQueue build{u"build"_s};
    ScanPipeline pipeline{
        {.geoManager = places,
         .scanFileDb = scanFiles,
         .buildThumbDb = buildThumbnails,
         .scanQueue = scan,
         .buildQueue = build,
         .aliasManager = aliases,
         .insertFolderAliasLock = lock,
         .isBeingWritten = {},
         .scanFinished = [this] { control.scanFinished(); }}};
    ScanControl control{
        {.preload = preload,
         .scan = scan,
         .build = build,
         .pipeline = pipeline,
         .selection =
             [this] {
                 return ScanControl::Selection{root, {}};
             },
         .browsing = [] { return ScanBrowsing(); },
         .clearDisplay = [] {},
         .stateChanged = [this] { ++changes; }}};
};

TEST_F(ScanControlTest, scanCancelsAndResumesEveryQueueWithoutWaiting) {
    std::latch started(1);
    std::latch release(1);
    scan.addOperation([&] {
        started.count_down();
        release.wait();
    });
    build.setSuspended(true);
    build.addOperation([] {});
    started.wait();
    control.scan(); // would never come back if it waited for the running operation
    // What waited may just have begun between resuming and cancelling; nothing is left of it.
    build.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(build.isSuspended());
    EXPECT_EQ(changes, 1);
    EXPECT_FALSE(control.isScanning()) << "nothing is selected";
    EXPECT_FALSE(pipeline.groupTreeDataSource().groupItemArray_work());
    release.count_down();
    scan.waitUntilAllOperationsAreFinished();
}

TEST_F(ScanControlTest, theEndOfAFormerScanIsNotThatOfThePresentOne) {
    select(folder.path());
    control.scan();
    scan.waitUntilAllOperationsAreFinished(); // its end is on the way
    const auto former = pipeline.groupTreeDataSource().groupItemArray_work();
    std::latch release(1);
    scan.addOperation([&] { release.wait(); });
    control.scan();
    EXPECT_NE(pipeline.groupTreeDataSource().groupItemArray_work(), former);
    bool posted = false;
    platform::MainLoop::instance()->post(platform::MainLoop::Mode::Default, [&] { posted = true; });
    ASSERT_TRUE(support::spinUntil([&] { return posted; }));
    EXPECT_TRUE(control.isScanning());
    release.count_down();
    EXPECT_TRUE(support::spinUntil([&] { return !control.isScanning(); }));
    EXPECT_EQ(changes, 3);

    select({});
    control.scan();
    EXPECT_FALSE(control.isScanning());
}

TEST(DamagedCatalogueTest, nothingHappensToTheFileUnlessTheUserSaysSo) {
    QTemporaryDir folder;
    const QString file = folder.filePath(u"files.db"_s);
    DamagedCatalogue::Choice choice = DamagedCatalogue::Choice::Quit;
    int asked = 0;
    const auto settle = [&] {
        return DamagedCatalogue::settle(file, [&](const QString&, const QString& reason) {
            EXPECT_FALSE(reason.isEmpty());
            ++asked;
            return choice;
        });
    };
    EXPECT_TRUE(settle()) << "no file yet";
    {
        FMDatabase sound(file);
        ASSERT_TRUE(sound.open());
        PBCatalogue(sound).checkTables_FilesDb();
    }
    EXPECT_TRUE(settle());
    EXPECT_EQ(asked, 0);

    const QByteArray damaged = support::readFile(file).left(5000);
    support::writeFile(file, damaged);
    EXPECT_FALSE(settle());
    choice = DamagedCatalogue::Choice::GoWithout;
    EXPECT_TRUE(settle());
    EXPECT_EQ(support::readFile(file), damaged);
    choice = DamagedCatalogue::Choice::StartAnew;
    for (const char* name : {"/files.db.damaged", "/files.db.damaged-2"}) {
        support::writeFile(file, damaged);
        EXPECT_TRUE(settle());
        EXPECT_FALSE(QFile::exists(file));
        EXPECT_EQ(support::readFile(folder.path() + QLatin1StringView(name)), damaged);
    }
    EXPECT_EQ(asked, 4);
}

TEST(IdleWatchTest, oneIdleLookBetweenBusyOnesIsNoEnd) {
    int look = 0;
    bool became = false;
    IdleWatch watch([&] { return ++look == 2 || look >= 5; });
    QObject::connect(&watch, &IdleWatch::becameIdle, &watch, [&] { became = true; });
    watch.start();
    ASSERT_TRUE(support::spinUntil([&] { return became; }));
    EXPECT_EQ(look, 6);
}

} // namespace
