#include "platform/desktop/SchemeHandlers.h"
#include "support/Support.h"

namespace {

using namespace platform::SchemeHandlers;

TEST(SchemeHandlersTest, aProgramIsOneThatIsListedAndInstalled) {
    const QTemporaryDir folder;
    const Places places{{folder.path()}, {folder.filePath(u"system"_s), folder.filePath(u"own"_s)}};
    const QString list = folder.filePath(u"mimeapps.list"_s);
    const QString cache = folder.filePath(u"own/mimeinfo.cache"_s);
    EXPECT_FALSE(hasProgram(u"geo", places));
    const char* line = "x-scheme-handler/geo=gone.desktop; map.desktop;\n";
    support::writeFile(
        list, QByteArray("[Default Applications]\nx-scheme-handler/geocache=a;\n") + line);
    EXPECT_FALSE(hasProgram(u"geo", places)) << "it was uninstalled";
    support::writeFile(folder.filePath(u"system/map.desktop"_s), "[Desktop Entry]\n");
    EXPECT_TRUE(hasProgram(u"geo", places));
    EXPECT_FALSE(hasProgram(u"ge", places));
    support::writeFile(list, QByteArray("[Removed Associations]\n") + line);
    EXPECT_FALSE(hasProgram(u"geo", places));
    support::writeFile(cache, QByteArray("[MIME Cache]\n") + line);
    EXPECT_TRUE(hasProgram(u"geo", places));
}

} // namespace
