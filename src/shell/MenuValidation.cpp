#include "shell/MenuValidation.h"

#include "browser/BrowserInput.h"
#include "browser/BrowserMetrics.h"

#include <algorithm>
#include <iterator>

namespace {

using Command = MenuCommand;
using State = const MenuState&;
using Test = bool (*)(State);

struct Rule {
    Command command;
    Test isEnabled;
    Test isChecked = nullptr;
    /// Keys of the title: while the thing is shown, and while it is not.
    QStringView hide = {};
    QStringView show = {};
    Test isShown = nullptr;
};

// Named conditions that more than one row uses.

bool always(State) {
    return true;
}
bool inBrowser(State s) {
    return !s.isLargeView;
}
bool inLargeView(State s) {
    return s.isLargeView;
}
bool inLargeViewWithItems(State s) {
    return s.isLargeView && s.largeView.hasItems;
}
bool hasPhotographs(State s) {
    return s.isLargeView ? s.largeView.hasItems : s.selectCount > 0;
}
bool hasOnePhotograph(State s) {
    return s.isLargeView ? s.largeView.hasItems : s.selectCount == 1;
}
bool inBrowserWithDirection(State s) {
    return !s.isLargeView && s.sortType != 0;
}
template <BrowserStep step>
bool inBrowserWithStep(State s) {
    return !s.isLargeView && s.canStep[static_cast<std::size_t>(step)];
}
template <BrowserStep step, bool MenuState::LargeView::*inLarge>
bool withStep(State s) {
    return s.isLargeView ? s.largeView.*inLarge : s.canStep[static_cast<std::size_t>(step)];
}
template <int sortType>
bool isSortType(State s) {
    return s.sortType == sortType;
}
template <BrowserMetrics::StyleBit bit>
bool hasStyle(State s) {
    return (s.style & bit) != 0;
}

const Rule rules[] = {
    {Command::addFolderAlias, inBrowser},
    {Command::selectAll, inBrowser},
    {Command::deselectAll, [](State s) { return inBrowser(s) && s.selectCount > 0; }},
    {Command::find, inBrowser},
    {Command::recurseSubFolder, inBrowser, [](State s) { return s.recurseSubFolder; }},
    {Command::removeFolderAlias, [](State s) { return inBrowser(s) && s.isRootSelected; }},
    {Command::revealInFinder,
     [](State s) { return s.isLargeView ? s.largeView.hasItems : s.canRevealFocused; }},
    {Command::renameFile, [](State s) { return inBrowser(s) && s.selectCount == 1; }},
    {Command::deleteClicked, hasPhotographs},
    {Command::copy, hasPhotographs},
    {Command::paste,
     [](State s) { return inBrowser(s) && s.isFolderSelected && s.pasteboardHasImages; }},
    {Command::shareClicked, hasPhotographs},

    {Command::view_FileName, inBrowser, hasStyle<BrowserMetrics::FileName>},
    {Command::view_FileSize, inBrowser, hasStyle<BrowserMetrics::FileSize>},
    {Command::view_ImageSize, inBrowser, hasStyle<BrowserMetrics::ImageSize>},
    {Command::view_Shadow, inBrowser, hasStyle<BrowserMetrics::Shadow>},
    {Command::view_EnlargeSmallPhoto, inBrowser, hasStyle<BrowserMetrics::EnlargeSmallPhoto>},
    {Command::arrange_FileName, inBrowser, isSortType<1>},
    {Command::arrange_FileSize, inBrowser, isSortType<2>},
    {Command::arrange_DateModified, inBrowser, isSortType<3>},
    {Command::arrange_DateTaken, inBrowser, isSortType<4>},
    {Command::arrange_Kind, inBrowser, isSortType<5>},
    {Command::arrange_ImageSize, inBrowser, isSortType<6>},
    {Command::arrange_None, inBrowser, isSortType<0>},
    {Command::arrange_Ascending, inBrowserWithDirection,
     [](State s) { return s.sortType != 0 && !s.descendingSort; }},
    {Command::arrange_Dscending, inBrowserWithDirection,
     [](State s) { return s.sortType != 0 && s.descendingSort; }},
    {Command::filter_Flag, inBrowser, [](State s) { return (s.filter & 1) != 0; }},
    {Command::filter_Star, inBrowser, [](State s) { return (s.filter & 2) != 0; }},

    {Command::view_zoomIn,
     [](State s) {
         return s.isLargeView ? s.largeView.hasItems && s.largeView.canZoomIn
                              : s.thumbnailSize < BrowserMetrics::maxThumbnailSize;
     }},
    {Command::view_zoomOut,
     [](State s) {
         return s.isLargeView ? s.largeView.hasItems && s.largeView.canZoomOut
                              : s.thumbnailSize > BrowserMetrics::minThumbnailSize;
     }},
    {Command::view_fitIn, inLargeViewWithItems},
    {Command::view_ActualSize, inLargeViewWithItems},
    {Command::view_SlideshowView, inLargeViewWithItems},
    {Command::view_ThumbnailView, inLargeView},
    {Command::view_BrowserView, [](State s) { return inBrowser(s) && s.selectCount > 0; }},

    {Command::view_toolbar, always, nullptr, u"HideToolbar", u"ShowToolbar",
     [](State s) { return s.isToolbarShown; }},
    {Command::view_StatusBar, always, nullptr, u"HideStatusBar", u"ShowStatusBar",
     [](State s) { return s.isStatusBarShown; }},
    {Command::view_Info, always, nullptr, u"HideInfo", u"ShowInfo",
     [](State s) { return s.isInfoShown; }},
    {Command::view_SideBar, inBrowser, nullptr, u"HideSidebar", u"ShowSidebar",
     [](State s) { return s.isSideBarShown; }},
    {Command::view_Folder, inBrowser, nullptr, u"HideFolder", u"ShowFolder",
     [](State s) { return s.isFolderShown; }},
    {Command::view_Group, inBrowser, nullptr, u"HideGroup", u"ShowGroup",
     [](State s) { return s.isGroupShown; }},
    {Command::view_PhotoBin, inLargeView, nullptr, u"HidePhotoBin", u"ShowPhotoBin",
     [](State s) { return s.largeView.isPhotoBinShown; }},
    {Command::view_Navigation,
     [](State s) { return s.isLargeView && s.largeView.shouldShowNavigation; }, nullptr,
     u"HideNavigation", u"ShowNavigation", [](State s) { return s.largeView.isNavigationShown; }},
    {Command::view_FullScreen, always, [](State s) { return s.isFullScreen; }},

    {Command::rotateLeft, hasPhotographs},
    {Command::rotateRight, hasPhotographs},
    {Command::automaticRotate, hasPhotographs},
    {Command::resetRotate, hasPhotographs},
    {Command::rating0, hasPhotographs},
    {Command::rating1, hasPhotographs},
    {Command::rating2, hasPhotographs},
    {Command::rating3, hasPhotographs},
    {Command::rating4, hasPhotographs},
    {Command::rating5, hasPhotographs},
    {Command::copyTo, hasPhotographs},
    {Command::moveTo, hasPhotographs},
    {Command::duplicate, hasPhotographs},
    {Command::setDesktop, hasPhotographs},
    {Command::exportImage, hasOnePhotograph},
    {Command::flagClicked, hasPhotographs, [](State s) { return s.areAllSelectedFlagged; }},

    {Command::back, [](State s) { return inBrowser(s) && s.canBack; }},
    {Command::forward, [](State s) { return inBrowser(s) && s.canForward; }},
    {Command::go_PreviousItem, withStep<BrowserStep::PrevIndex, &MenuState::LargeView::canPrev>},
    {Command::go_NextItem, withStep<BrowserStep::NextIndex, &MenuState::LargeView::canNext>},
    {Command::go_FirstItem, withStep<BrowserStep::FirstIndex, &MenuState::LargeView::canFirst>},
    {Command::go_LastItem, withStep<BrowserStep::LastIndex, &MenuState::LargeView::canLast>},
    {Command::go_PreviousGroup, inBrowserWithStep<BrowserStep::PreviousGroup>},
    {Command::go_NextGroup, inBrowserWithStep<BrowserStep::NextGroup>},
    {Command::go_FirstGroupItem, inBrowserWithStep<BrowserStep::FirstIndexInGroup>},
    {Command::go_LastGroupItem, inBrowserWithStep<BrowserStep::LastIndexInGroup>},
};

} // namespace

MenuItemState validateMenuItem(MenuCommand command, const MenuState& state) {
    const Rule* rule = std::ranges::find(rules, command, &Rule::command);
    MenuItemState item;
    if (rule == std::end(rules)) return item;
    item.isEnabled = rule->isEnabled(state);
    if (rule->isChecked) item.isChecked = rule->isChecked(state);
    if (rule->isShown) item.title = rule->isShown(state) ? rule->hide : rule->show;
    return item;
}
