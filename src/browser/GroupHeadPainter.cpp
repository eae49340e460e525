#include "browser/GroupHeadPainter.h"

#include "ui/GroupIcons.h"
#include "ui/PBThemes.h"

#include <QApplication>
#include <QIcon>
#include <QPainter>
#include <QStyle>

#include <algorithm>
#include <cmath>

namespace {

constexpr double leftMargin = 8;
constexpr double iconSize = 16;
constexpr double iconGap = 5;
constexpr double separatorRoom = 18;
/// Of the head's width, for a step that is kept narrow.
constexpr double narrowShare = 0.6;

QFont headFont(QFont::Weight weight) {
    QFont font = QApplication::font();
    font.setPixelSize(12);
    font.setWeight(weight);
    return font;
}

void drawSeparator(QPainter& painter, const QPointF& centre) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(PBThemes::colors().secondaryText, 1.2, Qt::SolidLine, Qt::RoundCap));
    const QPointF points[] = {
        centre + QPointF(-1.5, -3), centre + QPointF(1.5, 0), centre + QPointF(-1.5, 3)};
    painter.drawPolyline(points, 3);
    painter.restore();
}

} // namespace

GroupHeadPainter::GroupHeadPainter(TagLookup tagWithTagId)
    : _tagWithTagId(std::move(tagWithTagId)), _lines(headFont(QFont::Normal)),
      _innermost(headFont(QFont::DemiBold)) {}

const GroupHeadPainter::Path& GroupHeadPainter::path(const BrowserLeafList::Leaf& leaf) const {
    const auto known = _paths.constFind(leaf.data.get());
    if (known != _paths.constEnd()) return *known;
    Path steps;
    for (const PBGroupItem* node = leaf.data->groupItem(); node; node = node->parent())
        steps.push_back(
            {node->fullDisplayName(_tagWithTagId), node->displayIcon(), node->type() == 5,
             node->isUnspecified()});
    std::ranges::reverse(steps);
    return *_paths.insert(leaf.data.get(), std::move(steps));
}

QString GroupHeadPainter::text(const BrowserLeafList::Leaf& leaf) const {
    QStringList names;
    for (const Step& step : path(leaf))
        names.append(step.name);
    return names.join(QStringLiteral(", "));
}

double GroupHeadPainter::drawIcon(
    QPainter& painter, const QRectF& rect, const group::IconName& icon) const {
    if (icon.kind == group::IconName::Kind::None) return 0;
    // Reading a symbol costs more than drawing the rest of the head.
    const auto key = qMakePair(static_cast<int>(icon.kind), icon.name);
    auto known = _icons.constFind(key);
    if (known == _icons.constEnd()) known = _icons.insert(key, Icons::ofGroup(icon));
    if (known->isNull()) return 0;
    const double top = rect.top() + std::rint((rect.height() - iconSize) / 2);
    known->paint(&painter, QRectF(rect.left(), top, iconSize, iconSize).toRect());
    return iconSize + iconGap;
}

void GroupHeadPainter::draw(
    QPainter& painter, const QRectF& rect, const BrowserLeafList::Leaf& leaf, bool hasTopLine) {
    const PBThemes::Colors& colors = PBThemes::colors();
    painter.fillRect(rect, colors.groupHead);
    painter.fillRect(QRectF(rect.left(), rect.bottom() - 1, rect.width(), 1), colors.separator);
    if (hasTopLine)
        painter.fillRect(QRectF(rect.left(), rect.top(), rect.width(), 1), colors.separator);

    const Path& steps = path(leaf);
    double x = rect.left() + leftMargin;
    for (std::size_t index = 0; index < steps.size(); ++index) {
        const Step& step = steps[index];
        const bool isLast = index + 1 == steps.size();
        if (index > 0) {
            drawSeparator(painter, {x + separatorRoom / 2 - 2, rect.center().y()});
            x += separatorRoom;
        }
        const double room = rect.right() - x;
        if (room < 2 * iconSize) break;
        x += drawIcon(painter, {x, rect.top(), room, rect.height() - 1}, step.icon);
        const TextLines& lines = isLast ? _innermost : _lines;
        painter.setFont(lines.font());
        painter.setPen(isLast && !step.isUnspecified ? colors.text : colors.secondaryText);
        double textRoom = std::max(0.0, rect.right() - leftMargin - x);
        if (step.isNarrow) textRoom = std::min(textRoom, std::rint(rect.width() * narrowShare));
        x += lines.drawLeading(painter, {x, rect.top(), textRoom, rect.height() - 1}, step.name);
        x += 4;
    }
}
