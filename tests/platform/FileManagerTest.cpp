#include "platform/files/FileManager.h"

#include "platform/files/FileSystem.h"
#include "support/FolderTest.h"

#include <csignal>
#include <thread>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace platform::FileManager;
using FileManagerTest = support::FolderTest;

/// What is found, scans and the source tree tell.
TEST_F(FileManagerTest, enumerationEndsWhenItIsToldToAndSaysWhyThereIsNone) {
    write(u"a");
    write(u"b");
    int visits = 0;
    const auto visit = [&](const auto&) { return ++visits < 1; };
    EXPECT_FALSE(enumerate(temporary.path(), visit));
    EXPECT_EQ(enumerate(path(u"no"_s), visit), std::errc::no_such_file_or_directory);
    EXPECT_EQ(visits, 1);
}

TEST_F(FileManagerTest, resourceValuesKeepNanosecondsAndFollowLinks) {
    const QString file = path(u"a"_s);
    const QString link = path(u"b"_s);
    support::writeFile(file, "12345");
    QFile::link(file, link);
    const timespec times[2] = {{1'700'000'000, 0}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, 0), 0);
    const auto values = resourceValues(link);
    ASSERT_TRUE(values && values->isRegularFile && !values->isDirectory);
    EXPECT_EQ(values->fileSize, 5);
    EXPECT_EQ(values->modificationDate, 1'600'000'000 + 123'456'789 * 1e-9);
    EXPECT_GT(values->creationDate, 1'600'000'001.0);
    EXPECT_FALSE(resourceValues(path(u"none"_s)));
    EXPECT_TRUE(isReadable(file) && !isReadable(path(u"none"_s)));
}

/// As a file server does for whoever writes there (fcntl(2), F_SETLEASE).
TEST_F(FileManagerTest, aFileThatSomebodyHasALeaseOfIsAskedForAndWaitedFor) {
    write(u"lent");
    const QByteArray lent = QFile::encodeName(path(u"lent"_s));
    const int lease = ::open(lent.constData(), O_RDONLY | O_CLOEXEC);
    ::fcntl(lease, F_SETSIG, SIGURG); // for whoever is asked: one that is ignored
    if (::fcntl(lease, F_SETLEASE, F_WRLCK) != 0) GTEST_SKIP() << "there are no leases here";
    std::jthread owner([&] {
        while (::fcntl(lease, F_GETLEASE) == F_WRLCK)
            std::this_thread::yield();
        ::fcntl(lease, F_SETLEASE, F_UNLCK);
    });
    int file = -1;
    platform::FileSystem::Entry entry;
    EXPECT_EQ(platform::DiskFileSystem().openSource(lent, file, entry), std::error_code());
    EXPECT_EQ(entry.kind, platform::FileSystem::Kind::File);
    owner.join();
    ::close(file);
    ::close(lease);
}

TEST_F(FileManagerTest, whatCannotBeLookedAtIsNotTakenForGone) {
    using platform::Presence;
    for (const int error : {EACCES, EIO, ENOTCONN, ESTALE, ETIMEDOUT, EMFILE, ENFILE, ENOMEM})
        EXPECT_EQ(platform::presenceAfter(error), Presence::Unknown) << error;
    write(u"closed/a");
    ASSERT_TRUE(QFile::link(u"loop"_s, path(u"loop"_s)));
    ::chmod(QFile::encodeName(temporary.path()), 0755);
    ::chmod(QFile::encodeName(path(u"closed"_s)), 0);
    const uid_t user = ::geteuid();
    ASSERT_EQ(::seteuid(user == 0 ? 65534 : user), 0); // the superuser sees everything
    const std::pair<QString, Presence> cases[] = {
        {u"closed"_s, Presence::There},        {u"closed/a"_s, Presence::Unknown},
        {u"closed/none"_s, Presence::Unknown}, {u"loop"_s, Presence::Unknown},
        {u"none"_s, Presence::Gone},           {u"none/a"_s, Presence::Gone}};
    for (const auto& [name, presence] : cases) {
        EXPECT_EQ(look(path(name)).presence, presence) << name.toStdString();
        EXPECT_EQ(OpenFolder(temporary.path()).look(name).presence, presence);
        const Presence below = presence == Presence::There ? Presence::Unknown : presence;
        EXPECT_EQ(OpenFolder(path(name)).look(u"x"_s).presence, below);
    }
    ASSERT_EQ(::seteuid(user), 0);
    EXPECT_EQ(look(path(u"closed/a"_s)).presence, user == 0 ? Presence::There : Presence::Unknown);
    ::chmod(QFile::encodeName(path(u"closed"_s)), 0755);
    EXPECT_EQ(look(path(u"closed/a/b"_s)).presence, Presence::Gone);
}

TEST_F(FileManagerTest, aNameThatIsTakenStaysAlsoByTheSameFileInOtherCase) {
    write(u"a.jpg");
    ASSERT_EQ(::link(path(u"a.jpg").toUtf8(), path(u"A.jpg").toUtf8()), 0);
    for (const QStringView name : {u"a.jpg", u"A.jpg"})
        EXPECT_EQ(moveItem(path(u"a.jpg"), path(name)), std::errc::file_exists);
    EXPECT_FALSE(moveItem(path(u"a.jpg"), path(u"A.JPG")));
    EXPECT_EQ(
        QDir(temporary.path()).entryList(QDir::Files, QDir::Name), support::words("A.JPG A.jpg"));
}

TEST_F(FileManagerTest, packagesAreToldByTheEndingOfTheirName) {
    for (const char16_t* name : {u"/x/Mine.APP/", u"a.rtfd", u"/x.y/z.kext"})
        EXPECT_TRUE(isPackageName(name));
    for (const char16_t* name : {u".app", u"/x/.app", u"app", u"/a.app/b", u"a.appx", u"", u"/"})
        EXPECT_FALSE(isPackageName(name));
}
