#include "group/PBGroupTreeDataSource.h"

#include "group/CatalogueFixture.h"
#include "group/PublicationMailbox.h"
#include "platform/tasks/MainLoop.h"

using namespace group;
using platform::MainLoop;
using support::describe;
using support::insertByModelAndStars;
using support::makeItem;
using support::spinUntil;

namespace {

/// Notes what it is told, as outline and as display.
struct PBGroupTreeDataSourceTest : testing::Test, GroupOutline, GroupTreeDisplay {
    PBGroupTreeDataSourceTest() {
        source.setGroupItemArray_work(work);
        source.setOutline(this);
        source.setDisplay(this);
    }
    std::optional<PBOutlineViewScrollCapture> captureOutlineViewScroll() override {
        calls.append(u"capture"_s);
        return PBOutlineViewScrollCapture{selected, 4.5};
    }
    void scrollToScrollCapture(const PBOutlineViewScrollCapture& capture) override {
        calls.append(u"scroll to %1"_s.arg(capture.offset));
    }
    std::shared_ptr<PBGroupItemData> selectedItem() const override { return selected; }
    void reloadData() override {
        selected = nullptr;
        calls.append(u"reload "_s + describe(source.groupItemArray()));
    }
    void expandItem(const std::shared_ptr<PBGroupItemData>& item) override {
        calls.append(u"expand "_s + item->value().toText());
    }
    void selectItem(const std::shared_ptr<PBGroupItemData>& item) override {
        EXPECT_TRUE(source.ignoreSelectionChanged());
        selected = item;
        calls.append(u"select "_s + item->value().toText());
    }
    bool isScrollingOrDragging() const override {
        ++asked;
        return isBusy;
    }
    void updateImageBrowserViewData() override { calls.append(u"browser"_s); }
    void updateLargeViewData() override { calls.append(u"large view"_s); }
    void updateImageBrowserTipView() override { calls.append(u"tip"_s); }
    void updateBrowserScrollCapture() override { calls.append(u"capture browser"_s); }
    /// Publishes the tree with one more image.
    void publishWith(const QString& model, const QString& name, bool updateScroll = false) {
        insertByModelAndStars(*work, model, 1, makeItem(name));
        source.groupItemArrayDidFinish(makeGroupPublication(work, updateScroll));
    }
    void publish() { source.groupItemArrayDidFinish(makeGroupPublication(work)); }
    static void runLoop() {
        for (int round = 0; round < 20; ++round)
            QCoreApplication::processEvents();
    }
    QString shown() const { return describe(source.groupItemArray()); }
    QString takeCalls() { return std::exchange(calls, {}).join(u", "_s); }

    MainLoop loop;
    std::shared_ptr<PBGroupItemArray> work = std::make_shared<PBGroupItemArray>();
    PBGroupTreeDataSource source;
    std::shared_ptr<PBGroupItemData> selected;
    bool isBusy = false;
    mutable int asked = 0;
    QStringList calls;
};

TEST_F(PBGroupTreeDataSourceTest, swapTellsTheViewsInOrderAndKeepsTheSelection) {
    publishWith(u"R5"_s, u"a"_s);
    EXPECT_EQ(takeCalls(), u"reload R5(1(a)), expand R5, browser, large view, tip"_s);
    ASSERT_EQ(source.leafGroupItemArray().size(), 1U);
    EXPECT_EQ(source.groupItemArray()[0]->data()->groupItem(), source.groupItemArray()[0].get());

    selected = source.groupItemArray()[0]->data();
    selected->setCollapsed(PBGroupItemData::CollapsedByUser);
    source.setIsOutlineViewScrolled(true);
    publishWith(u"Z9"_s, u"b"_s, true);
    EXPECT_EQ(
        takeCalls(), u"capture, reload R5(1(a)) Z9(1(b)), expand Z9, select R5, scroll to 4.5, "
                     "browser, large view, tip, capture browser"_s);
    EXPECT_FALSE(source.ignoreSelectionChanged());

    // A group that is gone is not selected, and has no node; views that are gone are not told.
    const auto gone = selected;
    work->erase(work->begin());
    publish();
    EXPECT_EQ(gone->groupItem(), nullptr);
    EXPECT_FALSE(takeCalls().contains(u"select R5"_s));
    source.setOutline(nullptr);
    source.setDisplay(nullptr);
    publishWith(u"Z9"_s, u"c"_s);
    EXPECT_EQ(shown(), u"Z9(1(b c))"_s);
    EXPECT_EQ(takeCalls(), u""_s);
}

TEST_F(PBGroupTreeDataSourceTest, publicationsOfAReplacedScanOrForADataSourceThatIsGoneAreDropped) {
    insertByModelAndStars(*work, u"R5"_s, 1, makeItem(u"a"_s));
    const auto stale = makeGroupPublication(work);
    for (const auto& next : {std::make_shared<PBGroupItemArray>(), {}}) {
        source.setGroupItemArray_work(next);
        source.groupItemArrayDidFinish(stale);
        EXPECT_TRUE(source.groupItemArray().empty() && calls.isEmpty());
    }
    auto other = std::make_unique<PBGroupTreeDataSource>();
    other->setGroupItemArray_work(work);
    other->publisher()(stale);
    other.reset();
    runLoop();
}

TEST_F(PBGroupTreeDataSourceTest, whileTheUserScrollsTheLatestPublicationWaits) {
    isBusy = true;
    publishWith(u"R5"_s, u"a"_s);
    publishWith(u"R5"_s, u"b"_s);
    runLoop();
    EXPECT_EQ(asked, 2) << "the main thread rests meanwhile";
    EXPECT_TRUE(source.groupItemArray().empty());
    isBusy = false;
    source.motionDidEnd();
    runLoop();
    EXPECT_EQ(shown(), u"R5(1(a b))"_s);
    // A motion whose end nobody tells ends, too; what the replaced one asked for still holds.
    source.setGroupItemArray({});
    isBusy = true;
    source.groupItemArrayDidFinish(makeGroupPublication(work, true));
    calls.clear();
    publish();
    isBusy = false;
    ASSERT_TRUE(spinUntil([&] { return !source.groupItemArray().empty(); }));
    EXPECT_EQ(shown(), u"R5(1(a b))"_s);
    EXPECT_EQ(calls.count(u"expand R5"_s), 1);
    EXPECT_TRUE(calls.contains(u"capture browser"_s));

    // One that waits is older than one that is shown at once, and never comes after it.
    isBusy = true;
    publish();
    isBusy = false;
    publishWith(u"R5"_s, u"c"_s);
    calls.clear();
    runLoop();
    EXPECT_TRUE(calls.isEmpty());
    EXPECT_EQ(shown(), u"R5(1(a b c))"_s);

    isBusy = true;
    publish();
    source.cancelDelayedPublications();
    isBusy = false;
    runLoop();
    EXPECT_TRUE(calls.isEmpty());
}

/// What a scan and the user do at once: the scan thread changes and publishes its tree, the main
/// thread shows the copies, edits items and folds groups.
TEST_F(PBGroupTreeDataSourceTest, scanThreadPublishesWhileTheMainThreadEdits) {
    constexpr int count = 600;
    std::jthread scan([work = work, publisher = source.publisher()] {
        for (int number = 0; number < count; ++number) {
            const auto item = makeItem(u"P%1"_s.arg(number * 7919 % count), number);
            insertByModelAndStars(*work, u"M%1"_s.arg(number % 5), number % 3, item);
            if (number % 20 == 19) publisher(makeGroupPublication(work));
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
    EXPECT_TRUE(spinUntil([&] { return total() == count; }));
    scan.join();
    EXPECT_EQ(source.groupItemArray().size(), 5U);
}

TEST_F(PBGroupTreeDataSourceTest, aScanKnowsWhetherItsLastTreeIsOnShow) {
    const auto waits = source.waitsForDisplay();
    QStringList ends;
    const auto end = [&](const std::shared_ptr<PBGroupItemArray>& tree) {
        source.whenShown(tree, [&] { ends << shown(); });
    };
    EXPECT_FALSE(waits());
    isBusy = true;
    insertByModelAndStars(*work, u"R5"_s, 1, makeItem(u"a"_s));
    source.publisher()(makeGroupPublication(work));
    EXPECT_TRUE(waits());
    end(work);
    runLoop();
    EXPECT_TRUE(waits() && ends.isEmpty()) << "held back while the user scrolls";
    isBusy = false;
    source.motionDidEnd();
    ASSERT_TRUE(spinUntil([&] { return !ends.isEmpty(); }));
    EXPECT_FALSE(waits());
    EXPECT_EQ(ends, QStringList{u"R5(1(a))"_s});

    // Of two trees in a row the second one waits for a while.
    publishWith(u"R5"_s, u"b"_s);
    insertByModelAndStars(*work, u"R5"_s, 1, makeItem(u"c"_s));
    source.publisher()(makeGroupPublication(work));
    end(work);
    ASSERT_TRUE(spinUntil([&] { return ends.size() == 2; }));
    EXPECT_EQ(ends[1], u"R5(1(a b c))"_s);

    // It comes as well where what waits is dropped, but not to the next scan.
    isBusy = true;
    publish();
    end(work);
    source.cancelDelayedPublications();
    ASSERT_TRUE(spinUntil([&] { return ends.size() == 3; }));
    publish();
    end(work);
    source.setGroupItemArray_work(std::make_shared<PBGroupItemArray>());
    end(work);
    source.cancelDelayedPublications();
    runLoop();
    EXPECT_EQ(ends.size(), 3);
    end(source.groupItemArray_work());
    EXPECT_EQ(ends.size(), 4) << "nothing waits";
}

TEST_F(PBGroupTreeDataSourceTest, ofAFolderThatWasJustSelectedTheFirstTreeIsShownAtOnce) {
    const auto publish = source.publisher();
    publishWith(u"R5"_s, u"a"_s);
    publish(makeGroupPublication(work)); // waits while the sheet rests
    runLoop();
    const auto next = std::make_shared<PBGroupItemArray>();
    insertByModelAndStars(*next, u"Z9"_s, 1, makeItem(u"b"_s));
    source.setGroupItemArray_work(next);
    publish(makeGroupPublication(next));
    runLoop();
    EXPECT_EQ(shown(), u"Z9(1(b))"_s);
}

TEST_F(PBGroupTreeDataSourceTest, ofPublicationsThatWaitTheNewestOfEachTreeIsShown) {
    PublicationMailbox mailbox;
    EXPECT_TRUE(mailbox.put(makeGroupPublication(work, true)));
    const auto newest = makeGroupPublication(work);
    EXPECT_FALSE(mailbox.put(newest));
    // A late one of a former scan must not take the place of the present one's.
    const auto late = makeGroupPublication(std::make_shared<PBGroupItemArray>());
    EXPECT_TRUE(mailbox.put(late));
    EXPECT_TRUE(mailbox.put(makeGroupPublication(work)));
    EXPECT_EQ(mailbox.take(), newest);
    EXPECT_TRUE(newest->updateScrollCapture) << "what the replaced one asked for still holds";
    EXPECT_EQ(mailbox.take(), late);
    EXPECT_NE(mailbox.take(), nullptr);
    EXPECT_EQ(mailbox.take(), nullptr);
}

TEST(PushRhythmTest, anOpenedFileIsDueAtOnceAndTimeCountsOnlyForNewItems) {
    PushRhythm rhythm(std::make_shared<PBMutableNumber>(100), std::make_shared<PBMutableNumber>(0));
    EXPECT_TRUE(rhythm.isDue(catalogueScanLimits, true, 100));
    EXPECT_FALSE(rhythm.isDue(catalogueScanLimits, false, 200));
    rhythm.itemWasAdded();
    EXPECT_TRUE(rhythm.isDue(catalogueScanLimits, false, 200));
    for (quint64 count = 1; count < catalogueScanLimits.count; ++count)
        rhythm.itemWasAdded();
    EXPECT_FALSE(rhythm.isDue(catalogueScanLimits, false, 100));
    rhythm.itemWasAdded();
    EXPECT_TRUE(rhythm.isDue(catalogueScanLimits, false, 100));
}

} // namespace
