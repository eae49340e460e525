#include "library/PBAliasManager.h"

#include "library/LibrarySupport.h"

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
    QStringList aliasRows() { return rows(u"select ReservePath from FolderAlias"_s); }
};

const QString a = u"/A"_s;
const QString ab = u"/A/B"_s;
const QString abc = u"/A/B/C"_s;

TEST_F(PBAliasManagerTest, deepestRootOwnsAPath) {
    addRoot(a);
    addRoot(ab, PBAliasObject::Local, PBAliasObject::zombieState);
    EXPECT_EQ(ownerOf(u"/a/x/y"_s), u"/A|x/y"_s);
    EXPECT_EQ(ownerOf(u"/A/b/x"_s), u"/A/B|x"_s);
    EXPECT_EQ(ownerOf(u"/A/b/x"_s, true), u"/A|b/x"_s);
    EXPECT_EQ(ownerOf(a), u"/A|"_s);
    EXPECT_EQ(ownerOf(u"/AB"_s), u"none|untouched"_s);
    EXPECT_EQ(ownerOf({}), u"none|untouched"_s);
    EXPECT_EQ(manager.findAliasObjectByPath(u"/a/b"_s)->path(), ab);
    EXPECT_FALSE(manager.findAliasObjectByPath({}));
}

TEST_F(PBAliasManagerTest, watchedAndAccessedFoldersCoverMountedRoots) {
    const auto inner = addRoot(ab);
    addRoot(a);
    addRoot(u"/a"_s);
    const auto away = addRoot(u"/Z"_s, PBAliasObject::Removable);
    answer(*away, Outcome::VolumeAbsent);
    manager.volumDidUnmount({});
    EXPECT_EQ(manager.getMonitorPathArray(), (QStringList{ab, a}));
    EXPECT_EQ(manager.getShouldStartAccessURLArray(), (QList<QUrl>{QUrl::fromLocalFile(a)}));
    const auto outer = manager.findAliasObjectByPath(a);
    EXPECT_EQ(manager.findSubAliasByAliasObject(*outer, {}), (PBAliasArray{inner}));
    EXPECT_TRUE(manager.findSubAliasByAliasObject(*inner, {}).empty());
    EXPECT_TRUE(manager.findSubAliasByAliasObject(*away, {}).empty());
    EXPECT_EQ(manager.mountedPathOfAliasId(away->aliasId()), QString());
}

TEST_F(PBAliasManagerTest, loadingResolvesAndDropsOnlyLocalFoldersThatAreGone) {
    const auto gone = addRoot(u"/gone"_s);
    const auto moved = addRoot(u"/old"_s);
    const auto unplugged = addRoot(u"/stick"_s, PBAliasObject::Removable);
    const auto silent = addRoot(u"/slow"_s);
    const auto otherDisk = addRoot(u"/data/x"_s);
    const auto lostShare = addRoot(u"/share"_s, PBAliasObject::Network);
    const auto image = addImage(addFolder(*gone, u"sub"_s), u"a.jpg"_s);
    addImage(addFolder(*moved, {}), u"b.jpg"_s);
    answer(*gone, Outcome::Missing);
    answer(*moved, Outcome::Found, u"/new"_s);
    answer(*unplugged, Outcome::VolumeAbsent);
    answer(*silent, Outcome::NoAnswer);
    answer(*otherDisk, Outcome::VolumeAbsent);
    answer(*lostShare, Outcome::Missing);

    manager.loadAlias();
    EXPECT_EQ(paths(), (QStringList{u"/new"_s, {}, {}, {}, {}}));
    EXPECT_EQ(
        aliasRows(), (QStringList{u"/new"_s, u"/stick"_s, u"/slow"_s, u"/data/x"_s, u"/share"_s}));
    EXPECT_EQ(rows(u"select FileName from ImageFile"_s), QStringList{u"b.jpg"_s});
    EXPECT_EQ(rows(u"select count(*) from Exif"_s), QStringList{u"1"_s});
    EXPECT_EQ(rows(u"select RelativePath from Folder"_s), QStringList{u"NULL"_s});
    EXPECT_EQ(removedThumbnails, (std::vector{image}));
    EXPECT_EQ(manager.aliasArray()[1]->displayName(), u"stick"_s);
}

TEST_F(PBAliasManagerTest, lateAnswerIsTakenLikeOneInTime) {
    const auto silent = addRoot(u"/slow"_s);
    const auto gone = addRoot(u"/gone"_s);
    answer(*silent, Outcome::NoAnswer);
    answer(*gone, Outcome::NoAnswer);
    manager.loadAlias();
    const PBAliasArray roots = manager.aliasArray().copy();
    ASSERT_EQ(roots.size(), 2u);
    const auto changed = manager.aliasDidAnswer(*roots[0], {Outcome::Found, u"/slow"_s});
    EXPECT_EQ(changed, (PBAliasArray{roots[0]}));
    EXPECT_TRUE(roots[0]->isMounted());
    EXPECT_EQ(manager.aliasDidAnswer(*roots[1], {Outcome::Missing, {}}).size(), 1u);
    EXPECT_EQ(manager.aliasArray().size(), 1u);
    // A root that is gone by then changes nothing.
    EXPECT_TRUE(manager.aliasDidAnswer(*roots[1], {Outcome::Found, a}).empty());
}

TEST_F(PBAliasManagerTest, volumesComeAndGo) {
    const auto root = addRoot(u"/media/u/Disk/p"_s, PBAliasObject::Removable);
    const auto other = addRoot(a);
    answer(*root, Outcome::VolumeAbsent);
    EXPECT_EQ(manager.volumDidUnmount({}), (PBAliasArray{root}));
    EXPECT_FALSE(root->isMounted());
    EXPECT_EQ(root->reservePath(), u"/media/u/Disk/p"_s);
    answer(*root, Outcome::Found, u"/media/u/Disk1/p"_s);
    services.resolved = 0;
    EXPECT_EQ(manager.volumDidMount({}), (PBAliasArray{root}));
    EXPECT_EQ(services.resolved, 1) << "mounted roots are left alone";
    EXPECT_EQ(root->reservePath(), u"/media/u/Disk1/p"_s);
    EXPECT_EQ(aliasRows().constFirst(), u"/media/u/Disk1/p"_s);
    EXPECT_TRUE(manager.volumDidMount({}).empty());

    // Asked about because of some volume, a root turns out to have moved.
    answer(*other, Outcome::Found, u"/elsewhere"_s);
    EXPECT_EQ(manager.volumDidUnmount({}), (PBAliasArray{other}));
    EXPECT_EQ(aliasRows().constLast(), u"/elsewhere"_s);
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
    EXPECT_TRUE(manager.aliasPathChanged(a).empty()) << "case is no change";
    answer(*root, Outcome::Missing);
    answer(*stick, Outcome::Missing);
    EXPECT_EQ(manager.aliasPathChanged(u"/a"_s), (PBAliasArray{root}));
    EXPECT_EQ(manager.aliasPathChanged(u"/stick"_s), (PBAliasArray{stick}));
    EXPECT_EQ(aliasRows(), (QStringList{u"/stick"_s, u"/other"_s}));
}

TEST_F(PBAliasManagerTest, zombiesGoWhenNoRootNeedsThem) {
    const auto zombie = PBAliasObject::zombieState;
    for (const bool reversed : {false, true}) {
        addRoot(reversed ? abc : ab, PBAliasObject::Local, zombie);
        addRoot(reversed ? ab : abc, PBAliasObject::Local, zombie);
        EXPECT_TRUE(manager.removeZombieAlias());
        EXPECT_TRUE(paths().isEmpty());
    }
    addRoot(ab, PBAliasObject::Local, zombie);
    const auto outer = addRoot(a);
    const auto away = addRoot(u"/Z"_s, PBAliasObject::Removable, zombie);
    answer(*away, Outcome::VolumeAbsent);
    manager.volumDidUnmount({});
    EXPECT_FALSE(manager.removeZombieAlias());
    EXPECT_TRUE(manager.updateState(*outer, zombie));
    EXPECT_TRUE(manager.removeZombieAlias());
    EXPECT_EQ(manager.aliasArray().copy(), (PBAliasArray{away}))
        << "an unmounted zombie can't be judged";
    EXPECT_EQ(aliasRows(), QStringList{u"/Z"_s});
}

TEST_F(PBAliasManagerTest, newRootInsideAnotherTakesItsFolderRows) {
    const auto outer = addRoot(a);
    const auto beside = addRoot(u"/A/Bx"_s);
    addFolder(*outer, {});
    addFolder(*outer, u"b"_s);
    addFolder(*outer, u"B/C"_s);
    addFolder(*outer, u"Bx"_s);
    addFolder(*beside, {});
    const auto image = addImage(addFolder(*outer, u"B/C/D"_s), u"i"_s);
    const auto inner = PBAliasObject::aliasObjectWithId(77, "n", QUrl::fromLocalFile(ab), ab, 0, 0);
    manager.updateFolderByAliasObject(*inner);
    const QString o = QString::number(outer->aliasId());
    EXPECT_EQ(
        rows(u"select AliasId,RelativePath from Folder order by Id"_s),
        (QStringList{
            o + u"|NULL"_s, u"77|NULL"_s, u"77|C"_s, o + u"|Bx"_s,
            QString::number(beside->aliasId()) + u"|NULL"_s, u"77|C/D"_s}));
    EXPECT_EQ(rows(u"select Id from ImageFile"_s), QStringList{QString::number(image)});
}

TEST_F(PBAliasManagerTest, readersOnOtherThreadsSeeWholeArrays) {
    std::atomic<bool> end = false;
    const auto moving = addRoot(u"/move"_s, PBAliasObject::Removable);
    std::jthread reader([&] {
        while (!end) {
            for (const QString& path : manager.getMonitorPathArray())
                EXPECT_TRUE(path.startsWith(u'/'));
            static_cast<void>(manager.mountedPathOfAliasId(moving->aliasId()));
        }
    });
    for (int i = 0; i < 200; ++i) {
        answer(*moving, Outcome::Found, u"/move%1"_s.arg(i));
        manager.volumDidUnmount({});
        if (i % 20 == 0) addRoot(u"/r%1"_s.arg(i));
    }
    end = true;
}

} // namespace
