#pragma once

#include "fileactions/copy/TemporaryFiles.h"

#include <functional>
#include <stop_token>

namespace fileactions {

/// Copies, moves and writes single files so that at any moment, whatever fails, each end has the
/// whole file, the one that was there before, or none. Blocks as long as the disks do. One thread
/// at a time.
class WholeCopy {
public:
    /// What becomes of a file that has the name already. It stays until the new one is whole.
    enum class IfTaken { Refuse, Replace };
    struct Environment {
        platform::FileSystem& files;
        TemporaryFiles& temporaries;
        /// Told of bytes as they are copied; less than 0 takes back what was told of a file.
        std::function<void(std::int64_t bytes)> copied;
        /// Called when all that takes time is done and names are about to change.
        std::function<void()> namesWillChange;
        /// Called before what takes time.
        std::function<void()> willTakeTime;
    };
    explicit WholeCopy(Environment environment) : _environment(std::move(environment)) {}

    /// Data, dates, permissions and extended attributes; of a link, those of its file. Refused with
    /// `file_exists`; stopped with `operation_canceled`; never over a folder (`is_a_directory`).
    [[nodiscard]] std::error_code copy(
        const QByteArray& source, const QByteArray& destination, IfTaken ifTaken,
        const std::stop_token& stop);
    /// Renames, or copies, syncs and then deletes the source. A link is moved as such, and leads
    /// to its file from its new place; never over that (`too_many_symbolic_link_levels`).
    [[nodiscard]] std::error_code move(
        const QByteArray& source, const QByteArray& destination, IfTaken ifTaken,
        const std::stop_token& stop);
    /// A file with this content.
    [[nodiscard]] std::error_code
    write(const QByteArray& content, const QByteArray& destination, IfTaken ifTaken);
    /// Whether the last of these has put a file there, even if it failed after that.
    [[nodiscard]] bool isInPlace() const { return _isInPlace; }

private:
    using Entry = platform::FileSystem::Entry;
    enum class Sync { No, Yes };

    [[nodiscard]] std::error_code checkPlace(const QByteArray& destination, IfTaken ifTaken);
    [[nodiscard]] std::error_code
    fill(int from, const Entry& source, int to, const std::stop_token& stop);
    [[nodiscard]] std::error_code copyWhole(
        const QByteArray& source, const QByteArray& destination, IfTaken ifTaken, Sync sync,
        const std::stop_token& stop);
    [[nodiscard]] std::error_code
    giveName(const QByteArray& path, const QByteArray& destination, IfTaken ifTaken);
    /// Of a temporary file: it has its own name, or never will.
    void letGo(const QByteArray& path, const std::error_code& error);
    [[nodiscard]] std::error_code
    moveLink(const QByteArray& source, const QByteArray& destination, IfTaken ifTaken);
    /// Whether the destination is another name of the file: a rename over it would do nothing.
    [[nodiscard]] bool
    isOtherName(const Entry& entry, const QByteArray& source, const QByteArray& destination);
    [[nodiscard]] std::error_code dropName(const QByteArray& source);
    /// `text_file_busy` if it is no longer what was copied.
    [[nodiscard]] std::error_code checkSource(const QByteArray& source);
    [[nodiscard]] std::error_code
    removeSource(const QByteArray& source, const QByteArray& destination, IfTaken ifTaken);
    /// What becomes of a move whose two ends are whole, with a source that could not be removed.
    [[nodiscard]] std::error_code afterFailure(
        const std::error_code& error, const QByteArray& source, const QByteArray& destination,
        IfTaken ifTaken);
    [[nodiscard]] std::error_code finish(
        int file, std::error_code error, const QByteArray& path, const QByteArray& destination,
        IfTaken ifTaken, Sync sync);

    const Environment _environment;
    Entry _source;          ///< of the file under way, as it was opened
    std::int64_t _told = 0; ///< bytes of the file under way
    bool _isInPlace = false;
};

} // namespace fileactions
