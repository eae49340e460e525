#include "platform/program/RuntimeFolder.h"

#include "support/Support.h"

#include <sys/stat.h>
#include <unistd.h>

using namespace platform;

TEST(RuntimeFolderTest, AFolderThatOthersMayHaveTouchedIsNotTaken) {
    const QTemporaryDir temporary;
    const QByteArray parent = QFile::encodeName(temporary.path());
    const QByteArray first = parent + "/runtime-" + QByteArray::number(::geteuid());
    const auto expect = [&](const char* suffix, const char* why) {
        EXPECT_EQ(RuntimeFolder::ownFolderIn(parent), first + suffix) << why;
        struct stat status {};
        EXPECT_EQ(::lstat(first + suffix, &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U) << why;
    };
    const mode_t usual = ::umask(0);
    expect("", "made");
    ::chmod(first, 0755);
    expect("", "ours, though others could look into it");
    ::chmod(first, 0770);
    expect("-2", "others could write");
    expect("-2", "the same each time");
    ::rmdir(first + "-2");
    const QTemporaryDir elsewhere;
    ASSERT_EQ(::symlink(QFile::encodeName(elsewhere.path()), first + "-2"), 0);
    support::writeFile(QFile::decodeName(first + "-3"), "x");
    expect("-4", "a link and a file");
    if (::chown(first + "-4", 65534, 65534) == 0) expect("-5", "a stranger's");
    ::umask(usual);
    EXPECT_EQ(RuntimeFolder::ownFolderIn(parent + "/none"), QByteArray());
}

TEST(RuntimeFolderTest, TheSessionsFolderIsTakenIfItIsTheUsersOwn) {
    const QTemporaryDir temporary;
    const QByteArray given = QFile::encodeName(temporary.path());
    const QByteArray before = qgetenv("XDG_RUNTIME_DIR");
    qputenv("XDG_RUNTIME_DIR", given);
    EXPECT_EQ(RuntimeFolder::path(), given);
    ::chmod(given, 0777);
    EXPECT_NE(RuntimeFolder::path(), given);
    before.isNull() ? qunsetenv("XDG_RUNTIME_DIR") : qputenv("XDG_RUNTIME_DIR", before);
}
