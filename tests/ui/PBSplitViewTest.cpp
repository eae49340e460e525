#include "ui/PBSplitView.h"

#include "support/Support.h"

#include <gtest/gtest.h>

namespace {

class PBSplitViewTest : public testing::Test {
protected:
    PBSplitViewTest() {
        split.setPanes(new QWidget, new QWidget, 0, {200, 400}, 300);
        split.resize(1000, 300);
        split.show();
        split.setFixedPaneSize(250);
    }
    PBSplitView split{Qt::Horizontal};
};

TEST_F(PBSplitViewTest, fixedPaneKeepsItsSizeWhenTheWindowChangesUntilTheOtherHasItsLeast) {
    split.resize(700, 300);
    EXPECT_EQ(split.fixedPaneSize(), 250);
    split.resize(1400, 300);
    EXPECT_EQ(split.fixedPaneSize(), 250);
    split.resize(520, 300);
    EXPECT_EQ(split.sizes().value(1), 300);
}

TEST_F(PBSplitViewTest, sizesAreHeldWithinTheLimitsAndZeroCollapses) {
    split.setFixedPaneSize(50);
    EXPECT_EQ(split.fixedPaneSize(), 200);
    split.setFixedPaneSize(900);
    EXPECT_EQ(split.fixedPaneSize(), 400);
    EXPECT_FALSE(split.isPaneCollapsed(0));
    split.setFixedPaneSize(0);
    EXPECT_TRUE(split.isPaneCollapsed(0));
    EXPECT_EQ(split.sizes().value(1) + split.handleWidth(), 1000);
    split.setFixedPaneSize(300);
    EXPECT_EQ(split.fixedPaneSize(), 300);
}

TEST_F(PBSplitViewTest, anAnimationPassesTheLimitsAndLeavesThemAsTheyWere) {
    int smallest = 1000;
    QObject::connect(&split, &PBSplitView::splitViewDidResizeSubviews, &split, [&] {
        if (split.splitPosition() > 0) smallest = std::min(smallest, split.splitPosition());
    });
    int arrivals = 0;
    split.animateToPosition(0, [&] { ++arrivals; });
    EXPECT_TRUE(split.isAnimationRunning());
    ASSERT_TRUE(support::spinUntil([&] { return arrivals == 1; }));
    EXPECT_FALSE(split.isAnimationRunning());
    EXPECT_TRUE(split.isPaneCollapsed(0));
    split.animateToPosition(250, [&] { ++arrivals; });
    ASSERT_TRUE(support::spinUntil([&] { return arrivals == 2; }));
    EXPECT_EQ(split.splitPosition(), 250);
    EXPECT_LT(smallest, 200) << "or it would jump";
    split.setFixedPaneSize(50);
    EXPECT_EQ(split.fixedPaneSize(), 200);

    split.hide();
    split.animateToPosition(0, [&] { ++arrivals; });
    EXPECT_EQ(arrivals, 3) << "nobody sees a hidden view move";
}

} // namespace
