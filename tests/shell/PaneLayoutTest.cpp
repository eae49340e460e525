#include "shell/PaneLayout.h"

#include "platform/UserDefaults.h"
#include "support/Support.h"

#include <QWidget>

using Pane = PaneLayout::Pane;

namespace {

/// A window's worth of panes with settings of its own.
struct PaneLayoutTest : testing::Test {
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
        void toggle(Pane pane) const {
            layout->toggle(pane);
            EXPECT_TRUE(support::spinUntil([this] { return !layout->isAnimationRunning(); }));
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
    platform::UserDefaults defaults{folder.filePath(u"Velmora.conf"_s)};
};

TEST_F(PaneLayoutTest, whileAPaneMovesItsSplitTakesNoOtherCommand) {
    Window window(defaults);
    window.layout->toggle(Pane::SideBar);
    ASSERT_TRUE(window.layout->isAnimationRunning());
    window.layout->toggle(Pane::SideBar);
    window.layout->toggle(Pane::Folder);
    ASSERT_TRUE(support::spinUntil([&] { return !window.layout->isAnimationRunning(); }));
    EXPECT_FALSE(window.layout->isShown(Pane::SideBar));
    window.toggle(Pane::SideBar);
    EXPECT_TRUE(window.layout->isShown(Pane::Folder));
}

TEST_F(PaneLayoutTest, theSideBarComesWithAPaneOfItAndIsNeverEmpty) {
    Window window(defaults);
    window.toggle(Pane::Group);
    window.toggle(Pane::SideBar);
    EXPECT_FALSE(window.layout->isShown(Pane::Folder));
    window.toggle(Pane::Group);
    EXPECT_TRUE(window.layout->isShown(Pane::Folder));
    EXPECT_TRUE(window.layout->isShown(Pane::Group));
    window.toggle(Pane::Folder);
    window.toggle(Pane::Group);
    EXPECT_TRUE(window.layout->isShown(Pane::Folder));
    EXPECT_FALSE(window.layout->isShown(Pane::Group));
}

TEST_F(PaneLayoutTest, strangeSizesAreHeldWithinTheLimits) {
    defaults.setDouble(5000, u"SourceGroupSplitPos"_s);
    defaults.setDouble(-3, u"InfoSplitPos"_s);
    defaults.setDouble(9999, u"GroupSplitPos"_s);
    const Window window(defaults);
    EXPECT_EQ(window.source->width(), 400);
    EXPECT_GE(window.info->width(), 200);
    EXPECT_GE(window.group->height(), 150);
}

} // namespace
