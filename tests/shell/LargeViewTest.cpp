#include "shell/large/LargeView.h"

#include "shell/WindowFixture.h"
#include "shell/commands/OpenFilesCommands.h"
#include "shell/panes/InfoPane.h"
#include "shell/toolbar/MainToolbar.h"
#include "viewer/PBImageView.h"

namespace {

/// The real window on made photographs a to d, in the sidebar's only root.
struct LargeViewTest : WindowFixture {
    LargeViewTest() {
        for (const QString& name : {u"a"_s, u"b"_s, u"c"_s, u"d"_s})
            items.push_back(item(name));
        delegate.largeView = [this] { return controller && controller->isLargeView(); };
        showWindow();
        controller->clearBrowser();
        publish(items);
    }
    std::shared_ptr<PBImageFileItem> item(const QString& name) const {
        return support::makeItem(name, name.front().unicode(), 1, 1, folderId);
    }
    LargeView& large() { return controller->largeView(); }
    const PhotoBin& bin() { return large().controller().bin(); }
    void open(int index) { Q_EMIT browser().enterToLargeViewRequested({0, index}); }
    /// What the bin holds, with the focus as a capital, and "|" and what is selected among all.
    QString shown() {
        QString names;
        for (const auto& each : bin().fileItemArray()) {
            const bool isFocus = each == bin().focusImageFileItem();
            names += isFocus ? each->fileName().toUpper() : each->fileName();
        }
        names += u'|';
        for (const auto& each : browser().selection().selectedFileArray(FoldedLeaves::Included))
            names += each->fileName();
        return names;
    }
    QString shownOf(const PBImageFileList& of, int value = 1, int type = group::AllImages) {
        publish(of, value, type);
        return shown();
    }
};

TEST_F(LargeViewTest, opensAGroupOrTheSelectionAndComesBackWithWhatWasShown) {
    const QString folder = window().windowTitle();
    auto* info = window().findChild<InfoPane*>();
    items[1]->setIsSelected(true);
    choose(u"view_BrowserView");
    EXPECT_EQ(shown(), u"aBcd|b");
    EXPECT_EQ(window().windowTitle(), u"2/4   b");
    EXPECT_FALSE(browser().isVisible());
    EXPECT_TRUE(info->isVisibleTo(large().controller().view())) << "the panel is in the view shown";
    EXPECT_EQ(controller->mainToolbar().content(), MainToolbar::Content::LargeView);
    for (const QStringView what : {u"selectAll", u"view_BrowserView", u"removeFolderAlias"})
        EXPECT_FALSE(isEnabled(what)) << what.toString().toStdString();
    items[2]->setFileName(u"c\u202e"_s);
    choose(u"go_NextItem");
    EXPECT_EQ(window().windowTitle(), u"3/4   c\ufffd");
    items[2]->setFileName(u"c"_s);
    choose(u"go_NextItem");
    EXPECT_EQ(shown(), u"abcD|d");
    EXPECT_FALSE(isEnabled(u"go_NextItem") || isEnabled(u"go_LastItem"));
    choose(u"view_ThumbnailView");
    EXPECT_EQ(shown(), u"|d");
    EXPECT_EQ(window().windowTitle(), folder);
    EXPECT_TRUE(browser().isVisible());
    EXPECT_EQ(browser().currentIndex().item, 3) << "keys go on from there";
    EXPECT_EQ(controller->mainToolbar().content(), MainToolbar::Content::Browser);
    EXPECT_TRUE(browser().window()->isAncestorOf(info) && info->isVisibleTo(&window()));

    items[0]->setIsSelected(true); // with d
    open(3);
    EXPECT_EQ(shown(), u"aD|d");
    large().view_ThumbnailView();
    items[0]->setIsSelected(true);
    open(1);
    EXPECT_EQ(shown(), u"aBcd|b") << "not one of the selected";
    open(2);
    EXPECT_EQ(shown(), u"aBcd|b") << "it is open already";
    large().view_ThumbnailView();
    open(9);
    EXPECT_FALSE(large().isShown());
}

TEST_F(LargeViewTest, followsTheTreeByGroupBySelectionAndByRequest) {
    open(1);
    // Each publication is of a new tree: the group is known by its value.
    EXPECT_EQ(shownOf({items[0], items[1], items[3]}), u"aBd|b");
    EXPECT_EQ(shownOf({items[0], items[3]}), u"aD|d") << "the one at its index";
    EXPECT_EQ(shownOf({items[0], items[3]}, 2, group::StarRating), u"|") << "another group";
    EXPECT_TRUE(large().isShown() && window().windowTitle().isEmpty());
    EXPECT_FALSE(isEnabled(u"view_fitIn") || isEnabled(u"view_zoomIn"));
    EXPECT_EQ(shownOf(items), u"Abcd|a");
    large().view_ThumbnailView();

    for (const auto& each : items)
        each->setIsSelected(each != items[0]);
    open(2);
    EXPECT_EQ(shownOf({items[2], items[3], items[1]}), u"bCd|c");
    EXPECT_EQ(shownOf({items[0], items[2], items[1]}), u"bC|c")
        << "nothing new comes to a selection";
    const auto anew = support::makeItem(u"c"_s, 199, 1, 1, folderId);
    EXPECT_EQ(shownOf({items[1], items[3], anew}), u"bC|c") << "its file was written anew";

    const auto asked = std::make_shared<PBOpenFolderObject>();
    asked->folderPath = path(u"photos");
    asked->fileArray.push_back(std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, u"a"_s}));
    delegate.requested = std::make_shared<PBOpenFiles>(PBOpenFolderArray{asked});
    EXPECT_EQ(shownOf(items), u"A|a");
    large().view_ThumbnailView();
    EXPECT_FALSE(delegate.requested);
}

TEST_F(LargeViewTest, openedFilesAreShownAsTheyComeTheFirstOfThemFirst) {
    for (const QString& name : support::words("a b c d"))
        support::writeFile(path(u"photos/"_s + name), "x");
    const auto openFiles = [this](const char* names) {
        delegate.scanning = true;
        const int scans = std::exchange(delegate.scans, 0);
        controller->openFilesCommands().openFiles(
            support::listed(support::words(names), [this](const QString& name) {
                return path(u"photos/"_s + name);
            }));
        EXPECT_EQ(delegate.scans, 1) << "the selected folder is scanned anew, " << scans;
    };
    openFiles("b");
    ASSERT_TRUE(large().isShown() && delegate.requested);
    EXPECT_EQ(shown(), u"|"_s);
    EXPECT_EQ(shownOf({items[0]}), u"|"_s) << "the scan may still bring it";
    EXPECT_EQ(shownOf({items[0], items[1]}), u"aB|b"_s);
    EXPECT_EQ(shownOf(items), u"aBcd|b"_s) << "among its neighbours";
    choose(u"go_NextItem");
    // What is published during a motion waits for its end.
    const auto rests = [this] { return !large().controller().thumbnailView().isScrolling(); };
    ASSERT_TRUE(support::spinUntil(rests));
    EXPECT_EQ(shownOf(items), u"abCd|c"_s) << "once";
    delegate.scans = 0;
    choose(u"view_ThumbnailView");
    EXPECT_FALSE(delegate.requested);
    EXPECT_EQ(delegate.scans, 1) << "subfolders were left out";

    openFiles("c a");
    EXPECT_EQ(shownOf({items[0]}), u"|"_s);
    EXPECT_EQ(shownOf(items), u"aC|c"_s) << "the others were not asked for";
    openFiles("d");
    EXPECT_EQ(shown(), u"|"_s) << "in place of the former request";
    publish({items[1]});
    delegate.scanning = false;
    controller->scanStateDidChange();
    EXPECT_EQ(shown(), u"B|b"_s) << "it doesn't come";
    tree().clearSelection();
    controller->clearBrowser();
    EXPECT_FALSE(delegate.requested || large().isShown()) << "the user does something else";

    support::refuse(db, u"insert on FolderAlias"_s);
    support::writePicture(path(u"far/z.png"));
    delegate.scans = 0;
    controller->openFilesCommands().openFiles({path(u"far/z.png")});
    EXPECT_TRUE(support::spinUntil([this] { return shown() == u"Z.PNG|"; }))
        << "its folder can't be taken, but it can be looked at";
    controller->scanStateDidChange();
    EXPECT_EQ(shown(), u"Z.PNG|"_s);
    EXPECT_EQ(delegate.scans, 0) << "what else is to be looked for?";
    support::permit(db);
    const auto far = addRoot(path(u"far"_s));
    tree().dataSource().reloadCategoryItem();
    controller->sourceSelection().volumesDidMount({far});
    EXPECT_EQ(delegate.scans, 0) << "nobody waits for the folder any more";

    // One that the catalogue has is there at once, and gives way to that of the scan.
    const auto values = platform::FileManager::look(path(u"photos/c"_s)).values;
    PBDictionary columns =
        support::entries("FileName=c ImageWidth=40 ImageHeight=30 RotateAngle=90");
    columns[u"FolderId"_s] = folderId;
    columns[u"FileSize"_s] = values.fileSize;
    columns[u"ModificationDate"_s] = PBDate{values.modificationDate};
    ASSERT_GT(catalogue.insertImageFileWithDictionary(columns), 0);
    openFiles("c");
    EXPECT_EQ(shown(), u"C|"_s);
    EXPECT_EQ(bin().focusImageFileItem()->rotateAngle(), 90);
    EXPECT_EQ(large().chosenImageFileItem(), nullptr) << "it only stands in";
    for (const QStringView what : {u"flagClicked", u"copy", u"view_SlideshowView"})
        EXPECT_FALSE(isEnabled(what)) << what.toString().toStdString();
    EXPECT_TRUE(isEnabled(u"view_fitIn") && isEnabled(u"revealInFinder"));
    large().controller().imageView().actualSize();
    publish(items);
    EXPECT_EQ(bin().focusImageFileItem(), items[2]);
    EXPECT_FALSE(large().controller().imageView().isFitIn()) << "the zoom stays";
    EXPECT_EQ(shown(), u"abCd|c"_s);
    EXPECT_EQ(large().chosenImageFileItem(), items[2]);
    EXPECT_TRUE(isEnabled(u"flagClicked"));
    EXPECT_TRUE(action(u"arrange_FileName")->isChecked())
        << "also while the browser is out of sight";
}

TEST_F(LargeViewTest, whatIsShownStaysWhileTheSameFolderIsReadAnewAndGoesWithTheFolder) {
    open(2);
    delegate.scanning = true;
    controller->clearBrowser();
    publish({item(u"a"_s)});
    EXPECT_EQ(bin().focusImageFileItem(), items[2]) << "it may still come";
    const PBImageFileList again{item(u"a"_s), item(u"c"_s)};
    publish(again);
    EXPECT_EQ(bin().focusImageFileItem(), again[1]);
    EXPECT_EQ(shown(), u"aC|c");

    controller->clearBrowser();
    publish({item(u"a"_s)});
    EXPECT_EQ(bin().focusImageFileItem(), again[1]);
    delegate.scanning = false;
    controller->scanStateDidChange();
    EXPECT_EQ(shown(), u"A|a") << "it did not come";

    tree().clearSelection();
    controller->clearBrowser();
    EXPECT_FALSE(large().isShown());
}

} // namespace
