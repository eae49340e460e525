#include "platform/desktop/MailProgram.h"
#include "platform/desktop/Wallpaper.h"
#include "platform/desktop/Workspace.h"

#include "support/ToldDesktop.h"

namespace {

using platform::Wallpaper::Result;

struct PortalRequestTest : testing::Test {
    support::ToldDesktop desktop;
    QTemporaryDir folder;

    void SetUp() override {
        if (!desktop.isRunning()) GTEST_SKIP() << "there is no bus";
        for (const QString& name : {u"a"_s, u"b"_s})
            support::writeFile(folder.filePath(name), name.toUtf8());
    }
    void TearDown() override { QDBusConnection::disconnectFromBus(u"program"_s); }
    QDBusConnection bus() const {
        return QDBusConnection::connectToBus(desktop.address(), u"program"_s);
    }
    Result wallpaper(const QString& name) const {
        std::optional<Result> result;
        const QString path = folder.filePath(name);
        platform::Wallpaper::set(
            bus(), u"sway"_s, path, platform::openForPortal({path})->constFirst(),
            [&](Result answer) { result = answer; });
        EXPECT_TRUE(support::spinUntil([&] { return result.has_value(); }));
        return result.value_or(Result::Failed);
    }
};

TEST_F(PortalRequestTest, thePortalGetsThePictureAndItsAnswerCounts) {
    EXPECT_EQ(wallpaper(u"a"_s), Result::Done);
    EXPECT_EQ(desktop.toldCalls(1), u"portal SetWallpaperFile a"_s);
    desktop.response = 1;
    EXPECT_EQ(wallpaper(u"a"_s), Result::Cancelled);
    // Left to the desktop itself, of which nothing is known here.
    desktop.response = 2;
    EXPECT_EQ(wallpaper(u"a"_s), Result::Nobody);
    desktop.hasPortal = false;
    EXPECT_EQ(wallpaper(u"a"_s), Result::Nobody);
}

TEST_F(PortalRequestTest, aMessageHasTheFilesThemselvesAttached) {
    const QStringList paths{folder.filePath(u"a"_s), folder.filePath(u"b"_s)};
    EXPECT_TRUE(platform::MailProgram::isThere(bus()));
    std::optional<bool> isTaken;
    platform::MailProgram::compose(
        bus(), paths, *platform::openForPortal(paths), [&](bool taken) { isTaken = taken; });
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
