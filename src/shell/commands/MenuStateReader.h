#pragma once

#include "shell/menus/MenuValidation.h"

class BrowserPane;
class BrowsingSettings;
class LargeViewCommands;
class ChosenPhotographs;
class PaneLayout;
class PBAppDelegate;
class PBImageImporterManager;
class PBPathHistory;
class QMainWindow;
class SourceTreeController;

namespace fileactions {
class EditRunner;
}
namespace platform {
class UserDefaults;
}

/// Reads off the window and the program what the menus depend on. Main thread.
class MenuStateReader {
public:
    struct Parts {
        const PBAppDelegate& delegate;
        const BrowsingSettings& browsing;
        platform::UserDefaults& userDefaults;
        const PBPathHistory& pathHistory;
        PBImageImporterManager& imageImporterManager;
        const fileactions::EditRunner& edits;
        const ChosenPhotographs& chosen;
        QMainWindow& window;
        BrowserPane& browserPane;
        const LargeViewCommands& largeView;
        SourceTreeController& tree;
        PaneLayout& panes;
    };

    /// The parts outlive this object.
    explicit MenuStateReader(const Parts& parts) : _parts(parts) {}

    [[nodiscard]] MenuState read(bool includesPasteboard) const;

private:
    void readBrowsing(MenuState& state) const;
    void readBrowser(MenuState& state) const;
    void readChosen(MenuState& state) const;
    void readEdits(MenuState& state) const;
    void readSideBar(MenuState& state) const;
    void readWindow(MenuState& state) const;

    const Parts _parts;
};
