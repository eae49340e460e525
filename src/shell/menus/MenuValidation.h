#pragma once

#include "shell/menus/MenuCommand.h"

#include <QString>
#include <QStringView>

#include <array>
#include <cstdint>
#include <optional>

/// What the entries of the menus depend on, as it is at one moment.
struct MenuState {
    /// Of the large view; meaningful while it is in force.
    struct LargeView {
        bool hasItems = false;
        /// What is shown stands in for a photograph that a scan has yet to bring: it can be looked
        /// at, and no more.
        bool isStandIn = false;
        bool canZoomIn = false;
        bool canZoomOut = false;
        bool canPrev = false;
        bool canNext = false;
        bool canFirst = false;
        bool canLast = false;
        bool shouldShowNavigation = false;
        bool isPhotoBinShown = false;
        bool isNavigationShown = false;
    };

    bool isLargeView = false;
    LargeView largeView;
    bool isScanning = false; ///< more photographs may come, in either view

    // The sidebar
    bool isRootSelected = false;
    bool isFolderSelected = false; ///< and its path is known
    bool canBack = false;
    bool canForward = false;
    bool recurseSubFolder = false;

    // The browser
    bool hasItems = false; ///< there are photographs, folded groups count
    /// Of photographs that commands act on: those in folded groups too; in the large view the one
    /// in focus, unless it only stands in for one of the catalogue.
    qint64 selectCount = 0;
    bool areAllSelectedFlagged = false; ///< false with no selection
    /// The files of all that commands act on can't be got at; false with none.
    bool areAllChosenAway = false;
    /// The view that has the keyboard holds something that can be shown in the file manager.
    bool canRevealFocused = false;
    bool pasteboardHasImages = false;
    std::uint64_t style = 0; ///< `BrowserMetrics::StyleBit`
    double thumbnailSize = 0;
    int sortType = 0;
    bool descendingSort = false;
    std::uint64_t filter = 0; ///< `group::FilterBit`
    // Edits. The names say what an undo or a redo is of; one may be possible without a name, while
    // an edit is on its way.
    bool canUndo = false;
    bool canRedo = false;
    QString undoText;
    QString redoText;

    /// There is a photograph that the steps start from, selected or not.
    bool hasCurrent = false;
    /// Whether each of the steps leads to a photograph, by the number of the `BrowserStep`.
    std::array<bool, 8> canStep{};

    // The window
    bool isSideBarShown = true;
    bool isFolderShown = true;
    bool isGroupShown = true;
    bool isInfoShown = true;
    bool isToolbarShown = true;
    bool isStatusBarShown = true;
    bool isFullScreen = false;
};

/// How an entry stands in its menu.
struct MenuItemState {
    bool isEnabled = false;
    /// Set for entries that can carry a check mark.
    std::optional<bool> isChecked;
    /// Key of the title where it changes with the state; empty for entries with one title.
    QStringView title;
    /// The title itself where it is made of the state.
    QString text;
    /// Key of the sentence that says why the entry is disabled; empty for one that is not.
    QStringView reason;

    friend bool operator==(const MenuItemState&, const MenuItemState&) = default;
};

/// By the rule in the command's row of the table of entries.
[[nodiscard]] MenuItemState validateMenuItem(MenuCommand command, const MenuState& state);
