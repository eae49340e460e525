#include "catalogue/MarksSupport.h"

using marks::FileState;

namespace {

const marks::MarksChange fourStars{.stars = 4, .flag = {}, .tags = {}, .rotation = {}};
const QStringList places{u"Lisbon"_s, u"night, \"late\""_s};
const marks::MarksChange all{.stars = 5, .flag = true, .tags = places, .rotation = 90};

void copy(const QString& from, const QString& to) {
    QFile::remove(to);
    ASSERT_TRUE(QFile::copy(from, to));
}

} // namespace

TEST_F(MarksTest, WhatTheLedgerTookItGivesBackToRowsThatLostIt) {
    EXPECT_EQ(
        rows(u"pragma main.journal_mode"_s) + rows(u"pragma marks.journal_mode"_s),
        support::words("delete delete"))
        << "SQLite commits two files at once with rollback journals only";
    const qint64 plain = addPhotograph(u"a.jpg"_s);
    const qint64 turned = addPhotograph(u"b.jpg"_s, 6);
    const qint64 other = addPhotograph(u"c.jpg"_s, 6);
    change({plain, turned}, all);
    change({other}, fourStars);
    // "LISBON" is the tag that there is already, and each is named once.
    const QStringList tags = support::words("LISBON lisbon");
    change({other}, {.stars = {}, .flag = {}, .tags = tags, .rotation = {}});
    const QStringList expected{u"5|1|1,2|90"_s, u"5|1|1,2|90"_s, u"4|0|1|-90"_s};
    EXPECT_EQ(inCatalogue(), expected);
    EXPECT_EQ(
        inLedger().join(u' '), uR"(1|trip/a.jpg|5|1|["Lisbon","night, \"late\""]|90 )"
                               R"(2|trip/b.jpg|5|1|["Lisbon","night, \"late\""]|90 )"
                               R"(3|trip/c.jpg|4|0|["Lisbon"]|-)"_s)
        << "the file's own orientation is no rotation of the user's";

    ASSERT_TRUE(both->executeUpdate(
        u"update ImageFile set FileStars = 0,FileFlag = 0,Tag = null,RotateAngle = 7"_s));
    ASSERT_TRUE(both->executeUpdate(u"delete from Tags where Id = 1"_s));
    ASSERT_TRUE(marks::MarksLedger(*both).giveToCatalogue(std::array{plain, turned, other}));
    EXPECT_EQ(inCatalogue(), (QStringList{u"5|1|3,2|90"_s, u"5|1|3,2|90"_s, u"4|0|3|-90"_s}));
}

/// A rotation to the angle 0 is one, where the file says another.
TEST_F(MarksTest, ARotationIsTheUsersWhereTheFileSaysAnotherAngle) {
    const qint64 turned = addPhotograph(u"a.jpg"_s, 6);
    for (const auto& [angle, inLedgerThen] :
         std::map<int, QString>{{0, u"0"_s}, {270, u"-"_s}, {180, u"180"_s}}) {
        change({turned}, {.stars = {}, .flag = {}, .tags = {}, .rotation = std::optional(angle)});
        EXPECT_EQ(inLedger().join(u' ').section(u'|', -1), inLedgerThen) << angle;
        EXPECT_EQ(inCatalogue(), QStringList{u"0|0||%1"_s.arg(angle)});
    }
    change({turned}, {.stars = {}, .flag = {}, .tags = {}, .rotation = std::optional<int>()});
    EXPECT_EQ(inCatalogue(), QStringList{u"0|0||-90"_s});
}

TEST_F(MarksTest, OfTwoFilesTheOneWithFewerEditsTakesTheMarksOfTheOther) {
    const qint64 one = addPhotograph(u"a.jpg"_s);
    const qint64 two = addPhotograph(u"b.jpg"_s);
    // Marks that are older than the ledger.
    ASSERT_TRUE(both->executeUpdate(u"update ImageFile set FileStars = 2"_s));
    ASSERT_TRUE(bind());
    EXPECT_EQ(rows(u"select FileId,Stars from Marks"_s), support::words("1|2 2|2"));
    both.reset();
    copy(filesPath, filesPath + u".old"_s);
    copy(marksPath, marksPath + u".old"_s);
    open();
    change({one}, {.stars = 0, .flag = {}, .tags = {}, .rotation = {}});
    change({two}, fourStars);
    const qint64 three = addPhotograph(u"c.jpg"_s);
    change({three}, all);
    const QStringList edited = support::words("1|0 2|4");
    for (const QString& path : {filesPath, marksPath}) {
        both.reset();
        copy(path, path + u".new"_s);
        copy(path + u".old"_s, path);
        open();
        ASSERT_TRUE(bind());
        EXPECT_EQ(rows(u"select Id,FileStars from ImageFile where Id < 3"_s), edited);
        EXPECT_EQ(rows(u"select FileId,Stars from Marks where FileId < 3"_s), edited);
        // An older copy gives the id once more.
        EXPECT_TRUE(path != filesPath || addPhotograph(u"d.jpg"_s) == three);
        EXPECT_EQ(
            rows(u"select RelativePath from Marks where FileId = 3"_s).join(u' '),
            path == filesPath ? u""_s : u"trip/c.jpg"_s);
        both.reset();
        copy(path + u".new"_s, path);
        open();
    }
}

TEST_F(MarksTest, ACatalogueBegunAnewHasNoneOfThePhotographsThatItsIdsName) {
    change({addPhotograph(u"a.jpg"_s), addPhotograph(u"b.jpg"_s)}, fourStars);
    both.reset();
    QFile::remove(filesPath);
    folderId = 0;
    open();
    addPhotograph(u"other.jpg"_s); // has the id of a.jpg
    ASSERT_TRUE(both->executeUpdate(u"update ImageFile set FileFlag = 1"_s));
    addPhotograph(u"plain.jpg"_s); // and this one that of b.jpg
    ASSERT_TRUE(bind());
    ASSERT_TRUE(bind()) << "and only once";
    EXPECT_EQ(
        inLedger(), support::words("-|trip/a.jpg|4|0|[]|- -|trip/b.jpg|4|0|[]|- "
                                   "1|trip/other.jpg|0|1|[]|-"));
}

TEST_F(MarksTest, ALedgerCutAnywhereIsReplacedByTheNewestGoodSnapshotAndTheCatalogue) {
    const qint64 gone = addPhotograph(u"gone.jpg"_s);
    change({gone}, all);
    const QDateTime noon(QDate(2026, 5, 1), QTime(12, 0), Qt::UTC);
    support::Database ledger(marksPath);
    ASSERT_TRUE(marks::takeSnapshot(ledger, snapshots, noon));
    ASSERT_TRUE(marks::takeSnapshot(ledger, snapshots, noon.addSecs(3600)) && ledger.close());
    EXPECT_EQ(QDir(snapshots).entryList(QDir::Files), QStringList{u"marks-2026-05-01-120000.db"_s})
        << "none where nothing changed";
    support::writeFile(snapshots + u"/marks-2026-06-01-120000.db"_s, "no database");
    const qint64 later = addPhotograph(u"later.jpg"_s);
    change({later}, fourStars);
    ASSERT_TRUE(both->executeUpdate(u"delete from ImageFile where Id = ?"_s, gone));
    const QStringList expected = inLedger();
    both.reset();
    const QByteArray whole = support::readFile(marksPath);
    for (qsizetype length = 0; length < whole.size(); length += 1536) {
        support::writeFile(marksPath, whole.left(length));
        const QString told = marks::settleLedger(marksPath, snapshots);
        EXPECT_TRUE(told.contains(u"2026-05-01-120000")) << told.toStdString();
        open();
        ASSERT_TRUE(bind());
        EXPECT_EQ(inLedger().replaceInStrings(u"-|trip/gone"_s, u"1|trip/gone"_s), expected)
            << length;
    }
    EXPECT_EQ(marks::stateOfLedger(marksPath + u".damaged"_s), FileState::Damaged);
}

TEST_F(MarksTest, ALockedLedgerIsLeftAsItIsAndNobodyWaitsForEver) {
    const qint64 one = addPhotograph(u"a.jpg"_s);
    change({one}, fourStars);
    const QStringList before = inLedger() + inCatalogue();
    support::Database other(marksPath);
    ASSERT_TRUE(other.beginTransaction());
    EXPECT_NE(marks::settleLedger(marksPath, snapshots), QString());
    EXPECT_FALSE(FMTransaction(*both).isOpen());
    other.rollback();
    EXPECT_EQ(marks::stateOfLedger(marksPath), FileState::Good);
    EXPECT_EQ(inLedger() + inCatalogue(), before);
}

TEST(MarksSnapshotsTest, theLastTenStayAndThenOneForEachMonth) {
    QStringList names;
    for (int day = 0; day < 100; ++day)
        names.append(QDate(2026, 1, 1).addDays(day).toString(u"'marks-'yyyy-MM-dd'-000000.db'"));
    const QStringList gone = marks::dispensableSnapshots(names);
    QStringList kept;
    for (const QString& name : names)
        if (!gone.contains(name)) kept.append(name.mid(6, 10));
    EXPECT_EQ(
        kept.join(u' ').toStdString(),
        "2026-01-31 2026-02-28 2026-03-31 2026-04-01 2026-04-02 2026-04-03 2026-04-04 2026-04-05 "
        "2026-04-06 2026-04-07 2026-04-08 2026-04-09 2026-04-10");
    EXPECT_EQ(marks::dispensableSnapshots(names.mid(90)), QStringList());
}
