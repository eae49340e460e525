#pragma once

#include "core/PBOpenFiles.h"
#include "platform/files/FileManager.h"

#include <QStringList>

#include <functional>
#include <optional>

/// What a list of paths from outside comes to: some folders, each whole or for some of its files,
/// and the one folder that holds them all. Pure functions, any thread.
struct OpenFilesRequest {
    /// In the order in which they were asked for; never empty.
    PBOpenFolderArray folders;
    /// The folder to select: the deepest that holds everything.
    QString ancestor;
    /// The user named no folder that is the ancestor: it only came out so.
    bool isAncestorUnnamed = false;
    /// There was a file among the paths.
    bool namesFiles = false;
    /// The first of them that no folder covers; both empty where there is none.
    struct NamedFile {
        QString folderPath;
        QString fileName;
        /// As the disk has it, where somebody has looked.
        std::optional<platform::ResourceValues> values = {};
    };
    NamedFile firstFile = {};

    enum class Kind { Missing, Folder, File };
    using KindOf = std::function<Kind(const QString& path)>;

    /// Paths are absolute and clean. What is missing is skipped; nothing if nothing is left. One
    /// single file asks for its whole folder, with the file in focus.
    [[nodiscard]] static std::optional<OpenFilesRequest>
    reduce(const QStringList& paths, const KindOf& kindOf);
};

/// The user named a folder, which is meant with what is below it.
[[nodiscard]] bool asksForWholeFolder(const PBOpenFiles& request);
