#include "ui/PBPathControl.h"

#include "group/GroupTypes.h"
#include "support/Support.h"

#include <QMenu>
#include <QTest>

namespace {

const group::IconName noImage;
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

struct PBPathControlTest : testing::Test {
    PBPathControlTest() {
        control.resize(500, control.height());
        control.show();
        QObject::connect(
            &control, &PBPathControl::groupMenuClicked, &control,
            [this](const PBGroupMenuAction& action) { clicked.push_back(action); });
    }
    static PBGroupTypeArray chain(std::vector<int> types) {
        return std::make_shared<const std::vector<int>>(std::move(types));
    }
    [[nodiscard]] QMenu* openMenu() const { return control.findChild<QMenu*>(); }
    void closeMenu() {
        openMenu()->close();
        ASSERT_TRUE(support::spinUntil([this] { return !openMenu(); }));
    }
    [[nodiscard]] QPoint centreOf(std::size_t index) const {
        return control.rectOfItem(index).center().toPoint();
    }

    PBPathControl control;
    std::vector<PBGroupMenuAction> clicked;
};

TEST_F(PBPathControlTest, hasACellForEachLinkAndOneToAdd) {
    EXPECT_EQ(control.pathCell().itemCount(), 0U);
    const PBGroupTypeArray two = chain({3, 5});
    control.setGroupTypeArray(two);
    ASSERT_EQ(control.pathCell().itemCount(), 3U);
    EXPECT_EQ(control.pathCell().itemAt(centreOf(1)), std::size_t{1});
    EXPECT_EQ(control.pathCell().itemAt(QPointF(499, 10)), std::nullopt);
    const auto* cells = &control.pathCell().pathComponentCells();
    EXPECT_EQ((*cells)[1]->title(), group::descriptionWithGroupType(5));
    EXPECT_TRUE((*cells)[2]->title().isEmpty());
    const auto* first = cells->front().get();
    control.setGroupTypeArray(two);
    EXPECT_EQ(cells->front().get(), first) << "the very same array changes nothing";
    control.setGroupTypeArray(chain({3, 5, 16}));
    EXPECT_EQ(control.pathCell().itemCount(), 3U);
    EXPECT_FALSE((*cells)[2]->title().isEmpty());
    control.setGroupTypeArray(chain({}));
    EXPECT_EQ(control.pathCell().itemCount(), 1U);
}

TEST_F(PBPathControlTest, aPressOpensTheMenuOfTheCell) {
    QTest::mouseClick(&control, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_EQ(openMenu(), nullptr) << "without a chain";
    control.setGroupTypeArray(chain({3, 5}));
    QTest::mousePress(&control, Qt::RightButton, {}, centreOf(1));
    QTest::mousePress(&control, Qt::LeftButton, {}, QPoint(499, 10));
    EXPECT_EQ(openMenu(), nullptr) << "another button, or beside the cells";

    QTest::mousePress(&control, Qt::LeftButton, {}, centreOf(1));
    ASSERT_TRUE(openMenu() && openMenu()->isVisible());
    const QRectF cell = control.rectOfItem(1);
    EXPECT_EQ(
        openMenu()->pos(),
        control.mapToGlobal(QPoint(qRound(cell.left()), qRound(cell.bottom()) + 6)));
    openMenu()->actions().constFirst()->trigger();
    openMenu()->actions().constLast()->trigger();
    const std::vector<PBGroupMenuAction> expected{
        {PBGroupMenuAction::Replace, std::array{1, 1}}, {PBGroupMenuAction::Remove, 1}};
    EXPECT_EQ(clicked, expected);
    closeMenu();
}

TEST_F(PBPathControlTest, theKeyboardGoesAlongTheCells) {
    control.setGroupTypeArray(chain({3, 5}));
    QTest::keyClick(&control, Qt::Key_Left);
    for (int i = 0; i < 5; ++i)
        QTest::keyClick(&control, Qt::Key_Right);
    QTest::keyClick(&control, Qt::Key_Space);
    ASSERT_TRUE(openMenu());
    openMenu()->actions().constFirst()->trigger();
    ASSERT_EQ(clicked.size(), 1U);
    EXPECT_EQ(clicked[0], (PBGroupMenuAction{PBGroupMenuAction::Add, 1}));
    closeMenu();
}

} // namespace
