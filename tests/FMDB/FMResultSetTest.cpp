#include "FMDB/FMDatabase.h"

#include "support/Support.h"

#include <gtest/gtest.h>

#include <limits>

namespace {

class FMResultSetTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(_db->open()); }

    void fillNumbers() {
        ASSERT_TRUE(_db->executeUpdate(QStringLiteral("create table N (Id INTEGER, V INTEGER)")));
        for (int id = 1; id <= 4; ++id)
            ASSERT_TRUE(_db->executeUpdate(QStringLiteral("insert into N values (?,0)"), id));
    }

    std::unique_ptr<FMDatabase> _db = FMDatabase::databaseWithPath(QString());
};

TEST_F(FMResultSetTest, valuesAreBoundByTheirExactStoredType) {
    struct Row {
        PBValue bound;
        const char16_t* type;
        PBValue read;
    };
    const Row rows[] = {
        {PBValue(), u"null", PBNull()},
        {PBNull(), u"null", PBNull()},
        {true, u"integer", 1},
        {-7, u"integer", -7},
        {std::numeric_limits<quint32>::max(), u"integer", qint64(4294967295)},
        {std::numeric_limits<qint64>::min(), u"integer", std::numeric_limits<qint64>::min()},
        {quint64(9), u"integer", 9},
        {0.5f, u"real", 0.5},
        {1.0, u"real", 1.0},
        {PBDate{1234.25}, u"real", 1234.25},
        {QString(), u"text", QString()},
        {QStringLiteral("it's"), u"text", QStringLiteral("it's")},
        {QByteArray(), u"blob", QByteArray()},
        {QByteArray("a\0b", 3), u"blob", QByteArray("a\0b", 3)},
        {PBArray{100, 200}, u"text", QStringLiteral("100,200")},
        {PBLocation{1.5, -2}, u"text", QStringLiteral("1.5,-2")},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.bound.toText().toStdString());
        FMResultSet result = _db->executeQuery(QStringLiteral("select typeof(?1), ?1"), row.bound);
        ASSERT_TRUE(result.next());
        EXPECT_EQ(result.stringForColumnIndex(0), QString::fromUtf16(row.type));
        EXPECT_EQ(result.objectForColumnIndex(1), row.read);
    }
}

TEST_F(FMResultSetTest, anyTextIsStoredWithoutCrashing) {
    ASSERT_TRUE(_db->executeUpdate(QStringLiteral("create table S (T TEXT)")));
    const QString texts[] = {
        QStringLiteral("Zürich 写真 😀 e\u0301"),
        QString(QChar(0xD83D)) + QStringLiteral("x"),
        QString(QChar(0xDE00)),
        QString(QChar(0xFFFF)) + QChar(0xD800),
        QStringLiteral("x").repeated(100'000),
    };
    for (const QString& text : texts) {
        ASSERT_TRUE(_db->executeUpdate(QStringLiteral("delete from S")));
        ASSERT_TRUE(_db->executeUpdate(QStringLiteral("insert into S values (?)"), text));
        FMResultSet row = _db->executeQuery(QStringLiteral("select T from S"));
        ASSERT_TRUE(row.next());
        EXPECT_EQ(row.stringForColumnIndex(0), QString::fromUtf8(text.toUtf8()));
    }
}

TEST_F(FMResultSetTest, columnsAreReadByIndexAndByNameInAnyCase) {
    FMResultSet row = _db->executeQuery(
        QStringLiteral("select 5000000000 as Big, '12abc' as Text, x'6869' as Data, 2.75 as Real, "
                       "null as Missing"));
    ASSERT_TRUE(row.next());
    EXPECT_EQ(row.columnCount(), 5);
    EXPECT_EQ(row.columnIndexForName(QStringLiteral("bIG")), 0);
    EXPECT_EQ(row.longLongIntForColumn(QStringLiteral("BIG")), 5000000000);
    EXPECT_EQ(row.unsignedLongLongIntForColumn(QStringLiteral("Big")), 5000000000U);
    EXPECT_EQ(row.intForColumn(QStringLiteral("Text")), 12);
    EXPECT_TRUE(row.boolForColumn(QStringLiteral("text")));
    EXPECT_EQ(row.stringForColumn(QStringLiteral("Big")), QStringLiteral("5000000000"));
    EXPECT_EQ(row.dataForColumn(QStringLiteral("data")), QByteArray("hi"));
    EXPECT_EQ(row.dataNoCopyForColumn(QStringLiteral("data")), QByteArrayView("hi"));
    EXPECT_DOUBLE_EQ(row.doubleForColumn(QStringLiteral("real")), 2.75);
    EXPECT_EQ(row.dateForColumn(QStringLiteral("Real")), PBDate{2.75});
    EXPECT_TRUE(row.columnIsNull(QStringLiteral("Missing")));
    EXPECT_TRUE(row.stringForColumn(QStringLiteral("Missing")).isNull());
    EXPECT_FALSE(row.dateForColumn(QStringLiteral("Missing")).has_value());
    EXPECT_TRUE(row.objectForColumnName(QStringLiteral("Missing")).isNull());

    const PBDictionary dictionary = row.resultDictionary();
    EXPECT_EQ(dictionary.size(), 5U);
    EXPECT_EQ(dictionary.at(QStringLiteral("Text")), PBValue(QStringLiteral("12abc")));
    EXPECT_TRUE(dictionary.at(QStringLiteral("Missing")).isNull());
}

TEST_F(FMResultSetTest, emptyBytesAndEmptyTextAreNotNull) {
    FMResultSet row = _db->executeQuery(QStringLiteral("select x'', ''"));
    ASSERT_TRUE(row.next());
    EXPECT_FALSE(row.dataForColumnIndex(0).isNull());
    EXPECT_TRUE(row.dataForColumnIndex(0).isEmpty());
    EXPECT_TRUE(row.objectForColumnIndex(0).isBytes());
    EXPECT_FALSE(row.stringForColumnIndex(1).isNull());
}

void expectNothing(FMResultSet& cursor, const QString& name, int index) {
    EXPECT_EQ(cursor.columnIndexForName(name), -1);
    EXPECT_EQ(cursor.intForColumn(name), 0);
    EXPECT_EQ(cursor.longForColumnIndex(index), 0);
    EXPECT_EQ(cursor.doubleForColumnIndex(index), 0);
    EXPECT_FALSE(cursor.boolForColumnIndex(index));
    EXPECT_TRUE(cursor.stringForColumnIndex(index).isNull());
    EXPECT_TRUE(cursor.dataForColumn(name).isNull());
    EXPECT_TRUE(cursor.dataNoCopyForColumnIndex(index).isEmpty());
    EXPECT_TRUE(cursor.columnIndexIsNull(index));
    EXPECT_TRUE(cursor.objectForColumnName(name).isNull());
    EXPECT_TRUE(cursor.objectForColumnIndex(index).isNull());
}

TEST_F(FMResultSetTest, cursorThatIsInvalidUsedUpOrAskedBesideItsColumnsAnswersNothing) {
    FMResultSet invalid = _db->executeQuery(QStringLiteral("select from"));
    EXPECT_FALSE(invalid.isValid());
    EXPECT_FALSE(invalid.next());
    invalid.close();
    expectNothing(invalid, QStringLiteral("x"), 0);
    EXPECT_TRUE(invalid.resultDictionary().empty());

    FMResultSet one = _db->executeQuery(QStringLiteral("select 1 as x"));
    EXPECT_TRUE(one.resultDictionary().empty());
    expectNothing(one, QStringLiteral("y"), 0);
    ASSERT_TRUE(one.next());
    for (const int index : {-1, 1, std::numeric_limits<int>::max()})
        expectNothing(one, QStringLiteral("y"), index);
    EXPECT_FALSE(one.next());
    EXPECT_FALSE(one.next());
    EXPECT_EQ(one.columnCount(), 0);
    expectNothing(one, QStringLiteral("y"), 0);
}

TEST_F(FMResultSetTest, rowsCanBeUpdatedWhileTheirCursorIsOpen) {
    fillNumbers();
    FMResultSet rows = _db->executeQuery(QStringLiteral("select Id from N order by Id"));
    int seen = 0;
    while (rows.next()) {
        ++seen;
        EXPECT_TRUE(_db->executeUpdate(
            QStringLiteral("update N set V = ? where Id = ?"), seen * 10,
            rows.intForColumnIndex(0)));
    }
    EXPECT_EQ(seen, 4);
    FMResultSet sum = _db->executeQuery(QStringLiteral("select sum(V) from N"));
    ASSERT_TRUE(sum.next());
    EXPECT_EQ(sum.intForColumnIndex(0), 100);
}

TEST_F(FMResultSetTest, boundArgumentsLiveAsLongAsTheCursor) {
    fillNumbers();
    FMResultSet rows = [&] {
        const QString text = QStringLiteral("temporary ") + QString::number(42);
        FMResultSet made =
            _db->executeQuery(QStringLiteral("select ?, ? from N"), text, text.toUtf8());
        return made;
    }();
    FMResultSet moved;
    moved = std::move(rows);
    int count = 0;
    while (moved.next()) {
        EXPECT_EQ(moved.stringForColumnIndex(0), QStringLiteral("temporary 42"));
        EXPECT_EQ(moved.dataForColumnIndex(1), QByteArray("temporary 42"));
        ++count;
    }
    EXPECT_EQ(count, 4);
}

TEST_F(FMResultSetTest, movedCursorReplacesTheOneItIsAssignedTo) {
    fillNumbers();
    FMResultSet cursor = _db->executeQuery(QStringLiteral("select Id from N order by Id"));
    ASSERT_TRUE(cursor.next());
    cursor = _db->executeQuery(QStringLiteral("select Id from N order by Id desc"));
    ASSERT_TRUE(cursor.next());
    EXPECT_EQ(cursor.intForColumn(QStringLiteral("id")), 4);
    FMResultSet other(std::move(cursor));
    ASSERT_TRUE(other.next());
    EXPECT_EQ(other.intForColumn(QStringLiteral("id")), 3);
    _db->close();
    EXPECT_FALSE(other.isValid());
}

TEST_F(FMResultSetTest, closingOrDroppingTheConnectionClosesItsCursors) {
    for (const bool cached : {false, true}) {
        for (const bool drop : {false, true}) {
            auto db = FMDatabase::databaseWithPath(QString());
            ASSERT_TRUE(db->open());
            db->setShouldCacheStatements(cached);
            const QString select = QStringLiteral("select ? union select 2");
            FMResultSet first = db->executeQuery(select, QStringLiteral("text"));
            FMResultSet second = db->executeQuery(select, QStringLiteral("text"));
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
