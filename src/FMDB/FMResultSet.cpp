#include "FMDB/FMResultSet.h"

#include "FMDB/FMDatabase.h"

#include <utility>

#include <sqlite3.h>

FMResultSet::FMResultSet(
    FMDatabase* parentDB, std::shared_ptr<FMStatement> statement, FMBoundBytes boundBytes)
    : _parentDB(parentDB), _statement(std::move(statement)), _boundBytes(std::move(boundBytes)) {
    _statement->setInUse(true);
    _parentDB->resultSetDidOpen(this);
}

FMResultSet::FMResultSet(FMResultSet&& other) noexcept {
    *this = std::move(other);
}

FMResultSet& FMResultSet::operator=(FMResultSet&& other) noexcept {
    if (this == &other) return *this;
    close();
    _parentDB = std::exchange(other._parentDB, nullptr);
    _statement = std::exchange(other._statement, nullptr);
    _boundBytes = std::exchange(other._boundBytes, {});
    _hadError = std::exchange(other._hadError, false);
    _columnNameToIndexMap = std::exchange(other._columnNameToIndexMap, {});
    _columnNamesSetup = std::exchange(other._columnNamesSetup, false);
    if (_parentDB) _parentDB->resultSetDidMove(&other, this);
    return *this;
}

FMResultSet FMResultSet::failed() {
    FMResultSet none;
    none._hadError = true;
    return none;
}

bool FMResultSet::next() {
    if (!_statement) return false;
    _parentDB->beginUse(); // until the cursor closes
    const int result = _parentDB->step(_statement->statement());
    if (result == SQLITE_ROW) return true;
    if (result == SQLITE_DONE) {
        close();
    } else {
        _parentDB->statementDidFail();
        fail();
    }
    return false;
}

void FMResultSet::fail() {
    _hadError = true;
    close();
}

void FMResultSet::close() {
    if (_statement) {
        _statement->reset();
        _statement->setInUse(false);
        _statement = nullptr;
    }
    _boundBytes.clear();
    if (_parentDB) std::exchange(_parentDB, nullptr)->resultSetDidClose(this);
}

int FMResultSet::columnCount() const {
    return _statement ? sqlite3_column_count(_statement->statement()) : 0;
}

QString FMResultSet::columnName(int index) const {
    return QString::fromUtf8(sqlite3_column_name(_statement->statement(), index));
}

int FMResultSet::columnIndexForName(const QString& name) const {
    if (!_columnNamesSetup && _statement) {
        for (int index = 0; index < columnCount(); ++index)
            _columnNameToIndexMap.insert(columnName(index).toLower(), index);
        _columnNamesSetup = true;
    }
    return _columnNameToIndexMap.value(name.toLower(), -1);
}

int FMResultSet::typeOfColumn(int index) const {
    const bool readable = _statement && index >= 0;
    return readable ? sqlite3_column_type(_statement->statement(), index) : SQLITE_NULL;
}

int FMResultSet::intForColumnIndex(int index) const {
    if (!_statement || index < 0) return 0;
    return sqlite3_column_int(_statement->statement(), index);
}

qint64 FMResultSet::longLongIntForColumnIndex(int index) const {
    if (!_statement || index < 0) return 0;
    return sqlite3_column_int64(_statement->statement(), index);
}

double FMResultSet::doubleForColumnIndex(int index) const {
    if (!_statement || index < 0) return 0;
    return sqlite3_column_double(_statement->statement(), index);
}

QString FMResultSet::stringForColumnIndex(int index) const {
    if (columnIndexIsNull(index)) return {};
    const auto* text =
        reinterpret_cast<const char*>(sqlite3_column_text(_statement->statement(), index));
    return QString::fromUtf8(text, sqlite3_column_bytes(_statement->statement(), index));
}

QByteArray FMResultSet::dataForColumnIndex(int index) const {
    if (columnIndexIsNull(index)) return {};
    const auto* bytes =
        static_cast<const char*>(sqlite3_column_blob(_statement->statement(), index));
    // Bytes of length 0 are not NULL: they give an empty array that is not a null one.
    return bytes ? QByteArray(bytes, sqlite3_column_bytes(_statement->statement(), index))
                 : QByteArray("");
}

bool FMResultSet::columnIndexIsNull(int index) const {
    return typeOfColumn(index) == SQLITE_NULL;
}

PBValue FMResultSet::objectForColumnIndex(int index) const {
    switch (typeOfColumn(index)) {
    case SQLITE_BLOB:
        return dataForColumnIndex(index);
    case SQLITE_FLOAT:
        return doubleForColumnIndex(index);
    case SQLITE_INTEGER:
        return longLongIntForColumnIndex(index);
    case SQLITE_TEXT:
        return stringForColumnIndex(index);
    default:
        return PBNull();
    }
}

int FMResultSet::intForColumn(const QString& name) const {
    return intForColumnIndex(columnIndexForName(name));
}

qint64 FMResultSet::longLongIntForColumn(const QString& name) const {
    return longLongIntForColumnIndex(columnIndexForName(name));
}

quint64 FMResultSet::unsignedLongLongIntForColumn(const QString& name) const {
    return static_cast<quint64>(longLongIntForColumn(name));
}

QString FMResultSet::stringForColumn(const QString& name) const {
    return stringForColumnIndex(columnIndexForName(name));
}

QByteArray FMResultSet::dataForColumn(const QString& name) const {
    return dataForColumnIndex(columnIndexForName(name));
}

bool FMResultSet::columnIsNull(const QString& name) const {
    return columnIndexIsNull(columnIndexForName(name));
}
