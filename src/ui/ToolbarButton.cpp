#include "ui/ToolbarButton.h"

#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QAction>
#include <QHBoxLayout>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr QSize buttonSize(36, 28);
constexpr int arrowWidth = 11;
constexpr int iconSide = 16;
constexpr double cornerRadius = 6;

QColor withAlpha(QColor color, double alpha) {
    color.setAlphaF(static_cast<float>(alpha));
    return color;
}

} // namespace

ToolbarButton::ToolbarButton(QAction* action, QWidget* parent) : QToolButton(parent) {
    setDefaultAction(action);
    setIconSize(QSize(iconSide, iconSide));
    setFocusPolicy(Qt::TabFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
}

void ToolbarButton::setPlace(Place place) {
    _place = place;
    update();
}

void ToolbarButton::setHasArrow() {
    _hasArrow = true;
    updateGeometry();
}

QSize ToolbarButton::sizeHint() const {
    return _hasArrow ? buttonSize + QSize(arrowWidth, 0) : buttonSize;
}

QPainterPath ToolbarButton::outline() const {
    // Neighbours share a line: it is drawn by the one at the right.
    const bool isOpenLeft = _place == Place::Middle || _place == Place::Last;
    const bool isOpenRight = _place == Place::First || _place == Place::Middle;
    QRectF frame = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    if (isOpenRight) frame.setRight(frame.right() + 0.5 + cornerRadius);
    if (isOpenLeft) frame.setLeft(frame.left() - cornerRadius);
    QPainterPath path;
    path.addRoundedRect(frame, cornerRadius, cornerRadius);
    return path;
}

QColor ToolbarButton::fillColor() const {
    const PBThemes::Colors& colors = PBThemes::colors();
    if (!isEnabled()) return withAlpha(palette().color(QPalette::Button), 0.5);
    if (isDown()) return withAlpha(colors.icon, 0.28);
    if (isChecked()) return withAlpha(colors.accent, underMouse() ? 0.26 : 0.18);
    return underMouse() ? palette().color(QPalette::Midlight) : palette().color(QPalette::Button);
}

void ToolbarButton::paintEvent(QPaintEvent*) {
    const PBThemes::Colors& colors = PBThemes::colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(outline(), fillColor());
    painter.setPen(QPen(isChecked() ? withAlpha(colors.accent, 0.6) : colors.separator, 1));
    painter.drawPath(outline());
    if (_place == Place::Middle || _place == Place::Last) {
        painter.setPen(QPen(colors.separator, 1));
        painter.drawLine(QPointF(0.5, 1), QPointF(0.5, height() - 1));
    }
    if (hasFocus()) {
        painter.setPen(QPen(withAlpha(colors.accent, 0.8), 1.5));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(
            QRectF(rect()).adjusted(2.5, 2.5, -2.5, -2.5), cornerRadius - 2, cornerRadius - 2);
    }

    QRect place = rect();
    if (_hasArrow) place.setWidth(place.width() - arrowWidth);
    const QRect iconRect(
        place.x() + (place.width() - iconSide) / 2, place.y() + (place.height() - iconSide) / 2,
        iconSide, iconSide);
    const QIcon::Mode mode = isEnabled() ? QIcon::Normal : QIcon::Disabled;
    painter.drawPixmap(iconRect, icon().pixmap(iconSize(), devicePixelRatioF(), mode));
    if (!_hasArrow) return;
    painter.setPen(QPen(
        withAlpha(colors.icon, isEnabled() ? 0.9 : 0.4), 1.2, Qt::SolidLine, Qt::RoundCap,
        Qt::RoundJoin));
    const QPointF tip(iconRect.right() + 8.5, height() / 2.0 + 1.5);
    painter.drawPolyline(QPolygonF({tip + QPointF(-3, -3), tip, tip + QPointF(3, -3)}));
}

SegmentedControl::SegmentedControl(const std::vector<QAction*>& segments, QWidget* parent)
    : QWidget(parent) {
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(0);
    for (QAction* action : segments) {
        auto* button = new ToolbarButton(action, this);
        using Place = ToolbarButton::Place;
        button->setPlace(
            segments.size() == 1         ? Place::Only
            : action == segments.front() ? Place::First
            : action == segments.back()  ? Place::Last
                                         : Place::Middle);
        layout->addWidget(button);
    }
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
}
