#include "shell/PaneLayout.h"

#include "platform/UserDefaults.h"
#include "support/Support.h"

#include <QTemporaryDir>
#include <QWidget>

#include <gtest/gtest.h>

using Pane = PaneLayout::Pane;

namespace {

/// A window's worth of panes with settings of its own.
class PaneLayoutTest : public testing::Test {
protected:
    struct Window {
        explicit Window(platform::UserDefaults& defaults) {
            view.reset(panes(defaults)->view());
            view->resize(1200, 700);
            view->show();
            layout->restorePositions();
        }
        PaneLayout* panes(platform::UserDefaults& defaults) {
            const PaneLayout::Contents contents{
                .source = source, .group = group, .thumbnail = thumbnail, .info = info};
            layout = std::make_unique<PaneLayout>(contents, defaults, nullptr);
            return layout.get();
        }
        // Taken over by the split views.
        QWidget* source = new QWidget;
        QWidget* group = new QWidget;
        QWidget* thumbnail = new QWidget;
        QWidget* info = new QWidget;
        std::unique_ptr<PaneLayout> layout;
        std::unique_ptr<QWidget> view;
    };

    QTemporaryDir folder;
    platform::UserDefaults defaults{folder.filePath(QStringLiteral("Velmora.conf"))};
};

TEST_F(PaneLayoutTest, everyPaneHidesAndComesBackAtItsSize) {
    Window window(defaults);
    for (const Pane pane : {Pane::SideBar, Pane::Folder, Pane::Group, Pane::Info}) {
        ASSERT_TRUE(window.layout->isShown(pane));
    }
    const int sideBar = window.source->width();
    const int top = window.source->height();
    const int info = window.info->width();
    for (const Pane pane : {Pane::SideBar, Pane::Folder, Pane::Group, Pane::Info}) {
        window.layout->toggle(pane);
        EXPECT_FALSE(window.layout->isShown(pane)) << static_cast<int>(pane);
        window.layout->toggle(pane);
        EXPECT_TRUE(window.layout->isShown(pane)) << static_cast<int>(pane);
    }
    EXPECT_EQ(window.source->width(), sideBar);
    EXPECT_EQ(window.source->height(), top);
    EXPECT_EQ(window.info->width(), info);
}

TEST_F(PaneLayoutTest, showingAPaneOfAHiddenSideBarShowsTheSideBar) {
    Window window(defaults);
    window.layout->toggle(Pane::SideBar);
    EXPECT_FALSE(window.layout->isShown(Pane::Group));
    window.layout->toggle(Pane::Group);
    EXPECT_TRUE(window.layout->isShown(Pane::SideBar));
    EXPECT_TRUE(window.layout->isShown(Pane::Group));
}

TEST_F(PaneLayoutTest, theLastOfTheLeftPanesCannotLeaveTheSideBarEmpty) {
    Window window(defaults);
    window.layout->toggle(Pane::Folder);
    window.layout->toggle(Pane::Group);
    EXPECT_TRUE(window.layout->isShown(Pane::Folder));
    EXPECT_FALSE(window.layout->isShown(Pane::Group));
}

TEST_F(PaneLayoutTest, sizesSurviveARestartAndStrangeOnesAreHeldWithinTheLimits) {
    defaults.setDouble(333, QStringLiteral("SourceGroupSplitPos"));
    defaults.setDouble(222, QStringLiteral("InfoSplitPos"));
    {
        const Window window(defaults);
        EXPECT_EQ(window.source->width(), 333);
        EXPECT_EQ(window.info->width(), 222);
    }
    defaults.setDouble(5000, QStringLiteral("SourceGroupSplitPos"));
    defaults.setDouble(-3, QStringLiteral("InfoSplitPos"));
    defaults.setDouble(9999, QStringLiteral("GroupSplitPos"));
    const Window window(defaults);
    EXPECT_EQ(window.source->width(), 400);
    EXPECT_GE(window.info->width(), 200);
    EXPECT_GE(window.group->height(), 150);
}

} // namespace
