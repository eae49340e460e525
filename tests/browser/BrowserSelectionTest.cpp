#include "BrowserTree.h"

#include "browser/state/BrowserScrollCapture.h"
#include "browser/state/BrowserSelection.h"
#include "group/FolderPaths.h"

namespace {

using Index = PBImageBrowserIndex;
using enum FoldedLeaves;

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
    auto capture(ScrollCaptureMode mode = ScrollCaptureMode::Nearest) {
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

TEST_F(BrowserSelectionTest, answersAboutTheSelectionAcrossLeavesFoldedOrNot) {
    EXPECT_EQ(selection.firstSelectItem(Included), Index{});
    EXPECT_TRUE(selection.selectFrom({2, 1}, {0, 68})); // in either order
    EXPECT_FALSE(selection.selectFrom({2, 1}, {0, 68}));
    EXPECT_FALSE(selection.selectFrom({2, 1}, {}));
    EXPECT_EQ(tree.selected(), u"a68 a69 c0 c1");
    EXPECT_EQ(selection.firstSelectItem(Included), (Index{0, 68}));
    tree.data(2).setIsCollapsedForBrowser(true);
    EXPECT_EQ(selection.selectCount(Excluded), 2);
    EXPECT_EQ(
        std::pair(selection.itemCount(Excluded), selection.itemCount(Included)),
        std::pair(70L, 110L));
    EXPECT_EQ(selection.selectedFileArray(Excluded).size(), 2U);
    selection.storeCommandSelect();
    EXPECT_TRUE(selection.deselectAll());
    EXPECT_FALSE(selection.deselectAll());
    EXPECT_TRUE(tree.item(0, 69)->storedSelect());
    EXPECT_TRUE(selection.selectFrom({0, 68}, {2, 1}));
    EXPECT_EQ(tree.selected(), u"a68 a69");
    EXPECT_TRUE(selection.selectAll(Excluded));
    EXPECT_EQ(selection.selectCount(Included), 70);
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
}

TEST_F(BrowserSelectionTest, theSelectionOrARenamedImageMayBeTheAnchor) {
    using enum ScrollCaptureMode;
    EXPECT_FALSE(capture(FirstSelection));
    tree.item(0, 1)->setIsSelected(true); // above
    const auto end = capture(VisibleSelection);
    EXPECT_EQ(end->type, PBImageBrowserViewScrollCapture::EndOfSheet);
    EXPECT_EQ(restored(end), layout.contentHeight());
    tree.item(0, 29)->setIsSelected(true);
    EXPECT_EQ(capture(VisibleSelection)->imageFileItem, tree.item(0, 29));
    const auto first = capture(FirstSelection);
    EXPECT_EQ(first->imageFileItem, tree.item(0, 1));
    EXPECT_EQ(restored(first), layout.cellRectAtIndex({0, 1}).center().y());
    editing = tree.item(0, 25);
    for (const auto mode : {Nearest, FirstSelection})
        EXPECT_EQ(capture(mode)->imageFileItem, editing);
}

TEST_F(BrowserSelectionTest, pathsOfMissingFoldersAreLeftOut) {
    struct Folders final : group::FolderPaths {
        QString pathOfFolderId(qint64 id) const override { return id == 1 ? u"/p"_s : QString(); }
    } folders;
    tree.add(2, u"z"_s, 2);
    leaves.refresh();
    selection.selectFrom({2, 39}, {9, 0});
    EXPECT_EQ(selection.selectCount(Included), 2);
    EXPECT_EQ(selection.selectedFilePath(folders, Included), QStringList{u"/p/c39"_s});
}

TEST_F(BrowserSelectionTest, chainsLeadFromTheTopToTheSelectedImagesOnly) {
    auto top = PBGroupItem::groupItemWithParent(nullptr, 5, PBValue(u"/top"_s));
    auto middle = PBGroupItem::groupItemWithParent(top.get(), 5, PBValue(u"/middle"_s));
    tree.tree.push_back(PBGroupItem::groupItemWithParent(middle.get(), 5, PBValue(u"/leaf"_s)));
    for (const QString& name : {u"d0"_s, u"d1"_s, u"d2"_s})
        tree.add(3, name);
    look();
    tree.item(3, 1)->setIsSelected(true);
    const auto chains = selection.selectedFileGroupTreeArray(Included);
    ASSERT_EQ(chains.size(), 1U);
    std::vector<std::shared_ptr<PBGroupItemData>> data;
    for (const auto& node : chains[0])
        data.push_back(node->data());
    EXPECT_EQ(data, (std::vector{top->data(), middle->data(), tree.node(3).data()}));
    const PBImageFileArray& images = chains[0].back()->imageFiles();
    EXPECT_TRUE(images.size() == 1 && images[0] == tree.item(3, 1));
    tree.data(3).setIsCollapsedForBrowser(true);
    EXPECT_TRUE(selection.selectedFileGroupTreeArray(Excluded).empty());
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
    EXPECT_FALSE(leaves.imageFileAtIndex({4, 0}) || leaves.imageFileAtIndex({1, 1}));
}

} // namespace
