#pragma once

#include "platform/files/FileSystem.h"

#include <QByteArray>

namespace fileactions {

/// Files on their way: they have hidden names in the folder that they are for until they are whole,
/// and a journal says where they are, so that those of a run that was cut short are removed by the
/// next. One thread at a time.
class TemporaryFiles {
public:
    /// The file system outlives this object. With an empty path there is no journal.
    TemporaryFiles(platform::FileSystem& files, QByteArray journalPath);
    ~TemporaryFiles();
    TemporaryFiles(const TemporaryFiles&) = delete;
    TemporaryFiles& operator=(const TemporaryFiles&) = delete;

    /// Makes a file that nobody else has; its path stands in the journal before it is made.
    [[nodiscard]] std::error_code create(const QByteArray& folder, QByteArray& path, int& file);
    /// The same for a name alone.
    [[nodiscard]] QByteArray reserve(const QByteArray& folder);
    /// The file has its own name now, or was never made.
    void wasTaken();
    /// Removes the file, which is not to have its own name. What can't be removed now, as on a disk
    /// that has left, stays in the journal.
    void discard(const QByteArray& path);

    /// Removes what the journal of a former run names, and nothing that has another kind of name.
    /// What can't be looked at now, as on a disk that is away, stays in the journal. Before the
    /// first file is made; waits for disks.
    static void removeLeft(platform::FileSystem& files, const QByteArray& journalPath);
    [[nodiscard]] static bool isTemporaryName(const QByteArray& name);

private:
    void note(const QByteArray& path);

    platform::FileSystem& _files;
    const QByteArray _journalPath;
    int _journal = -1;
    int _pending = 0;
    /// Where what is left for the next start ends in the journal.
    std::int64_t _kept = 0;
};

} // namespace fileactions
