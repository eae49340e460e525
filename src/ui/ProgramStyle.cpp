#include "ui/ProgramStyle.h"

#include "ui/PBThemes.h"

#include <QPainter>
#include <QStyleOptionSlider>

#include <algorithm>

namespace {

// All in points.
constexpr int slotWidth = 13;
constexpr int knobMargin = 3;
constexpr int shortestKnob = 36;

/// Start and length of the knob along the slot.
std::pair<int, int> knob(const QStyleOptionSlider& option, int slotLength) {
    const qint64 range = qint64{option.maximum} - option.minimum;
    if (range <= 0) return {0, slotLength};
    const qint64 shown = slotLength * qint64{option.pageStep} / (range + option.pageStep);
    const int length =
        static_cast<int>(std::clamp<qint64>(shown, std::min(shortestKnob, slotLength), slotLength));
    const int start = QStyle::sliderPositionFromValue(
        option.minimum, option.maximum, option.sliderPosition, slotLength - length,
        option.upsideDown);
    return {start, length};
}

} // namespace

ProgramStyle::ProgramStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void ProgramStyle::drawPrimitive(
    PrimitiveElement element, const QStyleOption* option, QPainter* painter,
    const QWidget* widget) const {
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    if (element != PE_IndicatorCheckBox || PBThemes::scheme() != PBThemes::Scheme::Dark) return;
    QColor frame = PBThemes::colors().secondaryText;
    frame.setAlphaF(option->state.testFlag(State_Enabled) ? 0.8F : 0.4F);
    painter->save();
    painter->setPen(frame);
    painter->setBrush(Qt::NoBrush);
    painter->drawRect(QRectF(option->rect).adjusted(0.5, 0.5, -0.5, -0.5));
    painter->restore();
}

QRect ProgramStyle::subControlRect(
    ComplexControl control, const QStyleOptionComplex* option, SubControl part,
    const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || !slider)
        return QProxyStyle::subControlRect(control, option, part, widget);
    const bool isHorizontal = slider->orientation == Qt::Horizontal;
    const QRect slot = slider->rect;
    const int slotLength = isHorizontal ? slot.width() : slot.height();
    const auto [start, length] = knob(*slider, slotLength);
    const auto along = [&](int from, int to) {
        const QRect rect = isHorizontal
                               ? QRect(slot.left() + from, slot.top(), to - from, slot.height())
                               : QRect(slot.left(), slot.top() + from, slot.width(), to - from);
        return visualRect(slider->direction, slot, rect);
    };
    switch (part) {
    case SC_ScrollBarGroove:
        return slot;
    case SC_ScrollBarSlider:
        return along(start, start + length);
    case SC_ScrollBarSubPage:
        return along(0, start);
    case SC_ScrollBarAddPage:
        return along(start + length, slotLength);
    default:
        return {}; // no buttons
    }
}

void ProgramStyle::drawControl(
    ControlElement element, const QStyleOption* option, QPainter* painter,
    const QWidget* widget) const {
    const auto* entry = qstyleoption_cast<const QStyleOptionMenuItem*>(option);
    const bool isHighlighted = entry && entry->state.testFlag(State_Selected) &&
                               entry->state.testFlag(State_Enabled) && !entry->icon.isNull();
    if (element != CE_MenuItem || !isHighlighted)
        return QProxyStyle::drawControl(element, option, painter, widget);
    QStyleOptionMenuItem own = *entry;
    const int side = proxy()->pixelMetric(PM_SmallIconSize, option, widget);
    own.icon = QIcon(entry->icon.pixmap(
        QSize(side, side), painter->device()->devicePixelRatioF(), QIcon::Selected));
    QProxyStyle::drawControl(element, &own, painter, widget);
}

void ProgramStyle::drawComplexControl(
    ComplexControl control, const QStyleOptionComplex* option, QPainter* painter,
    const QWidget* widget) const {
    const auto* slider = qstyleoption_cast<const QStyleOptionSlider*>(option);
    if (control != CC_ScrollBar || !slider)
        return QProxyStyle::drawComplexControl(control, option, painter, widget);
    const PBThemes::Colors& colors = PBThemes::colors();
    painter->fillRect(slider->rect, colors.bar);
    if (!slider->state.testFlag(State_Enabled) || slider->maximum <= slider->minimum) return;

    const bool isOnKnob = (slider->activeSubControls & SC_ScrollBarSlider) != 0;
    QColor color = colors.secondaryText;
    color.setAlphaF(0.5F);
    if (isOnKnob && slider->state.testFlag(State_MouseOver)) color.setAlphaF(0.7F);
    if (isOnKnob && slider->state.testFlag(State_Sunken)) color.setAlphaF(0.9F);
    const QRectF rect = QRectF(subControlRect(control, option, SC_ScrollBarSlider, widget))
                            .adjusted(knobMargin, knobMargin, -knobMargin, -knobMargin);
    const double radius = std::min(rect.width(), rect.height()) / 2;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(color);
    painter->drawRoundedRect(rect, radius, radius);
    painter->restore();
}

int ProgramStyle::pixelMetric(
    PixelMetric metric, const QStyleOption* option, const QWidget* widget) const {
    if (metric == PM_ScrollBarExtent) return slotWidth;
    if (metric == PM_ScrollBarSliderMin) return shortestKnob;
    return QProxyStyle::pixelMetric(metric, option, widget);
}

int ProgramStyle::styleHint(
    StyleHint hint, const QStyleOption* option, const QWidget* widget,
    QStyleHintReturn* returned) const {
    // The toolkit's pictures of buttons are made for light grounds, and ours have none.
    if (hint == SH_EtchDisabledText || hint == SH_DialogButtonBox_ButtonsHaveIcons) return 0;
    return QProxyStyle::styleHint(hint, option, widget, returned);
}
