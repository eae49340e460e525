#include "group/PBGroupTreeDataSource.h"

#include "group/PublicationMailbox.h"

#include "group/CatalogueFixture.h"
#include "group/ItemOrder.h"
#include "platform/MainLoop.h"

using namespace group;
using platform::MainLoop;
using support::describe;
using support::makeItem;
using support::spinUntil;
using support::text;

namespace {

struct FakeOutline final : GroupOutline {
    explicit FakeOutline(const PBGroupTreeDataSource& source) : _source(source) {}
    std::optional<PBOutlineViewScrollCapture> captureOutlineViewScroll() override {
        calls.append(u"capture"_s);
        return PBOutlineViewScrollCapture{selected, 4.5};
    }
    void scrollToScrollCapture(const PBOutlineViewScrollCapture& capture) override {
        calls.append(u"scroll to %1"_s.arg(capture.offset));
    }
    [[nodiscard]] std::shared_ptr<PBGroupItemData> selectedItem() const override {
        return selected;
    }
    void reloadData() override {
        selected = nullptr;
        calls.append(u"reload "_s + describe(_source.groupItemArray()));
    }
    void expandItem(const std::shared_ptr<PBGroupItemData>& item) override {
        calls.append(u"expand "_s + item->value().toText());
    }
    void selectItem(const std::shared_ptr<PBGroupItemData>& item) override {
        EXPECT_TRUE(_source.ignoreSelectionChanged());
        selected = item;
        calls.append(u"select "_s + item->value().toText());
    }
    std::shared_ptr<PBGroupItemData> selected;
    QStringList calls;

private:
    const PBGroupTreeDataSource& _source;
};

struct FakeDisplay final : GroupTreeDisplay {
    [[nodiscard]] bool isScrollingOrDragging() const override {
        ++asked;
        return isBusy;
    }
    void updateImageBrowserViewData() override { calls.append(u"browser"_s); }
    void updateLargeViewData() override { calls.append(u"large view"_s); }
    void updateImageBrowserTipView() override { calls.append(u"tip"_s); }
    void updateBrowserScrollCapture() override { calls.append(u"capture"_s); }
    bool isBusy = false;
    mutable int asked = 0;
    QStringList calls;
};

struct PBGroupTreeDataSourceTest : testing::Test {
    PBGroupTreeDataSourceTest() {
        source.setGroupItemArray_work(work);
        source.setOutline(&outline);
        source.setDisplay(&display);
    }
    void insert(const QString& model, int stars, const QString& name) {
        const std::vector<int> chain{CameraModel, StarRating};
        const PBArray data{model, stars};
        pushImageFileItemToWorkGroupItemArray(
            {makeItem(name), *work, chain, data, SortFileName, false});
    }
    void publish() { source.groupItemArrayDidFinish(makeGroupPublication(work)); }
    static void runLoop() {
        for (int round = 0; round < 20; ++round)
            QCoreApplication::processEvents();
    }
    [[nodiscard]] QString shown() const { return describe(source.groupItemArray()); }

    MainLoop loop;
    std::shared_ptr<PBGroupItemArray> work = std::make_shared<PBGroupItemArray>();
    PBGroupTreeDataSource source;
    FakeOutline outline{source};
    FakeDisplay display;
};

TEST_F(PBGroupTreeDataSourceTest, swapTellsTheViewsInOrderAndKeepsTheSelection) {
    insert(u"R5"_s, 1, u"a"_s);
    publish();
    EXPECT_EQ(outline.calls, (QStringList{u"reload R5(1(a))"_s, u"expand R5"_s}));
    EXPECT_EQ(display.calls, (QStringList{u"browser"_s, u"large view"_s, u"tip"_s}));
    ASSERT_EQ(source.leafGroupItemArray().size(), 1U);
    EXPECT_EQ(source.groupItemArray()[0]->data()->groupItem(), source.groupItemArray()[0].get());

    outline.selected = source.groupItemArray()[0]->data();
    outline.selected->setCollapsed(PBGroupItemData::CollapsedByUser);
    outline.calls.clear();
    display.calls.clear();
    source.setIsOutlineViewScrolled(true);
    insert(u"Z9"_s, 1, u"b"_s);
    source.groupItemArrayDidFinish(makeGroupPublication(work, true));
    EXPECT_EQ(
        outline.calls, (QStringList{
                           u"capture"_s, u"reload R5(1(a)) Z9(1(b))"_s, u"expand Z9"_s,
                           u"select R5"_s, u"scroll to 4.5"_s}));
    EXPECT_EQ(display.calls.back(), u"capture"_s);
    EXPECT_FALSE(source.ignoreSelectionChanged());
}

TEST_F(PBGroupTreeDataSourceTest, publicationsOfAReplacedScanAreDropped) {
    insert(u"R5"_s, 1, u"a"_s);
    const auto stale = makeGroupPublication(work);
    work = std::make_shared<PBGroupItemArray>();
    source.setGroupItemArray_work(work);
    source.groupItemArrayDidFinish(stale);
    EXPECT_TRUE(source.groupItemArray().empty());
    EXPECT_TRUE(outline.calls.isEmpty());
    source.setGroupItemArray_work(nullptr);
    source.groupItemArrayDidFinish(stale);
    EXPECT_TRUE(outline.calls.isEmpty());
}

TEST_F(PBGroupTreeDataSourceTest, whileTheUserScrollsTheLatestPublicationWaits) {
    display.isBusy = true;
    insert(u"R5"_s, 1, u"a"_s);
    publish();
    insert(u"R5"_s, 1, u"b"_s);
    publish();
    ASSERT_TRUE(spinUntil([&] { return display.asked > 10; }));
    EXPECT_TRUE(source.groupItemArray().empty());
    display.isBusy = false;
    ASSERT_TRUE(spinUntil([&] { return !source.groupItemArray().empty(); }));
    EXPECT_EQ(shown(), u"R5(1(a b))"_s);
    EXPECT_EQ(outline.calls.count(u"expand R5"_s), 1);

    // One that waits is older than one that is shown at once, and never comes after it.
    display.isBusy = true;
    publish();
    display.isBusy = false;
    insert(u"R5"_s, 1, u"c"_s);
    publish();
    outline.calls.clear();
    runLoop();
    EXPECT_TRUE(outline.calls.isEmpty());
    EXPECT_EQ(shown(), u"R5(1(a b c))"_s);

    display.isBusy = true;
    publish();
    source.cancelDelayedPublications();
    display.isBusy = false;
    runLoop();
    EXPECT_TRUE(outline.calls.isEmpty());
}

/// What a scan and the user do at once: the scan thread changes and publishes its tree, the main
/// thread shows the copies, edits items and folds groups.
TEST_F(PBGroupTreeDataSourceTest, scanThreadPublishesWhileTheMainThreadEdits) {
    constexpr int count = 600;
    std::jthread scan([work = work, publisher = source.publisher()] {
        const std::vector<int> chain{CameraModel, StarRating};
        PushRhythm rhythm(
            std::make_shared<PBMutableNumber>(0.0), std::make_shared<PBMutableNumber>(0));
        PBImageFileList added;
        for (int number = 0; number < count; ++number) {
            added.push_back(makeItem(u"P%1"_s.arg(number * 7919 % count), number));
            const PBArray data{u"M%1"_s.arg(number % 5), number % 3};
            pushImageFileItemToWorkGroupItemArray(
                {added.back(), *work, chain, data, SortFileName, false});
            if (number % 10 == 9) {
                PBImageFileList unwanted{added.front()};
                added.erase(added.begin());
                for (const auto& node : *work)
                    node->removeImageFiles(unwanted);
            }
            rhythm.itemWasAdded();
            if (!rhythm.isDue({20, 1e9}, false, 0)) continue;
            publisher(makeGroupPublication(work));
            rhythm.wasPushed(0);
        }
        publisher(makeGroupPublication(work));
    });
    const auto total = [&] {
        std::size_t images = 0;
        for (PBGroupItem* leaf : source.leafGroupItemArray()) {
            leaf->data()->setIsCollapsedForBrowser(true);
            for (const auto& item : leaf->imageFiles()) {
                item->setStar(item->star() + 1);
                item->setIsSelected(true);
                if (item->fileId() % 97 == 0) item->setFileName(item->fileName() + u'x');
            }
            images += leaf->imageFiles().size();
        }
        return images;
    };
    EXPECT_TRUE(spinUntil([&] { return total() == count - count / 10; }));
    scan.join();
    EXPECT_EQ(source.groupItemArray().size(), 5U);
}

TEST_F(PBGroupTreeDataSourceTest, ofPublicationsThatWaitTheNewestOfEachTreeIsShown) {
    PublicationMailbox mailbox;
    const auto other = std::make_shared<PBGroupItemArray>();
    EXPECT_TRUE(mailbox.put(makeGroupPublication(work, true)));
    const auto newest = makeGroupPublication(work);
    EXPECT_FALSE(mailbox.put(newest));
    // A late one of a former scan must not take the place of the present one's.
    const auto late = makeGroupPublication(other);
    EXPECT_TRUE(mailbox.put(late));
    EXPECT_TRUE(mailbox.put(makeGroupPublication(work)));
    EXPECT_EQ(mailbox.take(), newest);
    EXPECT_TRUE(newest->updateScrollCapture) << "what the replaced one asked for still holds";
    EXPECT_EQ(mailbox.take(), late);
    EXPECT_NE(mailbox.take(), nullptr);
    EXPECT_EQ(mailbox.take(), nullptr);
}

TEST_F(PBGroupTreeDataSourceTest, publisherMayOutliveTheDataSource) {
    auto other = std::make_unique<PBGroupTreeDataSource>();
    other->setGroupItemArray_work(work);
    const auto publisher = other->publisher();
    publisher(makeGroupPublication(work));
    other.reset();
    bool done = false;
    loop.post(MainLoop::Mode::Default, [&] { done = true; });
    EXPECT_TRUE(spinUntil([&] { return done; }));
}

TEST(PushRhythmTest, countTimeAndFocusMakeAPushDue) {
    const auto time = std::make_shared<PBMutableNumber>(100.0);
    const auto count = std::make_shared<PBMutableNumber>(0);
    PushRhythm rhythm(time, count);
    EXPECT_FALSE(rhythm.isDue(catalogueScanLimits, false, 200));
    EXPECT_TRUE(rhythm.isDue(catalogueScanLimits, true, 100));
    rhythm.itemWasAdded();
    EXPECT_FALSE(rhythm.isDue(catalogueScanLimits, false, 101));
    EXPECT_TRUE(rhythm.isDue(catalogueScanLimits, false, 101.1));
    // Another operation of the same scan goes on with the same counters.
    PushRhythm later(time, count);
    for (int item = 1; item < 100; ++item)
        later.itemWasAdded();
    EXPECT_FALSE(later.isDue(catalogueScanLimits, false, 100.5));
    later.itemWasAdded();
    EXPECT_TRUE(later.isDue(catalogueScanLimits, false, 100.5));
    EXPECT_FALSE(later.isDue(folderScanLimits, false, 100.5));
    later.wasPushed(100.5);
    EXPECT_FALSE(rhythm.isDue(catalogueScanLimits, false, 1000));
}

} // namespace
