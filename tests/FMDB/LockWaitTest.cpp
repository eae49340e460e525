#include "FMDB/FMDatabase.h"

#include "support/Support.h"

#include <sqlite3.h>

namespace {

/// Ends the holder's transaction once the waiting connection was refused this often.
struct Patience {
    FMDatabase& holder;
    int refusals = 0;
};

int refuse(void* context, int) {
    auto* patience = static_cast<Patience*>(context);
    if (++patience->refusals == 50) {
        EXPECT_TRUE(patience->holder.commit());
    }
    return 0;
}

bool selectRow(FMDatabase& db) {
    FMResultSet row = db.executeQuery(u"select V from T"_s);
    return row.next() && row.intForColumnIndex(0) == 1;
}

bool insertRow(FMDatabase& db) {
    return db.executeUpdate(u"insert into T values (2)"_s);
}

TEST(LockWaitTest, anExclusiveTransactionElsewhereIsWaitedForNotFailedOn) {
    // A connection that has not read the tables yet meets the lock when it prepares a statement,
    // otherwise when it steps.
    const std::pair<bool, bool (*)(FMDatabase&)> calls[] = {
        {false, selectRow}, {true, selectRow}, {true, insertRow}, {true, [](FMDatabase& db) {
                                                                       return db.beginTransaction();
                                                                   }}};
    for (const auto& [knowsTables, call] : calls) {
        const QTemporaryDir folder;
        FMDatabase holder(folder.filePath(u"files.db"_s));
        FMDatabase db(holder.databasePath());
        ASSERT_TRUE(holder.open() && db.open());
        ASSERT_TRUE((knowsTables ? db : holder).executeUpdate(u"create table T (V)"_s));
        ASSERT_TRUE(
            holder.beginTransaction() && holder.executeUpdate(u"insert into T values (1)"_s));
        Patience patience{holder};
        // SQLite asks this handler each time it meets the lock; it never makes SQLite itself wait.
        sqlite3_busy_handler(db.sqliteHandle(), refuse, &patience);
        EXPECT_TRUE(call(db));
        EXPECT_GE(patience.refusals, 50);
        // The holder's row was committed before this connection went on.
        FMResultSet row = db.executeQuery(u"select count(*) from T where V = 1"_s);
        ASSERT_TRUE(row.next());
        EXPECT_EQ(row.intForColumnIndex(0), 1);
    }
}

TEST(LockLimitTest, limitOfRetriesGivesUpInsteadOfWaiting) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(u"files.db"_s);
    FMDatabase holder(path);
    FMDatabase waiter(path);
    ASSERT_TRUE(holder.open() && waiter.open());
    ASSERT_TRUE(holder.executeUpdate(u"create table T (V)"_s));
    ASSERT_TRUE(holder.beginTransaction());
    waiter.setBusyRetryTimeout(3);
    EXPECT_FALSE(waiter.beginTransaction());
    EXPECT_EQ(waiter.lastErrorCode(), SQLITE_BUSY);
    EXPECT_FALSE(waiter.executeQuery(u"select V from T"_s).next());
    ASSERT_TRUE(holder.commit());
    EXPECT_TRUE(waiter.beginTransaction());
}

} // namespace
