#include "library/PBAliasResolver.h"

#include "library/LibrarySupport.h"
#include "library/OpenedRoots.h"
#include "platform/tasks/MainLoop.h"

#include <semaphore>

using platform::BoundedCalls;
using platform::MainLoop;
using Outcome = PBAliasResolution::Outcome;

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

struct PBAliasResolverTest : support::FolderTest {
    PBAliasResolverTest() {
        resolver.setLateAnswerHandler([this](qint64 aliasId, const PBAliasResolution& answer) {
            EXPECT_EQ(aliasId, 1);
            late.append(answer.path);
        });
    }
    static void post(std::function<void()> function) {
        MainLoop::instance()->post(MainLoop::Mode::Common, std::move(function));
    }
    static auto rootOf(const QByteArray& data, const QString& path) {
        return PBAliasObject::aliasObjectWithId(1, data, {}, path, 0, PBAliasObject::Local);
    }
    auto rootAt(const QString& path) { return rootOf(resolver.newAlias(path).value().data, path); }
    Outcome outcome(const PBAliasObject& root, bool mount = false) {
        return resolver.resolve(root, {.mount = mount}, {}, &error).outcome;
    }
    /// Holds a lane of the calls up until the gate is released.
    auto hang(const QString& lane) {
        auto gate = std::make_shared<std::binary_semaphore>(0);
        const auto wait = [gate] {
            gate->acquire();
            return 0;
        };
        EXPECT_FALSE(calls.call<int>(lane, u"hang"_s, std::chrono::milliseconds(0), wait, {}));
        return gate;
    }

    MainLoop loop;
    BoundedCalls calls{&PBAliasResolverTest::post};
    ToldMounter mounter;
    PBAliasResolver resolver{calls, &mounter};
    QString error;
    QStringList late; ///< paths of late answers
};

TEST_F(PBAliasResolverTest, aSearchThatTookTooLongIsNoReasonToGiveUpAFolder) {
    const QString place = make(u"A");
    const auto root = rootAt(place);
    QFile::rename(place, place + u'2');
    // Each look at the clock finds that half a second has gone by.
    auto now = std::make_shared<std::atomic<int>>(0);
    PBAliasResolver slow(calls, nullptr, {}, [now] {
        return std::chrono::steady_clock::time_point(std::chrono::milliseconds(*now += 500));
    });
    QString found;
    slow.setLateAnswerHandler(
        [&](qint64, const PBAliasResolution& answer) { found = answer.path; });
    EXPECT_EQ(slow.resolve(*root, {}, {}, nullptr).outcome, Outcome::NotFound);
    EXPECT_TRUE(support::spinUntil([&] { return found == place + u'2'; }));
}

TEST_F(PBAliasResolverTest, whatIsNotFoundNearItsPlaceIsLookedForEverywhere) {
    const QString place = make(u"a/b/R");
    make(u".c/d");
    const auto root = rootAt(place);
    const QString away = path(u".c/d/R");
    // One that is for this run only is not: nothing may come of it.
    const auto opened = PBAliasObject::aliasObjectWithId(
        2, root->aliasData(), {}, place, OpenedRoots::openedState, PBAliasObject::Local);
    for (int i = 0; i < 2; ++i) {
        QFile::rename(place, away);
        EXPECT_EQ(outcome(*opened), Outcome::NotFound);
        EXPECT_EQ(outcome(*root), Outcome::NotFound);
        EXPECT_EQ(outcome(*root), Outcome::NotFound) << "while it is being looked for";
        EXPECT_TRUE(support::spinUntil([&] { return late == QStringList{away}; }));
        // It is back, and goes again: that is another search.
        QFile::rename(away, place);
        EXPECT_EQ(outcome(*root), Outcome::Found);
        late.clear();
    }
    // Where a search can't know, there is none at each question, but for the user's.
    auto bookmark = platform::Bookmark::fromData(root->aliasData()).value();
    bookmark.fileSystem.type = "vfat";
    const auto other = rootOf(bookmark.data(), place);
    QFile::rename(place, away);
    EXPECT_EQ(outcome(*other), Outcome::NotFound);
    EXPECT_TRUE(support::spinUntil([&] { return late == QStringList{{}}; }));
    EXPECT_EQ(outcome(*other), Outcome::NotFound);
    EXPECT_EQ(outcome(*other, true), Outcome::NotFound);
    EXPECT_TRUE(support::spinUntil([&] { return late == QStringList({{}, {}}); }));
    QFile::rename(away, place);
    EXPECT_EQ(outcome(*other), Outcome::Found);
    QFile::rename(place, away);
    EXPECT_EQ(outcome(*other), Outcome::NotFound);
    EXPECT_TRUE(support::spinUntil([&] { return late == QStringList({{}, {}, {}}); }));
}

TEST_F(PBAliasResolverTest, anAnswerToAFormerQuestionIsVoid) {
    const auto root = rootAt(temporary.path());
    const auto gate = hang(u"later "_s + PBAliasResolver::lane(*root));
    resolver.resolveLater(*root, {});
    EXPECT_EQ(outcome(*root), Outcome::Found) << "not held up";
    gate->release();
    EXPECT_TRUE(support::spinUntil([&] { return !calls.hasWork(); }));
    bool isOver = false;
    post([&] { isOver = true; });
    EXPECT_TRUE(support::spinUntil([&] { return isOver; }));
    EXPECT_EQ(late, QStringList());
    resolver.resolveLater(*root, {});
    EXPECT_TRUE(support::spinUntil([&] { return !late.isEmpty(); }));
}

TEST_F(PBAliasResolverTest, aFolderAtTheRootsPlaceIsKnownAgainByItsPhotographs) {
    const QString place = path(u"a/R");
    support::writeFile(place + u"/1.jpg"_s, "abc");
    const auto root = rootAt(place);
    std::optional<std::vector<CataloguedName>> names;
    resolver.setNamesSource([&](qint64 aliasId) {
        EXPECT_EQ(aliasId, 1);
        return names;
    });
    QDir(path(u"a")).removeRecursively();
    support::writeFile(place + u"/1.jpg"_s, "abc");
    EXPECT_EQ(outcome(*root), Outcome::NotFound) << "the catalogue can't be read";
    names.emplace();
    EXPECT_EQ(outcome(*root), Outcome::NotFound) << "a root without photographs";
    names->push_back({u"1.jpg"_s, 3});
    EXPECT_EQ(
        resolver.resolve(*root, {}, {.mounted = {place}, .away = {}}, nullptr).outcome,
        Outcome::NotFound)
        << "another root has that place";
    const PBAliasResolution found =
        resolver.resolve(*root, {}, {.mounted = {}, .away = {place}}, nullptr);
    EXPECT_EQ(found.path, place);
    ASSERT_TRUE(found.renewed);
    EXPECT_EQ(rootAt(place)->aliasData(), found.renewed->data);
    const auto isLike = [&](const QString& path) {
        const auto likeness = resolver.likeness(*root, path);
        return likeness ? QString::number(likeness->isRoot) : u"none"_s;
    };
    EXPECT_EQ(isLike(place) + isLike(temporary.path()), u"10"_s);
    EXPECT_EQ(isLike(path(u"none")), u"none"_s);
}

TEST_F(PBAliasResolverTest, damagedBookmarkFallsBackToTheReservePath) {
    const auto there = rootOf("junk", temporary.path());
    EXPECT_EQ(resolver.resolve(*there, {}, {}, nullptr).path, temporary.path());
    EXPECT_EQ(outcome(*rootOf("", path(u"none"))), Outcome::NoAnswer);
}

TEST_F(PBAliasResolverTest, diskThatHangsAnswersLaterUnlessItWasAskedOfAllAtOnce) {
    const auto root = rootAt(temporary.path());
    auto gate = hang(PBAliasResolver::lane(*root));
    EXPECT_EQ(outcome(*root), Outcome::NoAnswer);
    EXPECT_EQ(outcome(*root), Outcome::NoAnswer);
    gate->release();
    ASSERT_TRUE(support::spinUntil([&] { return !late.isEmpty(); }));
    EXPECT_EQ(late, QStringList{temporary.path()})
        << "the second question took the place of the first";
    late.clear();
    gate = hang(PBAliasResolver::lane(*root));
    resolver.beginToResolve(*root, {});
    gate->release();
    EXPECT_EQ(outcome(*root), Outcome::Found) << "though the lane was late";
    resolver.beginToResolve(*root, {});
    const PBAliasResolver::OtherRoots taken{.mounted = {temporary.path()}, .away = {}};
    EXPECT_NE(resolver.resolve(*root, {}, taken, nullptr).outcome, Outcome::NoAnswer)
        << "another root is there meanwhile";
    EXPECT_TRUE(support::spinUntil([&] { return !calls.hasWork(); }));
    QCoreApplication::processEvents();
    EXPECT_EQ(late, QStringList());
}

TEST_F(PBAliasResolverTest, absentVolumeIsMountedWhenAsked) {
    const platform::Bookmark bookmark{
        u"/media/nobody/Stick/photos"_s, {}, {"ext4", "0123456789abcdef", "/dev/nothing", 9}, {}};
    const auto root = rootOf(bookmark.data(), bookmark.path);
    QStringList told;
    resolver.setMountHandler([&](qint64 aliasId, const QString& reason) {
        told.append(u"%1 %2"_s.arg(aliasId).arg(reason));
    });
    EXPECT_EQ(outcome(*root), Outcome::VolumeAbsent);
    EXPECT_FALSE(mounter.pending);
    EXPECT_EQ(outcome(*root, true), Outcome::VolumeAbsent);
    EXPECT_TRUE(error.isEmpty());
    ASSERT_TRUE(mounter.pending);
    mounter.pending(QString());
    mounter.pending(u"wrong password"_s);
    EXPECT_EQ(told, QStringList({u"1 "_s, u"1 wrong password"_s}));
    mounter.can = false;
    EXPECT_EQ(outcome(*root, true), Outcome::VolumeAbsent);
    EXPECT_FALSE(error.isEmpty());
}

TEST_F(PBAliasResolverTest, typeFollowsFromTheVolume) {
    const std::pair<platform::VolumeProperties, PBAliasObject::Type> cases[] = {
        {{}, PBAliasObject::Local},
        {{.isLocal = false, .isEjectable = true}, PBAliasObject::Network},
        {{.isEjectable = true}, PBAliasObject::Removable},
        {{.isRemovable = true}, PBAliasObject::Removable},
        {{.isInternal = false}, PBAliasObject::Removable}};
    for (const auto& [volume, type] : cases)
        EXPECT_EQ(PBUtilities::aliasTypeOfVolume(volume), type);
    write(u"f");
    EXPECT_TRUE(resolver.isFolder(temporary.path()));
    EXPECT_FALSE(resolver.isFolder(path(u"f")));
    EXPECT_FALSE(resolver.newAlias(path(u"none")));
}

} // namespace
