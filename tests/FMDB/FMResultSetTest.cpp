#include "support/Rows.h"

namespace {

struct FMResultSetTest : ::testing::Test {
    support::Database _db;
};

TEST_F(FMResultSetTest, valuesAreBoundByTheirExactStoredType) {
    using Row = std::tuple<PBValue, const char*, PBValue>;
    constexpr qint64 least = std::numeric_limits<qint64>::min();
    for (const auto& [bound, type, read] :
         {Row(PBValue(), "null", PBNull()), Row(PBNull(), "null", PBNull()),
          Row(true, "integer", 1), Row(-7, "integer", -7), Row(quint64(9), "integer", 9),
          Row(std::numeric_limits<quint32>::max(), "integer", qint64(4294967295)),
          Row(least, "integer", least), Row(0.5f, "real", 0.5), Row(1.0, "real", 1.0),
          Row(PBDate{1234.25}, "real", 1234.25), Row(QString(), "text", QString()),
          Row(u"it's"_s, "text", u"it's"_s), Row(QByteArray(), "blob", QByteArray()),
          Row(QByteArray("a\0b", 3), "blob", QByteArray("a\0b", 3)),
          Row(PBArray{100, 200}, "text", u"100,200"_s),
          Row(PBLocation{1.5, -2}, "text", u"1.5,-2"_s)}) {
        SCOPED_TRACE(bound.toText().toStdString());
        FMResultSet result = _db.executeQuery(u"select typeof(?1), ?1"_s, bound);
        ASSERT_TRUE(result.next());
        EXPECT_EQ(result.stringForColumnIndex(0), QString::fromLatin1(type));
        EXPECT_EQ(result.objectForColumnIndex(1), read);
        EXPECT_EQ(result.dataForColumnIndex(1).isNull(), read.isNull());
    }
}

void expectNothing(FMResultSet& cursor, const QString& name, int index) {
    EXPECT_EQ(cursor.columnIndexForName(name), -1);
    EXPECT_EQ(cursor.intForColumn(name) + cursor.doubleForColumnIndex(index), 0);
    EXPECT_TRUE(cursor.stringForColumnIndex(index).isNull() && cursor.dataForColumn(name).isNull());
    EXPECT_TRUE(cursor.columnIndexIsNull(index) && cursor.columnIsNull(name));
    EXPECT_TRUE(cursor.objectForColumnIndex(index).isNull());
}

TEST_F(FMResultSetTest, cursorThatIsInvalidUsedUpOrAskedBesideItsColumnsAnswersNothing) {
    FMResultSet invalid = _db.executeQuery(u"select from"_s);
    EXPECT_FALSE(invalid.isValid() || invalid.next());
    invalid.close();
    expectNothing(invalid, u"x"_s, 0);

    FMResultSet one = _db.executeQuery(u"select 1 as x"_s);
    expectNothing(one, u"y"_s, 0);
    ASSERT_TRUE(one.next());
    for (const int index : {-1, 1, std::numeric_limits<int>::max()})
        expectNothing(one, u"y"_s, index);
    EXPECT_FALSE(one.next() || one.next());
    EXPECT_EQ(one.columnCount(), 0);
    expectNothing(one, u"y"_s, 0);
}

TEST_F(FMResultSetTest, boundArgumentsLiveAsLongAsTheCursor) {
    FMResultSet rows = [&] {
        const QString text = u"temporary "_s + QString::number(42);
        return _db.executeQuery(u"select ?, ? union all select 1, 2"_s, text, text.toUtf8());
    }();
    FMResultSet moved;
    moved = std::move(rows);
    ASSERT_TRUE(moved.next());
    EXPECT_EQ(moved.stringForColumnIndex(0), u"temporary 42"_s);
    EXPECT_EQ(moved.dataForColumnIndex(1), QByteArray("temporary 42"));
    ASSERT_TRUE(moved.next());
    EXPECT_EQ(moved.intForColumnIndex(1), 2);
    moved = _db.executeQuery(u"select 1 as Id"_s);
    ASSERT_TRUE(moved.next());
    EXPECT_EQ(moved.intForColumn(u"id"_s), 1);
    _db.close();
    EXPECT_FALSE(moved.isValid());
}

} // namespace
