#include "BrowserViewFixture.h"

#include "ui/PaintedItemsAccessible.h"

#include <QPushButton>

namespace {

QStringList events; // NOLINT: the listener is a plain function

struct BrowserAccessibleTest : BrowserViewTest {
    BrowserAccessibleTest() {
        events.clear();
        PaintedItemsAccessible::listener = [](QAccessibleEvent& event) {
            events += QString::number(event.type(), 16) + u':' + QString::number(event.child());
        };
    }
    ~BrowserAccessibleTest() override { PaintedItemsAccessible::listener = nullptr; }
    QAccessibleInterface* list() { return QAccessible::queryAccessibleInterface(view.get()); }
    QString name(int child) { return list()->child(child)->text(QAccessible::Name); }
    QAccessibleInterface* childAt(const QPoint& point) {
        return list()->childAt(point.x(), point.y());
    }
};

TEST_F(BrowserAccessibleTest, itemsHaveNamesPlacesAndStatesUntilTheyGoAndControlsComeBehind) {
    scrollView.move(30, 20);
    show({3, 4, 200});
    QPushButton button(view.get());
    button.setGeometry(0, 40, 9, 9);
    button.show();
    EXPECT_TRUE(list()->role() == QAccessible::List && list()->childCount() == 3 + 207 + 1);
    EXPECT_EQ(list()->text(QAccessible::Name), u"Photographs");
    EXPECT_EQ(list()->child(210)->object(), &button);
    EXPECT_EQ(list()->indexOfChild(list()->child(210)), 210);
    EXPECT_EQ(childAt(view->mapToGlobal(QPoint(5, 45))), list()->child(210));
    EXPECT_TRUE(!list()->child(211) && !list()->child(-1));
    EXPECT_FALSE(childAt(view->mapToGlobal(QPoint(-1, 45))));
    tree->item(1, 1)->setStar(3);
    tree->item(1, 1)->setFlagged(true);
    tree->item(1, 1)->setIsAway(true);
    view->GotoIndex({1, 1});
    QAccessibleInterface* item = list()->child(6);
    EXPECT_TRUE(item == list()->child(6) && list()->indexOfChild(item) == 6);
    EXPECT_EQ(item->parent(), list());
    EXPECT_EQ(name(6), u"b1, 3 stars, flagged, not available");
    EXPECT_EQ(item->text(QAccessible::Description), u"2 of 4, /photos/b, 3000 x 2000, 1.2 MB");
    tree->item(1, 1)->setRotateAngle(90);
    EXPECT_TRUE(item->text(QAccessible::Description).contains(u"2000 x 3000"_s)); // as it is seen
    EXPECT_TRUE(item->state().selected && item->state().selectable && !item->state().offscreen);
    EXPECT_TRUE(!list()->child(1)->state().selected && list()->child(209)->state().offscreen);
    EXPECT_EQ(item->rect(), view->widgetRect({1, 1}).translated(view->mapToGlobal(QPoint())));
    EXPECT_EQ(childAt(item->rect().center() - QPoint(0, 30)), item);
    QAccessibleInterface* head = list()->child(4);
    EXPECT_EQ(head->role(), QAccessible::Heading);
    EXPECT_FALSE(head->state().selected || head->state().selectable || head->state().focusable);
    EXPECT_EQ(name(4), u"/photos/b");
    EXPECT_EQ(head->rect().top() + 23 + 10, list()->child(5)->rect().top() - 5);
    EXPECT_EQ(childAt(head->rect().center()), head);

    on(&View::enterToLargeViewRequested, [&](Index) { told += u"opened"_s; });
    QAccessibleInterface* last = list()->child(209);
    tree->data(1).setIsCollapsedForBrowser(true); // there are fewer now
    EXPECT_TRUE(
        !last->isValid() && last->state().invalid && last->text(QAccessible::Name).isNull());
    last->actionInterface()->doAction(QAccessibleActionInterface::pressAction());
    EXPECT_EQ(told, QStringList());
    view->reloadData();
    EXPECT_FALSE(item->isValid()) << "it may be about something else now";
    EXPECT_EQ(list()->childCount(), 3 + 203 + 1);
    EXPECT_EQ(name(5) + u' ' + name(6), u"/photos/c c0");
    showLeaves({});
    EXPECT_EQ(list()->childCount(), 1);
}

TEST_F(BrowserAccessibleTest, theCurrentImageIsToldWithTheFocusOnlyAndActionsAreTheListedOnes) {
    show({3, 40});
    on(&View::enterToLargeViewRequested, [&](Index index) { told += QString::number(index.item); });
    const auto act = [&](int child, const QString& action) {
        list()->child(child)->actionInterface()->doAction(action);
        return tree->selected();
    };
    using Action = QAccessibleActionInterface;
    QPushButton button(view.get());
    button.show();
    button.setFocus();
    ASSERT_TRUE(support::spinUntil([&] { return button.hasFocus(); }));
    EXPECT_EQ(list()->focusChild(), list()->child(45));
    events.clear();
    view->GotoIndex({0, 1});
    EXPECT_EQ(std::exchange(events, {}), QStringList{u"8009:-1"_s}) << "the focus is elsewhere";
    EXPECT_EQ(act(3, Action::setFocusAction()), u"a2");
    EXPECT_EQ(events, (QStringList{u"8005:2"_s, u"8009:-1"_s, u"8005:3"_s}));
    EXPECT_EQ(list()->focusChild(), list()->child(3));
    EXPECT_TRUE(list()->child(3)->state().focused && !list()->child(2)->state().focused);
    EXPECT_EQ(view->currentIndex(), (Index{0, 2}));
    EXPECT_EQ(act(2, Action::toggleAction()), u"a1 a2");
    EXPECT_EQ(act(3, Action::toggleAction()), u"a1");
    act(3, Action::pressAction());
    EXPECT_EQ(told, QStringList{u"2"_s});
    act(4, Action::toggleAction());
    EXPECT_FALSE(scrollView.isScrolling());
    act(4, Action::pressAction());
    finishMotion();
    EXPECT_EQ(position(), view->browserLayout().groupItemPosition(1));
    events.clear();
    showLeaves({});
    EXPECT_TRUE(events.contains(u"8004:-1"_s) && events.filter(u"8005"_s).isEmpty());
    EXPECT_EQ(list()->focusChild(), nullptr);
}

} // namespace
