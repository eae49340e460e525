#pragma once

#include "platform/files/FileSystem.h"

#include <QByteArray>
#include <QHashFunctions>

#include <functional>
#include <optional>
#include <unordered_map>

namespace platform {

/// One file in the trash, with what it takes to bring it back.
struct TrashedFile {
    QByteArray originalPath;
    QByteArray trashedPath;
    QByteArray infoPath;
    bool operator==(const TrashedFile&) const = default;
};

/// The trash of the desktop, by the Trash specification 1.0 of freedesktop.org: one in the data
/// folder of the user for his own disk, one at the top of each other mounted disk. One thread at a
/// time; waits for disks.
class Trash {
public:
    struct Environment {
        /// In the folder of XDG_DATA_HOME.
        QByteArray homeTrash;
        std::uint32_t userId = 0;
        /// The topmost folder to which a file of this folder can be renamed: that at which its disk
        /// is mounted, or a volume within it; empty: unknown.
        std::function<QByteArray(const QByteArray& folder)> topFolder;
        /// As the information files of trashes have it, local time.
        std::function<QByteArray()> deletionDate;

        [[nodiscard]] static Environment ofUser();
    };
    /// The file system outlives this object.
    explicit Trash(FileSystem& files, Environment environment = Environment::ofUser())
        : _files(files), _environment(std::move(environment)) {}

    /// Moves the file there. `not_supported`: no trash takes files of this disk. What fails leaves
    /// the file where it was.
    [[nodiscard]] std::error_code trash(const QByteArray& path, TrashedFile& trashed);
    /// Moves it back; what has come to its place meanwhile stays, with `file_exists`. A folder that
    /// is gone is made again.
    [[nodiscard]] std::error_code restore(const TrashedFile& trashed);

private:
    /// A trash folder that stands and can be used.
    struct Folder {
        QByteArray path;
        QByteArray top; ///< paths are kept relative to it; empty: absolute
    };
    /// Nothing where files of that folder can't be renamed to there, or where there is none.
    [[nodiscard]] std::optional<Folder> homeTrashFor(const QByteArray& folder);
    [[nodiscard]] std::optional<Folder> trashAtTopOf(const QByteArray& folder);
    [[nodiscard]] bool makeOwnFolder(const QByteArray& path, bool mayBeLink);
    /// With those above it, as far as they can be made.
    void makeFolders(const QByteArray& path);
    [[nodiscard]] bool isUsable(const QByteArray& path);
    [[nodiscard]] std::error_code
    moveInto(const Folder& folder, const QByteArray& path, TrashedFile& trashed);
    [[nodiscard]] std::error_code
    writeInfo(const Folder& folder, const QByteArray& path, const QByteArray& infoPath);

    FileSystem& _files;
    const Environment _environment;
    /// By the folder of the file; nothing where there is none.
    std::unordered_map<QByteArray, std::optional<Folder>> _known;
    std::unordered_map<QByteArray, int> _lastNumbers; ///< by the path without a number
};

} // namespace platform
