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

int kindOf(PBOpenFiles& files, qint64 id, const char* path) {
    return files.matchFolder(id, QString::fromLatin1(path)).kind;
}

} // namespace

TEST(PBOpenFilesTest, FoldersMatchByPathOnceAndThenByTheirIds) {
    const auto focused = folderOf("/a", {});
    focused->focusOpenFileObj = std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, u"f"_s});
    PBOpenFiles files({focused, folderOf("/b/c", {u"x.jpg"_s})});
    using Case = std::tuple<qint64, const char*, int>;
    // The second round answers by id: the paths no longer say anything.
    for (const bool byId : {false, true})
        for (const auto& [id, path, kind] :
             {Case{30, "/a", 0}, Case{7, "/a/deep/er", 1}, Case{9, "/b/c", 0}, Case{31, "/A", -1},
              Case{3, "/b/c/d", -1}, Case{5, "/b", -1}, Case{1, "/ab", -1}})
            EXPECT_EQ(kindOf(files, id, byId ? "/nowhere" : path), kind) << path << byId;
    EXPECT_EQ(kindOf(files, 0, "/a"), 0);
    EXPECT_EQ(kindOf(files, 0, "/nowhere"), -1);
    const auto match = files.matchFolder(9, {});
    ASSERT_EQ(match.fileArray.size(), 1U);
    EXPECT_EQ(match.fileArray[0].fileName, u"x.jpg");
    EXPECT_EQ(match.focusOpenFileObj, nullptr);
    EXPECT_EQ(files.matchFolder(30, {}).focusOpenFileObj->fileName, u"f");
    EXPECT_EQ(files.openFileArray().size(), 2U);
}

TEST(PBOpenFilesTest, AFileBelongsByItsNameUntilItsIdIsKnown) {
    PBOpenFiles files({folderOf("/a", {u"x.jpg"_s, u"y.jpg"_s}), folderOf("/w", {})});
    // Later by id: renamed since. A second file of the same name is another one.
    using Case = std::tuple<qint64, QString, qint64, QString, bool>;
    for (const auto& [folder, path, id, name, matches] :
         {Case{4, u"/a"_s, 10, u"X.JPG"_s, false}, Case{4, u"/a"_s, 12, u"x.jpg"_s, true},
          Case{4, u"/a"_s, 13, u"z.jpg"_s, false}, Case{4, u"/a"_s, 11, u"y.jpg"_s, true},
          Case{4, u"/a"_s, 12, u"renamed.jpg"_s, true},
          Case{4, u"/a"_s, 11, u"renamed.jpg"_s, true}, Case{4, u"/a"_s, 13, u"x.jpg"_s, false},
          Case{4, u"/a"_s, 14, u"x.jpg"_s, false}, Case{5, u"/w"_s, 20, u"any.jpg"_s, true},
          Case{6, u"/w/below"_s, 21, u"any.jpg"_s, true}, Case{6, u"/no"_s, 22, u"any.jpg"_s, true},
          Case{7, u"/a/below"_s, 23, u"x.jpg"_s, false}})
        EXPECT_EQ(files.matchFileInFolder(folder, path, id, name), matches) << id;
}
