#include "core/PBOpenFiles.h"
#include "support/Support.h"

namespace {

std::shared_ptr<PBOpenFolderObject> folderOf(const char* path, const QStringList& files) {
    auto folder = std::make_shared<PBOpenFolderObject>();
    folder->folderPath = QString::fromLatin1(path);
    for (const QString& name : files)
        folder->fileArray.push_back(std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, name}));
    return folder;
}

int kindOf(PBOpenFiles& files, std::int64_t id, const char* path) {
    return files.matchFolder(id, QString::fromLatin1(path)).kind;
}

bool fileMatches(
    PBOpenFiles& files, std::int64_t folder, const char* path, std::int64_t id, const char* name) {
    return files.matchFileInFolder(
        folder, QString::fromLatin1(path), id, QString::fromLatin1(name));
}

} // namespace

TEST(PBOpenFilesTest, FoldersMatchByPathOnceAndThenByTheirIds) {
    PBOpenFiles files({folderOf("/a", {}), folderOf("/b/c", {u"x.jpg"_s})});
    struct Case {
        std::int64_t id;
        const char* path;
        int kind;
    };
    // The second round answers by id: the paths no longer say anything.
    for (const bool byId : {false, true})
        for (const auto& [id, path, kind] :
             {Case{30, "/A", 0}, Case{7, "/a/deep/er", 1}, Case{9, "/b/C", 0},
              Case{3, "/b/c/d", -1}, Case{5, "/b", -1}, Case{1, "/ab", -1}})
            EXPECT_EQ(kindOf(files, id, byId ? "/nowhere" : path), kind) << path << byId;
    EXPECT_EQ(kindOf(files, 0, "/a"), 0);
    EXPECT_EQ(kindOf(files, 0, "/nowhere"), -1);
    const auto match = files.matchFolder(9, {});
    ASSERT_EQ(match.fileArray.size(), 1U);
    EXPECT_EQ(match.fileArray[0].fileName, u"x.jpg");

    files.setOpenFileArray({folderOf("/nowhere", {})});
    EXPECT_EQ(kindOf(files, 30, "/a"), -1);
    EXPECT_EQ(kindOf(files, 5, "/nowhere"), 0);
}

TEST(PBOpenFilesTest, AFileBelongsByItsNameUntilItsIdIsKnown) {
    PBOpenFiles files({folderOf("/a", {u"x.jpg"_s, u"y.jpg"_s}), folderOf("/w", {})});
    EXPECT_TRUE(fileMatches(files, 4, "/a", 12, "X.JPG"));
    EXPECT_FALSE(fileMatches(files, 4, "/a", 13, "z.jpg"));
    EXPECT_TRUE(fileMatches(files, 4, "/a", 11, "y.jpg"));
    // By id: renamed since. A second file of the same name is another one.
    EXPECT_TRUE(fileMatches(files, 4, "/a", 12, "renamed.jpg"));
    EXPECT_TRUE(fileMatches(files, 4, "/a", 11, "renamed.jpg"));
    EXPECT_FALSE(fileMatches(files, 4, "/a", 13, "x.jpg"));
    EXPECT_FALSE(fileMatches(files, 4, "/a", 14, "x.jpg"));
    EXPECT_TRUE(fileMatches(files, 5, "/w", 20, "any.jpg"));
    EXPECT_TRUE(fileMatches(files, 6, "/w/below", 21, "any.jpg"));
    EXPECT_TRUE(fileMatches(files, 6, "/elsewhere", 22, "any.jpg"));
    EXPECT_FALSE(fileMatches(files, 7, "/a/below", 23, "x.jpg"));
}
