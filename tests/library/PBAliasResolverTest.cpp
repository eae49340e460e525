#include "library/PBAliasResolver.h"

#include "library/LibrarySupport.h"
#include "platform/MainLoop.h"

#include <semaphore>

using platform::BoundedCalls;
using platform::MainLoop;
using platform::Resolution;
using Outcome = platform::Resolution::Outcome;

namespace {

/// A desktop that can mount, or not, when the test says so.
struct ToldMounter final : platform::VolumeMounter {
    [[nodiscard]] bool canMount(const platform::FileSystemIdentity&) const override { return can; }
    void mount(const platform::FileSystemIdentity&, Completion completion) override {
        pending = std::move(completion);
    }
    bool can = true;
    Completion pending;
};

struct PBAliasResolverTest : testing::Test {
    static void post(std::function<void()> function) {
        MainLoop::instance()->post(MainLoop::Mode::Common, std::move(function));
    }
    std::shared_ptr<PBAliasObject> rootAt(const QString& path) {
        const auto made = resolver.newAlias(path);
        EXPECT_TRUE(made);
        return PBAliasObject::aliasObjectWithId(
            1, made ? made->data : QByteArray(), {}, path, 0, PBAliasObject::Local);
    }

    /// The answer, be it late.
    Resolution answer(PBAliasResolver& asked, const PBAliasObject& root, bool mount = false) {
        std::optional<Resolution> late;
        asked.setLateAnswerHandler(
            [&](std::int64_t, const Resolution& resolution) { late = resolution; });
        const Resolution soon = asked.resolve(root, mount, {}, nullptr);
        if (soon.outcome != Outcome::Unfinished && soon.outcome != Outcome::NoAnswer) return soon;
        EXPECT_TRUE(support::spinUntil([&] { return late.has_value(); }));
        return late.value_or(Resolution());
    }

    MainLoop loop;
    BoundedCalls calls{&PBAliasResolverTest::post};
    ToldMounter mounter;
    PBAliasResolver resolver{calls, &mounter};
    QTemporaryDir folder;
};

TEST_F(PBAliasResolverTest, aSearchThatTookTooLongIsNoReasonToGiveUpAFolder) {
    const QString place = folder.filePath(u"A"_s);
    QDir().mkdir(place);
    const auto root = rootAt(place);
    QFile::rename(place, place + u'2');
    // Each look at the clock finds that half a second has gone by.
    auto now = std::make_shared<std::atomic<int>>(0);
    PBAliasResolver slow(calls, nullptr, {}, [now] {
        return std::chrono::steady_clock::time_point(std::chrono::milliseconds(*now += 500));
    });
    EXPECT_EQ(slow.resolve(*root, false, {}, nullptr).outcome, Outcome::Unfinished);
    EXPECT_EQ(answer(slow, *root).path, QString(place + u'2'));
}

TEST_F(PBAliasResolverTest, damagedBookmarkFallsBackToTheReservePath) {
    const auto there =
        PBAliasObject::aliasObjectWithId(1, "junk", {}, folder.path(), 0, PBAliasObject::Local);
    EXPECT_EQ(resolver.resolve(*there, false, {}, nullptr).path, folder.path());
    const auto gone = PBAliasObject::aliasObjectWithId(
        2, "", {}, folder.filePath(u"none"_s), 0, PBAliasObject::Local);
    EXPECT_EQ(resolver.resolve(*gone, false, {}, nullptr).outcome, Outcome::NoAnswer);
}

TEST_F(PBAliasResolverTest, diskThatHangsAnswersLater) {
    const auto root = rootAt(folder.path());
    auto gate = std::make_shared<std::binary_semaphore>(0);
    const auto blocked = calls.call<int>(
        PBAliasResolver::lane(*root), u"hang"_s, std::chrono::milliseconds(0),
        [gate] {
            gate->acquire();
            return 0;
        },
        {});
    ASSERT_FALSE(blocked);
    std::vector<std::pair<std::int64_t, Resolution>> late;
    resolver.setLateAnswerHandler([&](std::int64_t aliasId, const Resolution& resolution) {
        late.emplace_back(aliasId, resolution);
    });
    EXPECT_EQ(resolver.resolve(*root, false, {}, nullptr).outcome, Outcome::NoAnswer);
    EXPECT_EQ(resolver.resolve(*root, false, {}, nullptr).outcome, Outcome::NoAnswer);
    gate->release();
    ASSERT_TRUE(support::spinUntil([&] { return !late.empty(); }));
    EXPECT_EQ(late.size(), 1u) << "the second question took the place of the first";
    EXPECT_EQ(late[0].first, 1);
    EXPECT_EQ(late[0].second.path, folder.path());
}

TEST_F(PBAliasResolverTest, absentVolumeIsMountedWhenAsked) {
    platform::Bookmark bookmark;
    bookmark.path = u"/media/nobody/Stick/photos"_s;
    bookmark.fileSystem = {"ext4", "0123456789abcdef", "/dev/nothing", 9};
    const auto root = PBAliasObject::aliasObjectWithId(
        5, bookmark.data(), {}, bookmark.path, 0, PBAliasObject::Removable);
    std::vector<std::pair<std::int64_t, QString>> failures;
    resolver.setMountFailureHandler(
        [&](std::int64_t aliasId, const QString& error) { failures.emplace_back(aliasId, error); });
    QString error;
    EXPECT_EQ(resolver.resolve(*root, false, {}, &error).outcome, Outcome::VolumeAbsent);
    EXPECT_FALSE(mounter.pending);
    EXPECT_EQ(resolver.resolve(*root, true, {}, &error).outcome, Outcome::VolumeAbsent);
    EXPECT_TRUE(error.isEmpty());
    ASSERT_TRUE(mounter.pending);
    mounter.pending(QString());
    EXPECT_TRUE(failures.empty());
    mounter.pending(u"wrong password"_s);
    EXPECT_EQ(failures.size(), 1u);
    mounter.can = false;
    static_cast<void>(resolver.resolve(*root, true, {}, &error));
    EXPECT_FALSE(error.isEmpty());
}

} // namespace
