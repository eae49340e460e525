#include "FMDB/FMDatabase.h"

#include "support/Support.h"

#include <sqlite3.h>

namespace {

struct FMDatabaseTest : ::testing::Test {
    void SetUp() override {
        ASSERT_TRUE(_db.open());
        ASSERT_TRUE(_db.executeUpdate(u"create table T (Id INTEGER PRIMARY KEY, V)"_s));
    }

    qint64 count() {
        FMResultSet rows = _db.executeQuery(u"select count(*) from T"_s);
        return rows.next() ? rows.longLongIntForColumnIndex(0) : -1;
    }

    FMDatabase _db{QString()};
};

TEST_F(FMDatabaseTest, closedConnectionAnswersFailureToEverything) {
    EXPECT_TRUE(_db.open() && _db.close() && _db.close()) << "twice is fine";
    EXPECT_FALSE(
        _db.executeUpdate(u"create table A (B)"_s) || _db.executeQuery(u"select 1"_s).next());
    EXPECT_FALSE(_db.beginTransaction() || _db.rollback());
    EXPECT_EQ(_db.lastInsertRowId() + _db.changes(), 0);
    EXPECT_FALSE(_db.hadError());
}

TEST_F(FMDatabaseTest, unopenableFileSaysWhyAndCanBeTriedAgain) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"missing/files.db"_s);
    const auto db = FMDatabase::databaseWithPath(path);
    EXPECT_FALSE(db->open());
    EXPECT_FALSE(db->open());
    EXPECT_EQ(db->lastErrorCode(), SQLITE_CANTOPEN);
    EXPECT_FALSE(db->lastErrorMessage().isEmpty());
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).absolutePath()));
    EXPECT_TRUE(db->open());
    EXPECT_FALSE(db->hadError());
}

TEST_F(FMDatabaseTest, fileThatIsNoDatabaseFailsAndIsLeftAsItIs) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"files.db"_s);
    const QByteArray content = QByteArray("this is a letter, not a database\n").repeated(200);
    support::writeFile(path, content);
    for (const bool cached : {false, true}) {
        FMDatabase db(path);
        db.setShouldCacheStatements(cached);
        EXPECT_TRUE(db.open());
        EXPECT_FALSE(db.executeQuery(u"select * from sqlite_master"_s).next());
        EXPECT_EQ(db.lastErrorCode(), SQLITE_NOTADB);
        EXPECT_FALSE(db.executeUpdate(u"create table A (B)"_s));
        EXPECT_FALSE(db.beginTransaction());
    }
    EXPECT_EQ(support::readFile(path), content);
}

TEST_F(FMDatabaseTest, failedInsertLeavesConnectionUsable) {
    const QString insert = u"insert into T values (?,?)"_s;
    for (const bool cached : {false, true}) {
        _db.setShouldCacheStatements(cached);
        const qint64 id = cached ? 2 : 1;
        EXPECT_TRUE(_db.executeUpdate(insert, id, u"a"_s));
        EXPECT_EQ(_db.lastInsertRowId(), id);
        EXPECT_EQ(_db.changes(), 1);
        EXPECT_FALSE(_db.executeUpdate(insert, id, u"b"_s));
        EXPECT_EQ(_db.lastErrorCode(), SQLITE_CONSTRAINT);
        EXPECT_EQ(count(), id);
    }
}

TEST_F(FMDatabaseTest, transactionsCommitRollBackAndDoNotNest) {
    EXPECT_TRUE(_db.beginTransaction());
    EXPECT_TRUE(_db.inTransaction());
    EXPECT_FALSE(_db.beginTransaction());
    EXPECT_TRUE(_db.executeUpdate(u"insert into T (V) values (1)"_s));
    EXPECT_TRUE(_db.rollback());
    EXPECT_FALSE(_db.inTransaction());
    EXPECT_EQ(count(), 0);
    EXPECT_FALSE(_db.commit());
    EXPECT_TRUE(_db.beginTransaction());
    EXPECT_TRUE(_db.executeUpdate(u"insert into T (V) values (1)"_s));
    EXPECT_TRUE(_db.commit());
    EXPECT_FALSE(_db.inTransaction());
    EXPECT_EQ(count(), 1);
    // One that SQLite ended by itself is no longer counted.
    ASSERT_TRUE(_db.beginTransaction());
    EXPECT_FALSE(_db.executeUpdate(u"insert or rollback into T values (1, 2)"_s));
    EXPECT_FALSE(_db.commit() || _db.inTransaction());
    EXPECT_TRUE(_db.beginTransaction());
}

TEST_F(FMDatabaseTest, savePointsWithAnyNameUndoWhatFollowedThem) {
    const QString name = u"it's \"one\""_s;
    FMError error;
    EXPECT_TRUE(_db.startSavePointWithName(name, &error));
    EXPECT_TRUE(_db.executeUpdate(u"insert into T (V) values (1)"_s));
    EXPECT_TRUE(_db.rollbackToSavePointWithName(name, &error));
    EXPECT_EQ(count(), 0);
    EXPECT_TRUE(_db.releaseSavePointWithName(name, &error));
    EXPECT_EQ(error.code, 0);
    EXPECT_FALSE(_db.releaseSavePointWithName(name, &error));
    EXPECT_EQ(error.code, SQLITE_ERROR);
    EXPECT_FALSE(error.message.isEmpty());
}

struct Reentry {
    FMDatabase* db;
    int refused = 0;
    int ran = 0;
};

void callAgain(sqlite3_context* context, int, sqlite3_value**) {
    auto* reentry = static_cast<Reentry*>(sqlite3_user_data(context));
    const bool updated = reentry->db->executeUpdate(u"update T set V = 5 where Id = -1"_s);
    const bool queried = reentry->db->executeQuery(u"select 1"_s).next();
    const bool answered = reentry->db->lastInsertRowId() != 0;
    ++(updated || queried || answered ? reentry->ran : reentry->refused);
    sqlite3_result_int(context, 1);
}

TEST_F(FMDatabaseTest, callWithinARunningCallIsRefusedButCursorsAreNoRunningCall) {
    Reentry reentry{&_db};
    ASSERT_EQ(
        sqlite3_create_function(
            _db.sqliteHandle(), "callAgain", 0, SQLITE_UTF8, &reentry, callAgain, nullptr, nullptr),
        SQLITE_OK);
    EXPECT_TRUE(_db.executeUpdate(u"insert into T (V) values (callAgain())"_s));
    EXPECT_EQ(reentry.refused, 1);
    EXPECT_EQ(reentry.ran, 0);
    EXPECT_TRUE(_db.executeQuery(u"select callAgain() from T"_s).next());
    EXPECT_EQ(reentry.ran, 1);
    EXPECT_EQ(count(), 1);
}

TEST_F(FMDatabaseTest, cacheGivesTheSameResultsWithNestedCursorsChangedTablesAndManyTexts) {
    _db.setShouldCacheStatements(true);
    for (int value = 1; value <= 3; ++value)
        ASSERT_TRUE(_db.executeUpdate(u"insert into T (V) values (?)"_s, value));
    const QString select = u"select V from T where V >= ? order by V"_s;
    QStringList pairs;
    FMResultSet outer = _db.executeQuery(select, 1);
    while (outer.next()) {
        FMResultSet inner = _db.executeQuery(select, outer.intForColumnIndex(0));
        while (inner.next())
            pairs.append(u"%1%2"_s.arg(outer.intForColumnIndex(0)).arg(inner.intForColumnIndex(0)));
    }
    EXPECT_EQ(pairs.join(u' '), u"11 12 13 22 23 33"_s);

    ASSERT_TRUE(_db.executeUpdate(u"drop table T"_s));
    EXPECT_FALSE(_db.executeQuery(select, 1).next());
    ASSERT_TRUE(_db.executeUpdate(u"create table T (Id INTEGER, V, W)"_s));
    ASSERT_TRUE(_db.executeUpdate(u"insert into T values (1, 8, 9)"_s));
    FMResultSet held = _db.executeQuery(select, 1);
    ASSERT_TRUE(held.next());
    for (int value = 0; value < 400; ++value) {
        FMResultSet row = _db.executeQuery(u"select %1"_s.arg(value));
        ASSERT_TRUE(row.next());
        ASSERT_EQ(row.intForColumnIndex(0), value);
    }
    _db.setShouldCacheStatements(false);
    EXPECT_EQ(held.intForColumnIndex(0), 8);
    EXPECT_FALSE(held.next());
}

} // namespace
