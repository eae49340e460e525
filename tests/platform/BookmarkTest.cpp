#include "platform/files/FolderSearch.h"
#include "platform/volumes/BookmarkResolver.h"

#include "support/FolderTest.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform;
using Outcome = Resolution::Outcome;
using Answer = std::pair<Outcome, QString>;

namespace {

const Answer missing{Outcome::NotFound, {}};

struct BookmarkTest : support::FolderTest {
    Bookmark bookmarkOf(const QString& folder) const {
        const auto bookmark = Bookmark::bookmarkOfFolder(folder, Volumes());
        EXPECT_TRUE(bookmark);
        // Through the byte form, as roots are kept.
        return Bookmark::fromData(bookmark.value_or(Bookmark()).data()).value_or(Bookmark());
    }
    /// Without the user's own folders, which would let a test depend on them.
    Answer resolve(const Bookmark& bookmark, const SearchPlaces& places = {}) const {
        const auto [outcome, at] = BookmarkResolver().resolve(bookmark, places);
        return {outcome, at};
    }
    Answer found(QStringView below) const { return {Outcome::Found, path(below)}; }
};

TEST_F(BookmarkTest, folderIsFoundAtItsPathAndAfterRenamesAndMoves) {
    QStringView now = u"home/Photos/A";
    const Bookmark bookmark = bookmarkOf(make(now));
    make(u"home/Photos/Archive/2024");
    make(u"home/Other/Deep");
    const QStringView places[] = {
        now,
        u"home/Photos/A2",              // renamed
        u"home/Photos/Archive/A",       // into a neighbour
        u"home/A",                      // one level up
        u"home/Other/A",                // into the parent's neighbour
        u"home/Photos/A",               // and back
        u"home/Photos/\U0001F33B\n x"}; // names are bytes
    for (const QStringView place : places) {
        move(now, place);
        EXPECT_EQ(resolve(bookmark), found(place));
        now = place;
    }
}

TEST_F(BookmarkTest, folderIsFoundWhereOneOfTheFoldersAboveItHasAnotherName) {
    const QString now = u"home/Docs/Jobs/Shoots/R"_s;
    const Bookmark bookmark = bookmarkOf(make(now));
    SearchPlaces places;
    // Hidden, so that no search by depth comes there, and with a new folder in the old one's place.
    for (const QString& name : {u"home"_s, u"Docs"_s, u"Jobs"_s, u"Shoots"_s, u"R"_s}) {
        const QString former = now.left(now.indexOf(name) + name.size());
        const QString renamed = now.left(now.indexOf(name)) + u'.' + name;
        move(former, renamed);
        for (const bool isPlaceTaken : {false, true}) {
            if (isPlaceTaken) make(former);
            EXPECT_EQ(resolve(bookmark), found(renamed + now.mid(former.size())));
        }
        QDir().rmdir(path(former));
        move(renamed, former);
    }
    // Two of them: only who saw it go can tell.
    move(u"home/Docs", u"home/.Docs");
    move(u"home/.Docs/Jobs", u"home/.Docs/.Jobs");
    EXPECT_EQ(resolve(bookmark), missing);
    places.movedTo = path(u"home/.Docs/.Jobs/Shoots");
    EXPECT_EQ(resolve(bookmark, places), missing);
    places.movedTo += u"/R";
    EXPECT_EQ(resolve(bookmark, places), found(u"home/.Docs/.Jobs/Shoots/R"));
}

TEST_F(BookmarkTest, otherRootsAndTheLastSeenPathAreSearchedToo) {
    const Bookmark bookmark = bookmarkOf(make(u"one/two/three/A"));
    make(u"one/two/three/.Trash");
    QFile::link(path(u"one"), path(u"one/two/loop"));
    make(u"x/y/z/hidden");
    SearchPlaces places{{}, {}, {make(u"far/away/Root")}, {}};
    move(u"one/two/three/A", u"one/two/three/.Trash/A");
    EXPECT_EQ(resolve(bookmark), missing) << "the trash is not searched, nor links";
    move(u"one/two/three/.Trash/A", u"far/away/Root/A");
    EXPECT_EQ(resolve(bookmark), missing);
    EXPECT_EQ(resolve(bookmark, places), found(u"far/away/Root/A"));
    move(u"far/away/Root/A", u"x/y/z/hidden/A");
    EXPECT_EQ(resolve(bookmark, places), missing);
    places.lastSeenPath = path(u"x/y/z/hidden/A");
    EXPECT_EQ(resolve(bookmark, places), found(u"x/y/z/hidden/A"));
}

TEST_F(BookmarkTest, anotherFolderAtTheOldPathIsNotTheOldRoot) {
    const Bookmark bookmark = bookmarkOf(make(u"p/A"));
    // The inode number is given out again at once on some file systems.
    QDir().rmdir(path(u"p/A"));
    make(u"p/A");
    EXPECT_EQ(resolve(bookmark), missing);
    write(u"p/file");
    EXPECT_FALSE(Bookmark::bookmarkOfFolder(path(u"p/file"), Volumes()));
}

TEST_F(BookmarkTest, searchGoesDownFromTheNewestFoldersAndLeavesOutWhatItMust) {
    const std::uint64_t inode = bookmarkOf(make(u"p/old/A")).folder.inode;
    const QByteArray top = QFile::encodeName(make(u"p"));
    for (int i = 0; i < 5; ++i)
        make(u"p/%1"_s.arg(i));
    using Places = std::vector<FolderSearch::Place>;
    const auto found = [&](const Places& places, int looks, const QSet<QByteArray>& avoided = {}) {
        const std::chrono::steady_clock::time_point start;
        FolderSearch search(
            inode, [](const QByteArray&) { return true; },
            [&] { return start + std::chrono::seconds(looks-- > 0 ? 0 : 1); },
            start + std::chrono::seconds(1));
        search.setAvoided(avoided);
        const auto path = search.run(places);
        return path.value_or("none");
    };
    const auto touch = [](const QByteArray& folder, std::int64_t time) {
        const timespec times[2] = {{time, 0}, {time, 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, folder.constData(), times, 0), 0);
    };
    const QByteArray wanted = top + "/old/A";
    touch(top + "/old", 4'000'000'000);
    EXPECT_EQ(found({{top, 2}}, 2), wanted) << "the folder changed last comes first";
    touch(top + "/old", 1);
    EXPECT_EQ(found({{top, 2}}, 2), "none");
    EXPECT_EQ(found({{top, 2}}, 99), wanted);
    EXPECT_EQ(found({{top, 1}}, 99), "none");
    EXPECT_EQ(found({{top, 1}, {top, 2}}, 99), wanted) << "deeper than before";
    EXPECT_EQ(found({{top, 2}, {top + "/old", 1}}, 7), wanted);
    for (const QByteArray& avoided : {top, top + "/old", wanted})
        EXPECT_EQ(found({{top, 2}}, 99, {avoided}), "none");
}

TEST_F(BookmarkTest, bytesCarryEveryMarkAndEachMarkDecides) {
    Bookmark one{
        u"/a/b"_s,
        u"/b"_s,
        {"ext4", "aa", "/dev/x", ~std::uint64_t(4)},
        {~std::uint64_t(7), -5, -6, "handle"}};
    const auto read = Bookmark::fromData(one.data());
    ASSERT_TRUE(read);
    EXPECT_EQ(read->path + read->pathInFileSystem, u"/a/b/b"_s);
    EXPECT_EQ(read->fileSystem, one.fileSystem);
    const auto& [inode, creationTime, handleType, handle] = read->folder;
    EXPECT_TRUE(inode == one.folder.inode && creationTime == -5 && handleType == -6);
    EXPECT_EQ(handle, "handle");
    for (qsizetype length = 0; length < one.data().size(); ++length)
        EXPECT_FALSE(Bookmark::fromData(one.data().left(length))) << length;
    EXPECT_FALSE(Bookmark::fromData(one.data() + QByteArray(1 << 20, ' '))) << "too large";

    const auto isSame = [&](const FolderMark& mark) {
        Bookmark other = one;
        other.folder = mark;
        return one.isSameFolder(other, true);
    };
    EXPECT_TRUE(isSame(one.folder) && isSame({one.folder.inode, 0, 9, {}}));
    EXPECT_FALSE(isSame({1, -5, -6, "handle"}) || isSame({inode, 1, -6, "handle"}));
    EXPECT_FALSE(isSame({inode, -5, 1, "handle"}) || isSame({inode, -5, -6, "other"}));
    one.fileSystem = {"vfat", "", "/dev/x", 0};
    EXPECT_TRUE(isSame({1, 1, 1, {}})) << "numbers mean nothing";
    EXPECT_FALSE(one.isSameFolder(one, false));
    Bookmark elsewhere = one;
    elsewhere.fileSystem.source = "/dev/y";
    EXPECT_FALSE(one.isSameFolder(elsewhere, true));
    one.fileSystem.type = "overlay";
    EXPECT_TRUE(isSame({1, 1, 1, {}})) << "at the same path";
    one.fileSystem = {"nfs", "", "host:/x", 0};
    EXPECT_TRUE(isSame({one.folder.inode, -5, 1, "other"})) << "servers make new handles";
}

TEST_F(BookmarkTest, absentVolumeOrUnreadableParentIsNoMissingFolder) {
    Bookmark bookmark = bookmarkOf(make(u"p/A"));
    const uid_t user = ::geteuid();
    ::chmod(QFile::encodeName(path(u".")), 0755);
    ::chmod(QFile::encodeName(path(u"p")), 0);
    ASSERT_EQ(::seteuid(user == 0 ? 65534 : user), 0); // the superuser reads everything
    EXPECT_EQ(resolve(bookmark), Answer(Outcome::NoAnswer, {}));
    ASSERT_EQ(::seteuid(user), 0);
    ::chmod(QFile::encodeName(path(u"p")), 0755);
    bookmark.fileSystem = {"ext4", QByteArray(32, '0'), "/dev/stick", 42};
    EXPECT_EQ(resolve(bookmark), Answer(Outcome::VolumeAbsent, {}));
}

TEST_F(BookmarkTest, aServerBelowTheDesktopsMountPointIsAVolumeOfItsOwn) {
    const VolumeSources sources{.mountInfo = path(u"table")};
    for (const auto& [type, share] :
         {std::pair("fuse.gvfsd-fuse", "smb-share:server=nas,share=a"),
          {"fuse.kio-fuse", "smb/nas"}}) {
        write(u"table", "30 1 0:40 / " + path(u"run").toUtf8() + " rw - " + type + " daemon rw\n");
        const QString server = u"run/"_s + QLatin1StringView(share);
        const QString folder = make(server + u"/photos"_s);
        auto bookmark = Bookmark::bookmarkOfFolder(folder, Volumes(sources));
        ASSERT_TRUE(bookmark);
        EXPECT_EQ(bookmark->fileSystem.source, share);
        bookmark->fileSystem.source = "daemon"; // as it was kept once
        bookmark = Bookmark::fromData(bookmark->data());
        const BookmarkResolver resolver(sources);
        EXPECT_EQ(resolver.resolve(*bookmark, {}).path, folder);
        move(server, u"away");
        EXPECT_EQ(resolver.resolve(*bookmark, {}).outcome, Outcome::VolumeAbsent);
        make(server);
        EXPECT_EQ(resolver.resolve(*bookmark, {}).outcome, Outcome::NotFound);
        QDir(path(u"away")).removeRecursively();
    }
}

TEST_F(BookmarkTest, volumeMountedElsewhereBringsTheFolderBack) {
    const auto first = QFile::encodeName(make(u"first")),
               second = QFile::encodeName(make(u"second"));
    if (::mount("none", first, "tmpfs", 0, nullptr) != 0) GTEST_SKIP() << "not allowed to mount";
    const Bookmark bookmark = bookmarkOf(make(u"first/photos/A"));
    ::mount(first, second, nullptr, MS_BIND, nullptr);
    ::umount(first);
    EXPECT_EQ(resolve(bookmark), found(u"second/photos/A"));
    ::umount(second);
    EXPECT_EQ(resolve(bookmark), Answer(Outcome::VolumeAbsent, {}));
}

} // namespace
