#include "FMDB/FMDatabase.h"

#include "platform/Places.h"
#include "support/Support.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sqlite3.h>

namespace {

class FMDatabaseTest : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(_db.open());
        ASSERT_TRUE(
            _db.executeUpdate(QStringLiteral("create table T (Id INTEGER PRIMARY KEY, V)")));
    }

    qint64 count() {
        FMResultSet rows = _db.executeQuery(QStringLiteral("select count(*) from T"));
        return rows.next() ? rows.longLongIntForColumnIndex(0) : -1;
    }

    FMDatabase _db{QString()};
};

TEST_F(FMDatabaseTest, openTwiceKeepsTheHandleAndClosingTwiceIsFine) {
    sqlite3* handle = _db.sqliteHandle();
    EXPECT_TRUE(_db.open());
    EXPECT_EQ(_db.sqliteHandle(), handle);
    EXPECT_TRUE(_db.close());
    EXPECT_TRUE(_db.close());
    EXPECT_FALSE(_db.databaseExists());
}

TEST_F(FMDatabaseTest, closedConnectionAnswersFailureToEverything) {
    FMDatabase closed{QString()};
    EXPECT_FALSE(closed.executeUpdate(QStringLiteral("create table A (B)")));
    EXPECT_FALSE(closed.executeQuery(QStringLiteral("select 1")).next());
    EXPECT_FALSE(closed.beginTransaction());
    EXPECT_FALSE(closed.rollback());
    EXPECT_EQ(closed.lastInsertRowId(), 0);
    EXPECT_EQ(closed.changes(), 0);
    EXPECT_FALSE(closed.hadError());
}

TEST_F(FMDatabaseTest, unopenableFileSaysWhyAndCanBeTriedAgain) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("missing/files.db"));
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
    const QString path = folder.filePath(QStringLiteral("files.db"));
    const QByteArray content = QByteArray("this is a letter, not a database\n").repeated(200);
    support::writeFile(path, content);
    for (const bool cached : {false, true}) {
        FMDatabase db(path);
        db.setShouldCacheStatements(cached);
        EXPECT_TRUE(db.open());
        EXPECT_FALSE(db.executeQuery(QStringLiteral("select * from sqlite_master")).next());
        EXPECT_EQ(db.lastErrorCode(), SQLITE_NOTADB);
        EXPECT_FALSE(db.executeUpdate(QStringLiteral("create table A (B)")));
        EXPECT_FALSE(db.beginTransaction());
    }
    EXPECT_EQ(support::readFile(path), content);
}

TEST_F(FMDatabaseTest, updateThatReturnsRowsOrIsNoStatementFails) {
    EXPECT_FALSE(_db.executeUpdate(QStringLiteral("select 1")));
    EXPECT_TRUE(_db.executeUpdate(QStringLiteral("select 1 where 0")));
    EXPECT_FALSE(_db.executeUpdate(QStringLiteral("insert into Nowhere values (1)")));
    EXPECT_TRUE(_db.hadError());
    EXPECT_EQ(_db.lastError().domain, QStringLiteral("FMDatabase"));
    EXPECT_EQ(_db.lastErrorMessage(), QStringLiteral("no such table: Nowhere"));
    EXPECT_FALSE(_db.executeUpdate(QStringLiteral("-- nothing")));
    EXPECT_FALSE(_db.executeUpdate(QString()));
    EXPECT_FALSE(_db.executeQuery(QStringLiteral("  ")).isValid());
}

TEST_F(FMDatabaseTest, failedInsertLeavesConnectionUsable) {
    const QString insert = QStringLiteral("insert into T values (?,?)");
    for (const bool cached : {false, true}) {
        _db.setShouldCacheStatements(cached);
        const qint64 id = cached ? 2 : 1;
        EXPECT_TRUE(_db.executeUpdate(insert, id, QStringLiteral("a")));
        EXPECT_EQ(_db.lastInsertRowId(), id);
        EXPECT_EQ(_db.changes(), 1);
        EXPECT_FALSE(_db.executeUpdate(insert, id, QStringLiteral("b")));
        EXPECT_EQ(_db.lastErrorCode(), SQLITE_CONSTRAINT);
        EXPECT_EQ(count(), id);
    }
}

TEST_F(FMDatabaseTest, missingArgumentsAreNullAndSurplusOnesIgnoredAlsoWithCache) {
    _db.setShouldCacheStatements(true);
    const QString insert = QStringLiteral("insert into T (V) values (?)");
    EXPECT_TRUE(_db.executeUpdate(insert, QStringLiteral("kept?")));
    EXPECT_TRUE(_db.executeUpdate(insert));
    EXPECT_TRUE(_db.executeUpdate(QStringLiteral("insert into T (V) values (7)"), 1, 2, 3));
    FMResultSet rows = _db.executeQuery(QStringLiteral("select V from T order by Id"));
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.stringForColumnIndex(0), QStringLiteral("kept?"));
    ASSERT_TRUE(rows.next());
    EXPECT_TRUE(rows.columnIndexIsNull(0));
    ASSERT_TRUE(rows.next());
    EXPECT_EQ(rows.intForColumnIndex(0), 7);
    EXPECT_FALSE(rows.next());
}

TEST_F(FMDatabaseTest, transactionsCommitRollBackAndDoNotNest) {
    EXPECT_TRUE(_db.beginTransaction());
    EXPECT_TRUE(_db.inTransaction());
    EXPECT_FALSE(_db.beginTransaction());
    EXPECT_TRUE(_db.executeUpdate(QStringLiteral("insert into T (V) values (1)")));
    EXPECT_TRUE(_db.rollback());
    EXPECT_FALSE(_db.inTransaction());
    EXPECT_EQ(count(), 0);
    EXPECT_FALSE(_db.commit());
    EXPECT_TRUE(_db.beginTransaction());
    EXPECT_TRUE(_db.executeUpdate(QStringLiteral("insert into T (V) values (1)")));
    EXPECT_TRUE(_db.commit());
    EXPECT_FALSE(_db.inTransaction());
    EXPECT_EQ(count(), 1);
}

TEST_F(FMDatabaseTest, transactionThatSQLiteEndedByItselfIsNoLongerCounted) {
    ASSERT_TRUE(_db.executeUpdate(QStringLiteral("insert into T values (1, 1)")));
    ASSERT_TRUE(_db.beginTransaction());
    EXPECT_FALSE(_db.executeUpdate(QStringLiteral("insert or rollback into T values (1, 2)")));
    EXPECT_FALSE(_db.commit());
    EXPECT_FALSE(_db.inTransaction());
    EXPECT_TRUE(_db.beginTransaction());
}

TEST_F(FMDatabaseTest, savePointsWithAnyNameUndoWhatFollowedThem) {
    const QString name = QStringLiteral("it's \"one\"");
    FMError error;
    EXPECT_TRUE(_db.startSavePointWithName(name, &error));
    EXPECT_TRUE(_db.executeUpdate(QStringLiteral("insert into T (V) values (1)")));
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
    const bool updated =
        reentry->db->executeUpdate(QStringLiteral("update T set V = 5 where Id = -1"));
    const bool queried = reentry->db->executeQuery(QStringLiteral("select 1")).next();
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
    EXPECT_TRUE(_db.executeUpdate(QStringLiteral("insert into T (V) values (callAgain())")));
    EXPECT_EQ(reentry.refused, 1);
    EXPECT_EQ(reentry.ran, 0);
    EXPECT_TRUE(_db.executeQuery(QStringLiteral("select callAgain() from T")).next());
    EXPECT_EQ(reentry.ran, 1);
    EXPECT_EQ(count(), 1);
}

TEST_F(FMDatabaseTest, cacheGivesTheSameResultsWithNestedCursorsChangedTablesAndManyTexts) {
    _db.setShouldCacheStatements(true);
    for (int value = 1; value <= 3; ++value)
        ASSERT_TRUE(_db.executeUpdate(QStringLiteral("insert into T (V) values (?)"), value));
    const QString select = QStringLiteral("select V from T where V >= ? order by V");
    QStringList pairs;
    FMResultSet outer = _db.executeQuery(select, 1);
    while (outer.next()) {
        FMResultSet inner = _db.executeQuery(select, outer.intForColumnIndex(0));
        while (inner.next())
            pairs.append(QStringLiteral("%1%2")
                             .arg(outer.intForColumnIndex(0))
                             .arg(inner.intForColumnIndex(0)));
    }
    EXPECT_EQ(pairs.join(u' '), QStringLiteral("11 12 13 22 23 33"));

    ASSERT_TRUE(_db.executeUpdate(QStringLiteral("drop table T")));
    EXPECT_FALSE(_db.executeQuery(select, 1).next());
    ASSERT_TRUE(_db.executeUpdate(QStringLiteral("create table T (Id INTEGER, V, W)")));
    ASSERT_TRUE(_db.executeUpdate(QStringLiteral("insert into T values (1, 8, 9)")));
    FMResultSet held = _db.executeQuery(select, 1);
    ASSERT_TRUE(held.next());
    for (int value = 0; value < 400; ++value) {
        FMResultSet row = _db.executeQuery(QStringLiteral("select %1").arg(value));
        ASSERT_TRUE(row.next());
        ASSERT_EQ(row.intForColumnIndex(0), value);
    }
    _db.setShouldCacheStatements(false);
    EXPECT_EQ(held.intForColumnIndex(0), 8);
    EXPECT_FALSE(held.next());
}

TEST(FMDatabasePlaceTest, fileNamesLieInTheDataFolderThatIsMadeWhenMissing) {
    const QTemporaryDir folder;
    const QString profile = folder.filePath(QStringLiteral("a/b"));
    platform::Places::setProfile(profile);
    const auto db = FMDatabase::databaseWithFileName(QStringLiteral("files.db"));
    platform::Places::setProfile(QString());
    EXPECT_EQ(db->databasePath(), profile + QStringLiteral("/files.db"));
    EXPECT_TRUE(db->open());
    EXPECT_TRUE(QFile::exists(db->databasePath()));
}

} // namespace
