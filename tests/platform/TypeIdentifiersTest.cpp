#include "platform/TypeIdentifiers.h"

#include "support/Support.h"

#include <QSet>

#include <gtest/gtest.h>

namespace {

namespace TypeIdentifiers = platform::TypeIdentifiers;

TEST(TypeIdentifiersTest, extensionsOfAnySpellingFindTheirFormat) {
    EXPECT_EQ(TypeIdentifiers::forExtension(u"JPeG"), QStringLiteral("public.jpeg"));
    EXPECT_EQ(TypeIdentifiers::forExtension(u"jpe"), QStringLiteral("public.jpeg"));
    EXPECT_EQ(TypeIdentifiers::forExtension(u"TIFF"), QStringLiteral("public.tiff"));
    EXPECT_EQ(TypeIdentifiers::forExtension(u"DnG"), QStringLiteral("com.adobe.raw-image"));
    EXPECT_EQ(TypeIdentifiers::forExtension(u"hif"), QStringLiteral("public.heic"));
    for (const char16_t* unknown : {u"", u"txt", u".jpg", u"jpg ", u"mov"})
        EXPECT_EQ(TypeIdentifiers::forExtension(unknown), QString());
}

TEST(TypeIdentifiersTest, conformanceGoesUpwardsOnly) {
    using TypeIdentifiers::conformsTo;
    EXPECT_TRUE(conformsTo(u"com.canon.cr3-raw-image", TypeIdentifiers::cameraRawImage));
    EXPECT_TRUE(conformsTo(u"com.canon.CR3-raw-image", TypeIdentifiers::image));
    EXPECT_TRUE(conformsTo(u"com.canon.cr3-raw-image", u"public.item"));
    EXPECT_TRUE(conformsTo(u"public.jpeg", u"PUBLIC.JPEG"));
    EXPECT_FALSE(conformsTo(u"public.image", u"public.jpeg"));
    EXPECT_FALSE(conformsTo(u"public.jpeg", TypeIdentifiers::cameraRawImage));
    // Taken with the JPEG files, multi-picture files would get an importer.
    EXPECT_FALSE(conformsTo(TypeIdentifiers::multiPicture, u"public.jpeg"));
    EXPECT_TRUE(conformsTo(TypeIdentifiers::multiPicture, TypeIdentifiers::image));
    EXPECT_TRUE(conformsTo(u"org.example.unknown", u"org.example.unknown"));
    EXPECT_FALSE(conformsTo(u"org.example.unknown", u"public.item"));
    EXPECT_FALSE(conformsTo(u"", u""));
    EXPECT_FALSE(TypeIdentifiers::equal(u"", u""));
}

TEST(TypeIdentifiersTest, everyFormatIsAWholeRowOfTheTable) {
    const QStringList all = TypeIdentifiers::all();
    EXPECT_EQ(QSet<QString>(all.begin(), all.end()).size(), all.size());
    EXPECT_TRUE(all.contains(TypeIdentifiers::multiPicture));
    EXPECT_FALSE(all.contains(TypeIdentifiers::image));
    EXPECT_FALSE(all.contains(TypeIdentifiers::cameraRawImage));
    for (const QString& type : all) {
        SCOPED_TRACE(type.toStdString());
        EXPECT_TRUE(TypeIdentifiers::conformsTo(type, TypeIdentifiers::image));
        // The extension leads back: no two formats claim the same one.
        EXPECT_EQ(
            TypeIdentifiers::forExtension(TypeIdentifiers::preferredExtension(type).toUpper()),
            type);
        EXPECT_TRUE(TypeIdentifiers::mimeType(type).startsWith(u"image/"));
        EXPECT_NE(TypeIdentifiers::description(type), type);
        EXPECT_EQ(
            TypeIdentifiers::description(type).endsWith(u"raw image") ||
                type == QStringLiteral("com.adobe.raw-image"),
            TypeIdentifiers::conformsTo(type, TypeIdentifiers::cameraRawImage));
    }
    EXPECT_EQ(TypeIdentifiers::description(u"org.example.unknown"), QString());
    EXPECT_EQ(TypeIdentifiers::preferredExtension(TypeIdentifiers::image), QString());
}

} // namespace
