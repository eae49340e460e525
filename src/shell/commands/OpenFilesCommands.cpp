#include "shell/commands/OpenFilesCommands.h"

#include "core/FileTypes.h"
#include "core/PBAppDelegate.h"
#include "core/Paths.h"
#include "library/PBAliasManager.h"
#include "platform/files/PathNames.h"
#include "platform/tasks/MainThread.h"
#include "shell/commands/FilterCommands.h"
#include "shell/commands/OpenFilesReveal.h"
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
    const auto request = OpenFilesRequest::reduce(paths, kindOf);
    if (!request) return;
    if (request->isAncestorUnnamed && request->folders.size() > 1 &&
        !isInSidebar(request->ancestor)) {
        openEach(*request);
    } else {
        open(*request);
    }
}

void OpenFilesCommands::openEach(const OpenFilesRequest& request) {
    // The first stays selected: what the others need is only a place in the sidebar.
    for (const auto& folder : std::span(request.folders).subspan(1)) {
        if (!isInSidebar(folder->folderPath)) {
            (void)_parts.commands.addOrSelectFolder(folder->folderPath);
        }
    }
    const auto& first = request.folders.front();
    open({.folders = {first}, .ancestor = first->folderPath, .isAncestorUnnamed = false});
}

void OpenFilesCommands::open(const OpenFilesRequest& request) {
    _parts.leaveLargeView();
    _parts.filters.reset();
    auto openFiles = std::make_shared<PBOpenFiles>(request.folders);
    _parts.delegate.setOpenFiles(openFiles);
    _parts.reveal.begin(std::move(openFiles), request.ancestor);
    select(request.ancestor);
}

bool OpenFilesCommands::isInSidebar(const QString& folder) const {
    QString relativePath;
    const auto root =
        _parts.aliasManager.appropriateAliasObjectForPath(folder, &relativePath, false);
    if (!root || !root->isMounted()) return false;
    // The sidebar shows neither hidden folders nor those that are documents.
    QString path = root->path();
    const QStringList names = PBUtilities::pathComponents(relativePath);
    return std::ranges::none_of(names, [&path](const QString& name) {
        path = platform::pathInFolder(path, name);
        return name.startsWith(u'.') || PBUtilities::isPackageFile(path);
    });
}

void OpenFilesCommands::select(const QString& folder) {
    if (!isInSidebar(folder)) {
        if (!_parts.commands.addOrSelectFolder(folder)) _parts.reveal.end();
        return;
    }
    const auto selected = _parts.tree.selectedFolder();
    if (selected && PBUtilities::comparePath(selected->folderPath(), folder) == 0) {
        _parts.selection.notifySelectionChanged();
    } else {
        _parts.selection.selectFolder(folder);
    }
}
