#pragma once

#include "support/Support.h"

#include <sqlite3.h>

namespace support {

/// The disk under SQLite for as long as it lives: every call for a file whose path has the
/// part in it is counted, and those that a test says fail, as a full or broken disk makes them.
/// Connections are opened while it stands and closed before it goes. One at a time.
class FaultyDisk {
public:
    explicit FaultyDisk(const QString& part) : _part(QFile::encodeName(part)) {
        _under = sqlite3_vfs_find(nullptr);
        _vfs = *_under;
        _vfs.zName = "faulty";
        _vfs.pAppData = this;
        _vfs.szOsFile = static_cast<int>(sizeof(File)) + _under->szOsFile;
        _vfs.xOpen = [](sqlite3_vfs* vfs, const char* name, sqlite3_file* file, int flags,
                        int* out) { return of(vfs)->open(name, file, flags, out); };
        _vfs.xDelete = [](sqlite3_vfs* vfs, const char* name, int sync) {
            if (of(vfs)->fails(name)) return SQLITE_IOERR_DELETE;
            return of(vfs)->_under->xDelete(of(vfs)->_under, name, sync);
        };
        sqlite3_vfs_register(&_vfs, 1);
    }
    ~FaultyDisk() {
        sqlite3_vfs_unregister(&_vfs);
        sqlite3_vfs_register(_under, 1);
    }
    FaultyDisk(const FaultyDisk&) = delete;
    FaultyDisk& operator=(const FaultyDisk&) = delete;

    /// The call with this number, counted from now and from 1, fails, and so many behind it; 0:
    /// none.
    void failAt(int call, int count = 1) {
        _calls = 0;
        _from = call;
        _to = call + count;
    }
    /// Whether the call that `failAt` named came.
    [[nodiscard]] bool hasFailed() const { return _from > 0 && _calls >= _from; }

private:
    struct File {
        sqlite3_file base;
        FaultyDisk* disk;
        bool isCounted;
        sqlite3_file* real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
    };

    static FaultyDisk* of(sqlite3_vfs* vfs) { return static_cast<FaultyDisk*>(vfs->pAppData); }
    [[nodiscard]] bool isMine(const char* name) const {
        return name && QByteArray(name).contains(_part);
    }
    [[nodiscard]] bool fails(const char* name) { return isMine(name) && countCall(); }
    [[nodiscard]] bool countCall() {
        const int call = ++_calls;
        return call >= _from && call < _to;
    }

    int open(const char* name, sqlite3_file* file, int flags, int* out) {
        auto* opened = reinterpret_cast<File*>(file);
        *opened = {{nullptr}, this, isMine(name)};
        if (fails(name)) return SQLITE_CANTOPEN;
        const int result = _under->xOpen(_under, name, opened->real(), flags, out);
        if (opened->real()->pMethods) file->pMethods = &methods;
        return result;
    }
    /// Hands a call on, or fails with the code.
    template <int Code, auto Method, typename... Arguments>
    static int pass(sqlite3_file* file, Arguments... arguments) {
        auto* opened = reinterpret_cast<File*>(file);
        if (Code != SQLITE_OK && opened->isCounted && opened->disk->countCall()) return Code;
        sqlite3_file* real = opened->real();
        return (real->pMethods->*Method)(real, arguments...);
    }

    using M = sqlite3_io_methods;
    static constexpr M methods{
        .iVersion = 1,
        .xClose = &pass<SQLITE_OK, &M::xClose>,
        .xRead = &pass<SQLITE_IOERR_READ, &M::xRead, void*, int, sqlite3_int64>,
        .xWrite = &pass<SQLITE_FULL, &M::xWrite, const void*, int, sqlite3_int64>,
        .xTruncate = &pass<SQLITE_IOERR_TRUNCATE, &M::xTruncate, sqlite3_int64>,
        .xSync = &pass<SQLITE_IOERR_FSYNC, &M::xSync, int>,
        .xFileSize = &pass<SQLITE_IOERR_FSTAT, &M::xFileSize, sqlite3_int64*>,
        .xLock = &pass<SQLITE_IOERR_LOCK, &M::xLock, int>,
        .xUnlock = &pass<SQLITE_OK, &M::xUnlock, int>,
        .xCheckReservedLock = &pass<SQLITE_OK, &M::xCheckReservedLock, int*>,
        .xFileControl = &pass<SQLITE_OK, &M::xFileControl, int, void*>,
        .xSectorSize = &pass<SQLITE_OK, &M::xSectorSize>,
        .xDeviceCharacteristics = &pass<SQLITE_OK, &M::xDeviceCharacteristics>,
        .xShmMap = nullptr,
        .xShmLock = nullptr,
        .xShmBarrier = nullptr,
        .xShmUnmap = nullptr,
        .xFetch = nullptr,
        .xUnfetch = nullptr,
    };

    const QByteArray _part;
    sqlite3_vfs* _under = nullptr;
    sqlite3_vfs _vfs{};
    std::atomic<int> _calls = 0;
    std::atomic<int> _from = 0;
    std::atomic<int> _to = 0;
};

} // namespace support
