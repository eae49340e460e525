#include "support/Rows.h"

#include <sqlite3.h>

namespace {

struct FMDatabaseTest : ::testing::Test {
    void SetUp() override {
        ASSERT_TRUE(_db.executeUpdate(u"create table T (Id INTEGER PRIMARY KEY, V)"_s));
    }

    qint64 count() {
        return support::rowsOf(_db, u"select count(*) from T"_s).value(0, u"-1"_s).toLongLong();
    }

    /// The texts of all statements that are prepared.
    std::set<QByteArray> statements() {
        std::set<QByteArray> texts;
        sqlite3_stmt* statement = nullptr;
        while ((statement = sqlite3_next_stmt(_db.sqliteHandle(), statement)))
            texts.insert(sqlite3_sql(statement));
        return texts;
    }

    support::Database _db;
};

TEST_F(FMDatabaseTest, closeTakesStatementsAndTransactionWithItThenEverythingFails) {
    EXPECT_TRUE(_db.open() && _db.beginTransaction());
    sqlite3_stmt* foreign = nullptr;
    ASSERT_EQ(sqlite3_prepare_v2(_db.sqliteHandle(), "select 1", -1, &foreign, nullptr), SQLITE_OK);
    EXPECT_TRUE(_db.close() && _db.close()) << "twice is fine";
    EXPECT_EQ(_db.sqliteHandle(), nullptr);
    EXPECT_FALSE(_db.inTransaction() || _db.executeUpdate(u"create table A (B)"_s));
    EXPECT_FALSE(_db.executeQuery(u"select 1"_s).next());
    EXPECT_FALSE(_db.beginTransaction() || _db.rollback() || _db.hadError());
    EXPECT_EQ(_db.lastInsertRowId() + _db.changes(), 0);
}

TEST_F(FMDatabaseTest, fileThatIsMissingOrNoDatabaseSaysSoAndIsLeftAsItIs) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"missing/files.db"_s);
    FMDatabase db(path);
    EXPECT_FALSE(db.open() || db.open());
    EXPECT_EQ(db.lastErrorCode(), SQLITE_CANTOPEN);
    EXPECT_FALSE(db.lastErrorMessage().isEmpty());
    const QByteArray content = QByteArray("this is a letter, not a database\n").repeated(200);
    support::writeFile(path, content);
    EXPECT_TRUE(db.open() && !db.hadError());
    EXPECT_FALSE(db.executeQuery(u"select * from sqlite_master"_s).next());
    EXPECT_EQ(db.lastErrorCode(), SQLITE_NOTADB);
    EXPECT_TRUE(db.isFileDamaged() && db.hadError());
    EXPECT_FALSE(db.executeUpdate(u"create table A (B)"_s) || db.beginTransaction());
    EXPECT_EQ(support::readFile(path), content);
}

TEST_F(FMDatabaseTest, failedInsertLeavesConnectionUsable) {
    const QString insert = u"insert into T values (?,?)"_s;
    for (const bool cached : {false, true}) {
        _db.setShouldCacheStatements(cached);
        const qint64 id = cached ? 2 : 1;
        EXPECT_TRUE(_db.executeUpdate(insert, id, u"a"_s));
        EXPECT_TRUE(_db.lastInsertRowId() == id && _db.changes() == 1);
        EXPECT_FALSE(_db.executeUpdate(insert, id, u"b"_s));
        EXPECT_EQ(_db.lastErrorCode(), SQLITE_CONSTRAINT);
        EXPECT_TRUE(_db.hadError() && !_db.isFileDamaged());
        EXPECT_FALSE(_db.executeUpdate(u"select V from T"_s)) << "a row is no success";
        FMResultSet rows = _db.executeQuery(u"select V from T"_s);
        EXPECT_TRUE(rows.next() && _db.lastErrorCode() == SQLITE_ROW && !_db.hadError());
        EXPECT_EQ(count(), id);
    }
}

TEST_F(FMDatabaseTest, aTransactionThatSqliteEndedByItselfIsNoLongerCounted) {
    EXPECT_TRUE(_db.executeUpdate(u"insert into T values (1, 1)"_s));
    ASSERT_TRUE(_db.beginTransaction() && _db.inTransaction() && !_db.beginTransaction());
    EXPECT_FALSE(_db.executeUpdate(u"insert or rollback into T values (1, 2)"_s));
    EXPECT_FALSE(_db.commit() || _db.inTransaction());
    EXPECT_TRUE(_db.beginTransaction());
}

TEST_F(FMDatabaseTest, callWithinARunningCallIsRefusedButCursorsAreNoRunningCall) {
    std::vector<bool> ran;
    std::function<void()> again = [&] {
        const bool updated = _db.executeUpdate(u"update T set V = 5 where Id = -1"_s);
        const bool queried = _db.executeQuery(u"select 1"_s).next();
        ran.push_back(updated || queried || _db.lastInsertRowId() != 0);
    };
    const auto call = [](sqlite3_context* context, int, sqlite3_value**) {
        (*static_cast<std::function<void()>*>(sqlite3_user_data(context)))();
        sqlite3_result_int(context, 1);
    };
    sqlite3_create_function(
        _db.sqliteHandle(), "callAgain", 0, SQLITE_UTF8, &again, call, nullptr, nullptr);
    EXPECT_TRUE(_db.executeUpdate(u"insert into T (V) values (callAgain())"_s));
    EXPECT_TRUE(_db.executeQuery(u"select callAgain() from T"_s).next());
    EXPECT_EQ(ran, (std::vector{false, true}));
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

    // Values bound before are not there any more.
    const QString two = u"select ?, ?"_s;
    ASSERT_TRUE(_db.executeQuery(two, 1, 2, 3).next());
    FMResultSet half = _db.executeQuery(two, 1);
    ASSERT_TRUE(half.next());
    EXPECT_TRUE(half.columnIndexIsNull(1));
    half.close();

    ASSERT_TRUE(_db.executeUpdate(u"drop table T"_s));
    EXPECT_FALSE(_db.executeQuery(select, 1).next());
    ASSERT_TRUE(_db.executeUpdate(u"create table T (Id INTEGER, V, W)"_s));
    ASSERT_TRUE(_db.executeUpdate(u"insert into T values (1, 8, 9)"_s));
    FMResultSet held = _db.executeQuery(select, 1);
    ASSERT_TRUE(held.next());
    for (int value = 0; value < 400; ++value)
        ASSERT_EQ(support::rowsOf(_db, u"select %1"_s.arg(value)).join(u' ').toInt(), value);
    EXPECT_EQ(statements().size(), 128U);
    EXPECT_TRUE(statements().contains(select.toUtf8())) << "it was used most";
    _db.setShouldCacheStatements(false);
    EXPECT_EQ(statements(), std::set{select.toUtf8()}) << "under the cursor";
    EXPECT_EQ(held.intForColumnIndex(0), 8);
    EXPECT_FALSE(held.next());
    EXPECT_TRUE(statements().empty());
}

#ifndef QT_NO_DEBUG
TEST_F(FMDatabaseTest, connectionGoesToAnotherThreadOnlyWhileNothingIsOpen) {
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    const auto elsewhere = [this] { std::thread([this] { count(); }).join(); };
    elsewhere();
    EXPECT_EQ(count(), 0);
    elsewhere();
    ASSERT_TRUE(_db.beginTransaction());
    EXPECT_DEATH(elsewhere(), "two threads use the connection");
    ASSERT_TRUE(_db.commit());
    elsewhere();
    FMResultSet rows = _db.executeQuery(u"select 1"_s);
    EXPECT_DEATH(elsewhere(), "two threads use the connection");
    EXPECT_DEATH(std::thread([&] { rows.close(); }).join(), "two threads use the connection");
    rows.close();
    elsewhere();
}
#endif

} // namespace
