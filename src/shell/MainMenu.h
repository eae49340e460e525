#pragma once

#include "shell/PaneLayout.h"

#include <QObject>

class MainToolbar;
class QAction;
class QMainWindow;
class QMenu;

/// The menu bar of the main window and the state of its entries.
class MainMenu final : public QObject {
    Q_OBJECT

public:
    /// Fills the window's menu bar. All outlive this object; commands that the toolbar has too are
    /// its own.
    MainMenu(QMainWindow& window, PaneLayout& panes, MainToolbar& toolbar, QObject* parent);

Q_SIGNALS:
    void statusBarToggled();
    /// For the folder that is selected in the sidebar.
    void revealRequested();
    void removeFolderRequested();

public:
    /// Gives the menu its place in the menu bar; it stays with its owner.
    void setGroupMenu(QMenu& groupMenu);
    /// Title of the entry that shows or hides the status bar.
    void setStatusBarShown(bool shown);
    /// Which of the commands for the selected folder are possible.
    void setFolderCommands(bool canReveal, bool canRemove);

private:
    void addFileMenu(MainToolbar& toolbar);
    void addPaneEntry(
        QMenu* menu, PaneLayout::Pane pane, const QString& show, const QString& hide,
        const QKeySequence& shortcut);
    void showAbout();

    QMainWindow& _window;
    PaneLayout& _panes;
    QMenu* _goMenu = nullptr;
    QAction* _statusBar = nullptr;
    QAction* _reveal = nullptr;
    QAction* _removeFolder = nullptr;
};
