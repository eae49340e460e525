// What nobody expects: trees that change in the middle of something.

#include "BrowserViewFixture.h"

TEST_F(BrowserViewTest, aTreeMayShrinkUnderTheMouse) {
    show({60, 5});
    const auto shrinkTo = [&](int count) {
        const auto& all = tree->node(0).imageFiles();
        const PBImageFileList gone(all.begin() + count, all.end());
        tree->swapForCopy();
        tree->remove(0, gone);
        showLeaves(tree->leaves());
    };
    Index entered;
    on(&View::enterToLargeViewRequested, [&](Index index) { entered = index; });
    click(at({0, 1}));
    send(QEvent::MouseButtonDblClick, at({0, 1}));
    EXPECT_EQ(entered, Index{}); // not before the button goes up
    send(QEvent::MouseButtonRelease, at({0, 1}));
    EXPECT_EQ(std::exchange(entered, {}), (Index{0, 1}));
    // A band that has taken in images that go.
    send(QEvent::MouseButtonPress, {4, 60});
    send(QEvent::MouseMove, {view->width() - 5, view->height() - 10});
    EXPECT_GT(view->selection().selectCount(FoldedLeaves::Included), 5);
    shrinkTo(4);
    send(QEvent::MouseMove, {view->width() - 5, view->height() - 20});
    EXPECT_TRUE(tree->item(0, 3)->isSelected());
    showLeaves({});
    send(QEvent::MouseMove, {view->width() - 5, 70});
    send(QEvent::MouseButtonRelease, {view->width() - 5, 70});
    picture();

    // An image that goes between press and drag, or between the clicks of a double click.
    showLeaves(tree->leaves());
    const QPoint last = at({0, 3});
    send(QEvent::MouseButtonPress, last);
    shrinkTo(2);
    send(QEvent::MouseMove, last + QPoint(40, 0));
    send(QEvent::MouseButtonRelease, last + QPoint(40, 0));
    press(*view, Qt::Key_Right); // from an image that is gone: the first
    EXPECT_EQ(tree->selected(), u"a0");
    // The second click of two meets another image than the first.
    click(last);
    shrinkTo(1);
    for (const auto type : {QEvent::MouseButtonDblClick, QEvent::MouseButtonRelease})
        send(type, at({0, 0}));
    EXPECT_EQ(entered, Index{});
    askForMenu(QContextMenuEvent::Keyboard, last);
    EXPECT_EQ(tree->selected(), u"a0");
    tree->tree.clear(); // the view has not heard of it yet
    for (int look = 0; look < 2; ++look) {
        picture();
        press(*view, Qt::Key_Down);
        send(QEvent::MouseButtonPress, {30, 10}); // a head
        view->reloadData();
    }
}
