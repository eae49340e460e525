#include "BrowserSheetTest.h"

#include "browser/state/BrowserScrollCapture.h"
#include "browser/state/BrowserSelection.h"
#include "group/FolderPaths.h"

namespace {

using enum FoldedLeaves;

struct BrowserSelectionTest : BrowserSheetTest {
    BrowserSelectionTest() : BrowserSheetTest({70, 0, 40}) {}
    auto capture() {
        return captureScrollWithMode(ScrollCaptureMode::Nearest, layout, leaves, visible, editing);
    }
    double restored(const std::optional<PBImageBrowserViewScrollCapture>& captured) {
        return scrollPositionOfCapture(*captured, layout, leaves, visible).value_or(-1);
    }

    BrowserSelection selection{leaves};
    QRectF visible{0, 1500, 558, 400};
    std::shared_ptr<PBImageFileItem> editing;
};

TEST_F(BrowserSelectionTest, answersAboutTheSelectionAcrossLeavesFoldedOrNot) {
    EXPECT_EQ(selection.firstSelectItem(Included), Index{});
    EXPECT_TRUE(selection.selectFrom({2, 1}, {0, 68})); // in either order
    EXPECT_FALSE(selection.selectFrom({2, 1}, {0, 68}) || selection.selectFrom({2, 1}, {}));
    EXPECT_EQ(tree.selected(), u"a68 a69 c0 c1");
    fold(2);
    EXPECT_EQ(
        std::pair(selection.itemCount(Excluded), selection.itemCount(Included)),
        std::pair(70L, 110L));
    selection.storeCommandSelect();
    EXPECT_TRUE(selection.deselectAll());
    EXPECT_FALSE(selection.deselectAll());
    EXPECT_TRUE(tree.item(0, 69)->storedSelect());
    EXPECT_TRUE(selection.selectFrom({0, 68}, {2, 1}));
    EXPECT_EQ(tree.selected(), u"a68 a69");
    EXPECT_TRUE(selection.selectAll(Excluded));
    EXPECT_EQ(selection.selectCount(Included), 70);
    // What lies in folded leaves is turned round, too.
    tree.item(0, 3)->setStar(2);
    EXPECT_TRUE(selection.invert(Included));
    EXPECT_EQ(selection.selectCount(Included), 40);
    EXPECT_TRUE(selection.selectWithStars(2, Included));
    EXPECT_FALSE(selection.selectWithStars(2, Included));
    EXPECT_EQ(tree.selected(), u"a3");
    // Images of folders that are missing have no path.
    struct Folders final : group::FolderPaths {
        QString pathOfFolderId(qint64 id) const override { return id == 1 ? u"/p"_s : QString(); }
    } folders;
    tree.add(0, u"z"_s, 2);
    leaves.refresh();
    EXPECT_TRUE(selection.deselectAll() && selection.selectFrom({0, 69}, {9, 0}));
    EXPECT_EQ(selection.selectCount(Included), 2);
    EXPECT_EQ(selection.selectedFilePath(folders, Included), QStringList{u"/p/a69"_s});
}

TEST_F(BrowserSelectionTest, whereverTheSelectionGoesItIsFoundWholeAndInOrder) {
    std::mt19937 random(7);
    const auto pick = [&](int end) { return static_cast<int>(random() % unsigned(end)); };
    const BrowserTree elsewhere{3}; // what is selected in another tree counts as well
    for (int round = 0; round < 400; ++round) {
        tree.data(2).setIsCollapsedForBrowser(pick(3) == 0);
        elsewhere.item(0, 1)->setIsSelected(pick(4) == 0);
        if (pick(3) == 0) (void)selection.deselectAll();
        const int first = pick(70), others = pick(4) == 0 ? pick(80) : pick(3);
        for (int other = 0; other < others; ++other)
            tree.item(2, pick(40))->setIsSelected(pick(2) == 0);
        (void)selection.selectFrom({0, first}, {0, std::min(first + others, 69)});
        for (const FoldedLeaves folded : {Included, Excluded}) {
            PBImageFileList expected;
            Index begin;
            leaves.forEachImage(folded, [&](const Index& index, const auto& item) {
                if (!item->isSelected()) return;
                if (expected.empty()) begin = index;
                expected.push_back(item);
            });
            ASSERT_EQ(selection.selectedFileArray(folded), expected) << round;
            ASSERT_EQ(selection.firstSelectItem(folded), begin) << round;
            ASSERT_EQ(selection.selectCount(folded), std::ssize(expected)) << round;
        }
    }
}

TEST_F(BrowserSelectionTest, aHeadOrARowNextToTheMiddleIsTheAnchor) {
    visible.moveTop(layout.groupItemPosition(2) + 11.5 - 200);
    const auto captured = capture();
    EXPECT_EQ(captured.value().groupItem.get(), &tree.data(2));
    tree.swapForCopy();
    look();
    EXPECT_EQ(restored(captured), visible.top());
    tree.tree.pop_back();
    look();
    EXPECT_EQ(restored(captured), -1);
    // In the gap between rows those around it are.
    visible.moveTop(layout.cellRectAtIndex({0, 30}).top() - 7 - 200);
    const auto inGap = capture();
    EXPECT_LE(std::abs(leaves.indexForImageFile(inGap.value().imageFileItem).item - 30), 3);
    tree.remove(0, {inGap->imageFileItem});
    leaves.refresh();
    EXPECT_EQ(restored(inGap), -1);
    tree.add(0, inGap->imageFileItem->fileName()); // its file was written anew
    leaves.refresh();
    EXPECT_GT(restored(inGap), visible.top()) << "the last one";
    editing = tree.item(0, 25);
    EXPECT_EQ(capture()->imageFileItem, editing) << "one that is being renamed, wherever it is";
}

} // namespace
