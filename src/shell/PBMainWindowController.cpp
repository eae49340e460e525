#include "shell/PBMainWindowController.h"

#include "browser/PBImageBrowserContainerView.h"
#include "browser/PBImageBrowserTipView.h"
#include "browser/PBImageBrowserView.h"
#include "core/PBAppDelegate.h"
#include "library/PBPathHistory.h"
#include "platform/LocalizedTexts.h"
#include "platform/UserDefaults.h"
#include "shell/BrowserPane.h"
#include "shell/FilterCommands.h"
#include "shell/FolderPrompts.h"
#include "shell/InfoPane.h"
#include "shell/MainToolbar.h"
#include "shell/MessagePane.h"
#include "shell/PaneLayout.h"
#include "shell/SourceSidebar.h"
#include "shell/StatusBarView.h"
#include "shell/WindowCommands.h"
#include "ui/HeaderBar.h"
#include "ui/PBThemes.h"

#include <QMainWindow>
#include <QVBoxLayout>

using platform::localizedString;

namespace {

const QString geometryKey = QStringLiteral("WindowGeometry");
constexpr QSize firstWindowSize(1180, 760);
/// Leaves each pane its least.
constexpr QSize smallestWindowSize(720, 480);

/// A pane under a bar with its name.
QWidget* titledPane(const QString& title, QWidget* content) {
    auto* pane = new QWidget;
    auto* layout = new QVBoxLayout(pane);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(new HeaderBar(title));
    layout->addWidget(content, 1);
    return pane;
}

} // namespace

/// Tells the controller of events that only the window itself hears.
class PBMainWindowController::Window final : public QMainWindow {
public:
    explicit Window(PBMainWindowController& controller) : _controller(controller) {}

protected:
    void closeEvent(QCloseEvent* event) override {
        // The next start begins with a window that has its bars.
        _controller._commands->leaveFullScreen();
        _controller.saveGeometry();
        QMainWindow::closeEvent(event);
    }
    void changeEvent(QEvent* event) override {
        QMainWindow::changeEvent(event);
        if (event->type() == QEvent::ActivationChange) _controller.redrawBars();
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

PBMainWindowController::PBMainWindowController(PBAppDelegate& delegate)
    : _delegate(delegate), _window(std::make_unique<Window>(*this)) {
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
    _folderPrompts = std::make_unique<FolderSheets>(*_window);
    _sourceSidebar = std::make_unique<SourceSidebar>(
        _delegate, *_window, *_folderPrompts, [this] { updateImageBrowserTipView(); });
    _filterCommands = new FilterCommands(_delegate, _window.get());
    QObject::connect(
        &sourceSelection(), &SourceSelection::filtersDidReset, _filterCommands,
        &FilterCommands::announce);
    _panes = new PaneLayout(
        {.source = titledPane(localizedString(u"Folders"), _sourceSidebar->view()),
         .group =
             titledPane(localizedString(u"Groups"), new MessagePane(localizedString(u"NoGroups"))),
         .thumbnail = makeBrowserPane(),
         .info = new InfoPane(_delegate.userDefaults())},
        _delegate.userDefaults(), _window.get());
    _statusBarView = new StatusBarView(*_panes);

    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_panes->view(), 1);
    layout->addWidget(_statusBarView);
    _window->setCentralWidget(content);

    _toolbar = new MainToolbar(_window.get());
    _window->addToolBar(_toolbar);
    _commands = std::make_unique<WindowCommands>(
        WindowCommands::Parts{
            .delegate = _delegate,
            .window = *_window,
            .browserPane = *_browserPane,
            .sourceSidebar = *_sourceSidebar,
            .filterCommands = *_filterCommands,
            .panes = *_panes,
            .statusBarView = *_statusBarView,
            .toolbar = *_toolbar},
        nullptr);
    connectFolderCommands();
}

QWidget* PBMainWindowController::makeBrowserPane() {
    auto* container = new PBImageBrowserContainerView(
        [this](const QString& path) { return _sourceSidebar->isFolder(path); });
    QObject::connect(
        container, &PBImageBrowserContainerView::foldersDropped, container,
        [this](const QStringList& folders) { _sourceSidebar->addFolders(folders); });
    _browserPane =
        std::make_unique<BrowserPane>(_delegate, [this] { updateImageBrowserTipView(); });
    container->addLayer(_browserPane->view());
    _imageBrowserTipView = new PBImageBrowserTipView;
    container->addLayer(_imageBrowserTipView);
    return container;
}

void PBMainWindowController::connectFolderCommands() {
    FolderRootCommands& commands = folderRootCommands();
    SourceSelection& selection = sourceSelection();
    const auto add = [&commands] { commands.addFolderAlias(); };
    QObject::connect(
        _imageBrowserTipView, &PBImageBrowserTipView::addFolderRequested, &commands, add);
    QObject::connect(_toolbar->addFolderAction(), &QAction::triggered, &commands, add);
    QObject::connect(
        _toolbar->backAction(), &QAction::triggered, &selection, &SourceSelection::back);
    QObject::connect(
        _toolbar->forwardAction(), &QAction::triggered, &selection, &SourceSelection::forward);
    QObject::connect(&selection, &SourceSelection::historyDidChange, _toolbar, [this] {
        validateVisibleItems();
    });
    validateVisibleItems();
}

void PBMainWindowController::validateVisibleItems() {
    const PBPathHistory& history = _delegate.pathHistory();
    _toolbar->backAction()->setEnabled(history.canBack());
    _toolbar->forwardAction()->setEnabled(history.canForward());
}

SourceSelection& PBMainWindowController::sourceSelection() {
    return _sourceSidebar->selection();
}

FolderRootCommands& PBMainWindowController::folderRootCommands() {
    return _sourceSidebar->commands();
}

void PBMainWindowController::clearBrowser() {
    _browserPane->clear();
}

void PBMainWindowController::showWindow() {
    _window->show();
    _browserPane->browserView().setFocus();
}

void PBMainWindowController::updateImageBrowserTipView() {
    _imageBrowserTipView->setTipKind(PBImageBrowserTipView::kindFor(
        _browserPane->browserView().hasGroups(), _sourceSidebar->tree().hasFolderAliasItem(),
        _sourceSidebar->tree().selectedItem() != nullptr, _delegate.isScanning()));
}

bool PBMainWindowController::isFullScreen() const {
    return _commands->isFullScreen();
}

bool PBMainWindowController::hideStatusBar() const {
    return _commands->hideStatusBar();
}

void PBMainWindowController::setHideStatusBar(bool hide) {
    _commands->setHideStatusBar(hide);
}

/// Bars and the heads of groups look different in a window that isn't the active one.
void PBMainWindowController::redrawBars() {
    for (QWidget* bar : _window->findChildren<HeaderBar*>())
        bar->update();
    if (_browserPane) _browserPane->browserView().update();
}

void PBMainWindowController::restoreGeometry() {
    const auto stored = _delegate.userDefaults().dataForKey(geometryKey);
    if (!stored || !_window->restoreGeometry(*stored)) _window->resize(firstWindowSize);
}

void PBMainWindowController::saveGeometry() {
    _delegate.userDefaults().setData(_window->saveGeometry(), geometryKey);
    _panes->savePositions();
}
