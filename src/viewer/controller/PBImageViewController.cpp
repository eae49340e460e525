#include "viewer/controller/PBImageViewController.h"

#include "group/FolderPaths.h"
#include "image/large/ImageVersions.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/program/HarmlessText.h"
#include "platform/program/LocalizedTexts.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBThemes.h"
#include "ui/PBThumbnailScrollView.h"
#include "viewer/PBImageView.h"
#include "viewer/controller/ImageStatusBarView.h"
#include "viewer/controller/LargeViewHost.h"

#include <QKeyEvent>
#include <QPainter>
#include <QVBoxLayout>

namespace {

/// The ground that the strip lies on, with a margin.
class ThumbContainerView final : public QWidget {
public:
    void setScrollView(PBThumbnailScrollView* scrollView) { _scrollView = scrollView; }

protected:
    void resizeEvent(QResizeEvent*) override { _scrollView->layoutThumbnailView(); }
    void paintEvent(QPaintEvent*) override {
        QPainter painter(this);
        painter.fillRect(rect(), PBThemes::colors().bar);
    }

private:
    PBThumbnailScrollView* _scrollView = nullptr;
};

} // namespace

/// Keys that nobody in the panes has a use for mean what they mean on the picture.
class PBImageViewController::ContentBaseView final : public QWidget {
public:
    explicit ContentBaseView(PBImageViewController& controller) : _controller(controller) {}

protected:
    void keyPressEvent(QKeyEvent* event) override { _controller.keyDown(*event); }

private:
    PBImageViewController& _controller;
};

PBImageViewController::PBImageViewController(const Parts& parts)
    : _host(parts.host), _services(parts.services), _contentBaseView(new ContentBaseView(*this)),
      _imageView(new PBImageView(*this, _services)),
      _thumbnailScrollView(new PBThumbnailScrollView(Qt::Horizontal)),
      _thumbnailView(new PBThumbnailView(*_thumbnailScrollView, *this, parts.thumbnails)) {
    auto* container = new ThumbContainerView;
    container->setScrollView(_thumbnailScrollView);
    _thumbnailScrollView->setParent(container);
    _panes = new ImageViewPanes(
        {.edit = new QWidget, .image = _imageView, .thumbnails = container, .info = parts.info},
        parts.userDefaults, this);
    _statusBarView = new ImageStatusBarView(*_panes);
    auto* layout = new QVBoxLayout(_contentBaseView);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    layout->addWidget(_panes->view(), 1);
    layout->addWidget(_statusBarView);
    connect(_statusBarView, &ImageStatusBarView::zoomSlide, this, [this](double slider) {
        _imageView->zoomSlide(slider);
        updateZoomSizeSlider();
    });
    connect(_statusBarView, &ImageStatusBarView::paneToggled, _panes, &ImageViewPanes::toggle);
}

PBImageViewController::~PBImageViewController() = default;

QWidget* PBImageViewController::view() const {
    return _contentBaseView;
}

void PBImageViewController::enter(List list, const std::shared_ptr<PBImageFileItem>& focus) {
    platform::assertMainThread();
    _isEntered = true;
    // Pane sizes mean something only once the view has its own.
    if (!std::exchange(_wasShown, true)) {
        _contentBaseView->layout()->activate();
        _panes->restorePositions();
    }
    PhotoBin& bin = this->bin();
    bin.setLoadDirection(0);
    bin.setFocusImageFileItem(focus);
    bin.setFileItemArray(std::move(list.items));
    bin.setGroupItem(std::move(list.groupItem));
    if (focus) focus->setIsSelected(true);
    selectDidChange();
    _imageView->startProgressIndicator();
    _thumbnailView->setShouldStopAnimation(true);
    _thumbnailScrollView->layoutThumbnailView();
    _thumbnailView->reloadData();
    showImageAtIndex(bin.focusIndex());
    tryPreloadNextOrPrevImage();
    takeFocus();
}

void PBImageViewController::leave() {
    platform::assertMainThread();
    if (!std::exchange(_isEntered, false)) return;
    _imageView->stopProgressIndicator();
    _imageView->leave();
    _services.loadImageManager.cancelAllOperationExceptContextObjs({});
    _thumbnailView->setShouldStopAnimation(false);
    PhotoBin& bin = this->bin();
    bin.setFileItemArray({});
    bin.setGroupItem(nullptr);
    bin.forgetFocus();
    _services.imageBufferManager.clearBuffer();
    _thumbnailView->clearPreparedThumbnails();
    _panes->splitViewSavePosition();
}

void PBImageViewController::goToImageFileItem(const std::shared_ptr<PBImageFileItem>& item) {
    platform::assertMainThread();
    if (const auto former = focusImageFileItem()) former->setIsSelected(false);
    bin().setFocusImageFileItem(item);
    item->setIsSelected(true);
    // A photograph that has left the list meanwhile gives way to another here.
    _thumbnailView->reloadData();
    showImageAtIndex(bin().focusIndex());
    selectDidChange();
    tryPreloadNextOrPrevImage();
}

void PBImageViewController::updateList(List list) {
    platform::assertMainThread();
    bin().setFileItemArray(std::move(list.items));
    bin().setGroupItem(std::move(list.groupItem));
    _thumbnailScrollView->layoutThumbnailView();
    _thumbnailView->reloadData();
}

void PBImageViewController::scanFinished() {
    if (!_thumbnailView->shouldStopAnimation()) return;
    _thumbnailView->setShouldStopAnimation(false);
    stopProgress();
    _imageView->update();
}

void PBImageViewController::itemsDidChange() {
    platform::assertMainThread();
    if (!_isEntered) return;
    _imageView->imageDidChange();
    _thumbnailView->update();
    updateInfoLabel();
    updateWindowTitle();
}

void PBImageViewController::takeFocus() {
    if (_panes->isShown(ImageViewPanes::Pane::PhotoBin)) {
        _thumbnailView->setFocus(Qt::OtherFocusReason);
    } else {
        _imageView->setFocus(Qt::OtherFocusReason);
    }
}

void PBImageViewController::setStatusBarShown(bool isShown) {
    _statusBarView->setVisible(isShown);
}

bool PBImageViewController::tell(const QString& sentence) {
    if (!_statusBarView->isVisible()) return false;
    _statusBarView->tell(sentence);
    return true;
}

QString PBImageViewController::title() const {
    const auto focus = focusImageFileItem();
    if (!focus) return {};
    return QStringLiteral("%1/%2   %3")
        .arg(focusIndex() + 1)
        .arg(bin().count())
        .arg(platform::isolatedText(focus->fileName()));
}

void PBImageViewController::updateInfoLabel() {
    _statusBarView->setInfo(title());
}

QString PBImageViewController::shownPath() const {
    const auto focus = focusImageFileItem();
    return focus ? filePath(*focus) : QString();
}

void PBImageViewController::updateWindowTitle() {
    _host.updateWindowTitle(title(), shownPath());
}

std::shared_ptr<PBImageFileItem> PBImageViewController::focusImageFileItem() const {
    return bin().focusImageFileItem();
}

std::int64_t PBImageViewController::focusIndex() const {
    return bin().focusIndex();
}

std::shared_ptr<PBImageFileItem> PBImageViewController::nextImageFileItem() const {
    return bin().canNext() ? bin().itemAt(focusIndex() + 1) : nullptr;
}

std::shared_ptr<PBImageFileItem> PBImageViewController::prevImageFileItem() const {
    return bin().canPrev() ? bin().itemAt(focusIndex() - 1) : nullptr;
}

std::vector<IndexedImage> PBImageViewController::preloadImageFileItemWithCount(int count) const {
    return bin().preloadImageFileItemWithCount(count);
}

std::vector<std::shared_ptr<PBImageFileItem>> PBImageViewController::visibleImageFileItems() const {
    return _thumbnailView->visibleImageFileItems();
}

void PBImageViewController::navigateToNextImage() {
    bin().navigateToNextImage();
}

void PBImageViewController::navigateToPreviousImage() {
    bin().navigateToPreviousImage();
}

void PBImageViewController::navigateToFirstImage() {
    bin().navigateToFirstImage();
}

void PBImageViewController::navigateToLastImage() {
    bin().navigateToLastImage();
}

void PBImageViewController::rotateLeft() {
    _host.rotateLeft();
}

void PBImageViewController::rotateRight() {
    _host.rotateRight();
}

void PBImageViewController::toggleFlag() {
    _host.toggleFlag();
}

void PBImageViewController::leaveLargeView() {
    _host.leaveLargeView();
}

void PBImageViewController::showContextMenu(const QPoint& globalPosition) {
    _host.showContextMenu(globalPosition);
}

void PBImageViewController::updateZoomSizeSlider() {
    // The view may say so while it is being made.
    if (!_isEntered) return;
    _statusBarView->setZoom(
        _imageView->zoomSlider(), _imageView->zoomPercent(), focusImageFileItem() != nullptr);
}

void PBImageViewController::revalidateToolbar() {
    if (_isEntered) _host.revalidateToolbar();
}

bool PBImageViewController::canOpenPath(const QString& path) const {
    return _host.canOpenPath(path);
}

void PBImageViewController::openDroppedPaths(const QStringList& paths) {
    _host.openDroppedPaths(paths);
}

bool PBImageViewController::isSlideShowMode() const {
    return _host.isSlideShowMode();
}

void PBImageViewController::showImageAtIndex(std::int64_t /*index*/) {
    _imageView->showImage();
    updateZoomSizeSlider();
    updateInfoLabel();
    updateWindowTitle();
    revalidateToolbar();
}

void PBImageViewController::selectDidChange() {
    _host.selectDidChange(focusImageFileItem());
}

void PBImageViewController::tryPreloadNextOrPrevImage() {
    if (!isSlideShowMode()) _imageView->tryPreloadNextOrPrevImage();
}

void PBImageViewController::focusDidLeave(PBImageFileItem& item) {
    clearUnFitInImages(item, _services.loadImageManager.screen().fitInSide());
}

void PBImageViewController::focusWasReplaced(
    const std::shared_ptr<PBImageFileItem>& former, const std::shared_ptr<PBImageFileItem>& item) {
    _services.imageBufferManager.itemWasReplaced(former, item);
    itemsDidChange();
}

void PBImageViewController::listDidReload() {
    _imageView->updatePrevNextButton();
    _imageView->update(); // a disk may have gone or come
    updateInfoLabel();
    updateWindowTitle();
    revalidateToolbar();
}

void PBImageViewController::stopProgress() {
    _imageView->stopProgressIndicator();
}

void PBImageViewController::keyDown(QKeyEvent& event) {
    event.setAccepted(_imageView->keyDown(event));
}

void PBImageViewController::popUpContextMenu(const QPoint& globalPosition) {
    _host.showContextMenu(globalPosition);
}

QString PBImageViewController::filePath(const PBImageFileItem& item) const {
    return item.filePath(_services.folderPaths);
}
