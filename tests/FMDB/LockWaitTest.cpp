#include "FMDB/FMDatabase.h"

#include "support/Support.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>

namespace {

/// A pipe that one side of a fork writes single bytes to and the other waits on.
class Signal {
public:
    Signal() { _open = pipe(_ends.data()) == 0; }
    ~Signal() {
        ::close(_ends[0]);
        ::close(_ends[1]);
    }
    bool give() { return _open && write(_ends[1], "x", 1) == 1; }
    bool wait() {
        char byte = 0;
        return _open && read(_ends[0], &byte, 1) == 1;
    }

private:
    std::array<int, 2> _ends{};
    bool _open;
};

/// Another process that, once told to begin, holds an exclusive transaction with one inserted row
/// until it is let go. It starts before this process has a connection, which a fork must not copy.
class Holder {
public:
    explicit Holder(const QString& path) {
        _process = fork();
        if (_process == 0) _exit(hold(path));
    }
    ~Holder() {
        letGo();
        int status = -1;
        waitpid(_process, &status, 0);
        EXPECT_EQ(status, 0);
    }

    bool begin() { return _begin.give() && _holding.wait(); }
    void letGo() { EXPECT_TRUE(_release.give()); }

private:
    int hold(const QString& path) {
        FMDatabase db(path);
        const bool held = _begin.wait() && db.open() && db.beginTransaction() &&
                          db.executeUpdate(QStringLiteral("insert into T values (1)"));
        if (!_holding.give() || !held || !_release.wait()) return 1;
        return db.commit() && db.close() ? 0 : 1;
    }

    Signal _begin;
    Signal _holding;
    Signal _release;
    pid_t _process = -1;
};

/// Lets the holder go once the waiting connection was refused this often.
struct Patience {
    Holder* holder;
    int refusals = 0;
};

int refuse(void* context, int) {
    auto* patience = static_cast<Patience*>(context);
    if (++patience->refusals == 50) patience->holder->letGo();
    return 0;
}

struct Waiting {
    const char* name;
    /// A connection that has not read the tables yet meets the lock when it prepares a statement,
    /// otherwise when it steps.
    bool knowsTables;
    std::function<bool(FMDatabase&)> run;
};

void PrintTo(const Waiting& waiting, std::ostream* stream) {
    *stream << waiting.name;
}

bool selectRow(FMDatabase& db) {
    FMResultSet row = db.executeQuery(QStringLiteral("select V from T"));
    return row.next() && row.intForColumnIndex(0) == 1;
}

bool insertRow(FMDatabase& db) {
    return db.executeUpdate(QStringLiteral("insert into T values (2)"));
}

class LockWaitTest : public ::testing::TestWithParam<Waiting> {};

TEST_P(LockWaitTest, anotherProcessWithAnExclusiveTransactionIsWaitedForNotFailedOn) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("files.db"));
    Holder holder(path);
    FMDatabase db(path);
    ASSERT_TRUE(db.open());
    ASSERT_TRUE(db.executeUpdate(QStringLiteral("create table T (V)")));
    if (!GetParam().knowsTables) {
        ASSERT_TRUE(db.close());
        ASSERT_TRUE(db.open());
    }
    ASSERT_TRUE(holder.begin());
    Patience patience{&holder};
    // SQLite asks this handler each time it meets the lock; it never makes SQLite itself wait.
    sqlite3_busy_handler(db.sqliteHandle(), refuse, &patience);
    EXPECT_TRUE(GetParam().run(db));
    EXPECT_GE(patience.refusals, 50);
    // The holder's row was committed before this connection went on.
    FMResultSet row = db.executeQuery(QStringLiteral("select count(*) from T where V = 1"));
    ASSERT_TRUE(row.next());
    EXPECT_EQ(row.intForColumnIndex(0), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Calls, LockWaitTest,
    ::testing::Values(
        Waiting{"prepare", false, selectRow}, Waiting{"query", true, selectRow},
        Waiting{"update", true, insertRow},
        Waiting{"transaction", true, [](FMDatabase& db) { return db.beginTransaction(); }}),
    [](const auto& param) { return std::string(param.param.name); });

TEST(LockLimitTest, limitOfRetriesGivesUpInsteadOfWaiting) {
    const QTemporaryDir folder;
    const QString path = folder.filePath(QStringLiteral("files.db"));
    FMDatabase holder(path);
    FMDatabase waiter(path);
    ASSERT_TRUE(holder.open() && waiter.open());
    ASSERT_TRUE(holder.executeUpdate(QStringLiteral("create table T (V)")));
    ASSERT_TRUE(holder.beginTransaction());
    waiter.setBusyRetryTimeout(3);
    EXPECT_FALSE(waiter.beginTransaction());
    EXPECT_EQ(waiter.lastErrorCode(), SQLITE_BUSY);
    EXPECT_FALSE(waiter.executeQuery(QStringLiteral("select V from T")).next());
    ASSERT_TRUE(holder.commit());
    EXPECT_TRUE(waiter.beginTransaction());
}

} // namespace
