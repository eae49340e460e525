#pragma once

#include <QByteArray>

#include <memory>

#include <dirent.h>

namespace platform {

struct CloseDirectory {
    void operator()(DIR* directory) const { ::closedir(directory); }
};

/// A folder that is being read; closed at the end.
using DirectoryHandle = std::unique_ptr<DIR, CloseDirectory>;

/// Empty where the folder can't be opened, with the reason in `errno`.
[[nodiscard]] inline DirectoryHandle openDirectory(const QByteArray& path) {
    return DirectoryHandle(::opendir(path.constData()));
}

} // namespace platform
