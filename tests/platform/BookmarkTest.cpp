#include "platform/BookmarkResolver.h"

#include "support/Support.h"

#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform;
using Outcome = Resolution::Outcome;

namespace {

struct BookmarkTest : testing::Test {
    QString path(QStringView below) const { return _folder.path() + u'/' + below.toString(); }
    QString make(QStringView below) const {
        QDir().mkpath(path(below));
        return path(below);
    }
    Bookmark bookmarkOf(const QString& folder) const {
        auto bookmark = Bookmark::bookmarkOfFolder(folder, Volumes());
        if (!bookmark) {
            ADD_FAILURE() << "no bookmark";
            return {};
        }
        // Through the byte form, as roots are kept.
        return Bookmark::fromData(bookmark->data()).value_or(Bookmark());
    }
    static void move(const QString& from, const QString& to) {
        ASSERT_EQ(::rename(QFile::encodeName(from), QFile::encodeName(to)), 0);
    }
    /// Without the user's own folders, which would let a test depend on them.
    Resolution resolve(const Bookmark& bookmark, const SearchPlaces& places = {}) const {
        return BookmarkResolver().resolve(bookmark, places);
    }
    void expectFound(const Bookmark& bookmark, const QString& at, const SearchPlaces& places = {}) {
        const Resolution resolution = resolve(bookmark, places);
        EXPECT_EQ(resolution.outcome, Outcome::Found);
        EXPECT_EQ(resolution.path, at);
    }

private:
    QTemporaryDir _folder;
};

TEST_F(BookmarkTest, folderIsFoundAtItsPathAndAfterRenamesAndMoves) {
    const QString original = make(u"home/Photos/A");
    const Bookmark bookmark = bookmarkOf(original);
    make(u"home/Photos/Archive/2024");
    make(u"home/Other/Deep");
    expectFound(bookmark, original);

    QString now = original;
    const char16_t* const places[] = {
        u"home/Photos/A2",              // renamed
        u"home/Photos/Archive/A",       // into a neighbour
        u"home/A",                      // one level up
        u"home/Other/A",                // into the parent's neighbour
        u"home/Photos/A",               // and back
        u"home/Photos/\U0001F33B\n x"}; // names are bytes
    for (const char16_t* place : places) {
        move(now, path(place));
        now = path(place);
        expectFound(bookmark, now);
    }
}

TEST_F(BookmarkTest, otherRootsAndTheLastSeenPathAreSearchedToo) {
    const QString original = make(u"one/two/three/A");
    make(u"one/two/three/.Trash");
    QFile::link(path(u"one"), path(u"one/two/loop"));
    const QString root = make(u"far/away/Root");
    const QString seen = make(u"x/y/z/hidden") + u"/A"_s;
    const Bookmark bookmark = bookmarkOf(original);
    move(original, path(u"one/two/three/.Trash/A"));
    EXPECT_EQ(resolve(bookmark).outcome, Outcome::Missing)
        << "the trash is not searched, nor links";
    move(path(u"one/two/three/.Trash/A"), path(u"far/away/Root/A"));
    EXPECT_EQ(resolve(bookmark).outcome, Outcome::Missing);
    SearchPlaces places;
    places.otherRoots = {root};
    expectFound(bookmark, path(u"far/away/Root/A"), places);
    move(path(u"far/away/Root/A"), seen);
    EXPECT_EQ(resolve(bookmark, places).outcome, Outcome::Missing);
    places.lastSeenPath = seen;
    expectFound(bookmark, seen, places);
}

TEST_F(BookmarkTest, anotherFolderAtTheOldPathIsNotTheOldRoot) {
    const QString original = make(u"p/A");
    const Bookmark bookmark = bookmarkOf(original);
    // The inode number is given out again at once on some file systems.
    QDir().rmdir(original);
    make(u"p/A");
    EXPECT_EQ(resolve(bookmark).outcome, Outcome::Missing);

    const QString second = make(u"p/B");
    const Bookmark moved = bookmarkOf(second);
    move(second, path(u"p/C"));
    make(u"p/B");
    expectFound(moved, path(u"p/C"));

    const QString third = make(u"p/D");
    const Bookmark gone = bookmarkOf(third);
    QDir().rmdir(third);
    support::writeFile(third, "a file now");
    EXPECT_EQ(resolve(gone).outcome, Outcome::Missing);
}

TEST_F(BookmarkTest, searchEndsWithItsTime) {
    const QString original = make(u"p/q/A");
    const Bookmark bookmark = bookmarkOf(original);
    move(original, path(u"A"));
    for (int i = 0; i < 50; ++i)
        make(u"p/q/n%1"_s.arg(i));
    std::chrono::steady_clock::time_point now;
    int looks = 0;
    const BookmarkResolver impatient({}, [&] {
        ++looks;
        return now += std::chrono::milliseconds(60);
    });
    EXPECT_EQ(impatient.resolve(bookmark, {}).outcome, Outcome::Unfinished)
        << "what was not searched through is not known to be gone";
    EXPECT_LE(looks, 6);
    EXPECT_EQ(impatient.resolve(bookmark, {}, std::chrono::minutes(1)).outcome, Outcome::Missing);
    std::stop_source stop;
    stop.request_stop();
    EXPECT_EQ(
        impatient.resolve(bookmark, {}, std::chrono::minutes(1), stop.get_token()).outcome,
        Outcome::Unfinished);
}

TEST_F(BookmarkTest, whereNumbersMeanNothingPathAndVolumeDecide) {
    const QString original = make(u"p/A");
    Bookmark bookmark = bookmarkOf(original);
    // As an SD card would have it, whose folders get numbers by chance.
    bookmark.fileSystem = {"vfat", "", bookmark.fileSystem.source, 0};
    bookmark.folder = {.inode = 1, .creationTime = 2, .handleType = 0, .handle = {}};
    Bookmark other = bookmark;
    other.folder.inode = 99;
    EXPECT_TRUE(bookmark.isSameFolder(other, true));
    EXPECT_FALSE(bookmark.isSameFolder(bookmark, false));
    other.fileSystem.source = "/dev/other";
    EXPECT_FALSE(bookmark.isSameFolder(other, true));
}

TEST_F(BookmarkTest, absentVolumeIsNotAMissingFolder) {
    Bookmark bookmark = bookmarkOf(make(u"p/A"));
    bookmark.fileSystem = {"ext4", "00000000000000000000000000000000", "/dev/stick", 0};
    bookmark.fileSystem.fsid = 42;
    EXPECT_EQ(resolve(bookmark).outcome, Outcome::VolumeAbsent);
}

TEST_F(BookmarkTest, unreadableParentSaysNothing) {
    if (::geteuid() == 0) GTEST_SKIP() << "root reads everything";
    const QString original = make(u"p/A");
    const Bookmark bookmark = bookmarkOf(original);
    ::chmod(QFile::encodeName(path(u"p")).constData(), 0);
    EXPECT_EQ(resolve(bookmark).outcome, Outcome::NoAnswer);
    ::chmod(QFile::encodeName(path(u"p")).constData(), 0755);
}

TEST_F(BookmarkTest, volumeMountedElsewhereBringsTheFolderBack) {
    const QByteArray store = QFile::encodeName(make(u"store"));
    const QByteArray first = QFile::encodeName(make(u"first"));
    const QByteArray second = QFile::encodeName(make(u"second"));
    if (::mount("none", store.constData(), "tmpfs", 0, nullptr) != 0)
        GTEST_SKIP() << "not allowed to mount";
    ::mount(store.constData(), first.constData(), nullptr, MS_BIND, nullptr);
    const Bookmark bookmark = bookmarkOf(make(u"first/photos/A"));
    ::umount(first.constData());
    ::mount(store.constData(), second.constData(), nullptr, MS_BIND, nullptr);
    ::umount(store.constData());
    const Resolution elsewhere = resolve(bookmark);
    ::umount(second.constData());
    const Resolution unplugged = resolve(bookmark);
    EXPECT_EQ(elsewhere.outcome, Outcome::Found);
    EXPECT_EQ(elsewhere.path, path(u"second/photos/A"));
    EXPECT_EQ(unplugged.outcome, Outcome::VolumeAbsent);
}

TEST_F(BookmarkTest, pathsNoFolderCanHaveGiveNoBookmark) {
    const Volumes volumes;
    QFile::link(path(u"loop2"), path(u"loop1"));
    QFile::link(path(u"loop1"), path(u"loop2"));
    support::writeFile(path(u"file"), "x");
    for (const QString& none :
         {path(u"nothing"), QString(), u'/' + QString(5000, u'x'), path(u"loop1"), path(u"file")})
        EXPECT_FALSE(Bookmark::bookmarkOfFolder(none, volumes)) << qPrintable(none);
    EXPECT_EQ(bookmarkOf(u"/"_s).path, u"/"_s);
}

TEST_F(BookmarkTest, junkBytesAreNoBookmark) {
    EXPECT_FALSE(Bookmark::fromData({}));
    EXPECT_FALSE(Bookmark::fromData(QByteArray(1 << 20, '\xa1')));
    const QByteArray good = bookmarkOf(make(u"p/A")).data();
    for (qsizetype length = 0; length < good.size(); ++length)
        EXPECT_FALSE(Bookmark::fromData(good.left(length))) << length;
    std::mt19937 random(7);
    for (int round = 0; round < 2000; ++round) {
        QByteArray bad = good;
        support::damage(bad, random, 3);
        const auto bookmark = Bookmark::fromData(bad);
        EXPECT_TRUE(!bookmark || bookmark->path.startsWith(u'/'));
    }
}

} // namespace
