#include "BrowserViewFixture.h"

#include <QAccessible>
#include <QScopeGuard>

TEST_F(BrowserViewTest, itemsHaveAccessibleNamesPlacesAndStatesUntilTheyGo) {
    QAccessible::setActive(true);
    const auto passive = qScopeGuard([] { QAccessible::setActive(false); });
    show({3, 4, 200});
    const auto list = [&] { return QAccessible::queryAccessibleInterface(view.get()); };
    EXPECT_TRUE(list()->role() == QAccessible::List && list()->childCount() == 207);
    tree->item(1, 1)->setStar(3);
    tree->item(1, 1)->setFlagged(true);
    tree->item(1, 1)->setIsAway(true);
    view->GotoIndex({1, 1});
    QAccessibleInterface* item = list()->child(4);
    EXPECT_TRUE(item == list()->child(4) && list()->indexOfChild(item) == 4);
    EXPECT_EQ(item->parent(), list());
    EXPECT_EQ(item->text(QAccessible::Name), u"b1, 3 stars, flagged, not available");
    EXPECT_EQ(item->text(QAccessible::Description), u"2 of 4, /photos/b, 3000 x 2000, 1.2 MB");
    EXPECT_TRUE(item->state().selected && !list()->child(0)->state().selected);
    EXPECT_TRUE(list()->child(206)->state().offscreen && !item->state().offscreen);
    EXPECT_EQ(list()->child(207), nullptr);
    const QPoint middle = list()->child(0)->rect().center();
    EXPECT_EQ(list()->childAt(middle.x(), middle.y() - 30), list()->child(0));
    tree->data(1).setIsCollapsedForBrowser(true);
    view->reloadData();
    EXPECT_EQ(list()->childCount(), 203);
    EXPECT_EQ(list()->child(3)->text(QAccessible::Name), u"c0");
    showLeaves({});
    EXPECT_EQ(list()->childCount(), 0);
}
