#include "FMDB/BusyRetry.h"
#include "FMDB/FMTransaction.h"

#include "support/Rows.h"

struct LockWaitTest : testing::Test {
    QTemporaryDir folder;
    support::Database holder{folder.filePath(u"files.db"_s)};
    support::Database other{holder.databasePath()};
    std::vector<int> codes;
    bool letsGo = true;

    /// Notes what the connection tells; the holder lets go when it waits for so long.
    void observe(FMDatabase& db, std::chrono::milliseconds longWait) {
        const auto observer = [this](int code, const QString&) {
            codes.push_back(code);
            EXPECT_TRUE(code != SQLITE_BUSY || !letsGo || holder.commit());
        };
        db.setObserver(observer, longWait);
    }
};

TEST_F(LockWaitTest, anExclusiveTransactionElsewhereIsWaitedForNotFailedOn) {
    // A connection that has not read the tables yet meets the lock when it prepares a statement,
    // otherwise when it steps.
    using Call = bool (*)(FMDatabase&);
    const Call select = [](auto& db) { return db.executeQuery(u"select V from T"_s).next(); };
    const Call insert = [](auto& db) { return db.executeUpdate(u"insert into T values (2)"_s); };
    const Call begin = [](auto& db) { return db.beginTransaction(); };
    for (const auto& [knowsTables, call] :
         {std::pair(false, select), {true, select}, {true, insert}, {true, begin}}) {
        QFile::remove(holder.databasePath());
        ASSERT_TRUE(holder.close() && holder.open());
        support::Database db(holder.databasePath());
        observe(db, std::chrono::milliseconds(5));
        ASSERT_TRUE((knowsTables ? db : holder).executeUpdate(u"create table T (V)"_s));
        ASSERT_TRUE(holder.beginTransaction());
        ASSERT_TRUE(holder.executeUpdate(u"insert into T values (1)"_s));
        codes.clear();
        EXPECT_TRUE(call(db));
        EXPECT_EQ(codes, (std::vector{SQLITE_BUSY, SQLITE_OK})) << "told once in a wait";
        // The holder's row was committed before this connection went on.
        EXPECT_EQ(support::rowsOf(db, u"select V from T"_s).value(0), u"1"_s);
    }
}

TEST_F(LockWaitTest, othersReadWhatWasBeforeATransactionThatLetsThemAndWriteOnlyAfterIt) {
    ASSERT_TRUE(holder.executeUpdate(u"create table T (V)"_s));
    other.setBusyRetryTimeout(3);
    FMTransaction transaction(holder, FMDatabase::Others::Read);
    ASSERT_TRUE(holder.executeUpdate(u"insert into T values (1)"_s));
    EXPECT_EQ(support::rowsOf(other, u"select count(*) from T"_s), QStringList{u"0"_s});
    EXPECT_FALSE(other.executeUpdate(u"insert into T values (2)"_s) || other.beginTransaction());
    EXPECT_EQ(other.lastErrorCode(), SQLITE_BUSY) << "it gives up instead of waiting";
    ASSERT_TRUE(transaction.commit());
    EXPECT_TRUE(other.beginTransaction());
}

TEST(LockLimitTest, retriesEndAtTheLimitOrWithTheLock) {
    using Case = std::array<int, 4>;
    for (const auto& [limit, result, lockedTimes, expected] :
         {Case{3, SQLITE_BUSY, 99, 5}, Case{3, SQLITE_LOCKED, 4, 5}, Case{3, SQLITE_BUSY, 0, 1},
          Case{0, SQLITE_LOCKED, 50, 51}}) {
        int tries = 0;
        std::vector<useconds_t> pauses;
        const int last = FMDB::retryWhileBusy(
            limit,
            [&, result = result, times = lockedTimes] {
                return ++tries > times ? SQLITE_FULL : result;
            },
            [&](useconds_t pause) {
                pauses.push_back(pause);
                return true;
            });
        EXPECT_EQ(tries, expected) << lockedTimes;
        EXPECT_EQ(last, lockedTimes == 99 ? SQLITE_BUSY : SQLITE_FULL);
        EXPECT_EQ(pauses, std::vector<useconds_t>(static_cast<unsigned>(expected) - 1, 20));
    }
}

TEST_F(LockWaitTest, anObserverHearsOfTheFilesTroublesAndOfALongWaitWithItsEnd) {
    observe(other, std::chrono::milliseconds(0));
    ASSERT_TRUE(holder.executeUpdate(u"create table T (V unique)"_s));
    ASSERT_TRUE(other.executeUpdate(u"insert into T values (1)"_s)) << "it knows the table";
    other.setLongestWait(std::chrono::milliseconds(1));
    letsGo = false;
    ASSERT_TRUE(holder.beginTransaction());
    EXPECT_FALSE(other.executeUpdate(u"insert into T values (2)"_s));
    EXPECT_EQ(codes, std::vector{SQLITE_BUSY}) << "giving up is no end of it";
    ASSERT_TRUE(holder.commit() && other.executeQuery(u"select * from T"_s).next());
    EXPECT_EQ(codes, (std::vector{SQLITE_BUSY, SQLITE_OK}));

    // What is wrong with a statement is no news of the file.
    EXPECT_FALSE(other.executeUpdate(u"insert into T values (1)"_s));
    EXPECT_FALSE(other.executeQuery(u"select X from T"_s).isValid());
    codes.clear();
    EXPECT_TRUE(other.executeQuery(u"pragma max_page_count = 4"_s).next());
    EXPECT_FALSE(other.executeUpdate(u"insert into T values (?)"_s, QByteArray(20'000, 'x')));
    EXPECT_TRUE(other.executeUpdate(u"pragma query_only = on"_s));
    EXPECT_FALSE(other.executeUpdate(u"insert into T values (2)"_s));
    ASSERT_TRUE(other.close() && holder.close());
    QFile file(other.databasePath());
    ASSERT_TRUE(file.open(QIODevice::ReadWrite) && file.seek(4096));
    ASSERT_EQ(file.write(QByteArray(4096, '\x7f')), 4096);
    file.close();
    ASSERT_TRUE(other.open());
    EXPECT_FALSE(other.executeQuery(u"select V from T"_s).next());
    EXPECT_EQ(codes, (std::vector{SQLITE_FULL, SQLITE_READONLY, SQLITE_CORRUPT}));
}
