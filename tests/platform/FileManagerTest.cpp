#include "platform/FileManager.h"

#include "support/Support.h"

#include <QDateTime>

#include <fcntl.h>
#include <sys/stat.h>

namespace FileManager = platform::FileManager;

TEST(FileManagerTest, enumerationSkipsHiddenAndUndecodableEntriesAndMarksPackages) {
    const QTemporaryDir folder;
    for (const char* name : {"a.jpg", ".hidden", "sub/below.jpg", "Trip.photoslibrary/x", "b\nc"})
        support::writeFile(folder.filePath(QString::fromUtf8(name)), "x");
    QFile::link(folder.filePath(u"sub"_s), folder.filePath(u"link"_s));
    QFile::link(u"nowhere"_s, folder.filePath(u"dangling"_s));
    const QByteArray undecodable = QFile::encodeName(folder.path()) + "/\xff.jpg";
    ::close(::open(undecodable.constData(), O_CREAT | O_WRONLY | O_CLOEXEC, 0600));

    std::map<QString, std::pair<bool, bool>> found;
    EXPECT_FALSE(FileManager::enumerate(folder.path(), [&](const platform::DirectoryEntry& entry) {
        found[entry.name] = {entry.isDirectory, entry.isPackage};
        return true;
    }));
    const std::map<QString, std::pair<bool, bool>> expected{
        {u"a.jpg"_s, {false, false}},
        {u"sub"_s, {true, false}},
        {u"link"_s, {true, false}},
        {u"dangling"_s, {false, false}},
        {u"Trip.photoslibrary"_s, {true, true}},
        {u"b\nc"_s, {false, false}}};
    EXPECT_EQ(found, expected);

    int visits = 0;
    EXPECT_FALSE(FileManager::enumerate(folder.path(), [&](const auto&) { return ++visits < 2; }));
    EXPECT_EQ(visits, 2);
    EXPECT_EQ(
        FileManager::enumerate(folder.filePath(u"no"_s), [](const auto&) { return true; }),
        std::errc::no_such_file_or_directory);
}

TEST(FileManagerTest, resourceValuesKeepNanosecondsAndFollowLinks) {
    const QTemporaryDir folder;
    const QString file = folder.filePath(u"a"_s);
    const QString link = folder.filePath(u"b"_s);
    support::writeFile(file, "12345");
    QFile::link(file, link);
    const timespec times[2] = {{1'700'000'000, 0}, {1'600'000'000, 123'456'789}};
    ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(file).constData(), times, 0), 0);
    const auto values = FileManager::resourceValues(link);
    ASSERT_TRUE(values);
    EXPECT_EQ(values->fileSize, 5);
    EXPECT_TRUE(values->isRegularFile);
    EXPECT_EQ(values->modificationDate, 1'600'000'000 + 123'456'789 * 1e-9);
    EXPECT_GT(values->creationDate, 1'600'000'001.0);
    EXPECT_FALSE(FileManager::resourceValues(folder.filePath(u"none"_s)));
}
