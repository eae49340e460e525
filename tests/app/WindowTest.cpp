#include "app/RunningProgram.h"
#include "platform/UserDefaults.h"
#include "shell/FolderRootCommands.h"
#include "shell/StatusBarView.h"

#include <QAction>
#include <QMenuBar>
#include <QTest>
#include <QToolBar>

namespace {

/// The whole program in this process, on a folder with three photographs.
struct WindowTest : testing::Test {
    WindowTest() {
        for (const QString& name : {u"/a.png"_s, u"/b.png"_s, u"/c.png"_s})
            support::writePicture(pictures + name);
        program.emplace(folder.filePath(u"profile"_s));
        EXPECT_TRUE(window().folderRootCommands().addOrSelectFolder(pictures));
        EXPECT_TRUE(waitForItems());
    }
    PBMainWindowController& window() { return program->window(); }
    PBImageBrowserView& browser() { return program->browser(); }
    ApplicationController& controller() { return *program->controller; }
    [[nodiscard]] bool waitForItems() {
        return support::spinUntil([this] {
            return !controller().isScanning() && browser().selection().itemCount(true) == 3;
        });
    }
    QAction& action(const char* name) {
        const QList<QAction*> actions = window().window().actions();
        return **std::ranges::find(actions, QString::fromLatin1(name), &QAction::objectName);
    }
    void trigger(const char* name) { action(name).trigger(); }
    platform::UserDefaults& defaults() { return controller().userDefaults(); }

    QTemporaryDir folder;
    const QString pictures = folder.filePath(u"pictures"_s);
    std::optional<RunningProgram> program;
};

TEST_F(WindowTest, arrangingAndStylesAreInForceAndStored) {
    trigger("arrange_DateTaken");
    EXPECT_EQ(controller().sortType(), 4);
    EXPECT_TRUE(controller().descendingSort());
    trigger("arrange_Ascending");
    EXPECT_EQ(controller().sortType(), 4);
    EXPECT_FALSE(controller().descendingSort());
    EXPECT_EQ(defaults().integerForKey(u"SortType"_s), 4);
    EXPECT_TRUE(action("arrange_Ascending").isChecked());
    EXPECT_TRUE(waitForItems());

    EXPECT_EQ(browser().style(), 15U);
    trigger("view_FileSize");
    trigger("view_EnlargeSmallPhoto");
    EXPECT_EQ(browser().style(), 15U - 4 + 16);
    EXPECT_EQ(defaults().integerForKey(u"ImageBrowserViewStyle"_s), 27);
    trigger("view_zoomIn");
    EXPECT_EQ(browser().thumbnailSize(), 176);
    EXPECT_EQ(defaults().doubleForKey(u"ThumbnailSize"_s), 176);
    for (int i = 0; i < 20; ++i)
        trigger("view_zoomIn");
    EXPECT_EQ(browser().thumbnailSize(), 256);
    EXPECT_FALSE(action("view_zoomIn").isEnabled());
}

TEST_F(WindowTest, theWholeScreenHidesTheBarsAndEscapeBringsThemBack) {
    QMainWindow& view = window().window();
    const auto* statusBar = view.findChild<StatusBarView*>();
    const auto* toolbar = view.findChild<QToolBar*>();
    trigger("view_FullScreen");
    EXPECT_TRUE(window().isFullScreen());
    EXPECT_FALSE(statusBar->isVisible() || toolbar->isVisible() || view.menuBar()->isVisible());
    trigger("view_StatusBar"); // hides it for good
    trigger("view_StatusBar");
    EXPECT_FALSE(statusBar->isVisible()) << "whatever the setting";
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_FALSE(window().isFullScreen());
    EXPECT_TRUE(statusBar->isVisible() && toolbar->isVisible() && view.menuBar()->isVisible());
    trigger("view_toolbar");
    EXPECT_FALSE(toolbar->isVisible());
    EXPECT_EQ(defaults().boolForKey(u"ShowHideToolbar"_s), true);
    trigger("view_StatusBar");
    EXPECT_TRUE(support::spinUntil([&] { return !statusBar->isVisible(); }));
    EXPECT_EQ(defaults().boolForKey(u"ShowHideStatusBar"_s), true);
}

TEST_F(WindowTest, photographsAreSelectedWalkedAndRenamedByTheMenus) {
    trigger("selectAll");
    EXPECT_EQ(browser().selection().selectCount(true), 3);
    EXPECT_FALSE(action("renameFile").isEnabled()) << "of one only";
    trigger("go_FirstItem");
    trigger("go_LastItem");
    EXPECT_FALSE(action("go_NextItem").isEnabled());
    const auto item = browser().selection().selectedFileArray(true).at(0);
    EXPECT_EQ(item->fileName(), u"c.png"_s);
    Q_EMIT browser().renameRequested(item, u"z.png"_s);
    EXPECT_EQ(item->fileName(), u"z.png"_s);
    EXPECT_TRUE(QFile::exists(pictures + u"/z.png"_s));
    trigger("deselectAll");
    EXPECT_FALSE(action("deselectAll").isEnabled());
}

} // namespace
