#pragma once

#include "FMDB/FMResultSet.h"
#include "FMDB/FMStatement.h"
#include "platform/values/PBValue.h"

#include <QHash>
#include <QString>

#include <array>
#include <atomic>
#include <chrono>
#include <concepts>
#include <functional>
#include <memory>
#include <span>
#include <type_traits>
#include <vector>

struct sqlite3;
struct sqlite3_stmt;

/// What SQLite said last.
struct FMError {
    QString domain = QStringLiteral("FMDatabase");
    int code = 0;
    QString message;
};

/// Anything a single value can be made from. A whole array of arguments is not one value: the
/// operations `…WithArgumentsInArray` take it.
template <typename T>
concept FMArgument =
    std::constructible_from<PBValue, T> && !std::same_as<std::remove_cvref_t<T>, PBArray>;

/// One connection to an SQLite file. Made closed; `open` makes the file if it is missing.
///
/// Failure shows in the results only: nothing here logs or throws. A connection, with its cursors,
/// belongs to one thread or serial queue; there is no lock inside. It may be handed to another
/// thread while no cursor and no transaction is open; a debug build ends the program where two
/// threads use it at once. Another connection's lock on the
/// file is waited for without limit, with a short pause between tries. While a call is running, a
/// further call on the same connection (from within an SQL function, say) answers empty, false or
/// 0; an open cursor is no running call.
class FMDatabase {
public:
    /// An empty path is a database in memory.
    explicit FMDatabase(QString path);
    ~FMDatabase() { close(); }
    FMDatabase(const FMDatabase&) = delete;
    FMDatabase& operator=(const FMDatabase&) = delete;

    [[nodiscard]] static std::unique_ptr<FMDatabase> databaseWithPath(const QString& path);
    /// A connection to a file of this name in the program's data folder.
    [[nodiscard]] static std::unique_ptr<FMDatabase> databaseWithFileName(const QString& fileName);
    [[nodiscard]] static QString databasePathWithFileName(const QString& fileName);

    /// True when the connection is open, or was so already. That the file is a database shows only
    /// with the first statement.
    bool open();
    /// Closes the cursors that are still open, and the connection. False only when a limit of
    /// retries is set and was reached.
    bool close();
    [[nodiscard]] sqlite3* sqliteHandle() const { return _db; }
    [[nodiscard]] const QString& databasePath() const { return _databasePath; }

    /// A cursor over the rows of the statement, an invalid one on failure. Nothing has been stepped
    /// yet. Pass as many arguments as the statement has parameters.
    template <FMArgument... Arguments>
    [[nodiscard]] FMResultSet executeQuery(const QString& sql, Arguments&&... arguments) {
        const std::array<PBValue, sizeof...(arguments)> values{
            PBValue(std::forward<Arguments>(arguments))...};
        return executeQueryWithArgumentsInArray(sql, values);
    }
    [[nodiscard]] FMResultSet
    executeQueryWithArgumentsInArray(const QString& sql, std::span<const PBValue> arguments);

    /// Runs a statement that returns no rows; false on failure, also if it does return a row.
    template <FMArgument... Arguments>
    bool executeUpdate(const QString& sql, Arguments&&... arguments) {
        const std::array<PBValue, sizeof...(arguments)> values{
            PBValue(std::forward<Arguments>(arguments))...};
        return executeUpdateWithArgumentsInArray(sql, values);
    }
    bool executeUpdateWithArgumentsInArray(const QString& sql, std::span<const PBValue> arguments);
    /// The same with arguments that lie anywhere; none of them is a null pointer.
    bool executeUpdateWithArgumentPointers(
        const QString& sql, std::span<const PBValue* const> arguments);

    /// What other connections may do with the file during a transaction.
    enum class Others {
        Wait, ///< neither read nor write it
        Read, ///< read what it was before; until the commit, or until the cache overflows
    };
    /// Use `FMTransaction`, which never leaves one open. When the disk failed a statement, or
    /// SQLite ended the transaction by itself, the further updates fail, and so does `commit`.
    [[nodiscard]] bool beginTransaction(Others others = Others::Wait);
    [[nodiscard]] bool commit();
    bool rollback();
    [[nodiscard]] bool inTransaction() const { return _transaction == Transaction::Open; }
    /// What SQLite said to the statement that failed last within the present or last transaction,
    /// or to its beginning or commit; empty for none.
    [[nodiscard]] const QString& transactionErrorMessage() const {
        return _transactionErrorMessage;
    }

    [[nodiscard]] qint64 lastInsertRowId() const;
    /// Rows changed by the last update.
    [[nodiscard]] int changes() const;

    /// SQLite's code and text for the last call. When the connection could not be opened, those of
    /// the attempt.
    [[nodiscard]] int lastErrorCode() const;
    [[nodiscard]] QString lastErrorMessage() const;
    /// Whether the last error says that the file's content is no database, or a malformed one.
    [[nodiscard]] bool isFileDamaged() const;
    [[nodiscard]] bool hadError() const;

    /// Told of calls that failed because of the file or its disk: SQLite's primary code (full,
    /// read-only, corrupt, no database, an error of input and output, can't open) and its text.
    /// Also that a call has waited for another connection's lock for `longWait` (busy), and that a
    /// call has got through since (OK). Called on the thread of the call, within it: it must not
    /// use the connection.
    using Observer = std::function<void(int code, const QString& message)>;
    /// Before the connection is used by another thread.
    void
    setObserver(Observer observer, std::chrono::milliseconds longWait = std::chrono::seconds(2)) {
        _observer = std::move(observer);
        _longWait = longWait;
    }

    /// How often a busy or locked statement is tried again; 0, as from the start: without limit.
    void setBusyRetryTimeout(int retries) { _busyRetryTimeout = retries; }
    /// How long a call waits for another connection's lock, however often it tries; 0, as from the
    /// start: without limit.
    void setLongestWait(std::chrono::milliseconds limit) { _longestWait = limit; }

    /// Keeps prepared statements for the next call with the same text. Off at first. Results are
    /// the same; a statement under an open cursor is never shared. Switching it off drops them.
    void setShouldCacheStatements(bool shouldCache);

private:
    friend class FMResultSet;
    friend class FMTransaction;
    class Use;
    enum class Transaction {
        None,
        Open,
        Lost, // takes nothing and can only end; whoever began it has not been told yet
    };
    void beginUse();
    void endUse();
    void resultSetDidOpen(FMResultSet* resultSet);
    void resultSetDidMove(FMResultSet* from, FMResultSet* to) noexcept;
    void resultSetDidClose(FMResultSet* resultSet) noexcept;

    class LockWait;
    /// Steps, waiting for locks; answers SQLite's result. The observer hears of it.
    int step(sqlite3_stmt* statement);
    void observe(int result);

    template <typename Arguments>
    bool update(const QString& sql, Arguments arguments);
    [[nodiscard]] std::shared_ptr<FMStatement> statementForQuery(const QString& sql);
    [[nodiscard]] std::shared_ptr<FMStatement> prepare(const QString& sql);
    void cacheStatement(const std::shared_ptr<FMStatement>& statement, const QString& sql);
    void clearCachedStatements();
    void closeOpenResultSets();
    void finalizeRemainingStatements();
    bool endTransaction(const QString& sql);
    [[nodiscard]] bool isTransactionPending() const { return _transaction != Transaction::None; }
    void setTransactionLost() { _transaction = Transaction::Lost; }
    /// Called after a statement that failed, before any other.
    void statementDidFail();
    [[nodiscard]] FMError lastError() const;

    sqlite3* _db = nullptr;
    QString _databasePath;
    bool _shouldCacheStatements = false;
    bool _isExecutingStatement = false;
    Transaction _transaction = Transaction::None;
    QString _transactionErrorMessage;
    int _busyRetryTimeout = 0;
    Observer _observer;
    std::chrono::milliseconds _longWait{};
    std::chrono::milliseconds _longestWait{};
    bool _isLongWaitTold = false;
    QHash<QString, std::shared_ptr<FMStatement>> _cachedStatements;
    std::vector<FMResultSet*> _openResultSets;
    /// Bytes of the running update; a member, so that its room is used again.
    FMBoundBytes _boundBytes;
    /// Why the connection could not be opened.
    FMError _openError;
    /// The thread that runs a call, or has a cursor or transaction open; 0 for none.
    std::atomic<int> _user = 0;
};
