#include "ui/PBPathControl.h"

#include "support/Support.h"

#include <QMenu>
#include <QTest>

namespace {

const group::IconName image{group::IconName::Kind::Named, u"date_n"_s};

struct PBPathCellTest : testing::Test {
    PBPathCellTest() { path.setSize({400, 20}); }
    [[nodiscard]] const PBPathComponentCell& cell(std::size_t index) const {
        return *path.pathComponentCells()[index];
    }

    const PathCellStyle style{QFont(), false};
    PBPathCell path{style};
};

TEST_F(PBPathCellTest, onlyTheLimitedCellGivesWay) {
    path.addItemWithTitle(u"2019"_s, image, false);
    path.addItemWithTitle(QString(200, u'x'), image, true);
    path.addItemWithTitle(u"Camera"_s, image, false);
    const double whole = cell(0).cellSize().width();
    EXPECT_EQ(cell(1).cellSize().width(), 400 - 2 - cell(1).widthOfOtherCell());
    EXPECT_EQ(cell(0).cellSize().width(), whole);
    EXPECT_EQ(path.rectOfItem(2).right(), 398);
    // Wide enough: no more than it needs.
    path.setSize({10000, 20});
    EXPECT_EQ(cell(1).cellSize().width(), cell(1).sizeOfTitle().width() + 29);
    // Too narrow for the others alone: what remains is the symbol, and the end is cut off.
    path.setSize({60, 20});
    EXPECT_EQ(cell(1).cellSize().width(), 29);
    EXPECT_LE(path.rectOfItem(2).right(), 60 + whole);
    EXPECT_GE(path.rectOfItem(2).width(), 0);
}

TEST(PBPathControlTest, theKeyboardGoesAlongTheCells) {
    PBPathControl control;
    control.resize(500, control.height());
    control.show();
    std::vector<PBGroupMenuAction> clicked;
    QObject::connect(
        &control, &PBPathControl::groupMenuClicked, &control,
        [&](const PBGroupMenuAction& action) { clicked.push_back(action); });
    control.setGroupTypeArray(std::make_shared<const std::vector<int>>(std::vector{3, 5}));
    QTest::keyClick(&control, Qt::Key_Left);
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(&control, Qt::Key_Right);
    QTest::keyClick(&control, Qt::Key_Space);
    const auto menu = [&] { return control.findChild<QMenu*>(); };
    ASSERT_TRUE(menu());
    menu()->actions().constFirst()->trigger();
    EXPECT_EQ(clicked, (std::vector<PBGroupMenuAction>{{PBGroupMenuAction::Add, 1}}));
    menu()->close();
    ASSERT_TRUE(support::spinUntil([&] { return !menu(); }));
}

} // namespace
