#include "platform/files/InotifyTree.h"
#include "platform/files/EventStream.h"

#include "support/Support.h"

#include <sys/stat.h>

using namespace platform;
using Names = std::vector<QByteArray>;

namespace {

/// Events are read only when the test says so: by then their paths may be out of date.
struct InotifyTreeTest : testing::Test, InotifyTree::Sink {
    InotifyTreeTest() { _tree.addRoots({_root}); }

    void make(const Names& names) {
        for (const QByteArray& name : names)
            ASSERT_EQ(::mkdir((_root + '/' + name).constData(), 0700), 0);
    }
    void move(const QByteArray& from, const QByteArray& to) {
        ASSERT_EQ(std::rename((_root + '/' + from).constData(), (_root + '/' + to).constData()), 0);
    }
    void read() { _tree.readEvents({}); }
    /// Files of these names are told of when they are made, and no others.
    void expectToldOf(const Names& names) {
        _files.clear();
        for (const QByteArray& name : names)
            support::writeFile(QFile::decodeName(_root + '/' + name), "x");
        read();
        EXPECT_EQ(_files, names);
    }

    void folderEvent(const QByteArray& path, std::uint32_t flags) override {
        if ((flags & EventItemRenamed) != 0) _renamed.push_back(path.mid(_root.size() + 1));
    }
    void folderMoved(const QByteArray& from, const QByteArray&) override {
        std::erase_if(_files, [below = from.mid(_root.size() + 1) + '/'](const auto& file) {
            return file.startsWith(below);
        });
    }
    void fileCreated(const QByteArray& path) override {
        _files.push_back(path.mid(_root.size() + 1));
    }
    void fileClosed(const QByteArray&) override {}
    void fileRemoved(const QByteArray&) override {}
    void fileRenamed(const QByteArray&, const QByteArray&) override {}
    void rootChanged(const QByteArray& path, const QByteArray& movedTo) override {
        _changed.push_back(
            path.mid(_root.size() + 1) +
            (movedTo.isEmpty() ? "" : ">" + movedTo.mid(_root.size() + 1)));
    }
    void limitReached(const QByteArray&) override {}
    void overflowed() override {}

    const QTemporaryDir _folder;
    const QByteArray _root = QFile::encodeName(_folder.path());
    Names _files;
    InotifyTree _tree{*this, {}};
    Names _renamed;
    Names _changed; ///< roots, and where they went
};

TEST_F(InotifyTreeTest, aRootIsFollowedWhereAFolderAboveItGoesAndAwaitedWhereItWas) {
    make({"docs", "docs/job", "docs/job/R", "docs/job/R/in", "else"});
    InotifyTree tree(*this, {});
    const QByteArray root = _root + "/docs/job/R";
    tree.addRoots(
        {root, root + "/in", _root + "/else", _root + "/just/left"}, {_root + "/away/x/R"});
    EXPECT_EQ(_changed, Names{"just/left"});
    const auto changes = [&] {
        _changed.clear();
        tree.readEvents({});
        std::ranges::sort(_changed);
        _changed.erase(std::unique(_changed.begin(), _changed.end()), _changed.end());
        return _changed;
    };
    EXPECT_EQ(changes(), Names());
    make({"docs/beside"});
    move("docs/beside", "docs/besides");
    EXPECT_EQ(changes(), Names()) << "not above a root";
    move("docs/job", "else/w");
    EXPECT_EQ(
        changes(),
        (Names{"docs/job/R", "docs/job/R/in", "docs/job/R/in>else/w/R/in", "docs/job/R>else/w/R"}));

    // It comes step by step, at once with what is below it, or is made there.
    for (const QByteArray made : {"away", "away/x", "away/x/R"}) {
        make({made});
        EXPECT_EQ(changes(), made == "away/x/R" ? Names{made} : Names());
    }
    make({"away/x/R/new"});
    changes();
    support::writeFile(QFile::decodeName(_root + "/away/x/R/new/1"), "x");
    changes();
    EXPECT_EQ(_files, Names{"away/x/R/new/1"});
    move("away", ".hidden");
    EXPECT_FALSE(changes().empty());
    move(".hidden", "away");
    EXPECT_TRUE(std::ranges::count(changes(), QByteArray("away/x/R")));
}

TEST_F(InotifyTreeTest, aFolderMadeJustBeforeItsParentIsRenamedIsWatchedAndNoneTakenForAnother) {
    make({"a", "a/known"});
    read();
    make({"a/new", "a/known/new", "a/known/new/below"});
    move("a", "b");
    make({"a", "a/new"}); // at the old place
    read();
    expectToldOf(
        {"b/1", "b/known/2", "b/new/1", "b/known/new/4", "b/known/new/below/5", "a/new/2"});
    // Two that change places.
    make({"a/later", "b/later"});
    move("a", "c");
    move("b", "a");
    move("c", "b");
    read();
    expectToldOf({"a/new/3", "b/new/4", "a/later/5", "b/later/6"});
}

TEST_F(InotifyTreeTest, aFolderThatComesAgainUnderItsNameIsLookedThrough) {
    make({"a", "b"});
    ASSERT_EQ(::rmdir((_root + "/a").constData()), 0);
    move("b", "c");
    make({"a", "b"});
    for (const char* name : {"a/1", "b/2"})
        support::writeFile(_folder.filePath(QLatin1StringView(name)), "x");
    read();
    for (const char* name : {"a/1", "b/2"})
        EXPECT_TRUE(std::ranges::count(_files, QByteArray(name))) << name << ", perhaps twice";
    expectToldOf({"a/3", "b/4", "c/5"});
}

TEST_F(InotifyTreeTest, theOtherHalfOfARenameIsWaitedForTwentyMilliseconds) {
    using namespace std::chrono_literals;
    const InotifyTree::Clock::time_point start(1h);
    make({"a", "b"});
    read();
    EXPECT_EQ(_tree.nextExpiry(), std::nullopt);
    move("b", ".b");
    move("a", "../" + QByteArray(QFileInfo(_folder.path()).fileName().toLatin1()) + "-outside");
    _tree.readEvents(start);
    EXPECT_EQ(_renamed, Names{"b"}) << "hidden is away at once";
    EXPECT_EQ(_tree.nextExpiry(), start + 20ms);
    _tree.expireRenames(start + 19ms);
    EXPECT_EQ(_renamed.size(), 1U);
    _tree.expireRenames(start + 20ms);
    EXPECT_EQ(_renamed, (Names{"b", "a"}));
    EXPECT_EQ(_tree.nextExpiry(), std::nullopt);
    ASSERT_EQ(::rmdir((_root + "-outside").constData()), 0);
}

} // namespace
