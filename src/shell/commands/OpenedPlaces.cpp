#include "shell/commands/OpenedPlaces.h"

#include "core/Paths.h"
#include "platform/files/PathNames.h"

#include <QFileInfo>

#include <algorithm>

namespace {

OpenFilesRequest::Kind kindOf(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) return OpenFilesRequest::Kind::Missing;
    return info.isDir() ? OpenFilesRequest::Kind::Folder : OpenFilesRequest::Kind::File;
}

/// The deepest that has the folder; nullptr for none.
const KnownRoot* rootOf(const QString& folder, const std::vector<KnownRoot>& roots) {
    const KnownRoot* deepest = nullptr;
    for (const KnownRoot& root : roots) {
        const int place = PBUtilities::comparePath(root.path, folder);
        if (place != 0 && (place != 1 || root.isOpened)) continue;
        if (!deepest || deepest->path.size() < root.path.size()) deepest = &root;
    }
    return deepest;
}

bool isBehindLink(const QString& folder, const KnownRoot& root) {
    const QStringList names =
        PBUtilities::pathComponents(folder).sliced(PBUtilities::pathComponents(root.path).size());
    QString step = root.path;
    return std::ranges::any_of(names, [&step](const QString& name) {
        step = platform::pathInFolder(step, name);
        return QFileInfo(step).isSymLink();
    });
}

QString placeOf(const QString& path, const std::vector<KnownRoot>& roots) {
    const QFileInfo info(path);
    const QString folder = info.isDir() ? path : info.path();
    const QString place = QFileInfo(folder).canonicalFilePath();
    if (place.isEmpty() || place == folder) return path;
    const KnownRoot* root = rootOf(folder, roots);
    // A folder that becomes a root may be a link.
    if (root ? !isBehindLink(folder, *root) : info.isDir()) return path;
    return info.isDir() ? place : platform::pathInFolder(place, info.fileName());
}

} // namespace

std::optional<OpenFilesRequest>
openedPlaces(const QStringList& paths, const std::vector<KnownRoot>& roots) {
    QStringList places;
    for (const QString& path : paths)
        places += placeOf(path, roots);
    auto request = OpenFilesRequest::reduce(places, kindOf);
    if (request && !request->firstFile.fileName.isEmpty()) {
        OpenFilesRequest::NamedFile& first = request->firstFile;
        first.values = platform::FileManager::resourceValues(
            platform::pathInFolder(first.folderPath, first.fileName));
    }
    return request;
}
