#pragma once

#include "fileactions/marks/EditRunner.h"
#include "shell/files/ExportCommands.h"
#include "shell/files/FileCommands.h"
#include "shell/files/FileSheets.h"
#include "shell/files/FileTasks.h"
#include "shell/files/ShareCommands.h"
#include "shell/files/ShareServices.h"

#include <memory>

class BrowserPane;
class ChosenPhotographs;
class GroupMenus;
class MainMenu;
class MainToolbar;
class QMainWindow;
class SourceSidebar;
class ToolbarController;
struct ShellServices;

/// The commands on files in the main window: put together, and connected with menus, keys and the
/// sidebar. Main thread.
class WindowFiles {
public:
    struct Parts {
        const ShellServices& services;
        QMainWindow& window;
        BrowserPane& browserPane;
        SourceSidebar& sourceSidebar;
        GroupMenus& groupMenus;
        MainMenu& menu;
        const ChosenPhotographs& chosen;
        ToolbarController& toolbarController;
        MainToolbar& toolbar;
    };
    /// The parts outlive this object.
    explicit WindowFiles(const Parts& parts);
    /// Stops what runs, and waits for it.
    ~WindowFiles();

    [[nodiscard]] FileCommands& commands() { return _commands; }
    [[nodiscard]] bool isIdle() const { return _tasks.isIdle(); }

private:
    void connectMenus();
    void connectShares();
    void takeDrops();
    /// Files that take their place in the history of edits.
    [[nodiscard]] fileactions::OtherWay wayOf(const fileactions::FileEdit& edit);

    const Parts _parts;
    FileSheets _sheets;
    FileTasks _tasks;
    FileCommands _commands;
    ExportDialogs _exportDialogs;
    ExportCommands _exports;
    ShareServices _shareServices;
    ShareCommands _shares;
};
