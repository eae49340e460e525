#pragma once

#include "library/PBSourceTreeDataSource.h"
#include "shell/sidebar/FolderRootCommands.h"
#include "shell/sidebar/PBSourceOutlineView.h"
#include "shell/sidebar/RootRelocation.h"
#include "shell/sidebar/SourceSelection.h"
#include "shell/sidebar/SourceTreeController.h"

#include <functional>

class FolderPrompts;
class PBAliasResolver;
class QMainWindow;
struct ShellServices;

/// The sidebar with its folder roots: the parts, put together. Main thread.
class SourceSidebar {
public:
    /// All that is handed in outlives this object. The view is a child of the window.
    SourceSidebar(
        const ShellServices& services, QMainWindow& window, FolderPrompts& prompts,
        std::function<void()> updateImageBrowserTipView);

    [[nodiscard]] PBSourceOutlineView* view() const { return _view; }
    [[nodiscard]] SourceTreeController& tree() { return _tree; }
    [[nodiscard]] SourceSelection& selection() { return _selection; }
    [[nodiscard]] FolderRootCommands& commands() { return _commands; }

    /// Whether the path is a folder that could be added; bounded in time.
    [[nodiscard]] bool isFolder(const QString& path) const;
    void addFolders(const QStringList& folders);

private:
    void showLocated(const std::shared_ptr<PBAliasObject>& aliasObject);

    PBAliasResolver& _aliasResolver;
    PBSourceTreeDataSource _dataSource;
    PBSourceOutlineView* _view;
    SourceTreeController _tree;
    SourceSelection _selection;
    RootRelocation _relocation;
    FolderRootCommands _commands;
};
