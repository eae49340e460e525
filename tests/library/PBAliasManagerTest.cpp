#include "library/LibrarySupport.h"
#include "library/OpenedRoots.h"
#include "library/RootPresence.h"

using Outcome = platform::Resolution::Outcome;

namespace {

struct PBAliasManagerTest : LibraryTest {
    /// The root of each file and its path in there.
    QStringList ownersOf(const QStringList& files, bool ignoreTrash = false) {
        return support::listed(files, [&](const QString& file) {
            QString below = u"untouched"_s;
            const auto root = manager.appropriateAliasObjectForPath(file, &below, ignoreTrash);
            return (root ? root->path() : u"none"_s) + u'|' + below;
        });
    }
    QStringList paths() {
        return support::listed(manager.aliasArray(), [](const auto& root) { return root->path(); });
    }
    QStringList rows(const char* sql) { return support::rowsOf(db, QLatin1StringView(sql)); }
    /// The roots that the catalogue has when what was to be done in the background is done.
    QStringList stored() {
        EXPECT_TRUE(finishRemovals().empty());
        return rows("select ReservePath from FolderAlias");
    }
    qint64 addImage(const PBAliasObject& root, const QString& below, const QString& name) {
        const qint64 folderId = catalogue.insertFolderWithAliasId(root.aliasId(), below);
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
    // "b" is a folder beside that of the inner root.
    EXPECT_EQ(
        ownersOf(support::words("/A/x/y /A/B/x /A/b/x /a/x /A /AB") + QStringList{{}}),
        support::words("/A|x/y /A/B|x /A|b/x none|untouched /A| none|untouched none|untouched"));
    EXPECT_EQ(ownersOf({u"/A/B/x"_s}, true), QStringList{u"/A|B/x"_s});
    EXPECT_EQ(manager.titleOfFolder(u"/A/x/y"_s), u"A/x/y"_s);
    EXPECT_EQ(manager.titleOfFolder(ab), u"B"_s);
    EXPECT_EQ(manager.titleOfFolder(u"/AB/x"_s), u"/AB/x"_s);
    EXPECT_EQ(manager.findAliasObjectByPath(ab)->path(), ab);
    EXPECT_FALSE(manager.findAliasObjectByPath(u"/A/b"_s));
    EXPECT_FALSE(manager.findAliasObjectByPath({}));

    // The root of the file system counts only as itself.
    const auto moved = addRoot(u"/media/gone"_s, PBAliasObject::Removable);
    const auto whole = addRoot(u"/"_s);
    answer(*moved, Outcome::Found, u"/"_s);
    manager.volumDidUnmount({});
    EXPECT_TRUE(whole->isMounted() && !moved->isMounted());
    EXPECT_EQ(PBAliasManager::pathWithAliasObject(*whole, u"x/y"_s), u"/x/y"_s);
    EXPECT_EQ(ownersOf({u"/x/y"_s}), QStringList{u"/|x/y"_s});
    EXPECT_EQ(whole->displayName(), u"/"_s);
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
    addImage(*gone, u"sub"_s, u"a.jpg"_s);
    addImage(*moved, {}, u"b.jpg"_s);
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
    EXPECT_EQ(stored(), support::words("/new /stick /slow /data/x /share /sought"));
    EXPECT_EQ(manager.awaitedPaths(), support::words("/slow /data/x /sought"));
    EXPECT_EQ(rows("select FileName from ImageFile"), QStringList{u"b.jpg"_s});
    const auto loaded = manager.findAliasObjectById(unplugged->aliasId());
    ASSERT_EQ(loaded, manager.aliasArray()[1]);
    EXPECT_EQ(loaded->displayName(), u"stick"_s);
    EXPECT_EQ(loaded->type(), PBAliasObject::Removable);
    EXPECT_TRUE(loaded->isZombie());
    EXPECT_FALSE(manager.aliasArray()[0]->isZombie());

    // A late answer is taken like one in time.
    const auto late = manager.aliasArray()[2];
    EXPECT_EQ(manager.aliasDidAnswer(*late, {Outcome::Found, u"/slow"_s}), (PBAliasArray{late}));
    EXPECT_TRUE(late->isMounted());
    const auto goes = manager.aliasArray()[3];
    EXPECT_EQ(manager.aliasDidAnswer(*goes, {Outcome::Gone, {}}).size(), 1u);
    EXPECT_EQ(manager.aliasArray().size(), 5u);
    EXPECT_TRUE(manager.aliasDidAnswer(*goes, {Outcome::Found, a}).empty()) << "it is gone";
}

TEST_F(PBAliasManagerTest, rootsFollowTheirVolumesAndFolders) {
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
    EXPECT_EQ(stored(), (QStringList{elsewhere, ab}));
    EXPECT_TRUE(manager.aliasPathChanged(u"/nowhere"_s).empty());
    answer(*other, Outcome::Found, u"/A/b"_s);
    EXPECT_EQ(manager.aliasPathChanged(ab), (PBAliasArray{other})) << "in case only";
    EXPECT_EQ(stored(), (QStringList{elsewhere, u"/A/b"_s}));
    answer(*root, Outcome::Gone);
    answer(*other, Outcome::Gone);
    EXPECT_EQ(manager.aliasPathChanged(elsewhere), (PBAliasArray{root}));
    EXPECT_EQ(manager.aliasPathChanged(u"/A/b"_s), (PBAliasArray{other}));
    EXPECT_EQ(stored(), QStringList{elsewhere});
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
    EXPECT_EQ(stored(), QStringList{u"/Z"_s});
}

TEST_F(PBAliasManagerTest, rootsThatTheCatalogueDoesNotLetGoOfOrCannotAllReadStay) {
    const auto gone = addRoot(u"/gone"_s);
    addZombie(u"/zombie"_s);
    answer(*gone, Outcome::Gone);
    support::refuse(db, u"delete on FolderAlias"_s);
    manager.loadAlias();
    EXPECT_EQ(manager.aliasArray().size(), 0U);
    EXPECT_EQ(finishRemovals().size(), 1U);
    EXPECT_EQ(manager.aliasArray().size(), 2U);
    EXPECT_TRUE(manager.aliasArray()[1]->isZombie()) << "removed in an earlier run";
    EXPECT_EQ(stored(), support::words("/gone /zombie"));
    support::permit(db);
    ASSERT_TRUE(
        db.executeUpdate(u"alter table FolderAlias rename to Readable"_s) &&
        db.executeUpdate(u"create view FolderAlias as select * from Readable union all select "
                         "abs(-9223372036854775808),null,null,null,null"_s));
    manager.loadAlias();
    EXPECT_EQ(manager.aliasArray().size(), 2U) << "another may lie in them";
    EXPECT_TRUE(finishRemovals().empty());
    ASSERT_TRUE(
        db.executeUpdate(u"drop view FolderAlias"_s) &&
        db.executeUpdate(u"alter table Readable rename to FolderAlias"_s));
    EXPECT_EQ(stored(), support::words("/gone /zombie"));
    manager.loadAlias();
    EXPECT_EQ(stored(), QStringList());
}

TEST_F(PBAliasManagerTest, aRootRemovedByHandIsBackAsItWasWhereTheCatalogueKeepsIt) {
    const char* states = "select State from FolderAlias order by Id";
    const auto outer = addRoot(a);
    const auto inner = addRoot(ab);
    const auto last = addRoot(u"/Z"_s);
    EXPECT_TRUE(manager.removeAliasObject(inner));
    EXPECT_EQ(rows(states), support::words("0 1 0")) << "kept for the sake of the root around it";
    support::refuse(db, u"delete on FolderAlias"_s);
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
    support::permit(db);
    makeAbsent(*last);
    EXPECT_TRUE(manager.removeAliasObject(last) && last->isZombie());
    EXPECT_EQ(manager.findAliasObjectById(last->aliasId()), last) << "its disk may come back";
    EXPECT_EQ(rows(states), support::words("1 1 1 0"));
    answer(*last, Outcome::Found, u"/Z"_s);
    EXPECT_TRUE(manager.resolveAllAliasWithMount({}));
    EXPECT_EQ(stored(), support::words("/A/B /A")) << "and what was kept of the other two";
}

TEST_F(PBAliasManagerTest, anOpenedRootIsItsOwnFolderAndNotThereInTheNextRun) {
    const auto addOpened = [this](const QString& path) {
        return addRoot(path, PBAliasObject::Local, OpenedRoots::openedState);
    };
    const auto opened = addOpened(a);
    const auto inner = addRoot(ab);
    addImage(*opened, {}, u"x.jpg"_s);
    EXPECT_EQ(
        ownersOf(support::words("/A /A/x /A/B/x")), support::words("/A| none|untouched /A/B|x"))
        << "what is below was not asked for";
    EXPECT_EQ(OpenedRoots::paths(manager), QStringList{a});
    // In a folder that is a root it is one of its folders, but for what that does not show.
    const auto outer = addRoot(u"/Z"_s);
    const auto hidden = addOpened(u"/Z/.h"_s);
    EXPECT_TRUE(manager.findSubAliasByAliasObject(*outer, {}).empty());
    EXPECT_TRUE(OpenedRoots::takeInto(*outer, manager) && hidden->isZombie());
    EXPECT_FALSE(OpenedRoots::takeInto(*inner, manager)) << "the folder around it is no part of it";
    EXPECT_TRUE(manager.removeAliasObject(inner));
    EXPECT_EQ(stored(), support::words("/A /Z /Z/.h")) << "not kept for an opened one";

    support::refuse(db, u"delete on FolderAlias"_s);
    for (const bool isLocked : {true, false}) {
        manager.loadAlias();
        EXPECT_EQ(finishRemovals().size(), isLocked ? 1U : 0U);
        EXPECT_EQ(paths(), support::words("/Z /Z/.h")) << "also where it could not go";
        support::permit(db);
    }
    EXPECT_EQ(stored(), support::words("/Z /Z/.h"));
    EXPECT_EQ(rows("select FileName from ImageFile"), QStringList());
}

TEST_F(PBAliasManagerTest, newRootInsideAnotherTakesItsFolderRows) {
    const auto outer = addRoot(a);
    const auto beside = addRoot(u"/A/Bx"_s);
    for (const QString& relativePath : {QString(), u"B"_s, u"B/C"_s, u"Bx"_s, u"b"_s})
        catalogue.insertFolderWithAliasId(outer->aliasId(), relativePath);
    catalogue.insertFolderWithAliasId(beside->aliasId(), {});
    const auto image = addImage(*outer, u"B/C/D"_s, u"i"_s);
    const auto inner = PBAliasObject::aliasObjectWithId(77, "n", QUrl::fromLocalFile(ab), ab, 0, 0);
    const char* sql = "select AliasId,RelativePath from Folder order by Id";
    const QStringList before = rows(sql);
    const QStringList moved = support::words("1|NULL 77|NULL 77|C 1|Bx 1|b 2|NULL 77|C/D");
    ASSERT_TRUE(db.beginTransaction());
    EXPECT_TRUE(manager.updateFolderByAliasObject(*inner));
    EXPECT_EQ(rows(sql), moved) << "within the change that is under way";
    ASSERT_TRUE(db.rollback()) << "not committed by the part";
    EXPECT_EQ(rows(sql), before);
    support::refuse(db, u"update on Folder when new.RelativePath = 'C'"_s);
    EXPECT_FALSE(manager.updateFolderByAliasObject(*inner));
    EXPECT_EQ(rows(sql), before) << "all or none";
    support::permit(db);
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
    support::refuse(db, u"update on FolderAlias"_s);
    EXPECT_TRUE(manager.aliasDidAnswer(*root, found).empty());
    EXPECT_FALSE(root->isMounted());
    EXPECT_EQ(root->aliasData(), place.toUtf8());
    EXPECT_FALSE(manager.updateState(*root, PBAliasObject::zombieState) || root->isZombie());
    support::permit(db);
    EXPECT_EQ(manager.aliasDidAnswer(*root, found), (PBAliasArray{root}));
    EXPECT_EQ(rows("select Type,ReservePath from FolderAlias"), QStringList{u"2|"_s + place});
    EXPECT_EQ(root->type(), PBAliasObject::Removable);
    EXPECT_TRUE(isRootThere(*root)) << "what a scan asks before rows go";
}

} // namespace
