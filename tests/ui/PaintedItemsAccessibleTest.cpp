#include "ui/PaintedItemsAccessible.h"

#include "support/Support.h"
#include "ui/RowView.h"

#include <QPushButton>
#include <QScopeGuard>

namespace {

using Action = QAccessibleActionInterface;

class RowViewAccessible final : public PaintedItemsAccessible {
public:
    explicit RowViewAccessible(RowView& view)
        : PaintedItemsAccessible(view, u"Information"), _view(view) {}

protected:
    int itemCount() const override { return _view.count; }
    Item item(int index) const override {
        return {
            .role = index == 1 ? QAccessible::Heading : QAccessible::ListItem,
            .rect = {0, index * 10, 50, 10},
            .isSelectable = index != 1,
            .isSelected = index == 2};
    }
    QString itemText(int index, QAccessible::Text kind) const override {
        return kind == QAccessible::Name ? QString(QChar(u'a' + index))
                                         : positionText(index, _view.count);
    }
    QStringList itemActions(int) const override {
        return {Action::pressAction(), Action::setFocusAction()};
    }
    void perform(int index, const QString& action) override {
        _view.performed += QString::number(index) + action + (_view.hasFocus() ? u"!"_s : u""_s);
    }
    int itemAt(const QPoint& point) const override { return _view.rowAt(point); }
    int currentItem() const override { return _view.current; }
    std::uint64_t generation() const override { return _view.generation; }

private:
    RowView& _view;
};

QStringList told; // NOLINT: the listener is a plain function

struct PaintedItemsAccessibleTest : ::testing::Test {
    PaintedItemsAccessibleTest() {
        told.clear();
        RowViewAccessible::install<RowViewAccessible, RowView>();
        RowViewAccessible::listener = [](QAccessibleEvent& event) {
            told += QString::number(event.type(), 16) + u':' + QString::number(event.child());
        };
        view.resize(60, 25);
        button.setGeometry(50, 0, 10, 10);
    }
    ~PaintedItemsAccessibleTest() override { RowViewAccessible::listener = nullptr; }
    [[nodiscard]] QAccessibleInterface* list() {
        return QAccessible::queryAccessibleInterface(&view);
    }
    void takeFocus() {
        view.setFocus();
        ASSERT_TRUE(support::spinUntil([&] { return view.hasFocus(); }));
        told.clear();
    }

    RowView view;
    QWidget band{&view}; ///< is nothing to be told of
    QPushButton button{&view};
};

TEST_F(PaintedItemsAccessibleTest, itemsComeBeforeTheControlsAndAnswerUntilTheyAreVoid) {
    view.show();
    ASSERT_TRUE(support::spinUntil([&] { return view.isVisible(); }));
    EXPECT_EQ(list()->role(), QAccessible::List);
    EXPECT_EQ(list()->text(QAccessible::Name), u"Information");
    ASSERT_EQ(list()->childCount(), 4);
    EXPECT_EQ(list()->child(3)->object(), &button);
    EXPECT_EQ(list()->indexOfChild(list()->child(3)), 3);
    EXPECT_TRUE(!list()->child(4) && !list()->child(-1));

    QAccessibleInterface* last = list()->child(2);
    EXPECT_TRUE(last == list()->child(2) && list()->indexOfChild(last) == 2);
    EXPECT_EQ(last->parent(), list());
    EXPECT_EQ(last->text(QAccessible::Name) + last->text(QAccessible::Description), u"c3 of 3");
    EXPECT_EQ(last->rect(), QRect(view.mapToGlobal(QPoint(0, 20)), QSize(50, 10)));
    EXPECT_TRUE(last->state().selected && last->state().selectable && !last->state().offscreen);
    QAccessibleInterface* head = list()->child(1);
    EXPECT_EQ(head->role(), QAccessible::Heading);
    EXPECT_FALSE(head->state().selected || head->state().selectable || head->state().focusable);
    const auto at = [&](int x, int y) {
        const QPoint point = view.mapToGlobal(QPoint(x, y));
        return list()->childAt(point.x(), point.y());
    };
    EXPECT_TRUE(at(5, 15) == head && at(55, 5) == list()->child(3) && !at(5, 25) && !at(-1, 5));

    view.count = 2;
    EXPECT_TRUE(
        !last->isValid() && last->state().invalid && last->text(QAccessible::Name).isNull());
    last->actionInterface()->doAction(Action::pressAction());
    view.count = 3;
    ++view.generation;
    EXPECT_FALSE(head->isValid()) << "it may be about something else now";
    EXPECT_TRUE(list()->child(1)->isValid());
    EXPECT_EQ(view.performed, QStringList());
}

TEST_F(PaintedItemsAccessibleTest, theCurrentItemIsToldWithTheFocusOnlyAndActionsAreTheListedOnes) {
    view.show();
    view.current = 2;
    list()->child(2)->actionInterface()->doAction(Action::pressAction());
    list()->child(2)->actionInterface()->doAction(Action::toggleAction());
    told.clear();
    button.setFocus();
    ASSERT_TRUE(support::spinUntil([&] { return button.hasFocus(); }));
    RowViewAccessible::currentDidChange(view);
    EXPECT_EQ(told, QStringList()) << "the focus is elsewhere";
    EXPECT_EQ(list()->focusChild(), list()->child(3));
    list()->child(0)->actionInterface()->doAction(Action::setFocusAction());
    EXPECT_EQ(view.performed, (QStringList{u"2Press"_s, u"0SetFocus!"_s}));
    takeFocus();
    RowViewAccessible::currentDidChange(view);
    RowViewAccessible::selectionDidChange(view);
    RowViewAccessible::itemsDidChange(view);
    EXPECT_EQ(told, (QStringList{u"8005:2"_s, u"8009:-1"_s, u"8004:-1"_s}));
    EXPECT_EQ(list()->focusChild(), list()->child(2));
    EXPECT_TRUE(list()->child(2)->state().focused && !list()->child(0)->state().focused);
    view.current = -1;
    told.clear();
    RowViewAccessible::currentDidChange(view);
    EXPECT_EQ(told, QStringList());
    EXPECT_EQ(list()->focusChild(), nullptr);
}

} // namespace
