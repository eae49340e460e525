#pragma once

#include "shell/ArrangeCommands.h"
#include "shell/BrowserViewCommands.h"
#include "shell/FullScreenControl.h"
#include "shell/MenuStateReader.h"
#include "shell/PaneLayout.h"
#include "shell/RenameCommand.h"
#include "shell/WindowSettings.h"

#include <QObject>

#include <functional>

class BrowserPane;
class FilterCommands;
class MainMenu;

class PBAppDelegate;
class QMainWindow;
class QToolBar;
class SourceSidebar;
class StatusBarView;

/// Connects the entries of the menus, and the signals of the views, with what carries them out.
/// Main thread.
class WindowCommands final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        PBAppDelegate& delegate;
        QMainWindow& window;
        BrowserPane& browserPane;
        SourceSidebar& sourceSidebar;
        FilterCommands& filterCommands;
        PaneLayout& panes;
        StatusBarView& statusBarView;
        QToolBar& toolbar;
        /// Puts the keyboard into the search field.
        std::function<void()> find;
    };

    /// Makes the menu bar. The parts outlive this object.
    WindowCommands(const Parts& parts, QObject* parent);

    [[nodiscard]] MainMenu& menu() { return *_menu; }
    [[nodiscard]] bool isFullScreen() const { return _fullScreen.isFullScreen(); }
    [[nodiscard]] bool hideStatusBar() const { return _settings.hideStatusBar(); }
    /// Stored at once.
    void setHideStatusBar(bool hide);

private:
    void connectFolderCommands();
    void connectEditCommands();
    void connectBrowserCommands();
    void connectPaneCommands();
    void connectGoCommands();
    void connectBrowserSignals();
    void revealInFinder();
    void selectAll(bool select);
    void togglePane(PaneLayout::Pane pane);
    void toggleToolbar();
    void updateStatusBarShowHide(bool animated);
    void alertCantRename(const QString& fileName, const QString& reason);

    const Parts _parts;
    WindowSettings _settings;
    const MenuStateReader _stateReader;
    ArrangeCommands _arrange;
    BrowserViewCommands _browserView;
    RenameCommand _rename;
    FullScreenControl _fullScreen;
    MainMenu* _menu; // a child of this
};
