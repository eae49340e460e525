#include "shell/panes/PaneLayout.h"

#include "platform/program/UserDefaults.h"
#include "support/Support.h"

#include <QWidget>

using enum PaneLayout::Pane;

namespace {

/// A window's worth of panes.
struct Panes {
    explicit Panes(platform::UserDefaults& defaults)
        : layout({source, group, thumbnail, info}, defaults, nullptr) {
        view->resize(1200, 700);
        view->show();
        layout.restorePositions();
    }
    bool comesToRest() {
        return support::spinUntil([this] { return !layout.isAnimationRunning(); });
    }
    /// Those that are shown then, by their initials; what is out of sight takes no keys.
    QString toggle(PaneLayout::Pane pane) {
        layout.toggle(pane);
        EXPECT_TRUE(comesToRest());
        return shown();
    }
    QString shown() const {
        QString names;
        for (const auto& [widget, pane, name] :
             {std::tuple{source, Folder, u'F'}, {group, Group, u'G'}, {info, Info, u'I'}}) {
            EXPECT_EQ(widget->isEnabled(), layout.isShown(pane));
            if (layout.isShown(pane)) names += QChar(name);
        }
        EXPECT_EQ(layout.isShown(SideBar), layout.sideBarWidth() > 0);
        return names;
    }
    // Taken over by the split views.
    QWidget* source = new QWidget;
    QWidget* group = new QWidget;
    QWidget* thumbnail = new QWidget;
    QWidget* info = new QWidget;
    PaneLayout layout;
    std::unique_ptr<QWidget> view{layout.view()};
};

struct PaneLayoutTest : testing::Test {
    QTemporaryDir folder;
    platform::UserDefaults defaults{folder.filePath(u"Velmora.conf"_s)};
};

TEST_F(PaneLayoutTest, theSideBarComesWithAPaneOfItAndIsNeverEmpty) {
    Panes panes(defaults);
    EXPECT_EQ(panes.toggle(Group), u"FI"_s);
    EXPECT_EQ(panes.toggle(SideBar), u"I"_s);
    EXPECT_EQ(panes.toggle(Group), u"FGI"_s);
    EXPECT_EQ(panes.toggle(Folder), u"GI"_s);
    EXPECT_EQ(panes.toggle(Group), u"FI"_s);

    // While a pane moves, its split takes no other command.
    for (const auto pane : {SideBar, SideBar, Group})
        panes.layout.toggle(pane);
    ASSERT_TRUE(panes.comesToRest());
    EXPECT_EQ(panes.shown(), u"I"_s);
    EXPECT_EQ(panes.toggle(SideBar), u"FI"_s);
}

TEST_F(PaneLayoutTest, strangeSizesAreHeldWithinTheLimits) {
    defaults.setDouble(5000, u"SourceGroupSplitPos"_s);
    defaults.setDouble(-3, u"InfoSplitPos"_s);
    defaults.setDouble(9999, u"GroupSplitPos"_s);
    const Panes panes(defaults);
    EXPECT_EQ(panes.source->width(), 400);
    EXPECT_EQ(panes.info->width(), 260) << "no size at all";
    EXPECT_EQ(panes.group->height(), 150);
}

TEST_F(PaneLayoutTest, sizesAndHiddenPanesComeBackInTheNextWindow) {
    {
        Panes panes(defaults);
        EXPECT_EQ(panes.layout.sideBarWidth(), 230);
        EXPECT_EQ(panes.info->width(), 260);
        panes.layout.savePositions();
        EXPECT_EQ(defaults.integerForKey(u"HiddenPanes"_s), std::nullopt) << "as by default";
        defaults.setDouble(300, u"SourceGroupSplitPos"_s);
        panes.toggle(Info);
        panes.toggle(Folder);
    }
    EXPECT_EQ(defaults.integerForKey(u"HiddenPanes"_s), 0b1010);
    Panes panes(defaults);
    EXPECT_EQ(panes.layout.sideBarWidth(), 300);
    EXPECT_EQ(panes.shown(), u"G"_s);
    EXPECT_EQ(panes.toggle(Info), u"GI"_s);
    EXPECT_EQ(panes.info->width(), 260);
    EXPECT_EQ(panes.toggle(SideBar), u"I"_s);
    EXPECT_EQ(defaults.integerForKey(u"HiddenPanes"_s), 0b0011);
    panes.layout.savePositions();
    EXPECT_EQ(defaults.doubleForKey(u"SourceGroupSplitPos"_s), 300) << "of a hidden one, its last";
}

} // namespace
