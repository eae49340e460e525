#include "core/FileTypes.h"

#include "platform/TypeIdentifiers.h"
#include "support/Support.h"

TEST(FileTypesTest, rawFilesAreToldByTheirExtensionInAnyCase) {
    for (const char16_t* path : {u"/a/b.NEF", u"x.DnG", u"/a/b.c/x.3fr", u"/x.sraw/"})
        EXPECT_TRUE(PBUtilities::isRawFile(path)) << QString::fromUtf16(path).toStdString();
    for (const char16_t* path :
         {u"/a/b.heic", u"/a/nef", u"/a.nef/b", u"/a/.nef", u"", u"nef.", u"/"})
        EXPECT_FALSE(PBUtilities::isRawFile(path)) << QString::fromUtf16(path).toStdString();
}

TEST(FileTypesTest, everyRawExtensionHasARawTypeOfItsOwn) {
    const QStringList extensions =
        u"cr2 erf fff dcr kdc mos mfw mef raw nef orf pef arw sr2 srf sti 3fr rwl crw "
        "sraw mrw nrw rw2 c3f dng"_s.split(u' ');
    QStringList types;
    for (const QString& extension : extensions) {
        SCOPED_TRACE(extension.toStdString());
        const QString type = PBUtilities::extentionToUTI(extension);
        EXPECT_TRUE(PBUtilities::isRawFile(u"x."_s + extension));
        EXPECT_TRUE(PBUtilities::conformsToUTIArray(
            type, {platform::TypeIdentifiers::cameraRawImage.toString()}));
        EXPECT_FALSE(types.contains(type));
        types.append(type);
    }
}

TEST(FileTypesTest, onlyFoldersAreBundles) {
    const QTemporaryDir folder;
    support::writeFile(folder.filePath(u"Mine.photoslibrary/x"_s), "x");
    support::writeFile(folder.filePath(u"Holiday/file.APP"_s), "x");
    EXPECT_TRUE(PBUtilities::isPackageFile(folder.filePath(u"Mine.photoslibrary"_s)));
    EXPECT_FALSE(PBUtilities::isPackageFile(folder.filePath(u"Holiday"_s)));
    EXPECT_FALSE(PBUtilities::isPackageFile(folder.filePath(u"Holiday/file.APP"_s)));
}
