#include "app/ApplicationController.h"
#include "browser/PBImageBrowserView.h"
#include "platform/Places.h"
#include "platform/UserDefaults.h"
#include "shell/FolderRootCommands.h"
#include "shell/PBMainWindowController.h"
#include "shell/StatusBarView.h"

#include "support/Support.h"

#include <QAction>
#include <QDir>
#include <QImage>
#include <QMainWindow>
#include <QMenuBar>
#include <QTemporaryDir>
#include <QTest>
#include <QToolBar>

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// The whole program in this process, on a folder with three photographs.
class WindowTest : public testing::Test {
protected:
    WindowTest() {
        platform::Places::setProfile(folder.filePath(QStringLiteral("profile")));
        QDir().mkpath(pictures);
        for (const char16_t* name : {u"a.png", u"b.png", u"c.png"}) {
            QImage picture(40, 30, QImage::Format_RGB32);
            picture.fill(Qt::darkCyan);
            EXPECT_TRUE(picture.save(pictures + u'/' + QString::fromUtf16(name)));
        }
        controller.emplace();
        controller->awakeFromNib();
        controller->applicationDidFinishLaunching();
        EXPECT_TRUE(window().folderRootCommands().addOrSelectFolder(pictures));
        EXPECT_TRUE(waitForItems());
    }
    ~WindowTest() override {
        controller.reset();
        platform::Places::setProfile({});
    }

    PBMainWindowController& window() { return controller->mainWindowController(); }
    PBImageBrowserView& browser() { return *window().window().findChild<PBImageBrowserView*>(); }
    [[nodiscard]] bool waitForItems() {
        return support::spinUntil([this] {
            return !controller->isScanning() && browser().selection().itemCount(true) == 3;
        });
    }
    QAction& action(const char* name) {
        const QList<QAction*> actions = window().window().actions();
        const auto found =
            std::ranges::find(actions, QString::fromLatin1(name), [](const QAction* each) {
                return each->objectName();
            });
        return **found;
    }
    void trigger(const char* name) { action(name).trigger(); }
    platform::UserDefaults& defaults() { return controller->userDefaults(); }

    QTemporaryDir folder;
    const QString pictures = folder.filePath(QStringLiteral("pictures"));
    std::optional<ApplicationController> controller;
};

TEST_F(WindowTest, arrangingAndStylesAreInForceAndStored) {
    trigger("arrange_DateTaken");
    EXPECT_EQ(controller->sortType(), 4);
    EXPECT_TRUE(controller->descendingSort());
    trigger("arrange_Ascending");
    EXPECT_EQ(controller->sortType(), 4);
    EXPECT_FALSE(controller->descendingSort());
    EXPECT_EQ(defaults().integerForKey(QStringLiteral("SortType")), 4);
    EXPECT_TRUE(action("arrange_Ascending").isChecked());
    EXPECT_TRUE(waitForItems());

    EXPECT_EQ(browser().style(), 15U);
    trigger("view_FileSize");
    trigger("view_EnlargeSmallPhoto");
    EXPECT_EQ(browser().style(), 15U - 4 + 16);
    EXPECT_EQ(defaults().integerForKey(QStringLiteral("ImageBrowserViewStyle")), 27);
    trigger("view_zoomIn");
    EXPECT_EQ(browser().thumbnailSize(), 176);
    EXPECT_EQ(defaults().doubleForKey(QStringLiteral("ThumbnailSize")), 176);
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
    EXPECT_EQ(defaults().boolForKey(QStringLiteral("ShowHideToolbar")), true);
    trigger("view_StatusBar");
    EXPECT_TRUE(support::spinUntil([&] { return !statusBar->isVisible(); }));
    EXPECT_EQ(defaults().boolForKey(QStringLiteral("ShowHideStatusBar")), true);
}

TEST_F(WindowTest, photographsAreSelectedWalkedAndRenamedByTheMenus) {
    trigger("selectAll");
    EXPECT_EQ(browser().selection().selectCount(true), 3);
    EXPECT_FALSE(action("renameFile").isEnabled()) << "of one only";
    trigger("go_FirstItem");
    trigger("go_LastItem");
    EXPECT_FALSE(action("go_NextItem").isEnabled());
    const auto item = browser().selection().selectedFileArray(true).at(0);
    EXPECT_EQ(item->fileName(), QStringLiteral("c.png"));
    Q_EMIT browser().renameRequested(item, QStringLiteral("z.png"));
    EXPECT_EQ(item->fileName(), QStringLiteral("z.png"));
    EXPECT_TRUE(QFile::exists(pictures + QStringLiteral("/z.png")));
    trigger("deselectAll");
    EXPECT_FALSE(action("deselectAll").isEnabled());
}

} // namespace
