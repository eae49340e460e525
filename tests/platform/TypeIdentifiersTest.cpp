#include "platform/files/TypeIdentifiers.h"

#include "support/Support.h"

using namespace platform::TypeIdentifiers;

TEST(TypeIdentifiersTest, extensionsOfAnySpellingFindTheirFormat) {
    using Row = std::pair<const char16_t*, const char*>;
    for (const auto& [extension, type] :
         {Row{u"JPeG", "public.jpeg"}, Row{u"jpe", "public.jpeg"},
          Row{u"DnG", "com.adobe.raw-image"}, Row{u"hif", "public.heic"}, Row{u"", ""},
          Row{u"txt", ""}, Row{u".jpg", ""}, Row{u"jpg ", ""}})
        EXPECT_EQ(forExtension(extension), QString::fromLatin1(type));
}

TEST(TypeIdentifiersTest, conformanceGoesUpwardsOnly) {
    EXPECT_TRUE(conformsTo(u"com.canon.CR3-raw-image", image));
    EXPECT_TRUE(conformsTo(u"com.canon.cr3-raw-image", u"public.item"));
    EXPECT_TRUE(conformsTo(u"public.jpeg", u"PUBLIC.JPEG"));
    EXPECT_FALSE(conformsTo(u"public.image", u"public.jpeg"));
    // Taken with the JPEG files, multi-picture files would get an importer.
    EXPECT_FALSE(conformsTo(multiPicture, u"public.jpeg"));
    EXPECT_TRUE(conformsTo(u"org.example.unknown", u"org.example.unknown"));
    EXPECT_FALSE(conformsTo(u"org.example.unknown", u"public.item"));
    EXPECT_FALSE(conformsTo(u"", u"") || equal(u"", u""));
}

TEST(TypeIdentifiersTest, everyFormatIsAWholeRowOfTheTable) {
    QStringList types = all();
    EXPECT_EQ(types.removeDuplicates(), 0);
    EXPECT_TRUE(types.contains(multiPicture));
    for (const QString& type : types) {
        SCOPED_TRACE(type.toStdString());
        EXPECT_TRUE(conformsTo(type, image));
        // The extension leads back: no two formats claim the same one.
        EXPECT_EQ(forExtension(preferredExtension(type).toUpper()), type);
        EXPECT_TRUE(mimeType(type).startsWith(u"image/"));
        EXPECT_NE(description(type), type);
        const bool isRaw = description(type).endsWith(u"raw image") || type.contains(u"adobe.raw");
        EXPECT_EQ(isRaw, conformsTo(type, cameraRawImage));
    }
}
