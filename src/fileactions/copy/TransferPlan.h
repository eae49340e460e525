#pragma once

#include <QByteArray>

#include <cstdint>
#include <functional>
#include <optional>
#include <stop_token>
#include <system_error>
#include <vector>

namespace fileactions {

/// A photograph was to be replaced by what is made of it; no file system answers so.
inline const std::error_code ownPlace = std::make_error_code(std::errc::argument_out_of_domain);

/// What is to be copied or moved where: a value. Paths are absolute, as the disk spells them.
struct TransferPlan {
    enum class Kind {
        Copy,      ///< onto itself: a duplicate
        Move,      ///< onto itself: nothing
        Duplicate, ///< beside the file, under the next free name
    };
    /// Content that is worked out when its turn comes. Blocks; stopped, it is `operation_canceled`.
    using Maker = std::function<std::error_code(const std::stop_token& stop, QByteArray& content)>;
    struct File {
        QByteArray source; ///< of one with content: the name to be given
        QByteArray folder; ///< where it goes; one of `folder` steps, or one that is there
        QByteArray name;   ///< the name there
        /// A file that has not been one yet, such as a picture off the pasteboard: where the name
        /// is taken it gets the next free one.
        std::optional<QByteArray> content = std::nullopt;
        qint64 fileId = 0; ///< of the photograph on show; 0: not known
        /// Another file made of the source, as in an export; never put in the source's own place,
        /// but under the next free name. Of one with content: what fills that.
        Maker make = {};
        /// What has the name of a made file already goes without a question; where that is the
        /// source, nothing is made (`ownPlace`).
        bool replaces = false;
        /// Else the next one is told under the same number.
        bool isCounted = true;
    };
    /// One step, in the order in which they are done: a folder that is to stand, or a file.
    struct Step {
        QByteArray folder; ///< empty: `file` counts
        File file;
    };

    Kind kind = Kind::Copy;
    std::vector<Step> steps;
    /// A made file that can't be had ends it, without a question.
    bool endsAtFailure = false;

    [[nodiscard]] bool isEmpty() const { return steps.empty(); }
    [[nodiscard]] std::int64_t fileCount() const;
    void addFolder(const QByteArray& folder) { steps.push_back({.folder = folder, .file = {}}); }
    void addFile(File file) { steps.push_back({.folder = {}, .file = std::move(file)}); }
    /// Under its own name.
    void addFile(const QByteArray& source, const QByteArray& folder, qint64 fileId = 0);
};

/// A plan for each file into the folder; `Duplicate` takes no folder.
[[nodiscard]] TransferPlan planTransfer(
    TransferPlan::Kind kind, const std::vector<QByteArray>& sources, const QByteArray& folder);

} // namespace fileactions
