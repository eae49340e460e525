#include "shell/PBMainWindowController.h"

#include "browser/PBImageBrowserContainerView.h"
#include "browser/PBImageBrowserTipView.h"
#include "browser/PBImageBrowserView.h"
#include "core/PBAppDelegate.h"
#include "fileactions/marks/EditRunner.h"
#include "group/GroupTypes.h"
#include "image/BuildThumbNotifier.h"
#include "library/OpenedRoots.h"
#include "library/PBFolderItem.h"
#include "places/PBGeoManager.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"
#include "shell/commands/EditNews.h"
#include "shell/commands/FilterCommands.h"
#include "shell/commands/MarkCommands.h"
#include "shell/commands/OpenFilesCommands.h"
#include "shell/commands/StatusNews.h"
#include "shell/commands/WindowChoice.h"
#include "shell/commands/WindowCommands.h"
#include "shell/files/WindowFiles.h"
#include "shell/groups/GroupMenus.h"
#include "shell/groups/GroupPanel.h"
#include "shell/info/InfoFeed.h"
#include "shell/large/LargeView.h"
#include "shell/large/SlideshowCommand.h"
#include "shell/large/SlideshowStart.h"
#include "shell/menus/MainMenu.h"
#include "shell/menus/RefusedKeys.h"
#include "shell/panes/BrowserPane.h"
#include "shell/panes/EmptyReason.h"
#include "shell/panes/InfoPane.h"
#include "shell/panes/NoticeBar.h"
#include "shell/panes/PaneFocus.h"
#include "shell/panes/PaneLayout.h"
#include "shell/panes/SortButton.h"
#include "shell/panes/StatusBarView.h"
#include "shell/preferences/PreferencesCommand.h"
#include "shell/printing/PrintCommand.h"
#include "shell/services/BrowsingSettings.h"
#include "shell/session/WindowSession.h"
#include "shell/sidebar/FirstRun.h"
#include "shell/sidebar/FolderPrompts.h"
#include "shell/sidebar/SourceSidebar.h"
#include "shell/toolbar/ImageToolbarController.h"
#include "shell/toolbar/MainToolbar.h"
#include "shell/toolbar/ToolbarController.h"
#include "shell/toolbar/ToolbarReasons.h"
#include "ui/DropTip.h"
#include "ui/FolderDropTarget.h"
#include "ui/HeaderBar.h"
#include "ui/MenuTracking.h"
#include "ui/PBPathControl.h"
#include "ui/PBThemes.h"
#include "viewer/PBImageView.h"

#include <QMainWindow>
#include <QMenu>
#include <QScreen>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>

using platform::localizedFormat;
using platform::localizedString;

namespace {

const QString geometryKey = QStringLiteral("WindowGeometry");
constexpr QSize firstWindowSize(1180, 760);
/// Leaves each pane its least.
constexpr QSize smallestWindowSize(640, 440);

/// Widgets one below the other, one of which takes what room there is.
QWidget* column(std::initializer_list<QWidget*> widgets, int stretched) {
    auto* column = new QWidget;
    auto* layout = new QVBoxLayout(column);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (QWidget* widget : widgets)
        layout->addWidget(widget);
    layout->setStretch(stretched, 1);
    return column;
}

/// A pane under its bar.
QWidget* titledPane(HeaderBar* bar, QWidget* content) {
    return column({bar, content}, 1);
}
QWidget* holderOf(QWidget* widget) {
    return column({widget}, 0);
}

} // namespace

/// Tells the controller of events that only the window itself hears.
class PBMainWindowController::Window final : public QMainWindow {
public:
    explicit Window(PBMainWindowController& controller) : _controller(controller) {}

protected:
    void closeEvent(QCloseEvent* event) override {
        _controller.saveGeometry();
        QMainWindow::closeEvent(event);
    }
    void showEvent(QShowEvent* event) override {
        QMainWindow::showEvent(event);
        // Pane sizes mean something only once the window has its own.
        if (!std::exchange(_wasShown, true)) _controller._panes->restorePositions();
    }

private:
    PBMainWindowController& _controller;
    bool _wasShown = false;
};

PBMainWindowController::PBMainWindowController(const ShellServices& services)
    : _services(services), _window(std::make_unique<Window>(*this)) {
    buildWindow();
    restoreGeometry();
    updateImageBrowserTipView();
}

PBMainWindowController::~PBMainWindowController() = default;

QMainWindow& PBMainWindowController::window() const {
    return *_window;
}

void PBMainWindowController::buildWindow() {
    _window->setWindowTitle(localizedString(u"Velmora"));
    _window->setMinimumSize(smallestWindowSize);
    // Its own menu hides the toolbar without anybody's knowledge.
    _window->setContextMenuPolicy(Qt::NoContextMenu);
    _folderPrompts = std::make_unique<FolderSheets>(*_window);
    _sourceSidebar = std::make_unique<SourceSidebar>(
        _services, *_window, *_folderPrompts, [this] { updateImageBrowserTipView(); });
    makeGroupViews();
    _filterCommands = new FilterCommands(_services.browsing, _services.delegate, _window.get());
    QObject::connect(
        &sourceSelection(), &SourceSelection::filtersDidReset, _filterCommands,
        &FilterCommands::announce);
    auto* sourceBar = new HeaderBar(localizedString(u"Folders"));
    _infoFeed = std::make_unique<InfoFeed>(_services);
    _infoView = holderOf(&_infoFeed->pane());
    _panes = new PaneLayout(
        {.source = titledPane(sourceBar, _sourceSidebar->view()),
         .group = titledPane(new HeaderBar(localizedString(u"Groups")), _groupPanel->view()),
         .thumbnail = makeThumbnailView(),
         .info = _infoView},
        _services.userDefaults, _window.get());
    _statusBarView = new StatusBarView(*_panes);

    _noticeBar = new NoticeBar;
    auto* contents = new QStackedWidget;
    contents->addWidget(column({_panes->view(), _statusBarView}, 0));
    _window->setCentralWidget(column({_noticeBar, contents}, 1));

    _choice = std::make_unique<WindowChoice>(_services.delegate, *_browserPane);
    _marks = std::make_unique<MarkCommands>(_services.edits, *_choice);
    _toolbar = new MainToolbar(_window.get());
    _window->addToolBar(_toolbar);
    _toolbarController = new ToolbarController(
        {.userDefaults = _services.userDefaults,
         .pathHistory = _services.pathHistory,
         .toolbar = *_toolbar,
         .sourceBar = *sourceBar,
         .filters = *_filterCommands,
         .selection = sourceSelection(),
         .browserPane = *_browserPane,
         .delegate = _services.delegate,
         .chosen = *_choice,
         .marks = *_marks,
         .edits = _services.edits,
         .panes = *_panes},
        _window.get());
    makeLargeView(*contents);
    _statusNews = std::make_unique<StatusNews>(StatusNews::Parts{
        .window = *_window, .statusBarView = *_statusBarView, .largeView = *_largeView});
    new EditNews(
        {.edits = _services.edits,
         .browserPane = *_browserPane,
         .statusNews = *_statusNews,
         .noticeBar = *_noticeBar,
         .delegate = _services.delegate},
        _window.get());
    _commands = std::make_unique<WindowCommands>(
        WindowCommands::Parts{
            .services = _services,
            .window = *_window,
            .chosen = *_choice,
            .marks = *_marks,
            .browserPane = *_browserPane,
            .sourceSidebar = *_sourceSidebar,
            .filterCommands = *_filterCommands,
            .panes = *_panes,
            .statusBarView = *_statusBarView,
            .toolbar = *_toolbar,
            .largeView = *_largeView,
            .slideshowCommand = *_slideshowCommand,
            .keyboardPanes =
                {_sourceSidebar->view(), _groupPanel->view(), &_browserPane->browserView(),
                 &_largeView->controller().imageView(), &_largeView->controller().thumbnailView(),
                 &_infoFeed->pane().panel()},
            .find = [this] { _toolbarController->find(); },
            .isFinding = [this] { return _toolbarController->isFinding(); }},
        nullptr);
    QObject::connect(
        _toolbarController, &ToolbarController::isFindingDidChange, _commands.get(),
        &WindowCommands::updateBars);
    _infoFeed->connectWindow(
        {.chosen = *_choice, .browserPane = *_browserPane, .window = *_window});
    _commands->menu().setGroupMenu(*_groupMenus->groupMenu());
    _toolbar->setGroupMenu(*_groupMenus->buttonMenu(), [this](const QWidget& button) {
        _groupMenus->groupMenuBtnClicked(button);
    });
    _toolbar->setRatingMenu(makeRatingMenu());
    QWidget* sortButton = makeSortButton();
    _groupPathControl->setTrailingWidget(sortButton);
    PaneFocus::setTabOrder(
        {_sourceSidebar->view(), _groupPanel->view(), _groupPathControl, sortButton,
         &_browserPane->browserView()});
    _files = std::make_unique<WindowFiles>(WindowFiles::Parts{
        .services = _services,
        .window = *_window,
        .browserPane = *_browserPane,
        .sourceSidebar = *_sourceSidebar,
        .groupMenus = *_groupMenus,
        .menu = _commands->menu(),
        .chosen = *_choice,
        .toolbarController = *_toolbarController,
        .toolbar = *_toolbar});
    connectFolderCommands();
    FirstRun::offerPictures(*_imageBrowserTipView, *_sourceSidebar);
    connectRemedies();
    tellFilterLeftOn();
    makeOpenFiles();
    connectImageToolbar();
    tellReasons();
    connectPrinting(
        {.menu = _commands->menu(),
         .chosen = *_choice,
         .folderPaths = _browserPane->folderPaths(),
         .importers = _services.imageImporterManager,
         .window = *_window});
    new PreferencesCommand(
        {.services = _services,
         .window = *_window,
         .menu = _commands->menu(),
         .imageView = _largeView->controller().imageView()},
        _window.get());
    _session = new WindowSession(
        {.services = _services,
         .browserPane = *_browserPane,
         .tree = _sourceSidebar->tree(),
         .largeView = *_largeView},
        _window.get());
    _slideshowStart = new SlideshowStart(
        {.command = *_slideshowCommand,
         .browserPane = *_browserPane,
         .isComing =
             [this] {
                 return _services.delegate.isScanning() || _session->isBringingBack() ||
                        _openFilesCommands->isLooking();
             },
         .isAwaited = [this] { return _largeView->isAwaitingOpened(); }},
        _window.get());
    QObject::connect(
        _session, &WindowSession::didBringBack, _slideshowStart, &SlideshowStart::photographsCame);
}

QWidget* PBMainWindowController::makeBrowserPane() {
    auto* container = new PBImageBrowserContainerView(
        [this](const QString& path) { return _sourceSidebar->isFolder(path); });
    QObject::connect(
        container, &PBImageBrowserContainerView::foldersDropped, container,
        [this](const QStringList& folders) { _sourceSidebar->addFolders(folders); });
    _browserPane =
        std::make_unique<BrowserPane>(_services, [this] { updateImageBrowserTipView(); });
    container->addLayer(_browserPane->view());
    _imageBrowserTipView = new PBImageBrowserTipView;
    _imageBrowserTipView->setFocusHeir(_browserPane->browserView());
    container->addLayer(_imageBrowserTipView);
    return container;
}

QWidget* PBMainWindowController::makeThumbnailView() {
    auto* view = new QWidget;
    auto* layout = new QVBoxLayout(view);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_groupPathControl);
    layout->addWidget(makeBrowserPane(), 1);
    view->setFocusProxy(&_browserPane->browserView());
    return view;
}

void PBMainWindowController::makeGroupViews() {
    _groupPanel = std::make_unique<GroupPanel>(
        _services.groupTreeDataSource,
        [this](qint64 tagId) { return _tagNames.tagWithTagId(tagId); },
        [this](const PBGroupItemData& leaf) { _browserPane->scrollToLeaf(leaf); });
    QObject::connect(
        &_services.edits, &fileactions::EditRunner::didEdit, _groupPanel.get(),
        [this](const fileactions::EditResult& result) {
            if (result.kind == fileactions::EditResult::Kind::TagEverywhere) _tagNames.forget();
        });
    _groupPrompts = std::make_unique<GroupSheets>(*_window);
    _groupMenus = std::make_unique<GroupMenus>(GroupMenus::Environment{
        .groupTypeArray = [this] { return _services.browsing.groupTypeArray(); },
        .setGroupTypeArray =
            [this](PBGroupTypeArray chain) { _services.browsing.setGroupTypeArray(chain); },
        .scan = [this] { _services.delegate.scan(); },
        .canUseGeocoder = [this] { return _services.geoManager.canUseGeocoder(); },
        .hasPhotographs =
            [this] { return !_services.groupTreeDataSource.groupItemArray().empty(); },
        .settings = _services.userDefaults,
        .prompts = *_groupPrompts});
    QObject::connect(
        &_services.geoManager, &PBGeoManager::reverseGeoFinished, _groupMenus.get(),
        [this] { reverseGeoFinished(); });
    _groupPathControl = new PBPathControl;
    _groupPathControl->setGroupTypeArray(_services.browsing.groupTypeArray());
    QObject::connect(
        _groupPathControl, &PBPathControl::groupMenuClicked, _groupMenus.get(),
        &GroupMenus::groupMenuClicked);
    QObject::connect(
        _groupMenus.get(), &GroupMenus::groupTypeArrayDidChange, _groupPathControl,
        &PBPathControl::setGroupTypeArray);
}

void PBMainWindowController::connectFolderCommands() {
    FolderRootCommands& commands = folderRootCommands();
    const auto add = [&commands] { commands.addFolderAlias(); };
    QObject::connect(
        _imageBrowserTipView, &PBImageBrowserTipView::addFolderRequested, &commands, add);
    QObject::connect(_toolbar->addFolderAction(), &QAction::triggered, &commands, add);
}

QWidget* PBMainWindowController::makeSortButton() {
    const MainMenu& menu = _commands->menu();
    const auto range = [&menu](MenuCommand first, MenuCommand last) {
        QList<QAction*> actions;
        for (int command = static_cast<int>(first); command <= static_cast<int>(last); ++command)
            actions.push_back(menu.action(static_cast<MenuCommand>(command)));
        return actions;
    };
    return new SortButton(
        range(MenuCommand::arrange_FileName, MenuCommand::arrange_None),
        range(MenuCommand::arrange_Ascending, MenuCommand::arrange_Dscending));
}

QMenu& PBMainWindowController::makeRatingMenu() {
    auto* menu = new QMenu(_window.get());
    menu->setToolTipsVisible(true);
    for (int command = static_cast<int>(MenuCommand::rating5);
         command >= static_cast<int>(MenuCommand::rating0); --command)
        menu->addAction(_commands->menu().action(static_cast<MenuCommand>(command)));
    QObject::connect(
        menu, &QMenu::aboutToShow, _commands.get(), [this] { _commands->menu().validate(); });
    keepContentsWhileShown(*menu);
    return *menu;
}

void PBMainWindowController::connectRemedies() {
    using Remedy = PBImageBrowserTipView::Remedy;
    QObject::connect(
        _imageBrowserTipView, &PBImageBrowserTipView::remedyRequested, _filterCommands,
        [filters = _filterCommands](Remedy remedy) {
            switch (remedy) {
            case Remedy::ClearSearch:
                return filters->search({});
            case Remedy::ShowAll:
                return filters->showAll();
            case Remedy::IncludeSubfolders:
                return filters->recurseSubFolder();
            }
        });
}

void PBMainWindowController::tellFilterLeftOn() {
    const QString key = QStringLiteral("FilterLeftOn");
    const QString shown = photographsOfFilter(_services.browsing.filter());
    if (shown.isEmpty()) return;
    _noticeBar->tell(
        {.key = key,
         .text = localizedFormat(u"FilterLeftOn", {shown}),
         .details = localizedString(u"FilterLeftOnDetails"),
         .action = localizedString(u"ShowAll"),
         .perform = [filters = _filterCommands] { filters->showAll(); }});
    QObject::connect(
        _filterCommands, &FilterCommands::filterDidChange, _noticeBar,
        [bar = _noticeBar, key] { bar->withdraw(key); });
}

void PBMainWindowController::makeOpenFiles() {
    _openFilesCommands = new OpenFilesCommands(
        {.delegate = _services.delegate,
         .aliasManager = _services.aliasManager,
         .tree = _sourceSidebar->tree(),
         .selection = sourceSelection(),
         .commands = folderRootCommands(),
         .filters = *_filterCommands,
         .loadImageManager = _services.loadImageManager,
         .leaveLargeView =
             [this] {
                 _slideshowCommand->end();
                 _largeView->leave();
             },
         .openFilesEnterToLargeView =
             [this](const OpenFilesRequest::NamedFile& first) {
                 _largeView->openFilesEnterToLargeView(first);
             }},
        _window.get());
    // The pane of the browser takes folders by itself.
    QWidget* contents = _window->centralWidget();
    auto* tip = new DropTip(QStringLiteral("photographs"), QStringLiteral("DropToShow"), contents);
    auto* target = new FolderDropTarget(
        *_window, [this](const QString& path) { return _largeView->canOpenPath(path); });
    QObject::connect(target, &FolderDropTarget::draggingChanged, tip, [tip, contents](bool isOver) {
        tip->setGeometry(contents->rect());
        tip->setVisible(isOver);
        tip->raise();
    });
    // Not within the drop: what is opened may take a while.
    QObject::connect(
        target, &FolderDropTarget::dropped, _openFilesCommands, &OpenFilesCommands::openFiles,
        Qt::QueuedConnection);
}

void PBMainWindowController::makeLargeView(QStackedWidget& contents) {
    _largeView = std::make_unique<LargeView>(LargeView::Parts{
        .services = _services,
        .window = *_window,
        .contents = contents,
        .browserPane = *_browserPane,
        .selection = sourceSelection(),
        .info = _infoFeed->pane(),
        .browserInfoView = *_infoView,
        .openPaths = [this](const QStringList& paths) { _openFilesCommands->openFiles(paths); }});
    _choice->setFocusOfLargeView([this] { return _largeView->chosenImageFileItem(); });
    _marks->serveRatingKeys(_largeView->controller().imageView());
    _marks->serveRatingKeys(_largeView->controller().thumbnailView());
    _infoFeed->setLargeView(&_largeView->controller().imageView());
    const auto itemsDidChange = [this] { _largeView->controller().itemsDidChange(); };
    using fileactions::EditRunner;
    QObject::connect(&_services.edits, &EditRunner::didEdit, _largeView.get(), itemsDidChange);
    QObject::connect(&_services.edits, &EditRunner::didReadAgain, _largeView.get(), itemsDidChange);
    _slideshowCommand = std::make_unique<SlideshowCommand>(SlideshowCommand::Parts{
        .services = _services,
        .window = *_window,
        .browserPane = *_browserPane,
        .largeView = *_largeView});
}

const Slideshow& PBMainWindowController::slideshow() const {
    return _slideshowCommand->slideshow();
}

void PBMainWindowController::connectImageToolbar() {
    _imageToolbarController =
        std::make_unique<ImageToolbarController>(*_toolbar, _commands->menu(), nullptr);
    QObject::connect(
        _largeView.get(), &LargeView::isShownDidChange, _toolbar, [this](bool isShown) {
            using Content = MainToolbar::Content;
            _toolbar->setContent(isShown ? Content::LargeView : Content::Browser);
        });
    QObject::connect(
        _largeView.get(), &LargeView::stateDidChange, _imageToolbarController.get(),
        &ImageToolbarController::validateVisibleItems);
}

void PBMainWindowController::tellReasons() {
    const MainMenu& menu = _commands->menu();
    _toolbarReasons = std::make_unique<ToolbarReasons>(
        *_toolbar, [&menu](MenuCommand command) { return menu.reason(command); }, nullptr);
    const auto tell = [this](const QString& reason) { _statusNews->tell(reason); };
    _refusedKeys = std::make_unique<RefusedKeys>(*_window, menu, tell, nullptr);
    QObject::connect(&menu, &MainMenu::refused, _commands.get(), tell);
}

bool PBMainWindowController::isLargeView() const {
    return _largeView && _largeView->isShown();
}

SourceSelection& PBMainWindowController::sourceSelection() {
    return _sourceSidebar->selection();
}

FolderRootCommands& PBMainWindowController::folderRootCommands() {
    return _sourceSidebar->commands();
}

void PBMainWindowController::clearBrowser() {
    platform::assertMainThread();
    _groupPanel->clear();
    const auto folder = _sourceSidebar->tree().selectedFolder();
    QString place;
    const auto root = folder ? folder->aliasObjectAndRelativePath(&place) : nullptr;
    place = root ? QString::number(root->aliasId()) + u'/' + place : QString();
    const bool isSame = std::exchange(_shownFolder, place) == place && !place.isEmpty();
    // What was opened is on show before a slow disk has told of its folder.
    const bool isOpened = folder && _largeView->asksFor(folder->folderPath());
    if (isSame) {
        _largeView->willShowSamePhotographs();
    } else if (isOpened) {
        _largeView->willShowSamePhotographsOf(folder->folderPath());
    } else {
        _largeView->leave();
    }
    _browserPane->clear(isSame);
}

void PBMainWindowController::reverseGeoFinished() {
    const PBGroupTypeArray chain = _services.browsing.groupTypeArray();
    if (std::ranges::find(*chain, group::Place) != chain->end()) _services.delegate.regroupPlaces();
}

bool PBMainWindowController::isWorkingOnFiles() const {
    return _files && !_files->isIdle();
}

void PBMainWindowController::stopFileCommands() {
    _files.reset();
}

void PBMainWindowController::showWindow() {
    _window->show();
    _browserPane->browserView().setFocus();
}

void PBMainWindowController::fillScreen() {
    _window->setWindowState(_window->windowState() | Qt::WindowFullScreen);
}

void PBMainWindowController::setWorkFigures(std::function<WorkFigures()> figures) {
    _workProgress = new WorkProgress(std::move(figures), _window.get());
    _statusBarView->setProgress(*_workProgress);
    QObject::connect(
        &_services.buildThumbNotifier, &BuildThumbNotifier::PBNotiName_BuildThumb, _workProgress,
        &WorkProgress::wake);
    QObject::connect(
        &_services.edits, &fileactions::EditRunner::didBegin, _workProgress, &WorkProgress::wake);
}

void PBMainWindowController::scanStateDidChange() {
    platform::assertMainThread();
    if (_workProgress && _services.delegate.isScanning()) _workProgress->restart();
    if (!_services.delegate.isScanning()) {
        _browserPane->browserView().allCame();
        _infoFeed->updateInfo();
    }
    _largeView->scanStateDidChange();
    updateImageBrowserTipView();
    _session->scanStateDidChange();
    _slideshowStart->photographsCame();
}

void PBMainWindowController::updateImageBrowserTipView() {
    platform::assertMainThread();
    const auto folder = _sourceSidebar->tree().selectedFolder();
    const bool hasSubfolders = folder && !(folder->isLoaded() && folder->loadedChildren().empty());
    QString place;
    const auto root = folder ? folder->aliasObjectAndRelativePath(&place) : nullptr;
    _imageBrowserTipView->setReason(emptyReason(
        {.searchString = _services.browsing.searchString(),
         .filter = _services.browsing.filter(),
         .leavesOutSubfolders = hasSubfolders && !_services.browsing.recurseSubFolder(),
         .isAway = root && !root->isMounted()}));
    _imageBrowserTipView->setTipKind(PBImageBrowserTipView::kindFor(
        {.hasGroups = _browserPane->browserView().hasGroups(),
         .hasRoots = _sourceSidebar->tree().hasFolderAliasItem(),
         .hasSelection = _sourceSidebar->tree().selectedItem() != nullptr,
         .isScanning = _services.delegate.isScanning()}));
}

void PBMainWindowController::restoreGeometry() {
    const auto stored = _services.userDefaults.dataForKey(geometryKey);
    if (!stored || !_window->restoreGeometry(*stored)) _window->resize(firstWindowSize);
    // The screen may be smaller than it was, in points.
    _window->resize(_window->size().boundedTo(_window->screen()->availableSize()));
    // A window that was left filling the screen comes back as it was before.
    _window->setWindowState(_window->windowState() & ~Qt::WindowFullScreen);
}

void PBMainWindowController::saveSession() {
    saveGeometry();
    _session->save();
}

QStringList PBMainWindowController::openedOnShow() const {
    const auto folder = _sourceSidebar->tree().selectedFolder();
    if (!isLargeView() || !folder || !OpenedRoots::isOpened(*folder)) return {};
    const QString path = _largeView->controller().shownPath();
    return path.isEmpty() ? QStringList() : QStringList{path};
}

void PBMainWindowController::saveGeometry() {
    _services.userDefaults.setData(_window->saveGeometry(), geometryKey);
    _panes->savePositions();
    _largeView->savePositions();
}
