#include "platform/TypeIdentifiers.h"

#include "support/Support.h"

#include <QSet>

namespace TypeIdentifiers = platform::TypeIdentifiers;

TEST(TypeIdentifiersTest, extensionsOfAnySpellingFindTheirFormat) {
    const std::pair<const char16_t*, const char*> cases[] = {
        {u"JPeG", "public.jpeg"},
        {u"jpe", "public.jpeg"},
        {u"DnG", "com.adobe.raw-image"},
        {u"hif", "public.heic"},
        {u"", ""},
        {u"txt", ""},
        {u".jpg", ""},
        {u"jpg ", ""},
        {u"mov", ""}};
    for (const auto& [extension, type] : cases)
        EXPECT_EQ(TypeIdentifiers::forExtension(extension), QString::fromLatin1(type));
}

TEST(TypeIdentifiersTest, conformanceGoesUpwardsOnly) {
    using TypeIdentifiers::conformsTo;
    EXPECT_TRUE(conformsTo(u"com.canon.CR3-raw-image", TypeIdentifiers::image));
    EXPECT_TRUE(conformsTo(u"com.canon.cr3-raw-image", u"public.item"));
    EXPECT_TRUE(conformsTo(u"public.jpeg", u"PUBLIC.JPEG"));
    EXPECT_FALSE(conformsTo(u"public.image", u"public.jpeg"));
    // Taken with the JPEG files, multi-picture files would get an importer.
    EXPECT_FALSE(conformsTo(TypeIdentifiers::multiPicture, u"public.jpeg"));
    EXPECT_TRUE(conformsTo(u"org.example.unknown", u"org.example.unknown"));
    EXPECT_FALSE(conformsTo(u"org.example.unknown", u"public.item"));
    EXPECT_FALSE(conformsTo(u"", u"") || TypeIdentifiers::equal(u"", u""));
}

TEST(TypeIdentifiersTest, everyFormatIsAWholeRowOfTheTable) {
    const QStringList all = TypeIdentifiers::all();
    EXPECT_EQ(QSet<QString>(all.begin(), all.end()).size(), all.size());
    EXPECT_TRUE(all.contains(TypeIdentifiers::multiPicture));
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
                type == u"com.adobe.raw-image"_s,
            TypeIdentifiers::conformsTo(type, TypeIdentifiers::cameraRawImage));
    }
}
