#include "shell/SourceSidebar.h"

#include "core/PBAppDelegate.h"
#include "library/PBAliasResolver.h"
#include "ui/FolderDropTarget.h"

#include <QMainWindow>

#include <utility>

SourceSidebar::SourceSidebar(
    PBAppDelegate& delegate, QMainWindow& window, FolderPrompts& prompts,
    std::function<void()> updateImageBrowserTipView)
    : _delegate(delegate), _dataSource(delegate.aliasManager(), delegate.folderLister()),
      _view(new PBSourceOutlineView(&window)), _tree(_dataSource, *_view, nullptr),
      _selection({delegate, _tree, prompts, window}, nullptr),
      _commands({delegate, _tree, prompts, std::move(updateImageBrowserTipView)}, nullptr) {
    _dataSource.reloadCategoryItem();
    _tree.expandCategoryItem();
    auto* dropTarget = new FolderDropTarget(
        *_view->viewport(), [this](const QString& path) { return isFolder(path); });
    QObject::connect(
        dropTarget, &FolderDropTarget::dropped, &_commands,
        [this](const QStringList& folders) { addFolders(folders); });
}

bool SourceSidebar::isFolder(const QString& path) const {
    return _delegate.aliasResolver().isFolder(path);
}

void SourceSidebar::addFolders(const QStringList& folders) {
    for (const QString& folder : folders)
        _commands.doAddFolder(folder);
}
