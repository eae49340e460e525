#pragma once

#include "fileactions/copy/FileTransfer.h"
#include "fileactions/trash/FileRemoval.h"

#include <utility>
#include <variant>
#include <vector>

namespace fileactions {

/// What takes back, or does once more, what a command did to files: a value.
struct FileEdit {
    /// Each file to its other path; conflicts are asked.
    struct MoveFiles {
        std::vector<std::pair<QByteArray, QByteArray>> paths;
    };
    /// Files that the program made go to the trash, unless somebody has changed them since.
    struct DiscardFiles {
        struct File {
            QByteArray path;
            platform::FileSystem::Entry made;
        };
        std::vector<File> files;
    };
    struct RestoreFiles {
        std::vector<platform::TrashedFile> files;
    };
    std::variant<std::monostate, MoveFiles, DiscardFiles, RestoreFiles> change;
    /// Folders that are to stand first, those above before those in them.
    std::vector<QByteArray> madeBefore;
    /// Folders that go at the end where they are empty by then, those in others before these.
    std::vector<QByteArray> removedAfter;

    [[nodiscard]] bool changesFiles() const {
        return !std::holds_alternative<std::monostate>(change);
    }
    [[nodiscard]] bool isEmpty() const {
        return !changesFiles() && madeBefore.empty() && removedAfter.empty();
    }
    /// What takes these back; empty where nothing was done, or nothing can be taken back.
    [[nodiscard]] static FileEdit takingBack(const TransferResult& result, TransferPlan::Kind kind);
    [[nodiscard]] static FileEdit takingBack(const RemovalResult& result);
};

/// What became of a command on files.
struct FileOutcome {
    FileEdit inverse;
    /// What an edit that was cancelled half-way, or stopped at a question, has not come to.
    FileEdit rest;
    std::vector<QByteArray> made; ///< paths that have files now
    std::vector<QByteArray> gone; ///< paths that had
    /// Rows of the catalogue that went elsewhere with their files, or out of it, or have their
    /// files again.
    std::vector<qint64> changedRows;
    bool isCancelled = false;
    /// Of what went wrong without having been told yet; `failedCount` 0: nothing.
    FileFailure failure;
    std::int64_t failedCount = 0;
    /// Of an edit that has changed nothing: it could be tried again.
    bool isStillToDo = false;
};

/// Performs the commands on files, and what takes them back. Blocks; on a thread of its own.
class FileEditor {
public:
    /// All outlive this object.
    struct Environment {
        platform::FileSystem& files;
        TemporaryFiles& temporaries;
        platform::Trash& trash;
        FollowingRows& rows;
        FilePrompts& prompts;
        QString copyWord;
    };
    FileEditor(const Environment& environment, std::stop_token stop)
        : _environment(environment), _stop(std::move(stop)) {}

    [[nodiscard]] FileOutcome transfer(const TransferPlan& plan) const;
    [[nodiscard]] FileOutcome moveToTrash(const std::vector<QByteArray>& paths) const;
    [[nodiscard]] FileOutcome deleteForGood(const std::vector<QByteArray>& paths) const;
    [[nodiscard]] FileOutcome perform(const FileEdit& edit) const;

private:
    [[nodiscard]] FileRemoval removal() const {
        return {_environment.files, _environment.trash, _environment.prompts};
    }
    /// Whether there is a file that it would change, or one that can't be looked at.
    [[nodiscard]] bool isToDo(const FileEdit& edit) const;
    [[nodiscard]] bool isGone(const QByteArray& path) const;
    [[nodiscard]] std::vector<QByteArray>
    removeFolders(const std::vector<QByteArray>& folders) const;
    /// Without its folders.
    [[nodiscard]] FileOutcome performNow(const FileEdit& edit) const;
    /// `left`: sources of those that it did not come to.
    [[nodiscard]] FileOutcome
    transfer(const TransferPlan& plan, std::vector<QByteArray>& left) const;
    [[nodiscard]] FileOutcome move(const FileEdit::MoveFiles& edit) const;
    [[nodiscard]] FileOutcome discard(const FileEdit::DiscardFiles& edit) const;
    [[nodiscard]] FileOutcome restore(const FileEdit::RestoreFiles& edit) const;

    const Environment _environment;
    const std::stop_token _stop;
};

} // namespace fileactions
