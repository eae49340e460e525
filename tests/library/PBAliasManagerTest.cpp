#include "library/LibrarySupport.h"
#include "library/OpenedRoots.h"
#include "library/RootPresence.h"

using Outcome = platform::Resolution::Outcome;

namespace {

struct PBAliasManagerTest : LibraryTest {
    QString ownerOf(const QString& file, bool ignoreTrash = false) {
        QString relativePath = u"untouched"_s;
        const auto root = manager.appropriateAliasObjectForPath(file, &relativePath, ignoreTrash);
        return (root ? root->path() : u"none"_s) + u'|' + relativePath;
    }
    QStringList paths() {
        return support::listed(manager.aliasArray(), [](const auto& root) { return root->path(); });
    }
    QStringList rows(const char* sql) { return support::rowsOf(db, QLatin1StringView(sql)); }
    QStringList aliasRows() { return rows("select ReservePath from FolderAlias"); }
    qint64 addFolder(const PBAliasObject& root, const QString& relativePath) {
        return catalogue.insertFolderWithAliasId(root.aliasId(), relativePath);
    }
    qint64 addImage(qint64 folderId, const QString& name) {
        const auto fileId = catalogue.insertImageFileWithDictionary(
            {{u"FolderId"_s, folderId}, {u"FileName"_s, name}});
        catalogue.insertExifWithImageFileId(fileId, {});
        return fileId;
    }
};

const QString a = u"/A"_s;
const QString ab = u"/A/B"_s;
const QString abc = u"/A/B/C"_s;

TEST_F(PBAliasManagerTest, deepestRootOwnsAPath) {
    addRoot(a);
    addZombie(ab);
    EXPECT_EQ(ownerOf(u"/A/x/y"_s), u"/A|x/y"_s);
    EXPECT_EQ(ownerOf(u"/A/B/x"_s), u"/A/B|x"_s);
    EXPECT_EQ(ownerOf(u"/A/B/x"_s, true), u"/A|B/x"_s);
    EXPECT_EQ(ownerOf(u"/A/b/x"_s), u"/A|b/x"_s) << "a folder beside that of the inner root";
    EXPECT_EQ(ownerOf(u"/a/x"_s), u"none|untouched"_s);
    EXPECT_EQ(ownerOf(a), u"/A|"_s);
    EXPECT_EQ(ownerOf(u"/AB"_s), u"none|untouched"_s);
    EXPECT_EQ(ownerOf({}), u"none|untouched"_s);
    EXPECT_EQ(manager.titleOfFolder(u"/A/x/y"_s), u"A/x/y"_s);
    EXPECT_EQ(manager.titleOfFolder(ab), u"B"_s);
    EXPECT_EQ(manager.titleOfFolder(u"/AB/x"_s), u"/AB/x"_s);
    EXPECT_EQ(manager.findAliasObjectByPath(ab)->path(), ab);
    EXPECT_FALSE(manager.findAliasObjectByPath(u"/A/b"_s));
    EXPECT_FALSE(manager.findAliasObjectByPath({}));
}

TEST_F(PBAliasManagerTest, watchedAndAccessedFoldersCoverMountedRoots) {
    const auto inner = addRoot(ab);
    addRoot(a);
    const auto lower = addRoot(u"/a"_s);
    const auto away = addRoot(u"/Z"_s, PBAliasObject::Removable);
    makeAbsent(*away);
    EXPECT_EQ(manager.getMonitorPathArray(), (QStringList{ab, a, u"/a"_s}));
    EXPECT_TRUE(manager.findSubAliasByAliasObject(*lower, {}).empty());
    const auto outer = manager.findAliasObjectByPath(a);
    EXPECT_EQ(manager.findSubAliasByAliasObject(*outer, {}), (PBAliasArray{inner}));
    EXPECT_TRUE(manager.findSubAliasByAliasObject(*inner, {}).empty());
    EXPECT_TRUE(manager.findSubAliasByAliasObject(*outer, u"B"_s).empty()) << "strictly below";
    const auto innermost = addRoot(abc);
    EXPECT_EQ(manager.findSubAliasByAliasObject(*outer, u"B"_s), (PBAliasArray{innermost}));
    EXPECT_TRUE(manager.findSubAliasByAliasObject(*away, {}).empty());
    EXPECT_EQ(manager.mountedPathOfAliasId(away->aliasId()), QString());
}

TEST_F(PBAliasManagerTest, loadingResolvesAndDropsOnlyLocalFoldersThatAreGone) {
    const auto gone = addRoot(u"/gone"_s);
    const auto moved = addRoot(u"/old"_s);
    const auto unplugged =
        addRoot(u"/stick"_s, PBAliasObject::Removable, PBAliasObject::zombieState);
    const auto silent = addRoot(u"/slow"_s);
    const auto otherDisk = addRoot(u"/data/x"_s);
    const auto lostShare = addRoot(u"/share"_s, PBAliasObject::Network);
    const auto sought = addRoot(u"/sought"_s);
    addImage(addFolder(*gone, u"sub"_s), u"a.jpg"_s);
    addImage(addFolder(*moved, {}), u"b.jpg"_s);
    answer(*gone, Outcome::Gone);
    answer(*moved, Outcome::Found, u"/new"_s);
    answer(*unplugged, Outcome::VolumeAbsent);
    answer(*silent, Outcome::NoAnswer);
    answer(*otherDisk, Outcome::VolumeAbsent);
    answer(*lostShare, Outcome::Gone);
    answer(*sought, Outcome::NotFound);

    manager.loadAlias();
    EXPECT_EQ(paths(), (QStringList{u"/new"_s, {}, {}, {}, {}, {}}));
    EXPECT_EQ(rows("select count(*) from Exif"), QStringList{u"2"_s}) << "nobody waits for rows";
    EXPECT_TRUE(finishRemovals().empty());
    EXPECT_EQ(aliasRows(), support::words("/new /stick /slow /data/x /share /sought"));
    EXPECT_EQ(manager.awaitedPaths(), support::words("/slow /data/x /sought"));
    EXPECT_EQ(rows("select FileName from ImageFile"), QStringList{u"b.jpg"_s});
    const auto loaded = manager.findAliasObjectById(unplugged->aliasId());
    ASSERT_EQ(loaded, manager.aliasArray()[1]);
    EXPECT_EQ(loaded->displayName(), u"stick"_s);
    EXPECT_EQ(loaded->type(), PBAliasObject::Removable);
    EXPECT_TRUE(loaded->isZombie());
    EXPECT_FALSE(manager.aliasArray()[0]->isZombie());
}

TEST_F(PBAliasManagerTest, lateAnswerIsTakenLikeOneInTime) {
    const auto silent = addRoot(u"/slow"_s);
    const auto gone = addRoot(u"/gone"_s);
    answer(*silent, Outcome::NoAnswer);
    answer(*gone, Outcome::NoAnswer);
    manager.loadAlias();
    const PBAliasArray roots = manager.aliasArray().copy();
    ASSERT_EQ(roots.size(), 2u);
    EXPECT_EQ(
        manager.aliasDidAnswer(*roots[0], {Outcome::Found, u"/slow"_s}), (PBAliasArray{roots[0]}));
    EXPECT_TRUE(roots[0]->isMounted());
    EXPECT_EQ(manager.aliasDidAnswer(*roots[1], {Outcome::Gone, {}}).size(), 1u);
    EXPECT_EQ(manager.aliasArray().size(), 1u);
    // A root that is gone by then changes nothing.
    EXPECT_TRUE(manager.aliasDidAnswer(*roots[1], {Outcome::Found, a}).empty());
}

TEST_F(PBAliasManagerTest, volumesComeAndGo) {
    const QString there = u"/media/u/Disk/p"_s;
    const QString elsewhere = u"/media/u/Disk1/p"_s;
    const auto root = addRoot(there, PBAliasObject::Removable);
    const auto other = addRoot(a);
    answer(*root, Outcome::VolumeAbsent);
    EXPECT_EQ(manager.volumDidUnmount({}), (PBAliasArray{root}));
    EXPECT_FALSE(root->isMounted());
    EXPECT_EQ(root->reservePath(), there);
    answer(*root, Outcome::Found, elsewhere);
    services.resolved = 0;
    EXPECT_EQ(manager.volumDidMount({}), (PBAliasArray{root}));
    EXPECT_EQ(services.resolved, 1) << "mounted roots are left alone";
    EXPECT_EQ(root->reservePath(), elsewhere);
    EXPECT_TRUE(manager.volumDidMount({}).empty());
    // Asked about because of some volume, a root turns out to have moved.
    answer(*other, Outcome::Found, ab);
    EXPECT_EQ(manager.volumDidUnmount({}), (PBAliasArray{other}));
    EXPECT_EQ(aliasRows(), (QStringList{elsewhere, ab}));
}

TEST_F(PBAliasManagerTest, rootOfTheFileSystemCountsOnlyAsItself) {
    const auto root = addRoot(u"/media/gone"_s, PBAliasObject::Removable);
    const auto whole = addRoot(u"/"_s);
    answer(*root, Outcome::Found, u"/"_s);
    manager.volumDidUnmount({});
    EXPECT_FALSE(root->isMounted());
    EXPECT_TRUE(whole->isMounted());
    EXPECT_EQ(PBAliasManager::pathWithAliasObject(*whole, u"x/y"_s), u"/x/y"_s);
    EXPECT_EQ(ownerOf(u"/x/y"_s), u"/|x/y"_s);
    EXPECT_EQ(whole->displayName(), u"/"_s);
}

TEST_F(PBAliasManagerTest, changedRootFolderIsLookedAtAgain) {
    const auto root = addRoot(a);
    const auto stick = addRoot(u"/stick"_s, PBAliasObject::Removable);
    addRoot(u"/other"_s);
    EXPECT_TRUE(manager.aliasPathChanged(u"/nowhere"_s).empty());
    answer(*root, Outcome::Found, u"/a"_s);
    EXPECT_EQ(manager.aliasPathChanged(a), (PBAliasArray{root})) << "in case only";
    EXPECT_EQ(aliasRows(), support::words("/a /stick /other"));
    answer(*root, Outcome::Gone);
    answer(*stick, Outcome::Gone);
    EXPECT_EQ(manager.aliasPathChanged(u"/a"_s), (PBAliasArray{root}));
    EXPECT_EQ(manager.aliasPathChanged(u"/stick"_s), (PBAliasArray{stick}));
    EXPECT_TRUE(finishRemovals().empty());
    EXPECT_EQ(aliasRows(), support::words("/stick /other"));
}

TEST_F(PBAliasManagerTest, zombiesGoWhenNoRootNeedsThem) {
    for (const auto& [first, second] : {std::pair(ab, abc), {abc, ab}}) {
        addZombie(first);
        addZombie(second);
        EXPECT_TRUE(manager.removeZombieAlias());
        EXPECT_TRUE(paths().isEmpty());
    }
    addZombie(ab);
    const auto outer = addRoot(a);
    const auto away = addZombie(u"/Z"_s);
    makeAbsent(*away);
    EXPECT_FALSE(manager.removeZombieAlias());
    EXPECT_TRUE(manager.updateState(*outer, PBAliasObject::zombieState));
    EXPECT_TRUE(manager.removeZombieAlias());
    EXPECT_EQ(manager.aliasArray().copy(), (PBAliasArray{away})) << "unmounted: can't be judged";
    EXPECT_TRUE(finishRemovals().empty());
    EXPECT_EQ(aliasRows(), QStringList{u"/Z"_s});
}

TEST_F(PBAliasManagerTest, aRootThatTheCatalogueDoesNotLetGoOfStays) {
    const auto gone = addRoot(u"/gone"_s);
    addZombie(u"/zombie"_s);
    answer(*gone, Outcome::Gone);
    ASSERT_TRUE(db.executeUpdate(
        u"create trigger T before delete on FolderAlias begin select raise(abort, 'no'); end"_s));
    manager.loadAlias();
    EXPECT_EQ(manager.aliasArray().size(), 0U);
    EXPECT_EQ(finishRemovals().size(), 1U);
    EXPECT_EQ(manager.aliasArray().size(), 2U);
    EXPECT_TRUE(manager.aliasArray()[1]->isZombie()) << "removed in an earlier run";
    EXPECT_EQ(aliasRows(), support::words("/gone /zombie"));
    ASSERT_TRUE(db.executeUpdate(u"drop trigger T"_s));
    manager.loadAlias();
    EXPECT_TRUE(finishRemovals().empty());
    EXPECT_EQ(aliasRows(), QStringList());
}

TEST_F(PBAliasManagerTest, noRootGoesWhereTheyCouldNotAllBeRead) {
    const auto gone = addRoot(u"/gone"_s);
    addZombie(u"/zombie"_s);
    answer(*gone, Outcome::Gone);
    ASSERT_TRUE(
        db.executeUpdate(u"alter table FolderAlias rename to Readable"_s) &&
        db.executeUpdate(u"create view FolderAlias as select * from Readable union all select "
                         "abs(-9223372036854775808),null,null,null,null"_s));
    manager.loadAlias();
    EXPECT_EQ(manager.aliasArray().size(), 2U) << "another may lie in them";
    EXPECT_TRUE(finishRemovals().empty());
    EXPECT_EQ(rows("select count(*) from Readable"), QStringList{u"2"_s});
}

TEST_F(PBAliasManagerTest, aRootRemovedByHandIsBackAsItWasWhereTheCatalogueKeepsIt) {
    const char* states = "select State from FolderAlias order by Id";
    const auto outer = addRoot(a);
    const auto inner = addRoot(ab);
    const auto last = addRoot(u"/Z"_s);
    EXPECT_TRUE(manager.removeAliasObject(inner));
    EXPECT_EQ(rows(states), support::words("0 1 0")) << "kept for the sake of the root around it";
    ASSERT_TRUE(db.executeUpdate(
        u"create trigger T before delete on FolderAlias begin select raise(abort, 'no'); end"_s));
    for (const bool isAddedAgain : {false, true}) {
        EXPECT_TRUE(manager.removeAliasObject(outer));
        EXPECT_EQ(manager.aliasArray().copy(), (PBAliasArray{last}))
            << "at once, with what is in it";
        EXPECT_EQ(manager.findAliasObjectByPath(a), nullptr);
        const auto again = isAddedAgain ? addRoot(a) : nullptr;
        EXPECT_EQ(finishRemovals(), (PBAliasArray{outer}));
        const PBAliasArray expected =
            again ? PBAliasArray{outer, inner, last, again} : PBAliasArray{outer, inner, last};
        EXPECT_EQ(manager.aliasArray().copy(), expected) << "in the order of the catalogue";
        EXPECT_EQ(outer->isZombie(), isAddedAgain) << "one folder is one root";
        EXPECT_EQ(rows(states), support::words(isAddedAgain ? "1 1 0 0" : "0 1 0"));
    }
    ASSERT_TRUE(db.executeUpdate(u"drop trigger T"_s));
    makeAbsent(*last);
    EXPECT_TRUE(manager.removeAliasObject(last) && last->isZombie());
    EXPECT_EQ(manager.findAliasObjectById(last->aliasId()), last) << "its disk may come back";
    EXPECT_EQ(rows(states), support::words("1 1 1 0"));
    answer(*last, Outcome::Found, u"/Z"_s);
    EXPECT_TRUE(manager.resolveAllAliasWithMount({}));
    EXPECT_TRUE(finishRemovals().empty());
    EXPECT_EQ(aliasRows(), support::words("/A/B /A")) << "and what was kept of the other two";
}

TEST_F(PBAliasManagerTest, anOpenedRootIsItsOwnFolderAndNotThereInTheNextRun) {
    const auto addOpened = [this](const QString& path) {
        return addRoot(path, PBAliasObject::Local, OpenedRoots::openedState);
    };
    const auto opened = addOpened(a);
    const auto inner = addRoot(ab);
    addImage(addFolder(*opened, {}), u"x.jpg"_s);
    EXPECT_EQ(ownerOf(a), u"/A|"_s);
    EXPECT_EQ(ownerOf(u"/A/x"_s), u"none|untouched"_s) << "what is below was not asked for";
    EXPECT_EQ(ownerOf(u"/A/B/x"_s), u"/A/B|x"_s);
    EXPECT_EQ(OpenedRoots::paths(manager), QStringList{a});
    // In a folder that is a root it is one of its folders, but for what that does not show.
    const auto outer = addRoot(u"/Z"_s);
    const auto hidden = addOpened(u"/Z/.h"_s);
    EXPECT_TRUE(manager.findSubAliasByAliasObject(*outer, {}).empty());
    EXPECT_TRUE(OpenedRoots::takeInto(*outer, manager) && hidden->isZombie());
    EXPECT_FALSE(OpenedRoots::takeInto(*inner, manager)) << "the folder around it is no part of it";
    EXPECT_TRUE(manager.removeAliasObject(inner));
    EXPECT_TRUE(finishRemovals().empty());
    EXPECT_EQ(aliasRows(), (QStringList{a, u"/Z"_s, u"/Z/.h"_s})) << "not kept for an opened one";

    ASSERT_TRUE(db.executeUpdate(
        u"create trigger T before delete on FolderAlias begin select raise(abort, 'no'); end"_s));
    for (const bool isLocked : {true, false}) {
        manager.loadAlias();
        EXPECT_EQ(finishRemovals().size(), isLocked ? 1U : 0U);
        EXPECT_EQ(paths(), (QStringList{u"/Z"_s, u"/Z/.h"_s})) << "also where it could not go";
        ASSERT_TRUE(db.executeUpdate(u"drop trigger if exists T"_s));
    }
    EXPECT_EQ(aliasRows(), (QStringList{u"/Z"_s, u"/Z/.h"_s}));
    EXPECT_EQ(rows("select FileName from ImageFile"), QStringList());
}

TEST_F(PBAliasManagerTest, newRootInsideAnotherTakesItsFolderRows) {
    const auto outer = addRoot(a);
    const auto beside = addRoot(u"/A/Bx"_s);
    for (const QString& relativePath : {QString(), u"B"_s, u"B/C"_s, u"Bx"_s, u"b"_s})
        addFolder(*outer, relativePath);
    addFolder(*beside, {});
    const auto image = addImage(addFolder(*outer, u"B/C/D"_s), u"i"_s);
    const auto inner = PBAliasObject::aliasObjectWithId(77, "n", QUrl::fromLocalFile(ab), ab, 0, 0);
    const char* sql = "select AliasId,RelativePath from Folder order by Id";
    const QStringList before = rows(sql);
    const QStringList moved = support::words("1|NULL 77|NULL 77|C 1|Bx 1|b 2|NULL 77|C/D");
    ASSERT_TRUE(db.beginTransaction());
    EXPECT_TRUE(manager.updateFolderByAliasObject(*inner));
    EXPECT_EQ(rows(sql), moved) << "within the change that is under way";
    ASSERT_TRUE(db.rollback()) << "not committed by the part";
    EXPECT_EQ(rows(sql), before);
    ASSERT_TRUE(db.executeUpdate(
        u"create trigger T before update on Folder when new.RelativePath = 'C' begin select "
        "raise(abort, 'no'); end"_s));
    EXPECT_FALSE(manager.updateFolderByAliasObject(*inner));
    EXPECT_EQ(rows(sql), before) << "all or none";
    ASSERT_TRUE(db.executeUpdate(u"drop trigger T"_s));
    EXPECT_TRUE(manager.updateFolderByAliasObject(*inner));
    EXPECT_TRUE(db.beginTransaction()) << "committed by itself";
    EXPECT_EQ(rows(sql), moved);
    EXPECT_EQ(rows("select Id from ImageFile"), QStringList{QString::number(image)});
}

TEST_F(PBAliasManagerTest, aRenewedBookmarkAndAStateAreTakenOnlyWhereTheyAreStored) {
    const QString place = make(u"R");
    const auto root = addRoot(place);
    answer(*root, Outcome::NotFound);
    EXPECT_EQ(manager.aliasPathChanged(place, u"/there"_s), (PBAliasArray{root}));
    EXPECT_EQ(services.last.movedTo, u"/there"_s);
    const auto bookmark = platform::Bookmark::bookmarkOfFolder(place, platform::Volumes());
    ASSERT_TRUE(bookmark);
    const PBAliasResolution found{
        Outcome::Found, place, PBAliasBookmark{bookmark->data(), PBAliasObject::Removable}};
    ASSERT_TRUE(db.executeUpdate(
        u"create trigger T before update on FolderAlias begin select raise(abort, 'no'); end"_s));
    EXPECT_TRUE(manager.aliasDidAnswer(*root, found).empty());
    EXPECT_FALSE(root->isMounted());
    EXPECT_EQ(root->aliasData(), place.toUtf8());
    EXPECT_FALSE(manager.updateState(*root, PBAliasObject::zombieState) || root->isZombie());
    ASSERT_TRUE(db.executeUpdate(u"drop trigger T"_s));
    EXPECT_EQ(manager.aliasDidAnswer(*root, found), (PBAliasArray{root}));
    EXPECT_EQ(rows("select Type,ReservePath from FolderAlias"), QStringList{u"2|"_s + place});
    EXPECT_EQ(root->type(), PBAliasObject::Removable);
    EXPECT_TRUE(isRootThere(*root)) << "what a scan asks before rows go";
}

} // namespace
