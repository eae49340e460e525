#include "ui/PBPathControl.h"

#include "platform/work/MainLoop.h"
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
    path.addItemWithTitle(u"2019"_s, image, false);
    path.addItemWithTitle(QString(200, u'x'), image, true);
    path.addItemWithTitle(u"Camera"_s, image, false);
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

TEST(PBPathCellTest, ofSeveralCellsTheLongestGivesWayAndTheOthersKeepTheirSize) {
    const PathCellStyle style{QFont(), false};
    PBPathCell path{style};
    for (const QString& title : {QString(60, u'x'), u"Keywords"_s, QString(30, u'x')})
        path.addItemWithTitle(title, {group::IconName::Kind::Named, u"date_n"_s}, true);
    const auto widths = [&](double width) {
        path.setSize({width, 20});
        return support::listed(path.pathComponentCells(), [](const auto& cell) {
            return QString::number(cell->cellSize().width());
        });
    };
    const QStringList full = widths(1e6);
    const double all = path.rectOfItem(2).right();
    const double long0 = full[0].toDouble();
    EXPECT_EQ(widths(all + 2), full);
    EXPECT_EQ(widths(all - 98), (QStringList{QString::number(long0 - 100), full[1], full[2]}));
    const QStringList narrow = widths(all / 2);
    EXPECT_EQ(narrow[1], full[1]);
    EXPECT_EQ(narrow[0], narrow[2]);
    EXPECT_LE(all / 2 - 2 - path.rectOfItem(2).right(), 1) << "all of the room is used";
}

struct PBPathControlTest : testing::Test {
    PBPathControlTest() {
        control.resize(500, control.height());
        control.show();
        show({3, 5});
    }
    void show(std::vector<int> types) {
        control.setGroupTypeArray(std::make_shared<const std::vector<int>>(std::move(types)));
    }
    QMenu* menu() const { return control.findChild<QMenu*>(); }
    const platform::MainLoop& loop = *platform::MainLoop::instance();
    PBPathControl control;
};

TEST_F(PBPathControlTest, keysAndTheLeftButtonOpenTheMenuOfACell) {
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
    menu()->actions().constFirst()->trigger();
    EXPECT_EQ(clicked, (std::vector<PBGroupMenuAction>{{PBGroupMenuAction::Add, 1}}));
    menu()->close();
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

TEST_F(PBPathControlTest, theStepUnderTheMouseIsLitUntilItLeaves) {
    const QPointF place = control.rectOfItem(0).topLeft() + QPointF(1, 2);
    const auto color = [&] { return control.grab().toImage().pixelColor(place.toPoint()); };
    const QColor rest = color();
    const auto move = [&](QPointF point) {
        support::sendMouse(control, QEvent::MouseMove, point, {}, Qt::NoButton);
        return color();
    };
    const QColor hot = move(place);
    EXPECT_NE(hot, rest);
    control.popUpMenuOfItem(0);
    EXPECT_TRUE(color() != rest && color() != hot); // open is stronger
    EXPECT_TRUE(loop.isTracking()) << "no tree is exchanged under an open menu";
    menu()->close();
    EXPECT_FALSE(loop.isTracking());
    EXPECT_EQ(move({490, 10}), rest);
    move(place);
    QEvent leave(QEvent::Leave);
    QApplication::sendEvent(&control, &leave);
    EXPECT_EQ(color(), rest);
}

} // namespace
