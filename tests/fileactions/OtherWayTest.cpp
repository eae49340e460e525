#include "fileactions/marks/EditQueue.h"

#include "FMDB/FMDatabase.h"
#include "group/CatalogueFixture.h"

using fileactions::OtherWay;

namespace {

struct NoRoots final : FolderRootPaths {
    QString mountedPathOfAliasId(qint64) const override { return {}; }
};

struct OtherWayTest : testing::Test {
    /// One that notes that it is asked, and ends when the test says so.
    OtherWay way(const QString& name) {
        return {[this, name](OtherWay::Ended done) {
            log += name;
            end = [this, name, done = std::move(done)](OtherWay::End how) {
                done(how, way(name + u'\''), way(name + u'+'));
            };
        }};
    }
    void endIt(OtherWay::End how = OtherWay::End::Done) {
        const auto now = end; // which may be another one meanwhile
        now(how);
    }
    NoRoots roots;
    QStringList log;
    std::function<void(OtherWay::End how)> end;
    fileactions::EditQueue queue{
        {.connect = [] { return nullptr; },
         .mountedRoots = [] { return marks::RootPaths(); },
         .folderRoots = roots,
         .show = [](const auto&, unsigned) { return false; },
         .tagsDidChange = [] {},
         .ledgerDidChange = [] {}}};
};

TEST_F(OtherWayTest, whatIsDoneElsewhereHasItsPlaceInTheHistoryAndItsTurn) {
    queue.didOther(u"first"_s, way(u"first"_s));
    queue.didOther(u"second"_s, way(u"second"_s));
    EXPECT_EQ(queue.undoText(), u"second");
    int ends = 0;
    QObject::connect(&queue, &fileactions::EditRunner::didEnd, [&ends] { ++ends; });
    queue.undo();
    EXPECT_EQ(queue.pendingCount(), 0) << "it tells of its progress itself";
    queue.undo();
    EXPECT_EQ(log, QStringList(u"second"_s)); // the other one waits
    // What is done meanwhile comes behind both.
    queue.didOther(u"third"_s, way(u"third"_s));
    endIt();
    EXPECT_EQ(log, QStringList({u"second"_s, u"first"_s}));
    EXPECT_EQ(ends, 0);
    endIt();
    EXPECT_EQ(ends, 1) << "whoever waits for that goes on";
    EXPECT_EQ(queue.undoText(), u"third");
    EXPECT_FALSE(queue.canRedo());
    queue.undo();
    endIt();
    queue.redo();
    EXPECT_EQ(log.last(), u"third'"); // by what led back
    EXPECT_FALSE(queue.isIdle());
    // Nobody waits for it when the program ends.
    queue.finish();
    EXPECT_TRUE(queue.isIdle());
    endIt();
}

TEST_F(OtherWayTest, whatFailsCanBeTriedAgainAndWhatHasNothingToDoGoes) {
    for (const QString& name : {u"first"_s, u"second"_s, u"third"_s})
        queue.didOther(name, way(name));
    queue.undo();
    queue.undo(); // would do the same
    endIt(OtherWay::End::StillToDo);
    EXPECT_EQ(log, QStringList(u"third"_s));
    EXPECT_EQ(queue.undoText(), u"third");
    EXPECT_TRUE(queue.isIdle());
    queue.undo();
    endIt(OtherWay::End::Void);
    EXPECT_EQ(queue.undoText(), u"second");
    EXPECT_FALSE(queue.canRedo());
    queue.undo();
    endIt();
    queue.redo();
    endIt(OtherWay::End::StillToDo);
    EXPECT_EQ(queue.redoText(), u"second");
    queue.redo();
    endIt(OtherWay::End::Void);
    EXPECT_FALSE(queue.canRedo());
    EXPECT_EQ(queue.undoText(), u"first");
    // Half-way: what was done can be repeated, and the rest taken back.
    log.clear();
    queue.undo();
    queue.undo(); // was meant for the one before
    endIt(OtherWay::End::Partly);
    for (const bool isUndo : {true, false, false, true}) {
        if (isUndo) {
            queue.undo();
        } else {
            queue.redo();
        }
        endIt();
    }
    EXPECT_EQ(log.join(u' '), u"first first+ first+' first' first''"_s);
    queue.redo();
    endIt(OtherWay::End::Partly);
    EXPECT_EQ(queue.undoText(), queue.redoText());
    queue.redo();
    endIt();
    EXPECT_EQ(log.last(), u"first'''+");
}

} // namespace
