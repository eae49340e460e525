#include "core/FileTypes.h"

#include "platform/files/TypeIdentifiers.h"
#include "support/Support.h"

TEST(FileTypesTest, rawFilesAreToldByTheirExtensionInAnyCase) {
    for (const char16_t* path : {u"/a/b.NEF", u"x.DnG", u"/a/b.c/x.3fr", u"/x.sraw/"})
        EXPECT_TRUE(PBUtilities::isRawFile(path)) << QString::fromUtf16(path).toStdString();
    for (const char16_t* path :
         {u"/a/b.heic", u"/a/nef", u"/a.nef/b", u"/a/.nef", u"", u"nef.", u"/"})
        EXPECT_FALSE(PBUtilities::isRawFile(path)) << QString::fromUtf16(path).toStdString();
}

TEST(FileTypesTest, metadataAreWrittenToFourFormats) {
    for (const char16_t* type :
         {u"public.jpeg", u"public.TIFF", u"public.png", u"com.adobe.photoshop-image"})
        EXPECT_TRUE(PBUtilities::isUTISupportMetadata(type));
    for (const char16_t* type : {u"", u"public.image", u"public.heic", u"com.compuserve.gif"})
        EXPECT_FALSE(PBUtilities::isUTISupportMetadata(type));
    EXPECT_FALSE(PBUtilities::conformsToUTIArray(u"public.jpeg", {}));
}

TEST(FileTypesTest, onlyFoldersAreBundles) {
    const QTemporaryDir folder;
    support::writeFile(folder.filePath(u"Mine.photoslibrary/x"_s), "x");
    support::writeFile(folder.filePath(u"Holiday/file.APP"_s), "x");
    EXPECT_TRUE(PBUtilities::isPackageFile(folder.filePath(u"Mine.photoslibrary"_s)));
    EXPECT_FALSE(PBUtilities::isPackageFile(folder.filePath(u"Holiday"_s)));
    EXPECT_FALSE(PBUtilities::isPackageFile(folder.filePath(u"Holiday/file.APP"_s)));
}
