#pragma once

#include "catalogue/marks/TagNames.h"
#include "shell/panes/WorkProgress.h"
#include "shell/services/ShellServices.h"

#include <functional>
#include <memory>

class BrowserPane;
class FilterCommands;
class FolderPrompts;
class FolderRootCommands;
class GroupMenus;
class GroupPanel;
class GroupSheets;
class ImageToolbarController;
class LargeView;
class InfoFeed;
class MainMenu;
class MainToolbar;
class MarkCommands;
class NoticeBar;
class OpenFilesCommands;
class PaneLayout;
class PBImageBrowserTipView;
class PBPathControl;
class QMainWindow;
class QStackedWidget;
class QMenu;
class QWidget;
class Slideshow;
class SlideshowCommand;
class SlideshowStart;
class SourceSelection;
class SourceSidebar;
class StatusBarView;
class StatusNews;
class RefusedKeys;
class ToolbarController;
class ToolbarReasons;
class WindowChoice;
class WindowCommands;
class WindowFiles;
class WindowSession;

/// The one window of the program: builds it from its parts and connects them. Main thread.
class PBMainWindowController {
public:
    explicit PBMainWindowController(const ShellServices& services);
    ~PBMainWindowController();

    [[nodiscard]] QMainWindow& window() const;
    [[nodiscard]] PBImageBrowserTipView& imageBrowserTipView() const {
        return *_imageBrowserTipView;
    }

    [[nodiscard]] SourceSidebar& sourceSidebar() { return *_sourceSidebar; }
    [[nodiscard]] SourceSelection& sourceSelection();
    [[nodiscard]] FolderRootCommands& folderRootCommands();
    [[nodiscard]] OpenFilesCommands& openFilesCommands() { return *_openFilesCommands; }
    [[nodiscard]] MainToolbar& mainToolbar() { return *_toolbar; }
    [[nodiscard]] InfoFeed& infoFeed() { return *_infoFeed; }
    [[nodiscard]] FilterCommands& filterCommands() { return *_filterCommands; }
    [[nodiscard]] WindowFiles& files() { return *_files; }
    [[nodiscard]] bool isWorkingOnFiles() const;
    /// Stops commands on files, and waits for them.
    void stopFileCommands();
    /// What commands act on; the large view says here what is in focus.
    [[nodiscard]] WindowChoice& choice() { return *_choice; }
    [[nodiscard]] MarkCommands& markCommands() { return *_marks; }

    [[nodiscard]] LargeView& largeView() { return *_largeView; }
    /// The large view is shown in the browser's place.
    [[nodiscard]] bool isLargeView() const;

    [[nodiscard]] const Slideshow& slideshow() const;
    /// For a show of what is about to be shown.
    [[nodiscard]] SlideshowStart& slideshowStart() { return *_slideshowStart; }

    /// Where troubles are told.
    [[nodiscard]] NoticeBar& noticeBar() { return *_noticeBar; }

    /// What the window shows, from one run to the next.
    [[nodiscard]] WindowSession& session() { return *_session; }
    /// Stores what the window shows and how it stands: the program may be ended.
    void saveSession();
    /// The photograph that is shown large from a folder that is there for this run only: the
    /// session has nothing of it. Its path, or nothing.
    [[nodiscard]] QStringList openedOnShow() const;

    void showWindow();
    void fillScreen();

    /// Empties the browser: another folder will be shown, or the same one anew.
    void clearBrowser();

    /// What the counters of the work in the background say; once, before the window is shown.
    void setWorkFigures(std::function<WorkFigures()> figures);
    /// A scan began or ended.
    void scanStateDidChange();

    /// Shows why the browser is empty, or hides the tip.
    void updateImageBrowserTipView();

private:
    void buildWindow();
    [[nodiscard]] QWidget* makeBrowserPane();
    [[nodiscard]] QWidget* makeThumbnailView();
    void makeGroupViews();
    /// Places were found: their photographs are regrouped where the chain groups by place.
    void reverseGeoFinished();
    void connectFolderCommands();
    void makeOpenFiles();
    void makeLargeView(QStackedWidget& contents);
    void connectImageToolbar();
    void tellReasons();
    [[nodiscard]] QWidget* makeSortButton();
    [[nodiscard]] QMenu& makeRatingMenu();
    void connectRemedies();
    void tellFilterLeftOn();
    void restoreGeometry();
    void saveGeometry();

    class Window;

    const ShellServices _services;
    marks::TagNames _tagNames{_services.mainFileDb};
    QString _shownFolder;                      ///< by its root and path
    std::unique_ptr<BrowserPane> _browserPane; // serves the window's views, and goes after them
    std::unique_ptr<LargeView> _largeView;     // the same
    std::unique_ptr<InfoFeed> _infoFeed;       // the same for its pane
    std::unique_ptr<Window> _window;
    std::unique_ptr<FolderPrompts> _folderPrompts;
    std::unique_ptr<StatusNews> _statusNews;
    // These go before the window and its views.
    std::unique_ptr<WindowChoice> _choice;
    std::unique_ptr<MarkCommands> _marks;
    std::unique_ptr<SourceSidebar> _sourceSidebar;
    std::unique_ptr<GroupSheets> _groupPrompts;
    std::unique_ptr<GroupMenus> _groupMenus;
    std::unique_ptr<GroupPanel> _groupPanel;
    // Children of the window, which owns them.
    QWidget* _infoView = nullptr; // the browser's, which holds it as long as the browser is shown
    PBImageBrowserTipView* _imageBrowserTipView = nullptr;
    FilterCommands* _filterCommands = nullptr;
    OpenFilesCommands* _openFilesCommands = nullptr;
    PBPathControl* _groupPathControl = nullptr;
    PaneLayout* _panes = nullptr;
    NoticeBar* _noticeBar = nullptr;
    StatusBarView* _statusBarView = nullptr;
    WorkProgress* _workProgress = nullptr;
    MainToolbar* _toolbar = nullptr;
    ToolbarController* _toolbarController = nullptr;
    std::unique_ptr<SlideshowCommand> _slideshowCommand; // its window is a child, too
    std::unique_ptr<WindowCommands> _commands;           // goes before all of them
    std::unique_ptr<ImageToolbarController> _imageToolbarController;
    std::unique_ptr<ToolbarReasons> _toolbarReasons;
    std::unique_ptr<RefusedKeys> _refusedKeys;
    std::unique_ptr<WindowFiles> _files;
    // Children of the window.
    WindowSession* _session = nullptr;
    SlideshowStart* _slideshowStart = nullptr;
};
