#include "shell/sidebar/SourceItemDelegate.h"

#include "platform/program/HarmlessText.h"
#include "shell/sidebar/SourceTreeModel.h"
#include "ui/Icons.h"
#include "ui/PBOutlineView.h"
#include "ui/PBThemes.h"

#include <QPainter>

namespace {

constexpr int margin = 4;
constexpr qreal unmountedOpacity = 0.5;

QFont scaled(QFont font, qreal factor, QFont::Weight weight) {
    font.setPointSizeF(font.pointSizeF() * factor);
    font.setWeight(weight);
    return font;
}

/// Draws the text in one line and answers nothing of it that doesn't fit; a place loses its middle,
/// so that both the disk and the folder stay readable.
void drawLine(
    QPainter& painter, const QRect& line, const QFont& font, const QColor& color,
    const QString& text, Qt::TextElideMode elide) {
    painter.setFont(font);
    painter.setPen(color);
    const QString shown = QFontMetrics(font).elidedText(text, elide, line.width());
    painter.drawText(line, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, shown);
}

void drawIcons(
    QPainter& painter, const QRect& place, const QStringList& names, const QColor& color) {
    const qreal ratio = painter.device()->devicePixelRatioF();
    for (qsizetype i = 0; i < names.size(); ++i) {
        QRect at = place;
        if (i > 0) at.setTopLeft(at.topLeft() + QPoint(at.width() / 2, at.height() / 2));
        painter.drawPixmap(at, Icons::pixmap(names[i], at.size(), ratio, color));
    }
}

} // namespace

QSize SourceItemDelegate::sizeHint(const QStyleOptionViewItem&, const QModelIndex& index) const {
    return {80, index.data(SourceTreeModel::HeightRole).toInt()};
}

void SourceItemDelegate::paint(
    QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    const PBThemes::Colors& colors = PBThemes::colors();
    const bool isSelected = option.state.testFlag(QStyle::State_Selected);
    const bool isUnmounted = index.data(SourceTreeModel::UnmountedRole).toBool();
    const QString name = platform::harmlessText(index.data(Qt::DisplayRole).toString());
    const QString description = index.data(SourceTreeModel::DescriptionRole).toString();
    QRect content = option.rect.adjusted(margin, 0, -2 * margin, 0);

    painter->save();
    if (index.data(SourceTreeModel::GroupRole).toBool()) {
        drawLine(
            *painter, content, scaled(option.font, 0.88, QFont::DemiBold), colors.secondaryText,
            name, Qt::ElideRight);
        painter->restore();
        return;
    }
    const bool isOnAccent = isSelected && PBOutlineView::hasKeyboard(option.widget);
    const QColor text = isOnAccent ? QColor(Qt::white) : colors.text;
    const QColor secondary = isOnAccent ? QColor(255, 255, 255, 235) : colors.secondaryText;
    if (isUnmounted && !isOnAccent) painter->setOpacity(unmountedOpacity);

    const int side = description.isEmpty() ? 16 : 24;
    const QRect icon(content.left(), content.center().y() - side / 2 + 1, side, side);
    drawIcons(
        *painter, icon, index.data(SourceTreeModel::IconsRole).toStringList(),
        isOnAccent ? QColor(Qt::white) : colors.icon);
    content.setLeft(icon.right() + 1 + margin + 2);
    if (description.isEmpty()) {
        drawLine(*painter, content, option.font, text, name, Qt::ElideRight);
    } else {
        QRect upper = content.adjusted(0, 1, 0, -content.height() / 2);
        QRect lower = content.adjusted(0, content.height() / 2, 0, -2);
        drawLine(
            *painter, upper, scaled(option.font, 0.92, QFont::Bold), text, name, Qt::ElideRight);
        painter->setOpacity(1); // it says what can be done
        drawLine(
            *painter, lower, scaled(option.font, 0.8, QFont::Normal), secondary, description,
            Qt::ElideMiddle);
    }
    painter->restore();
}
