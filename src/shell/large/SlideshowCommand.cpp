#include "shell/large/SlideshowCommand.h"

#include "browser/PBImageBrowserView.h"
#include "core/PBAppDelegate.h"
#include "group/PBImageFileItem.h"
#include "shell/large/LargeView.h"
#include "shell/panes/BrowserPane.h"
#include "shell/services/ShellServices.h"
#include "viewer/PBImageView.h"
#include "viewer/slideshow/PBSlideShowViewController.h"

#include <QMainWindow>

SlideshowCommand::SlideshowCommand(const Parts& parts)
    : _parts(parts), _requests(
                         parts.services.loadImageManager, parts.services.imageBufferManager,
                         parts.services.imageImporterManager,
                         [&pane = parts.browserPane](const PBImageFileItem& item) {
                             return item.filePath(pane.folderPaths());
                         }),
      _slideshow(
          {.window = parts.window,
           .userDefaults = parts.services.userDefaults,
           .requests = _requests,
           .loadImageManager = parts.services.loadImageManager,
           .host = *this}) {
    QObject::connect(&_slideshow, &Slideshow::didExit, &_slideshow, [this] {
        if (!_parts.largeView.isShown()) return;
        _parts.largeView.controller().imageView().tryPreloadNextOrPrevImage();
        _parts.largeView.controller().takeFocus();
    });
}

SlideshowCommand::~SlideshowCommand() = default;

void SlideshowCommand::view_SlideshowView() {
    LargeView& largeView = _parts.largeView;
    if (!largeView.isShown()) largeView.enterToLargeView(indexToBeginWith());
    if (!largeView.isShown()) return;
    const PhotoBin& bin = largeView.controller().bin();
    _slideshow.start(bin.fileItemArray(), bin.focusIndex());
}

void SlideshowCommand::end() {
    if (_slideshow.isRunning()) _slideshow.slideShowViewController().exitSlideshow();
}

PBImageBrowserIndex SlideshowCommand::indexToBeginWith() const {
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    const PBImageBrowserIndex selected =
        browser.selection().firstSelectItem(FoldedLeaves::Included);
    return browser.leaves().imageFileAtIndex(selected) ? selected
                                                       : _parts.browserPane.firstShownIndex();
}

void SlideshowCommand::setIsSlideShowMode(bool isSlideShowMode) {
    _parts.services.delegate.setIsSlideShowMode(isSlideShowMode);
    // What picture and strip painted last stays on show where nobody asks them to paint again, and
    // what played stands still.
    _parts.largeView.controller().itemsDidChange();
}

std::shared_ptr<PBImageFileItem> SlideshowCommand::focusImageFileItem() const {
    return _parts.largeView.controller().bin().focusImageFileItem();
}

void SlideshowCommand::goToImageFileItem(const std::shared_ptr<PBImageFileItem>& item) {
    if (_parts.largeView.isShown()) _parts.largeView.controller().goToImageFileItem(item);
}
