#include "platform/volumes/VolumeSearch.h"

#include "support/MemoryDisk.h"

#include <sys/resource.h>

using namespace platform;
using Outcome = Resolution::Outcome;
using Outcomes = std::vector<Outcome>;

namespace {

/// A disk of its own, all of which is looked through.
struct VolumeSearchTest : testing::Test {
    QString path(const QString& below) const { return _folder.filePath(u"disk/"_s + below); }
    Bookmark make(const QString& below) const {
        QDir().mkpath(path(below));
        return Bookmark::bookmarkOfFolder(path(below), Volumes()).value_or(Bookmark());
    }
    void move(const QString& from, const QString& to) const {
        ASSERT_TRUE(QFile::rename(path(from), path(to)));
    }
    /// With something that happens before the folder of that number is listed.
    Outcomes search(
        const std::vector<Bookmark>& wanted, int number = -1,
        const std::function<bool()>& happens = {}, const std::function<void()>& after = {}) {
        looks = 0;
        places.clear();
        const Volumes volumes;
        const auto pause = [&] {
            ++looks;
            if (looks == number + 1 && after) after();
            return looks != number || happens();
        };
        const VolumeSearch search(volumes, pause, stop.get_token());
        return search.run(wanted, [&](std::size_t index, const QString& place) {
            places.append(QString::number(index) + u' ' + place.mid(path({}).size()));
        });
    }

    int looks = 0;
    QStringList places;
    std::stop_source stop;
    const QTemporaryDir _folder;
    support::MemoryDisk disk{_folder.filePath(u"disk"_s)};
};

TEST_F(VolumeSearchTest, whatIsAnywhereOnTheDiskIsFoundAndOnlyWhatIsNotIsGone) {
    if (!disk.isMounted()) return support::rerunWhereDisksCanBeMounted();
    const std::vector<Bookmark> wanted{make(u"home/a/A"_s), make(u"home/a/B"_s), make(u"C"_s)};
    make(u"home/.Trash/files/deep"_s);
    make(u".x/y"_s);
    for (int i = 0; i < 30; ++i)
        make(u"other/%1"_s.arg(i));
    QFile::link(path(u"home"_s), path(u"home/.Trash/loop"_s));
    move(u"home/a/A"_s, u"home/.Trash/files/deep/A"_s);
    move(u"home/a/B"_s, u".x/y/B"_s);
    QDir().rmdir(path(u"C"_s));
    make(u"C"_s); // another one
    EXPECT_EQ(search(wanted), (Outcomes{Outcome::Found, Outcome::Found, Outcome::Gone}));
    EXPECT_EQ(places, (QStringList{u"0 home/.Trash/files/deep/A"_s, u"1 .x/y/B"_s}));
    // Near its former place first, and no further than needed.
    EXPECT_EQ(search({wanted[0]}), Outcomes{Outcome::Found});
    EXPECT_LT(looks, 12);
    // Once from the part that was not seen yet to one that was.
    move(u".x/y/B"_s, u"other/B"_s);
    const auto hides = [&] {
        if (QFile::exists(path(u"home/a/B"_s))) return true;
        return QFile::rename(path(u"other/B"_s), path(u"home/a/B"_s));
    };
    EXPECT_EQ(search({wanted[1]}, 3, hides), Outcomes{Outcome::Found});
    EXPECT_EQ(places, QStringList{u"0 home/a/B"_s});
}

TEST_F(VolumeSearchTest, whatCouldNotAllBeLookedAtIsNoAnswer) {
    if (!disk.isMounted()) return support::rerunWhereDisksCanBeMounted();
    const Bookmark lost = make(u"a/b/R"_s);
    QDir().rmdir(path(u"a/b/R"_s));
    make(u"c/d"_s);
    const Outcomes unknown{Outcome::NoAnswer};
    ASSERT_EQ(search({lost}), Outcomes{Outcome::Gone});
    const int all = looks;
    // Each folder in turn, in both rounds, is one that can't be opened.
    for (int number = 1; number <= all; ++number) {
        rlimit limit{};
        ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
        const auto failing = [&] {
            const rlimit none{0, limit.rlim_max};
            return ::setrlimit(RLIMIT_NOFILE, &none) == 0;
        };
        const auto works = [&] { ::setrlimit(RLIMIT_NOFILE, &limit); };
        EXPECT_EQ(search({lost}, number, failing, works), unknown) << number;
        works();
    }
    EXPECT_EQ(search({lost}, all, [] { return false; }), unknown) << "told to stop";
    EXPECT_EQ(search({lost}, all - 1, [&] { return stop.request_stop(); }), unknown);
    EXPECT_EQ(looks, all - 1) << "at once";
    stop = std::stop_source();

    // What another disk lies over may be there.
    {
        const support::MemoryDisk over(path(u"c"_s));
        EXPECT_EQ(search({lost}), Outcomes{Outcome::Gone});
        EXPECT_EQ(looks, all - 2 * 2) << "not in it, nor under it";
    }
    {
        const support::MemoryDisk over(path(u"a"_s));
        EXPECT_EQ(search({lost}), unknown);
    }
    // The disk leaves: what it leaves behind is an empty folder.
    const auto leaves = [&] { return disk.leave(), true; };
    EXPECT_EQ(search({lost}, 2, leaves), unknown);
    EXPECT_EQ(search({lost}), unknown);
}

} // namespace
