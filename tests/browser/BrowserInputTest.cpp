#include "BrowserTree.h"
#include "FakeLeaves.h"

#include "browser/BrowserInput.h"

#include <gtest/gtest.h>

namespace {

using Index = PBImageBrowserIndex;

class FakeHost final : public BrowserInputHost {
public:
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
class BrowserInputTest : public ::testing::Test {
protected:
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
    expectSelected(QStringLiteral("b2"));
    EXPECT_EQ(host.changes, 2);
    EXPECT_EQ(host.captures, 2);
    EXPECT_FALSE(host.isDragging);
    input.mouseDown(gapBefore({0, 1}), none);
    EXPECT_TRUE(host.isDragging);
    expectSelected({});
    input.mouseUp(1);
    EXPECT_EQ(host.changes, 3);
    EXPECT_FALSE(host.isDragging);
}

TEST_F(BrowserInputTest, aClickInTheGapsWithAModifierKeepsTheSelection) {
    click({0, 1});
    for (const BrowserModifiers& modifiers : {shift, command}) {
        input.mouseDown(gapBefore({0, 1}), modifiers);
        input.mouseUp(1);
        expectSelected(QStringLiteral("a1"));
    }
}

TEST_F(BrowserInputTest, shiftGrowsTheSelectionFromTheAnchorOrTheStart) {
    click({0, 2}, shift);
    expectSelected(QStringLiteral("a0 a1 a2"));
    click({1, 0});
    click({0, 5}, shift);
    expectSelected(QStringLiteral("a5 a6 b0"));
    click({1, 1}, shift);
    expectSelected(QStringLiteral("a5 a6 b0 b1")); // nothing is taken away
}

TEST_F(BrowserInputTest, shiftLeavesFoldedLeavesOut) {
    tree.data(1).setIsCollapsedForBrowser(true);
    layout.invalidate();
    click({0, 6});
    click({2, 0}, shift);
    expectSelected(QStringLiteral("a6 c0"));
}

TEST_F(BrowserInputTest, commandTogglesWhenTheButtonGoesUp) {
    click({0, 0});
    input.mouseDown(at({0, 2}), command);
    expectSelected(QStringLiteral("a0"));
    input.mouseUp(1);
    expectSelected(QStringLiteral("a0 a2"));
    EXPECT_EQ(input.shiftFileItem(), tree.item(0, 2));
    click({0, 2}, command);
    expectSelected(QStringLiteral("a0"));
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
    expectSelected(QStringLiteral("a0 a1"));
    host.draggedOut = {};
    input.mouseDragged(at({1, 0}));
    EXPECT_EQ(host.draggedOut, Index{}); // over
}

TEST_F(BrowserInputTest, aDragBegunWithCommandSelectsWhatItDrags) {
    click({0, 0});
    input.mouseDown(at({0, 3}), command);
    input.mouseDragged(at({0, 3}) + QPointF(9, 0));
    EXPECT_EQ(host.draggedOut, (Index{0, 3}));
    expectSelected(QStringLiteral("a0 a3"));
}

TEST_F(BrowserInputTest, aClickOnTheNameRenamesWithoutLosingASelection) {
    click({0, 0});
    click({0, 1}, command);
    input.mouseDown(nameAt({0, 1}), none);
    EXPECT_EQ(host.renamed, (Index{0, 1}));
    EXPECT_FALSE(host.isDragging);
    EXPECT_EQ(input.downImageFileItem(), nullptr);
    expectSelected(QStringLiteral("a0 a1"));
    host.renamed = {};
    input.mouseDown(nameAt({1, 0}), command);
    input.mouseUp(1);
    EXPECT_EQ(host.renamed, Index{});
}

TEST_F(BrowserInputTest, aDoubleClickEntersTheLargeView) {
    click({1, 1});
    input.mouseDown(at({1, 1}), none);
    input.mouseUp(2);
    EXPECT_EQ(host.entered, (Index{1, 1}));
    host.entered = {};
    input.mouseDown(gapBefore({0, 0}), none);
    input.mouseUp(2);
    EXPECT_EQ(host.entered, Index{});
}

TEST_F(BrowserInputTest, aBandSelectsWhatItTouchesAndGivesBackWhatItLeaves) {
    click({1, 3});
    input.mouseDown(gapBefore({0, 1}), none);
    EXPECT_EQ(tree.selected(), QString());
    input.mouseDragged(at({0, 5}));
    expectSelected(QStringLiteral("a1 a2 a4 a5"));
    EXPECT_EQ(host.band.bottomRight(), at({0, 5}));
    input.mouseDragged(at({0, 1}));
    expectSelected(QStringLiteral("a1"));
    input.mouseDragged(at({1, 3})); // over the heads, to the left of where it began
    expectSelected(QStringLiteral("a0 a3 a6 b0 b3"));
    input.mouseUp(1);
    EXPECT_TRUE(host.band.isNull());
    EXPECT_FALSE(input.hasBand());
}

TEST_F(BrowserInputTest, aBandWithCommandTogglesAgainstTheStart) {
    click({0, 1});
    input.mouseDown(gapBefore({0, 1}), command);
    input.mouseDragged(at({0, 2}));
    expectSelected(QStringLiteral("a2"));
    input.mouseDragged(gapBefore({0, 1}) + QPointF(1, 1));
    expectSelected(QStringLiteral("a1"));
    input.mouseUp(1); // no toggle of a single image at the end
    expectSelected(QStringLiteral("a1"));
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
    EXPECT_EQ(stepAt(300), 0);
    EXPECT_EQ(stepAt(510), 15);
    EXPECT_EQ(stepAt(190), -15);
    EXPECT_EQ(stepAt(499), 0);
    stepAt(800);
    input.mouseUp(1);
    EXPECT_EQ(host.step, 0);
}

TEST_F(BrowserInputTest, arrowsMoveASoleSelectionAndShiftRebuildsARange) {
    input.keyDown(BrowserKey::Down, none);
    expectSelected(QStringLiteral("a0"));
    input.keyDown(BrowserKey::Right, none);
    input.keyDown(BrowserKey::Down, none);
    expectSelected(QStringLiteral("a4"));
    EXPECT_EQ(host.shown, (Index{0, 4}));
    input.keyDown(BrowserKey::Right, shift);
    input.keyDown(BrowserKey::Right, shift);
    expectSelected(QStringLiteral("a4 a5 a6"));
    input.keyDown(BrowserKey::Left, shift);
    input.keyDown(BrowserKey::Left, shift);
    expectSelected(QStringLiteral("a4"));
    input.keyDown(BrowserKey::Left, shift);
    expectSelected(QStringLiteral("a3 a4"));
    EXPECT_FALSE(input.keyDown(BrowserKey::Left, command));
    const int changes = host.changes;
    input.keyDown(BrowserKey::Home, none);
    input.keyDown(BrowserKey::Up, none); // past the start: nothing
    expectSelected(QStringLiteral("a0"));
    EXPECT_EQ(host.changes, changes + 1);
    input.keyDown(BrowserKey::End, none);
    expectSelected(QStringLiteral("c4"));
    EXPECT_EQ(host.ends, "se");
}

TEST_F(BrowserInputTest, shiftWithoutAnAnchorStartsAtTheNewImage) {
    input.keyDown(BrowserKey::Right, shift);
    expectSelected(QStringLiteral("a0"));
    input.keyDown(BrowserKey::Right, shift);
    expectSelected(QStringLiteral("a0 a1"));
}

TEST_F(BrowserInputTest, pagesMoveByWhatIsVisible) {
    host.visible = {0, 0, 558, 2 * (158 + 15) + 23};
    click({0, 1});
    input.keyDown(BrowserKey::PageDown, none);
    expectSelected(QStringLiteral("a6")); // two rows lower, where the row is shorter
    input.keyDown(BrowserKey::PageDown, none);
    input.keyDown(BrowserKey::PageDown, none);
    input.keyDown(BrowserKey::PageUp, none);
    EXPECT_EQ(input.currentIndex().group, 1);
    host.visible.setHeight(10); // lower than a row: still a step
    click({0, 1});
    input.keyDown(BrowserKey::PageDown, none);
    expectSelected(QStringLiteral("a4"));
}

TEST_F(BrowserInputTest, lettersGoToTheNextNameThatBeginsSo) {
    const auto typed = [&](const char16_t* letters) {
        input.typeAhead(QString::fromUtf16(letters));
        return input.currentIndex();
    };
    EXPECT_EQ(typed(u"B"), (Index{1, 0}));
    EXPECT_EQ(typed(u"b"), (Index{1, 1}));
    EXPECT_EQ(typed(u"b1"), (Index{1, 1}));
    EXPECT_EQ(typed(u"b3"), (Index{1, 3}));
    EXPECT_EQ(typed(u"b"), (Index{1, 0})); // round
    EXPECT_EQ(typed(u"x"), (Index{1, 0}));
}

TEST_F(BrowserInputTest, theContextMenuTakesWhatIsUnderIt) {
    click({0, 0});
    click({0, 1}, command);
    input.rightMouseDown(at({0, 1}));
    expectSelected(QStringLiteral("a0 a1"));
    EXPECT_EQ(host.menu, 'i');
    input.rightMouseDown(at({2, 0}));
    expectSelected(QStringLiteral("c0"));
    input.rightMouseDown(gapBefore({0, 0}));
    expectSelected({});
    EXPECT_EQ(host.menu, 'n');
}

TEST_F(BrowserInputTest, aGestureIsEitherAZoomOrOneRotation) {
    input.rotate(5); // outside a gesture
    input.beginGesture();
    input.rotate(0);
    input.rotate(5);
    input.rotate(5);
    input.magnify(1);
    EXPECT_EQ(host.turns, "l");
    EXPECT_EQ(host.size, 0);
    input.endGesture();
    input.beginGesture();
    input.magnify(0.1);
    input.rotate(-5);
    EXPECT_EQ(host.size, 176);
    input.magnify(9);
    EXPECT_EQ(host.size, 256);
    EXPECT_EQ(host.turns, "l");
    input.endGesture();
    input.beginGesture();
    input.rotate(-1);
    EXPECT_EQ(host.turns, "lr");
}

TEST_F(BrowserInputTest, imagesThatLeftTheTreeAreNoAnchorsAndNoTargets) {
    click({0, 3});
    const auto gone = tree.item(0, 3);
    PBImageFileList list{gone};
    input.mouseDown(at({0, 3}), none);
    tree.tree[0]->removeImageFiles(list); // under the mouse
    leaves.refresh();
    layout.invalidate();
    input.mouseDragged(at({0, 3}) + QPointF(50, 50));
    EXPECT_EQ(host.draggedOut, Index{});
    input.mouseUp(2);
    EXPECT_EQ(host.entered, Index{});
    input.keyDown(BrowserKey::Right, none); // from nowhere: the first
    expectSelected(QStringLiteral("a0"));
    click({0, 1});
    list = {tree.item(0, 1)};
    tree.tree[0]->removeImageFiles(list);
    leaves.refresh();
    layout.invalidate();
    click({0, 2}, shift);
    expectSelected(QStringLiteral("a0 a2 a4"));
}

TEST_F(BrowserInputTest, stepsOfTheMenu) {
    EXPECT_EQ(input.stepIndex(BrowserStep::PreviousGroup), (Index{0, 0}));
    EXPECT_EQ(input.stepIndex(BrowserStep::LastIndexInGroup), Index{});
    input.gotoIndex({1, 1});
    expectSelected(QStringLiteral("b1"));
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
    expectSelected(QStringLiteral("c4"));
}

} // namespace
