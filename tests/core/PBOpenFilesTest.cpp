#include "core/OpenedFolders.h"

TEST(PBOpenFilesTest, FoldersMatchByPathOnceAndThenByTheirIds) {
    const auto focused = opened(u"/a"_s);
    focused->focusOpenFileObj = openedFile(u"f"_s);
    PBOpenFiles files({focused, opened(u"/b/c"_s, "x.jpg")});
    using Case = std::tuple<qint64, QStringView, int>;
    // The second round answers by id: the paths no longer say anything.
    for (const bool byId : {false, true})
        for (const auto& [id, path, kind] :
             {Case{30, u"/a", 0}, Case{7, u"/a/deep/er", 1}, Case{9, u"/b/c", 0},
              Case{31, u"/A", -1}, Case{3, u"/b/c/d", -1}, Case{5, u"/b", -1}, Case{1, u"/ab", -1}})
            EXPECT_EQ(files.matchFolder(id, byId ? u"/nowhere"_s : path.toString()).kind, kind)
                << id << byId;
    EXPECT_EQ(files.matchFolder(0, u"/a"_s).kind, 0);
    EXPECT_EQ(files.matchFolder(0, u"/nowhere"_s).kind, -1);
    const auto match = files.matchFolder(9, {});
    ASSERT_EQ(match.fileArray.size(), 1U);
    EXPECT_EQ(match.fileArray[0].fileName, u"x.jpg");
    EXPECT_EQ(match.focusOpenFileObj, nullptr);
    EXPECT_EQ(files.matchFolder(30, {}).focusOpenFileObj->fileName, u"f");
    EXPECT_EQ(files.openFileArray().size(), 2U);
}
