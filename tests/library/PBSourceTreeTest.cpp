#include "library/LibrarySupport.h"
#include "library/PBSourceTreeDataSource.h"
#include "platform/BoundedCalls.h"
#include "platform/LocalizedTexts.h"
#include "platform/MainLoop.h"

#include <unistd.h>

using Outcome = platform::Resolution::Outcome;

namespace {

struct PBSourceTreeTest : LibraryTest {
    static QStringList names(const PBOutlineItems& items) {
        return support::listed(items, [](const auto& item) { return item->displayName(); });
    }
    std::shared_ptr<PBFolderAliasItem> itemOf(const QString& folder) {
        const auto root = addRoot(folder);
        tree.reloadCategoryItem();
        return tree.folderAliasItemWithAliasObject(*root);
    }
    QStringList shown() {
        return support::listed(tree.shownCategories(), [this](const auto& category) {
            return category->displayName() + u':' + names(category->children()).join(u',');
        });
    }

    StoppableLister lister;
    PBSourceTreeDataSource tree{manager, lister};
};

TEST_F(PBSourceTreeTest, childrenAreFoldersOnlyInNaturalOrder) {
    make(u"A/img10");
    make(u"A/Img2");
    make(u"A/.hidden");
    make(u"A/Photos.app/x");
    make(u"A/\U0001F33B line\nbreak");
    support::writeFile(path(u"A/file.jpg"), "x");
    QFile::link(path(u"A"), path(u"A/loop"));
    const auto item = itemOf(path(u"A"));
    EXPECT_FALSE(item->isLoaded());
    EXPECT_EQ(
        names(item->children()),
        (QStringList{u"\U0001F33B line break"_s, u"Img2"_s, u"img10"_s, u"loop"_s}));
    EXPECT_EQ(lister.listed, 1);
    static_cast<void>(item->children());
    EXPECT_EQ(lister.listed, 1) << "loaded once";
    const auto loop = item->childFolderWithFolderName(u"LOOP"_s, false);
    ASSERT_TRUE(loop);
    EXPECT_FALSE(loop->childFolderWithFolderName(u"loop"_s, false));
    const auto deeper = loop->childFolderWithFolderName(u"loop"_s, true);
    ASSERT_TRUE(deeper);
    QString relativePath;
    EXPECT_EQ(deeper->aliasObjectAndRelativePath(&relativePath), item->aliasObject());
    EXPECT_EQ(relativePath, u"loop/loop"_s);
    EXPECT_EQ(deeper->folderPath(), path(u"A/loop/loop"));
}

TEST_F(PBSourceTreeTest, refreshKeepsTheItemsThatAreStillThere) {
    make(u"A/one/deep");
    make(u"A/two");
    const auto item = itemOf(path(u"A"));
    EXPECT_FALSE(item->refreshSelfChilden()) << "never loaded, nothing to refresh";
    static_cast<void>(item->children());
    const auto one = item->childFolderWithFolderName(u"one"_s, false);
    static_cast<void>(one->children());
    EXPECT_FALSE(item->refreshSelfChilden());

    QFile::rename(path(u"A/two"), path(u"A/three"));
    EXPECT_TRUE(item->refreshSelfChilden());
    EXPECT_EQ(names(item->children()), (QStringList{u"one"_s, u"three"_s}));
    EXPECT_EQ(item->childFolderWithFolderName(u"one"_s, false), one);
    EXPECT_TRUE(one->isLoaded());
    EXPECT_FALSE(item->childFolderWithFolderName(u"three"_s, false)->isLoaded());

    // Only what is at or below the path is listed again.
    make(u"A/one/deep/deeper");
    make(u"A/four");
    static_cast<void>(one->childFolderWithFolderName(u"deep"_s, false)->children());
    QDir().rmdir(path(u"A/one/deep/deeper"));
    EXPECT_FALSE(tree.refreshChilden(path(u"elsewhere"), true));
    EXPECT_TRUE(tree.refreshChilden(path(u"A/one/deep"), false));
    EXPECT_EQ(item->loadedChildren().size(), 2u);
    EXPECT_FALSE(tree.refreshChilden(path(u"A/one"), true));
    EXPECT_TRUE(tree.refreshChilden({}, true));
    EXPECT_EQ(item->loadedChildren().size(), 3u);
}

TEST_F(PBSourceTreeTest, spellingsThatDifferInCaseAreFoldersOfTheirOwn) {
    make(u"A/Trip/deep");
    make(u"A/trip");
    const auto item = itemOf(path(u"A"));
    static_cast<void>(item->children());
    const auto upper = item->childFolderWithFolderName(u"Trip"_s, false);
    const auto lower = item->childFolderWithFolderName(u"trip"_s, false);
    ASSERT_NE(upper, lower);
    EXPECT_TRUE(item->childFolderWithFolderName(u"TRIP"_s, false));
    EXPECT_FALSE(item->refreshSelfChilden());
    EXPECT_EQ(item->childFolderWithFolderName(u"Trip"_s, false), upper);
    // Renamed in case only: the item stays, and its path is the new one.
    QDir().rmdir(path(u"A/trip"));
    QFile::rename(path(u"A/Trip"), path(u"A/TRIP"));
    EXPECT_TRUE(item->refreshSelfChilden());
    ASSERT_EQ(item->loadedChildren().size(), 1u);
    EXPECT_EQ(item->loadedChildren().front()->folderPath(), path(u"A/TRIP"));
}

TEST_F(PBSourceTreeTest, slowDiskBringsChildrenLater) {
    make(u"A/one");
    make(u"A/two");
    const auto item = itemOf(path(u"A"));
    QStringList arrived;
    QObject::connect(
        &tree, &PBSourceTreeDataSource::childrenDidArrive, &tree,
        [&](PBFolderItem* who) { arrived.append(who->folderPath()); });
    lister.isSlow = true;
    EXPECT_TRUE(item->children().empty());
    EXPECT_TRUE(item->isLoaded());
    lister.letGo();
    EXPECT_EQ(arrived, QStringList{path(u"A")});
    EXPECT_EQ(names(item->children()), (QStringList{u"one"_s, u"two"_s}));

    // An answer about a folder whose volume is gone by now is of no use.
    EXPECT_FALSE(item->refreshSelfChilden());
    answer(*item->aliasObject(), Outcome::VolumeAbsent);
    manager.volumDidUnmount({});
    EXPECT_TRUE(tree.refreshAliasObject(*item->aliasObject()));
    lister.letGo();
    EXPECT_EQ(arrived.size(), 1);
    EXPECT_TRUE(item->children().empty());
}

TEST_F(PBSourceTreeTest, manySubfoldersAreListedInOneGo) {
    for (int i = 0; i < 300; ++i)
        make(u"A/n%1"_s.arg(i));
    platform::MainLoop loop;
    platform::BoundedCalls calls([&](std::function<void()> function) {
        loop.post(platform::MainLoop::Mode::Common, std::move(function));
    });
    PBBoundedFolderLister bounded(calls, std::chrono::milliseconds(0));
    PBSourceTreeDataSource slowTree(manager, bounded);
    const auto root = addRoot(path(u"A"));
    slowTree.reloadCategoryItem();
    const auto item = slowTree.folderAliasItemWithAliasObject(*root);
    EXPECT_TRUE(item->children().size() == 0 || item->children().size() == 300);
    EXPECT_TRUE(support::spinUntil([&] { return item->loadedChildren().size() == 300; }));
    EXPECT_EQ(item->loadedChildren().back()->folderName(), u"n299"_s);
}

TEST_F(PBSourceTreeTest, categoriesShowTheRootsThatAreNoZombies) {
    const auto one = addRoot(make(u"one"));
    addRoot(make(u"dead"), PBAliasObject::Local, PBAliasObject::zombieState);
    const auto stick = addRoot(make(u"stick"), PBAliasObject::Removable);
    addRoot(u"/odd"_s, 9);
    EXPECT_FALSE(tree.hasFolderAliasItem());
    tree.reloadCategoryItem();
    const QString local = platform::localizedString(u"LocalDisks");
    const QString removable = platform::localizedString(u"RemovableDisks");
    EXPECT_EQ(shown(), (QStringList{local + u":one"_s, removable + u":stick"_s}));
    const auto item = tree.folderAliasItemWithAliasObject(*one);
    static_cast<void>(item->children());
    tree.reloadCategoryItem();
    EXPECT_EQ(tree.folderAliasItemWithAliasObject(*one), item);

    const auto share = addRoot(make(u"share"), PBAliasObject::Network);
    tree.insertFolderAlias(tree.makeFolderAliasItem(share));
    tree.removeFolderAlias(*item);
    EXPECT_EQ(
        shown(),
        (QStringList{
            platform::localizedString(u"NetworkDisks") + u":share"_s, removable + u":stick"_s}));
}

TEST_F(PBSourceTreeTest, foldersOfZombiesAreFoundInTheRootAround) {
    make(u"A/B/C");
    const auto outer = addRoot(path(u"A"));
    const auto zombie = addRoot(path(u"A/B"), PBAliasObject::Local, PBAliasObject::zombieState);
    tree.reloadCategoryItem();
    const QString c = u"C"_s;
    EXPECT_FALSE(tree.folderItemWithAliasObject(*zombie, c, false)) << "nothing is loaded yet";
    const auto found = tree.folderItemWithAliasObject(*zombie, c, true);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->folderPath(), path(u"A/B/C"));
    EXPECT_TRUE(tree.folderItemWithAliasObject(*zombie, c, false));
    EXPECT_EQ(
        tree.folderItemWithAliasObject(*outer, {}, false),
        tree.folderAliasItemWithAliasObject(*outer));
    EXPECT_FALSE(tree.folderItemWithAliasObject(*outer, u"B/none"_s, true));
}

} // namespace
