#pragma once

#include "core/PBOpenFiles.h"
#include "support/Support.h"

inline std::shared_ptr<PBOpenFileObject> openedFile(const QString& name) {
    return std::make_shared<PBOpenFileObject>(PBOpenFileObject{0, name});
}

/// A folder that is opened, whole or for these files.
inline std::shared_ptr<PBOpenFolderObject> opened(const QString& path, const char* files = "") {
    auto folder = std::make_shared<PBOpenFolderObject>();
    folder->folderPath = path;
    for (const QString& name : support::words(files))
        folder->fileArray.push_back(openedFile(name));
    return folder;
}
