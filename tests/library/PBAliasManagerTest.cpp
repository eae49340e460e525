#include "library/PBAliasManager.h"

#include "library/LibrarySupport.h"
#include "support/Support.h"

#include <atomic>
#include <thread>

using Outcome = platform::Resolution::Outcome;

namespace {

class PBAliasManagerTest : public LibraryTest {
protected:
    QString ownerOf(const QString& file, bool ignoreTrash = false) {
        QString relativePath = QStringLiteral("untouched");
        const auto root = manager.appropriateAliasObjectForPath(file, &relativePath, ignoreTrash);
        return (root ? root->path() : QStringLiteral("none")) + u'|' + relativePath;
    }
    QStringList paths() {
        QStringList found;
        for (const auto& root : manager.aliasArray())
            found.append(root->path());
        return found;
    }
    QStringList aliasRows() { return rows(QStringLiteral("select ReservePath from FolderAlias")); }
};

const QString a = QStringLiteral("/A");
const QString ab = QStringLiteral("/A/B");
const QString abc = QStringLiteral("/A/B/C");

TEST_F(PBAliasManagerTest, deepestRootOwnsAPath) {
    addRoot(a);
    addRoot(ab, PBAliasObject::Local, PBAliasObject::zombieState);
    EXPECT_EQ(ownerOf(QStringLiteral("/a/x/y")), QStringLiteral("/A|x/y"));
    EXPECT_EQ(ownerOf(QStringLiteral("/A/b/x")), QStringLiteral("/A/B|x"));
    EXPECT_EQ(ownerOf(QStringLiteral("/A/b/x"), true), QStringLiteral("/A|b/x"));
    EXPECT_EQ(ownerOf(a), QStringLiteral("/A|"));
    EXPECT_EQ(ownerOf(QStringLiteral("/AB")), QStringLiteral("none|untouched"));
    EXPECT_EQ(ownerOf({}), QStringLiteral("none|untouched"));
    EXPECT_EQ(manager.findAliasObjectByPath(QStringLiteral("/a/b"))->path(), ab);
    EXPECT_FALSE(manager.findAliasObjectByPath({}));
}

TEST_F(PBAliasManagerTest, watchedAndAccessedFoldersCoverMountedRoots) {
    const auto inner = addRoot(ab);
    addRoot(a);
    addRoot(QStringLiteral("/a"));
    const auto away = addRoot(QStringLiteral("/Z"), PBAliasObject::Removable);
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
    const auto gone = addRoot(QStringLiteral("/gone"));
    const auto moved = addRoot(QStringLiteral("/old"));
    const auto unplugged = addRoot(QStringLiteral("/stick"), PBAliasObject::Removable);
    const auto silent = addRoot(QStringLiteral("/slow"));
    const auto otherDisk = addRoot(QStringLiteral("/data/x"));
    const auto lostShare = addRoot(QStringLiteral("/share"), PBAliasObject::Network);
    const auto image = addImage(addFolder(*gone, QStringLiteral("sub")), QStringLiteral("a.jpg"));
    addImage(addFolder(*moved, {}), QStringLiteral("b.jpg"));
    answer(*gone, Outcome::Missing);
    answer(*moved, Outcome::Found, QStringLiteral("/new"));
    answer(*unplugged, Outcome::VolumeAbsent);
    answer(*silent, Outcome::NoAnswer);
    answer(*otherDisk, Outcome::VolumeAbsent);
    answer(*lostShare, Outcome::Missing);

    manager.loadAlias();
    EXPECT_EQ(paths(), (QStringList{QStringLiteral("/new"), {}, {}, {}, {}}));
    EXPECT_EQ(
        aliasRows(), (QStringList{
                         QStringLiteral("/new"), QStringLiteral("/stick"), QStringLiteral("/slow"),
                         QStringLiteral("/data/x"), QStringLiteral("/share")}));
    EXPECT_EQ(
        rows(QStringLiteral("select FileName from ImageFile")),
        QStringList{QStringLiteral("b.jpg")});
    EXPECT_EQ(rows(QStringLiteral("select count(*) from Exif")), QStringList{QStringLiteral("1")});
    EXPECT_EQ(
        rows(QStringLiteral("select RelativePath from Folder")),
        QStringList{QStringLiteral("NULL")});
    EXPECT_EQ(removedThumbnails, (std::vector{image}));
    EXPECT_EQ(manager.aliasArray()[1]->displayName(), QStringLiteral("stick"));
}

TEST_F(PBAliasManagerTest, lateAnswerIsTakenLikeOneInTime) {
    const auto silent = addRoot(QStringLiteral("/slow"));
    const auto gone = addRoot(QStringLiteral("/gone"));
    answer(*silent, Outcome::NoAnswer);
    answer(*gone, Outcome::NoAnswer);
    manager.loadAlias();
    const PBAliasArray roots = manager.aliasArray().copy();
    ASSERT_EQ(roots.size(), 2u);
    const auto changed =
        manager.aliasDidAnswer(*roots[0], {Outcome::Found, QStringLiteral("/slow")});
    EXPECT_EQ(changed, (PBAliasArray{roots[0]}));
    EXPECT_TRUE(roots[0]->isMounted());
    EXPECT_EQ(manager.aliasDidAnswer(*roots[1], {Outcome::Missing, {}}).size(), 1u);
    EXPECT_EQ(manager.aliasArray().size(), 1u);
    // A root that is gone by then changes nothing.
    EXPECT_TRUE(manager.aliasDidAnswer(*roots[1], {Outcome::Found, a}).empty());
}

TEST_F(PBAliasManagerTest, volumesComeAndGo) {
    const auto root = addRoot(QStringLiteral("/media/u/Disk/p"), PBAliasObject::Removable);
    const auto other = addRoot(a);
    answer(*root, Outcome::VolumeAbsent);
    EXPECT_EQ(manager.volumDidUnmount({}), (PBAliasArray{root}));
    EXPECT_FALSE(root->isMounted());
    EXPECT_EQ(root->reservePath(), QStringLiteral("/media/u/Disk/p"));
    answer(*root, Outcome::Found, QStringLiteral("/media/u/Disk1/p"));
    services.resolved = 0;
    EXPECT_EQ(manager.volumDidMount({}), (PBAliasArray{root}));
    EXPECT_EQ(services.resolved, 1) << "mounted roots are left alone";
    EXPECT_EQ(root->reservePath(), QStringLiteral("/media/u/Disk1/p"));
    EXPECT_EQ(aliasRows().constFirst(), QStringLiteral("/media/u/Disk1/p"));
    EXPECT_TRUE(manager.volumDidMount({}).empty());

    // Asked about because of some volume, a root turns out to have moved.
    answer(*other, Outcome::Found, QStringLiteral("/elsewhere"));
    EXPECT_EQ(manager.volumDidUnmount({}), (PBAliasArray{other}));
    EXPECT_EQ(aliasRows().constLast(), QStringLiteral("/elsewhere"));
}

TEST_F(PBAliasManagerTest, rootOfTheFileSystemCountsOnlyAsItself) {
    const auto root = addRoot(QStringLiteral("/media/gone"), PBAliasObject::Removable);
    const auto whole = addRoot(QStringLiteral("/"));
    answer(*root, Outcome::Found, QStringLiteral("/"));
    manager.volumDidUnmount({});
    EXPECT_FALSE(root->isMounted());
    EXPECT_TRUE(whole->isMounted());
    EXPECT_EQ(
        PBAliasManager::pathWithAliasObject(*whole, QStringLiteral("x/y")), QStringLiteral("/x/y"));
    EXPECT_EQ(ownerOf(QStringLiteral("/x/y")), QStringLiteral("/|x/y"));
    EXPECT_EQ(whole->displayName(), QStringLiteral("/"));
}

TEST_F(PBAliasManagerTest, changeOfCaseIsNoChange) {
    const auto root = addRoot(a);
    answer(*root, Outcome::Found, QStringLiteral("/a"));
    EXPECT_TRUE(manager.aliasPathChanged(a).empty());
    EXPECT_EQ(root->path(), a);
}

TEST_F(PBAliasManagerTest, changedRootFolderIsLookedAtAgain) {
    const auto root = addRoot(a);
    const auto stick = addRoot(QStringLiteral("/stick"), PBAliasObject::Removable);
    addRoot(QStringLiteral("/other"));
    EXPECT_TRUE(manager.aliasPathChanged(QStringLiteral("/nowhere")).empty());
    answer(*root, Outcome::Missing);
    answer(*stick, Outcome::Missing);
    EXPECT_EQ(manager.aliasPathChanged(QStringLiteral("/a")), (PBAliasArray{root}));
    EXPECT_EQ(manager.aliasPathChanged(QStringLiteral("/stick")), (PBAliasArray{stick}));
    EXPECT_EQ(aliasRows(), (QStringList{QStringLiteral("/stick"), QStringLiteral("/other")}));
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
    const auto away = addRoot(QStringLiteral("/Z"), PBAliasObject::Removable, zombie);
    answer(*away, Outcome::VolumeAbsent);
    manager.volumDidUnmount({});
    EXPECT_FALSE(manager.removeZombieAlias());
    EXPECT_TRUE(manager.updateState(*outer, zombie));
    EXPECT_TRUE(manager.removeZombieAlias());
    EXPECT_EQ(manager.aliasArray().copy(), (PBAliasArray{away}))
        << "an unmounted zombie can't be judged";
    EXPECT_EQ(aliasRows(), QStringList{QStringLiteral("/Z")});
}

TEST_F(PBAliasManagerTest, newRootInsideAnotherTakesItsFolderRows) {
    const auto outer = addRoot(a);
    const auto beside = addRoot(QStringLiteral("/A/Bx"));
    addFolder(*outer, {});
    addFolder(*outer, QStringLiteral("b"));
    addFolder(*outer, QStringLiteral("B/C"));
    addFolder(*outer, QStringLiteral("Bx"));
    addFolder(*beside, {});
    const auto image = addImage(addFolder(*outer, QStringLiteral("B/C/D")), QStringLiteral("i"));
    const auto inner = PBAliasObject::aliasObjectWithId(77, "n", QUrl::fromLocalFile(ab), ab, 0, 0);
    manager.updateFolderByAliasObject(*inner);
    const QString o = QString::number(outer->aliasId());
    EXPECT_EQ(
        rows(QStringLiteral("select AliasId,RelativePath from Folder order by Id")),
        (QStringList{
            o + QStringLiteral("|NULL"), QStringLiteral("77|NULL"), QStringLiteral("77|C"),
            o + QStringLiteral("|Bx"), QString::number(beside->aliasId()) + QStringLiteral("|NULL"),
            QStringLiteral("77|C/D")}));
    EXPECT_EQ(
        rows(QStringLiteral("select Id from ImageFile")), QStringList{QString::number(image)});
}

TEST_F(PBAliasManagerTest, readersOnOtherThreadsSeeWholeArrays) {
    std::atomic<bool> end = false;
    const auto moving = addRoot(QStringLiteral("/move"), PBAliasObject::Removable);
    std::jthread reader([&] {
        while (!end) {
            for (const QString& path : manager.getMonitorPathArray())
                EXPECT_TRUE(path.startsWith(u'/'));
            static_cast<void>(manager.mountedPathOfAliasId(moving->aliasId()));
        }
    });
    for (int i = 0; i < 200; ++i) {
        answer(*moving, Outcome::Found, QStringLiteral("/move%1").arg(i));
        manager.volumDidUnmount({});
        if (i % 20 == 0) addRoot(QStringLiteral("/r%1").arg(i));
    }
    end = true;
}

} // namespace
