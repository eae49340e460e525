#include "FMDB/FMTransaction.h"

#include "support/FaultyDisk.h"
#include "support/Rows.h"

namespace {

struct FMTransactionTest : ::testing::Test {
    void SetUp() override {
        FMDatabase db(_path);
        ASSERT_TRUE(db.open());
        ASSERT_TRUE(db.executeUpdate(u"create table T (Id INTEGER PRIMARY KEY, V UNIQUE)"_s));
    }
    /// As the next start finds it.
    int stored() {
        FMDatabase db(_path);
        EXPECT_TRUE(db.open());
        return support::rowsOf(db, u"select count(*) from T"_s).value(0, u"-1"_s).toInt();
    }
    static bool insert(FMDatabase& db, int number) {
        return db.executeUpdate(
            u"insert into T (V) values (?)"_s, QByteArray::number(number) + QByteArray(900, 'v'));
    }

    QTemporaryDir _folder;
    const QString _path = _folder.filePath(u"files.db"_s);
};

/// Also where a caller takes no notice of the statement that failed.
TEST_F(FMTransactionTest, whateverCallOfTheDiskFailsAllIsStoredOrNothing) {
    constexpr int rows = 12;
    support::FaultyDisk disk(_path);
    for (const int failures : {1, 1'000'000}) {
        bool hasFailed = true;
        for (int call = 1; hasFailed; ++call) {
            SCOPED_TRACE(call);
            const int before = stored();
            bool isCommitted = false;
            {
                FMDatabase db(_path);
                // So small a cache is written out in the midst of the transaction.
                EXPECT_TRUE(db.open() && db.executeUpdate(u"pragma cache_size = 4"_s));
                disk.failAt(call, failures);
                FMTransaction transaction(db);
                for (int row = 0; row < rows; ++row)
                    insert(db, before + row);
                isCommitted = transaction.commit();
                EXPECT_FALSE(transaction.isOpen() || db.inTransaction());
                EXPECT_EQ(transaction.errorMessage().isEmpty(), isCommitted);
                hasFailed = disk.hasFailed();
                disk.failAt(0);
                EXPECT_TRUE(failures > 1 || db.executeUpdate(u"delete from T where Id < 0"_s))
                    << "the connection is as good as before";
            }
            ASSERT_EQ(stored() - before, isCommitted ? rows : 0);
            ASSERT_LT(call, 1000);
        }
    }
}

TEST_F(FMTransactionTest, aPartThatFailsTakesTheWholeWithItAndARefusedValueDoesNot) {
    FMDatabase db(_path);
    ASSERT_TRUE(db.open());
    for (const bool keeps : {false, true}) {
        FMTransaction whole(db);
        insert(db, 1);
        {
            FMTransaction part(db);
            insert(db, 2);
            EXPECT_FALSE(insert(db, 2)) << "refused for its value";
            EXPECT_TRUE(part.isOpen());
            EXPECT_TRUE(!keeps || part.commit());
        }
        EXPECT_EQ(insert(db, 3), keeps) << "nothing is stored by itself afterwards";
        EXPECT_EQ(whole.commit(), keeps);
        EXPECT_EQ(stored(), keeps ? 3 : 0);
    }
    {
        FMTransaction dropped(db);
        insert(db, 4);
    }
    EXPECT_EQ(stored(), 3);
}

TEST_F(FMTransactionTest, theEndOfACursorIsNoError) {
    support::FaultyDisk disk(_path);
    FMDatabase db(_path);
    ASSERT_TRUE(db.open());
    FMTransaction filling(db);
    for (int row = 0; row < 40; ++row)
        insert(db, row);
    ASSERT_TRUE(filling.commit() && db.close() && db.open());
    const auto read = [&](FMResultSet rows) {
        while (rows.next()) {
        }
        return std::pair(rows.hadError(), db.hadError());
    };
    const QString sql = u"select V from T"_s;
    EXPECT_EQ(read(db.executeQuery(sql)), std::pair(false, false));
    EXPECT_TRUE(read(db.executeQuery(u"select X from T"_s)).first) << "not prepared";
    ASSERT_TRUE(db.close() && db.open());
    disk.failAt(8, 1'000'000);
    EXPECT_EQ(read(db.executeQuery(sql)), std::pair(true, true));
    FMResultSet moved = db.executeQuery(sql);
    ASSERT_TRUE(db.close());
    EXPECT_TRUE(FMResultSet(std::move(moved)).hadError()) << "the connection went before its end";
}

} // namespace
