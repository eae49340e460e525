#include "app/RunningProgram.h"
#include "support/MemoryDisk.h"
#include "support/Rows.h"

#include <fcntl.h>
#include <unistd.h>

namespace {

struct SidebarTest : RunningProgramTest {
    /// Adds the folder, waits until its images are catalogued; answers its id.
    qint64 add(const QString& below) {
        EXPECT_TRUE(controller->addFolders({path(below)}));
        EXPECT_TRUE(becomesIdle());
        return controller->aliasManager().findAliasObjectByPath(path(below))->aliasId();
    }
    /// The one root there is has this id and lies there.
    void expectOnlyRoot(qint64 id, const QString& place) {
        EXPECT_EQ(roots(), QStringList{place});
        EXPECT_TRUE(controller->aliasManager().findAliasObjectById(id));
    }
    [[nodiscard]] bool becomesOnlyRoot(const QString& place) {
        return support::spinUntil([&] { return roots() == QStringList{place}; });
    }
    QStringList imageRows() const {
        return support::rowsOf(catalogue(), u"select FileName from ImageFile order by 1"_s);
    }
};

TEST_F(SidebarTest, aRootFollowsTheFoldersAboveItWhereverTheyGo) {
    const QString root = u"docs/jobs/shoots/R"_s;
    makePicture(root + u"/a.jpg"_s);
    make(u".hidden"_s);
    const qint64 id = add(root);
    const auto goes = [&](const QString& from, const QString& to) {
        ASSERT_TRUE(QFile::rename(path(from), path(to)));
        const QString place = path(QString(root).replace(0, 4, to));
        EXPECT_TRUE(becomesOnlyRoot(place))
            << qPrintable(place) << " is " << qPrintable(roots().join(u' '));
        EXPECT_TRUE(selects(place)) << "also after it was away";
        // A name that is given before it is watched goes unseen.
        SCEvents& events = controller->scEvents();
        EXPECT_TRUE(support::spinUntil([&] {
            return events.watchedPaths().contains(place) && events.flushEventStreamSync();
        }));
    };
    goes(u"docs"_s, u"docs2"_s);
    goes(u"docs2"_s, u".hidden/docs"_s); // where only a search of the whole disk comes
    goes(u".hidden/docs"_s, u"docs"_s);
    window().sourceSelection().showSelected(); // as soon as its folders are watched
    controller.reset();
    ASSERT_TRUE(QFile::rename(path(u"docs"_s), path(u".docs"_s)));
    start();
    const QString now = path(u".docs/jobs/shoots/R"_s);
    expectOnlyRoot(id, now);
    EXPECT_TRUE(selects(now)) << "the place of the last run, where it is now";
    EXPECT_EQ(imageRows(), QStringList{u"a.jpg"_s});
}

TEST_F(SidebarTest, aFolderPutBackFromABackupIsTheRootThatItWas) {
    const QString root = path(u"photos/R"_s);
    for (const char* name : {"1", "2", "sub/3", "sub/4"})
        makePicture(u"photos/R/%1.jpg"_s.arg(QLatin1StringView(name)));
    const qint64 id = add(u"photos/R"_s);
    ASSERT_TRUE(support::spinUntil([&] { return imageRows().size() == 4; }));
    ASSERT_TRUE(
        support::Database(catalogue()).executeUpdate(u"update ImageFile set FileStars = 5"_s));
    const auto putBack = [&](const char* names) {
        for (const QString& name : support::words(names)) {
            QDir().mkpath(QFileInfo(root + u'/' + name).path());
            ASSERT_TRUE(QFile::copy(path(u"backup/"_s + name), root + u'/' + name));
        }
    };
    controller.reset();
    // As other folders and files: the old ones are gone.
    const QByteArray shell =
        "cd '" + QFile::encodeName(path({})) + "' && cp -r photos/R backup && rm -r photos/R";
    ASSERT_EQ(std::system(shell.constData()), 0);

    start();
    expectOnlyRoot(id, {});
    putBack("1.jpg"); // a quarter
    ASSERT_TRUE(controller->addFolders({root}));
    EXPECT_EQ(roots(), (QStringList{{}, root})) << "what doesn't look like it is another one";
    window().sourceSidebar().commands().removeFolderAlias();
    expectOnlyRoot(id, {});
    putBack("sub/3.jpg"); // half: seen by itself
    EXPECT_TRUE(becomesOnlyRoot(root));
    putBack("2.jpg sub/4.jpg");
    start();
    expectOnlyRoot(id, root);
    EXPECT_TRUE(selects(root));
    EXPECT_TRUE(becomesIdle());
    EXPECT_EQ(imageRows(), support::words("1.jpg 2.jpg 3.jpg 4.jpg"));
}

TEST_F(SidebarTest, aRootIsGoneWhenTheWholeDiskWasLookedThroughAndNotBefore) {
    const support::MemoryDisk disk(path(u"disk"_s));
    if (!disk.isMounted()) return support::rerunWhereDisksCanBeMounted();
    makePicture(u"disk/a/R/1.jpg"_s);
    makePicture(u"disk/a/S/2.jpg"_s);
    add(u"disk/a/R"_s);
    add(u"disk/a/S"_s);
    controller.reset();
    ASSERT_TRUE(QFile::rename(path(u"disk/a/S"_s), path(u"disk/.deep"_s)));
    QDir(path(u"disk/a/R"_s)).removeRecursively();
    start();
    EXPECT_EQ(roots().size(), 2) << "only looked for near its place";
    const QString found = path(u"disk/.deep"_s);
    EXPECT_TRUE(becomesOnlyRoot(found));
    NoticeBar& notices = controller->mainWindowController().noticeBar();
    EXPECT_TRUE(support::spinUntil([&] { return notices.text().contains(u"“R”"_s); }));
    EXPECT_EQ(imageRows(), QStringList{u"2.jpg"_s});
}

TEST_F(SidebarTest, aRootIsGreyWhileItsDiskIsAwayAndComesWithItOrWhenItIsRestoredOnAnother) {
    std::optional<support::MemoryDisk> disk(path(u"disk"_s));
    if (!disk->isMounted()) return support::rerunWhereDisksCanBeMounted();
    const QByteArray place = QFile::encodeName(path(u"disk"_s));
    const QString picture = makePicture(u"disk/R/1.jpg"_s);
    const QString deep = make(u"disk/R/sub/deep"_s);
    const qint64 id = add(u"disk/R"_s);
    const QByteArray bytes = support::readFile(picture);
    const auto item = std::dynamic_pointer_cast<PBFolderAliasItem>(tree().selectedItem());
    ASSERT_TRUE(item);
    window().sourceSelection().selectFolder(deep);
    ASSERT_TRUE(selects(deep));
    // Keeps the file system alive while it is mounted nowhere, as a disk in a drawer is.
    const int drawer = ::open_tree(AT_FDCWD, place.constData(), OPEN_TREE_CLONE | O_CLOEXEC);
    ASSERT_GE(drawer, 0);
    disk.reset();
    EXPECT_TRUE(becomesOnlyRoot({}));
    EXPECT_FALSE(tree().selectedItem());
    ASSERT_EQ(::move_mount(drawer, "", AT_FDCWD, place.constData(), MOVE_MOUNT_F_EMPTY_PATH), 0);
    EXPECT_TRUE(becomesOnlyRoot(path(u"disk/R"_s)));
    EXPECT_TRUE(support::spinUntil([&] {
        const auto sub = item->childFolderWithFolderName(u"sub"_s, true);
        return sub && tree().isExpanded(*sub);
    }));
    EXPECT_FALSE(tree().selectedItem()) << "it comes back, but is not selected by itself";
    ASSERT_EQ(::umount2(place.constData(), MNT_DETACH), 0);
    ::close(drawer);
    start();
    EXPECT_EQ(roots(), QStringList{QString()}) << "kept, though out of reach";
    disk.emplace(path(u"disk"_s));
    // The mount alone brings nothing back.
    EXPECT_TRUE(becomesIdle());
    support::writeFile(picture, bytes);
    EXPECT_TRUE(becomesOnlyRoot(path(u"disk/R"_s)));
    EXPECT_EQ(imageRows(), QStringList{u"1.jpg"_s});
    start();
    expectOnlyRoot(id, path(u"disk/R"_s)); // by its new bookmark
    controller.reset();
}

TEST_F(SidebarTest, aRemovedRootTakesAllItsRowsAndThumbnailsAlongAlsoWhereTheProgramEnds) {
    for (const QString& name : {u"a"_s, u"b"_s, u"x/c"_s})
        makePicture(u"photos/%1.jpg"_s.arg(name));
    const auto count = [&](const QString& file, const QString& table) {
        const QString sql = u"select count(*) from "_s + table;
        return support::rowsOf(path(u"profile/"_s + file), sql).value(0, u"-1"_s).toInt();
    };
    const auto holds = [&](int photographs) {
        return support::spinUntil([&] {
            return count(u"files.db"_s, u"ImageFile"_s) == photographs &&
                   count(u"thumbnail.db"_s, u"Thumbnail"_s) == photographs;
        });
    };
    const auto addAndRemove = [&] {
        ASSERT_TRUE(controller->addFolders({path(u"photos"_s)}));
        ASSERT_TRUE(holds(3));
        EXPECT_EQ(selectedFolder(), path(u"photos"_s));
        window().folderRootCommands().removeFolderAlias();
        EXPECT_EQ(roots(), QStringList());
        EXPECT_FALSE(tree().selectedItem());
    };
    addAndRemove();
    EXPECT_TRUE(holds(0)) << "thumbnails, too";
    addAndRemove();
    controller.reset();
    for (const QString& table : {u"FolderAlias"_s, u"Folder"_s, u"ImageFile"_s, u"Exif"_s})
        EXPECT_EQ(count(u"files.db"_s, table), 0) << "the end of the program waits for it";
    start();
    EXPECT_TRUE(holds(0)) << "what the last run did not come to";
}

/// From a fresh profile: the place is found behind the display, which follows by itself.
TEST_F(SidebarTest, photographsComeToTheirPlaceWhenItIsFound) {
    makePicture(u"photos/berlin.jpg"_s);
    makePicture(u"photos/nowhere.jpg"_s);
    add(u"photos"_s);
    ASSERT_TRUE(
        support::Database(catalogue())
            .executeUpdate(
                u"insert into GPS (FileId,LatitudeRef,Latitude,LongitudeRef,Longitude) select "
                "Id,'N',52.52,'E',13.4 from ImageFile where FileName = 'berlin.jpg'"_s));
    browser().GotoIndex({0, 1}); // kept while the sheet is filled anew
    groupBy({group::Place});
    const auto place = [&]() -> PBValue {
        const auto& tree = controller->shellServices().groupTreeDataSource.groupItemArray();
        return tree.size() == 2 ? tree.front()->value() : PBValue();
    };
    EXPECT_TRUE(support::spinUntil([&] { return place().hasValue(); }));
    EXPECT_TRUE(becomesIdle());
    EXPECT_TRUE(place().hasValue());
    EXPECT_EQ(selectedAndCurrent(), u"nowhere.jpg nowhere.jpg"_s);
}

} // namespace
