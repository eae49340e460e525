#include "ui/DropTip.h"

#include "platform/program/LocalizedTexts.h"
#include "ui/Icons.h"
#include "ui/PBThemes.h"

#include <QPainter>

DropTip::DropTip(const QString& icon, const QString& textKey, QWidget* parent)
    : QWidget(parent), _icon(icon), _textKey(textKey) {
    setAttribute(Qt::WA_TransparentForMouseEvents);
    hide();
}

void DropTip::paintEvent(QPaintEvent*) {
    const PBThemes::Colors& colors = PBThemes::colors();
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    QColor veil = colors.browser;
    veil.setAlphaF(0.9F);
    painter.fillRect(rect(), veil);
    painter.setPen(QPen(colors.accent, 2, Qt::DashLine, Qt::RoundCap));
    painter.drawRoundedRect(QRectF(rect()).adjusted(14, 14, -14, -14), 12, 12);

    constexpr QSize iconSize(48, 48);
    const QRect icon(
        QPoint(width() / 2 - iconSize.width() / 2, height() / 2 - iconSize.height()), iconSize);
    painter.drawPixmap(icon, Icons::pixmap(_icon, iconSize, devicePixelRatioF(), colors.accent));
    QFont large = font();
    large.setPointSizeF(large.pointSizeF() * 1.25);
    painter.setFont(large);
    painter.setPen(colors.text);
    painter.drawText(
        QRect(0, icon.bottom() + 10, width(), 40), Qt::AlignHCenter | Qt::AlignTop,
        platform::localizedString(_textKey));
}
