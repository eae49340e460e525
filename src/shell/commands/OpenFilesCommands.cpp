#include "shell/commands/OpenFilesCommands.h"

#include "core/FileTypes.h"
#include "core/PBAppDelegate.h"
#include "core/Paths.h"
#include "image/large/EarlyPhotograph.h"
#include "image/large/PBLoadImageManager.h"
#include "library/OpenedRoots.h"
#include "platform/files/PathNames.h"
#include "platform/tasks/MainThread.h"
#include "shell/commands/FilterCommands.h"
#include "shell/sidebar/FolderRootCommands.h"
#include "shell/sidebar/SourceSelection.h"
#include "shell/sidebar/SourceTreeController.h"

#include <QFileInfo>

#include <algorithm>
#include <utility>

namespace {

OpenFilesRequest::Kind kindOf(const QString& path) {
    const QFileInfo info(path);
    if (!info.exists()) return OpenFilesRequest::Kind::Missing;
    return info.isDir() ? OpenFilesRequest::Kind::Folder : OpenFilesRequest::Kind::File;
}

} // namespace

OpenFilesCommands::OpenFilesCommands(Parts parts, QObject* parent)
    : QObject(parent), _parts(std::move(parts)) {}

void OpenFilesCommands::openFiles(const QStringList& paths) {
    platform::assertMainThread();
    QStringList places;
    for (const QString& path : paths)
        places += placeOf(path);
    const auto request = OpenFilesRequest::reduce(places, kindOf);
    if (!request) return;
    // The decoding goes on behind all that follows.
    const OpenFilesRequest::NamedFile& first = request->firstFile;
    _parts.leaveLargeView();
    if (!first.fileName.isEmpty()) {
        EarlyPhotograph::shared().begin(
            platform::pathInFolder(first.folderPath, first.fileName),
            _parts.loadImageManager.screen());
    }
    _parts.filters.reset();
    if (request->namesFiles) {
        openPhotographs(*request);
    } else {
        openFolders(*request);
    }
}

void OpenFilesCommands::openPhotographs(const OpenFilesRequest& request) {
    for (const auto& folder : request.folders) {
        const bool isNamed = folder->fileArray.empty() && !folder->focusOpenFileObj;
        const bool isThere = isInSidebar(folder->folderPath, isNamed) ||
                             (isNamed ? _parts.commands.addOrSelectFolder(folder->folderPath)
                                      : _parts.commands.openFolder(folder->folderPath));
        if (!isThere) return showAlone(request);
    }
    _parts.delegate.setOpenFiles(std::make_shared<PBOpenFiles>(request.folders));
    // The scan goes to the others from there: what holds them all was not asked for.
    select(request.isAncestorUnnamed ? request.folders.front()->folderPath : request.ancestor);
    _parts.openFilesEnterToLargeView(request.firstFile);
}

void OpenFilesCommands::showAlone(const OpenFilesRequest& request) {
    if (request.firstFile.fileName.isEmpty()) return;
    _parts.delegate.setOpenFiles(std::make_shared<PBOpenFiles>(request.folders));
    _parts.openFilesEnterToLargeView(request.firstFile);
}

void OpenFilesCommands::openFolders(const OpenFilesRequest& request) {
    if (!request.isAncestorUnnamed || isInSidebar(request.ancestor, true))
        return openFolder(request.ancestor);
    // Several that nothing holds which the user named. The first stays selected: what the others
    // need is only a place in the sidebar.
    for (const auto& folder : std::span(request.folders).subspan(1)) {
        if (!isInSidebar(folder->folderPath, true))
            (void)_parts.commands.addOrSelectFolder(folder->folderPath);
    }
    openFolder(request.folders.front()->folderPath);
}

QString OpenFilesCommands::placeOf(const QString& path) const {
    const QFileInfo info(path);
    const QString folder = info.isDir() ? path : info.path();
    const QString place = QFileInfo(folder).canonicalFilePath();
    if (place.isEmpty() || place == folder) return path;
    QString below;
    const auto root = _parts.aliasManager.appropriateAliasObjectForPath(folder, &below, true);
    // A folder that becomes a root may be a link.
    if (!root && info.isDir()) return path;
    QString step = root ? root->path() : QString();
    const bool isBehindLink =
        std::ranges::any_of(PBUtilities::pathComponents(below), [&step](const QString& name) {
            step = platform::pathInFolder(step, name);
            return QFileInfo(step).isSymLink();
        });
    if (root && !isBehindLink) return path;
    return info.isDir() ? place : platform::pathInFolder(place, info.fileName());
}

bool OpenFilesCommands::isInSidebar(const QString& folder, bool isNamed) const {
    QString relativePath;
    const auto root =
        _parts.aliasManager.appropriateAliasObjectForPath(folder, &relativePath, true);
    // What was only opened is to stay once it is named.
    if (!root || !root->isMounted() || (isNamed && OpenedRoots::isOpened(*root))) return false;
    // The sidebar shows neither hidden folders nor those that are documents.
    QString path = root->path();
    const QStringList names = PBUtilities::pathComponents(relativePath);
    return std::ranges::none_of(names, [&path](const QString& name) {
        path = platform::pathInFolder(path, name);
        return name.startsWith(u'.') || PBUtilities::isPackageFile(path);
    });
}

void OpenFilesCommands::openFolder(const QString& folder) {
    if (isInSidebar(folder, true)) return select(folder);
    (void)_parts.commands.addOrSelectFolder(folder);
}

void OpenFilesCommands::select(const QString& folder) {
    const auto selected = _parts.tree.selectedFolder();
    if (selected && PBUtilities::comparePath(selected->folderPath(), folder) == 0) {
        _parts.selection.notifySelectionChanged();
    } else {
        _parts.selection.selectFolder(folder);
    }
}
