#include "fileactions/marks/EditQueue.h"
#include "fileactions/marks/ShownPhotographs.h"

#include "catalogue/MarksSupport.h"
#include "group/CatalogueFixture.h"
#include "group/ItemOrder.h"
#include "platform/tasks/MainLoop.h"

using fileactions::EditQueue;
using fileactions::EditResult;
using fileactions::PhotographEdit;
using Edit = PhotographEdit;

namespace {

/// The runner over a catalogue and a ledger on disk; what is to be shown is noted.
struct EditQueueTest : MarksTest {
    EditQueueTest() {
        using fileactions::EditRunner;
        for (const auto signal : {&EditRunner::didEdit, &EditRunner::didFail})
            QObject::connect(
                &queue, signal, [this](const EditResult& result) { results.push_back(result); });
    }
    void wait() {
        ASSERT_TRUE(support::spinUntil([this] { return queue.isIdle(); }));
    }
    void run(Edit::Change change, std::vector<qint64> ids) {
        queue.run({.fileIds = std::move(ids), .change = std::move(change)});
        wait();
    }
    void undo() {
        queue.undo();
        wait();
    }
    QStringList tagsOf(qint64 id) {
        const auto held = marks::MarksLedger(*both).held(std::array{id});
        return held && !held->empty() ? held->front().marks.tags : QStringList();
    }
    /// Both files, without the ids of tags, which a tag that comes back may have anew.
    QString all() {
        return rows(u"select "
                    u"Id,ifnull(FileStars,0),ifnull(FileFlag,0),(RotateAngle+360)%360,FileName "
                    "from ImageFile order by Id"_s)
                   .join(u' ') +
               u" ledger "_s +
               rows(u"select RelativePath,Stars,Flag,Tags,Rotation from Marks order by Id"_s)
                   .join(u' ');
    }

    platform::MainLoop loop;
    support::NoRoots folders;
    std::vector<marks::ShownRow> shown;
    std::vector<EditResult> results;
    EditQueue queue{EditQueue::Environment{
        .connect = [this] { return connectToBoth(filesPath, marksPath); },
        .mountedRoots = [this] { return roots; },
        .folderRoots = folders,
        .show =
            [this](const auto& stored, unsigned) {
                shown = stored;
                return false;
            },
        .tagsDidChange = [] {},
        .ledgerDidChange = [] {},
        .longestWait = std::chrono::milliseconds(100)}};
};

TEST_F(EditQueueTest, EveryKindOfEditIsInBothFilesAndGoesBackAndForth) {
    const std::vector<qint64> ids{
        addPhotograph(u"a.jpg"_s, 6), addPhotograph(u"b.jpg"_s), addPhotograph(u"c.jpg"_s)};
    change({ids[0]}, {.stars = 2, .flag = true, .tags = support::words("x y"), .rotation = {}});
    change({ids[1]}, {.stars = {}, .flag = {}, .tags = support::words("y"), .rotation = 90});
    change({ids[2]}, {.stars = 5, .flag = true, .tags = QStringList(), .rotation = 180});
    // The photographs that are changed, by their letters.
    const std::tuple<Edit::Change, std::string, const char16_t*> table[] = {
        {Edit::Rate{5}, "ab", u"Rating of 2 Photographs"},
        {Edit::SetFlag{true}, "b", u"Flag of 1 Photograph"},
        {Edit::ToggleFlag{}, "b", u"Flag of 1 Photograph"},
        {Edit::SetTags{support::words("Y x X")}, "abc", u"Tags of 3 Photographs"},
        {Edit::ChangeTags{support::words("z"), support::words("Y")}, "abc",
         u"Tags of 3 Photographs"},
        {Edit::ChangeTags{support::words("y"), {}}, "c", u"Tags of 1 Photograph"},
        {Edit::Turn{-90}, "abc", u"Rotation of 3 Photographs"},
        {Edit::RotateAutomatically{}, "bc", u"Rotation of 2 Photographs"},
        {Edit::ResetRotation{}, "abc", u"Rotation of 3 Photographs"},
        {Edit::RenameTag{u"Y"_s, u"new"_s}, "ab", u"Rename of Tag “Y”"},
        {Edit::RenameTag{u"y"_s, u"X"_s}, "ab", u"Rename of Tag “y”"}, // the two become one
        {Edit::RemoveTag{u"x"_s}, "a", u"Removal of Tag “x”"}};
    const QString before = all();
    for (const auto& [change, changed, name] : table) {
        SCOPED_TRACE(QString::fromUtf16(name).toStdString());
        run(change, ids);
        std::string letters;
        for (const qint64 id : results.back().changed)
            letters += static_cast<char>('a' + (std::ranges::find(ids, id) - ids.begin()));
        std::ranges::sort(letters);
        EXPECT_EQ(letters, changed);
        EXPECT_EQ(queue.undoText(), QString::fromUtf16(name));
        const QString after = all();
        EXPECT_NE(after, before);
        undo();
        EXPECT_EQ(all(), before);
        queue.redo();
        wait();
        EXPECT_EQ(all(), after);
        undo();
    }
    EXPECT_EQ(all(), before);
    run(Edit::Rate{5}, {ids[2]});
    EXPECT_TRUE(results.back().changed.empty()) << "it has them";
    EXPECT_EQ(queue.redoText(), u"Removal of Tag “x”"_s) << "nothing new to take back";
}

TEST_F(EditQueueTest, tagsKeepEveryCharacterAndTheSpellingOfTheList) {
    const qint64 id = addPhotograph(u"a.jpg"_s);
    const QStringList tags{
        u"a, \"b\" 'c'"_s, u"two\nlines"_s, QString(10'000, u'x'),
        QString::fromUtf8("\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d"), u"Lisbon"_s};
    run(Edit::SetTags{tags}, {id});
    EXPECT_EQ(tagsOf(id), tags);
    run(Edit::ChangeTags{{u" LISBON "_s, u"  "_s}, {tags[0]}}, {id});
    EXPECT_EQ(tagsOf(id), tags.mid(1)) << "known by another case, and nothing is no tag";
    run(Edit::RemoveTag{tags[1]}, {});
    EXPECT_EQ(tagsOf(id), tags.mid(2));
    const qint64 other = addPhotograph(u"b.jpg"_s);
    run(Edit::SetTags{{u"Übung"_s, u"day"_s}}, {id});
    run(Edit::SetTags{{u"übung"_s}}, {other});
    EXPECT_EQ(tagsOf(other), QStringList(u"Übung"_s));
    run(Edit::RenameTag{u"day"_s, u" ÜBUNG "_s}, {});
    EXPECT_EQ(tagsOf(id), QStringList(u"Übung"_s)) << "the two become one";
    // As a list may have them that was made elsewhere.
    change({id}, {.stars = {}, .flag = {}, .tags = QStringList(u"École"_s), .rotation = {}});
    change({other}, {.stars = {}, .flag = {}, .tags = QStringList(u"école"_s), .rotation = {}});
    run(Edit::ChangeTags{{}, {u"école"_s}}, {id, other});
    EXPECT_EQ(tagsOf(id) + tagsOf(other), QStringList(u"École"_s));
}

/// Each is decided when its turn comes, and an undo takes back what was on its way before it.
TEST_F(EditQueueTest, whatFollowsQuicklyMeansWhatItSays) {
    const std::vector<qint64> ids{addPhotograph(u"a.jpg"_s), addPhotograph(u"b.jpg"_s)};
    change({ids[0]}, {.stars = {}, .flag = true, .tags = {}, .rotation = {}});
    const auto flags = [this] { return rows(u"select ifnull(FileFlag,0) from ImageFile"_s); };
    queue.run({.fileIds = ids, .change = Edit::ToggleFlag{}});
    queue.run({.fileIds = ids, .change = Edit::ToggleFlag{}});
    EXPECT_EQ(queue.pendingCount(), 4);
    wait();
    EXPECT_EQ(flags(), support::words("0 0")) << "set for the one, then taken from both";
    queue.run({.fileIds = ids, .change = Edit::Rate{3}});
    queue.undo();
    wait();
    EXPECT_EQ(rows(u"select ifnull(FileStars,0) from ImageFile"_s), support::words("0 0"));
    EXPECT_EQ(flags(), support::words("0 0"));
    queue.redo();
    EXPECT_EQ(queue.pendingCount(), 2) << "of as many as the edit";
    wait();
    undo();
    ASSERT_EQ(results.back().way, EditResult::Way::Undone);
    for (int step = 0; step < 150; ++step)
        queue.run({.fileIds = {ids[0]}, .change = Edit::Rate{1 + step % 5}});
    for (int step = 0; step < 150; ++step)
        queue.undo();
    wait();
    EXPECT_EQ(rows(u"select ifnull(FileStars,0) from ImageFile"_s), support::words("0 0"));
}

/// By its row in the ledger, which outlives that of the catalogue.
TEST_F(EditQueueTest, anUndoFindsWhatWasMadeAnewAndLeavesOutWhatIsGone) {
    const std::vector<qint64> ids{
        addPhotograph(u"a.jpg"_s), addPhotograph(u"b.jpg"_s), addPhotograph(u"c.jpg"_s)};
    run(Edit::Rate{4}, ids);
    ASSERT_TRUE(both->executeUpdate(u"update ImageFile set Id = 100 where Id = ?"_s, ids[0]));
    ASSERT_TRUE(both->executeUpdate(u"update Marks set FileId = 100 where FileId = ?"_s, ids[0]));
    ASSERT_TRUE(both->executeUpdate(u"delete from ImageFile where Id = ?"_s, ids[1]));
    undo();
    EXPECT_EQ(results.back().changed, (std::vector{ids[2], qint64(100)}))
        << qPrintable(results.back().reason);
    EXPECT_EQ(results.back().missingCount, 1);
    EXPECT_EQ(rows(u"select FileStars from ImageFile"_s), support::words("0 0"));
}

TEST_F(EditQueueTest, whatCannotBeStoredChangesNothingAndStaysInTheHistory) {
    const qint64 id = addPhotograph(u"a.jpg"_s);
    run(Edit::Rate{4}, {id});
    const QString before = all();
    shown.clear();
    {
        FMDatabase other(marksPath);
        ASSERT_TRUE(other.open() && other.beginTransaction());
        QString told;
        queue.undo();
        queue.run({.fileIds = {id}, .change = Edit::Rate{1}}, [&](const EditResult& result) {
            told = result.reason;
            other.rollback(); // what follows would be stored
        });
        queue.undo(); // is about what failed, and not about what was before
        ASSERT_TRUE(support::spinUntil([&] { return queue.isIdle(); }, std::chrono::seconds(60)));
        EXPECT_TRUE(told.startsWith(u"Another program"_s)) << told.toStdString();
        EXPECT_FALSE(results.back().isStored);
    }
    EXPECT_EQ(all(), before);
    EXPECT_TRUE(shown.empty()) << "memory follows the files";
    undo();
    EXPECT_EQ(rows(u"select FileStars from ImageFile"_s), support::words("0"));
    EXPECT_FALSE(queue.canUndo());
}

TEST_F(EditQueueTest, tagsAreCountedBehindWhatIsOnItsWayAndNobodyStopsReadingForIt) {
    const std::vector<qint64> ids{addPhotograph(u"a.jpg"_s), addPhotograph(u"b.jpg"_s)};
    int begun = 0;
    QObject::connect(&queue, &fileactions::EditRunner::didBegin, [&] { ++begun; });
    queue.run({.fileIds = ids, .change = Edit::SetTags{{u"lake"_s}}});
    QString told;
    queue.countTags([&](const auto& counts) {
        told = counts->front().tag + QString::number(counts->front().photographs);
    });
    EXPECT_EQ(queue.pendingCount(), 2);
    wait();
    EXPECT_EQ(told, u"lake2"_s);
    EXPECT_EQ(begun, 1);
}

/// What is left when the program ends is stored, and whoever brought marks is told.
TEST_F(EditQueueTest, finishStoresWhatIsOnItsWayAndShowsNothing) {
    const qint64 id = addPhotograph(u"a.jpg"_s);
    for (int stars = 1; stars <= 3; ++stars)
        queue.run({.fileIds = {id}, .change = Edit::Rate{stars}});
    QStringList told;
    const auto bring = [&](const QString& tag) {
        queue.store(
            [this, id,
             tag](FMDatabase& files) -> std::variant<fileactions::PerformedEdit, QString> {
                if (tag.isEmpty()) return u"no marks"_s;
                const marks::MarksChange tags{{}, {}, QStringList(tag), {}};
                return fileactions::storeEdit(
                    files, roots,
                    {.photographs = {{.fileIds = {id}, .change = tags}}, .paths = {}});
            },
            1, [&](const QString& reason) { told += reason; });
    };
    bring(u"lake"_s);
    bring({});
    EXPECT_EQ(told, QStringList()) << "nobody waits for it";
    EXPECT_EQ(queue.pendingCount(), 5);
    queue.finish();
    EXPECT_EQ(rows(u"select FileStars from ImageFile"_s), support::words("3"));
    EXPECT_EQ(tagsOf(id), support::words("lake"));
    EXPECT_EQ(told, (QStringList{{}, u"no marks"_s}));
    EXPECT_TRUE(shown.empty());
}

TEST_F(EditQueueTest, marksFromElsewhereThatCannotBeReadAreTold) {
    const qint64 id = addPhotograph(u"a.jpg"_s);
    QStringList told;
    QObject::connect(&queue, &fileactions::EditRunner::didNotReadAgain, [&](const QString& reason) {
        told += reason;
    });
    ASSERT_TRUE(both->executeUpdate(u"alter table Marks rename to Away"_s));
    queue.readAgain({id});
    wait();
    EXPECT_EQ(told.size(), 1);
    EXPECT_TRUE(shown.empty());
}

TEST(ShownPhotographsTest, onlyWhatGroupsSortsOrFiltersByAFieldMovesWithIt) {
    using namespace fileactions;
    using Chain = std::vector<int>;
    const std::tuple<unsigned, Chain, quint64, int, const char16_t*, bool> table[] = {
        {ShownStars, {3, 12}, 0, 1, u"", true},   {ShownStars, {11, 13}, 1, 1, u"a", false},
        {ShownStars, {}, 2, 1, u"", true},        {ShownFlag, {11}, 0, 1, u"", true},
        {ShownFlag, {12, 13}, 2, 1, u"a", false}, {ShownFlag, {}, 3, 2, u"", true},
        {ShownTags, {13}, 0, 1, u"", true},       {ShownTags, {11, 12}, 3, 1, u"a", false},
        {ShownName, {}, 0, 1, u"", true},         {ShownName, {13}, 3, 2, u"", false},
        {ShownName, {}, 0, 2, u"a", true},        {ShownRotation, {11, 12, 13}, 3, 1, u"a", false}};
    for (const auto& [fields, chain, filter, sortType, search, moves] : table) {
        ScanBrowsing browsing;
        browsing.groupTypeArray = std::make_shared<const Chain>(chain);
        browsing.filter = filter;
        browsing.sortType = sortType;
        browsing.searchString = QString::fromUtf16(search);
        EXPECT_EQ(ShownPhotographs::canMove(fields, browsing), moves)
            << fields << ' ' << testing::PrintToString(chain) << filter << sortType;
    }
}

} // namespace
