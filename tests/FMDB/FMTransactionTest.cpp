#include "FMDB/FMTransaction.h"

#include "support/FaultyDisk.h"
#include "support/Rows.h"

namespace {

struct FMTransactionTest : ::testing::Test {
    FMTransactionTest() {
        EXPECT_TRUE(_db.open() && _db.executeUpdate(u"create table T (V UNIQUE)"_s));
    }
    /// So that the next start finds the rows.
    int stored() {
        EXPECT_TRUE(_db.close() && _db.open());
        return support::rowsOf(_db, u"select count(*) from T"_s).value(0, u"-1"_s).toInt();
    }
    bool insert(int number) {
        return _db.executeUpdate(
            u"insert into T (V) values (?)"_s, QByteArray::number(number) + QByteArray(900, 'v'));
    }
    QTemporaryDir _folder;
    support::FaultyDisk _disk{u"files.db"_s};
    FMDatabase _db{_folder.filePath(u"files.db"_s)};
};

/// Also where a caller takes no notice of the statement that failed.
TEST_F(FMTransactionTest, whateverCallOfTheDiskFailsAllIsStoredOrNothing) {
    for (const int failures : {1, 1'000'000}) {
        bool hasFailed = true;
        for (int call = 1; hasFailed && !HasFailure(); ++call) {
            SCOPED_TRACE(call);
            const int before = stored();
            // So small a cache is written out in the midst of the transaction.
            EXPECT_TRUE(_db.executeUpdate(u"pragma cache_size = 4"_s));
            _disk.failAt(call, failures);
            FMTransaction transaction(_db);
            for (int row = 0; row < 12; ++row)
                insert(before + row);
            const bool isCommitted = transaction.commit();
            ASSERT_TRUE(isCommitted || call < 200);
            EXPECT_FALSE(transaction.isOpen() || _db.inTransaction());
            EXPECT_EQ(transaction.errorMessage().isEmpty(), isCommitted);
            hasFailed = _disk.hasFailed();
            _disk.failAt(0);
            EXPECT_EQ(stored() - before, isCommitted ? 12 : 0);
        }
    }
}

TEST_F(FMTransactionTest, aPartThatFailsTakesTheWholeWithItAndARefusedValueDoesNot) {
    for (const bool keeps : {false, true}) {
        FMTransaction whole(_db);
        insert(1);
        {
            FMTransaction part(_db);
            insert(2);
            EXPECT_FALSE(insert(2)) << "refused for its value";
            EXPECT_TRUE(part.isOpen() && (!keeps || part.commit()));
        }
        EXPECT_EQ(insert(3), keeps) << "nothing is stored by itself afterwards";
        EXPECT_EQ(whole.commit(), keeps);
        EXPECT_EQ(stored(), keeps ? 3 : 0);
    }
    std::make_unique<FMTransaction>(_db).reset();
    EXPECT_TRUE(insert(4)) << "what is dropped holds nothing up";
}

TEST_F(FMTransactionTest, theEndOfACursorIsNoErrorAndAnErrorIsNoEnd) {
    for (int row = 0; row < 12; ++row)
        insert(row);
    const auto hadError = [&](const char* sql) {
        FMResultSet rows = _db.executeQuery(QString::fromLatin1(sql));
        while (rows.next()) {
        }
        return rows.hadError();
    };
    EXPECT_EQ(stored(), 12);
    EXPECT_FALSE(hadError("select V from T"));
    EXPECT_TRUE(hadError("select X from T")) << "not prepared";
    ASSERT_TRUE(_db.close() && _db.open());
    _disk.failAt(6, 1'000'000);
    EXPECT_TRUE(hadError("select V from T"));
    _disk.failAt(0);
    FMResultSet cut = _db.executeQuery(u"select V from T"_s);
    ASSERT_TRUE(_db.close());
    EXPECT_TRUE(FMResultSet(std::move(cut)).hadError()) << "the connection went before its end";
}

} // namespace
