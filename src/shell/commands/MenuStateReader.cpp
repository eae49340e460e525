#include "shell/commands/MenuStateReader.h"

#include "browser/PBImageBrowserView.h"
#include "codec/PBImageImporterManager.h"
#include "core/FileTypes.h"
#include "core/PBAppDelegate.h"
#include "fileactions/marks/EditRunner.h"
#include "group/PBImageFileItem.h"
#include "library/PBPathHistory.h"
#include "platform/desktop/Pasteboard.h"
#include "platform/program/UserDefaults.h"
#include "platform/tasks/MainThread.h"
#include "shell/large/LargeViewCommands.h"
#include "shell/panes/BrowserPane.h"
#include "shell/panes/PaneLayout.h"
#include "shell/panes/WindowSettings.h"
#include "shell/services/BrowsingSettings.h"
#include "shell/services/ChosenPhotographs.h"
#include "shell/sidebar/SourceTreeController.h"

#include <QClipboard>
#include <QFile>
#include <QGuiApplication>
#include <QMainWindow>
#include <QMimeData>

#include <algorithm>

namespace {

bool pasteboardHasImages(const QStringList& types) {
    const QMimeData* data = QGuiApplication::clipboard()->mimeData();
    if (!data) return false;
    // A picture that is no file becomes one.
    if (!data->hasUrls() && data->hasImage()) return true;
    const auto paths = platform::filesOfMimeData(*data).paths;
    return std::ranges::any_of(paths, [&types](const QByteArray& path) {
        const QString extension = PBUtilities::pathExtension(QFile::decodeName(path)).toString();
        return PBUtilities::conformsToUTIArray(PBUtilities::extentionToUTI(extension), types);
    });
}

} // namespace

MenuState MenuStateReader::read(bool includesPasteboard) const {
    platform::assertMainThread();
    MenuState state;
    state.isLargeView = _parts.delegate.isLargeViewMode();
    state.isScanning = _parts.delegate.isScanning();
    readChosen(state);
    readBrowsing(state);
    if (state.isLargeView) {
        state.largeView = _parts.largeView.state();
    } else {
        readBrowser(state);
    }
    readEdits(state);
    readSideBar(state);
    readWindow(state);
    if (includesPasteboard) {
        state.pasteboardHasImages =
            pasteboardHasImages(_parts.imageImporterManager.supportImageTypes());
    }
    return state;
}

/// Entries tell it in both views.
void MenuStateReader::readBrowsing(MenuState& state) const {
    state.style = _parts.browserPane.browserView().style();
    state.sortType = _parts.browsing.sortType();
    state.descendingSort = _parts.browsing.descendingSort();
    state.filter = _parts.browsing.filter();
    state.recurseSubFolder = _parts.browsing.recurseSubFolder();
}

void MenuStateReader::readBrowser(MenuState& state) const {
    const PBImageBrowserView& view = _parts.browserPane.browserView();
    state.hasItems = view.leaves().leafCount() > 0;
    if (view.hasFocus()) state.canRevealFocused = state.selectCount > 0 && !state.areAllChosenAway;
    state.thumbnailSize = view.thumbnailSize();
    state.hasCurrent = view.currentIndex().isValid();
    for (std::size_t step = 0; step < state.canStep.size(); ++step)
        state.canStep[step] = view.stepIndex(static_cast<BrowserStep>(step)).isValid();
}

void MenuStateReader::readChosen(MenuState& state) const {
    const PBImageFileList chosen = _parts.chosen.all();
    state.selectCount = std::ssize(chosen);
    state.areAllSelectedFlagged =
        !chosen.empty() &&
        std::ranges::all_of(chosen, [](const auto& item) { return item->flagged(); });
    state.areAllChosenAway = !chosen.empty() && std::ranges::all_of(chosen, [](const auto& item) {
        return item->isAway();
    });
}

void MenuStateReader::readEdits(MenuState& state) const {
    const fileactions::EditRunner& edits = _parts.edits;
    // What is on its way can be taken back, too: that comes behind it.
    state.canUndo = edits.canUndo() || edits.pendingCount() > 0;
    state.canRedo = edits.canRedo();
    state.undoText = edits.undoText();
    state.redoText = edits.redoText();
}

void MenuStateReader::readSideBar(MenuState& state) const {
    const auto folder = _parts.tree.selectedFolder();
    state.isRootSelected = std::dynamic_pointer_cast<PBFolderAliasItem>(folder) != nullptr;
    state.isFolderSelected = folder && !folder->folderPath().isEmpty();
    if (_parts.tree.hasFocus()) state.canRevealFocused = state.isFolderSelected;
    state.canBack = _parts.pathHistory.canBack();
    state.canForward = _parts.pathHistory.canForward();
}

void MenuStateReader::readWindow(MenuState& state) const {
    using Pane = PaneLayout::Pane;
    state.isSideBarShown = _parts.panes.isShown(Pane::SideBar);
    state.isFolderShown = _parts.panes.isShown(Pane::Folder);
    state.isGroupShown = _parts.panes.isShown(Pane::Group);
    state.isInfoShown =
        state.isLargeView ? _parts.largeView.isInfoShown() : _parts.panes.isShown(Pane::Info);
    const WindowSettings settings(_parts.userDefaults);
    state.isToolbarShown = !settings.hideToolbar();
    state.isStatusBarShown = !settings.hideStatusBar();
    state.isFullScreen = _parts.window.isFullScreen();
}
