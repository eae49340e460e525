#include "fileactions/marks/EditQueue.h"

#include "group/CatalogueFixture.h"

using fileactions::OtherWay;

namespace {

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
    void undo(OtherWay::End how = OtherWay::End::Done) {
        queue.undo();
        endIt(how);
    }
    void redo(OtherWay::End how = OtherWay::End::Done) {
        queue.redo();
        endIt(how);
    }

    support::NoRoots roots;
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
    undo();
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
    queue.undo(); // the second would do the same
    undo(OtherWay::End::StillToDo);
    EXPECT_EQ(log, QStringList(u"third"_s));
    EXPECT_EQ(queue.undoText(), u"third");
    EXPECT_TRUE(queue.isIdle());
    undo(OtherWay::End::Void);
    EXPECT_EQ(queue.undoText(), u"second");
    EXPECT_FALSE(queue.canRedo());
    undo();
    redo(OtherWay::End::StillToDo);
    EXPECT_EQ(queue.redoText(), u"second");
    redo(OtherWay::End::Void);
    EXPECT_FALSE(queue.canRedo());
    EXPECT_EQ(queue.undoText(), u"first");
    // Half-way: what was done can be repeated, and the rest taken back.
    log.clear();
    queue.undo(); // the second was meant for the one before
    undo(OtherWay::End::Partly);
    undo();
    redo();
    redo();
    undo();
    EXPECT_EQ(log.join(u' '), u"first first+ first+' first' first''"_s);
    redo(OtherWay::End::Partly);
    EXPECT_EQ(queue.undoText(), queue.redoText());
    redo();
    EXPECT_EQ(log.last(), u"first'''+");
}

} // namespace
