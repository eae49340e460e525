#pragma once

#include <QByteArray>

#include <cstdint>
#include <system_error>

namespace platform {

/// What changes files, one step of the kernel's at a time, so that a test can let any step fail.
/// Paths are absolute and spelled as the disk spells them; every step blocks as long as the disk
/// does. No error is the zero code. Any thread.
class FileSystem {
public:
    enum class Kind { File, Folder, Link, Other };
    /// What stands at a path, links not followed.
    struct Entry {
        Kind kind = Kind::Other;
        std::int64_t size = 0;     ///< bytes
        std::int64_t modified = 0; ///< nanoseconds since 1970
        std::uint64_t device = 0;
        std::uint64_t inode = 0;
        std::uint32_t owner = 0;
        std::uint32_t mode = 0;  ///< permissions and sticky bit
        std::uint64_t names = 1; ///< that the file has (hard links)

        [[nodiscard]] bool isSameFile(const Entry& other) const {
            return device == other.device && inode == other.inode;
        }
        bool operator==(const Entry&) const = default;
    };

    virtual ~FileSystem() = default;

    [[nodiscard]] virtual std::error_code look(const QByteArray& path, Entry& entry) = 0;
    /// Opens what is a regular file, links followed; `entry` is what was opened.
    [[nodiscard]] virtual std::error_code
    openSource(const QByteArray& path, int& file, Entry& entry) = 0;
    /// Makes a file that nobody else has, for writing, which only the user can read; `file_exists`
    /// where the name is taken.
    [[nodiscard]] virtual std::error_code create(const QByteArray& path, int& file) = 0;
    /// Gives such a file the permissions of any program's new one, as far as its disk has some.
    virtual void permitAsOrdinary(int file) = 0;
    /// Copies what comes next, at most some megabytes, or all at once where both files can share
    /// their blocks; 0 at the end.
    [[nodiscard]] virtual std::error_code copySome(int from, int to, std::int64_t& copied) = 0;
    /// Dates, permissions and extended attributes. What the disk of the copy can't hold is left
    /// out.
    [[nodiscard]] virtual std::error_code copyAttributes(int from, int to) = 0;
    [[nodiscard]] virtual std::error_code write(int file, const QByteArray& bytes) = 0;
    /// Returns when the disk has the file.
    [[nodiscard]] virtual std::error_code sync(int file) = 0;
    /// The same of the names in a folder; a disk that can't is no error.
    [[nodiscard]] virtual std::error_code syncFolder(const QByteArray& folder) = 0;
    /// Closes in any case; the error is one of writing that only shows now.
    [[nodiscard]] virtual std::error_code close(int file) = 0;
    /// What has the new path already stays, with the error `file_exists`; so it does where it
    /// appears at the same moment.
    [[nodiscard]] virtual std::error_code
    renameToFree(const QByteArray& path, const QByteArray& toPath) = 0;
    /// Puts the file in the place of another, which is there until then.
    [[nodiscard]] virtual std::error_code
    renameOver(const QByteArray& path, const QByteArray& toPath) = 0;
    [[nodiscard]] virtual std::error_code
    makeLink(const QByteArray& target, const QByteArray& path) = 0;
    [[nodiscard]] virtual std::error_code readLink(const QByteArray& path, QByteArray& target) = 0;
    [[nodiscard]] virtual std::error_code remove(const QByteArray& path) = 0;
    /// Makes one folder, in a folder that is there.
    [[nodiscard]] virtual std::error_code
    makeFolder(const QByteArray& path, std::uint32_t mode) = 0;
    /// Only one that is empty, with `directory_not_empty` else.
    [[nodiscard]] virtual std::error_code removeFolder(const QByteArray& path) = 0;
};

/// The file system of this machine.
class DiskFileSystem : public FileSystem {
public:
    [[nodiscard]] std::error_code look(const QByteArray& path, Entry& entry) override;
    [[nodiscard]] std::error_code
    openSource(const QByteArray& path, int& file, Entry& entry) override;
    [[nodiscard]] std::error_code create(const QByteArray& path, int& file) override;
    void permitAsOrdinary(int file) override;
    [[nodiscard]] std::error_code copySome(int from, int to, std::int64_t& copied) override;
    [[nodiscard]] std::error_code copyAttributes(int from, int to) override;
    [[nodiscard]] std::error_code write(int file, const QByteArray& bytes) override;
    [[nodiscard]] std::error_code sync(int file) override;
    [[nodiscard]] std::error_code syncFolder(const QByteArray& folder) override;
    [[nodiscard]] std::error_code close(int file) override;
    [[nodiscard]] std::error_code
    renameToFree(const QByteArray& path, const QByteArray& toPath) override;
    [[nodiscard]] std::error_code
    renameOver(const QByteArray& path, const QByteArray& toPath) override;
    [[nodiscard]] std::error_code
    makeLink(const QByteArray& target, const QByteArray& path) override;
    [[nodiscard]] std::error_code readLink(const QByteArray& path, QByteArray& target) override;
    [[nodiscard]] std::error_code remove(const QByteArray& path) override;
    [[nodiscard]] std::error_code makeFolder(const QByteArray& path, std::uint32_t mode) override;
    [[nodiscard]] std::error_code removeFolder(const QByteArray& path) override;
};

/// The folder that the path lies in; "/" for what lies there, and for "/" itself.
[[nodiscard]] QByteArray folderOfPath(const QByteArray& path);
/// What follows the last separator.
[[nodiscard]] QByteArray nameOfPath(const QByteArray& path);

} // namespace platform
