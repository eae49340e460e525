#include "app/RunningProgram.h"
#include "shell/sidebar/FolderRootCommands.h"
#include "support/Rows.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

namespace {

/// Also while a list of its folders is being read.
void unplug(const QByteArray& disk) {
    ASSERT_EQ(::umount2(disk.constData(), MNT_DETACH), 0);
}

struct SidebarTest : RunningProgramTest {};

TEST_F(SidebarTest, rootsAndSelectionSurviveRestartsRenamesAndDeletion) {
    const QString last = make(u"photos/A/x/y"_s);
    const QString a = path(u"photos/A"_s);
    const QString b = make(u"photos/B"_s);
    const QString renamed = a + u'2';
    ASSERT_TRUE(controller->addFolders({b, a + u'/'}));
    EXPECT_EQ(selectedFolder(), a);
    window().sourceSelection().selectFolder(last);
    ASSERT_TRUE(selects(last));
    const auto id = controller->aliasManager().findAliasObjectByPath(a)->aliasId();
    start();
    EXPECT_EQ(roots(), (QStringList{b, a}));
    EXPECT_TRUE(selects(last)) << "also where a busy disk brings the folders later";
    controller.reset();
    ASSERT_TRUE(QFile::rename(a, renamed));
    start();
    EXPECT_EQ(roots(), (QStringList{b, renamed}));
    EXPECT_EQ(controller->aliasManager().findAliasObjectById(id)->path(), renamed);
    EXPECT_EQ(selectedFolder(), QString()) << "the stored place lies in no root any more";
    controller.reset();
    QDir(renamed).removeRecursively();
    start();
    EXPECT_EQ(roots(), QStringList{b});
}

TEST_F(SidebarTest, unpluggedDiskGreysItsRootAndComesBackWithIt) {
    const QByteArray disk = QFile::encodeName(make(u"disk"_s));
    if (::mount("none", disk.constData(), "tmpfs", 0, nullptr) != 0)
        GTEST_SKIP() << "not allowed to mount";
    // Keeps the file system alive while it is mounted nowhere, as a disk in a drawer is.
    const int drawer = ::open_tree(AT_FDCWD, disk.constData(), OPEN_TREE_CLONE | O_CLOEXEC);
    ASSERT_GE(drawer, 0);
    make(u"disk/photos/sub/deep"_s);
    start(); // with the disk in its place
    ASSERT_TRUE(controller->addFolders({path(u"disk/photos"_s)}));
    const auto item = std::dynamic_pointer_cast<PBFolderAliasItem>(tree().selectedItem());
    ASSERT_TRUE(item);
    const auto sub = [&] { return item->childFolderWithFolderName(u"sub"_s, true); };
    const QString deep = path(u"disk/photos/sub/deep"_s);
    window().sourceSelection().selectFolder(deep);
    ASSERT_TRUE(selects(deep));

    unplug(disk);
    EXPECT_TRUE(support::spinUntil([&] { return !item->aliasObject()->isMounted(); }));
    EXPECT_FALSE(tree().selectedItem());

    ASSERT_EQ(::move_mount(drawer, "", AT_FDCWD, disk.constData(), MOVE_MOUNT_F_EMPTY_PATH), 0);
    EXPECT_TRUE(support::spinUntil([&] { return item->aliasObject()->isMounted(); }));
    EXPECT_TRUE(support::spinUntil([&] { return sub() && tree().isExpanded(*sub()); }));
    EXPECT_FALSE(tree().selectedItem()) << "it comes back, but is not selected by itself";
    unplug(disk);
    ::close(drawer);
    start();
    EXPECT_EQ(roots(), QStringList{QString()}) << "kept, though out of reach";
}

TEST_F(SidebarTest, aRemovedRootTakesAllItsRowsAndThumbnailsAlongAlsoWhereTheProgramEnds) {
    for (const QString& name : {u"a"_s, u"b"_s, u"x/c"_s})
        makePicture(u"photos/%1.jpg"_s.arg(name));
    const auto count = [&](const QString& file, const QString& table) {
        FMDatabase db(path(u"profile/"_s + file));
        EXPECT_TRUE(db.open());
        return support::rowsOf(db, u"select count(*) from "_s + table).value(0).toInt();
    };
    const auto holds = [&](int photographs) {
        return support::spinUntil([&] {
            return count(u"files.db"_s, u"ImageFile"_s) == photographs &&
                   count(u"thumbnail.db"_s, u"Thumbnail"_s) == photographs;
        });
    };
    const auto removeSelected = [&] {
        EXPECT_EQ(selectedFolder(), path(u"photos"_s));
        window().folderRootCommands().removeFolderAlias();
        EXPECT_EQ(roots(), QStringList());
        EXPECT_FALSE(tree().selectedItem());
    };
    ASSERT_TRUE(controller->addFolders({path(u"photos"_s)}));
    ASSERT_TRUE(holds(3));
    removeSelected();
    EXPECT_TRUE(holds(0)) << "thumbnails, too";

    ASSERT_TRUE(controller->addFolders({path(u"photos"_s)}));
    ASSERT_TRUE(holds(3));
    removeSelected();
    controller.reset();
    for (const QString& table : {u"FolderAlias"_s, u"Folder"_s, u"ImageFile"_s, u"Exif"_s})
        EXPECT_EQ(count(u"files.db"_s, table), 0) << "the end of the program waits for it";
    start();
    EXPECT_TRUE(holds(0)) << "what the last run did not come to";
}

} // namespace
