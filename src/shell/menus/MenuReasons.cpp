#include "shell/menus/MenuReasons.h"

#include "shell/menus/MenuConditions.h"

namespace {

using namespace MenuConditions;
using enum BrowserStep;
using Large = MenuState::LargeView;

// What stands in the way.

constexpr bool isInFullScreen(State s) {
    return s.isFullScreen;
}
constexpr bool isEmpty(State s) {
    return s.isLargeView ? !s.largeView.hasItems : !s.hasItems;
}
constexpr bool isStandIn(State s) {
    return s.isLargeView && s.largeView.isStandIn;
}
constexpr bool isScanningNothing(State s) {
    return s.isScanning && isEmpty(s);
}
constexpr bool isNothingSelected(State s) {
    return inBrowser(s) && s.selectCount == 0;
}
constexpr bool isLargeViewEmpty(State s) {
    return inLargeView(s) && isEmpty(s);
}
constexpr bool areSeveralSelected(State s) {
    return inBrowser(s) && s.selectCount > 1;
}
constexpr bool hasNoCurrent(State s) {
    return !s.hasCurrent;
}
constexpr bool isAway(State s) {
    return s.areAllChosenAway;
}
constexpr bool isNoFolderSelected(State s) {
    return !s.isFolderSelected;
}

struct Refusal {
    MenuCondition condition; ///< as it stands in the table of entries
    MenuCondition holds;
    QStringView reason;
};

/// Of the rows of a condition, the first that holds.
constexpr Refusal refusals[] = {
    {inBrowser, inLargeView, u"Why_OnlyAmongThumbnails"},
    {inLargeView, inBrowser, u"Why_OnlyInLargeView"},
    {inLargeViewWithItems, inBrowser, u"Why_OnlyInLargeView"},
    {inLargeViewWithItems, isScanningNothing, u"Why_Scanning"},
    {inLargeViewWithItems, always, u"Why_NoPhotograph"},
    {canHideToolbar, isInFullScreen, u"Why_FullScreen"},
    {canHideStatusBar, isInFullScreen, u"Why_NoStatusBarInFullScreen"},
    {canShowNavigation, inBrowser, u"Why_OnlyInLargeView"},
    {canShowNavigation, always, u"Why_WholePhotograph"},

    {hasPhotographs, isStandIn, u"Why_StandIn"},
    {hasPhotographs, isScanningNothing, u"Why_Scanning"},
    {hasPhotographs, isEmpty, u"Why_NoPhotograph"},
    {hasPhotographs, isNothingSelected, u"Why_NothingSelected"},
    {hasFiles, isStandIn, u"Why_StandIn"},
    {hasFiles, isScanningNothing, u"Why_Scanning"},
    {hasFiles, isEmpty, u"Why_NoPhotograph"},
    {hasFiles, isNothingSelected, u"Why_NothingSelected"},
    {hasFiles, isAway, u"Why_Away"},
    {hasSelection, inLargeView, u"Why_OnlyAmongThumbnails"},
    {hasSelection, isScanningNothing, u"Why_Scanning"},
    {hasSelection, isEmpty, u"Why_NoPhotograph"},
    {hasSelection, always, u"Why_NothingSelected"},
    {hasOneFile, inLargeView, u"Why_OnlyAmongThumbnails"},
    {hasOneFile, areSeveralSelected, u"Why_OnlyOne"},
    {hasOneFile, isAway, u"Why_Away"},
    {hasOneFile, isScanningNothing, u"Why_Scanning"},
    {hasOneFile, isEmpty, u"Why_NoPhotograph"},
    {hasOneFile, always, u"Why_NothingSelected"},
    {hasSomeInBrowser, inLargeView, u"Why_OnlyAmongThumbnails"},
    {hasSomeInBrowser, isScanningNothing, u"Why_Scanning"},
    {hasSomeInBrowser, always, u"Why_NoPhotograph"},
    {hasSomeToShow, isStandIn, u"Why_StandIn"},
    {hasSomeToShow, isScanningNothing, u"Why_Scanning"},
    {hasSomeToShow, always, u"Why_NoPhotograph"},
    {canReveal, isAway, u"Why_Away"},
    {canReveal, inLargeView, u"Why_NoPhotograph"},
    {canReveal, always, u"Why_NothingToReveal"},

    {hasSelectedRoot, inLargeView, u"Why_OnlyAmongThumbnails"},
    {hasSelectedRoot, always, u"Why_NoRootSelected"},
    {canPaste, inLargeView, u"Why_OnlyAmongThumbnails"},
    {canPaste, isNoFolderSelected, u"Why_NoFolderToPasteInto"},
    {canPaste, always, u"Why_NothingToPaste"},
    {canUndo, always, u"Why_NothingToUndo"},
    {canRedo, always, u"Why_NothingToRedo"},
    {canBack, always, u"Why_NoFolderBefore"},
    {canForward, always, u"Why_NoFolderAfter"},
    {hasDirection, inLargeView, u"Why_OnlyAmongThumbnails"},
    {hasDirection, always, u"Why_Unsorted"},

    {canZoomIn, isLargeViewEmpty, u"Why_NoPhotograph"},
    {canZoomIn, inLargeView, u"Why_PhotographLargest"},
    {canZoomIn, always, u"Why_ThumbnailsLargest"},
    {canZoomOut, isLargeViewEmpty, u"Why_NoPhotograph"},
    {canZoomOut, inLargeView, u"Why_PhotographSmallest"},
    {canZoomOut, always, u"Why_ThumbnailsSmallest"},

    {withStep<PrevIndex, &Large::canPrev>, isEmpty, u"Why_NoPhotograph"},
    {withStep<PrevIndex, &Large::canPrev>, always, u"Why_First"},
    {withStep<FirstIndex, &Large::canFirst>, isEmpty, u"Why_NoPhotograph"},
    {withStep<FirstIndex, &Large::canFirst>, always, u"Why_First"},
    {withStep<NextIndex, &Large::canNext>, isEmpty, u"Why_NoPhotograph"},
    {withStep<NextIndex, &Large::canNext>, always, u"Why_Last"},
    {withStep<LastIndex, &Large::canLast>, isEmpty, u"Why_NoPhotograph"},
    {withStep<LastIndex, &Large::canLast>, always, u"Why_Last"},
    {inBrowserWithStep<PreviousGroup>, inLargeView, u"Why_OnlyAmongThumbnails"},
    {inBrowserWithStep<PreviousGroup>, isEmpty, u"Why_NoPhotograph"},
    {inBrowserWithStep<PreviousGroup>, always, u"Why_FirstGroup"},
    {inBrowserWithStep<NextGroup>, inLargeView, u"Why_OnlyAmongThumbnails"},
    {inBrowserWithStep<NextGroup>, isEmpty, u"Why_NoPhotograph"},
    {inBrowserWithStep<NextGroup>, always, u"Why_LastGroup"},
    {inBrowserWithStep<FirstIndexInGroup>, inLargeView, u"Why_OnlyAmongThumbnails"},
    {inBrowserWithStep<FirstIndexInGroup>, isEmpty, u"Why_NoPhotograph"},
    {inBrowserWithStep<FirstIndexInGroup>, hasNoCurrent, u"Why_NoCurrent"},
    {inBrowserWithStep<FirstIndexInGroup>, always, u"Why_FirstInGroup"},
    {inBrowserWithStep<LastIndexInGroup>, inLargeView, u"Why_OnlyAmongThumbnails"},
    {inBrowserWithStep<LastIndexInGroup>, isEmpty, u"Why_NoPhotograph"},
    {inBrowserWithStep<LastIndexInGroup>, hasNoCurrent, u"Why_NoCurrent"},
    {inBrowserWithStep<LastIndexInGroup>, always, u"Why_LastInGroup"},
};

} // namespace

QStringView reasonOfRefusal(MenuCondition condition, const MenuState& state) {
    for (const Refusal& each : refusals)
        if (each.condition == condition && each.holds(state)) return each.reason;
    return {};
}
