#pragma once

#include "library/PBSourceTreeDataSource.h"
#include "shell/FolderRootCommands.h"
#include "shell/PBSourceOutlineView.h"
#include "shell/SourceSelection.h"
#include "shell/SourceTreeController.h"

#include <functional>

class FolderPrompts;
class PBAppDelegate;
class QMainWindow;

/// The sidebar with its folder roots: the parts, put together. Main thread.
class SourceSidebar {
public:
    /// Delegate, window and prompts outlive this object. The view is a child of the window.
    SourceSidebar(
        PBAppDelegate& delegate, QMainWindow& window, FolderPrompts& prompts,
        std::function<void()> updateImageBrowserTipView);

    [[nodiscard]] PBSourceOutlineView* view() const { return _view; }
    [[nodiscard]] SourceTreeController& tree() { return _tree; }
    [[nodiscard]] SourceSelection& selection() { return _selection; }
    [[nodiscard]] FolderRootCommands& commands() { return _commands; }

    /// Whether the path is a folder that could be added; bounded in time.
    [[nodiscard]] bool isFolder(const QString& path) const;
    void addFolders(const QStringList& folders);

private:
    PBAppDelegate& _delegate;
    PBSourceTreeDataSource _dataSource;
    PBSourceOutlineView* _view;
    SourceTreeController _tree;
    SourceSelection _selection;
    FolderRootCommands _commands;
};
