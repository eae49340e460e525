#include "shell/MainMenu.h"

#include "platform/LocalizedTexts.h"
#include "shell/MainToolbar.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>

using platform::localizedFormat;
using platform::localizedString;

MainMenu::MainMenu(QMainWindow& window, PaneLayout& panes, MainToolbar& toolbar, QObject* parent)
    : QObject(parent), _window(window), _panes(panes) {
    addFileMenu(toolbar);

    QMenu* view = window.menuBar()->addMenu(localizedString(u"View"));
    using Pane = PaneLayout::Pane;
    const auto key = [](int number) {
        return QKeySequence(Qt::CTRL | Qt::ALT | static_cast<Qt::Key>(Qt::Key_0 + number));
    };
    addPaneEntry(
        view, Pane::SideBar, QStringLiteral("ShowSidebar"), QStringLiteral("HideSidebar"), key(1));
    addPaneEntry(
        view, Pane::Folder, QStringLiteral("ShowFolder"), QStringLiteral("HideFolder"), key(2));
    addPaneEntry(
        view, Pane::Group, QStringLiteral("ShowGroup"), QStringLiteral("HideGroup"), key(3));
    addPaneEntry(view, Pane::Info, QStringLiteral("ShowInfo"), QStringLiteral("HideInfo"), key(4));
    view->addSeparator();
    _statusBar = view->addAction(QString(), this, &MainMenu::statusBarToggled);
    _statusBar->setShortcut(key(5));
    setStatusBarShown(true);

    _goMenu = window.menuBar()->addMenu(localizedString(u"Go"));
    _goMenu->addActions({toolbar.backAction(), toolbar.forwardAction()});

    QMenu* help = window.menuBar()->addMenu(localizedString(u"Help"));
    help->addAction(localizedString(u"About"), this, &MainMenu::showAbout);
}

void MainMenu::addFileMenu(MainToolbar& toolbar) {
    QMenu* file = _window.menuBar()->addMenu(localizedString(u"File"));
    file->addAction(toolbar.addFolderAction());
    _removeFolder = file->addAction(
        localizedString(u"RemoveFromSidebar"), this, &MainMenu::removeFolderRequested);
    _reveal = file->addAction(localizedString(u"RevealInFinder"), this, &MainMenu::revealRequested);
    _reveal->setShortcut(Qt::CTRL | Qt::SHIFT | Qt::Key_R);
    file->addSeparator();
    QAction* quit = file->addAction(localizedString(u"Quit"), &_window, &QWidget::close);
    quit->setShortcut(QKeySequence::Quit);
    quit->setMenuRole(QAction::QuitRole);
}

void MainMenu::setGroupMenu(QMenu& groupMenu) {
    _window.menuBar()->insertMenu(_goMenu->menuAction(), &groupMenu);
}

void MainMenu::setFolderCommands(bool canReveal, bool canRemove) {
    _reveal->setEnabled(canReveal);
    _removeFolder->setEnabled(canRemove);
}

void MainMenu::setStatusBarShown(bool shown) {
    _statusBar->setText(localizedString(shown ? u"HideStatusBar" : u"ShowStatusBar"));
}

void MainMenu::addPaneEntry(
    QMenu* menu, PaneLayout::Pane pane, const QString& show, const QString& hide,
    const QKeySequence& shortcut) {
    QAction* action = menu->addAction(QString(), this, [this, pane] { _panes.toggle(pane); });
    action->setShortcut(shortcut);
    const auto update = [this, action, pane, show, hide] {
        action->setText(localizedString(_panes.isShown(pane) ? hide : show));
    };
    connect(&_panes, &PaneLayout::changed, action, update);
    update();
}

void MainMenu::showAbout() {
    QMessageBox::about(
        &_window, localizedString(u"Velmora"),
        localizedFormat(u"AboutText", {QCoreApplication::applicationVersion()}));
}
