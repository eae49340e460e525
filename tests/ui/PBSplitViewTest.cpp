#include "ui/PBSplitView.h"

#include "support/Support.h"

#include <gtest/gtest.h>

namespace {

class PBSplitViewTest : public testing::Test {
protected:
    PBSplitViewTest() {
        split.setPanes(new QWidget, new QWidget, 0, {200, 400});
        split.resize(1000, 300);
        split.show();
        split.setFixedPaneSize(250);
    }
    PBSplitView split{Qt::Horizontal};
};

TEST_F(PBSplitViewTest, fixedPaneKeepsItsSizeWhenTheWindowChanges) {
    split.resize(700, 300);
    EXPECT_EQ(split.fixedPaneSize(), 250);
    split.resize(1400, 300);
    EXPECT_EQ(split.fixedPaneSize(), 250);
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

} // namespace
