#include "shell/commands/WindowCommands.h"

#include "browser/PBImageBrowserView.h"
#include "fileactions/marks/EditRunner.h"
#include "shell/commands/FilterCommands.h"
#include "shell/commands/MarkCommands.h"
#include "shell/commands/SelectionCommands.h"
#include "shell/large/LargeView.h"
#include "shell/large/SlideshowCommand.h"
#include "shell/menus/HelpDialogs.h"
#include "shell/menus/MainMenu.h"
#include "shell/panes/BrowserPane.h"
#include "shell/panes/PaneFocus.h"
#include "shell/panes/StatusBarView.h"
#include "shell/panes/ThumbnailSizeSlider.h"
#include "shell/services/Preferences.h"
#include "shell/services/ShellServices.h"
#include "shell/sidebar/SourceSidebar.h"
#include "ui/RevealFiles.h"

#include <QMainWindow>
#include <QToolBar>

using Command = MenuCommand;

namespace {

struct PaneRow {
    MenuCommand command;
    PaneLayout::Pane pane;
};

constexpr PaneRow paneRows[] = {
    {Command::view_SideBar, PaneLayout::Pane::SideBar},
    {Command::view_Folder, PaneLayout::Pane::Folder},
    {Command::view_Group, PaneLayout::Pane::Group},
    {Command::view_Info, PaneLayout::Pane::Info},
};

struct StepRow {
    MenuCommand command;
    BrowserStep step;
};

constexpr StepRow stepRows[] = {
    {Command::go_PreviousItem, BrowserStep::PrevIndex},
    {Command::go_NextItem, BrowserStep::NextIndex},
    {Command::go_FirstItem, BrowserStep::FirstIndex},
    {Command::go_LastItem, BrowserStep::LastIndex},
    {Command::go_PreviousGroup, BrowserStep::PreviousGroup},
    {Command::go_NextGroup, BrowserStep::NextGroup},
    {Command::go_FirstGroupItem, BrowserStep::FirstIndexInGroup},
    {Command::go_LastGroupItem, BrowserStep::LastIndexInGroup},
};

} // namespace

WindowCommands::WindowCommands(const Parts& parts, QObject* parent)
    : QObject(parent), _parts(parts), _settings(parts.services.userDefaults),
      _largeCommands(parts.largeView),
      _stateReader(
          {.delegate = parts.services.delegate,
           .browsing = parts.services.browsing,
           .userDefaults = parts.services.userDefaults,
           .pathHistory = parts.services.pathHistory,
           .imageImporterManager = parts.services.imageImporterManager,
           .edits = parts.services.edits,
           .chosen = parts.chosen,
           .window = parts.window,
           .browserPane = parts.browserPane,
           .largeView = _largeCommands,
           .tree = parts.sourceSidebar.tree(),
           .panes = parts.panes}),
      _arrange(parts.services.browsing, parts.services.delegate),
      _browserView(parts.browserPane.browserView(), parts.services.userDefaults, nullptr),
      _rename(
          {.edits = parts.services.edits,
           .browserPane = parts.browserPane,
           .window = parts.window}),
      _tags({.edits = parts.services.edits, .window = parts.window}),
      _fullScreen(
          {.window = parts.window,
           .toolbar = parts.toolbar,
           .hideToolbar = [this] { return _settings.hideToolbar() && !_parts.isFinding(); }},
          nullptr),
      _menu(new MainMenu(
          parts.window,
          [this](bool includesPasteboard) { return _stateReader.read(includesPasteboard); },
          this)) {
    connectFolderCommands();
    connectEditCommands();
    connectMarkCommands();
    connectBrowserCommands();
    connectPaneCommands();
    connectGoCommands();
    connectBrowserSignals();
    connectLargeView();
    _menu->connectCommand(Command::quit, [this] { _parts.window.close(); });
    _menu->connectCommand(Command::showShortcuts, [this] {
        const bool zooms = _parts.services.preferences.wheel() == Preferences::Wheel::Zoom;
        HelpDialogs::showShortcuts(*_menu, zooms, _parts.window);
    });
    _menu->connectCommand(Command::showAbout, [this] { HelpDialogs::showAbout(_parts.window); });
    updateStatusBarShowHide(false);
    _menu->validate();
}

void WindowCommands::connectFolderCommands() {
    FolderRootCommands& folders = _parts.sourceSidebar.commands();
    SourceSelection& selection = _parts.sourceSidebar.selection();
    _menu->connectCommand(Command::addFolderAlias, [&folders] { folders.addFolderAlias(); });
    _menu->connectCommand(Command::removeFolderAlias, [&folders] { folders.removeFolderAlias(); });
    connectInBoth(Command::revealInFinder, [this] { revealInFinder(); });
    _menu->connectCommand(Command::back, [&selection] { selection.back(); });
    _menu->connectCommand(Command::forward, [&selection] { selection.forward(); });
}

void WindowCommands::connectEditCommands() {
    fileactions::EditRunner& edits = _parts.services.edits;
    _menu->connectCommand(Command::undo, [&edits] { edits.undo(); });
    _menu->connectCommand(Command::redo, [&edits] { edits.redo(); });
    connectSelection(*_menu, _parts.browserPane.browserView());
    _menu->connectCommand(Command::find, [this] {
        _fullScreen.showBars();
        _parts.find();
    });
    _menu->connectCommand(Command::renameFile, [this] { _rename.begin(); });
}

void WindowCommands::connectMarkCommands() {
    MarkCommands& marks = _parts.marks;
    for (const MarkCommands::Row& row : MarkCommands::rows())
        _menu->connectCommand(row.command, [&marks, &row] { marks.perform(row.change); });
    _menu->connectCommand(Command::manageTags, [this] { _tags.show(); });
    const PBImageBrowserView& view = _parts.browserPane.browserView();
    const auto trigger = [this](Command command) {
        return [this, command] { _menu->trigger(command); };
    };
    using View = PBImageBrowserView;
    connect(&view, &View::flagToggleRequested, this, trigger(Command::flagClicked));
    connect(&view, &View::rotateLeftRequested, this, trigger(Command::rotateLeft));
    connect(&view, &View::rotateRightRequested, this, trigger(Command::rotateRight));
    connect(&view, &PBImageBrowserView::ratingRequested, &marks, &MarkCommands::ratingWithStar);
}

void WindowCommands::connectBrowserCommands() {
    for (const ArrangeCommands::Row& row : ArrangeCommands::rows()) {
        _menu->connectCommand(
            row.command, [this, argument = row.argument] { _arrange.doArrangeMenu(argument); });
    }
    for (const BrowserViewCommands::StyleRow& row : BrowserViewCommands::styleRows()) {
        _menu->connectCommand(row.command, [this, argument = row.argument] {
            _browserView.doThumbnailAndInfoMenu(argument);
        });
    }
    connectInBoth(Command::view_zoomIn, [this] { _browserView.zoomIn(); });
    connectInBoth(Command::view_zoomOut, [this] { _browserView.zoomOut(); });
    FilterCommands& filters = _parts.filterCommands;
    _menu->connectCommand(Command::filter_Flag, [&filters] { filters.filter_Flag(); });
    _menu->connectCommand(Command::filter_Star, [&filters] { filters.filter_Star(); });
    _menu->connectCommand(Command::recurseSubFolder, [&filters] { filters.recurseSubFolder(); });

    ThumbnailSizeSlider& slider = _parts.statusBarView.thumbnailSizeSlider();
    slider.setThumbnailSize(_settings.thumbnailSize());
    connect(
        &slider, &ThumbnailSizeSlider::thumbnailSizeSlide, &_browserView,
        &BrowserViewCommands::thumbnailSizeSlide);
    connect(
        &_browserView, &BrowserViewCommands::thumbnailSizeDidChange, &slider,
        &ThumbnailSizeSlider::setThumbnailSize);
}

void WindowCommands::connectPaneCommands() {
    for (const PaneRow& row : paneRows)
        connectInBoth(row.command, [this, pane = row.pane] { togglePane(pane); });
    connect(&_parts.statusBarView, &StatusBarView::paneToggled, this, &WindowCommands::togglePane);
    _menu->connectCommand(Command::view_toolbar, [this] { toggleToolbar(); });
    _menu->connectCommand(
        Command::view_StatusBar, [this] { setHideStatusBar(!_settings.hideStatusBar()); });
    _menu->connectCommand(Command::view_FullScreen, [this] { _fullScreen.toggle(); });
    _menu->connectCommand(
        Command::nextPane, [this] { PaneFocus::moveTo(_parts.keyboardPanes, false); });
    _menu->connectCommand(
        Command::previousPane, [this] { PaneFocus::moveTo(_parts.keyboardPanes, true); });
    connect(&_fullScreen, &FullScreenControl::fullScreenDidChange, this, [this] {
        updateStatusBarShowHide(false);
    });
}

void WindowCommands::connectGoCommands() {
    for (const StepRow& row : stepRows) {
        connectInBoth(
            row.command, [this, step = row.step] { _parts.browserPane.browserView().goTo(step); });
    }
}

void WindowCommands::connectBrowserSignals() {
    PBImageBrowserView& view = _parts.browserPane.browserView();
    connect(
        &view, &PBImageBrowserView::contextMenuRequested, this,
        [this, &view](bool isOnItem, const QPoint& globalPosition) {
            _menu->popUpBrowserMenu(isOnItem, globalPosition, &view);
        });
    connect(
        &view, &PBImageBrowserView::renameRequested, this,
        [this](const std::shared_ptr<PBImageFileItem>& item, const QString& text) {
            _rename.finish(item, text);
        });
    connect(
        &view, &PBImageBrowserView::selectionDidChange, &_parts.statusBarView,
        &StatusBarView::setSelectCount);
    connect(
        &view, &PBImageBrowserView::itemCountDidChange, &_parts.statusBarView,
        [this, &view](qint64 count) {
            _parts.statusBarView.setItemCount(count);
            _parts.statusBarView.setSelectCount(
                view.selection().selectCount(FoldedLeaves::Included));
        });
}

void WindowCommands::connectInBoth(MenuCommand command, std::function<void()> inBrowser) {
    _menu->connectCommand(command, [this, command, inBrowser = std::move(inBrowser)] {
        if (!_largeCommands.perform(command)) inBrowser();
    });
}

void WindowCommands::connectLargeView() {
    LargeView& largeView = _parts.largeView;
    _menu->connectCommand(
        Command::view_BrowserView, [&largeView] { largeView.view_BrowserView(); });
    _menu->connectCommand(Command::view_SlideshowView, [&show = _parts.slideshowCommand] {
        show.view_SlideshowView();
    });
    for (const Command command :
         {Command::view_ThumbnailView, Command::view_fitIn, Command::view_ActualSize,
          Command::view_PhotoBin, Command::view_Navigation})
        connectInBoth(command, [] {});
    connect(&largeView, &LargeView::isShownDidChange, this, [this] { _menu->validate(); });
    connect(&largeView, &LargeView::commandRequested, this, [this](MenuCommand command) {
        _menu->trigger(command);
    });
    connect(&largeView, &LargeView::contextMenuRequested, this, [this](const QPoint& position) {
        _menu->popUpLargeViewMenu(position, &_parts.window);
    });
}

void WindowCommands::revealInFinder() {
    if (_parts.browserPane.browserView().hasFocus()) {
        revealFiles(_parts.window, _parts.browserPane.selectedFilePath());
    } else if (const auto folder = _parts.sourceSidebar.tree().selectedFolder()) {
        _parts.sourceSidebar.commands().revealInFinder(*folder);
    }
}

void WindowCommands::togglePane(PaneLayout::Pane pane) {
    _parts.panes.toggle(pane);
}

void WindowCommands::toggleToolbar() {
    _settings.setHideToolbar(!_settings.hideToolbar());
    _fullScreen.updateBars();
}

void WindowCommands::setHideStatusBar(bool hide) {
    _settings.setHideStatusBar(hide);
    updateStatusBarShowHide(true);
}

void WindowCommands::updateStatusBarShowHide(bool animated) {
    const bool isShown = !_settings.hideStatusBar() && !_fullScreen.isFullScreen();
    _parts.statusBarView.setShown(isShown, animated);
    _parts.largeView.setStatusBarShown(isShown);
}
