#include "BrowserTree.h"

#include "browser/BrowserScrollCapture.h"
#include "browser/BrowserSelection.h"
#include "support/Support.h"

namespace {

using Index = PBImageBrowserIndex;

struct BrowserSelectionTest : ::testing::Test {
    BrowserSelectionTest() {
        look();
        layout.setLeaves(&leaves);
        layout.setWidth(558, 0);
    }
    void look() {
        leaves.setLeafGroupItemArray(tree.leaves());
        layout.invalidate();
    }
    auto capture(ScrollCaptureMode mode) {
        return captureScrollWithMode(mode, layout, leaves, visible, editing);
    }
    double restored(const std::optional<PBImageBrowserViewScrollCapture>& captured) {
        return scrollPositionOfCapture(*captured, layout, leaves, visible).value_or(-1);
    }

    BrowserTree tree{70, 0, 40};
    BrowserLeafList leaves;
    BrowserLayout layout;
    BrowserSelection selection{leaves};
    QRectF visible{0, 1500, 558, 400};
    std::shared_ptr<PBImageFileItem> editing;
};

TEST_F(BrowserSelectionTest, answersAboutTheSelectionAcrossLeaves) {
    EXPECT_FALSE(selection.hasSelect(true));
    EXPECT_EQ(selection.firstSelectItem(true), Index{});
    EXPECT_TRUE(selection.selectFrom({2, 1}, {0, 68}, true, true)); // in either order
    EXPECT_FALSE(selection.selectFrom({2, 1}, {0, 68}, true, true));
    EXPECT_FALSE(selection.selectFrom({2, 1}, {}, true, true));
    EXPECT_EQ(tree.selected(), u"a68 a69 c0 c1");
    EXPECT_EQ(selection.selectCount(true), 4);
    EXPECT_EQ(selection.firstSelectItem(true), (Index{0, 68}));
    EXPECT_EQ(selection.lastSelectItem(true), (Index{2, 1}));
    tree.data(2).setIsCollapsedForBrowser(true);
    EXPECT_EQ(selection.selectCount(false), 2);
    EXPECT_EQ(selection.itemCount(false), 70);
    EXPECT_EQ(selection.itemCount(true), 110);
    EXPECT_EQ(selection.lastSelectItem(false), (Index{0, 69}));
    EXPECT_EQ(selection.selectedFileArray(false).size(), 2U);
    selection.storeCommandSelect(true);
    EXPECT_TRUE(tree.item(0, 69)->storedSelect());
    EXPECT_TRUE(selection.selectAll(false, true));
    EXPECT_FALSE(selection.selectAll(false, true));
    EXPECT_TRUE(tree.item(0, 69)->storedSelect());
}

TEST_F(BrowserSelectionTest, aHeadInTheMiddleIsTheAnchorToo) {
    visible.moveTop(layout.groupItemPosition(2) + 11.5 - 200);
    const auto captured = capture(ScrollCaptureMode::Nearest);
    ASSERT_TRUE(captured);
    EXPECT_EQ(captured->imageFileItem, nullptr);
    EXPECT_EQ(captured->groupItem.get(), &tree.data(2));
    tree.swapForCopy();
    look();
    EXPECT_EQ(restored(captured), visible.top());
    tree.tree.pop_back();
    look();
    EXPECT_EQ(restored(captured), -1);
}

TEST_F(BrowserSelectionTest, theGapBetweenRowsHasTheRowsAroundItForAnchors) {
    visible.moveTop(layout.cellRectAtIndex({0, 30}).top() - 7 - 200);
    const auto captured = capture(ScrollCaptureMode::Nearest);
    ASSERT_TRUE(captured && captured->imageFileItem);
    EXPECT_LE(std::abs(leaves.indexForImageFile(captured->imageFileItem).item - 30), 3);
    PBImageFileList gone{captured->imageFileItem};
    tree.tree[0]->removeImageFiles(gone);
    leaves.refresh();
    EXPECT_EQ(restored(captured), -1);
}

TEST_F(BrowserSelectionTest, theSelectionOrARenamedImageMayBeTheAnchor) {
    EXPECT_FALSE(capture(ScrollCaptureMode::FirstSelection));
    const auto end = capture(ScrollCaptureMode::VisibleSelection);
    EXPECT_EQ(end->type, PBImageBrowserViewScrollCapture::EndOfSheet);
    EXPECT_EQ(restored(end), layout.contentHeight());
    tree.item(0, 1)->setIsSelected(true); // above
    EXPECT_EQ(
        capture(ScrollCaptureMode::VisibleSelection)->type,
        PBImageBrowserViewScrollCapture::EndOfSheet);
    tree.item(0, 29)->setIsSelected(true);
    EXPECT_EQ(capture(ScrollCaptureMode::VisibleSelection)->imageFileItem, tree.item(0, 29));
    const auto first = capture(ScrollCaptureMode::FirstSelection);
    EXPECT_EQ(first->imageFileItem, tree.item(0, 1));
    EXPECT_EQ(restored(first), layout.cellRectAtIndex({0, 1}).center().y());
    editing = tree.item(0, 25);
    for (const auto mode : {ScrollCaptureMode::Nearest, ScrollCaptureMode::FirstSelection})
        EXPECT_EQ(capture(mode)->imageFileItem, editing);
}

TEST_F(BrowserSelectionTest, searchesFindImagesNearAndFar) {
    BrowserTree large{3000, 1, 1, 3000};
    leaves.setLeafGroupItemArray(large.leaves());
    for (const Index visibleBegin : {Index{}, Index{0, 2990}, Index{3, 10}, Index{9, 0}}) {
        leaves.setVisible(visibleBegin);
        for (const Index index : {Index{0, 0}, Index{0, 2999}, Index{1, 0}, Index{3, 2999}})
            EXPECT_EQ(leaves.indexForImageFile(leaves.imageFileAtIndex(index)), index);
        EXPECT_EQ(leaves.indexForImageFile(tree.item(0, 0)), Index{});
    }
    EXPECT_EQ(leaves.imageFileAtIndex({4, 0}), nullptr);
    EXPECT_EQ(leaves.imageFileAtIndex({1, 1}), nullptr);
}

} // namespace
