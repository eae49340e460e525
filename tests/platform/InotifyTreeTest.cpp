#include "platform/InotifyTree.h"

#include "support/Support.h"

#include <gmock/gmock.h>

#include <sys/stat.h>

using namespace platform;
using testing::ElementsAre;

namespace {

/// Events are read only when the test says so: by then their paths may be out of date.
class InotifyTreeTest : public testing::Test, private InotifyTree::Sink {
protected:
    InotifyTreeTest() { _tree.addRoots({_root}); }

    void make(const QByteArray& name) {
        ASSERT_EQ(::mkdir((_root + '/' + name).constData(), 0700), 0);
    }
    void move(const QByteArray& from, const QByteArray& to) {
        ASSERT_EQ(std::rename((_root + '/' + from).constData(), (_root + '/' + to).constData()), 0);
    }
    void remove(const QByteArray& name) { ASSERT_EQ(::rmdir((_root + '/' + name).constData()), 0); }
    void read() { _tree.readEvents({}); }
    std::vector<std::string> filesToldFor(const std::vector<QByteArray>& names) {
        _files.clear();
        for (const QByteArray& name : names)
            support::writeFile(QFile::decodeName(_root + '/' + name), "x");
        read();
        return std::exchange(_files, {});
    }

private:
    void folderEvent(const QByteArray&, std::uint32_t) override {}
    void folderMoved(const QByteArray&, const QByteArray&) override {}
    void fileCreated(const QByteArray& path) override {
        _files.push_back(path.mid(_root.size() + 1).toStdString());
    }
    void fileClosed(const QByteArray&) override {}
    void fileRemoved(const QByteArray&) override {}
    void fileRenamed(const QByteArray&, const QByteArray&) override {}
    void rootChanged(const QByteArray&) override {}
    void limitReached(const QByteArray&) override {}
    void overflowed() override {}

    const QTemporaryDir _folder;
    const QByteArray _root = QFile::encodeName(_folder.path());
    InotifyTree _tree{*this, {}};
    std::vector<std::string> _files;
};

TEST_F(InotifyTreeTest, aFolderMadeJustBeforeItsParentIsRenamedIsWatched) {
    make("a");
    make("a/known");
    read();
    make("a/new");
    make("a/known/new");
    make("a/known/new/below");
    move("a", "b");
    read();
    EXPECT_THAT(
        filesToldFor({"b/1", "b/known/2", "b/new/3", "b/known/new/4", "b/known/new/below/5"}),
        ElementsAre("b/1", "b/known/2", "b/new/3", "b/known/new/4", "b/known/new/below/5"));
}

TEST_F(InotifyTreeTest, anotherFolderAtTheOldPlaceIsNotTakenForTheOneThatMoved) {
    make("a");
    read();
    make("a/new");
    move("a", "b");
    make("a");
    make("a/new");
    read();
    EXPECT_THAT(filesToldFor({"b/new/1", "a/new/2"}), ElementsAre("b/new/1", "a/new/2"));
    // Two that change places.
    make("a/later");
    make("b/later");
    move("a", "c");
    move("b", "a");
    move("c", "b");
    read();
    const std::vector<QByteArray> files{"a/new/3", "b/new/4", "a/later/5", "b/later/6"};
    EXPECT_THAT(filesToldFor(files), ElementsAre("a/new/3", "b/new/4", "a/later/5", "b/later/6"));
}

TEST_F(InotifyTreeTest, aFolderThatIsMadeAnewBeforeAnybodyLookedTellsWhatIsInIt) {
    make("a");
    remove("a");
    make("a");
    EXPECT_THAT(filesToldFor({"a/1"}), testing::Contains("a/1"));
    EXPECT_THAT(filesToldFor({"a/2"}), ElementsAre("a/2"));
}

} // namespace
