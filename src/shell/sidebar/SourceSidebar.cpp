#include "shell/sidebar/SourceSidebar.h"

#include "library/PBAliasResolver.h"
#include "shell/services/ShellServices.h"
#include "ui/FolderDropTarget.h"

#include <QMainWindow>

#include <utility>

SourceSidebar::SourceSidebar(
    const ShellServices& services, QMainWindow& window, FolderPrompts& prompts,
    std::function<void()> updateImageBrowserTipView)
    : _aliasResolver(services.aliasResolver),
      _dataSource(services.aliasManager, services.folderLister),
      _view(new PBSourceOutlineView(&window)),
      _tree(_dataSource, *_view, services.userDefaults, nullptr),
      _selection(
          {.delegate = services.delegate,
           .browsing = services.browsing,
           .userDefaults = services.userDefaults,
           .aliasManager = services.aliasManager,
           .pathHistory = services.pathHistory,
           .tree = _tree,
           .prompts = prompts,
           .window = window},
          nullptr),
      _relocation(
          {.aliasManager = services.aliasManager,
           .aliasResolver = services.aliasResolver,
           .prompts = prompts,
           .located = [this](const auto& root) { showLocated(root); }},
          nullptr),
      _commands(
          {.delegate = services.delegate,
           .aliasManager = services.aliasManager,
           .aliasResolver = services.aliasResolver,
           .mainFileDb = services.mainFileDb,
           .scanOperationQueue = services.scanOperationQueue,
           .insertFolderAliasLock = services.insertFolderAliasLock,
           .tree = _tree,
           .prompts = prompts,
           .relocation = _relocation,
           .updateImageBrowserTipView = std::move(updateImageBrowserTipView)},
          nullptr) {
    _dataSource.reloadCategoryItem();
    _tree.expandCategoryItem();
    auto* dropTarget = new FolderDropTarget(
        *_view->viewport(), [this](const QString& path) { return isFolder(path); });
    QObject::connect(
        dropTarget, &FolderDropTarget::dropped, &_commands,
        [this](const QStringList& folders) { addFolders(folders); });
}

void SourceSidebar::showLocated(const std::shared_ptr<PBAliasObject>& aliasObject) {
    _selection.volumesDidMount({aliasObject});
    const auto item = _dataSource.folderAliasItemWithAliasObject(*aliasObject);
    if (item) _tree.select(*item);
}

bool SourceSidebar::isFolder(const QString& path) const {
    return _aliasResolver.isFolder(path);
}

void SourceSidebar::addFolders(const QStringList& folders) {
    for (const QString& folder : folders)
        _commands.doAddFolder(folder);
}
