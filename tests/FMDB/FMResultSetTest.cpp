#include "FMDB/FMDatabase.h"

#include "support/Support.h"

namespace {

struct FMResultSetTest : ::testing::Test {
    void SetUp() override { ASSERT_TRUE(_db->open()); }

    void fillNumbers() {
        ASSERT_TRUE(_db->executeUpdate(u"create table N (Id INTEGER, V INTEGER)"_s));
        for (int id = 1; id <= 4; ++id)
            ASSERT_TRUE(_db->executeUpdate(u"insert into N values (?,0)"_s, id));
    }

    std::unique_ptr<FMDatabase> _db = FMDatabase::databaseWithPath(QString());
};

TEST_F(FMResultSetTest, valuesAreBoundByTheirExactStoredType) {
    const std::tuple<PBValue, const char*, PBValue> rows[] = {
        {PBValue(), "null", PBNull()},
        {PBNull(), "null", PBNull()},
        {true, "integer", 1},
        {-7, "integer", -7},
        {std::numeric_limits<quint32>::max(), "integer", qint64(4294967295)},
        {std::numeric_limits<qint64>::min(), "integer", std::numeric_limits<qint64>::min()},
        {quint64(9), "integer", 9},
        {0.5f, "real", 0.5},
        {1.0, "real", 1.0},
        {PBDate{1234.25}, "real", 1234.25},
        {QString(), "text", QString()},
        {u"it's"_s, "text", u"it's"_s},
        {QByteArray(), "blob", QByteArray()},
        {QByteArray("a\0b", 3), "blob", QByteArray("a\0b", 3)},
        {PBArray{100, 200}, "text", u"100,200"_s},
        {PBLocation{1.5, -2}, "text", u"1.5,-2"_s}};
    for (const auto& [bound, type, read] : rows) {
        FMResultSet result = _db->executeQuery(u"select typeof(?1), ?1"_s, bound);
        ASSERT_TRUE(result.next());
        EXPECT_EQ(result.stringForColumnIndex(0), QString::fromLatin1(type))
            << bound.toText().toStdString();
        EXPECT_EQ(result.objectForColumnIndex(1), read) << bound.toText().toStdString();
    }
}

TEST_F(FMResultSetTest, anyTextIsStoredWithoutCrashing) {
    ASSERT_TRUE(_db->executeUpdate(u"create table S (T TEXT)"_s));
    const QString texts[] = {
        u"Zürich 写真 😀 e\u0301"_s, QString(QChar(0xD83D)) + u"x"_s, QString(QChar(0xDE00)),
        QString(QChar(0xFFFF)) + QChar(0xD800), u"x"_s.repeated(100'000)};
    for (const QString& text : texts) {
        ASSERT_TRUE(_db->executeUpdate(u"delete from S"_s));
        ASSERT_TRUE(_db->executeUpdate(u"insert into S values (?)"_s, text));
        FMResultSet row = _db->executeQuery(u"select T from S"_s);
        ASSERT_TRUE(row.next());
        EXPECT_EQ(row.stringForColumnIndex(0), QString::fromUtf8(text.toUtf8()));
    }
}

void expectNothing(FMResultSet& cursor, const QString& name, int index) {
    EXPECT_EQ(cursor.columnIndexForName(name), -1);
    EXPECT_EQ(cursor.intForColumn(name) + cursor.doubleForColumnIndex(index), 0);
    EXPECT_TRUE(cursor.stringForColumnIndex(index).isNull() && cursor.dataForColumn(name).isNull());
    EXPECT_TRUE(
        cursor.dataNoCopyForColumnIndex(index).isEmpty() && cursor.columnIndexIsNull(index));
    EXPECT_TRUE(
        cursor.objectForColumnName(name).isNull() && cursor.objectForColumnIndex(index).isNull());
}

TEST_F(FMResultSetTest, cursorThatIsInvalidUsedUpOrAskedBesideItsColumnsAnswersNothing) {
    FMResultSet invalid = _db->executeQuery(u"select from"_s);
    EXPECT_FALSE(invalid.isValid());
    EXPECT_FALSE(invalid.next());
    invalid.close();
    expectNothing(invalid, u"x"_s, 0);
    EXPECT_TRUE(invalid.resultDictionary().empty());

    FMResultSet one = _db->executeQuery(u"select 1 as x"_s);
    EXPECT_TRUE(one.resultDictionary().empty());
    expectNothing(one, u"y"_s, 0);
    ASSERT_TRUE(one.next());
    for (const int index : {-1, 1, std::numeric_limits<int>::max()})
        expectNothing(one, u"y"_s, index);
    EXPECT_FALSE(one.next());
    EXPECT_FALSE(one.next());
    EXPECT_EQ(one.columnCount(), 0);
    expectNothing(one, u"y"_s, 0);
}

TEST_F(FMResultSetTest, boundArgumentsLiveAsLongAsTheCursor) {
    fillNumbers();
    FMResultSet rows = [&] {
        const QString text = u"temporary "_s + QString::number(42);
        FMResultSet made = _db->executeQuery(u"select ?, ? from N"_s, text, text.toUtf8());
        return made;
    }();
    FMResultSet moved;
    moved = std::move(rows);
    int count = 0;
    while (moved.next()) {
        EXPECT_EQ(moved.stringForColumnIndex(0), u"temporary 42"_s);
        EXPECT_EQ(moved.dataForColumnIndex(1), QByteArray("temporary 42"));
        ++count;
    }
    EXPECT_EQ(count, 4);
    moved = _db->executeQuery(u"select Id from N"_s);
    ASSERT_TRUE(moved.next());
    EXPECT_EQ(moved.intForColumn(u"id"_s), 1);
    _db->close();
    EXPECT_FALSE(moved.isValid());
}

TEST_F(FMResultSetTest, closingOrDroppingTheConnectionClosesItsCursors) {
    for (const bool cached : {false, true}) {
        for (const bool drop : {false, true}) {
            auto db = FMDatabase::databaseWithPath(QString());
            ASSERT_TRUE(db->open());
            db->setShouldCacheStatements(cached);
            const QString select = u"select ? union select 2"_s;
            FMResultSet first = db->executeQuery(select, u"text"_s);
            FMResultSet second = db->executeQuery(select, u"text"_s);
            ASSERT_TRUE(first.next());
            if (drop) {
                db.reset();
            } else {
                EXPECT_TRUE(db->close());
                EXPECT_TRUE(db->open());
            }
            EXPECT_FALSE(first.next());
            EXPECT_FALSE(second.next());
            first.close();
        }
    }
}

} // namespace
