#pragma once

#include <memory>

class BrowserPane;
class FilterCommands;
class FolderPrompts;
class FolderRootCommands;
class MainToolbar;
class PaneLayout;
class PBAppDelegate;
class PBImageBrowserTipView;
class QMainWindow;
class QWidget;
class SourceSelection;
class SourceSidebar;
class StatusBarView;
class WindowCommands;

/// The one window of the program: builds it from its parts and connects them. Main thread.
class PBMainWindowController {
public:
    /// The delegate outlives this object.
    explicit PBMainWindowController(PBAppDelegate& delegate);
    ~PBMainWindowController();

    [[nodiscard]] QMainWindow& window() const;
    [[nodiscard]] PBImageBrowserTipView& imageBrowserTipView() const {
        return *_imageBrowserTipView;
    }

    [[nodiscard]] SourceSidebar& sourceSidebar() { return *_sourceSidebar; }
    [[nodiscard]] SourceSelection& sourceSelection();
    [[nodiscard]] FolderRootCommands& folderRootCommands();
    [[nodiscard]] FilterCommands& filterCommands() { return *_filterCommands; }

    void showWindow();

    /// Empties the browser: another folder will be shown.
    void clearBrowser();

    /// Shows why the browser is empty, or hides the tip.
    void updateImageBrowserTipView();

    [[nodiscard]] bool isFullScreen() const;
    [[nodiscard]] bool hideStatusBar() const;
    /// Stored at once.
    void setHideStatusBar(bool hide);

private:
    void buildWindow();
    [[nodiscard]] QWidget* makeBrowserPane();
    void connectFolderCommands();
    void validateVisibleItems();
    void redrawBars();
    void restoreGeometry();
    void saveGeometry();

    class Window;

    PBAppDelegate& _delegate;
    std::unique_ptr<BrowserPane> _browserPane; // serves the window's views, and goes after them
    std::unique_ptr<Window> _window;
    std::unique_ptr<FolderPrompts> _folderPrompts;
    std::unique_ptr<SourceSidebar> _sourceSidebar; // goes before the window and its views
    // Children of the window, which owns them.
    PBImageBrowserTipView* _imageBrowserTipView = nullptr;
    FilterCommands* _filterCommands = nullptr;
    PaneLayout* _panes = nullptr;
    StatusBarView* _statusBarView = nullptr;
    MainToolbar* _toolbar = nullptr;
    std::unique_ptr<WindowCommands> _commands; // goes before all of them
};
