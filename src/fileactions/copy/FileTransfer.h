#pragma once

#include "fileactions/copy/FollowingRows.h"
#include "fileactions/copy/TransferPlan.h"
#include "fileactions/copy/TransferPrompts.h"
#include "fileactions/copy/WholeCopy.h"
#include "platform/files/Spelling.h"

#include <QHash>
#include <QSet>
#include <QString>

#include <set>
#include <utility>

namespace fileactions {

/// What became of a plan.
struct TransferResult {
    struct File {
        QByteArray source;
        QByteArray path;
        platform::FileSystem::Entry made; ///< as it stood then
        bool isReplacement = false;       ///< of another file
    };
    std::vector<File> files;         ///< those that were done, in their order
    std::vector<QByteArray> folders; ///< those that were made, in their order
    std::vector<QByteArray> left;    ///< sources of those that it did not come to
    bool isCancelled = false;        ///< by the user's hand; else to the end, or a failure was told
};

/// Carries out a plan, asking as it goes. Blocks; on a thread of its own, one for each object.
class FileTransfer {
public:
    struct Environment {
        platform::FileSystem& files;
        TemporaryFiles& temporaries;
        FollowingRows& rows;
        FilePrompts& prompts;
        QString copyWord; ///< ends the names of duplicates
        const platform::NamesOnDisk& names = platform::NamesOnDisk::real();
    };
    explicit FileTransfer(const Environment& environment);

    /// A stop takes effect within a file, which is then not there.
    [[nodiscard]] TransferResult run(const TransferPlan& plan, const std::stop_token& stop);

private:
    using IfTaken = WholeCopy::IfTaken;
    using File = TransferPlan::File;
    enum class Next { File, Stop };

    [[nodiscard]] Next makeFolder(const QByteArray& folder);
    /// The folder that stands for one of the plan, as its disk spells it.
    [[nodiscard]] QByteArray realFolder(const QByteArray& folder);
    [[nodiscard]] QByteArray spelled(const QByteArray& path) const;
    [[nodiscard]] Next transferFile(const File& file);
    /// What has not been a file yet.
    [[nodiscard]] std::error_code transferNew(const File& file, const QByteArray& destination);
    [[nodiscard]] Next transferMade(const File& file, const QByteArray& destination);
    /// Whether to go on with the other files.
    [[nodiscard]] Next leaveOut(const FileFailure& failure);
    [[nodiscard]] FilePrompts::Answer
    answerToConflict(const File& file, const QByteArray& destination);
    [[nodiscard]] Next resolveConflict(const File& file, const QByteArray& destination);
    [[nodiscard]] Next replace(const File& file, const QByteArray& destination);
    [[nodiscard]] Next fail(const FileFailure& failure);
    [[nodiscard]] std::error_code
    perform(const File& file, const QByteArray& wanted, IfTaken ifTaken);
    [[nodiscard]] std::error_code duplicate(const File& file, const QByteArray& folder);
    /// Whether the destination is the file that the source is, or leads to.
    [[nodiscard]] bool isOwnPlace(const QByteArray& source, const QByteArray& destination) const;
    /// Also where that can't be told.
    [[nodiscard]] bool hasMovedTo(const QByteArray& destination) const;
    void note(const File& file, const QByteArray& path, bool isReplacement);

    const Environment _environment;
    WholeCopy _copy;
    FileProgress _progress;
    TransferResult _result;
    TransferPlan::Kind _kind = TransferPlan::Kind::Copy;
    std::stop_token _stop;
    bool _endsAtFailure = false;
    bool _isCounted = true;    ///< the file before
    bool _changesRows = false; ///< of the file under way
    /// For the conflicts to come; nothing: ask.
    std::optional<FilePrompts::Answer> _forAll;
    bool _isForOwn = false; ///< also for those with files of this command
    /// Devices and inodes of what this command has put somewhere.
    std::set<std::pair<std::uint64_t, std::uint64_t>> _moved;
    QHash<QByteArray, QByteArray> _realFolders; ///< what stands for folders of the plan
    QSet<QByteArray> _failedFolders;
};

} // namespace fileactions
