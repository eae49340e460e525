#include "BrowserViewFixture.h"

#include <QAccessible>
#include <QScopeGuard>

TEST_F(BrowserViewTest, itemsHaveAccessibleNamesPlacesAndStatesUntilTheyGo) {
    QAccessible::setActive(true);
    const auto passive = qScopeGuard([] { QAccessible::setActive(false); });
    show({3, 4, 200});
    const auto list = [&] { return QAccessible::queryAccessibleInterface(view.get()); };
    EXPECT_TRUE(list()->role() == QAccessible::List && list()->childCount() == 3 + 207);
    tree->item(1, 1)->setStar(3);
    tree->item(1, 1)->setFlagged(true);
    tree->item(1, 1)->setIsAway(true);
    view->GotoIndex({1, 1});
    QAccessibleInterface* item = list()->child(6);
    EXPECT_EQ(item->text(QAccessible::Name), u"b1, 3 stars, flagged, not available");
    EXPECT_EQ(item->text(QAccessible::Description), u"2 of 4, /photos/b, 3000 x 2000, 1.2 MB");
    tree->item(1, 1)->setRotateAngle(90);
    EXPECT_TRUE(item->text(QAccessible::Description).contains(u"2000 x 3000"_s)); // as it is seen
    EXPECT_TRUE(item->state().selected && !list()->child(1)->state().selected);
    EXPECT_TRUE(list()->child(209)->state().offscreen && !item->state().offscreen);
    const QPoint middle = list()->child(1)->rect().center();
    EXPECT_EQ(list()->childAt(middle.x(), middle.y() - 30), list()->child(1));
    QAccessibleInterface* head = list()->child(4);
    EXPECT_EQ(head->role(), QAccessible::Heading);
    EXPECT_EQ(head->text(QAccessible::Name), u"/photos/b");
    EXPECT_EQ(head->rect().top() + 23 + 10, list()->child(5)->rect().top() - 5);
    const QPoint onHead = head->rect().center();
    EXPECT_EQ(list()->childAt(onHead.x(), onHead.y()), head);
    tree->data(1).setIsCollapsedForBrowser(true);
    view->reloadData();
    EXPECT_EQ(list()->childCount(), 3 + 203);
    EXPECT_EQ(list()->child(5)->text(QAccessible::Name), u"/photos/c");
    EXPECT_EQ(list()->child(6)->text(QAccessible::Name), u"c0");
    showLeaves({});
    EXPECT_EQ(list()->childCount(), 0);
}

TEST_F(BrowserViewTest, aScreenReaderSelectsAndOpensImagesAndGoesToHeads) {
    show({3, 40});
    on(&View::enterToLargeViewRequested, [&](Index index) { told += QString::number(index.item); });
    const auto act = [&](int child, const QString& action) {
        QAccessibleInterface* each =
            QAccessible::queryAccessibleInterface(view.get())->child(child);
        each->actionInterface()->doAction(action);
        return tree->selected();
    };
    using Action = QAccessibleActionInterface;
    EXPECT_EQ(act(2, Action::setFocusAction()), u"a1");
    EXPECT_EQ(view->currentIndex(), (Index{0, 1}));
    EXPECT_EQ(act(3, Action::toggleAction()), u"a1 a2");
    EXPECT_EQ(act(2, Action::toggleAction()), u"a2");
    act(3, Action::pressAction());
    EXPECT_EQ(told, QStringList{u"2"_s});
    act(4, Action::pressAction());
    finishMotion();
    EXPECT_EQ(position(), view->browserLayout().groupItemPosition(1));
}
