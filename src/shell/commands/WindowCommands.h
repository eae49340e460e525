#pragma once

#include "shell/commands/ArrangeCommands.h"
#include "shell/commands/BrowserViewCommands.h"
#include "shell/commands/FullScreenControl.h"
#include "shell/commands/MenuStateReader.h"
#include "shell/commands/RenameCommand.h"
#include "shell/commands/TagCommands.h"
#include "shell/large/LargeViewCommands.h"
#include "shell/panes/PaneLayout.h"
#include "shell/panes/WindowSettings.h"

#include <QObject>

#include <functional>
#include <vector>

class BrowserPane;
class ChosenPhotographs;
class FilterCommands;
class LargeView;
class MainMenu;
class MarkCommands;
class QMainWindow;
class QToolBar;
class QWidget;
class SlideshowCommand;
class SourceSidebar;
class StatusBarView;
struct ShellServices;

/// Connects the entries of the menus, and the signals of the views, with what carries them out.
/// Main thread.
class WindowCommands final : public QObject {
    Q_OBJECT

public:
    struct Parts {
        const ShellServices& services;
        QMainWindow& window;
        const ChosenPhotographs& chosen;
        MarkCommands& marks;
        BrowserPane& browserPane;
        SourceSidebar& sourceSidebar;
        FilterCommands& filterCommands;
        PaneLayout& panes;
        StatusBarView& statusBarView;
        QToolBar& toolbar;
        LargeView& largeView;
        SlideshowCommand& slideshowCommand;
        /// Those of both views that take the keyboard, in their order.
        std::vector<QWidget*> keyboardPanes;
        /// Puts the keyboard into the search field.
        std::function<void()> find;
        /// The search field is in use, whether the user wants to see the toolbar or not.
        std::function<bool()> isFinding;
    };

    /// Makes the menu bar. The parts outlive this object.
    WindowCommands(const Parts& parts, QObject* parent);

    [[nodiscard]] MainMenu& menu() { return *_menu; }
    /// Shows the toolbar as the user, or a search, wants it.
    void updateBars() { _fullScreen.updateBars(); }

private:
    void connectFolderCommands();
    void connectEditCommands();
    void connectMarkCommands();
    void connectBrowserCommands();
    void connectPaneCommands();
    void connectGoCommands();
    void connectBrowserSignals();
    void connectLargeView();
    /// A command that means something else in the large view.
    void connectInBoth(MenuCommand command, std::function<void()> inBrowser);
    void revealInFinder();
    void togglePane(PaneLayout::Pane pane);
    void toggleToolbar();
    void setHideStatusBar(bool hide);
    void updateStatusBarShowHide(bool animated);

    const Parts _parts;
    WindowSettings _settings;
    const LargeViewCommands _largeCommands;
    const MenuStateReader _stateReader;
    ArrangeCommands _arrange;
    BrowserViewCommands _browserView;
    RenameCommand _rename;
    TagCommands _tags;
    FullScreenControl _fullScreen;
    MainMenu* _menu; // a child of this
};
