#include "shell/groups/GroupItemDelegate.h"

#include "platform/program/HarmlessText.h"
#include "shell/groups/GroupTreeModel.h"
#include "ui/GroupIcons.h"
#include "ui/PBOutlineView.h"
#include "ui/PBThemes.h"

#include <QLocale>
#include <QPainter>

#include <algorithm>

namespace {

// All in points.
constexpr int margin = 4;
constexpr int endMargin = 10;
constexpr int iconSide = 16;
constexpr int iconGap = 6;
constexpr int badgeHeight = 14;
constexpr int badgePadding = 6;
constexpr int badgeGap = 8;
constexpr int smallestName = 40;
constexpr qreal badgeTextSize = 0.82; // of the row's

QFont badgeFont(QFont font) {
    font.setPointSizeF(font.pointSizeF() * badgeTextSize);
    font.setWeight(QFont::DemiBold);
    return font;
}

struct BadgeColors {
    QColor fill;
    QColor text;
};

BadgeColors badgeColors(bool isOnAccent) {
    const PBThemes::Colors& colors = PBThemes::colors();
    if (isOnAccent) return {QColor(255, 255, 255, 235), colors.accent.darker(140)};
    QColor fill = colors.text;
    fill.setAlphaF(PBThemes::scheme() == PBThemes::Scheme::Dark ? 0.14F : 0.09F);
    QColor text = colors.text;
    text.setAlphaF(0.78F);
    return {fill, text};
}

/// Draws the number at the row's end and answers where it begins.
int drawBadge(
    QPainter& painter, const QRect& content, const QFont& rowFont, qulonglong count,
    bool isOnAccent) {
    const QString number = QLocale().toString(count);
    const QFont font = badgeFont(rowFont);
    const int textWidth = QFontMetrics(font).horizontalAdvance(number);
    const int width = std::max(badgeHeight + 4, textWidth + 2 * badgePadding);
    const QRect badge(
        content.right() + 1 - width, content.top() + (content.height() - badgeHeight) / 2, width,
        badgeHeight);
    if (badge.left() < content.left() + smallestName) return content.right() + 1;
    const BadgeColors colors = badgeColors(isOnAccent);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colors.fill);
    painter.drawRoundedRect(badge, badgeHeight / 2.0, badgeHeight / 2.0);
    painter.setFont(font);
    painter.setPen(colors.text);
    painter.drawText(badge, Qt::AlignCenter | Qt::TextSingleLine, number);
    return badge.left() - badgeGap;
}

} // namespace

QSize GroupItemDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex&) const {
    return {80, rowHeight};
}

void GroupItemDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const bool isOnAccent =
        option.state.testFlag(QStyle::State_Selected) && PBOutlineView::hasKeyboard(option.widget);
    const bool isUnspecified = index.data(GroupTreeModel::UnspecifiedRole).toBool();
    QRect content = option.rect.adjusted(margin, 0, -endMargin, 0);

    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    const auto icon = index.data(GroupTreeModel::IconRole).value<group::IconName>();
    const QRect place(
        content.left(), content.top() + (content.height() - iconSide) / 2, iconSide, iconSide);
    Icons::ofGroup(icon).paint(
        painter, place, Qt::AlignCenter, isOnAccent ? QIcon::Selected : QIcon::Normal);
    content.setLeft(place.right() + 1 + iconGap);
    content.setRight(
        drawBadge(
            *painter, content, option.font, index.data(GroupTreeModel::CountRole).toULongLong(),
            isOnAccent) -
        1);

    QFont font = option.font;
    font.setItalic(isUnspecified);
    painter->setFont(font);
    painter->setPen(isOnAccent ? QColor(Qt::white) : PBThemes::colors().text);
    const QString name = QFontMetrics(font).elidedText(
        platform::harmlessText(index.data(Qt::DisplayRole).toString().simplified()), Qt::ElideRight,
        content.width());
    painter->drawText(content, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, name);
    painter->restore();
}
