#include "library/FolderIcons.h"
#include "library/LibrarySupport.h"
#include "library/PBAliasResolver.h"
#include "library/PBSourceTreeDataSource.h"
#include "platform/program/LocalizedTexts.h"

namespace {

struct PBSourceTreeTest : LibraryTest {
    static QString names(const PBOutlineItems& items) {
        return support::listed(items, [](const auto& item) { return item->displayName(); })
            .join(u',');
    }
    std::shared_ptr<PBFolderAliasItem> itemOf(const QString& folder) {
        const auto root = addRoot(folder);
        tree.reloadCategoryItem();
        return tree.folderAliasItemWithAliasObject(*root);
    }
    QStringList shown() {
        return support::listed(tree.shownCategories(), [](const auto& category) {
            return category->displayName() + u':' + names(category->children());
        });
    }

    StoppableLister lister;
    PBSourceTreeDataSource tree{manager, lister};
};

TEST_F(PBSourceTreeTest, childrenAreFoldersOnlyInNaturalOrderAndNoLinksToThem) {
    for (const char16_t* folder :
         {u"A/img10", u"A/Img2/deep", u"A/.hidden", u"A/Photos.app/x", u"A/\U0001F33B line\nbreak"})
        make(folder);
    write(u"A/file.jpg");
    QFile::link(path(u"A"), path(u"A/loop"));
    const auto item = itemOf(path(u"A"));
    EXPECT_FALSE(item->isLoaded());
    for (int times = 0; times < 2; ++times)
        EXPECT_EQ(names(item->children()), u"\U0001F33B line break,Img2,img10"_s);
    EXPECT_EQ(lister.listed, 1) << "loaded once";
    const auto inner = item->childFolderWithFolderName(u"Img2"_s, false);
    EXPECT_FALSE(inner->childFolderWithFolderName(u"deep"_s, false));
    const auto deeper = inner->childFolderWithFolderName(u"deep"_s, true);
    QString relativePath;
    EXPECT_EQ(deeper->aliasObjectAndRelativePath(&relativePath), item->aliasObject());
    EXPECT_EQ(relativePath, u"Img2/deep"_s);
    EXPECT_EQ(deeper->folderPath(), path(u"A/Img2/deep"));
    EXPECT_EQ(lister.lastLane, PBAliasResolver::lane(*item->aliasObject())) << "the root's volume";
}

TEST_F(PBSourceTreeTest, refreshKeepsTheItemsThatAreStillThere) {
    makeAll("A/one/deep A/two");
    const auto item = itemOf(path(u"A"));
    EXPECT_FALSE(item->refreshSelfChilden()) << "never loaded, nothing to refresh";
    static_cast<void>(item->children());
    const auto one = item->childFolderWithFolderName(u"one"_s, false);
    for (const auto& child : item->loadedChildren())
        static_cast<void>(child->children());
    EXPECT_FALSE(item->refreshSelfChilden());

    QFile::rename(path(u"A/two"), path(u"A/three"));
    EXPECT_TRUE(item->refreshSelfChilden());
    EXPECT_EQ(names(item->children()), u"one,three"_s);
    EXPECT_EQ(item->childFolderWithFolderName(u"one"_s, false), one);
    EXPECT_TRUE(one->isLoaded());
    EXPECT_FALSE(item->childFolderWithFolderName(u"three"_s, false)->isLoaded());

    // Only what is at or below the path is listed again.
    makeAll("A/one/deep/deeper A/four");
    static_cast<void>(one->childFolderWithFolderName(u"deep"_s, false)->children());
    QDir().rmdir(path(u"A/one/deep/deeper"));
    EXPECT_FALSE(tree.refreshChilden(path(u"elsewhere"), true));
    lister.isSlow = true; // what a watcher saw holds nobody up
    EXPECT_FALSE(tree.refreshInBackground(path(u"A/one/deep"), false));
    lister.isSlow = false;
    EXPECT_EQ(lister.waitingFor, QStringList{u"in the background"_s});
    EXPECT_TRUE(tree.refreshChilden(path(u"A/one/deep"), false));
    EXPECT_EQ(item->loadedChildren().size(), 2u);
    EXPECT_FALSE(tree.refreshChilden(path(u"A/one"), true));
    EXPECT_TRUE(tree.refreshChilden({}, true));
    EXPECT_EQ(item->loadedChildren().size(), 3u);
}

TEST_F(PBSourceTreeTest, spellingsThatDifferInCaseAreFoldersOfTheirOwn) {
    makeAll("A/Trip/deep A/trip");
    const auto item = itemOf(path(u"A"));
    static_cast<void>(item->children());
    const auto upper = item->childFolderWithFolderName(u"Trip"_s, false);
    ASSERT_NE(upper, item->childFolderWithFolderName(u"trip"_s, false));
    EXPECT_FALSE(item->childFolderWithFolderName(u"TRIP"_s, false));
    EXPECT_FALSE(item->refreshSelfChilden());
    EXPECT_EQ(item->childFolderWithFolderName(u"Trip"_s, false), upper);
    // Renamed in case only: the item stays, and its path is the new one.
    QFile::rename(path(u"A/Trip"), path(u"A/TRIP"));
    QFile::rename(path(u"A/trip"), path(u"A/gone"));
    EXPECT_TRUE(item->refreshSelfChilden());
    EXPECT_EQ(item->childFolderWithFolderName(u"TRIP"_s, false), upper);
    EXPECT_EQ(upper->folderPath(), path(u"A/TRIP"));
    // Another folder under the other spelling is none of it.
    QFile::rename(path(u"A/TRIP"), path(u"away"));
    make(u"A/trip");
    EXPECT_TRUE(item->refreshSelfChilden());
    EXPECT_NE(item->childFolderWithFolderName(u"trip"_s, false), upper);
}

TEST_F(PBSourceTreeTest, slowDiskBringsChildrenLater) {
    makeAll("A/one A/two");
    const auto item = itemOf(path(u"A"));
    QStringList arrived;
    QObject::connect(
        &tree, &PBSourceTreeDataSource::childrenDidArrive, &tree,
        [&](PBFolderItem* who) { arrived.append(who->folderPath()); });
    lister.isSlow = true;
    EXPECT_TRUE(item->children().empty() && item->isLoaded());
    lister.letGo();
    EXPECT_EQ(arrived, QStringList{path(u"A")});
    EXPECT_EQ(names(item->children()), u"one,two"_s);

    // An answer about a folder whose volume is gone by now is of no use.
    EXPECT_FALSE(item->refreshSelfChilden());
    makeAbsent(*item->aliasObject());
    EXPECT_TRUE(tree.refreshAliasObject(*item->aliasObject()));
    lister.letGo();
    EXPECT_EQ(arrived.size(), 1);
    EXPECT_TRUE(item->children().empty());
}

TEST_F(PBSourceTreeTest, categoriesShowTheRootsThatAreNoZombies) {
    const auto one = addRoot(make(u"one"));
    addZombie(make(u"dead"));
    const auto stick = addRoot(make(u"stick"), PBAliasObject::Removable);
    addRoot(u"/odd"_s, 3);
    EXPECT_FALSE(tree.hasFolderAliasItem());
    int changes = 0;
    QObject::connect(&tree, &PBSourceTreeDataSource::itemsDidChange, &tree, [&] { ++changes; });
    tree.reloadCategoryItem();
    EXPECT_TRUE(tree.hasFolderAliasItem());
    EXPECT_EQ(shown(), (QStringList{u"On This Computer:one"_s, u"Removable Disks:stick"_s}));
    const auto item = tree.folderAliasItemWithAliasObject(*one);
    static_cast<void>(item->children());
    tree.reloadCategoryItem();
    EXPECT_EQ(tree.folderAliasItemWithAliasObject(*one), item);

    const auto share = addRoot(make(u"share"), PBAliasObject::Network);
    tree.insertFolderAlias(tree.makeFolderAliasItem(share));
    tree.removeFolderAlias(*item);
    EXPECT_EQ(changes, 4);
    tree.setContextMenuItem(item);
    EXPECT_EQ(changes, 5);
    EXPECT_EQ(shown(), (QStringList{u"Network:share"_s, u"Removable Disks:stick"_s}));
}

TEST_F(PBSourceTreeTest, foldersOfZombiesAreFoundInTheRootAround) {
    make(u"A/B/C");
    const auto outer = addRoot(path(u"A"));
    const auto zombie = addZombie(path(u"A/B"));
    tree.reloadCategoryItem();
    EXPECT_FALSE(tree.folderItemWithAliasObject(*zombie, u"C"_s, false)) << "nothing is loaded yet";
    const auto found = tree.folderItemWithAliasObject(*zombie, u"C"_s, true);
    EXPECT_EQ(found->folderPath(), path(u"A/B/C"));
    EXPECT_EQ(tree.folderItemWithAliasObject(*zombie, u"C"_s, false), found);
    EXPECT_EQ(
        tree.folderItemWithAliasObject(*outer, {}, false),
        tree.folderAliasItemWithAliasObject(*outer));
    EXPECT_FALSE(tree.folderItemWithAliasObject(*outer, u"B/none"_s, true));
}

TEST_F(PBSourceTreeTest, rowsTellWhetherTheirRootIsThere) {
    const auto home = itemOf(QDir::homePath());
    const QString iconOfHome = FolderIcons::nameForPath(QDir::homePath());
    EXPECT_EQ(home->description(), QDir::homePath());
    EXPECT_EQ(home->displayIcons(), QStringList{iconOfHome});
    EXPECT_NE(iconOfHome, FolderIcons::nameForPath(path(u"A")));
    EXPECT_EQ(FolderIcons::nameForPath(u"/"_s), u"drive-harddisk"_s);
    EXPECT_LT(tree.heightOfRow(*tree.shownCategories().front()), tree.heightOfRow(*home));
    for (const auto& [type, icon] :
         {std::pair(PBAliasObject::Local, u"folder"_s),
          {PBAliasObject::Network, u"network-server"_s},
          {PBAliasObject::Removable, u"drive-removable-media"_s}}) {
        const auto root = addRoot(u"/away"_s, type);
        makeAbsent(*root);
        EXPECT_FALSE(tree.folderAliasItemWithAliasObject(*root)) << "no place is nobody's place";
        tree.reloadCategoryItem();
        const auto item = tree.folderAliasItemWithAliasObject(*root);
        const auto* text = type == PBAliasObject::Local ? u"TryFound" : u"TryMounted";
        EXPECT_EQ(item->description(), platform::localizedString(text));
        EXPECT_EQ(item->displayIcons(), (QStringList{icon, u"emblem-symbolic-link"_s}));
    }
}

} // namespace
