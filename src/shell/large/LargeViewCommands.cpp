#include "shell/large/LargeViewCommands.h"

#include "shell/large/LargeView.h"
#include "ui/RevealFiles.h"
#include "viewer/PBImageView.h"

using Command = MenuCommand;
using Pane = ImageViewPanes::Pane;

bool LargeViewCommands::perform(MenuCommand command) const {
    if (!_largeView.isShown()) return false;
    PBImageViewController& controller = _largeView.controller();
    PBImageView& image = controller.imageView();
    PhotoBin& bin = controller.bin();
    switch (command) {
    case Command::view_ThumbnailView:
        _largeView.view_ThumbnailView();
        break;
    case Command::view_zoomIn:
        image.zoomInAtPoint();
        break;
    case Command::view_zoomOut:
        image.zoomOutAtPoint();
        break;
    case Command::view_fitIn:
        image.fitInWithAnimation(true);
        break;
    case Command::view_ActualSize:
        image.actualSize();
        break;
    case Command::view_Info:
        controller.panes().toggle(Pane::Info);
        break;
    case Command::view_PhotoBin:
        controller.panes().toggle(Pane::PhotoBin);
        break;
    case Command::view_Navigation:
        image.setNavigationEnabled(!image.isNavigationEnabled());
        break;
    case Command::go_PreviousItem:
        bin.navigateToPreviousImage();
        break;
    case Command::go_NextItem:
        bin.navigateToNextImage();
        break;
    case Command::go_FirstItem:
        bin.navigateToFirstImage();
        break;
    case Command::go_LastItem:
        bin.navigateToLastImage();
        break;
    case Command::revealInFinder:
        revealFiles(image, {controller.shownPath()});
        break;
    default:
        return false;
    }
    return true;
}

MenuState::LargeView LargeViewCommands::state() const {
    if (!_largeView.isShown()) return {};
    const PBImageViewController& controller = _largeView.controller();
    const PBImageView& image = controller.imageView();
    const PhotoBin& bin = controller.bin();
    return {
        .hasItems = bin.focusImageFileItem() != nullptr,
        .isStandIn = bin.focusImageFileItem() && !_largeView.chosenImageFileItem(),
        .canZoomIn = image.canZoomIn(),
        .canZoomOut = image.canZoomOut(),
        .canPrev = bin.canPrev(),
        .canNext = bin.canNext(),
        .canFirst = bin.canFirst(),
        .canLast = bin.canLast(),
        .shouldShowNavigation = image.imageGeometry().placement().shouldShowNavigation(),
        .isPhotoBinShown = controller.panes().isShown(Pane::PhotoBin),
        .isNavigationShown = image.isNavigationEnabled()};
}

bool LargeViewCommands::isInfoShown() const {
    return _largeView.controller().panes().isShown(Pane::Info);
}
