#include "viewer/bin/PBThumbnailView.h"

#include "codec/pixels/Geometry.h"
#include "platform/tasks/MainThread.h"
#include "ui/DragOut.h"
#include "ui/PBThemes.h"
#include "viewer/bin/PhotoBinHost.h"
#include "viewer/bin/StripAccessible.h"

#include <QContextMenuEvent>
#include <QDrag>
#include <QHelpEvent>
#include <QPainter>
#include <QScopedValueRollback>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace {

/// Seconds for loading and scaling in one paint.
constexpr double paintBudget = 0.006;
/// Sorting the waiting builds again costs their number: not at every step of a motion.
constexpr int adjustDelay = 50; // milliseconds
/// Points that the mouse moves before a press is a drag.
constexpr double dragThreshold = 3;
/// Of photographs whose disk is not there.
constexpr double awayOpacity = 0.5;
constexpr qsizetype preparedBytes = qsizetype{8} << 20;

} // namespace

PBThumbnailView::PBThumbnailView(
    PBThumbnailScrollView& scrollView, PhotoBinHost& host, const ThumbnailSources& sources)
    : QWidget(&scrollView), _scrollView(scrollView), _host(host), _bin(host, *this),
      _thumbnails(
          sources, [this](const PBImageFileItem& item) { updateCell(item); },
          [&scrollView] { return scrollView.now(); }) {
    StripAccessible::install<StripAccessible, PBThumbnailView>();
    setAttribute(Qt::WA_OpaquePaintEvent);
    setFocusPolicy(Qt::StrongFocus);
    _prepared.setCapacity(preparedBytes);
    // The strip's own middle says where one is; a scroller would take the cells' height.
    _scrollView.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    _scrollView.setStrip(this);
    _scrollView.setDocumentView(this);
    _scrollView.setFocusProxy(this);
    connect(&_scrollView, &PBScrollView::didScroll, this, &PBThumbnailView::didScroll);
}

PBThumbnailView::~PBThumbnailView() = default;

StripGeometry PBThumbnailView::geometry() const {
    return {
        static_cast<double>(height()), static_cast<double>(_scrollView.viewport()->width()),
        _bin.count()};
}

StripGeometry::Range PBThumbnailView::visibleRange() const {
    return geometry().calcVisibleForRect(_scrollView.documentVisibleRect());
}

StripThumbnails::Items PBThumbnailView::visibleImageFileItems() const {
    StripThumbnails::Items items;
    const StripGeometry::Range range = visibleRange();
    for (std::int64_t index = range.first; index <= range.last; ++index)
        if (auto item = _bin.itemAt(index)) items.push_back(std::move(item));
    return items;
}

QRect PBThumbnailView::widgetRect(std::int64_t index) const {
    return geometry()
        .rectOfIndex(index)
        .translated(-_scrollView.pbScrollPoint().x(), 0)
        .toAlignedRect();
}

std::int64_t PBThumbnailView::indexAt(const QPointF& point) const {
    return geometry().indexAtPoint(point + QPointF(_scrollView.pbScrollPoint().x(), 0));
}

double PBThumbnailView::roundPosition(double position) const {
    return geometry().roundPosition(position);
}

void PBThumbnailView::layoutStrip() {
    const QScopedValueRollback jumping(_isJumping, true);
    _scrollView.setDocumentSize({geometry().contentWidth(), static_cast<double>(height())});
}

void PBThumbnailView::reloadData() {
    platform::assertMainThread();
    ++_contentGeneration;
    layoutStrip();
    if (_bin.count() > 0 && std::exchange(_shouldStopAnimation, false)) _host.stopProgress();
    _bin.refreshFocusIndex();
    scrollIndexToCenter(_bin.focusIndex(), false);
    adjustBuildThumb();
    preloadThumbnail();
    _host.listDidReload();
    _host.tryPreloadNextOrPrevImage();
    update();
    StripAccessible::itemsDidChange(*this);
}

void PBThumbnailView::scrollIndexToCenter(std::int64_t index, bool animation) {
    if (index < 0) return;
    const QScopedValueRollback jumping(_isJumping, true);
    _scrollView.scrollToPosition(geometry().positionOfIndex(index), animation && isVisible());
}

void PBThumbnailView::focusDidChange() {
    StripAccessible::selectionDidChange(*this);
    StripAccessible::currentDidChange(*this);
    update();
}

void PBThumbnailView::scrollTimeDidEnd(std::int64_t direction) {
    if (_isJumping) return;
    const std::int64_t middle = geometry().indexAtPosition(_scrollView.pbScrollPoint().x());
    _bin.stoppedAt(middle, static_cast<int>(direction));
}

void PBThumbnailView::didScroll() {
    const double position = _scrollView.pbScrollPoint().x();
    if (position != _lastPosition) _direction = position > _lastPosition ? 1 : -1;
    _lastPosition = position;
    preloadThumbnail();
    if (!_adjustTimer.isActive()) _adjustTimer.start(adjustDelay, this);
    update();
}

void PBThumbnailView::timerEvent(QTimerEvent* event) {
    if (event->timerId() == _adjustTimer.timerId()) return adjustBuildThumb();
    QWidget::timerEvent(event);
}

void PBThumbnailView::adjustBuildThumb() {
    _adjustTimer.stop();
    std::unordered_set<qint64> shown;
    for (const auto& item : visibleImageFileItems())
        shown.insert(item->fileId());
    _thumbnails.adjustBuildThumb(shown);
}

/// What is on show, and half as much ahead.
void PBThumbnailView::preloadThumbnail() {
    const StripGeometry::Range range = visibleRange();
    StripThumbnails::Items items = visibleImageFileItems();
    const std::int64_t ahead = range.count() / 2;
    for (std::int64_t step = 1; step <= ahead; ++step) {
        if (auto item = _bin.itemAt(_direction > 0 ? range.last + step : range.first - step))
            items.push_back(std::move(item));
    }
    _thumbnails.preloadThumbnail(items);
}

void PBThumbnailView::buildThumbDidFinish(qint64 fileId) {
    platform::assertMainThread();
    if (_host.isSlideShowMode()) return;
    for (const auto& item : visibleImageFileItems())
        if (item->fileId() == fileId) update();
}

void PBThumbnailView::updateCell(const PBImageFileItem& item) {
    const StripGeometry::Range range = visibleRange();
    for (std::int64_t index = range.first; index <= range.last; ++index)
        if (_bin.itemAt(index).get() == &item) update(widgetRect(index));
}

void PBThumbnailView::clearPreparedThumbnails() {
    _prepared.clear();
    _thumbnails.clear();
}

void PBThumbnailView::resizeEvent(QResizeEvent* event) {
    QWidget::resizeEvent(event);
    layoutStrip();
    scrollIndexToCenter(_bin.focusIndex(), false);
    if (!isVisible()) return;
    adjustBuildThumb();
    preloadThumbnail();
}

void PBThumbnailView::paintEvent(QPaintEvent* event) {
    QPainter painter(this);
    painter.fillRect(event->rect(), PBThemes::colors().bar);
    if (_bin.count() == 0 || _host.isSlideShowMode()) return;
    const double ratio = painter.deviceTransform().m11();
    _thumbnails.beginPaint(paintBudget, (geometry().itemSize() - 2) * ratio);
    _isCrude = false;
    const StripGeometry::Range range = visibleRange();
    for (std::int64_t index = range.first; index <= range.last; ++index)
        if (event->rect().intersects(widgetRect(index))) drawAtIndex(painter, index, ratio);
    if (_bin.focusIndex() >= 0) drawCentreFrame(painter);
    if (_thumbnails.takeHasMissed()) preloadThumbnail();
    // What had no time gets its turn when the events that wait are done.
    if (_isCrude)
        QMetaObject::invokeMethod(
            this, [this] { update(); }, Qt::QueuedConnection);
}

QRectF PBThumbnailView::pictureRect(const QRectF& cell, const QImage& thumbnail, double angle) {
    const QSizeF shown = PBUtilities::rotateSize(thumbnail.size(), angle);
    QRectF place = cell.adjusted(1, 1, -1, -1);
    PBUtilities::fitInRect(place, shown.width(), shown.height(), false);
    return place;
}

void PBThumbnailView::drawAtIndex(QPainter& painter, std::int64_t index, double ratio) {
    const auto item = _bin.itemAt(index);
    const QRectF cell =
        geometry().rectOfIndex(index).translated(-_scrollView.pbScrollPoint().x(), 0);
    QColor ground = PBThemes::colors().secondaryText;
    ground.setAlphaF(0.08F);
    painter.fillRect(cell, ground);
    const QImage thumbnail = _thumbnails.thumbnail(item);
    if (thumbnail.isNull()) return;
    const double angle = item->rotateAngle();
    const QRectF place = pictureRect(cell, thumbnail, angle);
    // On whole pixels of the device, as the window's corner is.
    const QPointF origin = painter.deviceTransform().map(QPointF());
    const auto pixel = [ratio](double points, double from) {
        return (std::rint(points * ratio + from) - from) / ratio;
    };
    const QSize pixels(
        std::max(1, static_cast<int>(std::lround(place.width() * ratio))),
        std::max(1, static_cast<int>(std::lround(place.height() * ratio))));
    const QRectF target(
        QPointF(pixel(place.x(), origin.x()), pixel(place.y(), origin.y())),
        QSizeF(pixels) / ratio);
    painter.setOpacity(item->isAway() ? awayOpacity : 1);
    const QImage picture = _prepared.picture(thumbnail, pixels, angle, _thumbnails.hasTimeLeft());
    if (!picture.isNull() && std::fmod(angle, 90) == 0) {
        painter.drawImage(target, picture);
    } else {
        _isCrude = _isCrude || picture.isNull();
        painter.save();
        painter.translate(target.center());
        painter.rotate(-angle);
        const QSizeF size = PBUtilities::rotateSize(target.size(), angle);
        painter.drawImage(QRectF(QPointF(-size.width() / 2, -size.height() / 2), size), thumbnail);
        painter.restore();
    }
    painter.setOpacity(1);
}

/// Fixed in the middle; the cells slide below it.
void PBThumbnailView::drawCentreFrame(QPainter& painter) const {
    const double item = geometry().itemSize();
    const QRectF cell((width() - item) / 2, 0, item, item);
    const auto frame = [&painter](const QRectF& rect, const QColor& color, double line) {
        // The pen's line lies within the rectangle, in all its width.
        const double half = line / 2;
        painter.setPen(QPen(color, line, Qt::SolidLine, Qt::SquareCap, Qt::MiterJoin));
        painter.drawRect(rect.adjusted(half, half, -half, -half));
    };
    painter.setBrush(Qt::NoBrush);
    frame(cell, PBThemes::imageBrowserSelectColor(hasFocus()), 2);
    frame(cell.adjusted(2, 2, -2, -2), Qt::white, 1);
}

void PBThumbnailView::mousePressEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    _downPoint = event->position();
    _isDragged = false;
}

void PBThumbnailView::mouseMoveEvent(QMouseEvent* event) {
    if (!_downPoint || _isDragged) return;
    const QPointF way = event->position() - *_downPoint;
    if (std::abs(way.x()) <= dragThreshold && std::abs(way.y()) <= dragThreshold) return;
    const std::int64_t index = indexAt(*_downPoint);
    if (index < 0) return;
    _isDragged = true;
    beginDragOut(index);
}

void PBThumbnailView::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton) return event->ignore();
    const auto down = std::exchange(_downPoint, std::nullopt);
    if (!down || _isDragged) return;
    _bin.goTo(indexAt(event->position()));
}

void PBThumbnailView::beginDragOut(std::int64_t index) {
    const auto item = _bin.itemAt(index);
    const QString path = item ? _host.filePath(*item) : QString();
    if (path.isEmpty()) return;
    auto* drag = new QDrag(this);
    drag->setMimeData(DragOut::mimeData({path}).release()); // the drag owns it
    const QRect cell = widgetRect(index);
    const QImage thumbnail = item->thumbnailRef();
    const QSizeF size = pictureRect(cell, thumbnail, item->rotateAngle()).size();
    drag->setPixmap(QPixmap::fromImage(
        DragOut::picture(thumbnail, size.toSize(), item->rotateAngle(), 1, devicePixelRatioF())));
    drag->setHotSpot(QPoint(size.toSize().width(), size.toSize().height()) / 2);
    drag->exec(Qt::CopyAction);
    _downPoint.reset();
}

void PBThumbnailView::contextMenuEvent(QContextMenuEvent* event) {
    if (event->reason() == QContextMenuEvent::Mouse) _bin.goTo(indexAt(event->pos()));
    _host.popUpContextMenu(event->globalPos());
}

void PBThumbnailView::keyPressEvent(QKeyEvent* event) {
    _host.keyDown(*event);
}

void PBThumbnailView::focusInEvent(QFocusEvent* event) {
    QWidget::focusInEvent(event);
    update();
    StripAccessible::currentDidChange(*this);
}

void PBThumbnailView::focusOutEvent(QFocusEvent* event) {
    QWidget::focusOutEvent(event);
    update();
}

void PBThumbnailView::changeEvent(QEvent* event) {
    QWidget::changeEvent(event);
    if (event->type() == QEvent::PaletteChange) update();
}

bool PBThumbnailView::event(QEvent* event) {
    if (event->type() != QEvent::ToolTip) return QWidget::event(event);
    const auto& help = static_cast<const QHelpEvent&>(*event);
    const std::int64_t index = indexAt(help.pos());
    const auto item = _bin.itemAt(index);
    if (item)
        QToolTip::showText(help.globalPos(), item->fileName(), this, widgetRect(index));
    else
        QToolTip::hideText();
    return true;
}
