#include "shell/panes/BrowserPane.h"

#include "browser/PBImageBrowserScrollView.h"
#include "browser/PBImageBrowserView.h"
#include "codec/PBImageImporterManager.h"
#include "core/PBAppDelegate.h"
#include "group/PBImageFileItem.h"
#include "image/BuildThumbNotifier.h"
#include "image/PBBuildThumbOperation.h"
#include "image/ThumbnailStore.h"
#include "library/PBAliasManager.h"
#include "platform/tasks/MainThread.h"
#include "shell/services/ShellServices.h"

#include <QColorSpace>

#include <algorithm>

namespace {

/// Thumbnails kept before the browser has told how many fill a page, and at least: a page may be a
/// few large ones, and the strip of the large view shows many.
constexpr std::uint64_t leastBufferCount = 200;
constexpr std::uint64_t bufferedPages = 3;

} // namespace

class BrowserPane::StoredThumbnails final : public ThumbnailLoader {
public:
    explicit StoredThumbnails(FMDatabase& thumbnailDb) : _thumbnailDb(thumbnailDb) {}
    [[nodiscard]] QImage loadThumbnail(const PBImageFileItem& item) override {
        return ThumbnailStore::loadThumbnail(_thumbnailDb, item.fileId(), true, QColorSpace());
    }

private:
    FMDatabase& _thumbnailDb;
};

BrowserPane::BrowserPane(const ShellServices& services, std::function<void()> updateTip)
    : _services(services), _updateTip(std::move(updateTip)),
      _loader(std::make_unique<StoredThumbnails>(services.mainThumbDb)),
      _preloadLoader(std::make_unique<StoredThumbnails>(services.preloadThumbDb)),
      _folderPaths(services.mainFileDb, services.aliasManager), _buffer(leastBufferCount),
      _scrollView(new PBImageBrowserScrollView(*this)),
      _view(new PBImageBrowserView(*_scrollView, *this)) {
    _buffer.setBrowserOrder(&_view->browserOrder());

    connect(_view, &PBImageBrowserView::pageItemCountDidChange, this, [this](qint64 count) {
        _buffer.setBufferCount(
            std::max(leastBufferCount, static_cast<std::uint64_t>(count) * bufferedPages));
    });
    connect(
        &services.buildThumbNotifier, &BuildThumbNotifier::PBNotiName_BuildThumb, _view,
        [view = _view](const PBBuildThumbOperation& operation) {
            view->buildThumbDidFinish(operation.fileId());
        });
    connect(_scrollView, &PBScrollView::motionDidEnd, this, [&services] {
        services.groupTreeDataSource.motionDidEnd();
    });
    connect(_view, &QObject::destroyed, this, [this] { _buffer.setBrowserOrder(nullptr); });
    services.groupTreeDataSource.setDisplay(this);
}

BrowserPane::~BrowserPane() {
    _services.groupTreeDataSource.setDisplay(nullptr);
}

QWidget* BrowserPane::view() const {
    return _scrollView;
}

QStringList BrowserPane::selectedFilePath() const {
    return _view->selection().selectedFilePath(_folderPaths, FoldedLeaves::Included);
}

PBImageBrowserIndex BrowserPane::firstShownIndex() const {
    const QRectF visible = _scrollView->documentVisibleRect();
    PBImageBrowserIndex first;
    _view->browserLayout().forEachVisible(
        visible.top(), visible.bottom(), [&first](const PBImageBrowserIndex& index) {
            if (!first.isValid()) first = index;
        });
    return first;
}

void BrowserPane::clear(bool isSameFolder) {
    platform::assertMainThread();
    _buffer.clearThumbnailBuffer();
    if (isSameFolder) {
        _view->resetForSamePhotographs();
    } else {
        _view->reset();
    }
    updateImageBrowserViewData();
}

void BrowserPane::updateImageBrowserViewData() {
    platform::assertMainThread();
    _view->showLeafGroupItemArray(_services.groupTreeDataSource.leafGroupItemArray());
}

void BrowserPane::scrollToLeaf(const PBGroupItemData& leaf) {
    _view->scrollToGroup(_view->leaves().groupOfData(leaf));
}

ThumbnailLoader& BrowserPane::thumbnailLoader() {
    return *_loader;
}

ThumbnailLoader& BrowserPane::preloadThumbnailLoader() {
    return *_preloadLoader;
}

platform::OperationQueue& BrowserPane::preloadThumbnailOperationQueue() {
    return _services.preloadThumbnailOperationQueue;
}

platform::OperationQueue& BrowserPane::buildThumbOperationQueue() {
    return _services.buildThumbOperationQueue;
}

std::unique_ptr<PBImageImporterProtocol> BrowserPane::imageImporter(const PBImageFileItem& item) {
    const QString path = item.filePath(_folderPaths);
    return path.isEmpty() ? nullptr : _services.imageImporterManager.imageImporterForImageURL(path);
}

QString BrowserPane::tagWithTagId(qint64 tagId) const {
    return PBCatalogue(_services.mainFileDb).tagWithTagId(tagId);
}

QString BrowserPane::folderTitle(const QString& path) const {
    return _services.aliasManager.titleOfFolder(path);
}

bool BrowserPane::isLargeView() const {
    return _services.delegate.isLargeViewMode();
}

bool BrowserPane::isScrollingOrDragging() const {
    return _scrollView->isScrolling() || _view->isDragging() ||
           (_largeView.isScrolling && _largeView.isScrolling());
}

void BrowserPane::updateLargeViewData() {
    if (_largeView.updateLargeViewData) _largeView.updateLargeViewData();
}

ThumbnailSources BrowserPane::thumbnailSources() {
    return {
        .loader = *_loader,
        .preloadLoader = *_preloadLoader,
        .preloadQueue = _services.preloadThumbnailOperationQueue,
        .buildQueue = _services.buildThumbOperationQueue,
        .buffer = _buffer};
}

void BrowserPane::updateBrowserScrollCapture() {
    _view->captureScrollWithMode(ScrollCaptureMode::Nearest);
}
