#pragma once

#include "fileactions/copy/FileTransfer.h"

#include <QFile>
#include <QTemporaryDir>

#include <cstddef>

namespace bench {

/// Carries out plans on the disk as the program does, and stops at what would be asked.
class Transfers {
public:
    /// The journal lies in the folder, which outlives this object.
    explicit Transfers(const QTemporaryDir& folder)
        : _temporaries(_files, QFile::encodeName(folder.filePath(QStringLiteral("journal")))) {}

    [[nodiscard]] std::size_t run(const fileactions::TransferPlan& plan) {
        fileactions::FileTransfer transfer(
            {.files = _files,
             .temporaries = _temporaries,
             .rows = _rows,
             .prompts = _prompts,
             .copyWord = QStringLiteral("copy")});
        return transfer.run(plan, std::stop_token()).files.size();
    }

private:
    struct NoPrompts final : fileactions::FilePrompts {
        ConflictAnswer askConflict(const fileactions::FileFailure& /*conflict*/) override {
            return {};
        }
        bool askSkip(const fileactions::FileFailure& /*failure*/) override { return false; }
        void tellFailure(const fileactions::FileFailure& /*failure*/) override {}
        bool askDeleteForGood(std::int64_t /*count*/) override { return false; }
        void progress(const fileactions::FileProgress& /*progress*/) override {}
    };

    platform::DiskFileSystem _files;
    fileactions::TemporaryFiles _temporaries;
    fileactions::FollowingRows _rows;
    NoPrompts _prompts;
};

} // namespace bench
