#pragma once

#include "core/SortedArray.h"
#include "platform/tasks/Mutex.h"

#include <QString>

#include <cstdint>
#include <memory>
#include <vector>

/// A file that the user asked to open. Ids are 0 until they are known.
struct PBOpenFileObject {
    qint64 fileId = 0;
    QString fileName;

    [[nodiscard]] std::int64_t sortCompare(const PBOpenFileObject& other, int context) const;
};
using PBOpenFileArray = std::vector<std::shared_ptr<PBOpenFileObject>>;

/// A folder that the user asked to open, whole or for some of its files.
struct PBOpenFolderObject {
    qint64 folderId = 0;
    QString folderPath;
    /// The file to show first; may be empty.
    std::shared_ptr<PBOpenFileObject> focusOpenFileObj;
    /// The files asked for; none means the whole folder.
    PBOpenFileArray fileArray;
    /// Files of the folder that turned out not to be asked for.
    PBOpenFileArray notFileArray;

    [[nodiscard]] std::int64_t sortCompare(const PBOpenFolderObject& other, int context) const;
};
using PBOpenFolderArray = std::vector<std::shared_ptr<PBOpenFolderObject>>;

/// A request to open files and folders from outside: answers what belongs to it. What it has found
/// out of a folder or file it keeps by its id, so that the questions of a long scan cost no
/// comparison of paths. Any thread.
class PBOpenFiles {
public:
    struct FolderMatch {
        enum Kind : int { Outside = -1, Asked = 0, BelowAsked = 1 };
        Kind kind = Outside;
        /// Copies; only for `Asked`.
        std::vector<PBOpenFileObject> fileArray;
        std::shared_ptr<const PBOpenFileObject> focusOpenFileObj;
    };
    struct OpenFolder {
        QString folderPath;
        std::vector<PBOpenFileObject> fileArray;
        std::shared_ptr<const PBOpenFileObject> focusOpenFileObj;
    };

    PBOpenFiles() = default;
    explicit PBOpenFiles(PBOpenFolderArray openFileArray);
    PBOpenFiles(const PBOpenFiles&) = delete;
    PBOpenFiles& operator=(const PBOpenFiles&) = delete;

    /// What was asked for, as it stands now.
    [[nodiscard]] std::vector<OpenFolder> openFileArray() const;

    /// Whether the folder is one of those asked for, or lies below one that was asked for whole. An
    /// id of 0 is none.
    [[nodiscard]] FolderMatch matchFolder(qint64 folderId, const QString& folderPath);
    /// Whether the file belongs to the request.
    [[nodiscard]] bool matchFileInFolder(
        qint64 folderId, const QString& folderPath, qint64 fileId, const QString& fileName);

private:
    struct Found {
        FolderMatch::Kind kind = FolderMatch::Outside;
        PBOpenFolderObject* folder = nullptr; // only for `Asked`
    };
    [[nodiscard]] Found findFolder(qint64 folderId, const QString& folderPath)
        VELMORA_REQUIRES(_monitor);
    [[nodiscard]] static bool
    matchFile(PBOpenFolderObject& folder, qint64 fileId, const QString& fileName);
    void setFolderId(PBOpenFolderObject& folder, qint64 folderId) VELMORA_REQUIRES(_monitor);
    [[nodiscard]] static PBOpenFolderObject* find(const PBOpenFolderArray& array, qint64 folderId);
    static void remember(PBOpenFolderArray& array, qint64 folderId);

    /// Guards also what the arrays point to, and what that points to.
    mutable platform::Mutex _monitor;
    /// Sorted by id, like the others.
    PBOpenFolderArray _openFileArray VELMORA_GUARDED_BY(_monitor);
    PBOpenFolderArray _openSubFolderArray VELMORA_GUARDED_BY(_monitor);
    PBOpenFolderArray _notOpenFileArray VELMORA_GUARDED_BY(_monitor);
};
