#include "shell/commands/OpenFilesCommands.h"

#include "core/PBAppDelegate.h"
#include "core/Paths.h"
#include "image/large/EarlyPhotograph.h"
#include "image/large/PBLoadImageManager.h"
#include "library/OpenedRoots.h"
#include "platform/files/PathNames.h"
#include "platform/tasks/MainThread.h"
#include "shell/commands/FilterCommands.h"
#include "shell/commands/OpenedPlaces.h"
#include "shell/sidebar/FolderRootCommands.h"
#include "shell/sidebar/SourceSelection.h"
#include "shell/sidebar/SourceTreeController.h"

#include <chrono>
#include <utility>

namespace {

/// Disks that are awake take a few milliseconds.
constexpr std::chrono::milliseconds longestWait{250};

std::vector<KnownRoot> knownRoots(const PBAliasManager& manager) {
    std::vector<KnownRoot> roots;
    for (const auto& root : manager.aliasArray()) {
        if (root->isMounted() && !root->isZombie())
            roots.push_back({root->path(), OpenedRoots::isOpened(*root)});
    }
    return roots;
}

} // namespace

OpenFilesCommands::OpenFilesCommands(Parts parts, QObject* parent)
    : QObject(parent), _parts(std::move(parts)) {}

void OpenFilesCommands::openFiles(const QStringList& paths) {
    platform::assertMainThread();
    if (paths.isEmpty()) return;
    // What lies in a root that a slow disk kept from being found belongs there.
    _parts.selection.lookForRootsOf(paths);
    using Request = std::optional<OpenFilesRequest>;
    const int number = ++_asked;
    const auto take = [this, number](const Request& request) {
        if (number != _asked) return;
        _looked = number;
        if (request) open(*request);
    };
    // A lane for each: one dead disk must not keep what lies on others.
    const auto request = _looks.call<Request>(
        QString::number(number), {}, longestWait,
        [paths, roots = knownRoots(_parts.aliasManager)] { return openedPlaces(paths, roots); },
        take);
    if (request) take(*request);
}

void OpenFilesCommands::open(const OpenFilesRequest& request) {
    // The decoding goes on behind all that follows.
    const OpenFilesRequest::NamedFile& first = request.firstFile;
    _parts.leaveLargeView();
    if (!first.fileName.isEmpty()) {
        EarlyPhotograph::shared().begin(
            platform::pathInFolder(first.folderPath, first.fileName),
            _parts.loadImageManager.screen());
    }
    _parts.filters.reset();
    if (request.namesFiles) {
        openPhotographs(request);
    } else {
        openFolders(request);
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

bool OpenFilesCommands::isInSidebar(const QString& folder, bool isNamed) const {
    const auto root = _parts.aliasManager.appropriateAliasObjectForPath(folder, nullptr, true);
    // What was only opened is to stay once it is named.
    if (!root || !root->isMounted() || (isNamed && OpenedRoots::isOpened(*root))) return false;
    return OpenedRoots::isShownIn(root->path(), folder);
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
