#include "platform/files/Spelling.h"
#include "platform/files/FileManager.h"

#include "support/FolderTest.h"

#include <unistd.h>

using namespace platform;

namespace {

using SpellingTest = support::FolderTest;

/// A disk at "/m" that takes no note of case, in a world that does. The same letters are the same
/// file.
struct DiskWithoutCase {
    explicit DiskWithoutCase(const char* names) : paths(support::words(names)) {}

    NamesOnDisk disk() {
        return {
            [this](const QString& path) -> std::optional<NamesOnDisk::Identity> {
                elsewhere += path == u"/M";
                if (!path.startsWith(u"/m/") && path != u"/m")
                    return path == u"/" ? std::optional(NamesOnDisk::Identity(1, 1)) : std::nullopt;
                if (!paths.contains(path, Qt::CaseInsensitive)) return std::nullopt;
                return NamesOnDisk::Identity(2, qHash(path.toLower()));
            },
            [this](const QString& folder) -> std::optional<QSet<QString>> {
                ++listings;
                if (isUnreadable) return std::nullopt;
                QSet<QString> names;
                for (const QString& path : paths) {
                    const qsizetype end = path.lastIndexOf(u'/');
                    if (path.left(end).compare(folder, Qt::CaseInsensitive) == 0)
                        names.insert(path.mid(end + 1));
                }
                return names;
            }};
    }

    QStringList paths;
    bool isUnreadable = false;
    int elsewhere = 0; ///< questions that might mount another disk
    int listings = 0;
};

TEST_F(SpellingTest, pathsAreSpelledAsTheirDiskListsThem) {
    DiskWithoutCase world("/m /m/Trip /m/Trip/Day\u00a01 /m/Trip/IMG_1.JPG /m/Trip/2024");
    const NamesOnDisk disk = world.disk();
    const std::pair<const char16_t*, const char16_t*> rows[] = {
        {u"/m/trip/img_1.jpg", u"/m/Trip/IMG_1.JPG"},
        {u"/m/Trip/IMG_1.JPG", u"/m/Trip/IMG_1.JPG"},
        {u"/m/TRIP/2024", u"/m/Trip/2024"},
        {u"/m/trip/none", u"/m/Trip/none"},
        {u"/m", u"/m"},
        {u"/", u"/"},
        {u"", u""},
        {u"/nowhere/trip", u"/nowhere/trip"}};
    for (const auto& [path, spelled] : rows)
        EXPECT_EQ(spelledAsOnDisk(QString::fromUtf16(path), disk), QString::fromUtf16(spelled));
    EXPECT_EQ(world.elsewhere, 0);
    world.isUnreadable = true;
    EXPECT_EQ(spelledAsOnDisk(u"/m/trip"_s, disk), u"/m/trip"_s) << "unknown is as it was";
}

TEST_F(SpellingTest, aNameThatTheDiskHasUnderAnotherSpellingIsNotThere) {
    DiskWithoutCase world("/m /m/Trip /m/Trip/a.jpg /m/Trip/B.jpg /m/Trip/1 /m/Trip/sub");
    const NamesOnDisk disk = world.disk();
    SpellingCheck check(disk);
    EXPECT_TRUE(check.isSpelledSo(u"/m/Trip"_s, u"1"_s)) << "says nothing of the others";
    EXPECT_TRUE(check.isSpelledSo(u"/m/Trip"_s, u"a.jpg"_s));
    EXPECT_FALSE(check.isSpelledSo(u"/m/Trip"_s, u"b.jpg"_s));
    EXPECT_TRUE(
        check.isPathSpelledSo(u"/m"_s, u"Trip/sub"_s) && check.isPathSpelledSo(u"/m"_s, {}));
    EXPECT_FALSE(check.isPathSpelledSo(u"/m"_s, u"trip/sub"_s));
    EXPECT_FALSE(check.isPathSpelledSo(u"/m"_s, u"Trip/Sub"_s));
    EXPECT_EQ(world.listings, 2) << "once for each folder";
    world.isUnreadable = true;
    EXPECT_TRUE(SpellingCheck(disk).isSpelledSo(u"/m/Trip"_s, u"b.jpg"_s)) << "unknown is there";
}

TEST_F(SpellingTest, aDiskThatTakesNoteOfCaseIsAskedOnceForEachFolderAndKeepsHardLinksApart) {
    write(u"Trip/a.jpg");
    write(u"trip/b.jpg");
    ASSERT_EQ(::link(path(u"trip/b.jpg").toUtf8(), path(u"trip/B.jpg").toUtf8()), 0);
    int questions = 0;
    const NamesOnDisk disk{
        [&](const QString& file) { return ++questions, NamesOnDisk::real().identity(file); },
        NamesOnDisk::real().names};
    SpellingCheck check(disk);
    for (int times = 0; times < 3; ++times)
        EXPECT_TRUE(check.isPathSpelledSo(temporary.path(), u"Trip/a.jpg"_s));
    EXPECT_EQ(questions, 3) << "two spellings that are two folders, one that is nothing";
    for (const QString& name : {u"Trip"_s, u"trip/b.jpg"_s, u"trip/B.jpg"_s, u"TRIP"_s}) {
        EXPECT_EQ(spelledAsOnDisk(path(name)), path(name));
        EXPECT_TRUE(check.isPathSpelledSo(temporary.path(), name));
    }
}

} // namespace
