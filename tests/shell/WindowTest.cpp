#include "browser/PBImageBrowserContainerView.h"
#include "browser/PBImageBrowserTipView.h"
#include "group/GroupPresets.h"
#include "info/PBGeneralInfoView.h"
#include "info/tags/PBTagTokenField.h"
#include "platform/program/LocalizedTexts.h"
#include "shell/WindowFixture.h"
#include "shell/commands/MarkCommands.h"
#include "shell/commands/WindowChoice.h"
#include "shell/groups/PBGroupOutlineView.h"
#include "shell/info/InfoFeed.h"
#include "shell/large/LargeView.h"
#include "shell/panes/InfoPane.h"
#include "shell/panes/NoticeBar.h"
#include "shell/panes/SortButton.h"
#include "shell/panes/StatusBarView.h"
#include "shell/panes/ThumbnailSizeSlider.h"
#include "shell/panes/WorkProgressView.h"
#include "shell/toolbar/MainToolbar.h"
#include "support/Mouse.h"
#include "ui/FolderDropTarget.h"
#include "ui/PBModalTextField.h"
#include "ui/PBPathControl.h"
#include "ui/PBSplitView.h"

#include <QDragEnterEvent>
#include <QHelpEvent>
#include <QInputDialog>
#include <QLabel>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QToolTip>
#include <QTreeWidget>

namespace {

using fileactions::PhotographEdit;
using support::pressButton;

/// The real window on made photographs, of which a is selected in the sidebar's only root.
struct WindowTest : WindowFixture {
    WindowTest() {
        for (const QString& name : {u"a.jpg"_s, u"b.jpg"_s, u"c.jpg"_s}) {
            support::writeFile(path(u"photos") + u'/' + name, "x");
            const qint64 id = catalogue.insertImageFileWithDictionary(
                {{u"FolderId"_s, folderId}, {u"FileName"_s, name}});
            items.push_back(support::makeItem(name, id, 1, 1, folderId));
        }
        showWindow();
        publish(items);
        delegate.scans = delegate.watchUpdates = 0;
    }
    MainToolbar& toolbar() { return controller->mainToolbar(); }
    [[nodiscard]] bool hasKeys(QWidget& widget) {
        window().activateWindow();
        widget.setFocus();
        return support::spinUntil([&] { return widget.hasFocus(); });
    }
    void selectItems(const QString& names) {
        for (const auto& item : items)
            item->setIsSelected(names.contains(item->fileName().first(1)));
        browser().selectDidChange();
    }
    std::vector<qint64> idsOf(const QString& names) const {
        std::vector<qint64> ids;
        for (const auto& item : items)
            if (names.contains(item->fileName().first(1))) ids.push_back(item->fileId());
        return ids;
    }
    /// Presets to choose, to save, and to remove, and what is done with groups.
    QList<QAction*> groupMenu() {
        const QList<QAction*> menus = window().menuBar()->actions();
        QMenu* menu = (*std::ranges::find(menus, u"G&roup"_s, &QAction::text))->menu();
        Q_EMIT menu->aboutToShow();
        return menu->actions();
    }
    template <typename Dialog>
    [[nodiscard]] bool closesDialog() {
        const std::unique_ptr<Dialog> dialog(window().findChild<Dialog*>());
        return dialog != nullptr;
    }
    /// Its title, when nothing moves any more.
    QString titleOf(QStringView name) {
        EXPECT_TRUE(support::spinUntil([this] {
            return std::ranges::none_of(
                window().findChildren<PBSplitView*>(), &PBSplitView::isAnimationRunning);
        }));
        openMenus();
        return action(name)->text();
    }
};

TEST_F(WindowTest, exactlyTheServedCommandsAreThereAndFollowFocusFolderAndSelection) {
    const QString always =
        u"addFolderAlias filter_Flag filter_Star find go_FirstItem go_LastItem go_NextGroup "
        "go_NextItem go_PreviousGroup go_PreviousItem invertSelection manageTags nextPane "
        "previousPane quit recurseSubFolder removeFolderAlias selectAll selectStars0 selectStars1 "
        "selectStars2 selectStars3 selectStars4 selectStars5 showAbout showPreferences "
        "showShortcuts view_CompactGroups view_EnlargeSmallPhoto view_FileName view_FileSize "
        "view_Folder view_FullScreen view_Group view_ImageSize view_Info view_Shadow view_SideBar "
        "view_SlideshowView view_StatusBar view_toolbar view_zoomIn view_zoomOut"_s;
    const auto enabledBesides = [this](const QString& known) {
        openMenus();
        QStringList names;
        for (const QAction* each : window().actions())
            if (each->isEnabled() && !each->objectName().startsWith(u"arrange_") &&
                !known.split(u' ').contains(each->objectName()))
                names.append(each->objectName());
        names.sort();
        return names.join(u' ');
    };
    EXPECT_EQ(enabledBesides({}), always);
    ASSERT_TRUE(hasKeys(browser()));
    browser().GotoIndex({0, 1});
    EXPECT_EQ(
        enabledBesides(always),
        u"automaticRotate copy copyTo cut deleteClicked deleteForGood deselectAll duplicate "
        "exportImage flagClicked go_FirstGroupItem go_LastGroupItem moveTo printImage rating0 "
        "rating1 rating2 rating3 rating4 rating5 renameFile resetRotate revealInFinder rotateLeft "
        "rotateRight setDesktop shareClicked view_BrowserView"_s);
    EXPECT_TRUE(toolbar().deleteAction()->isEnabled() && toolbar().shareAction()->isEnabled());
    make(u"photos/sub");
    controller->sourceSidebar().view()->setFocus();
    ASSERT_TRUE(support::spinUntil([&] { return tree().hasFocus(); }));
    selectItems({});
    const QAction* flag = action(u"flagClicked");
    EXPECT_TRUE(isEnabled(u"revealInFinder") && !flag->isChecked()) << "the folder alone";
    tree().dataSource().refreshChilden(path(u"photos"), true);
    controller->sourceSelection().selectFolder(path(u"photos/sub"));
    items[1]->setFlagged(true);
    selectItems(u"b"_s);
    EXPECT_TRUE(!isEnabled(u"removeFolderAlias") && flag->isChecked()) << "no root";
    selectItems(u"ab"_s);
    Q_EMIT browser().contextMenuRequested(true, QPoint(10, 10));
    auto* menu = browser().findChild<QMenu*>();
    ASSERT_TRUE(menu);
    EXPECT_FALSE(flag->isChecked()) << "one of two";
    EXPECT_EQ(menu->actions().front(), action(u"view_BrowserView"));
    menu->close();
    tree().clearSelection();
    EXPECT_FALSE(isEnabled(u"revealInFinder"));
}

TEST_F(WindowTest, eachEntryDoesWhatItSaysAndTheDisplayStartsAnewWhereItHasTo) {
    const std::map<QString, std::function<qint64()>> figures{
        {u"sort"_s, [this] { return browsing.sortType() + (browsing.descendingSort() ? 10 : 0); }},
        {u"style"_s, [this] { return browser().style(); }},
        {u"size"_s, [this] { return qRound64(browser().thumbnailSize()); }},
        {u"filter"_s, [this] { return browsing.filter(); }},
        {u"recurses"_s, [this] { return browsing.recurseSubFolder(); }},
        {u"selection"_s,
         [this] { return browser().selection().selectCount(FoldedLeaves::Included); }},
        {u"current"_s, [this] { return browser().currentIndex().item; }}};
    // An entry, what it changes, to what, and how often the display starts anew for it.
    const QString rows =
        u"arrange_DateModified sort 13 1; arrange_DateTaken sort 14 1; arrange_Ascending sort 4 1; "
        "arrange_Dscending sort 14 1; arrange_FileSize sort 2 1; arrange_Kind sort 5 1; "
        "arrange_ImageSize sort 6 1; arrange_None sort 0 1; arrange_FileName sort 1 1; "
        "view_Shadow style 14 0; view_FileName style 12 0; view_FileSize style 8 0; "
        "view_ImageSize style 0 0; view_CompactGroups style 32 0; view_CompactGroups style 0 0; "
        "view_EnlargeSmallPhoto style 16 0; view_zoomIn size 176 0; "
        "view_zoomOut size 160 0; view_zoomOut size 144 0; filter_Flag filter 1 1; "
        "filter_Star filter 3 1; filter_Flag filter 2 1; recurseSubFolder recurses 0 1; "
        "recurseSubFolder recurses 1 1; selectAll selection 3 0; deselectAll selection 0 0; "
        "selectStars0 selection 3 0; selectStars4 selection 0 0; invertSelection selection 3 0; "
        "invertSelection selection 0 0; "
        "go_FirstItem current 0 0; go_NextItem current 1 0; go_LastItem current 2 0; "
        "go_PreviousItem current 1 0; go_LastGroupItem current 2 0; go_FirstGroupItem current 0 0"_s;
    for (const QString& row : rows.split(u"; "_s)) {
        const QStringList fields = row.split(u' ');
        delegate.scans = 0;
        choose(fields[0]);
        EXPECT_EQ(figures.at(fields[1])(), fields[2].toInt()) << row.toStdString();
        EXPECT_EQ(delegate.scans, fields[3].toInt()) << row.toStdString();
    }
    EXPECT_EQ(defaults.integerForKey(u"ImageBrowserViewStyle"_s), 16);
    EXPECT_EQ(defaults.doubleForKey(u"ThumbnailSize"_s), 144);
}

TEST_F(WindowTest, whatIsNotPossibleSaysWhyInMenusTipsAndTheStatusBar) {
    ASSERT_TRUE(hasKeys(browser()));
    const QString why = u"Select a photograph first."_s;
    openMenus();
    EXPECT_EQ(action(u"rotateLeft")->toolTip(), why);
    const auto menus = window().findChildren<QMenu*>();
    const auto rating = std::ranges::find_if(
        menus, [this](QMenu* menu) { return menu->actions().contains(action(u"rating1")); });
    ASSERT_NE(rating, menus.end());
    EXPECT_EQ((*rating)->menuAction()->toolTip(), why);
    EXPECT_FALSE((*rating)->menuAction()->isEnabled());
    const auto tipOf = [](QWidget& button) {
        const QPoint place = button.mapToGlobal(button.rect().center());
        QHelpEvent event(QEvent::ToolTip, button.rect().center(), place);
        QApplication::sendEvent(&button, &event);
        return QToolTip::text();
    };
    QWidget& flag = *toolbar().itemView(u"flag");
    EXPECT_TRUE(tipOf(flag).endsWith(u'\n' + why));
    const auto& news = part<QLabel>(u"statusNews"_s);
    const auto answers = [&](Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
        QTest::keyClick(&browser(), key, modifiers);
        return news.text();
    };
    EXPECT_EQ(answers(Qt::Key_Delete), why);
    EXPECT_EQ(
        answers(Qt::Key_Z, Qt::ControlModifier), platform::localizedString(u"Why_NothingToUndo"));
    EXPECT_EQ(answers(Qt::Key_Delete, Qt::KeypadModifier), why);
    browser().GotoIndex({0, 1});
    selectItems(u"ab"_s);
    EXPECT_EQ(answers(Qt::Key_F2), platform::localizedString(u"Why_OnlyOne"));
    EXPECT_FALSE(browser().findChild<PBModalTextField*>()) << "it would rename one of them";
    selectItems(u"a"_s);
    openMenus();
    EXPECT_NE(action(u"rotateLeft")->toolTip(), why);
    EXPECT_FALSE(tipOf(flag).contains(why));
    EXPECT_TRUE((*rating)->menuAction()->isEnabled());
    items[0]->setIsAway(true);
    EXPECT_EQ(answers(Qt::Key_Delete), platform::localizedString(u"Why_Away"));
    selectItems(u"a"_s);
    EXPECT_TRUE(isEnabled(u"flagClicked")) << "marks need no file";
    EXPECT_FALSE(isEnabled(u"exportImage") || toolbar().deleteAction()->isEnabled());
    window().resize(window().minimumSize());
    EXPECT_TRUE(support::spinUntil([&] { return news.text().endsWith(u'…'); })) << "no room";
    choose(u"view_StatusBar");
    ASSERT_TRUE(support::spinUntil([this] { return part<StatusBarView>().isHidden(); }));
    QTest::keyClick(&browser(), Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QToolTip::text(), platform::localizedString(u"Why_Away"));
}

TEST_F(WindowTest, theKeyboardGoesThroughThePanesInSight) {
    ASSERT_TRUE(hasKeys(browser()));
    const auto goes = [this](QStringView command, const QWidget& pane) {
        choose(command);
        const QWidget* focus = window().focusWidget();
        return focus == &pane || pane.isAncestorOf(focus);
    };
    const QWidget& sidebar = *controller->sourceSidebar().view();
    const auto& groups = part<PBGroupOutlineView>();
    EXPECT_TRUE(goes(u"previousPane", groups));
    EXPECT_TRUE(goes(u"previousPane", sidebar));
    selectItems(u"a"_s);
    const InfoPanel& info = controller->infoFeed().pane().panel();
    EXPECT_TRUE(goes(u"previousPane", info)) << "past the first comes the last";
    EXPECT_TRUE(goes(u"nextPane", sidebar));
    choose(u"view_Group");
    (void)titleOf(u"view_Group");
    EXPECT_TRUE(goes(u"nextPane", browser())) << "the groups are hidden";
    // As they stand in the window, where Tab goes, too.
    const QWidget* next = sidebar.nextInFocusChain();
    while (next != &browser() && next != &part<SortButton>())
        next = next->nextInFocusChain();
    EXPECT_EQ(next, &part<SortButton>());
}

TEST_F(WindowTest, panesBarsAndDialogsComeAndGo) {
    for (const QString& name :
         {u"Info"_s, u"Group"_s, u"Folder"_s, u"SideBar"_s, u"StatusBar"_s, u"toolbar"_s}) {
        const QString command = u"view_"_s + name;
        EXPECT_TRUE(titleOf(command).startsWith(u"Hide "));
        choose(command);
        EXPECT_TRUE(titleOf(command).startsWith(u"Show "));
        if (name == u"Group") choose(command); // a sidebar is never empty
    }
    EXPECT_TRUE(toolbar().isHidden());
    StatusBarView& status = part<StatusBarView>();
    EXPECT_TRUE(support::spinUntil([&] { return status.isHidden(); }));
    EXPECT_TRUE(defaults.boolForKey(u"ShowHideToolbar"_s).value_or(false));
    choose(u"find");
    EXPECT_FALSE(toolbar().isHidden());
    EXPECT_EQ(window().focusWidget(), &toolbar().searchField());
    EXPECT_EQ(titleOf(u"view_toolbar"_s), u"Show Toolbar"_s);
    toolbar().searchField().setText(u"b"_s);
    Q_EMIT toolbar().searchField().finished();
    EXPECT_EQ(window().focusWidget(), &browser());
    EXPECT_FALSE(toolbar().isHidden()) << "what is searched for stays in sight";
    toolbar().searchField().clear();
    EXPECT_TRUE(toolbar().isHidden());

    auto& menuBar = part<QMenuBar>();
    const QPoint beside(menuBar.width() - 5, 5);
    QContextMenuEvent click(QContextMenuEvent::Mouse, beside, menuBar.mapToGlobal(beside));
    QApplication::sendEvent(&menuBar, &click);
    EXPECT_FALSE(QApplication::activePopupWidget()) << "Qt's own, which hides the toolbar";

    choose(u"view_StatusBar");
    choose(u"view_FullScreen");
    EXPECT_TRUE(window().isFullScreen());
    EXPECT_FALSE(isEnabled(u"view_toolbar") || isEnabled(u"view_StatusBar"));
    EXPECT_TRUE(support::spinUntil([&] { return status.isHidden(); })) << "on the whole screen";
    choose(u"view_FullScreen");
    EXPECT_TRUE(support::spinUntil([&] { return !status.isHidden(); }));

    for (const char16_t* command : {u"addFolderAlias", u"showShortcuts", u"showAbout"}) {
        choose(command);
        EXPECT_TRUE(closesDialog<QDialog>());
    }
    choose(u"quit");
    EXPECT_FALSE(window().isVisible());
    EXPECT_TRUE(defaults.dataForKey(u"WindowGeometry"_s));
}

TEST_F(WindowTest, whatLiesBesideTheBrowserIsConnectedToo) {
    const QWidget* space = toolbar().itemView(u"PBAutoSpaceItem");
    const int width = space->maximumWidth();
    choose(u"view_SideBar");
    (void)titleOf(u"view_SideBar");
    EXPECT_LT(space->maximumWidth(), width) << "the toolbar keeps to the sidebar's edge";
    for (QToolButton* button : window().findChildren<QToolButton*>())
        if (button->toolTip() == platform::localizedString(u"MoreInformation")) button->click();
    EXPECT_EQ(defaults.integerForKey(u"InfoTag"_s), 1);
    const QWidget& rows = *controller->sourceSidebar().view()->viewport();
    Q_EMIT rows.findChild<FolderDropTarget*>()->dropped({make(u"dropped")});
    EXPECT_TRUE(manager.findAliasObjectByPath(path(u"dropped")));
    Q_EMIT part<PBImageBrowserContainerView>().foldersDropped({make(u"another")});
    EXPECT_TRUE(manager.findAliasObjectByPath(path(u"another")));
    // A photograph that a file manager drops on the thumbnails is opened.
    support::writePicture(path(u"another/x.png"));
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(path(u"another/x.png"))});
    QDragEnterEvent enter({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&browser(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QDropEvent drop({5, 5}, Qt::CopyAction, &data, Qt::LeftButton, {});
    QCoreApplication::sendEvent(&window(), &drop);
    EXPECT_TRUE(support::spinUntil([&] { return controller->isLargeView(); }));
    EXPECT_EQ(controller->sourceSidebar().tree().selectedFolder()->folderPath(), path(u"another"));
    controller->largeView().leave();
    Q_EMIT browser().thumbnailSizeDidChange(200); // by a gesture
    EXPECT_EQ(defaults.doubleForKey(u"ThumbnailSize"_s), 200);
}

TEST_F(WindowTest, theInformationPaneFollowsTheSelectionAndEditsIt) {
    InfoPanel& panel = controller->infoFeed().pane().panel();
    const auto shows = [&](const QString& title) {
        return support::spinUntil([&] { return panel.title() == u"Information of "_s + title; });
    };
    selectItems(u"ab"_s);
    EXPECT_TRUE(shows(u"2 photographs"_s));
    QTest::keyClicks(&part<PBTagTokenField>().editor(), u"sun"_s);
    selectItems(u"c"_s);
    EXPECT_TRUE(shows(u"c.jpg"_s));
    ASSERT_EQ(edits.edits.size(), 1U) << "what was begun is asked for first";
    EXPECT_EQ(edits.edits[0].first.fileIds, idsOf(u"ab"_s));
    EXPECT_EQ(edits.lastChange<PhotographEdit::ChangeTags>().added, QStringList{u"sun"_s});
    panel.generalInfoView().findChild<QToolButton*>()->click();
    EXPECT_NO_THROW((void)edits.lastChange<PhotographEdit::ToggleFlag>());
    using Kind = fileactions::EditResult::Kind;
    edits.end({.kind = Kind::Flag, .isStored = true, .changed = idsOf(u"c"_s), .isFlagged = true});
    EXPECT_TRUE(window().findChild<QWidget*>(u"FlagFeedback"_s));
    // A name that can't be given comes back to the panel.
    panel.renameAgain(items[2], u"a/b.jpg"_s);
    panel.commitEditing();
    EXPECT_EQ(edits.lastChange<PhotographEdit::Rename>().name, u"a/b.jpg"_s);
    QApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    edits.end({.kind = Kind::Name, .reason = u"no"_s});
    window().findChild<QMessageBox*>()->accept();
    ASSERT_TRUE(
        support::spinUntil([&] { return panel.findChild<PBModalTextField*>() != nullptr; }));
    EXPECT_EQ(panel.findChild<PBModalTextField*>()->text(), u"a/b.jpg"_s);
    panel.findChild<PBModalTextField*>()->cancel();
    // What was selected while it was folded away shows afterwards.
    (void)(choose(u"view_Info"), titleOf(u"view_Info"));
    selectItems(u"a"_s);
    QApplication::processEvents();
    EXPECT_EQ(panel.title(), u"Information of c.jpg"_s) << "nothing is read for nobody";
    (void)(choose(u"view_Info"), titleOf(u"view_Info"));
    EXPECT_TRUE(shows(u"a.jpg"_s));
    // Nor while something is stored; afterwards it is, whatever became of that.
    edits.pending = 1;
    selectItems(u"ab"_s);
    EXPECT_TRUE(shows(u"2 photographs"_s));
    EXPECT_TRUE(panel.isGathering());
    edits.pending = 0;
    Q_EMIT edits.didEnd();
    EXPECT_TRUE(support::spinUntil([&] { return !panel.isGathering(); }));
}

TEST_F(WindowTest, whatIsRatedStaysAtItsPlaceWhenItMovesElsewhere) {
    PBImageFileList many;
    for (qint64 id = 100; id < 400; ++id)
        many.push_back(support::makeItem(u"%1.jpg"_s.arg(id), id, 1, 1, folderId));
    publish(many);
    const auto rated = many[150];
    browser().showCurrent(rated); // at the lower edge
    const auto top = [&] {
        return browser().widgetRect(browser().leaves().indexForImageFile(rated)).top();
    };
    const int before = top();
    rated->setIsSelected(true);
    choose(u"rating3");
    edits.end({.isStored = true, .changed = {rated->fileId()}});
    rated->setFileName(u"350 and on.jpg"_s);
    publish(many);
    EXPECT_EQ(top(), before);
}

TEST_F(WindowTest, theStatusBarCountsItsControlsWorkAndLongWorkIsTold) {
    const auto counts = [this] { return part<StatusBarView>().findChild<QLabel*>()->text(); };
    EXPECT_EQ(counts(), u"3 photographs"_s);
    selectItems(u"abc"_s);
    EXPECT_EQ(counts(), u"3 of 3 selected"_s);
    publish({items[1]});
    EXPECT_EQ(counts(), u"1 of 1 selected"_s);
    selectItems({});
    EXPECT_EQ(counts(), u"1 photograph"_s);
    publish({});
    EXPECT_EQ(counts(), u"No photographs"_s);

    auto& slider = part<ThumbnailSizeSlider>();
    slider.setValue(100);
    EXPECT_EQ(browser().thumbnailSize(), 256);
    choose(u"view_zoomOut");
    EXPECT_LT(slider.value(), 100);

    WorkFigures figures{.thumbnailsFinished = 10, .thumbnailsPending = 2};
    controller->setWorkFigures([&] { return figures; });
    const auto tells = [this](const QString& text) {
        return support::spinUntil([&] {
            return std::ranges::any_of(
                part<StatusBarView>().findChildren<QWidget*>(), [&](const QWidget* each) {
                    const auto* progress = dynamic_cast<const WorkProgressView*>(each);
                    return progress && progress->text() == text;
                });
        });
    };
    delegate.scanning = true;
    controller->scanStateDidChange();
    figures.thumbnailsFinished = 11;
    EXPECT_TRUE(tells(u"Thumbnails: 1 of 3"_s));
    figures.thumbnailsPending = 0;
    EXPECT_TRUE(tells({}));
    figures.thumbnailsPending = 5;
    Q_EMIT notifier.PBNotiName_BuildThumb(PBBuildThumbOperation(nullptr, {}));
    EXPECT_TRUE(tells(u"Thumbnails: 0 of 5"_s));
}

TEST_F(WindowTest, aTypedNameIsTakenOrItIsToldWhyNot) {
    selectItems(u"bc"_s);
    EXPECT_FALSE(isEnabled(u"renameFile"));
    selectItems(u"b"_s);
    choose(u"renameFile");
    const auto* field = window().findChild<PBModalTextField*>();
    EXPECT_TRUE(field && field->isVisible());
    const auto given = [this] {
        EXPECT_EQ(edits.edits.back().first.fileIds, idsOf(u"b"_s));
        return edits.lastChange<PhotographEdit::Rename>().name;
    };
    Q_EMIT browser().renameRequested(items[1], u"new.jpg"_s);
    EXPECT_EQ(given(), u"new.jpg"_s);
    edits.end({.kind = fileactions::EditResult::Kind::Name, .isStored = true});
    EXPECT_FALSE(closesDialog<QMessageBox>());
    const auto answers = [&](const QString& typed, const QString& button, bool fails = false) {
        Q_EMIT browser().renameRequested(items[1], typed);
        if (fails) edits.end({.kind = fileactions::EditResult::Kind::Name, .reason = u"Taken."_s});
        const std::unique_ptr<QMessageBox> box(window().findChild<QMessageBox*>());
        if (!box) return u"nothing"_s;
        const QString texts = box->text() + box->informativeText();
        pressButton(*box, button);
        const auto* again = window().findChild<PBModalTextField*>();
        return texts + (again && again->isVisible() ? u'>' + again->text() : QString());
    };
    const QString taken = answers(u"a.jpg"_s, u"OK"_s, true);
    EXPECT_TRUE(taken.contains(u"b.jpg") && taken.endsWith(u"Taken.>a.jpg")) << qPrintable(taken);
    EXPECT_EQ(controller->noticeBar().text(), QString()) << "it was told already";
    EXPECT_TRUE(answers(u"b.png"_s, u"Cancel"_s).endsWith(u">b.png"));
    EXPECT_EQ(given(), u"a.jpg"_s) << "nothing was given";
    answers(u"n.png"_s, u"Keep “.jpg”"_s);
    EXPECT_EQ(given(), u"n.jpg"_s);
    answers(u"n.png"_s, u"Use “.png”"_s);
    EXPECT_EQ(given(), u"n.png"_s);
    answers(u".n.tif"_s, u"Use “.tif”"_s);
    EXPECT_EQ(given(), u"n.png"_s) << "it would be hidden as well";
    const std::unique_ptr<QMessageBox> box(window().findChild<QMessageBox*>());
    ASSERT_TRUE(box);
    pressButton(*box, u"Hide"_s);
    EXPECT_EQ(given(), u".n.tif"_s);
}

/// Each way that a person takes makes an edit of all that is selected.
TEST_F(WindowTest, menusKeysToolbarAndGesturesMarkWhatIsSelected) {
    browser().setFocus();
    selectItems(u"ac"_s);
    EXPECT_TRUE(edits.edits.empty());
    const auto asked = [this](const std::function<void()>& way) {
        way();
        if (edits.edits.empty()) return u"nothing"_s;
        const auto [edit, done] = std::exchange(edits.edits, {}).back();
        EXPECT_EQ(edit.fileIds, idsOf(u"ac"_s));
        if (const auto* rate = std::get_if<PhotographEdit::Rate>(&edit.change))
            return u"stars %1"_s.arg(rate->stars);
        if (const auto* turn = std::get_if<PhotographEdit::Turn>(&edit.change))
            return u"turn %1"_s.arg(turn->degrees);
        return std::holds_alternative<PhotographEdit::ToggleFlag>(edit.change) ? u"flag"_s
                                                                               : u"other"_s;
    };
    const auto askedByKey = [&](int key, Qt::KeyboardModifiers modifiers = {}) {
        return asked([&] { QTest::keyClick(&browser(), static_cast<Qt::Key>(key), modifiers); });
    };
    for (int stars = 0; stars <= 5; ++stars) {
        const QString rating = u"stars %1"_s.arg(stars);
        EXPECT_EQ(asked([&] { choose(u"rating%1"_s.arg(stars)); }), rating);
        // With Shift, as where the digits stand above other signs.
        for (const Qt::KeyboardModifiers modifiers : {Qt::NoModifier, Qt::ShiftModifier})
            EXPECT_EQ(askedByKey(Qt::Key_0 + stars, modifiers), rating);
    }
    EXPECT_EQ(askedByKey(Qt::Key_6), u"nothing"_s);
    EXPECT_EQ(asked([&] { choose(u"flagClicked"); }), u"flag"_s);
    EXPECT_EQ(asked([&] { toolbar().flagAction()->trigger(); }), u"flag"_s);
    EXPECT_EQ(asked([&] { Q_EMIT browser().flagToggleRequested(); }), u"flag"_s);
    EXPECT_EQ(asked([&] { action(u"rotateLeft")->trigger(); }), u"turn 90"_s);
    EXPECT_EQ(asked([&] { toolbar().rotateLeftAction()->trigger(); }), u"turn 90"_s);
    EXPECT_EQ(asked([&] { Q_EMIT browser().rotateLeftRequested(); }), u"turn 90"_s);
    EXPECT_EQ(asked([&] { toolbar().rotateRightAction()->trigger(); }), u"turn -90"_s);
    EXPECT_EQ(asked([&] { Q_EMIT browser().rotateRightRequested(); }), u"turn -90"_s);

    // In the large view the one in focus.
    controller->choice().setFocusOfLargeView([this] { return items[1]; });
    delegate.largeView = [] { return true; };
    controller->markCommands().ratingWithStar(2);
    EXPECT_EQ(edits.edits.back().first.fileIds, idsOf(u"b"_s));
    delegate.largeView = [] { return false; };
    selectItems({});
    edits.edits.clear();
    EXPECT_EQ(askedByKey(Qt::Key_3), u"nothing"_s);
    EXPECT_FALSE(toolbar().flagAction()->isEnabled());
}

TEST_F(WindowTest, undoHasItsNameAndTheWindowTellsWhatBecameOfEdits) {
    EXPECT_FALSE(isEnabled(u"undo"));
    edits.undoName = u"Rename to “a&b.jpg”"_s;
    edits.redoName = u"Rating of 12 Photographs"_s;
    choose(u"undo");
    EXPECT_EQ(action(u"undo")->text(), u"&Undo Rename to “a&&b.jpg”"_s);
    EXPECT_EQ(action(u"redo")->text(), u"&Redo Rating of 12 Photographs"_s);
    choose(u"redo");
    EXPECT_EQ(edits.undone * 10 + edits.redone, 11);
    edits.undoName.clear();
    edits.pending = 1;
    EXPECT_TRUE(isEnabled(u"undo")) << "of what is on its way";

    // Keys belong to the field that has them.
    SearchField& field = toolbar().searchField();
    ASSERT_TRUE(hasKeys(field));
    QTest::keyClicks(&field, u"ab"_s);
    QTest::keyClick(&field, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(field.text(), QString());
    EXPECT_EQ(edits.undone, 1);

    using enum fileactions::EditResult::Way;
    const NoticeBar& notice = controller->noticeBar();
    selectItems(u"a"_s);
    choose(u"rating3");
    edits.end({.way = Undone, .isStored = true, .missingCount = 3});
    EXPECT_TRUE(part<QLabel>(u"statusNews"_s).text().startsWith(u"3 photographs are not"_s));
    for (int time = 0; time < 2; ++time) {
        edits.end({.way = Undone, .reason = u"Full."_s});
        EXPECT_EQ(notice.text(), u"The change could not be taken back."_s);
        pressButton(notice, u"Dismiss"_s);
    }
    edits.end({.isStored = true});
    EXPECT_EQ(notice.text(), QString());
    Q_EMIT edits.didNotReadAgain(u"Locked."_s);
    EXPECT_TRUE(notice.text().contains(u"former marks"));
    delegate.scans = 0;
    pressButton(notice, u"Read Again"_s);
    EXPECT_EQ(delegate.scans, 1);
    EXPECT_EQ(notice.text(), QString());
}

TEST_F(WindowTest, aTagIsRenamedMergedAndRemovedFromTheListOfTags) {
    ASSERT_TRUE(
        db.executeUpdate(u"insert into Tags (Id,Tag,UseCount) values (1,'lake',1),(2,'city',1)"_s));
    ASSERT_TRUE(db.executeUpdate(u"update ImageFile set Tag = '1,2' where Id < 3"_s));
    choose(u"manageTags");
    auto& list = part<QTreeWidget>(u"tags"_s);
    EXPECT_EQ(list.topLevelItemCount(), 0) << "nobody waits for the counting";
    edits.counted(std::vector<marks::TagRows::Count>());
    EXPECT_TRUE(list.topLevelItemCount() == 1 && !list.currentItem()) << "says that there are none";
    edits.counted(marks::TagRows::counts(db));
    ASSERT_EQ(list.topLevelItemCount(), 2);
    EXPECT_EQ(list.topLevelItem(0)->text(0) + list.topLevelItem(0)->text(1), u"city2"_s);
    list.setCurrentItem(list.topLevelItem(1));
    auto& dialog = part<QDialog>(u"tagsDialog"_s);
    const auto renamesTo = [&](const QString& name) {
        pressButton(dialog, u"Rename…"_s);
        const std::unique_ptr<QInputDialog> question(dialog.findChild<QInputDialog*>());
        question->setTextValue(name);
        question->accept();
        return edits.edits.size();
    };
    ASSERT_EQ(renamesTo(u" pond "_s), 1U);
    EXPECT_EQ(edits.lastChange<PhotographEdit::RenameTag>().name, u"pond"_s);
    EXPECT_EQ(renamesTo(u"City"_s), 1U) << "asked first";
    pressButton(*dialog.findChild<QMessageBox*>(), u"Merge"_s);
    ASSERT_EQ(edits.edits.size(), 2U);
    delete dialog.findChild<QMessageBox*>();
    pressButton(dialog, u"Remove"_s);
    auto* question = dialog.findChild<QMessageBox*>();
    EXPECT_EQ(question->text(), u"Should the tag “lake” be removed from 2 photographs?"_s);
    pressButton(*question, u"Remove"_s);
    ASSERT_EQ(edits.edits.size(), 3U);
    EXPECT_EQ(edits.lastChange<PhotographEdit::RemoveTag>().tag, u"lake"_s);
}

TEST_F(WindowTest, toolbarAndMenusShowOneFilterAndOneSearch) {
    const auto isFlagged = [this] { return toolbar().filterFlagAction()->isChecked(); };
    toolbar().filterStarAction()->trigger();
    EXPECT_EQ(browsing.filter(), 2U);
    toolbar().filterFlagAction()->trigger();
    EXPECT_EQ(browsing.filter(), 3U);
    choose(u"filter_Star");
    EXPECT_TRUE(isFlagged() && !toolbar().filterStarAction()->isChecked());
    SearchField& field = toolbar().searchField();
    Q_EMIT field.searchChanged(u"sea"_s);
    Q_EMIT field.searchChanged(u"sea"_s);
    EXPECT_EQ(browsing.searchString() + u' ' + field.text(), u"sea sea"_s);
    EXPECT_EQ(delegate.scans, 4) << "the same text again is no other search";
    controller->sourceSelection().notifySelectionChanged();
    EXPECT_TRUE(field.text().isEmpty() && !isFlagged());

    auto& subFolder = part<QToolButton>(u"subFolder"_s);
    const QString tip = subFolder.toolTip();
    subFolder.click();
    EXPECT_TRUE(!browsing.recurseSubFolder() && subFolder.toolTip() != tip);
    choose(u"recurseSubFolder");
    EXPECT_EQ(subFolder.toolTip(), tip);
    toolbar().addFolderAction()->trigger();
    EXPECT_TRUE(closesDialog<QDialog>());
    Q_EMIT toolbar().captionsChosen(true);
    controller.reset();
    controller.emplace(shell());
    EXPECT_TRUE(toolbar().hasCaptions());
}

TEST_F(WindowTest, anEmptyBrowserSaysWhatIsInTheWayAndTakesItAway) {
    browsing.setSearchString(u"sea"_s);
    browsing.setFilter(group::FilterFlagged);
    browsing.setRecurseSubFolder(false);
    controller->clearBrowser();
    const auto said = [this](const QString& button = {}) {
        if (!button.isEmpty()) part<QAbstractButton>(button).click();
        publish({});
        controller->updateImageBrowserTipView();
        for (const QLabel* label : controller->imageBrowserTipView().findChildren<QLabel*>())
            if (label->isVisible() && !label->text().isEmpty()) return label->text();
        return QString();
    };
    EXPECT_EQ(said(), u"No flagged photographs match “sea”"_s);
    EXPECT_EQ(said(u"ClearSearch"_s), u"No flagged photographs here"_s);
    EXPECT_EQ(said(u"ShowAll"_s), u"No photographs here, and subfolders are left out"_s);
    EXPECT_EQ(said(u"IncludeSubfolders"_s), u"No photographs here"_s);
    EXPECT_EQ(delegate.scans, 3);
    setAway(*root, true);
    EXPECT_EQ(said(), u"This folder can’t be reached at the moment"_s);
    browsing.setFilter(group::FilterRated);
    controller.reset();
    controller.emplace(shell());
    NoticeBar& notice = controller->noticeBar();
    EXPECT_EQ(notice.text(), u"Only rated photographs are shown."_s);
    toolbar().filterStarAction()->trigger();
    EXPECT_EQ(notice.text(), QString());
}

TEST_F(WindowTest, backAndForwardLeadWhereTheirTipsSay) {
    const auto title = [this] { return window().windowTitle(); };
    EXPECT_FALSE(toolbar().backAction()->isEnabled());
    const auto other = addRoot(make(u"other"));
    tree().dataSource().reloadCategoryItem();
    controller->sourceSelection().selectFolder(other->path());
    EXPECT_TRUE(toolbar().backAction()->toolTip().contains(u"photos"));
    toolbar().backAction()->trigger();
    EXPECT_EQ(title(), u"photos"_s);
    EXPECT_TRUE(toolbar().forwardAction()->toolTip().contains(u"other"));
    choose(u"forward");
    EXPECT_EQ(title(), u"other"_s);
    choose(u"back");
    EXPECT_EQ(title(), u"photos"_s);
    toolbar().forwardAction()->trigger();
    choose(u"removeFolderAlias");
    EXPECT_FALSE(manager.findAliasObjectByPath(other->path()));
}

TEST_F(WindowTest, theBarOfTheChainTellsTheOrderAndAnotherChainIsShownStoredAndScanned) {
    const auto& button = part<SortButton>();
    const auto tells = [&](const QString& text, const QString& direction) {
        return support::spinUntil(
            [&] { return button.text() == text && button.toolTip().endsWith(direction); });
    };
    EXPECT_TRUE(tells(u"Name"_s, u"ascending"_s));
    choose(u"arrange_DateTaken");
    choose(u"arrange_Dscending");
    EXPECT_TRUE(tells(u"Date Taken"_s, u"descending"_s));
    choose(u"arrange_None");
    EXPECT_TRUE(tells(u"Unsorted"_s, u"Unsorted"_s));
    auto& breadcrumb = part<PBPathControl>();
    EXPECT_GT(button.width(), 60);
    breadcrumb.resize(200, breadcrumb.height());
    EXPECT_LT(button.width(), 30);
    EXPECT_LE(breadcrumb.rectOfItem(breadcrumb.pathCell().itemCount() - 1).right(), button.x());
    delegate.scans = 0;
    const auto add = [&](group::GroupType type) {
        Q_EMIT breadcrumb.groupMenuClicked({PBGroupMenuAction::Add, static_cast<int>(type)});
    };
    add(group::StarRating);
    EXPECT_EQ(browsing.groupTypeArray()->back(), group::StarRating);
    EXPECT_EQ(breadcrumb.groupTypeArray(), browsing.groupTypeArray());
    EXPECT_EQ(delegate.scans, 1);
    EXPECT_EQ(*BrowsingSettings(defaults).groupTypeArray(), *browsing.groupTypeArray());
    add(group::Place);
    EXPECT_TRUE(closesDialog<QMessageBox>()) << "there are no places to look up";

    groupMenu()[2]->trigger();
    groupMenu()[0]->menu()->actions().last()->trigger();
    EXPECT_EQ(delegate.scans, 1) << "the preset of the chain in force";
    EXPECT_EQ(group::GroupPresets(defaults).chains().size(), 1U);
    EXPECT_FALSE(groupMenu()[2]->isEnabled()) << "it is a preset already";
    EXPECT_TRUE(groupMenu().last()->isEnabled()) << "moves the groups into folders";
    static_cast<QToolButton*>(toolbar().itemView(u"group"))->defaultAction()->trigger();
    auto* presets = qobject_cast<QMenu*>(QApplication::activePopupWidget());
    ASSERT_TRUE(presets);
    EXPECT_TRUE(presets->actions().constFirst()->isChecked()) << "the one in force, a click away";
    presets->close();
    groupMenu()[3]->menu()->actions().last()->trigger();
    EXPECT_TRUE(group::GroupPresets(defaults).chains().empty());
}

TEST_F(WindowTest, theTipTellsWhyNothingIsShownAndOffersABeginning) {
    auto& tip = controller->imageBrowserTipView();
    EXPECT_EQ(tip.tipKind(), 0);
    publish({});
    source.setGroupItemArray({});
    controller->clearBrowser();
    for (const int kind : {3, 4, 2}) { // nothing found, not yet, nothing selected
        delegate.scanning = kind == 4;
        if (kind == 2) tree().clearSelection();
        controller->scanStateDidChange();
        EXPECT_EQ(tip.tipKind(), kind);
    }
    EXPECT_FALSE(groupMenu().last()->isEnabled()) << "there are none to move";
    controller->folderRootCommands().doRemoveFolderAlias(
        tree().dataSource().folderAliasItemWithAliasObject(*root));
    EXPECT_EQ(tip.tipKind(), 1);
    Q_EMIT tip.addFolderRequested();
    EXPECT_TRUE(closesDialog<QDialog>());
}

} // namespace
