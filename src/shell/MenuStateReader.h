#pragma once

#include "shell/MenuValidation.h"

class BrowserPane;
class PaneLayout;
class PBAppDelegate;
class QMainWindow;
class SourceTreeController;

/// Reads off the window and the program what the menus depend on. Main thread.
class MenuStateReader {
public:
    struct Parts {
        PBAppDelegate& delegate;
        QMainWindow& window;
        BrowserPane& browserPane;
        SourceTreeController& tree;
        PaneLayout& panes;
    };

    /// The parts outlive this object.
    explicit MenuStateReader(const Parts& parts) : _parts(parts) {}

    [[nodiscard]] MenuState read(bool includesPasteboard) const;

private:
    void readBrowser(MenuState& state) const;
    void readSideBar(MenuState& state) const;
    void readWindow(MenuState& state) const;

    const Parts _parts;
};
