#include "shell/large/LargeView.h"

#include "browser/PBImageBrowserView.h"
#include "codec/PBImageImporterManager.h"
#include "core/FileTypes.h"
#include "core/PBAppDelegate.h"
#include "group/PBImageFileItem.h"
#include "image/BuildThumbNotifier.h"
#include "platform/tasks/MainThread.h"
#include "shell/panes/BrowserPane.h"
#include "shell/services/ShellServices.h"
#include "shell/sidebar/SourceSelection.h"
#include "viewer/PBImageView.h"

#include <QFileInfo>
#include <QMainWindow>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

LargeView::LargeView(Parts parts) : _parts(std::move(parts)), _infoView(new QWidget) {
    auto* infoLayout = new QVBoxLayout(_infoView);
    infoLayout->setContentsMargins(0, 0, 0, 0);
    const ShellServices& services = _parts.services;
    const ThumbnailSources thumbnails = _parts.browserPane.thumbnailSources();
    _controller = std::make_unique<PBImageViewController>(PBImageViewController::Parts{
        .host = *this,
        .services =
            {.loadImageManager = services.loadImageManager,
             .imageBufferManager = services.imageBufferManager,
             .imageImporterManager = services.imageImporterManager,
             .thumbnailLoader = thumbnails.loader,
             .folderPaths = _parts.browserPane.folderPaths()},
        .thumbnails = thumbnails,
        .userDefaults = services.userDefaults,
        .info = _infoView});
    _parts.contents.addWidget(_controller->view());
    _parts.browserPane.setLargeView(
        {.isScrolling = [this] { return _controller->thumbnailView().isScrolling(); },
         .updateLargeViewData = [this] { updateLargeViewData(); }});
    connect(
        _controller->thumbnailView().scrollView(), &PBScrollView::motionDidEnd, this,
        [&services] { services.groupTreeDataSource.motionDidEnd(); });
    connect(
        &services.buildThumbNotifier, &BuildThumbNotifier::PBNotiName_BuildThumb, this,
        [this](const PBBuildThumbOperation& operation) {
            if (isShown()) _controller->buildThumbDidFinish(operation.fileId());
        });
    connect(
        &_parts.browserPane.browserView(), &PBImageBrowserView::enterToLargeViewRequested, this,
        &LargeView::enterToLargeView);
}

LargeView::~LargeView() {
    _parts.browserPane.setLargeView({});
}

bool LargeView::isShown() const {
    return _controller->isEntered();
}

void LargeView::enterToLargeView(const PBImageBrowserIndex& index) {
    platform::assertMainThread();
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    const auto focus = browser.leaves().imageFileAtIndex(index);
    if (!focus || isShown()) return;
    LargeViewLists::List list = LargeViewLists::forEntering(browser.leaves(), index);
    _groupPath = LargeViewLists::groupPath(list.groupItem);
    _isAwaitingFocus = false;
    (void)browser.selection().deselectAll();
    moveInfoTo(*_infoView);
    _parts.contents.setCurrentWidget(_controller->view());
    _controller->enter(std::move(list), focus);
    Q_EMIT isShownDidChange(true);
    Q_EMIT stateDidChange();
}

void LargeView::moveInfoTo(QWidget& view) {
    view.layout()->addWidget(&_parts.info);
}

void LargeView::view_BrowserView() {
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    enterToLargeView(browser.selection().firstSelectItem(FoldedLeaves::Included));
}

void LargeView::view_ThumbnailView() {
    platform::assertMainThread();
    if (!isShown()) return;
    PBImageBrowserView& browser = _parts.browserPane.browserView();
    const auto shown = _controller->bin().focusImageFileItem();
    _parts.services.delegate.setOpenFiles(nullptr);
    _controller->leave();
    _groupPath.clear();
    _isAwaitingFocus = false;
    moveInfoTo(_parts.browserInfoView);
    _parts.contents.setCurrentIndex(0);
    Q_EMIT isShownDidChange(false);
    browser.reloadData();
    if (shown) browser.showCurrent(shown);
    browser.setFocus(Qt::OtherFocusReason);
    _parts.selection.updateWindowTitle();
    Q_EMIT stateDidChange();
}

void LargeView::leaveLargeView() {
    // The view that asks is in the middle of a key or a click.
    QMetaObject::invokeMethod(this, &LargeView::view_ThumbnailView, Qt::QueuedConnection);
}

void LargeView::updateLargeViewData() {
    platform::assertMainThread();
    if (!isShown()) return;
    const bool isScanning = _parts.services.delegate.isScanning();
    auto list = LargeViewLists::afterRebuild(
        _parts.browserPane.browserView().leaves(), _controller->bin(), _groupPath,
        _parts.services.delegate.openFiles().get(), _parts.browserPane.folderPaths());
    if (!list) return;
    if (_isAwaitingFocus && isScanning && !hasFocusIn(*list)) return;
    _isAwaitingFocus = false;
    showList(std::move(*list));
}

void LargeView::showList(LargeViewLists::List list) {
    // The way to a group that is gone stays: it may come again.
    if (list.groupItem && list.groupItem->groupItem())
        _groupPath = LargeViewLists::groupPath(list.groupItem);
    _controller->updateList(std::move(list));
    Q_EMIT stateDidChange();
}

bool LargeView::hasFocusIn(const LargeViewLists::List& list) const {
    const auto focus = _controller->bin().focusImageFileItem();
    return !focus || std::ranges::any_of(list.items, [&focus](const auto& item) {
        return item->fileId() == focus->fileId();
    });
}

void LargeView::scanStateDidChange() {
    if (!isShown() || _parts.services.delegate.isScanning()) return;
    if (std::exchange(_isAwaitingFocus, false)) updateLargeViewData();
    _controller->scanFinished();
}

void LargeView::savePositions() {
    _controller->panes().splitViewSavePosition();
}

void LargeView::selectDidChange(const std::shared_ptr<PBImageFileItem>& focus) {
    PBImageBrowserView& browser = _parts.browserPane.browserView();
    browser.setCurrentImageFile(focus);
    browser.selectDidChange();
}

void LargeView::updateWindowTitle(const QString& title, const QString& representedFile) {
    if (!isShown()) return;
    _parts.window.setWindowTitle(title);
    _parts.window.setWindowFilePath(representedFile);
}

bool LargeView::canOpenPath(const QString& path) const {
    if (QFileInfo(path).isDir()) return true;
    const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(path).toString());
    return PBUtilities::conformsToUTIArray(
        type, _parts.services.imageImporterManager.supportImageTypes());
}

void LargeView::openDroppedPaths(const QStringList& paths) {
    // Not within the drop: the view that took it is about to be hidden.
    QMetaObject::invokeMethod(
        this, [this, paths] { _parts.openPaths(paths); }, Qt::QueuedConnection);
}

bool LargeView::isSlideShowMode() const {
    return _parts.services.delegate.isSlideShowMode();
}
