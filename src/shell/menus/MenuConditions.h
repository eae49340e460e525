#pragma once

#include "browser/input/BrowserInput.h"
#include "browser/layout/BrowserMetrics.h"
#include "group/ItemOrder.h"
#include "shell/menus/MenuValidation.h"

/// When entries of the menus are possible, and when they carry a mark: what the rows of the table
/// are made of.
namespace MenuConditions {

using State = const MenuState&;

constexpr bool always(State) {
    return true;
}
template <bool MenuState::*field>
constexpr bool flag(State s) {
    return s.*field;
}

/// On the whole screen the toolbar comes and goes by itself.
constexpr bool canHideToolbar(State s) {
    return !s.isFullScreen;
}
constexpr bool canHideStatusBar(State s) {
    return !s.isFullScreen;
}

// The two views.

constexpr bool inBrowser(State s) {
    return !s.isLargeView;
}
constexpr bool inLargeView(State s) {
    return s.isLargeView;
}
constexpr bool inLargeViewWithItems(State s) {
    return s.isLargeView && s.largeView.hasItems;
}
template <bool MenuState::LargeView::*field>
constexpr bool inLarge(State s) {
    return s.largeView.*field;
}
constexpr bool canShowNavigation(State s) {
    return s.isLargeView && s.largeView.shouldShowNavigation;
}

// What is selected.

/// That commands can be given for: one that stands large may not be in the catalogue yet.
constexpr bool hasPhotographs(State s) {
    return s.isLargeView ? s.largeView.hasItems && !s.largeView.isStandIn : s.selectCount > 0;
}
constexpr bool hasSomeInBrowser(State s) {
    return inBrowser(s) && s.hasItems;
}
/// Selected or not.
constexpr bool hasSomeToShow(State s) {
    return s.isLargeView ? s.largeView.hasItems && !s.largeView.isStandIn : s.hasItems;
}
/// Photographs whose files can be got at.
constexpr bool hasFiles(State s) {
    return hasPhotographs(s) && !s.areAllChosenAway;
}
constexpr bool hasSelection(State s) {
    return inBrowser(s) && s.selectCount > 0;
}
constexpr bool hasOneFile(State s) {
    return inBrowser(s) && s.selectCount == 1 && !s.areAllChosenAway;
}
constexpr bool hasSelectedRoot(State s) {
    return inBrowser(s) && s.isRootSelected;
}
constexpr bool canReveal(State s) {
    return s.isLargeView ? s.largeView.hasItems && !s.areAllChosenAway : s.canRevealFocused;
}
constexpr bool canPaste(State s) {
    return inBrowser(s) && s.isFolderSelected && s.pasteboardHasImages;
}

// How the browser shows its photographs.

template <int sortType>
constexpr bool isSortType(State s) {
    return s.sortType == sortType;
}
constexpr bool hasDirection(State s) {
    return inBrowser(s) && s.sortType != group::SortNone;
}
constexpr bool isAscending(State s) {
    return s.sortType != group::SortNone && !s.descendingSort;
}
constexpr bool isDescending(State s) {
    return s.sortType != group::SortNone && s.descendingSort;
}
template <BrowserMetrics::StyleBit bit>
constexpr bool hasStyle(State s) {
    return (s.style & bit) != 0;
}
template <group::FilterBit bit>
constexpr bool hasFilter(State s) {
    return (s.filter & bit) != 0;
}
constexpr bool canZoomIn(State s) {
    return s.isLargeView ? s.largeView.hasItems && s.largeView.canZoomIn
                         : s.thumbnailSize < BrowserMetrics::maxThumbnailSize;
}
constexpr bool canZoomOut(State s) {
    return s.isLargeView ? s.largeView.hasItems && s.largeView.canZoomOut
                         : s.thumbnailSize > BrowserMetrics::minThumbnailSize;
}

// Ways through folders and photographs.

constexpr bool canBack(State s) {
    return s.canBack;
}
constexpr bool canForward(State s) {
    return s.canForward;
}
constexpr bool canUndo(State s) {
    return s.canUndo;
}
constexpr bool canRedo(State s) {
    return s.canRedo;
}
template <BrowserStep step>
constexpr bool inBrowserWithStep(State s) {
    return inBrowser(s) && s.canStep[static_cast<std::size_t>(step)];
}
template <BrowserStep step, bool MenuState::LargeView::*inLarge>
constexpr bool withStep(State s) {
    return s.isLargeView ? s.largeView.*inLarge : s.canStep[static_cast<std::size_t>(step)];
}

} // namespace MenuConditions
