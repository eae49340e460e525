#include "shell/commands/WindowChoice.h"

#include "browser/PBImageBrowserView.h"
#include "core/PBAppDelegate.h"
#include "shell/panes/BrowserPane.h"

bool WindowChoice::isLargeView() const {
    return _focusOfLargeView && _delegate.isLargeViewMode();
}

PBImageFileList WindowChoice::all() const {
    if (!isLargeView())
        return _browserPane.browserView().selection().selectedFileArray(FoldedLeaves::Included);
    PBImageFileList chosen;
    if (auto focus = _focusOfLargeView()) chosen.push_back(std::move(focus));
    return chosen;
}

std::shared_ptr<PBImageFileItem> WindowChoice::first() const {
    if (isLargeView()) return _focusOfLargeView();
    const PBImageBrowserView& view = _browserPane.browserView();
    return view.leaves().imageFileAtIndex(view.selection().firstSelectItem(FoldedLeaves::Included));
}
