#include "core/OpenFilesRequest.h"

#include "core/Paths.h"

#include <QSet>

#include <algorithm>

using PBUtilities::comparePath;

namespace {

bool isWhole(const PBOpenFolderObject& folder) {
    return folder.fileArray.empty();
}

std::shared_ptr<PBOpenFolderObject> makeFolder(const QString& path) {
    auto folder = std::make_shared<PBOpenFolderObject>();
    folder->folderPath = path;
    return folder;
}

void addFolder(PBOpenFolderArray& folders, const QString& path) {
    bool isCovered = false;
    std::erase_if(folders, [&](const auto& entry) {
        const int place = comparePath(path, entry->folderPath);
        isCovered = isCovered || (place == -1 && isWhole(*entry));
        return place == 0 || place == 1;
    });
    if (!isCovered) folders.push_back(makeFolder(path));
}

void addFile(PBOpenFolderArray& folders, const QString& path) {
    const QStringList components = PBUtilities::pathComponents(path);
    const QString parent = PBUtilities::pathWithComponents(components.first(components.size() - 1));
    auto file = std::make_shared<PBOpenFileObject>();
    file->fileName = components.constLast();
    for (const auto& entry : folders) {
        const int place = comparePath(entry->folderPath, parent);
        if (isWhole(*entry) && (place == 0 || place == 1)) return;
        if (!isWhole(*entry) && place == 0) {
            entry->fileArray.push_back(std::move(file));
            return;
        }
    }
    folders.push_back(makeFolder(parent));
    folders.back()->fileArray.push_back(std::move(file));
}

void findAncestor(OpenFilesRequest& request) {
    request.ancestor = request.folders.front()->folderPath;
    request.isAncestorUnnamed = !isWhole(*request.folders.front());
    for (const auto& entry : std::span(request.folders).subspan(1)) {
        const QString ancestor = PBUtilities::ancestorOfPath(request.ancestor, entry->folderPath);
        if (comparePath(ancestor, request.ancestor) != 0) {
            request.isAncestorUnnamed = comparePath(ancestor, entry->folderPath) != 0;
        }
        request.ancestor = ancestor;
    }
}

} // namespace

bool asksForWholeFolder(const PBOpenFiles& request) {
    return std::ranges::any_of(request.openFileArray(), [](const auto& folder) {
        return folder.fileArray.empty() && !folder.focusOpenFileObj;
    });
}

std::optional<OpenFilesRequest>
OpenFilesRequest::reduce(const QStringList& paths, const KindOf& kindOf) {
    OpenFilesRequest request;
    QSet<QString> named;
    for (const QString& path : paths) {
        if (named.contains(path)) continue;
        named.insert(path);
        switch (kindOf(path)) {
        case Kind::Folder:
            addFolder(request.folders, path);
            break;
        case Kind::File:
            request.namesFiles = true;
            addFile(request.folders, path);
            break;
        case Kind::Missing:
            break;
        }
    }
    if (request.folders.empty()) return std::nullopt;
    findAncestor(request);
    const auto ofFiles = std::ranges::find_if_not(
        request.folders, [](const auto& folder) { return isWhole(*folder); });
    if (ofFiles != request.folders.end())
        request.firstFile = {(*ofFiles)->folderPath, (*ofFiles)->fileArray.front()->fileName};
    PBOpenFolderObject& first = *request.folders.front();
    if (request.folders.size() == 1 && first.fileArray.size() == 1) {
        first.focusOpenFileObj = first.fileArray.front();
        first.fileArray.clear();
    }
    return request;
}
