#include "shell/large/LargeView.h"

#include "browser/PBImageBrowserView.h"
#include "codec/PBImageImporterManager.h"
#include "core/FileTypes.h"
#include "core/PBAppDelegate.h"
#include "core/PBOpenFiles.h"
#include "core/Paths.h"
#include "group/PBImageFileItem.h"
#include "image/BuildThumbNotifier.h"
#include "image/large/EarlyPhotograph.h"
#include "library/PBAliasResolver.h"
#include "platform/tasks/MainThread.h"
#include "shell/panes/BrowserPane.h"
#include "shell/services/BrowsingSettings.h"
#include "shell/services/ShellServices.h"
#include "shell/sidebar/SourceSelection.h"
#include "viewer/PBImageView.h"

#include <QMainWindow>
#include <QStackedWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

LargeView::LargeView(Parts parts)
    : _parts(std::move(parts)), _opened(
                                    {.services = _parts.services,
                                     .folderPaths = _parts.browserPane.folderPaths(),
                                     .standInCame = [this] { standInCame(); }}),
      _infoView(new QWidget) {
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
             .folderPaths = _opened},
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
    connect(
        &_parts.browserPane.browserView(), &PBImageBrowserView::selectionDidChange, this,
        [this](std::int64_t count) {
            if (count > 0 && !isShown()) _opened.end(); // the user has chosen
        });
    // Not within the swap that brought it.
    connect(
        &_parts.browserPane.browserView(), &PBImageBrowserView::itemCountDidChange, this,
        &LargeView::selectLeft, Qt::QueuedConnection);
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
    show(LargeViewLists::forEntering(browser.leaves(), index), focus);
}

void LargeView::show(LargeViewLists::List list, const std::shared_ptr<PBImageFileItem>& focus) {
    _groupPath = LargeViewLists::groupPath(list.groupItem);
    _isAwaitingFocus = false;
    (void)_parts.browserPane.browserView().selection().deselectAll();
    moveInfoTo(*_infoView);
    _parts.contents.setCurrentWidget(_controller->view());
    _controller->enter(std::move(list), focus);
    Q_EMIT isShownDidChange(true);
    Q_EMIT stateDidChange();
}

void LargeView::openFilesEnterToLargeView(const OpenFilesRequest::NamedFile& first) {
    platform::assertMainThread();
    if (!_parts.services.delegate.openFiles() || isShown()) return;
    _opened.begin(first);
    LargeViewLists::List list;
    if (_opened.standIn()) list.items.push_back(_opened.standIn());
    show(std::move(list), _opened.standIn());
}

void LargeView::standInCame() {
    if (!isShown() || _controller->bin().focusImageFileItem()) return;
    LargeViewLists::List list;
    list.items.push_back(_opened.standIn());
    showAt(std::move(list), _opened.standIn());
}

void LargeView::selectLeft() {
    if (isShown() || !_opened.isAwaited()) return;
    PBImageBrowserView& browser = _parts.browserPane.browserView();
    std::shared_ptr<PBImageFileItem> left;
    browser.leaves().forEachImage(
        FoldedLeaves::Included, [&](const PBImageBrowserIndex&, const auto& item) {
            if (!left && _opened.isIt(*item)) left = item;
        });
    if (!left) return;
    _opened.end();
    left->setIsSelected(true);
    browser.showCurrent(left);
    browser.selectDidChange();
}

bool LargeView::asksFor(const QString& folderPath) const {
    const auto request = _parts.services.delegate.openFiles();
    return isShown() && request &&
           std::ranges::any_of(request->openFileArray(), [&](const auto& asked) {
               return PBUtilities::comparePath(folderPath, asked.folderPath) == 0;
           });
}

std::shared_ptr<PBImageFileItem> LargeView::chosenImageFileItem() const {
    const auto focus = _controller->bin().focusImageFileItem();
    return focus == _opened.standIn() ? nullptr : focus;
}

bool LargeView::takeOpened(LargeViewLists::List& list) {
    const auto item =
        std::ranges::find_if(list.items, [this](const auto& one) { return _opened.isIt(*one); });
    const bool isThere = item != list.items.end();
    const ShellServices& services = _parts.services;
    const bool mayCome = services.delegate.isScanning() || services.groupTreeDataSource.isWaiting();
    if (!isThere && mayCome) return false;
    // What the scan could not take is shown all the same.
    if (!isThere && list.items.empty()) return false;
    const auto focus = _controller->bin().focusImageFileItem();
    const auto opened = isThere ? *item : nullptr;
    _opened.end();
    if (!opened) return true;
    if (focus) {
        // It is the same picture, at the place to which the user has moved it meanwhile.
        _controller->bin().replaceFocusImageFileItem(opened);
        return true;
    }
    showAt(std::move(list), opened);
    return false;
}

void LargeView::showAt(LargeViewLists::List list, const std::shared_ptr<PBImageFileItem>& focus) {
    // Before the list: nothing else of it is shown first.
    _controller->bin().setFocusImageFileItem(focus);
    showList(std::move(list));
    _controller->goToImageFileItem(focus);
}

void LargeView::moveInfoTo(QWidget& view) {
    view.layout()->addWidget(&_parts.info);
}

void LargeView::view_BrowserView() {
    const PBImageBrowserView& browser = _parts.browserPane.browserView();
    enterToLargeView(browser.selection().firstSelectItem(FoldedLeaves::Included));
}

void LargeView::view_ThumbnailView() {
    const auto request = _parts.services.delegate.openFiles();
    leave();
    if (!request) return;
    // What was scanned is not what the selected folder has.
    const bool hasOthers = request->openFileArray().size() > 1;
    const bool lacksSubfolders =
        _parts.services.browsing.recurseSubFolder() && !asksForWholeFolder(*request);
    if (hasOthers || lacksSubfolders) _parts.services.delegate.scan();
}

void LargeView::leave() {
    platform::assertMainThread();
    if (!isShown()) return;
    PBImageBrowserView& browser = _parts.browserPane.browserView();
    const auto shown = chosenImageFileItem();
    _parts.services.delegate.setOpenFiles(nullptr);
    _opened.dropStandIn();
    EarlyPhotograph::shared().forget();
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
    if (_opened.isAwaited() && !takeOpened(*list)) return;
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
        return item->samenessWith(*focus) != PBImageFileItem::Sameness::None;
    });
}

void LargeView::willShowSamePhotographsOf(const QString& folderPath) {
    const auto focus = chosenImageFileItem();
    if (focus && isShown() && !_opened.isAwaited()) _opened.await({folderPath, focus->fileName()});
    willShowSamePhotographs();
}

void LargeView::scanStateDidChange() {
    if (_parts.services.delegate.isScanning()) return;
    if (!isShown()) {
        selectLeft();
        if (!_parts.services.groupTreeDataSource.isWaiting()) _opened.end();
        return;
    }
    if (std::exchange(_isAwaitingFocus, false) || _opened.isAwaited()) updateLargeViewData();
    _controller->scanFinished();
}

void LargeView::savePositions() {
    _controller->panes().splitViewSavePosition();
}

void LargeView::selectDidChange(const std::shared_ptr<PBImageFileItem>& focus) {
    PBImageBrowserView& browser = _parts.browserPane.browserView();
    if (!focus || focus != _opened.standIn()) browser.setCurrentImageFile(focus);
    browser.selectDidChange();
}

void LargeView::updateWindowTitle(const QString& title, const QString& representedFile) {
    if (!isShown()) return;
    _parts.window.setWindowTitle(title);
    _parts.window.setWindowFilePath(representedFile);
}

bool LargeView::canOpenPath(const QString& path) const {
    // By their names: of many photographs nobody looks at each.
    const QString type = PBUtilities::extentionToUTI(PBUtilities::pathExtension(path).toString());
    const QStringList types = _parts.services.imageImporterManager.supportImageTypes();
    return PBUtilities::conformsToUTIArray(type, types) ||
           _parts.services.aliasResolver.isFolder(path);
}

void LargeView::openDroppedPaths(const QStringList& paths) {
    // Not within the drop: the view that took it is about to be hidden.
    QMetaObject::invokeMethod(
        this, [this, paths] { _parts.openPaths(paths); }, Qt::QueuedConnection);
}

bool LargeView::isSlideShowMode() const {
    return _parts.services.delegate.isSlideShowMode();
}
