#include "FMDB/FMDatabase.h"
#include "app/DamagedCatalogue.h"
#include "app/IdleWatch.h"
#include "app/RunningProgram.h"
#include "browser/PBImageBrowserTipView.h"
#include "platform/tasks/MainLoop.h"

#include <latch>

namespace {

struct ScanControlTest : RunningProgramTest {
    /// An operation of the scan queue has begun and doesn't end before `release`.
    void holdScanQueue() {
        scan.addOperation([this] {
            began.count_down();
            release.wait();
        });
        began.wait();
    }

    std::latch began{1};
    std::latch release{1};
    platform::OperationQueue& scan = controller->shellServices().scanOperationQueue;
    platform::OperationQueue& build = controller->shellServices().buildThumbOperationQueue;
    PBGroupTreeDataSource& trees = controller->shellServices().groupTreeDataSource;
};

TEST_F(ScanControlTest, scanCancelsAndResumesEveryQueueWithoutWaiting) {
    holdScanQueue();
    build.setSuspended(true);
    build.addOperation([] {});
    trees.setIsOutlineViewScrolled(true);
    controller->scan(); // would never come back if it waited for the running operation
    // What waited may just have begun between resuming and cancelling; nothing is left of it.
    build.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(build.isSuspended() || trees.isOutlineViewScrolled());
    EXPECT_FALSE(controller->isScanning() || trees.groupItemArray_work()) << "nothing is selected";
    release.count_down();
    scan.waitUntilAllOperationsAreFinished();
}

TEST_F(ScanControlTest, theEndOfAFormerScanIsNotThatOfThePresentOne) {
    makePicture(u"p/a.png"_s);
    ASSERT_TRUE(controller->addFolders({path(u"p"_s)}));
    ASSERT_TRUE(shows(1));
    controller->scan();
    scan.waitUntilAllOperationsAreFinished(); // its end is on the way
    EXPECT_EQ(selection().itemCount(FoldedLeaves::Included), 0);
    const auto former = trees.groupItemArray_work();
    holdScanQueue(); // one that waits is taken out of the queue
    controller->scan();
    EXPECT_NE(trees.groupItemArray_work(), former);
    EXPECT_EQ(window().imageBrowserTipView().tipKind(), 4);
    bool posted = false;
    platform::MainLoop::instance()->post(platform::MainLoop::Mode::Default, [&] { posted = true; });
    ASSERT_TRUE(support::spinUntil([&] { return posted; }));
    EXPECT_TRUE(controller->isScanning());
    release.count_down();
    scan.waitUntilAllOperationsAreFinished();
    EXPECT_TRUE(support::spinUntil([this] { return !controller->isScanning(); }));
}

TEST(DamagedCatalogueTest, nothingHappensToTheFileUnlessTheUserSaysSo) {
    QTemporaryDir folder;
    const QString file = folder.filePath(u"files.db"_s);
    using Choice = DamagedCatalogue::Choice;
    int asked = 0;
    const auto settle = [&](Choice choice) {
        return DamagedCatalogue::settle(file, [&](const QString&, const QString& reason) {
            EXPECT_FALSE(reason.isEmpty());
            ++asked;
            return choice;
        });
    };
    EXPECT_TRUE(settle(Choice::Quit)) << "no file yet";
    std::optional<FMDatabase> sound(file);
    ASSERT_TRUE(sound->open());
    PBCatalogue(*sound).checkTables_FilesDb();
    sound.reset();
    EXPECT_TRUE(settle(Choice::Quit));
    const QByteArray damaged = support::readFile(file).left(5000);
    support::writeFile(file, damaged);
    EXPECT_FALSE(settle(Choice::Quit));
    EXPECT_TRUE(settle(Choice::GoWithout));
    EXPECT_EQ(support::readFile(file), damaged);
    for (const QString& name : {u".damaged"_s, u".damaged-2"_s}) {
        support::writeFile(file, damaged);
        EXPECT_TRUE(settle(Choice::StartAnew));
        EXPECT_FALSE(QFile::exists(file));
        EXPECT_EQ(support::readFile(file + name), damaged);
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
