#include "shell/ShellFixture.h"
#include "shell/sidebar/FolderPrompts.h"
#include "shell/sidebar/SourceSidebar.h"

#include <QMainWindow>
#include <QSignalSpy>

namespace {

/// Notes what the user would be told, and chooses what the test says.
struct NotedPrompts final : FolderPrompts {
    void chooseFolder(const QString&, std::function<void(const QString&)> chosen) override {
        chosen(choice);
    }
    void chooseFolderOfRoot(
        const QString&, const QString&, std::function<void(const QString&)> chosen) override {
        chosen(choice);
    }
    void askUseUnlikeFolder(
        const QString& folder, const QString& name, std::function<void(bool)> answered) override {
        told.append(u'?' + folder + u'>' + name);
        answered(usesUnlike);
    }
    void alertFolderIsInSidebar(const QString& folder, const QString& name) override {
        told.append(u'<' + folder + u'<' + name);
    }
    void alertCantUseFolder(const QString& path) override { told.append(u'~' + path); }
    void alertFolderAliasIsAlreadyExist(const QString& name) override { told.append(u'=' + name); }
    void alertCantMount(const QString& name, const QString&) override { told.append(u'!' + name); }
    void alertCantAddFolder(const QString& path) override { told.append(u'-' + path); }
    void alertCantRemoveFolder(const QString& name) override { told.append(u'#' + name); }

    QString choice;
    bool usesUnlike = false;
    QStringList told;
};

struct SidebarCommandsTest : ShellFixture {
    std::shared_ptr<PBAliasObject> root(QStringView name) {
        const auto added = addRoot(make(name));
        rows.reloadCategoryItem();
        return added;
    }
    /// With the bookmark of a folder that is there.
    std::shared_ptr<PBAliasObject> realRoot(QStringView name) {
        const auto made = resolver.newAlias(make(name)).value();
        const qint64 id = catalogue.insertFolderAliasWithData(
            made.data, static_cast<int>(made.type), path(name), 0);
        const auto added = PBAliasObject::aliasObjectWithId(
            id, made.data, QUrl::fromLocalFile(path(name)), path(name), 0, made.type);
        manager.addAliasObject(added);
        rows.reloadCategoryItem();
        return added;
    }
    void select(const PBAliasObject& alias, const QString& relativePath = {}) {
        const auto item = rows.folderItemWithAliasObject(alias, relativePath, true);
        ASSERT_TRUE(item);
        tree.select(*item);
    }
    void readAgain() {
        rows.refreshChilden({}, true);
        rows.reloadData();
    }
    QString selected() {
        const auto item = tree.selectedFolder();
        return item ? item->folderPath() : QString();
    }
    QString lastFolder() const { return *defaults.stringForKey(u"LastSelectFolder"_s); }

    QMainWindow window;
    NotedPrompts prompts;
    int tips = 0;
    SourceSidebar sidebar{shell(), window, prompts, [this] { ++tips; }};
    SourceTreeController& tree = sidebar.tree();
    PBSourceTreeDataSource& rows = tree.dataSource();
    SourceSelection& selection = sidebar.selection();
    FolderRootCommands& commands = sidebar.commands();
    const QString x = make(u"A/x");
    const std::shared_ptr<PBAliasObject> a = root(u"A");
    const std::shared_ptr<PBAliasObject> b = root(u"B");
};

TEST_F(SidebarCommandsTest, selectingAFolderIsShownRememberedScannedAndHasNoFilterOfTheLast) {
    const QString deep = make(u"A/x/de\u202eep");
    QSignalSpy reset(&selection, &SourceSelection::filtersDidReset);
    QSignalSpy stepped(&selection, &SourceSelection::historyDidChange);
    for (const bool launched : {false, true}) {
        delegate.launched = launched;
        browsing.setFilter(group::FilterRated);
        browsing.setSearchString(u"sea"_s);
        select(*a, launched ? u"x/de\u202eep"_s : QString());
        EXPECT_EQ(browsing.filter(), launched ? 0U : 2U) << "the start keeps that of the last run";
        EXPECT_EQ(browsing.searchString(), launched ? QString() : u"sea"_s);
        const QList<qint64> notices{reset.size(), stepped.size(), delegate.scans};
        EXPECT_EQ(notices, (QList<qint64>{launched, 1 + launched, 1 + launched}));
        EXPECT_EQ(window.windowTitle(), launched ? u"de\ufffdep"_s : u"A"_s);
        EXPECT_EQ(window.windowFilePath(), launched ? deep : path(u"A"));
        EXPECT_EQ(lastFolder(), window.windowFilePath());
    }
    QDir(x).removeRecursively();
    readAgain();
    EXPECT_EQ(window.windowTitle() + window.windowFilePath(), u"Velmora"_s);
    EXPECT_EQ(lastFolder(), deep) << "kept for the next start";
    EXPECT_EQ(delegate.scans, 3);
}

TEST_F(SidebarCommandsTest, rowsThatComeAndGoAroundTheSelectedOneChangeNothingElse) {
    delegate.launched = true;
    make(u"A/z");
    select(*a, u"x"_s);
    browsing.setSearchString(u"sea"_s);
    QSignalSpy stepped(&selection, &SourceSelection::historyDidChange);
    const int scans = delegate.scans;
    for (const bool again : {false, true}) {
        make(again ? u"A/c" : u"A/b");
        if (again) QDir().rmdir(path(u"A/b"));
        readAgain();
        EXPECT_EQ(selected(), x);
    }
    EXPECT_EQ(std::pair(delegate.scans - scans, stepped.size()), std::pair(0, qsizetype{0}));
    EXPECT_EQ(browsing.searchString(), u"sea"_s);
    // When its own row goes, that is told once, and when the rows are what they will be.
    int told = 0;
    QObject::connect(&tree, &SourceTreeController::selectionDidChange, &tree, [&] {
        ++told;
        EXPECT_EQ(sidebar.view()->model()->rowCount(sidebar.view()->model()->index(0, 0)), 1);
    });
    rows.removeFolderAlias(*rows.folderAliasItemWithAliasObject(*a));
    EXPECT_EQ(told, 1);
    EXPECT_EQ(delegate.scans, scans + 1);
}

TEST_F(SidebarCommandsTest, whatIsOpenIsOpenAtTheNextStartAndASelectedRowShowsWithItsNeighbours) {
    for (int i = 0; i < 60; ++i)
        make(u"A/x/%1"_s.arg(i, 2, 10, QChar(u'0')));
    select(*a, u"x/30"_s);
    rows.reloadData();
    SourceSidebar next{shell(), window, prompts, [] {}};
    PBSourceTreeDataSource& nextRows = next.tree().dataSource();
    const auto isOpen = [&](const QString& folder) {
        return next.tree().isExpanded(*nextRows.folderItemWithAliasObject(*a, folder, true));
    };
    PBSourceOutlineView& view = *next.view();
    view.resize(200, 150);
    view.show();
    window.show();
    EXPECT_TRUE(support::spinUntil([&] { return isOpen(u"x"_s); }));
    EXPECT_FALSE(isOpen(u"x/30"_s));
    next.tree().select(*nextRows.folderItemWithAliasObject(*a, u"x/30"_s, true));
    const QModelIndex current = view.currentIndex();
    const QRect seen = view.viewport()->rect();
    EXPECT_TRUE(seen.contains(view.visualRect(current)));
    for (const QModelIndex& row : {view.indexAbove(current), view.indexBelow(current)})
        EXPECT_TRUE(seen.intersects(view.visualRect(row))) << row.row();
}

TEST_F(SidebarCommandsTest, aRootThatIsSelectedIsLookedForAndWhatHinderedItIsTold) {
    setAway(*a, true);
    select(*a);
    EXPECT_FALSE(history.canBack());
    answer(*a, platform::Resolution::Outcome::Found, path(u"A"));
    Q_EMIT sidebar.view()->selectedRowPressed(sidebar.view()->currentIndex());
    EXPECT_TRUE(a->isMounted());
    EXPECT_EQ(delegate.watchUpdates, 1);
    EXPECT_EQ(prompts.told, QStringList{u"!A"_s});
    selection.mountFailed(*a, u"why"_s);
    EXPECT_EQ(prompts.told.size(), 2);
}

TEST_F(SidebarCommandsTest, theLastFolderIsAwaitedUntilItsDiskComesOrTheUserSelectsAnother) {
    for (const bool otherwise : {false, true}) {
        tree.clearSelection();
        setAway(*a, true);
        defaults.setString(x, u"LastSelectFolder"_s);
        selection.doSelectLastFolder();
        EXPECT_EQ(selected(), QString());
        if (otherwise) select(*b);
        setAway(*a, false);
        selection.volumesDidMount({a});
        EXPECT_EQ(selected(), path(otherwise ? u"B" : u"A/x"));
    }
    // Its root has moved meanwhile.
    tree.clearSelection();
    defaults.setString(x, u"LastSelectFolder"_s);
    const QString moved = make(u"Moved/x");
    manager.aliasDidAnswer(*a, {platform::Resolution::Outcome::Found, path(u"Moved"), {}});
    rows.reloadCategoryItem();
    selection.doSelectLastFolder();
    EXPECT_EQ((QStringList{selected(), lastFolder()}), QStringList(2, moved));
}

TEST_F(SidebarCommandsTest, aVolumeThatGoesTakesTheSelectionAndOneThatMovedKeepsIt) {
    select(*a);
    const int scans = delegate.scans;
    selection.volumesDidMount({});
    selection.volumesDidUnmount({});
    EXPECT_EQ(delegate.watchUpdates, 0) << "nothing changed";
    for (const auto& root : {b, a}) {
        selection.volumesDidMount({root});
        EXPECT_EQ(delegate.scans, scans + (root == a)) << "not for another root";
    }
    selection.volumesDidUnmount({a}); // found elsewhere in the meantime
    EXPECT_EQ(selected(), path(u"A"));
    setAway(*a, true);
    selection.volumesDidUnmount({b});
    EXPECT_TRUE(tree.selectedItem());
    selection.volumesDidUnmount({a});
    EXPECT_FALSE(tree.selectedItem());
    EXPECT_EQ(delegate.watchUpdates, 5);
    setAway(*a, false);
    selection.volumesDidMount({a});
    EXPECT_EQ(selected(), path(u"A")) << "nothing else was selected meanwhile";
    setAway(*a, true);
    selection.volumesDidUnmount({a});
    select(*b);
    setAway(*a, false);
    selection.volumesDidMount({a});
    EXPECT_EQ(selected(), path(u"B"));
}

TEST_F(SidebarCommandsTest, stepsOfTheHistoryAreNoEntriesOfItAndPassOverWhatIsGone) {
    select(*a);
    select(*a, u"x"_s);
    select(*b);
    QSignalSpy stepped(&selection, &SourceSelection::historyDidChange);
    selection.back();
    EXPECT_EQ(selected(), x);
    EXPECT_TRUE(history.canForward()) << "what lies ahead is not forgotten";
    selection.forward();
    EXPECT_EQ(selected(), path(u"B"));
    EXPECT_TRUE(history.needPush());
    QDir().rmdir(x);
    readAgain();
    selection.back();
    EXPECT_EQ(selected(), path(u"A"));
    EXPECT_EQ(stepped.size(), 3);
    selection.back();
    EXPECT_EQ(stepped.size(), 4) << "also where no step is left";
    EXPECT_TRUE(history.canForward());
    select(*b);
    EXPECT_FALSE(history.canForward()) << "what lay ahead is forgotten";
    selection.notifySelectionChanged();
    EXPECT_EQ(history.backPlace()->aliasObject, a);
}

TEST_F(SidebarCommandsTest, aNewRootIsStoredWatchedShownAndSelectedAfterTheScanLetGo) {
    bool hasScanned = false;
    scanQueue.addOperation([&] { hasScanned = true; });
    prompts.choice = make(u"new folder");
    commands.addFolderAlias();
    EXPECT_EQ(tips, 1);
    EXPECT_EQ(selected(), QString()) << "not within the dialog";
    runPosted();
    EXPECT_EQ(selected(), path(u"new folder"));
    EXPECT_EQ(
        support::rowsOf(db, u"select Type,State from FolderAlias"_s), QStringList(3, u"0|0"_s));
    runPosted();
    EXPECT_EQ(delegate.watchUpdates, 1);
    scanQueue.setSuspended(false);
    scanQueue.waitUntilAllOperationsAreFinished();
    EXPECT_FALSE(hasScanned) << "its rows of folders are old";

    commands.doAddFolder(prompts.choice + u'/');
    runPosted();
    commands.doAddFolder(path(u"none"));
    EXPECT_EQ(prompts.told, (QStringList{u"=new folder"_s, u'-' + path(u"none")}));
    tree.clearSelection();
    EXPECT_TRUE(commands.addOrSelectFolder(prompts.choice));
    EXPECT_EQ(selected(), prompts.choice);
    EXPECT_EQ(manager.aliasArray().size(), 3U);
    prompts.choice.clear();
    commands.addFolderAlias();
    runPosted();
    EXPECT_EQ((QList<qint64>{tips, prompts.told.size()}), (QList<qint64>{2, 2}));
}

TEST_F(SidebarCommandsTest, aRemovedRootEndsItsScanAndComesBackAsItWas) {
    const auto inner = root(u"A/inner");
    select(*a);
    commands.doRemoveFolderAlias(rows.folderAliasItemWithAliasObject(*inner));
    EXPECT_EQ(delegate.cancels, 0) << "another one is shown";
    EXPECT_EQ(selected(), path(u"A"));
    EXPECT_EQ(std::pair(delegate.watchUpdates, tips), std::pair(1, 1));
    ASSERT_TRUE(inner->isZombie());
    commands.doAddFolder(path(u"A/inner"));
    runPosted();
    EXPECT_TRUE(prompts.told.isEmpty() && !inner->isZombie());
    EXPECT_EQ(selected(), path(u"A/inner"));

    commands.removeFolderAlias();
    EXPECT_EQ(delegate.cancels, 1);
    EXPECT_TRUE(inner->isZombie());
    commands.removeFolderAlias();
    EXPECT_EQ(tips, 2) << "nothing is selected";

    // Nothing that the catalogue refuses is shown.
    support::refuse(db, u"update on FolderAlias"_s);
    EXPECT_FALSE(commands.addOrSelectFolder(path(u"A/inner")));
    support::permit(db);
    support::refuse(db, u"insert on FolderAlias"_s);
    commands.doAddFolder(make(u"new"));
    EXPECT_EQ(prompts.told, QStringList{u'-' + path(u"new")});
    EXPECT_FALSE(rows.folderAliasItemWithAliasObject(*inner));
    EXPECT_EQ(manager.aliasArray().size(), 3U);
}

TEST_F(SidebarCommandsTest, aRootThatTheCatalogueKeepsIsShownAgainAndTold) {
    const auto inner = root(u"A/inner");
    support::refuse(db, u"update on FolderAlias"_s);
    select(*inner);
    const int scans = delegate.scans;
    commands.removeFolderAlias();
    EXPECT_EQ(prompts.told, QStringList{u"#inner"_s});
    EXPECT_EQ(selected(), path(u"A/inner"));
    EXPECT_EQ(delegate.scans, scans + 1) << "what was ended begins anew";
    // One that goes with all its rows is gone from the sidebar before they are.
    select(*a);
    commands.removeFolderAlias();
    EXPECT_FALSE(rows.folderAliasItemWithAliasObject(*a) || tree.selectedItem());
    EXPECT_EQ(delegate.watchUpdates, 1);
    EXPECT_EQ(prompts.told.size(), 1);
    const auto cameBack = finishRemovals();
    ASSERT_EQ(cameBack, (PBAliasArray{a}));
    commands.rootsCameBack(cameBack.front().get());
    EXPECT_TRUE(rows.folderAliasItemWithAliasObject(*a));
    EXPECT_EQ(delegate.watchUpdates, 2);
    EXPECT_EQ(prompts.told.last(), u"#A"_s);
    // Roots that nobody removed by hand come back in silence.
    commands.rootsCameBack(nullptr);
    EXPECT_EQ(prompts.told.size(), 2);
}

TEST_F(SidebarCommandsTest, aRootThatIsAwayIsGivenTheFolderThatTheUserSaysIsIt) {
    const QString moved = path(u"moved");
    const auto away = realRoot(u"R");
    make(u"R/sub");
    ASSERT_TRUE(QFile::rename(path(u"R"), moved));
    setAway(*away, true);
    const auto locate = [&](const QString& chosen) {
        prompts.told.clear();
        prompts.choice = chosen;
        Q_EMIT tree.locateRequested(rows.folderAliasItemWithAliasObject(*away));
        runPosted();
        return prompts.told;
    };
    EXPECT_EQ(locate({}), QStringList());
    EXPECT_EQ(locate(path(u"A")), QStringList{u"=A"_s});
    EXPECT_EQ(locate(x), QStringList{u"<x<A"_s});
    EXPECT_EQ(locate(path(u"none")), QStringList{u'~' + path(u"none")});
    const QString other = make(u"other");
    EXPECT_EQ(locate(other), QStringList{u"?other>R"_s});
    EXPECT_FALSE(away->isMounted()) << "the user said no";
    prompts.usesUnlike = true;
    support::refuse(db, u"update on FolderAlias"_s);
    EXPECT_EQ(locate(other), (QStringList{u"?other>R"_s, u'~' + other}));
    support::permit(db);
    EXPECT_EQ(locate(moved + u'/'), QStringList()) << "the very folder";
    EXPECT_EQ((QStringList{away->path(), away->reservePath(), selected()}), QStringList(3, moved));
    EXPECT_EQ(locate(other), QStringList()) << "it is there";

    setAway(*away, true);
    EXPECT_EQ(locate(other), QStringList{u"?other>moved"_s});
    EXPECT_EQ(away->path(), other);
    const auto folder = platform::Bookmark::bookmarkOfFolder(other, platform::Volumes());
    ASSERT_TRUE(folder);
    EXPECT_EQ(away->aliasData(), folder->data());
}

TEST_F(SidebarCommandsTest, addingTheFolderOfARootThatIsAwayMakesNoSecondOne) {
    const auto itself = realRoot(u"R");
    const auto restored = realRoot(u"S");
    const auto zombie = realRoot(u"T");
    ASSERT_TRUE(manager.updateState(*zombie, PBAliasObject::zombieState));
    for (const auto& root : {itself, restored, zombie})
        setAway(*root, true);
    rows.reloadCategoryItem();
    using Names = std::optional<std::vector<CataloguedName>>;
    resolver.setNamesSource([&](qint64 aliasId) {
        return aliasId == restored->aliasId() ? Names(std::vector<CataloguedName>{{u"1.jpg"_s, 3}})
                                              : std::nullopt;
    });
    QDir().mkdir(path(u"new"));
    ASSERT_TRUE(QFile::rename(path(u"R"), path(u"new/R")));
    QDir().rmdir(path(u"S"));
    support::writeFile(path(u"S/1.jpg"), "abc");
    support::writeFile(path(u"copy/1.jpg"), "abc");
    const auto count = manager.aliasArray().size();
    for (const auto& [root, place] :
         {std::pair(itself, u"new/R"_s), {restored, u"S"_s}, {zombie, u"T"_s}}) {
        EXPECT_TRUE(commands.addOrSelectFolder(path(place)));
        EXPECT_EQ((QStringList{root->path(), selected()}), QStringList(2, path(place)));
    }
    EXPECT_FALSE(zombie->isZombie());
    EXPECT_EQ(manager.aliasArray().size(), count);
    setAway(*restored, true);
    EXPECT_TRUE(commands.addOrSelectFolder(path(u"copy")));
    EXPECT_EQ(manager.aliasArray().size(), count + 1) << "a copy elsewhere is a folder of its own";
}

} // namespace
