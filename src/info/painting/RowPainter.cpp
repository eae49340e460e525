#include "info/painting/RowPainter.h"

#include "core/Texts.h"
#include "platform/program/LocalizedTexts.h"
#include "ui/PBThemes.h"

#include <QFontMetrics>
#include <QPainter>
#include <QPen>

#include <algorithm>
#include <cmath>

namespace {

/// Of the usual font, so that texts have 11 points where it has 12.
constexpr double textSize = 0.92;
constexpr double emptyTextSize = 1.33;

constexpr int labelLeft = 7;
constexpr int valueLeft = 12;
constexpr int above = 3;   // the label
constexpr int between = 2; // label and value
constexpr int below = 4;   // the value

/// Longer texts, such as a maker's note, would be laid out for nothing.
constexpr qsizetype mostShown = 600;

QFont scaled(QFont font, double factor) {
    if (font.pointSizeF() > 0) {
        font.setPointSizeF(font.pointSizeF() * factor);
    } else {
        font.setPixelSize(static_cast<int>(font.pixelSize() * factor));
    }
    return font;
}

QFont bold(QFont font) {
    font.setBold(true);
    return font;
}

QFont italic(QFont font) {
    font.setItalic(true);
    return font;
}

QString shownLine(const QString& text) {
    if (text.size() <= mostShown) return PBUtilities::removeNewline(text).trimmed();
    const QString ends = text.left(mostShown / 2) + QChar(0x2026) + text.right(mostShown / 2);
    return PBUtilities::removeNewline(ends).trimmed();
}

QColor lineColor() {
    return PBThemes::scheme() == PBThemes::Scheme::Dark ? QColor(0x54585e) : QColor(0xa7a7a7);
}

} // namespace

RowMetrics::RowMetrics(const QFont& usualFont) : font(scaled(usualFont, textSize)) {
    textHeight = std::max(13, QFontMetrics(bold(font)).height() - 2);
    rowHeight = above + textHeight + between + textHeight + below;
}

QRect RowMetrics::rowRect(int row, int width) const {
    return {0, top(row), width, rowHeight};
}

QRect RowMetrics::labelRect(int row, int width) const {
    return {labelLeft, top(row) + above, std::max(0, width - 2 * labelLeft), textHeight};
}

QRect RowMetrics::valueRect(int row, int width) const {
    return {
        valueLeft, top(row) + above + textHeight + between,
        std::max(0, width - labelLeft - valueLeft), textHeight};
}

int RowMetrics::controlMiddle(int row) const {
    return top(row) + above + textHeight + 1;
}

RowPainter::RowPainter(const QFont& font)
    : _metrics(font), _labels(bold(_metrics.font)), _values(_metrics.font),
      _remarks(italic(_metrics.font)), _emptyText(bold(scaled(font, emptyTextSize))) {}

void RowPainter::setFont(const QFont& font) {
    _metrics = RowMetrics(font);
    _labels.setFont(bold(_metrics.font));
    _values.setFont(_metrics.font);
    _remarks.setFont(italic(_metrics.font));
    _emptyText.setFont(bold(scaled(font, emptyTextSize)));
}

int RowPainter::labelWidth(const QString& label) const {
    return static_cast<int>(std::ceil(_labels.width(label)));
}

const TextLines& RowPainter::linesOf(InfoRow::State state) const {
    const bool isPlain = state == InfoRow::State::Value || state == InfoRow::State::Missing;
    return isPlain ? _values : _remarks;
}

bool RowPainter::fits(const InfoRow& shown, int width) const {
    const QString value = shown.shownValue();
    if (value.size() > mostShown) return false;
    return _values.width(shownLine(value)) <= _metrics.valueRect(0, width).width();
}

void RowPainter::drawRow(
    QPainter& painter, int row, int width, const InfoRow& shown, Highlight highlight) const {
    const PBThemes::Colors& colors = PBThemes::colors();
    if (highlight != Highlight::None) {
        QColor ground = highlight == Highlight::Full ? colors.accent : colors.dimSelection;
        ground.setAlphaF(0.22F);
        painter.setPen(Qt::NoPen);
        painter.setBrush(ground);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.drawRoundedRect(
            QRectF(_metrics.rowRect(row, width)).adjusted(3, 1.5, -3, -1.5), 4, 4);
        painter.setRenderHint(QPainter::Antialiasing, false);
    }
    QRectF label = _metrics.labelRect(row, width);
    if (shown.control == InfoRow::Control::Beside) label.translate(0, _metrics.textHeight / 2.0);
    painter.setPen(colors.text);
    painter.setFont(_labels.font());
    _labels.drawLeading(painter, label, shown.label);
    if (shown.control != InfoRow::Control::None) return;
    const bool isRemark = shown.state != InfoRow::State::Value;
    painter.setPen(isRemark ? colors.secondaryText : colors.text);
    const TextLines& lines = linesOf(shown.state);
    painter.setFont(lines.font());
    lines.drawLeading(painter, _metrics.valueRect(row, width), shownLine(shown.shownValue()));
}

void RowPainter::drawLine(QPainter& painter, int row, int width) const {
    QPen pen(lineColor(), 1);
    pen.setCapStyle(Qt::FlatCap);
    pen.setDashPattern({5, 2});
    painter.setPen(pen);
    const double y = _metrics.top(row) - 0.5;
    painter.drawLine(QPointF(3, y), QPointF(width - 3, y));
}

void RowPainter::drawMixedMark(QPainter& painter, int row, int left, int width) const {
    constexpr int gap = 5;
    const QRectF room(
        left + gap, _metrics.controlMiddle(row) - _metrics.textHeight / 2.0,
        std::max(0, width - left - gap - labelLeft), _metrics.textHeight);
    painter.setPen(PBThemes::colors().secondaryText);
    painter.setFont(_remarks.font());
    _remarks.drawLeading(
        painter, room,
        platform::localizedFormat(u"MixedMark", {platform::localizedString(u"Multivalue")}));
}

void RowPainter::drawEmptyText(QPainter& painter, const QSize& page, const QString& text) const {
    constexpr int room = 28;
    painter.setFont(_emptyText.font());
    const QRectF rect(8, page.height() / 2 - 20, std::max(0, page.width() - 16), room);
    if (PBThemes::scheme() == PBThemes::Scheme::Light) {
        painter.setPen(Qt::white);
        _emptyText.drawCentred(painter, rect.translated(0, 1), text);
    }
    painter.setPen(PBThemes::colors().secondaryText);
    _emptyText.drawCentred(painter, rect, text);
}
