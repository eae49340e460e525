#include "group/PBGroupTreeDataSource.h"

#include "group/PublicationMailbox.h"

#include "group/CatalogueFixture.h"
#include "group/ItemOrder.h"
#include "platform/MainLoop.h"
#include "support/Support.h"

#include <QStringList>

#include <thread>

using namespace group;
using platform::MainLoop;
using support::describe;
using support::makeItem;
using support::spinUntil;
using support::text;

namespace {

class FakeOutline final : public GroupOutline {
public:
    explicit FakeOutline(const PBGroupTreeDataSource& source) : _source(source) {}
    std::optional<PBOutlineViewScrollCapture> captureOutlineViewScroll() override {
        calls.append(text(u"capture"));
        return PBOutlineViewScrollCapture{selected, 4.5};
    }
    void scrollToScrollCapture(const PBOutlineViewScrollCapture& capture) override {
        calls.append(text(u"scroll to %1").arg(capture.offset));
    }
    [[nodiscard]] std::shared_ptr<PBGroupItemData> selectedItem() const override {
        return selected;
    }
    void reloadData() override {
        selected = nullptr;
        calls.append(text(u"reload ") + describe(_source.groupItemArray()));
    }
    void expandItem(const std::shared_ptr<PBGroupItemData>& item) override {
        calls.append(text(u"expand ") + item->value().toText());
    }
    void selectItem(const std::shared_ptr<PBGroupItemData>& item) override {
        EXPECT_TRUE(_source.ignoreSelectionChanged());
        selected = item;
        calls.append(text(u"select ") + item->value().toText());
    }
    std::shared_ptr<PBGroupItemData> selected;
    QStringList calls;

private:
    const PBGroupTreeDataSource& _source;
};

class FakeDisplay final : public GroupTreeDisplay {
public:
    [[nodiscard]] bool isScrollingOrDragging() const override {
        ++asked;
        return isBusy;
    }
    void updateImageBrowserViewData() override { calls.append(text(u"browser")); }
    void updateLargeViewData() override { calls.append(text(u"large view")); }
    void updateImageBrowserTipView() override { calls.append(text(u"tip")); }
    void updateBrowserScrollCapture() override { calls.append(text(u"capture")); }
    bool isBusy = false;
    mutable int asked = 0;
    QStringList calls;
};

class PBGroupTreeDataSourceTest : public testing::Test {
protected:
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
    [[nodiscard]] QString shown() const { return describe(source.groupItemArray()); }

    MainLoop loop;
    std::shared_ptr<PBGroupItemArray> work = std::make_shared<PBGroupItemArray>();
    PBGroupTreeDataSource source;
    FakeOutline outline{source};
    FakeDisplay display;
};

TEST_F(PBGroupTreeDataSourceTest, swapTellsTheViewsInOrderAndKeepsTheSelection) {
    insert(text(u"R5"), 1, text(u"a"));
    publish();
    EXPECT_EQ(outline.calls, (QStringList{text(u"reload R5(1(a))"), text(u"expand R5")}));
    EXPECT_EQ(display.calls, (QStringList{text(u"browser"), text(u"large view"), text(u"tip")}));
    ASSERT_EQ(source.leafGroupItemArray().size(), 1U);
    EXPECT_EQ(source.groupItemArray()[0]->data()->groupItem(), source.groupItemArray()[0].get());

    outline.selected = source.groupItemArray()[0]->data();
    outline.selected->setCollapsed(PBGroupItemData::CollapsedByUser);
    outline.calls.clear();
    display.calls.clear();
    source.setIsOutlineViewScrolled(true);
    insert(text(u"Z9"), 1, text(u"b"));
    source.groupItemArrayDidFinish(makeGroupPublication(work, true));
    EXPECT_EQ(
        outline.calls, (QStringList{
                           text(u"capture"), text(u"reload R5(1(a)) Z9(1(b))"), text(u"expand Z9"),
                           text(u"select R5"), text(u"scroll to 4.5")}));
    EXPECT_EQ(display.calls.back(), text(u"capture"));
    EXPECT_FALSE(source.ignoreSelectionChanged());
}

TEST_F(PBGroupTreeDataSourceTest, aSelectedGroupThatIsGoneIsNotSelectedAgain) {
    insert(text(u"R5"), 1, text(u"a"));
    insert(text(u"Z9"), 1, text(u"b"));
    publish();
    const auto gone = source.groupItemArray()[0]->data();
    outline.selected = gone;
    work->erase(work->begin());
    publish();
    EXPECT_EQ(outline.selected, nullptr);
    EXPECT_EQ(gone->groupItem(), nullptr);
    EXPECT_EQ(shown(), text(u"Z9(1(b))"));
}

TEST_F(PBGroupTreeDataSourceTest, publicationsOfAReplacedScanAreDropped) {
    insert(text(u"R5"), 1, text(u"a"));
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
    insert(text(u"R5"), 1, text(u"a"));
    publish();
    insert(text(u"R5"), 1, text(u"b"));
    publish();
    ASSERT_TRUE(spinUntil([&] { return display.asked > 10; }));
    EXPECT_TRUE(source.groupItemArray().empty());
    display.isBusy = false;
    ASSERT_TRUE(spinUntil([&] { return !source.groupItemArray().empty(); }));
    EXPECT_EQ(shown(), text(u"R5(1(a b))"));
    EXPECT_EQ(outline.calls.count(text(u"expand R5")), 1);

    // One that waits is older than one that is shown at once, and never comes after it.
    display.isBusy = true;
    publish();
    display.isBusy = false;
    insert(text(u"R5"), 1, text(u"c"));
    publish();
    outline.calls.clear();
    for (int round = 0; round < 20; ++round)
        QCoreApplication::processEvents();
    EXPECT_TRUE(outline.calls.isEmpty());
    EXPECT_EQ(shown(), text(u"R5(1(a b c))"));

    display.isBusy = true;
    publish();
    source.cancelDelayedPublications();
    display.isBusy = false;
    for (int round = 0; round < 20; ++round)
        QCoreApplication::processEvents();
    EXPECT_TRUE(outline.calls.isEmpty());
}

TEST_F(PBGroupTreeDataSourceTest, chainOfNoLinkShowsOneLeaf) {
    pushImageFileItemToWorkGroupItemArray(
        {makeItem(text(u"a")), *work, {}, {}, SortFileName, false});
    publish();
    ASSERT_EQ(source.leafGroupItemArray().size(), 1U);
    EXPECT_EQ(source.leafGroupItemArray()[0], source.groupItemArray()[0].get());
    EXPECT_EQ(outline.calls, QStringList{text(u"reload absent(a)")});
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
            added.push_back(makeItem(text(u"P%1").arg(number * 7919 % count), number));
            const PBArray data{text(u"M%1").arg(number % 5), number % 3};
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
