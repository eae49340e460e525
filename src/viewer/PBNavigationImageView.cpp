#include "viewer/PBNavigationImageView.h"

#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QVBoxLayout>

#include <algorithm>
#include <cmath>
#include <utility>

namespace {

constexpr QSize panelSize(188, 166); // points
constexpr int panelMargin = 12;      // from the view's corner
constexpr int panelPadding = 8;
constexpr double panelRadius = 8;

QPainterPath pathOf(const QPolygonF& polygon) {
    QPainterPath path;
    path.addPolygon(polygon);
    path.closeSubpath();
    return path;
}

} // namespace

PBNavigationImageView::PBNavigationImageView(NavigationTarget& target, QWidget* parent)
    : QWidget(parent), _target(target) {
    setFocusPolicy(Qt::NoFocus); // keys move the picture itself
    setCursor(Qt::ArrowCursor);
}

NavigationGeometry PBNavigationImageView::geometryNow() const {
    const ImageViewport bounds(
        QSizeF(size()), devicePixelRatioF(), QPointF(mapTo(window(), QPoint())));
    return {bounds, _target.placement()};
}

void PBNavigationImageView::paintEvent(QPaintEvent* /*event*/) {
    const ImagePlacement& large = _target.placement();
    if (!large.hasImage()) return;
    const int side = static_cast<int>(std::ceil(std::max(width(), height()) * devicePixelRatioF()));
    const QImage picture = _target.miniature(side);
    if (picture.isNull()) return;
    const NavigationGeometry geometry = geometryNow();
    QPainter painter(this);
    const auto drawPicture = [&] {
        painter.save();
        painter.setTransform(geometry.drawTransform(), true);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawImage(QRectF(QPointF(), large.imageSize()), picture, QRectF(picture.rect()));
        painter.restore();
    };
    drawPicture();
    painter.setPen(Qt::NoPen);
    painter.setBrush(QColor::fromRgbF(0, 0, 0, 0.5F));
    painter.drawPolygon(geometry.imagePolygon());
    const QPainterPath visible = pathOf(geometry.visiblePolygon());
    painter.save();
    painter.setClipPath(visible);
    drawPicture();
    painter.restore();
    painter.setRenderHint(QPainter::Antialiasing, large.angle() != std::rint(large.angle()));
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(Qt::white, 1));
    painter.drawPath(visible);
}

void PBNavigationImageView::mousePressEvent(QMouseEvent* event) {
    event->accept();
    _isDrag = event->button() == Qt::LeftButton && _target.placement().hasImage() &&
              geometryNow().grabRect().contains(event->position());
    if (!_isDrag) return;
    _downPt = event->position();
    _downDrawAnchor = _target.centerAnchor();
}

void PBNavigationImageView::mouseMoveEvent(QMouseEvent* event) {
    event->accept();
    if (!_isDrag || !event->buttons().testFlag(Qt::LeftButton)) return;
    _target.tryMoveDrawAnchorToPoint(
        geometryNow().draggedDrawAnchor(_downDrawAnchor, _downPt, event->position()));
}

void PBNavigationImageView::mouseReleaseEvent(QMouseEvent* event) {
    event->accept();
    if (event->button() == Qt::LeftButton) endDrag();
}

void PBNavigationImageView::hideEvent(QHideEvent* event) {
    QWidget::hideEvent(event);
    endDrag();
}

void PBNavigationImageView::endDrag() {
    if (std::exchange(_isDrag, false)) _target.miniatureDragDidEnd();
}

void PBNavigationImageView::mouseDoubleClickEvent(QMouseEvent* event) {
    mousePressEvent(event);
}

NavigationView::NavigationView(NavigationTarget& target, QWidget* parent)
    : QWidget(parent), _imageView(new PBNavigationImageView(target, this)),
      _label(new QLabel(this)) {
    setFocusPolicy(Qt::NoFocus);
    setCursor(Qt::ArrowCursor);
    resize(panelSize);
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(panelPadding, panelPadding, panelPadding, panelPadding / 2);
    layout->setSpacing(panelPadding / 2);
    layout->addWidget(_imageView, 1);
    layout->addWidget(_label);
    _label->setAlignment(Qt::AlignCenter);
    QPalette white = _label->palette();
    white.setColor(QPalette::WindowText, Qt::white);
    _label->setPalette(white);
    QFont small = _label->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    _label->setFont(small);
    hide();
}

void NavigationView::setZoom(int percent) {
    _label->setText(QStringLiteral("%1%").arg(percent));
}

void NavigationView::pictureDidChange() {
    if (isVisible()) _imageView->update();
}

bool NavigationView::fits(const QSize& view) const {
    return view.width() >= 2 * panelSize.width() && view.height() >= 2 * panelSize.height();
}

void NavigationView::layOut(const QSize& view) {
    move(
        view.width() - panelSize.width() - panelMargin,
        view.height() - panelSize.height() - panelMargin);
}

void NavigationView::paintEvent(QPaintEvent* /*event*/) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(QColor(255, 255, 255, 40), 1));
    painter.setBrush(QColor(20, 20, 20, 190));
    painter.drawRoundedRect(
        QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), panelRadius, panelRadius);
}
