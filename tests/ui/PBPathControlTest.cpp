#include "ui/PBPathControl.h"

#include "platform/tasks/MainLoop.h"
#include "support/Mouse.h"

#include <QMenu>
#include <QTest>

namespace {

TEST(PBPathCellTest, onlyTheLimitedCellGivesWay) {
    const PathCellStyle style{QFont(), false};
    PBPathCell path{style};
    const auto cell = [&](std::size_t index) -> auto& {
        return *path.pathComponentCells()[index];
    };
    const group::IconName image{group::IconName::Kind::Named, u"date_n"_s};
    path.setSize({400, 20});
    for (const QString& title : {u"2019"_s, QString(200, u'x'), u"Camera"_s})
        path.addItemWithTitle(title, image, title.size() == 200);
    EXPECT_EQ(cell(1).cellSize().width(), 400 - 2 - cell(1).widthOfOtherCell());
    EXPECT_EQ(path.rectOfItem(2).right(), 398);
    // Symbol, title and arrow; the last has no arrow, and none needs more than that.
    path.setSize({10000, 20});
    const auto aroundTitle = [&](std::size_t index) {
        return cell(index).cellSize().width() - cell(index).sizeOfTitle().width();
    };
    EXPECT_EQ((QList{aroundTitle(0), aroundTitle(1), aroundTitle(2)}), (QList<double>{29, 29, 21}));
    // Too narrow for the others alone: what remains is the symbol, and the end is cut off.
    path.setSize({60, 20});
    EXPECT_EQ(cell(1).cellSize().width(), 29);
    EXPECT_EQ(path.rectOfItem(2).width(), 0);
    EXPECT_EQ(path.insertItemWithTitle(u"x"_s, {}, 1, false).position(), 1U);
    EXPECT_EQ(aroundTitle(1), 2 + 8);
}

TEST(PBPathCellTest, ofLimitedCellsTheLongestGiveWay) {
    const PathCellStyle style{QFont(), false};
    PBPathCell path{style};
    for (const int length : {2, 60, 3, 40})
        path.addItemWithTitle(QString(length, u'x'), {}, true);
    const auto isWhole = [&](std::size_t index) {
        const PBPathComponentCell& cell = *path.pathComponentCells()[index];
        return cell.cellSize().width() == cell.leastWidth() + cell.sizeOfTitle().width();
    };
    for (const double width : {5000.0, 300.0, 120.0}) {
        path.setSize({width, 20});
        EXPECT_TRUE(isWhole(0) && isWhole(2)) << width;
        EXPECT_EQ(isWhole(1) && isWhole(3), width == 5000) << width;
        double all = 0;
        for (const auto& cell : path.pathComponentCells())
            all += cell->cellSize().width();
        EXPECT_TRUE(width == 5000 || std::abs(all - (width - 2)) <= 2) << width << ": " << all;
    }
}

TEST(PBPathControlTest, keysAndTheLeftButtonOpenTheMenuOfACell) {
    PBPathControl control;
    control.resize(500, control.height());
    control.show();
    const auto show = [&](std::vector<int> types) {
        control.setGroupTypeArray(std::make_shared<const std::vector<int>>(std::move(types)));
    };
    const auto menu = [&] { return control.findChild<QMenu*>(); };
    show({3, 5});
    std::vector<PBGroupMenuAction> clicked;
    QObject::connect(
        &control, &PBPathControl::groupMenuClicked, &control,
        [&](const PBGroupMenuAction& action) { clicked.push_back(action); });
    QTest::keyClick(&control, Qt::Key_Left);
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(&control, Qt::Key_Right);
    control.setGroupTypeArray(control.groupTypeArray()); // the same: the keyboard stays
    QTest::keyClick(&control, Qt::Key_Space);
    ASSERT_TRUE(menu());
    EXPECT_TRUE(platform::MainLoop::instance()->isTracking()) << "the groups stay meanwhile";
    menu()->actions().constFirst()->trigger();
    EXPECT_EQ(clicked, (std::vector<PBGroupMenuAction>{{PBGroupMenuAction::Add, 1}}));
    menu()->close();
    EXPECT_FALSE(platform::MainLoop::instance()->isTracking());
    ASSERT_TRUE(support::spinUntil([&] { return !menu(); }));
    show({4, 5}); // of another chain the first cell is next
    QTest::keyClick(&control, Qt::Key_Left);
    QTest::keyClick(&control, Qt::Key_Space);
    ASSERT_TRUE(menu());
    menu()->close();
    // Of cells with the left button only.
    const auto pressed = [&](QPointF point, Qt::MouseButton button = Qt::LeftButton) {
        const QMouseEvent event =
            support::mouseEvent(control, QEvent::MouseButtonPress, point, {}, button);
        return std::unique_ptr<QMenu>(control.menuForEvent(event)) != nullptr;
    };
    const QPointF second = control.rectOfItem(1).center();
    EXPECT_TRUE(pressed(second));
    EXPECT_FALSE(pressed(second, Qt::RightButton) || pressed({second.x(), 2}));
    EXPECT_FALSE(pressed({control.rectOfItem(0).left() - 1, 10}));
    control.setGroupTypeArray(nullptr);
    EXPECT_FALSE(pressed(second));
}

} // namespace
