#include "BrowserSheetTest.h"

#include "browser/input/BrowserInput.h"

namespace {

using Index = PBImageBrowserIndex;

constexpr BrowserModifiers none;
constexpr BrowserModifiers shift{.shift = true};
constexpr BrowserModifiers command{.command = true};

/// Three columns; "a" has 7 images, "b" 4, "c" 5.
struct BrowserInputTest : BrowserSheetTest, BrowserInputHost {
    BrowserInputTest() : BrowserSheetTest({7, 4, 5}) {}
    QRectF visibleRect() const override { return visible; }
    void selectDidChange() override { ++changes; }
    void scrollIndexToVisible(const Index& index) override { shown = index; }
    void scrollToEnd(bool) override {}
    void enterToLargeView(const Index& index) override { entered = index; }
    void beginDragOut(const Index& index) override { draggedOut = index; }
    void beginRename(const Index& index) override { renamed = index; }
    void showBand(const QRectF& rect) override { band = rect; }
    void setSelectTimerScrollStep(int wanted) override { scrollStep = wanted; }
    void setDragging(bool) override { ++drags; }
    void perform(BrowserCommand) override {}
    void applyThumbnailSize(double) override {}
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
    // Each answers what is selected then.
    QString down(QPointF point, BrowserModifiers modifiers = none) {
        input.mouseDown(point, modifiers);
        return tree.selected();
    }
    QString drag(QPointF point) {
        input.mouseDragged(point);
        return tree.selected();
    }
    QString up() {
        input.mouseUp(1);
        return tree.selected();
    }
    QString click(Index index, BrowserModifiers modifiers = none) {
        down(at(index), modifiers);
        return up();
    }
    QString key(BrowserKey key, BrowserModifiers modifiers = none) {
        EXPECT_TRUE(input.keyDown(key, modifiers));
        return tree.selected();
    }

    QRectF visible{0, 0, 558, 600};
    QRectF band;
    Index shown, entered, draggedOut, renamed;
    int changes = 0, scrollStep = 0, drags = 0;
    BrowserInput input{layout, leaves, *this, *this};
};

TEST_F(BrowserInputTest, shiftGrowsTheSelectionFromTheAnchorOrTheStart) {
    EXPECT_EQ(click({0, 2}, shift), u"a0 a1 a2");
    click({1, 0});
    EXPECT_EQ(click({0, 5}, shift), u"a5 a6 b0");
    EXPECT_EQ(click({1, 1}, shift), u"a5 a6 b0 b1"); // nothing is taken away
    EXPECT_EQ(click({1, 1}, {.shift = true, .command = true}), u"a5 a6 b0 b1");
    fold(1);
    click({0, 0});
    click({0, 6});
    EXPECT_EQ(click({2, 0}, shift), u"a6 c0"); // nothing of a folded leaf
    tree.remove(0, {tree.item(0, 6)});
    leaves.refresh();
    layout.invalidate();
    EXPECT_EQ(click({0, 1}, shift), u"a0 a1 c0"); // what left the tree is no anchor
}

TEST_F(BrowserInputTest, commandTogglesWhenTheButtonGoesUpAndWhatABandTouches) {
    click({0, 0});
    input.cancelDrag(); // over
    EXPECT_EQ(std::pair(changes, drags), std::pair(1, 2)) << "told; on and off";
    EXPECT_EQ(down(at({0, 2}), command), u"a0");
    EXPECT_EQ(up(), u"a0 a2");
    EXPECT_EQ(click({0, 2}, command), u"a0");
    EXPECT_EQ(click({0, 3}, shift), u"a0 a2 a3"); // one that went stays the anchor
    // A band toggles against its start.
    click({0, 1});
    down(gapBefore({0, 1}), command);
    EXPECT_EQ(drag(at({0, 2})), u"a2");
    EXPECT_EQ(drag(gapBefore({0, 1}) + QPointF(1, 1)), u"a1");
    EXPECT_EQ(up(), u"a1"); // no toggle of a single image at the end
    for (const BrowserModifiers& modifiers : {shift, command}) {
        down(gapBefore({0, 1}), modifiers);
        EXPECT_EQ(up(), u"a1");
    }
}

TEST_F(BrowserInputTest, aDragCarriesTheWholeSelectionAndBeginsBeyondThreePoints) {
    click({0, 0});
    click({0, 1}, command);
    EXPECT_EQ(down(nameAt({0, 1})), u"a0 a1"); // only renames
    EXPECT_EQ(std::exchange(renamed, {}), (Index{0, 1}));
    EXPECT_FALSE(input.isDragging() || input.downImageFileItem());
    down(nameAt({1, 0}), command);
    EXPECT_EQ(renamed, Index{});
    down(at({0, 0}));
    drag(at({0, 0}) + QPointF(3, -3));
    EXPECT_EQ(draggedOut, Index{});
    EXPECT_EQ(drag(at({0, 0}) + QPointF(0, 3.1)), u"a0 a1");
    EXPECT_EQ(std::exchange(draggedOut, {}), (Index{0, 0}));
    EXPECT_FALSE(input.isDragging());
    down(at({0, 3}), command); // selects what it drags
    const int before = changes;
    EXPECT_EQ(drag(at({0, 3}) + QPointF(-3.1, 0)), u"a0 a1 a3");
    EXPECT_EQ(std::exchange(draggedOut, {}), (Index{0, 3}));
    EXPECT_EQ(changes, before + 1);
    EXPECT_EQ(click({0, 4}, shift), u"a0 a1 a3 a4"); // from the one that was dragged
    // What is not selected, or gone by then, is not dragged.
    click({1, 0});
    down(at({1, 0}));
    tree.item(1, 0)->setIsSelected(false);
    drag(at({2, 0}));
    tree.item(1, 0)->setIsSelected(true);
    leaves.setLeafGroupItemArray({});
    drag({900, 900});
    EXPECT_EQ(draggedOut, Index{});
    EXPECT_TRUE(input.isDragging());
}

TEST_F(BrowserInputTest, aBandSelectsWhatItTouchesAndGivesBackWhatItLeaves) {
    click({1, 3});
    EXPECT_EQ(down(gapBefore({0, 1})), u"");
    EXPECT_EQ(drag(at({0, 5})), u"a1 a2 a4 a5");
    EXPECT_EQ(band.bottomRight(), at({0, 5}));
    EXPECT_EQ(drag(at({0, 1})), u"a1");
    EXPECT_EQ(drag(at({1, 3})), u"a0 a3 a6 b0 b3"); // over the heads, to the left of its start
    const int before = changes;
    drag(at({1, 3}) + QPointF(1, 0));
    EXPECT_EQ(changes, before); // as before
    fold(1);
    drag(layout.cellRectAtIndex({2, 1}).center());
    EXPECT_TRUE(
        tree.item(2, 1)->isSelected() && !tree.item(1, 1)->isSelected()); // folded meanwhile
    const QPointF betweenRows = layout.cellRectAtIndex({0, 0}).bottomLeft() + QPointF(0, 3);
    down(betweenRows);
    EXPECT_EQ(drag(betweenRows + QPointF(300, 9)), u"");
    // Outside the view it scrolls, the faster the farther.
    visible = {0, 200, 558, 300};
    down({8, 250});
    for (const auto& [y, step] : {std::pair(300, 0), {510, 15}, {199, -1}, {200, 0}, {501, 1}}) {
        drag(QPointF(100, y));
        EXPECT_EQ(scrollStep, step) << y;
    }
    for (const bool isCancelled : {false, true}) {
        down({8, 250}); // ends the one before
        EXPECT_EQ(scrollStep, 0);
        drag({100, 800});
        isCancelled ? input.cancelDrag() : input.mouseUp(1);
        EXPECT_TRUE(scrollStep == 0 && band.isNull());
    }
}

TEST_F(BrowserInputTest, arrowsMoveASoleSelectionAndShiftRebuildsARange) {
    using enum BrowserKey;
    key(Return);
    EXPECT_EQ(entered, Index{}); // nothing to enter
    const std::tuple<BrowserKey, BrowserModifiers, QString> keys[] = {
        {Right, shift, u"a0"_s}, // without an anchor it starts at the new image
        {Right, shift, u"a0 a1"_s},    {Down, none, u"a4"_s},     {Right, shift, u"a4 a5"_s},
        {Right, shift, u"a4 a5 a6"_s}, {Left, shift, u"a4 a5"_s}, {Left, shift, u"a4"_s},
        {Left, shift, u"a3 a4"_s}};
    for (const auto& [arrow, modifiers, names] : keys)
        EXPECT_EQ(key(arrow, modifiers), names);
    EXPECT_EQ(shown, (Index{0, 3}));
    for (const BrowserModifiers& other : {command, BrowserModifiers{.other = true}})
        EXPECT_FALSE(input.keyDown(Left, other));
    key(Return);
    EXPECT_EQ(entered, (Index{0, 3}));
    const int before = changes;
    key(Home);
    EXPECT_EQ(key(Up), u"a0"); // past the start: nothing
    EXPECT_EQ(changes, before + 1);
    EXPECT_EQ(key(End), u"c4");
    // Pages move by what is visible.
    // Two rows lower, where the row is shorter; the fourth row lies 557 lower, and the head takes
    // its part; lower than a row it is still a step.
    const std::pair<int, QString> pages[] = {
        {10, u"a4"_s}, {579, u"a6"_s}, {580, u"b0"_s}, {2 * 173 + 23, u"a6"_s}};
    for (const auto& [height, name] : pages) {
        visible.setHeight(height);
        click({0, 1});
        EXPECT_EQ(key(PageDown), name) << height;
    }
    visible.setHeight(600);
    key(End);
    EXPECT_EQ(key(PageUp), u"b0");
}

TEST_F(BrowserInputTest, stepsOfTheMenu) {
    // What the steps lead to, in the order of their enumeration.
    const auto stepsFrom = [&](Index index) {
        input.gotoIndex(index);
        QStringList names;
        for (int step = 0; step <= static_cast<int>(BrowserStep::LastIndexInGroup); ++step) {
            const Index there = input.stepIndex(static_cast<BrowserStep>(step));
            names += there.isValid() ? leaves.imageFileAtIndex(there)->fileName() : u"-"_s;
        }
        return names.join(u' ');
    };
    EXPECT_EQ(stepsFrom({}), u"c4 a0 a0 c4 a0 a0 - -");
    EXPECT_EQ(stepsFrom({1, 1}), u"b0 b2 a0 c4 a0 c0 b0 b3");
    EXPECT_EQ(std::pair(shown, changes), std::pair(Index{1, 1}, 1));
    EXPECT_EQ(click({1, 3}, shift), u"b1 b2 b3");
    EXPECT_EQ(stepsFrom({0, 0}), u"- a1 - c4 - b0 - a6");
    EXPECT_EQ(stepsFrom({2, 4}), u"c3 - a0 - b0 - c0 -");
    input.gotoIndex({7, 0}); // no such image
    EXPECT_EQ(tree.selected(), u"c4");
    input.reset();
    EXPECT_EQ(input.currentIndex(), Index{});
}

} // namespace
