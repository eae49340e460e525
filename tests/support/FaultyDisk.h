#pragma once

#include "support/Support.h"

#include <sqlite3.h>

namespace support {

/// The disk under SQLite while it lives: calls for files with the part in their path are counted,
/// and those that a test says fail. Connections are opened and closed within its life.
class FaultyDisk {
public:
    explicit FaultyDisk(const QString& part) : _part(QFile::encodeName(part)) {
        _now = this;
        _vfs.zName = "faulty";
        _vfs.xOpen = [](sqlite3_vfs*, const char* name, sqlite3_file* file, int flags, int* out) {
            file->pMethods = nullptr;
            const bool isCounted = name && QByteArray(name).contains(_now->_part);
            if (isCounted && _now->fails()) return SQLITE_CANTOPEN;
            const int result = _now->_under->xOpen(_now->_under, name, file, flags, out);
            if (isCounted && file->pMethods)
                file->pMethods = _now->counted(*file->pMethods, flags & SQLITE_OPEN_MAIN_DB);
            return result;
        };
        _vfs.xDelete = [](sqlite3_vfs*, const char* name, int sync) {
            const bool isCounted = QByteArray(name).contains(_now->_part);
            if (isCounted && _now->fails()) return SQLITE_IOERR_DELETE;
            return _now->_under->xDelete(_now->_under, name, sync);
        };
        sqlite3_vfs_register(&_vfs, 1);
    }
    ~FaultyDisk() {
        sqlite3_vfs_unregister(&_vfs);
        sqlite3_vfs_register(_under, 1);
    }
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// The call of this number, from now and from 1, fails, and so many from it on; 0: none.
    void failAt(int call, int count = 1) {
        _calls = 0;
        _from = call;
        _to = call + count;
    }
    [[nodiscard]] bool hasFailed() const { return _from > 0 && _calls >= _from; }

private:
    using Methods = sqlite3_io_methods;

    [[nodiscard]] bool fails() {
        const int call = ++_calls;
        return call >= _from && call < _to;
    }
    /// Only the locks of a database and of what lies beside it are of different kinds.
    [[nodiscard]] const Methods* counted(const Methods& real, bool isDatabase) {
        Methods& methods = isDatabase ? _ofDatabase : _ofOthers;
        methods = real;
        methods.iVersion = 1;
        methods.xRead = &pass<SQLITE_IOERR_READ, &Methods::xRead, void*, int, sqlite3_int64>;
        methods.xWrite = &pass<SQLITE_FULL, &Methods::xWrite, const void*, int, sqlite3_int64>;
        methods.xTruncate = &pass<SQLITE_IOERR_TRUNCATE, &Methods::xTruncate, sqlite3_int64>;
        methods.xSync = &pass<SQLITE_IOERR_FSYNC, &Methods::xSync, int>;
        methods.xFileSize = &pass<SQLITE_IOERR_FSTAT, &Methods::xFileSize, sqlite3_int64*>;
        if (isDatabase) {
            methods.xLock = &pass<SQLITE_IOERR_LOCK, &Methods::xLock, int>;
            _real = real;
        }
        return &methods;
    }
    template <int Code, auto Method, typename... Arguments>
    static int pass(sqlite3_file* file, Arguments... arguments) {
        return _now->fails() ? Code : (_now->_real.*Method)(file, arguments...);
    }

    static inline FaultyDisk* _now = nullptr;
    const QByteArray _part;
    sqlite3_vfs* const _under = sqlite3_vfs_find(nullptr);
    sqlite3_vfs _vfs = *_under;
    Methods _real{};
    Methods _ofDatabase{};
    Methods _ofOthers{};
    std::atomic<int> _calls = 0;
    std::atomic<int> _from = 0;
    std::atomic<int> _to = 0;
};

} // namespace support
