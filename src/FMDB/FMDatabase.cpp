#include "FMDB/FMDatabase.h"

#include "FMDB/BusyRetry.h"
#include "platform/files/PathNames.h"
#include "platform/program/StandardFolders.h"

#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QScopedValueRollback>

#include <algorithm>
#include <cerrno>
#include <iterator>
#include <utility>

#include <unistd.h>

namespace {

/// Enough for the catalogue's fixed statements and the inserts for the key sets of many cameras.
constexpr qsizetype cachedStatementLimit = 128;

FMError errorOf(sqlite3* handle) {
    FMError error;
    error.code = sqlite3_errcode(handle);
    error.message = QString::fromUtf8(sqlite3_errmsg(handle));
    return error;
}

/// What a statement may fail for that lies in what it was run on, not in what it says. The observer
/// is told of those that the user can do something about.
struct FailureOfTheDisk {
    int code;
    bool isTold;
};
constexpr FailureOfTheDisk failuresOfTheDisk[] = {
    {SQLITE_FULL, true},   {SQLITE_READONLY, true},  {SQLITE_CORRUPT, true},
    {SQLITE_NOTADB, true}, {SQLITE_IOERR, true},     {SQLITE_CANTOPEN, true},
    {SQLITE_NOMEM, false}, {SQLITE_PERM, false},     {SQLITE_PROTOCOL, false},
    {SQLITE_NOLFS, false}, {SQLITE_INTERRUPT, false}};

/// nullptr for any other result.
const FailureOfTheDisk* failureOfTheDisk(int result) {
    const auto* const found =
        std::ranges::find(failuresOfTheDisk, result & 0xff, &FailureOfTheDisk::code);
    return found == std::end(failuresOfTheDisk) ? nullptr : found;
}

/// A file that nothing can change, since it lies on a disk that may only be read. SQLite does not
/// find that out by itself, and can't open one with a write-ahead log then.
bool isUnchanging(const QByteArray& path) {
    return ::access(path.constData(), F_OK) == 0 && ::access(path.constData(), W_OK) != 0 &&
           errno == EROFS && QFileInfo(QFile::decodeName(path + "-wal")).size() == 0;
}

} // namespace

/// A call on the connection by the thread that it is made on.
class FMDatabase::Use {
public:
    explicit Use(FMDatabase& db) : _db(db) { _db.beginUse(); }
    ~Use() { _db.endUse(); }
    Use(const Use&) = delete;
    Use& operator=(const Use&) = delete;

private:
    FMDatabase& _db;
};

/// The pause between two tries; tells when the wait gets long, and when it is over.
class FMDatabase::LockWait {
public:
    explicit LockWait(FMDatabase& db) : _db(db) {}

    [[nodiscard]] auto pause() {
        return [this](useconds_t microseconds) {
            if (!_clock.isValid()) _clock.start();
            const std::chrono::milliseconds waited(_clock.elapsed());
            if (!_db._isLongWaitTold && _db._observer && waited >= _db._longWait) {
                _db._isLongWaitTold = true;
                _db._observer(SQLITE_BUSY, _db.lastErrorMessage());
            }
            ::usleep(microseconds);
            return _db._longestWait.count() == 0 || waited < _db._longestWait;
        };
    }

private:
    FMDatabase& _db;
    QElapsedTimer _clock;
};

int FMDatabase::step(sqlite3_stmt* statement) {
    LockWait wait(*this);
    const int result = FMDB::stepWhileBusy(_busyRetryTimeout, statement, wait.pause());
    if (_isLongWaitTold && !FMDB::isBusyOrLocked(result)) {
        _isLongWaitTold = false;
        _observer(SQLITE_OK, {});
    }
    observe(result);
    return result;
}

void FMDatabase::observe(int result) {
    if (!_observer) return;
    const FailureOfTheDisk* failure = failureOfTheDisk(result);
    if (!failure || !failure->isTold) return;
    int code = failure->code;
    if (code == SQLITE_IOERR || code == SQLITE_CANTOPEN) {
        // Such as a journal that can't be made beside the file.
        const int systemError = sqlite3_system_errno(_db);
        if (systemError == ENOSPC || systemError == EDQUOT) code = SQLITE_FULL;
        if (systemError == EROFS) code = SQLITE_READONLY;
    }
    _observer(code, lastErrorMessage());
}

FMDatabase::FMDatabase(QString path) : _databasePath(std::move(path)) {
    if (!sqlite3_threadsafe()) qFatal("SQLite was built without thread safety");
    // Nobody asks how much memory SQLite has in use, and counting it takes a lock of all
    // connections for each piece. Only before the first of them.
    [[maybe_unused]] static const int configured = sqlite3_config(SQLITE_CONFIG_MEMSTATUS, 0);
}

std::unique_ptr<FMDatabase> FMDatabase::databaseWithPath(const QString& path) {
    return std::make_unique<FMDatabase>(path);
}

std::unique_ptr<FMDatabase> FMDatabase::databaseWithFileName(const QString& fileName) {
    return databaseWithPath(databasePathWithFileName(fileName));
}

QString FMDatabase::databasePathWithFileName(const QString& fileName) {
    return platform::pathInFolder(platform::StandardFolders::dataFolder(), fileName);
}

bool FMDatabase::open() {
    const Use use(*this);
    if (_db) return true;
    const QByteArray path =
        _databasePath.isEmpty() ? QByteArrayLiteral(":memory:") : QFile::encodeName(_databasePath);
    const int result =
        isUnchanging(path)
            ? sqlite3_open_v2(
                  ("file:" + path.toPercentEncoding("/") + "?immutable=1").constData(), &_db,
                  SQLITE_OPEN_READONLY | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX, nullptr)
            : sqlite3_open_v2(
                  path.constData(), &_db,
                  SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_NOMUTEX, nullptr);
    if (result == SQLITE_OK) {
        _openError = FMError();
        return true;
    }
    // SQLite hands out a connection that is of no use but to ask why.
    _openError = errorOf(_db);
    sqlite3_close(_db);
    _db = nullptr;
    return false;
}

bool FMDatabase::close() {
    const Use use(*this);
    clearCachedStatements();
    closeOpenResultSets();
    if (!_db) return true;
    bool remainingFinalized = false;
    LockWait wait(*this);
    const auto attempt = [&] {
        const int closed = sqlite3_close(_db);
        if (FMDB::isBusyOrLocked(closed) && !std::exchange(remainingFinalized, true))
            finalizeRemainingStatements();
        return closed;
    };
    const int result = FMDB::retryWhileBusy(_busyRetryTimeout, attempt, wait.pause());
    if (FMDB::isBusyOrLocked(result)) return false;
    _db = nullptr;
    _transaction = Transaction::None;
    return true;
}

void FMDatabase::closeOpenResultSets() {
    const std::vector<FMResultSet*> openResultSets = std::exchange(_openResultSets, {});
    for (FMResultSet* resultSet : openResultSets) {
        resultSet->_parentDB = nullptr;
        resultSet->fail();
    }
}

void FMDatabase::finalizeRemainingStatements() {
    while (sqlite3_stmt* statement = sqlite3_next_stmt(_db, nullptr))
        sqlite3_finalize(statement);
}

FMResultSet FMDatabase::executeQueryWithArgumentsInArray(
    const QString& sql, std::span<const PBValue> arguments) {
    const Use use(*this);
    if (!_db || _isExecutingStatement) return FMResultSet::failed();
    const QScopedValueRollback executing(_isExecutingStatement, true);
    auto statement = statementForQuery(sql);
    if (!statement) return FMResultSet::failed();
    FMBoundBytes boundBytes;
    statement->bindArguments(arguments, boundBytes);
    statement->countUse();
    return FMResultSet(this, std::move(statement), std::move(boundBytes));
}

bool FMDatabase::executeUpdateWithArgumentsInArray(
    const QString& sql, std::span<const PBValue> arguments) {
    return update(sql, arguments);
}

bool FMDatabase::executeUpdateWithArgumentPointers(
    const QString& sql, std::span<const PBValue* const> arguments) {
    return update(sql, arguments);
}

template <typename Arguments>
bool FMDatabase::update(const QString& sql, Arguments arguments) {
    const Use use(*this);
    if (!_db || _isExecutingStatement || _transaction == Transaction::Lost) return false;
    const QScopedValueRollback executing(_isExecutingStatement, true);
    const auto statement = statementForQuery(sql);
    if (!statement) return false;
    statement->bindArguments(arguments, _boundBytes);
    statement->countUse();
    const int result = step(statement->statement());
    statement->reset();
    _boundBytes.clear();
    if (result == SQLITE_DONE || result == SQLITE_OK) return true;
    statementDidFail();
    return false;
}

void FMDatabase::statementDidFail() {
    if (_transaction != Transaction::Open) return;
    _transactionErrorMessage = lastErrorMessage();
    // After such a failure the same change may work only in part.
    if (sqlite3_get_autocommit(_db) || failureOfTheDisk(lastErrorCode()))
        _transaction = Transaction::Lost;
}

std::shared_ptr<FMStatement> FMDatabase::statementForQuery(const QString& sql) {
    if (!_shouldCacheStatements) return prepare(sql);
    const auto cached = _cachedStatements.constFind(sql);
    if (cached == _cachedStatements.constEnd()) {
        auto statement = prepare(sql);
        if (statement) cacheStatement(statement, sql);
        return statement;
    }
    return (*cached)->isInUse() ? prepare(sql) : *cached;
}

std::shared_ptr<FMStatement> FMDatabase::prepare(const QString& sql) {
    const QByteArray text = sql.toUtf8();
    sqlite3_stmt* handle = nullptr;
    LockWait wait(*this);
    const auto attempt = [&] {
        return sqlite3_prepare_v2(_db, text.constData(), -1, &handle, nullptr);
    };
    const int result = FMDB::retryWhileBusy(_busyRetryTimeout, attempt, wait.pause());
    observe(result);
    // A text without a statement, such as a mere comment, prepares well and gives no handle.
    if (result == SQLITE_OK && handle) return std::make_shared<FMStatement>(handle);
    statementDidFail();
    return nullptr;
}

void FMDatabase::cacheStatement(const std::shared_ptr<FMStatement>& statement, const QString& sql) {
    if (_cachedStatements.size() >= cachedStatementLimit) {
        // The least used one goes. One under a cursor lives on with its cursor.
        auto rarest = _cachedStatements.begin();
        for (auto entry = rarest; entry != _cachedStatements.end(); ++entry) {
            if ((*entry)->useCount() < (*rarest)->useCount()) rarest = entry;
        }
        _cachedStatements.erase(rarest);
    }
    _cachedStatements.insert(sql, statement);
}

void FMDatabase::clearCachedStatements() {
    _cachedStatements.clear();
}

void FMDatabase::setShouldCacheStatements(bool shouldCache) {
    const Use use(*this);
    _shouldCacheStatements = shouldCache;
    if (!shouldCache) clearCachedStatements();
}

bool FMDatabase::beginTransaction(Others others) {
    if (_transaction == Transaction::Lost) return false;
    const bool begun = executeUpdate(
        others == Others::Read ? QStringLiteral("begin immediate transaction")
                               : QStringLiteral("begin exclusive transaction"));
    if (begun) _transaction = Transaction::Open;
    _transactionErrorMessage = begun ? QString() : lastErrorMessage();
    return begun;
}

bool FMDatabase::commit() {
    return endTransaction(QStringLiteral("commit transaction"));
}

bool FMDatabase::rollback() {
    return endTransaction(QStringLiteral("rollback transaction"));
}

bool FMDatabase::endTransaction(const QString& sql) {
    if (_transaction == Transaction::Lost) {
        _transaction = Transaction::None;
        if (_db && !sqlite3_get_autocommit(_db))
            executeUpdate(QStringLiteral("rollback transaction"));
        return false;
    }
    const bool ended = executeUpdate(sql);
    // A full disk, say, makes SQLite roll back by itself; then there is nothing left to end.
    if (ended || (_db && sqlite3_get_autocommit(_db))) _transaction = Transaction::None;
    return ended;
}

qint64 FMDatabase::lastInsertRowId() const {
    return _db && !_isExecutingStatement ? sqlite3_last_insert_rowid(_db) : 0;
}

int FMDatabase::changes() const {
    return _db && !_isExecutingStatement ? sqlite3_changes(_db) : 0;
}

FMError FMDatabase::lastError() const {
    return _db ? errorOf(_db) : _openError;
}

bool FMDatabase::isFileDamaged() const {
    const int primary = lastErrorCode() & 0xff;
    return primary == SQLITE_CORRUPT || primary == SQLITE_NOTADB;
}

int FMDatabase::lastErrorCode() const {
    return lastError().code;
}

QString FMDatabase::lastErrorMessage() const {
    return lastError().message;
}

bool FMDatabase::hadError() const {
    const int code = lastErrorCode();
    return code > 0 && code < SQLITE_ROW;
}

void FMDatabase::resultSetDidOpen(FMResultSet* resultSet) {
    _openResultSets.push_back(resultSet);
}

void FMDatabase::resultSetDidMove(FMResultSet* from, FMResultSet* to) noexcept {
    const Use use(*this);
    std::ranges::replace(_openResultSets, from, to);
}

void FMDatabase::resultSetDidClose(FMResultSet* resultSet) noexcept {
    const Use use(*this);
    std::erase(_openResultSets, resultSet);
}

void FMDatabase::beginUse() {
#ifndef QT_NO_DEBUG
    const int thread = ::gettid();
    int user = 0;
    if (!_user.compare_exchange_strong(user, thread) && user != thread)
        qFatal("two threads use the connection to %s", qPrintable(_databasePath));
#endif
}

void FMDatabase::endUse() {
#ifndef QT_NO_DEBUG
    const bool isInTransaction = _db && !sqlite3_get_autocommit(_db);
    if (!_isExecutingStatement && _openResultSets.empty() && !isInTransaction) _user = 0;
#endif
}
