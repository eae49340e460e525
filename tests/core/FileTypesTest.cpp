#include "core/FileTypes.h"

#include "platform/TypeIdentifiers.h"
#include "support/Support.h"

#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace {

TEST(FileTypesTest, rawFilesAreToldByTheirExtensionInAnyCase) {
    for (const char16_t* path : {u"/a/b.NEF", u"x.DnG", u"/a/b.c/x.3fr", u"/x.sraw/"})
        EXPECT_TRUE(PBUtilities::isRawFile(path)) << QString::fromUtf16(path).toStdString();
    for (const char16_t* path :
         {u"/a/b.heic", u"/a/nef", u"/a.nef/b", u"/a/.nef", u"", u"nef.", u"/"})
        EXPECT_FALSE(PBUtilities::isRawFile(path)) << QString::fromUtf16(path).toStdString();
}

TEST(FileTypesTest, everyRawExtensionHasARawTypeOfItsOwn) {
    const QStringList extensions =
        QStringLiteral(
            "cr2 erf fff dcr kdc mos mfw mef raw nef orf pef arw sr2 srf sti 3fr rwl crw "
            "sraw mrw nrw rw2 c3f dng")
            .split(u' ');
    QStringList types;
    for (const QString& extension : extensions) {
        SCOPED_TRACE(extension.toStdString());
        const QString type = PBUtilities::extentionToUTI(extension);
        EXPECT_TRUE(PBUtilities::isRawFile(QStringLiteral("x.") + extension));
        EXPECT_TRUE(PBUtilities::conformsToUTIArray(
            type, {platform::TypeIdentifiers::cameraRawImage.toString()}));
        EXPECT_FALSE(types.contains(type));
        types.append(type);
    }
}

TEST(FileTypesTest, metadataIsReadFromTheListAndFromRawFiles) {
    for (const char16_t* path : {u"a.JPG", u"a.tiff", u"a.psd", u"a.gif", u"a.cr2"}) {
        EXPECT_TRUE(PBUtilities::supportIPTC(path));
        EXPECT_TRUE(PBUtilities::supportExif(path));
    }
    EXPECT_FALSE(PBUtilities::supportExif(u"a.webp"));
    EXPECT_TRUE(PBUtilities::isUTISupportMetadata(u"Public.TIFF"));
    EXPECT_FALSE(PBUtilities::isUTISupportMetadata(u"public.heic"));
    EXPECT_FALSE(PBUtilities::conformsToUTIArray(u"public.jpeg", {}));
}

TEST(FileTypesTest, onlyFoldersAreBundles) {
    const QTemporaryDir folder;
    ASSERT_TRUE(folder.isValid());
    const QDir dir(folder.path());
    ASSERT_TRUE(dir.mkdir(QStringLiteral("Mine.photoslibrary")));
    ASSERT_TRUE(dir.mkdir(QStringLiteral("Holiday")));
    support::writeFile(dir.filePath(QStringLiteral("file.APP")), "x");
    EXPECT_TRUE(PBUtilities::isPackageFile(dir.filePath(QStringLiteral("Mine.photoslibrary"))));
    EXPECT_FALSE(PBUtilities::isPackageFile(dir.filePath(QStringLiteral("Holiday"))));
    EXPECT_FALSE(PBUtilities::isPackageFile(dir.filePath(QStringLiteral("file.APP"))));
}

} // namespace
