#pragma once

#include "fileactions/copy/TransferPrompts.h"
#include "platform/desktop/Trash.h"

#include <QByteArray>

#include <stop_token>
#include <vector>

namespace fileactions {

/// What became of files that were to go.
struct RemovalResult {
    std::vector<platform::TrashedFile> trashed;
    std::vector<QByteArray> deleted; ///< for good
    std::vector<QByteArray> left;    ///< those that it did not come to, as it was cancelled
    bool isCancelled = false;
    /// The first that failed, and how many did.
    FileFailure failure;
    std::int64_t failedCount = 0;
};

/// Takes files to the trash, and deletes them. Blocks; on a thread of its own.
class FileRemoval {
public:
    /// All outlive this object.
    FileRemoval(platform::FileSystem& files, platform::Trash& trash, FilePrompts& prompts)
        : _files(files), _trash(trash), _prompts(prompts) {}

    /// Those on disks without a trash are deleted for good if the user says so, once for all. One
    /// that fails stays, and the rest goes on. What is gone already is left out without a word.
    [[nodiscard]] RemovalResult
    moveToTrash(const std::vector<QByteArray>& paths, const std::stop_token& stop);
    /// Asks nobody.
    [[nodiscard]] RemovalResult
    deleteForGood(const std::vector<QByteArray>& paths, const std::stop_token& stop);
    /// Brings files back, in `trashed` those that came; a name that is taken by now is a failure.
    [[nodiscard]] RemovalResult
    restore(const std::vector<platform::TrashedFile>& trashed, const std::stop_token& stop);

private:
    void deleteAll(
        const std::vector<QByteArray>& paths, RemovalResult& result, const std::stop_token& stop);
    void note(RemovalResult& result, const QByteArray& path, const std::error_code& error) const;
    [[nodiscard]] bool
    begin(RemovalResult& result, const QByteArray& path, const std::stop_token& stop);

    platform::FileSystem& _files;
    platform::Trash& _trash;
    FilePrompts& _prompts;
    FileProgress _progress;
};

} // namespace fileactions
