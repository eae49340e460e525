#include "BrowserTree.h"
#include "FakeLeaves.h"

#include "browser/BrowserInput.h"
#include "support/Support.h"

namespace {

using Index = PBImageBrowserIndex;

struct FakeHost final : BrowserInputHost {
    QRectF visibleRect() const override { return visible; }
    const BrowserTextWidths& textWidths() const override { return widths; }
    void selectDidChange() override { ++changes; }
    void captureScrollIfNone() override { ++captures; }
    void scrollIndexToVisible(const Index& index) override { shown = index; }
    void scrollToEnd(bool isStart) override { ends += isStart ? 's' : 'e'; }
    void enterToLargeView(const Index& index) override { entered = index; }
    void beginDragOut(const Index& index) override { draggedOut = index; }
    void beginRename(const Index& index) override { renamed = index; }
    void showBand(const QRectF& rect) override { band = rect; }
    void setSelectTimerScrollStep(int wanted) override { step = wanted; }
    void setDragging(bool dragging) override { isDragging = dragging; }
    void flagClicked() override { ++flags; }
    void rotateLeft() override { turns += 'l'; }
    void rotateRight() override { turns += 'r'; }
    void applyThumbnailSize(double wanted) override { size = wanted; }
    void showContextMenu(bool isOnItem) override { menu = isOnItem ? 'i' : 'n'; }

    FakeTextWidths widths;
    QRectF visible{0, 0, 558, 600};
    QRectF band;
    Index shown, entered, draggedOut, renamed;
    std::string turns, ends;
    double size = 0;
    int changes = 0, captures = 0, step = 0, flags = 0;
    char menu = '-';
    bool isDragging = false;
};

constexpr BrowserModifiers none;
constexpr BrowserModifiers shift{.shift = true};
constexpr BrowserModifiers command{.command = true};

/// Three columns; "a" has 7 images, "b" 4, "c" 5.
struct BrowserInputTest : ::testing::Test {
    BrowserInputTest() {
        leaves.setLeafGroupItemArray(tree.leaves());
        layout.setLeaves(&leaves);
        layout.setWidth(558, 0);
    }
    QPointF at(Index index) {
        const QRectF cell = layout.cellRectAtIndex(index);
        return layout.thumbnailRectWithCellRect(cell).center();
    }
    QPointF nameAt(Index index) {
        return layout.fileNameRectWithCellRect(layout.cellRectAtIndex(index)).center();
    }
    /// Beside the cell.
    QPointF gapBefore(Index index) {
        return layout.cellRectAtIndex(index).topLeft() + QPointF(-8, 40);
    }
    void click(Index index, BrowserModifiers modifiers = none) {
        input.mouseDown(at(index), modifiers);
        input.mouseUp(1);
    }
    void expectSelected(const QString& names) { EXPECT_EQ(tree.selected(), names); }

    BrowserTree tree{7, 4, 5};
    BrowserLeafList leaves;
    BrowserLayout layout;
    FakeHost host;
    BrowserInput input{layout, leaves, host};
};

TEST_F(BrowserInputTest, aClickSelectsOneAndTellsOfIt) {
    click({0, 1});
    click({1, 2});
    expectSelected(u"b2"_s);
    EXPECT_EQ(host.changes, 2);
    EXPECT_EQ(host.captures, 2);
    EXPECT_FALSE(host.isDragging);
    for (const BrowserModifiers& modifiers : {shift, command}) {
        input.mouseDown(gapBefore({0, 1}), modifiers);
        input.mouseUp(1);
        expectSelected(u"b2"_s);
    }
    input.mouseDown(gapBefore({0, 1}), none);
    EXPECT_TRUE(host.isDragging);
    expectSelected({});
    input.mouseUp(1);
    EXPECT_FALSE(host.isDragging);
}

TEST_F(BrowserInputTest, shiftGrowsTheSelectionFromTheAnchorOrTheStart) {
    click({0, 2}, shift);
    expectSelected(u"a0 a1 a2"_s);
    click({1, 0});
    click({0, 5}, shift);
    expectSelected(u"a5 a6 b0"_s);
    click({1, 1}, shift);
    expectSelected(u"a5 a6 b0 b1"_s); // nothing is taken away
    tree.data(1).setIsCollapsedForBrowser(true);
    layout.invalidate();
    click({0, 0});
    click({0, 6});
    click({2, 0}, shift);
    expectSelected(u"a6 c0"_s); // nothing of a folded leaf
}

TEST_F(BrowserInputTest, commandTogglesWhenTheButtonGoesUp) {
    click({0, 0});
    input.mouseDown(at({0, 2}), command);
    expectSelected(u"a0"_s);
    input.mouseUp(1);
    expectSelected(u"a0 a2"_s);
    EXPECT_EQ(input.shiftFileItem(), tree.item(0, 2));
    click({0, 2}, command);
    expectSelected(u"a0"_s);
    EXPECT_EQ(input.shiftFileItem(), tree.item(0, 2)); // one that went stays the anchor
}

TEST_F(BrowserInputTest, aDragCarriesTheWholeSelectionAndBeginsBeyondThreePoints) {
    click({0, 0});
    click({0, 1}, command);
    input.mouseDown(at({0, 0}), none);
    input.mouseDragged(at({0, 0}) + QPointF(3, -3));
    EXPECT_EQ(host.draggedOut, Index{});
    input.mouseDragged(at({0, 0}) + QPointF(0, 4));
    EXPECT_EQ(host.draggedOut, (Index{0, 0}));
    EXPECT_FALSE(input.isDragging());
    expectSelected(u"a0 a1"_s);
    host.draggedOut = {};
    input.mouseDragged(at({1, 0}));
    EXPECT_EQ(host.draggedOut, Index{});  // over
    input.mouseDown(at({0, 3}), command); // selects what it drags
    input.mouseDragged(at({0, 3}) + QPointF(9, 0));
    EXPECT_EQ(host.draggedOut, (Index{0, 3}));
    expectSelected(u"a0 a1 a3"_s);
}

TEST_F(BrowserInputTest, aClickOnTheNameRenamesWithoutLosingASelection) {
    click({0, 0});
    click({0, 1}, command);
    input.mouseDown(nameAt({0, 1}), none);
    EXPECT_EQ(host.renamed, (Index{0, 1}));
    EXPECT_FALSE(host.isDragging);
    EXPECT_EQ(input.downImageFileItem(), nullptr);
    expectSelected(u"a0 a1"_s);
    host.renamed = {};
    input.mouseDown(nameAt({1, 0}), command);
    input.mouseUp(1);
    EXPECT_EQ(host.renamed, Index{});
}

TEST_F(BrowserInputTest, aBandSelectsWhatItTouchesAndGivesBackWhatItLeaves) {
    click({1, 3});
    input.mouseDown(gapBefore({0, 1}), none);
    EXPECT_EQ(tree.selected(), QString());
    input.mouseDragged(at({0, 5}));
    expectSelected(u"a1 a2 a4 a5"_s);
    EXPECT_EQ(host.band.bottomRight(), at({0, 5}));
    input.mouseDragged(at({0, 1}));
    expectSelected(u"a1"_s);
    input.mouseDragged(at({1, 3})); // over the heads, to the left of where it began
    expectSelected(u"a0 a3 a6 b0 b3"_s);
    input.mouseUp(1);
    EXPECT_TRUE(host.band.isNull());
    EXPECT_FALSE(input.hasBand());
}

TEST_F(BrowserInputTest, aBandWithCommandTogglesAgainstTheStart) {
    click({0, 1});
    input.mouseDown(gapBefore({0, 1}), command);
    input.mouseDragged(at({0, 2}));
    expectSelected(u"a2"_s);
    input.mouseDragged(gapBefore({0, 1}) + QPointF(1, 1));
    expectSelected(u"a1"_s);
    input.mouseUp(1); // no toggle of a single image at the end
    expectSelected(u"a1"_s);
}

TEST_F(BrowserInputTest, aBandThatGrowsByScrollingEqualsOneDrawnAtOnce) {
    input.mouseDown(gapBefore({0, 0}), none);
    for (double y = 60; y < 1000; y += 37)
        input.mouseDragged({350, y});
    const QString grown = tree.selected();
    input.mouseDragged({350, 60});
    input.mouseDragged({350, 987 + 25});
    EXPECT_EQ(tree.selected(), grown);
    EXPECT_FALSE(grown.isEmpty());
}

TEST_F(BrowserInputTest, outsideTheViewTheBandScrollsTheFasterTheFarther) {
    host.visible = {0, 200, 558, 300};
    input.mouseDown({8, 250}, none);
    const auto stepAt = [&](double y) {
        input.mouseDragged({100, y});
        return host.step;
    };
    const std::pair<double, int> steps[] = {{300, 0}, {510, 15}, {190, -15}, {499, 0}};
    for (const auto& [y, step] : steps)
        EXPECT_EQ(stepAt(y), step) << y;
    stepAt(800);
    input.mouseUp(1);
    EXPECT_EQ(host.step, 0);
}

TEST_F(BrowserInputTest, arrowsMoveASoleSelectionAndShiftRebuildsARange) {
    input.keyDown(BrowserKey::Right, shift);
    expectSelected(u"a0"_s); // without an anchor it starts at the new image
    input.keyDown(BrowserKey::Right, none);
    input.keyDown(BrowserKey::Down, none);
    expectSelected(u"a4"_s);
    EXPECT_EQ(host.shown, (Index{0, 4}));
    input.keyDown(BrowserKey::Right, shift);
    input.keyDown(BrowserKey::Right, shift);
    expectSelected(u"a4 a5 a6"_s);
    input.keyDown(BrowserKey::Left, shift);
    input.keyDown(BrowserKey::Left, shift);
    expectSelected(u"a4"_s);
    input.keyDown(BrowserKey::Left, shift);
    expectSelected(u"a3 a4"_s);
    EXPECT_FALSE(input.keyDown(BrowserKey::Left, command));
    const int changes = host.changes;
    input.keyDown(BrowserKey::Home, none);
    input.keyDown(BrowserKey::Up, none); // past the start: nothing
    expectSelected(u"a0"_s);
    EXPECT_EQ(host.changes, changes + 1);
    input.keyDown(BrowserKey::End, none);
    expectSelected(u"c4"_s);
    EXPECT_EQ(host.ends, "se");
}

TEST_F(BrowserInputTest, pagesMoveByWhatIsVisible) {
    host.visible = {0, 0, 558, 2 * (158 + 15) + 23};
    click({0, 1});
    input.keyDown(BrowserKey::PageDown, none);
    expectSelected(u"a6"_s); // two rows lower, where the row is shorter
    input.keyDown(BrowserKey::PageDown, none);
    input.keyDown(BrowserKey::PageDown, none);
    input.keyDown(BrowserKey::PageUp, none);
    EXPECT_EQ(input.currentIndex().group, 1);
    host.visible.setHeight(10); // lower than a row: still a step
    click({0, 1});
    input.keyDown(BrowserKey::PageDown, none);
    expectSelected(u"a4"_s);
}

TEST_F(BrowserInputTest, lettersGoToTheNextNameThatBeginsSo) {
    const std::pair<QString, Index> cases[] = {{u"B"_s, {1, 0}},  {u"b"_s, {1, 1}},
                                               {u"b1"_s, {1, 1}}, {u"b3"_s, {1, 3}},
                                               {u"b"_s, {1, 0}},  {u"x"_s, {1, 0}}};
    for (const auto& [letters, index] : cases) {
        input.typeAhead(letters);
        EXPECT_EQ(input.currentIndex(), index) << qPrintable(letters);
    }
}

TEST_F(BrowserInputTest, theContextMenuTakesWhatIsUnderIt) {
    click({0, 0});
    click({0, 1}, command);
    input.rightMouseDown(at({0, 1}));
    expectSelected(u"a0 a1"_s);
    EXPECT_EQ(host.menu, 'i');
    input.rightMouseDown(at({2, 0}));
    expectSelected(u"c0"_s);
    input.rightMouseDown(gapBefore({0, 0}));
    expectSelected({});
    EXPECT_EQ(host.menu, 'n');
}

TEST_F(BrowserInputTest, imagesThatLeftTheTreeAreNoAnchors) {
    click({0, 1});
    PBImageFileList list{tree.item(0, 1)};
    tree.tree[0]->removeImageFiles(list);
    leaves.refresh();
    layout.invalidate();
    click({0, 2}, shift);
    expectSelected(u"a0 a2 a3"_s);
}

TEST_F(BrowserInputTest, stepsOfTheMenu) {
    EXPECT_EQ(input.stepIndex(BrowserStep::PreviousGroup), (Index{0, 0}));
    EXPECT_EQ(input.stepIndex(BrowserStep::LastIndexInGroup), Index{});
    input.gotoIndex({1, 1});
    expectSelected(u"b1"_s);
    const std::pair<BrowserStep, Index> steps[] = {
        {BrowserStep::PrevIndex, {1, 0}},         {BrowserStep::NextIndex, {1, 2}},
        {BrowserStep::FirstIndex, {0, 0}},        {BrowserStep::LastIndex, {2, 4}},
        {BrowserStep::PreviousGroup, {0, 0}},     {BrowserStep::NextGroup, {2, 0}},
        {BrowserStep::FirstIndexInGroup, {1, 0}}, {BrowserStep::LastIndexInGroup, {1, 3}}};
    for (const auto& [step, index] : steps)
        EXPECT_EQ(input.stepIndex(step), index) << static_cast<int>(step);
    input.gotoIndex({2, 4});
    EXPECT_EQ(input.stepIndex(BrowserStep::LastIndex), Index{});
    EXPECT_EQ(input.stepIndex(BrowserStep::NextGroup), Index{});
    EXPECT_EQ(input.stepIndex(BrowserStep::LastIndexInGroup), Index{});
    input.gotoIndex({7, 0}); // no such image
    expectSelected(u"c4"_s);
}

} // namespace
