#pragma once

#include <QByteArray>

#include <cstdint>
#include <system_error>

namespace fileactions {

/// How far a command on files has come.
struct FileProgress {
    std::int64_t number = 0; ///< of the file under way, from 1
    std::int64_t total = 0;
    QByteArray path;
    qint64 fileId = 0;      ///< of the photograph on show; 0: not known
    std::int64_t bytes = 0; ///< of all files
    std::int64_t totalBytes = 0;
};

/// What could not be done with a file.
struct FileFailure {
    QByteArray path;
    QByteArray destination; ///< empty where there is none
    std::error_code error;
};

/// What a command on files asks and tells while it works. Called on its thread, which waits for the
/// answers.
class FilePrompts {
public:
    enum class Answer { Replace, Skip, Stop };
    struct ConflictAnswer {
        Answer answer = Answer::Stop;
        bool applyToAll = false; ///< for the rest of this command
    };
    virtual ~FilePrompts() = default;

    /// The destination exists.
    [[nodiscard]] virtual ConflictAnswer askConflict(const FileFailure& conflict) = 0;
    /// Whether to leave this one out and go on; false: stop.
    [[nodiscard]] virtual bool askSkip(const FileFailure& failure) = 0;
    virtual void tellFailure(const FileFailure& failure) = 0;
    /// Files on disks without a trash: whether to delete them for good.
    [[nodiscard]] virtual bool askDeleteForGood(std::int64_t count) = 0;
    /// Told often; must not wait.
    virtual void progress(const FileProgress& progress) = 0;
};

} // namespace fileactions
