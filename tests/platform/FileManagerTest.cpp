#include "platform/FileManager.h"

#include "support/Support.h"

#include <QDateTime>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>

namespace FileManager = platform::FileManager;

namespace {

TEST(FileManagerTest, enumerationSkipsHiddenAndUndecodableEntriesAndMarksPackages) {
    const QTemporaryDir folder;
    for (const char* name : {"a.jpg", ".hidden", "sub/below.jpg", "Trip.photoslibrary/x", "b\nc"}) {
        support::writeFile(folder.filePath(QString::fromUtf8(name)), "x");
    }
    QFile::link(folder.filePath(QStringLiteral("sub")), folder.filePath(QStringLiteral("link")));
    QFile::link(QStringLiteral("nowhere"), folder.filePath(QStringLiteral("dangling")));
    const QByteArray undecodable = QFile::encodeName(folder.path()) + "/\xff.jpg";
    ::close(::open(undecodable.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));

    std::map<QString, std::pair<bool, bool>> found;
    EXPECT_FALSE(FileManager::enumerate(folder.path(), [&](const platform::DirectoryEntry& entry) {
        found[entry.name] = {entry.isDirectory, entry.isPackage};
        return true;
    }));
    const std::map<QString, std::pair<bool, bool>> expected{
        {QStringLiteral("a.jpg"), {false, false}},
        {QStringLiteral("sub"), {true, false}},
        {QStringLiteral("link"), {true, false}},
        {QStringLiteral("dangling"), {false, false}},
        {QStringLiteral("Trip.photoslibrary"), {true, true}},
        {QStringLiteral("b\nc"), {false, false}}};
    EXPECT_EQ(found, expected);

    int visits = 0;
    EXPECT_FALSE(FileManager::enumerate(folder.path(), [&](const auto&) { return ++visits < 2; }));
    EXPECT_EQ(visits, 2);
    EXPECT_EQ(
        FileManager::enumerate(
            folder.filePath(QStringLiteral("no")), [](const auto&) { return true; }),
        std::errc::no_such_file_or_directory);
}

TEST(FileManagerTest, resourceValuesKeepNanosecondsAndFollowLinks) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(QStringLiteral("a"));
    const QString link = folder.filePath(QStringLiteral("b"));
    support::writeFile(file, "12345");
    QFile::link(file, link);
    const timespec times[2] = {{1'700'000'000, 0}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, 0), 0);
    const auto values = FileManager::resourceValues(link);
    ASSERT_TRUE(values);
    EXPECT_EQ(values->fileSize, 5);
    EXPECT_TRUE(values->isRegularFile);
    EXPECT_EQ(values->modificationDate, 1'600'000'000 + 123'456'789 * 1e-9);
    EXPECT_EQ(FileManager::resourceValues(file)->modificationDate, values->modificationDate);
    EXPECT_GT(values->creationDate, 1'600'000'001.0);
    EXPECT_TRUE(FileManager::resourceValues(folder.path())->isDirectory);
    EXPECT_FALSE(FileManager::resourceValues(folder.filePath(QStringLiteral("none"))));
}

} // namespace
