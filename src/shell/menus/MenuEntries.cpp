#include "shell/menus/MenuEntries.h"

#include "group/ItemOrder.h"
#include "platform/program/LocalizedTexts.h"
#include "shell/menus/MenuConditions.h"

#include <array>

namespace {

using namespace MenuConditions;
using Command = MenuCommand;
using Kind = MenuRow::Kind;

constexpr MenuRow menu(MenuTag tag, QStringView text) {
    return {.kind = Kind::Menu, .tag = tag, .text = text};
}
constexpr MenuRow submenu(QStringView text) {
    return {.kind = Kind::Submenu, .text = text};
}
constexpr MenuRow entry(
    Command command, QStringView name, QStringView text, QStringView shortcuts, QStringView icon,
    MenuRule rule) {
    return {.kind = Kind::Entry, .entry = {command, name, text, shortcuts, icon, rule}};
}
constexpr MenuRow endOfSubmenu{.kind = Kind::EndOfSubmenu};
constexpr MenuRow separator{.kind = Kind::Separator};

/// The rule of an entry whose title says what it will do.
constexpr MenuRule
titled(MenuCondition isEnabled, QStringView hide, QStringView show, MenuCondition isShown) {
    return {.isEnabled = isEnabled, .hide = hide, .show = show, .isShown = isShown};
}

/// A name may have the sign that marks letters of a menu.
QString titleOf(QStringView plain, QStringView withName, QString name) {
    return name.isEmpty()
               ? platform::localizedString(plain)
               : platform::localizedFormat(withName, {name.replace(u'&', QStringLiteral("&&"))});
}
QString undoTitle(const MenuState& state) {
    return titleOf(u"Menu_Undo", u"Menu_UndoOf", state.undoText);
}
QString redoTitle(const MenuState& state) {
    return titleOf(u"Menu_Redo", u"Menu_RedoOf", state.redoText);
}

/// Every command: what it says, its keys, when it is possible, and by its line its place in the
/// bar.
constexpr MenuRow barRows[] = {
    menu(MenuTag::File, u"Menu_File"),
    entry(
        Command::addFolderAlias, u"addFolderAlias", u"Menu_AddFolder", u"Ctrl+O", u"addFolder",
        {inBrowser}),
    entry(
        Command::removeFolderAlias, u"removeFolderAlias", u"Menu_RemoveFolder", {}, u"removeFolder",
        {hasSelectedRoot}),
    separator,
    entry(
        Command::revealInFinder, u"revealInFinder", u"Menu_Reveal", u"Ctrl+Alt+O", {}, {canReveal}),
    entry(Command::renameFile, u"renameFile", u"Menu_Rename", u"F2", u"edit", {hasOneFile}),
    entry(Command::duplicate, u"duplicate", u"Menu_Duplicate", u"Ctrl+D", {}, {hasFiles}),
    entry(Command::copyTo, u"copyTo", u"Menu_CopyTo", u"Ctrl+Shift+C", {}, {hasFiles}),
    entry(Command::moveTo, u"moveTo", u"Menu_MoveTo", u"Ctrl+Shift+M", {}, {hasFiles}),
    separator,
    entry(
        Command::exportImage, u"exportImage", u"Menu_Export", u"Ctrl+Shift+E", u"export",
        {hasFiles}),
    entry(Command::shareClicked, u"shareClicked", u"Menu_Share", {}, u"share", {hasFiles}),
    entry(Command::setDesktop, u"setDesktop", u"Menu_SetDesktop", {}, {}, {hasFiles}),
    entry(Command::printImage, u"printImage", u"Menu_Print", u"Ctrl+P", {}, {hasFiles}),
    separator,
    entry(Command::deleteClicked, u"deleteClicked", u"Menu_Trash", u"Del", u"delete", {hasFiles}),
    entry(
        Command::deleteForGood, u"deleteForGood", u"Menu_DeleteForGood", u"Shift+Del", {},
        {hasFiles}),
    separator,
    entry(Command::quit, u"quit", u"Menu_Quit", u"Ctrl+Q", {}, {always}),
    menu(MenuTag::Edit, u"Menu_Edit"),
    entry(
        Command::undo, u"undo", u"Menu_Undo", u"Ctrl+Z", {},
        {.isEnabled = canUndo, .title = undoTitle}),
    entry(
        Command::redo, u"redo", u"Menu_Redo", u"Ctrl+Shift+Z; Ctrl+Y", {},
        {.isEnabled = canRedo, .title = redoTitle}),
    separator,
    entry(Command::cut, u"cut", u"Menu_Cut", u"Ctrl+X", {}, {hasFiles}),
    entry(Command::copy, u"copy", u"Menu_Copy", u"Ctrl+C", {}, {hasFiles}),
    entry(Command::paste, u"paste", u"Menu_Paste", u"Ctrl+V", {}, {canPaste}),
    separator,
    entry(Command::selectAll, u"selectAll", u"Menu_SelectAll", u"Ctrl+A", {}, {inBrowser}),
    entry(
        Command::deselectAll, u"deselectAll", u"Menu_DeselectAll", u"Ctrl+Shift+A", {},
        {hasSelection}),
    entry(
        Command::invertSelection, u"invertSelection", u"Menu_InvertSelection", u"Ctrl+Shift+I", {},
        {hasSomeInBrowser}),
    submenu(u"Menu_SelectByStars"),
    entry(Command::selectStars5, u"selectStars5", u"Menu_Rating5", {}, {}, {hasSomeInBrowser}),
    entry(Command::selectStars4, u"selectStars4", u"Menu_Rating4", {}, {}, {hasSomeInBrowser}),
    entry(Command::selectStars3, u"selectStars3", u"Menu_Rating3", {}, {}, {hasSomeInBrowser}),
    entry(Command::selectStars2, u"selectStars2", u"Menu_Rating2", {}, {}, {hasSomeInBrowser}),
    entry(Command::selectStars1, u"selectStars1", u"Menu_Rating1", {}, {}, {hasSomeInBrowser}),
    entry(Command::selectStars0, u"selectStars0", u"Menu_Rating0", {}, {}, {hasSomeInBrowser}),
    endOfSubmenu,
    separator,
    entry(Command::find, u"find", u"Menu_Find", u"Ctrl+F", u"search", {inBrowser}),
    separator,
    entry(
        Command::showPreferences, u"showPreferences", u"Menu_Preferences", u"Ctrl+,", {}, {always}),
    menu(MenuTag::View, u"Menu_View"),
    submenu(u"Menu_ArrangeBy"),
    entry(
        Command::arrange_FileName, u"arrange_FileName", u"Menu_ByName", {}, {},
        {inBrowser, isSortType<group::SortFileName>}),
    entry(
        Command::arrange_DateTaken, u"arrange_DateTaken", u"Menu_ByDateTaken", {}, {},
        {inBrowser, isSortType<group::SortDateTaken>}),
    entry(
        Command::arrange_DateModified, u"arrange_DateModified", u"Menu_ByDateModified", {}, {},
        {inBrowser, isSortType<group::SortModificationDate>}),
    entry(
        Command::arrange_FileSize, u"arrange_FileSize", u"Menu_BySize", {}, {},
        {inBrowser, isSortType<group::SortFileSize>}),
    entry(
        Command::arrange_ImageSize, u"arrange_ImageSize", u"Menu_ByImageSize", {}, {},
        {inBrowser, isSortType<group::SortPixelArea>}),
    entry(
        Command::arrange_Kind, u"arrange_Kind", u"Menu_ByKind", {}, {},
        {inBrowser, isSortType<group::SortKind>}),
    entry(
        Command::arrange_None, u"arrange_None", u"Menu_Unsorted", {}, {},
        {inBrowser, isSortType<group::SortNone>}),
    separator,
    entry(
        Command::arrange_Ascending, u"arrange_Ascending", u"Menu_Ascending", {}, {},
        {hasDirection, isAscending}),
    entry(
        Command::arrange_Dscending, u"arrange_Dscending", u"Menu_Descending", {}, {},
        {hasDirection, isDescending}),
    endOfSubmenu,
    submenu(u"Menu_ShowWithThumbnails"),
    entry(
        Command::view_FileName, u"view_FileName", u"Menu_FileName", {}, {},
        {inBrowser, hasStyle<BrowserMetrics::FileName>}),
    entry(
        Command::view_ImageSize, u"view_ImageSize", u"Menu_ImageSize", {}, {},
        {inBrowser, hasStyle<BrowserMetrics::ImageSize>}),
    entry(
        Command::view_FileSize, u"view_FileSize", u"Menu_FileSize", {}, {},
        {inBrowser, hasStyle<BrowserMetrics::FileSize>}),
    separator,
    entry(
        Command::view_Shadow, u"view_Shadow", u"Menu_Shadow", {}, {},
        {inBrowser, hasStyle<BrowserMetrics::Shadow>}),
    entry(
        Command::view_EnlargeSmallPhoto, u"view_EnlargeSmallPhoto", u"Menu_EnlargeSmall", {}, {},
        {inBrowser, hasStyle<BrowserMetrics::EnlargeSmallPhoto>}),
    entry(
        Command::view_CompactGroups, u"view_CompactGroups", u"Menu_CompactGroups", {}, {},
        {inBrowser, hasStyle<BrowserMetrics::Compact>}),
    endOfSubmenu,
    submenu(u"Menu_Filter"),
    entry(
        Command::filter_Flag, u"filter_Flag", u"Menu_FilterFlag", {}, {},
        {inBrowser, hasFilter<group::FilterFlagged>}),
    entry(
        Command::filter_Star, u"filter_Star", u"Menu_FilterStar", {}, {},
        {inBrowser, hasFilter<group::FilterRated>}),
    endOfSubmenu,
    entry(
        Command::recurseSubFolder, u"recurseSubFolder", u"Menu_Recurse", u"Ctrl+Shift+S", {},
        {inBrowser, flag<&MenuState::recurseSubFolder>}),
    separator,
    entry(
        Command::view_zoomIn, u"view_zoomIn", u"Menu_ZoomIn", u"Ctrl++; Ctrl+=", u"zoomIn",
        {canZoomIn}),
    entry(
        Command::view_zoomOut, u"view_zoomOut", u"Menu_ZoomOut", u"Ctrl+-", u"zoomOut",
        {canZoomOut}),
    entry(
        Command::view_fitIn, u"view_fitIn", u"Menu_FitIn", u"Ctrl+Shift+F", u"zoomFit",
        {inLargeViewWithItems}),
    entry(
        Command::view_ActualSize, u"view_ActualSize", u"Menu_ActualSize", u"Ctrl+.", u"zoomActual",
        {inLargeViewWithItems}),
    separator,
    entry(
        Command::view_BrowserView, u"view_BrowserView", u"Menu_LargeView", {}, u"largeView",
        {hasSelection}),
    entry(
        Command::view_ThumbnailView, u"view_ThumbnailView", u"Menu_ThumbnailView", {},
        u"thumbnailView", {inLargeView}),
    entry(
        Command::view_SlideshowView, u"view_SlideshowView", u"Menu_Slideshow", u"F5", u"slideshow",
        {hasSomeToShow}),
    separator,
    submenu(u"Menu_Panes"),
    entry(
        Command::view_SideBar, u"view_SideBar", {}, u"F9", {},
        titled(inBrowser, u"HideSidebar", u"ShowSidebar", flag<&MenuState::isSideBarShown>)),
    entry(
        Command::view_Folder, u"view_Folder", {}, u"Ctrl+Alt+1", {},
        titled(inBrowser, u"HideFolder", u"ShowFolder", flag<&MenuState::isFolderShown>)),
    entry(
        Command::view_Group, u"view_Group", {}, u"Ctrl+Alt+2", {},
        titled(inBrowser, u"HideGroup", u"ShowGroup", flag<&MenuState::isGroupShown>)),
    entry(
        Command::view_Info, u"view_Info", {}, u"Ctrl+I", {},
        titled(always, u"HideInfo", u"ShowInfo", flag<&MenuState::isInfoShown>)),
    separator,
    entry(
        Command::view_PhotoBin, u"view_PhotoBin", {}, u"Ctrl+Alt+3", {},
        titled(
            inLargeView, u"HidePhotoBin", u"ShowPhotoBin",
            inLarge<&MenuState::LargeView::isPhotoBinShown>)),
    entry(
        Command::view_Navigation, u"view_Navigation", {}, u"Ctrl+Alt+4", {},
        titled(
            canShowNavigation, u"HideNavigation", u"ShowNavigation",
            inLarge<&MenuState::LargeView::isNavigationShown>)),
    separator,
    entry(Command::nextPane, u"nextPane", u"Menu_NextPane", u"F6", {}, {always}),
    entry(Command::previousPane, u"previousPane", u"Menu_PreviousPane", u"Shift+F6", {}, {always}),
    endOfSubmenu,
    entry(
        Command::view_toolbar, u"view_toolbar", {}, u"Ctrl+Shift+T", {},
        titled(canHideToolbar, u"HideToolbar", u"ShowToolbar", flag<&MenuState::isToolbarShown>)),
    entry(
        Command::view_StatusBar, u"view_StatusBar", {}, u"Ctrl+/", {},
        titled(
            canHideStatusBar, u"HideStatusBar", u"ShowStatusBar",
            flag<&MenuState::isStatusBarShown>)),
    entry(
        Command::view_FullScreen, u"view_FullScreen", u"Menu_FullScreen", u"F11", u"fullScreen",
        {always, flag<&MenuState::isFullScreen>}),
    menu(MenuTag::Image, u"Menu_Image"),
    entry(
        Command::flagClicked, u"flagClicked", u"Menu_Flag", u"Ctrl+G", {},
        {hasPhotographs, flag<&MenuState::areAllSelectedFlagged>}),
    submenu(u"Menu_Rating"),
    entry(Command::rating5, u"rating5", u"Menu_Rating5", u"Ctrl+5", {}, {hasPhotographs}),
    entry(Command::rating4, u"rating4", u"Menu_Rating4", u"Ctrl+4", {}, {hasPhotographs}),
    entry(Command::rating3, u"rating3", u"Menu_Rating3", u"Ctrl+3", {}, {hasPhotographs}),
    entry(Command::rating2, u"rating2", u"Menu_Rating2", u"Ctrl+2", {}, {hasPhotographs}),
    entry(Command::rating1, u"rating1", u"Menu_Rating1", u"Ctrl+1", {}, {hasPhotographs}),
    entry(Command::rating0, u"rating0", u"Menu_Rating0", u"Ctrl+0", {}, {hasPhotographs}),
    endOfSubmenu,
    separator,
    entry(
        Command::rotateLeft, u"rotateLeft", u"Menu_RotateLeft", u"Ctrl+Shift+R", u"rotateLeft",
        {hasPhotographs}),
    entry(
        Command::rotateRight, u"rotateRight", u"Menu_RotateRight", u"Ctrl+R", u"rotateRight",
        {hasPhotographs}),
    entry(
        Command::automaticRotate, u"automaticRotate", u"Menu_RotateAuto", {}, {}, {hasPhotographs}),
    entry(Command::resetRotate, u"resetRotate", u"Menu_RotateReset", {}, {}, {hasPhotographs}),
    separator,
    entry(Command::manageTags, u"manageTags", u"Menu_Tags", {}, {}, {always}),
    menu(MenuTag::Group, u"Menu_Group"),
    menu(MenuTag::Go, u"Menu_Go"),
    entry(Command::back, u"back", u"Menu_Back", u"Alt+Left", u"back", {canBack}),
    entry(Command::forward, u"forward", u"Menu_Forward", u"Alt+Right", u"forward", {canForward}),
    separator,
    entry(
        Command::go_PreviousItem, u"go_PreviousItem", u"Menu_PreviousItem", u"Ctrl+Left", {},
        {withStep<BrowserStep::PrevIndex, &MenuState::LargeView::canPrev>}),
    entry(
        Command::go_NextItem, u"go_NextItem", u"Menu_NextItem", u"Ctrl+Right", {},
        {withStep<BrowserStep::NextIndex, &MenuState::LargeView::canNext>}),
    entry(
        Command::go_FirstItem, u"go_FirstItem", u"Menu_FirstItem", u"Ctrl+Home", {},
        {withStep<BrowserStep::FirstIndex, &MenuState::LargeView::canFirst>}),
    entry(
        Command::go_LastItem, u"go_LastItem", u"Menu_LastItem", u"Ctrl+End", {},
        {withStep<BrowserStep::LastIndex, &MenuState::LargeView::canLast>}),
    separator,
    entry(
        Command::go_PreviousGroup, u"go_PreviousGroup", u"Menu_PreviousGroup", u"Ctrl+PgUp", {},
        {inBrowserWithStep<BrowserStep::PreviousGroup>}),
    entry(
        Command::go_NextGroup, u"go_NextGroup", u"Menu_NextGroup", u"Ctrl+PgDown", {},
        {inBrowserWithStep<BrowserStep::NextGroup>}),
    entry(
        Command::go_FirstGroupItem, u"go_FirstGroupItem", u"Menu_FirstGroupItem",
        u"Ctrl+Shift+Home", {}, {inBrowserWithStep<BrowserStep::FirstIndexInGroup>}),
    entry(
        Command::go_LastGroupItem, u"go_LastGroupItem", u"Menu_LastGroupItem", u"Ctrl+Shift+End",
        {}, {inBrowserWithStep<BrowserStep::LastIndexInGroup>}),
    menu(MenuTag::Help, u"Menu_Help"),
    entry(Command::showShortcuts, u"showShortcuts", u"Menu_Shortcuts", u"F1; Ctrl+?", {}, {always}),
    separator,
    entry(Command::showAbout, u"showAbout", u"Menu_About", {}, {}, {always}),
};

/// By the numbers of the commands. Does not compile unless each stands in the bar once.
constexpr auto entries = [] {
    std::array<MenuEntry, menuCommandCount> sorted;
    for (const MenuRow& row : barRows) {
        if (row.kind != Kind::Entry) continue;
        MenuEntry& place = sorted.at(static_cast<std::size_t>(row.entry.command));
        if (!place.name.isEmpty()) throw "a command stands in the bar twice";
        place = row.entry;
    }
    for (const MenuEntry& each : sorted)
        if (each.name.isEmpty()) throw "a command has no row";
    return sorted;
}();

constexpr MenuRow sameEntry(Command command) {
    return {.kind = Kind::Entry, .entry = entries[static_cast<std::size_t>(command)]};
}

constexpr MenuRow photographRows[] = {
    sameEntry(Command::view_BrowserView),
    sameEntry(Command::view_SlideshowView),
    separator,
    sameEntry(Command::cut),
    sameEntry(Command::copy),
    sameEntry(Command::deleteClicked),
    separator,
    sameEntry(Command::flagClicked),
    submenu(u"Menu_Rating"),
    sameEntry(Command::rating5),
    sameEntry(Command::rating4),
    sameEntry(Command::rating3),
    sameEntry(Command::rating2),
    sameEntry(Command::rating1),
    sameEntry(Command::rating0),
    endOfSubmenu,
    sameEntry(Command::rotateLeft),
    sameEntry(Command::rotateRight),
    sameEntry(Command::automaticRotate),
    sameEntry(Command::resetRotate),
    separator,
    sameEntry(Command::revealInFinder),
    sameEntry(Command::renameFile),
    sameEntry(Command::duplicate),
    sameEntry(Command::copyTo),
    sameEntry(Command::moveTo),
    separator,
    sameEntry(Command::exportImage),
    sameEntry(Command::shareClicked),
    sameEntry(Command::setDesktop),
    sameEntry(Command::printImage),
    separator,
    sameEntry(Command::invertSelection),
    submenu(u"Menu_SelectByStars"),
    sameEntry(Command::selectStars5),
    sameEntry(Command::selectStars4),
    sameEntry(Command::selectStars3),
    sameEntry(Command::selectStars2),
    sameEntry(Command::selectStars1),
    sameEntry(Command::selectStars0),
    endOfSubmenu,
};

constexpr MenuRow largeViewRows[] = {
    sameEntry(Command::view_ThumbnailView),
    sameEntry(Command::view_SlideshowView),
    separator,
    sameEntry(Command::view_zoomIn),
    sameEntry(Command::view_zoomOut),
    sameEntry(Command::view_fitIn),
    sameEntry(Command::view_ActualSize),
    separator,
    sameEntry(Command::copy),
    sameEntry(Command::deleteClicked),
    separator,
    sameEntry(Command::flagClicked),
    submenu(u"Menu_Rating"),
    sameEntry(Command::rating5),
    sameEntry(Command::rating4),
    sameEntry(Command::rating3),
    sameEntry(Command::rating2),
    sameEntry(Command::rating1),
    sameEntry(Command::rating0),
    endOfSubmenu,
    sameEntry(Command::rotateLeft),
    sameEntry(Command::rotateRight),
    separator,
    sameEntry(Command::revealInFinder),
    sameEntry(Command::duplicate),
    sameEntry(Command::copyTo),
    sameEntry(Command::moveTo),
    separator,
    sameEntry(Command::exportImage),
    sameEntry(Command::shareClicked),
    sameEntry(Command::setDesktop),
    sameEntry(Command::printImage),
    separator,
    sameEntry(Command::view_PhotoBin),
    sameEntry(Command::view_Navigation),
    sameEntry(Command::view_Info),
    sameEntry(Command::view_FullScreen),
};

} // namespace

std::span<const MenuEntry> menuEntries() {
    return entries;
}

const MenuEntry& menuEntry(MenuCommand command) {
    return entries[static_cast<std::size_t>(command)];
}

std::span<const MenuRow> menuBarRows() {
    return barRows;
}

std::span<const MenuRow> largeViewMenuRows() {
    return largeViewRows;
}

std::span<const MenuRow> photographMenuRows() {
    return photographRows;
}
