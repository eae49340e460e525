#include "platform/desktop/MailProgram.h"
#include "platform/desktop/Wallpaper.h"
#include "platform/desktop/Workspace.h"

#include "support/ToldDesktop.h"

namespace {

using platform::Wallpaper::Result;

struct PortalRequestTest : support::DesktopTest {
    PortalRequestTest() {
        for (const QString& path : paths)
            support::writeFile(path, path.last(1).toUtf8());
    }
    /// What becomes of the first file as one.
    Result wallpaper() {
        std::optional<Result> result;
        platform::Wallpaper::set(
            desktop.programsBus(), u"sway"_s, paths[0],
            platform::openForPortal(paths)->constFirst(), [&](Result answer) { result = answer; });
        EXPECT_TRUE(support::spinUntil([&] { return result.has_value(); }));
        return result.value_or(Result::Failed);
    }

    QTemporaryDir folder;
    const QStringList paths{folder.filePath(u"a"_s), folder.filePath(u"b"_s)};
};

TEST_F(PortalRequestTest, thePortalGetsThePictureAndItsAnswerCounts) {
    EXPECT_EQ(wallpaper(), Result::Done);
    EXPECT_EQ(desktop.toldCalls(1), u"portal SetWallpaperFile a"_s);
    desktop.response = 1;
    EXPECT_EQ(wallpaper(), Result::Cancelled);
    // Left to the desktop itself, of which nothing is known here.
    desktop.response = 2;
    EXPECT_EQ(wallpaper(), Result::Nobody);
    desktop.hasPortal = false;
    EXPECT_EQ(wallpaper(), Result::Nobody);
}

TEST_F(PortalRequestTest, aMessageHasTheFilesThemselvesAttached) {
    EXPECT_TRUE(platform::MailProgram::isThere(desktop.programsBus()));
    std::optional<bool> isTaken;
    platform::MailProgram::compose(
        desktop.programsBus(), paths, *platform::openForPortal(paths),
        [&](bool taken) { isTaken = taken; });
    EXPECT_TRUE(support::spinUntil([&] { return isTaken.has_value(); }));
    EXPECT_TRUE(*isTaken);
    EXPECT_EQ(desktop.toldCalls(1), u"portal ComposeEmail a+b"_s);
    EXPECT_FALSE(platform::openForPortal({folder.filePath(u"none"_s)}));
    // So many would end the connection.
    EXPECT_TRUE(platform::openForPortal(QStringList(300, paths[0])).value().isEmpty());
}

TEST(WorkspaceTest, whereNobodyShowsFoldersThatIsTold) {
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/none");
    bool isTold = false;
    platform::Workspace::revealInFileManager({u"/none"_s}, [&isTold] { isTold = true; });
    EXPECT_TRUE(support::spinUntil([&isTold] { return isTold; }));
}

} // namespace
