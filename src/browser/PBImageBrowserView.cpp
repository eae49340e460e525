#include "browser/PBImageBrowserView.h"

#include "browser/BrowserAccessible.h"
#include "browser/PBImageBrowserScrollView.h"
#include "browser/PBImageBrowserSelectView.h"
#include "browser/painting/MovableRows.h"
#include "browser/state/BrowserNeighbour.h"
#include "platform/tasks/MainLoop.h"
#include "platform/tasks/MainThread.h"
#include "ui/PBModalTextField.h"

#include <QPaintEvent>
#include <QPainter>
#include <QScopedValueRollback>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

/// Sorting the waiting builds again costs their number: not at every step of a motion.
constexpr int adjustDelay = 50; // milliseconds
/// Thumbnails that are too small are loaded again when the sheet is at rest.
constexpr int largerDelay = 150; // milliseconds
constexpr int standInDelay = 30;

} // namespace

PBImageBrowserView::PBImageBrowserView(
    PBImageBrowserScrollView& scrollView, BrowserServices& services)
    : QWidget(&scrollView), _scrollView(scrollView), _services(services),
      _feed(
          _layout, _leaves, services,
          [this](const PBImageFileItem& item) { thumbnailArrived(item); },
          [&scrollView] { return scrollView.now(); }),
      _painter(
          _layout, _leaves, _feed,
          {.tagWithTagId = [&services](qint64 tagId) { return services.tagWithTagId(tagId); },
           .folderTitle = [&services](const QString& path) { return services.folderTitle(path); }}),
      _selection(_leaves), _input(_layout, _leaves, _painter, *this),
      _selectView(new PBImageBrowserSelectView(this)) {
    BrowserAccessible::install<BrowserAccessible, PBImageBrowserView>();
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    // A mouse that moves without a button tells of a release that was never heard.
    setMouseTracking(true);
    setAttribute(Qt::WA_AcceptTouchEvents, false);
    _layout.setLeaves(&_leaves);
    _scrollView.setThumbnailSize(thumbnailSize());
    _scrollView.setDocumentView(this);
    _scrollView.setFocusProxy(this);
    connect(&_scrollView, &PBScrollView::didScroll, this, &PBImageBrowserView::didScroll);
}

PBImageBrowserView::~PBImageBrowserView() = default;

void PBImageBrowserView::setLeafGroupItemArray(const std::vector<PBGroupItem*>& leaves) {
    platform::assertMainThread();
    ++_contentGeneration;
    const BrowserNeighbour neighbour(_leaves, currentIndex());
    _layout.leavesDidChange(_leaves.setLeafGroupItemArray(leaves));
    goOnWith(neighbour);
}

void PBImageBrowserView::showLeafGroupItemArray(const std::vector<PBGroupItem*>& leaves) {
    setLeafGroupItemArray(leaves);
    showLeaves();
}

/// Arrow keys, and commands after one that took the selected images away, go on from there.
void PBImageBrowserView::goOnWith(const BrowserNeighbour& neighbour) {
    // The large view chooses by itself; and a drag or a double click means what it began on.
    const bool isFree = !_services.isLargeView() && !_input.isDragging();
    const auto next = isFree ? neighbour.taken(_leaves) : nullptr;
    if (!next) return;
    _input.setCurrent(next);
    if (!_isCurrentSelected || _selection.hasSelect(FoldedLeaves::Included)) return;
    next->setIsSelected(true);
    _hasGoneOn = true;
}

void PBImageBrowserView::reset() {
    platform::assertMainThread();
    _carryOver.forget();
    forgetImages();
}

void PBImageBrowserView::resetForSamePhotographs() {
    platform::assertMainThread();
    BrowserCarryOver carryOver = std::exchange(_carryOver, {});
    carryOver.note(_layout, _leaves, currentIndex(), visibleRect());
    forgetImages();
    _carryOver = std::move(carryOver);
}

BrowserCarryOver::Noted PBImageBrowserView::noted() {
    platform::assertMainThread();
    return BrowserCarryOver::noted(_layout, _leaves, currentIndex(), visibleRect());
}

void PBImageBrowserView::bringBack(const BrowserCarryOver::Noted& noted) {
    platform::assertMainThread();
    _carryOver = BrowserCarryOver(noted);
    reloadData();
}

void PBImageBrowserView::allCame() {
    platform::assertMainThread();
    // The place went with its image: the current one is the next best.
    if (_carryOver.isPlaceWaiting() && currentIndex().isValid())
        scrollIndexToVisible(currentIndex());
    _carryOver.forget();
}

void PBImageBrowserView::forgetImages() {
    _input.reset();
    _editingNameFileItem.reset();
    delete _editFileNameTextField.data();
    _scrollCapture.reset();
    _scrollView.scrollToPosition(0, false);
    _scrollCapture.reset(); // the way to the top is not to be kept
}

void PBImageBrowserView::setThumbnailSize(double size) {
    platform::assertMainThread();
    size = std::clamp(size, BrowserMetrics::minThumbnailSize, BrowserMetrics::maxThumbnailSize);
    BrowserMetrics metrics = _layout.metrics();
    metrics.thumbnailSize = size;
    _layout.setMetrics(metrics);
    _scrollView.setThumbnailSize(size);
}

void PBImageBrowserView::setStyle(std::uint64_t style) {
    platform::assertMainThread();
    BrowserMetrics metrics = _layout.metrics();
    const std::uint64_t changed = metrics.style ^ style;
    metrics.style = style;
    _layout.setMetrics(metrics);
    if ((changed & ~std::uint64_t{BrowserMetrics::Shadow}) != 0) {
        reloadData();
    } else {
        update();
    }
}

std::int64_t PBImageBrowserView::pageItemCount() const {
    return _layout.pageItemCount(_scrollView.viewport()->height());
}

QRectF PBImageBrowserView::visibleRect() const {
    return _scrollView.documentVisibleRect();
}

QPointF PBImageBrowserView::toSheet(const QPointF& point) const {
    return point + visibleRect().topLeft();
}

QRect PBImageBrowserView::toWidget(const QRectF& sheetRect) const {
    return sheetRect.translated(-visibleRect().topLeft())
        .intersected(QRectF(rect()).adjusted(-1, -1, 1, 1))
        .toAlignedRect();
}

QRect PBImageBrowserView::widgetRect(const PBImageBrowserIndex& index) {
    return _layout.cellRectAtIndex(index).translated(-visibleRect().topLeft()).toAlignedRect();
}

QRect PBImageBrowserView::headRect(std::int64_t group) {
    return _layout.headRect(group).translated(-visibleRect().topLeft()).toAlignedRect();
}

void PBImageBrowserView::toggleIndex(const PBImageBrowserIndex& index) {
    platform::assertMainThread();
    const auto item = _leaves.imageFileAtIndex(index);
    if (!item) return;
    item->setIsSelected(!item->isSelected());
    selectDidChange();
}

PBImageBrowserIndex PBImageBrowserView::indexAt(const QPoint& point) {
    return _layout.itemIndexByPoint(toSheet(point), _painter).index;
}

void PBImageBrowserView::updateSheetRect(const QRectF& sheetRect) {
    const QRect part = toWidget(sheetRect);
    if (!part.isEmpty()) update(part);
}

/// Gives the scroll view the size of the sheet. Its scroller may come or go with that, and change
/// the width of the sheet in turn, but never its columns.
void PBImageBrowserView::updateDocument() {
    const auto applyWidth = [this] {
        const bool hasScroller = _scrollView.viewport()->width() < _scrollView.width();
        _layout.setWidth(
            _scrollView.viewport()->width(), hasScroller ? 0 : _scrollView.scrollerWidth());
    };
    applyWidth();
    const double height =
        std::max<double>(_scrollView.viewport()->height(), _layout.contentHeight());
    _scrollView.setDocumentSize({_layout.contentWidth(), height});
    applyWidth();
}

void PBImageBrowserView::restoreCapture() {
    if (!_scrollCapture) return;
    const auto position = scrollPositionOfCapture(*_scrollCapture, _layout, _leaves, visibleRect());
    if (position) _scrollView.setPbScrollPoint({0, *position});
}

void PBImageBrowserView::reloadData() {
    platform::assertMainThread();
    ++_contentGeneration;
    const BrowserNeighbour neighbour(_leaves, currentIndex());
    _leaves.refresh();
    _layout.invalidate();
    goOnWith(neighbour);
    showLeaves();
}

void PBImageBrowserView::showLeaves() {
    _painter.heads().forgetNames();
    const bool hasGoneOn = std::exchange(_hasGoneOn, false);
    const bool hasSelected = takeCarriedOver() || hasGoneOn;
    layoutSheet();
    BrowserAccessible::itemsDidChange(*this);
    Q_EMIT itemCountDidChange(_selection.itemCount(FoldedLeaves::Included));
    if (!hasSelected) return;
    const QScopedValueRollback carrying(_isCarryingOver, true);
    selectDidChange();
}

bool PBImageBrowserView::takeCarriedOver() {
    if (!_carryOver.isWaiting()) return false;
    BrowserCarryOver::Found found = _carryOver.take(_leaves);
    if (found.current) _input.setCurrent(found.current);
    if (found.place) _scrollCapture = std::move(found.place);
    return found.hasSelected;
}

void PBImageBrowserView::layoutSheet() {
    if (std::exchange(_isReloading, true)) return;
    const bool ignored = std::exchange(_ignoreUpdateScrollCapture, true);
    const double before = _scrollView.pbScrollPoint().y();
    updateDocument();
    restoreCapture();
    _ignoreUpdateScrollCapture = ignored;
    _isReloading = false;

    const double after = _scrollView.pbScrollPoint().y();
    if (after != before) _scrollView.updateScrollAmtByOffset(after - before);
    noteVisible();
    placeNameField();
    _feed.preloadThumbnailWithPosition(visibleRect(), _scrollDirection ? 1 : -1);
    adjustBuildThumb();
    const std::int64_t page = pageItemCount();
    if (std::exchange(_lastPageItemCount, page) != page) Q_EMIT pageItemCountDidChange(page);
    update();
}

void PBImageBrowserView::noteVisible() {
    const QRectF visible = visibleRect();
    _leaves.setVisible(_layout.visibleRange(visible.top(), visible.bottom()).begin);
}

void PBImageBrowserView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    _painter.setWidgetSize(size());
    layoutSheet();
}

void PBImageBrowserView::didScroll() {
    const QRectF visible = visibleRect();
    const double distance = visible.y() - _oldScrollPosition;
    _oldScrollPosition = visible.y();
    if (_isReloading) return;
    if (!_ignoreUpdateScrollCapture) {
        _carryOver.forgetPlace();
        captureScrollWithMode(ScrollCaptureMode::Nearest);
    }
    if (distance != 0) _scrollDirection = distance > 0;
    noteVisible();
    _feed.preloadThumbnailWithPosition(visible, _scrollDirection ? 1 : -1);
    if (!_adjustTimer.isActive()) _adjustTimer.start(adjustDelay, this);
    scrollPixels(distance);
}

/// Moves what is drawn already, so that only the strip that came into view is painted.
void PBImageBrowserView::scrollPixels(double distance) {
    const double ratio = devicePixelRatioF();
    const int inWindow = mapTo(window(), QPoint()).y();
    const auto top = firstMovableRow(distance, ratio, inWindow, height());
    if (!top || _selectView->isVisible() || _editFileNameTextField) {
        placeNameField();
        update();
        return;
    }
    scroll(0, -static_cast<int>(distance), QRect(0, *top, width(), height() - *top));
    update(0, 0, width(), *top);
    // The last row of pixels may be cut through the middle.
    const double end = (inWindow + height()) * ratio;
    if (end != std::floor(end))
        update(0, height() - 1 - std::max(0, static_cast<int>(distance)), width(), 1);
}

void PBImageBrowserView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    const QRectF visible = visibleRect();
    const double ratio = painter.deviceTransform().m11();
    _painter.begin(ratio);
    for (const QRect& part : event->region()) {
        painter.setClipRect(part);
        _painter.draw(
            painter, {.visible = visible,
                      .dirty = QRectF(part).translated(visible.topLeft()),
                      .pixelRatio = ratio,
                      .hasFocus = hasFocus(),
                      .isActive = isActiveWindow()});
    }
    const QRectF crude = _painter.end(visible);
    if (_feed.takeHasTooSmall()) _largerTimer.start(largerDelay, this);
    if (_feed.takeLacksPicture() && !_standInTimer.isActive())
        _standInTimer.start(standInDelay, this);
    if (!crude.isEmpty()) {
        // What was scaled in a hurry gets its turn when the events that wait are done.
        QMetaObject::invokeMethod(
            this, [this, crude] { updateSheetRect(crude); }, Qt::QueuedConnection);
    }
}

bool PBImageBrowserView::isPictured() {
    return _leaves.leafCount() > 0 && _feed.isPictured(visibleRect());
}

void PBImageBrowserView::thumbnailArrived(const PBImageFileItem& item) {
    const PBImageBrowserIndex index = _leaves.indexForImageFile(item);
    if (index.isValid()) updateSheetRect(_painter.cellExtent(_layout.cellRectAtIndex(index)));
}

void PBImageBrowserView::buildThumbDidFinish(qint64 fileId) {
    platform::assertMainThread();
    if (_services.isLargeView()) return;
    const QRectF visible = visibleRect();
    _layout.forEachVisible(visible.top(), visible.bottom(), [&](const PBImageBrowserIndex& index) {
        const auto item = _leaves.imageFileAtIndex(index);
        if (item && item->fileId() == fileId)
            updateSheetRect(_painter.cellExtent(_layout.cellRectAtIndex(index)));
    });
}

void PBImageBrowserView::adjustBuildThumb() {
    _adjustTimer.stop();
    _feed.adjustBuildThumb(visibleRect(), _scrollDirection);
}

QString PBImageBrowserView::headText(std::int64_t group) const {
    return _painter.heads().text(_leaves.leaf(group));
}

void PBImageBrowserView::captureScrollWithMode(ScrollCaptureMode mode) {
    platform::assertMainThread();
    _scrollCapture =
        ::captureScrollWithMode(mode, _layout, _leaves, visibleRect(), _editingNameFileItem);
}

void PBImageBrowserView::captureScrollOfSelection() {
    captureScrollWithMode(ScrollCaptureMode::VisibleSelection);
    const bool hasAnchor =
        _scrollCapture && _scrollCapture->type == PBImageBrowserViewScrollCapture::Anchored;
    if (!hasAnchor) captureScrollWithMode(ScrollCaptureMode::Nearest);
}

void PBImageBrowserView::captureScrollIfNone() {
    if (!_scrollCapture) captureScrollWithMode(ScrollCaptureMode::Nearest);
}

QRectF PBImageBrowserView::restingRect() const {
    QRectF rect = visibleRect();
    const ScrollMotion& motion = _scrollView.motion();
    if (motion.isRunning())
        rect.moveTop(std::clamp(motion.scrollStopPos(), 0.0, _scrollView.maxScrollPoint().y()));
    return rect;
}

void PBImageBrowserView::scrollFromRest(double distance) {
    const bool isMoving = _scrollView.motion().isRunning();
    if (distance == 0 && !(isMoving && _isAutoRepeat)) return;
    const QRectF visible = visibleRect();
    const double position = restingRect().top() + distance;
    const double way = position - visible.top();
    // A key that is held is faster than any motion: what it leads to would stay out of sight.
    const bool isLeftBehind = _isAutoRepeat || (isMoving && std::abs(way) > visible.height());
    _scrollView.scrollToPosition(position, !isLeftBehind && _layout.shouldAnimate(way));
}

void PBImageBrowserView::scrollIndexToVisible(const PBImageBrowserIndex& index) {
    scrollFromRest(_layout.scrollDistanceToShow(index, restingRect()));
}

void PBImageBrowserView::showCurrent(const std::shared_ptr<PBImageFileItem>& item) {
    platform::assertMainThread();
    _input.setCurrent(item);
    const PBImageBrowserIndex index = _leaves.indexForImageFile(item);
    if (!index.isValid() || _leaves.isCollapsedForBrowser(index.group)) return;
    if (visibleRect().contains(_layout.cellRectAtIndex(index).center())) return;
    const double distance = _layout.scrollDistanceToShow(index, visibleRect());
    _scrollView.scrollToPosition(visibleRect().top() + distance, false);
}

void PBImageBrowserView::scrollToEnd(bool isStart) {
    const double position = isStart ? 0 : _scrollView.maxScrollPoint().y();
    scrollFromRest(position - restingRect().top());
}

void PBImageBrowserView::scrollToGroup(std::int64_t group) {
    platform::assertMainThread();
    const double position = _layout.groupItemPosition(group);
    const double distance = position - visibleRect().top();
    if (position < 0 || distance == 0) return;
    _scrollView.scrollToPosition(position, _layout.shouldAnimate(distance));
}

void PBImageBrowserView::selectDidChange() {
    platform::assertMainThread();
    if (!_isCarryingOver) _carryOver.forgetSelection();
    const auto current = _leaves.imageFileAtIndex(currentIndex());
    _isCurrentSelected = current && current->isSelected();
    Q_EMIT selectionDidChange(_selection.selectCount(FoldedLeaves::Included));
    BrowserAccessible::selectionDidChange(*this);
    BrowserAccessible::currentDidChange(*this);
    update();
}

void PBImageBrowserView::applyThumbnailSize(double size) {
    captureScrollIfNone();
    setThumbnailSize(size);
    reloadData();
    Q_EMIT thumbnailSizeDidChange(size);
}
