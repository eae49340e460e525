#include "core/FileTypes.h"

#include "support/Support.h"

TEST(FileTypesTest, onlyFoldersAreBundles) {
    const QTemporaryDir folder;
    support::writeFile(folder.filePath(u"Mine.photoslibrary/x"_s), "x");
    support::writeFile(folder.filePath(u"Holiday/file.APP"_s), "x");
    EXPECT_TRUE(PBUtilities::isPackageFile(folder.filePath(u"Mine.photoslibrary"_s)));
    EXPECT_FALSE(PBUtilities::isPackageFile(folder.filePath(u"Holiday"_s)));
    EXPECT_FALSE(PBUtilities::isPackageFile(folder.filePath(u"Holiday/file.APP"_s)));
}
