#include "ui/TextLines.h"

#include "core/Texts.h"
#include "platform/program/HarmlessText.h"
#include "platform/tasks/MainThread.h"

#include <QPainter>

#include <algorithm>
#include <cmath>
#include <memory>

namespace {

/// Longer ones are part of the name.
constexpr qsizetype longestEnding = 6; // with its dot
/// What is kept of a name that ends with no number.
constexpr qsizetype shortestTail = 4;
/// Fewer letters of the start say nothing.
constexpr qsizetype shortestStart = 3;
constexpr qsizetype noFileName = -1;
constexpr QChar ellipsis(0x2026);

QString shownText(const QString& text) {
    return platform::harmlessText(PBUtilities::removeNewline(text));
}

/// Where what has to be kept begins: at a whole number, and at no half of a letter.
qsizetype startOfTail(const QString& base, qsizetype differsFrom) {
    qsizetype start = std::min(differsFrom, base.size());
    if (start == 0 || start == base.size()) start = base.size();
    while (start > 0 && base[start - 1].isDigit())
        --start;
    if (start == base.size()) start = std::max<qsizetype>(0, start - shortestTail);
    while (start > 0 && (base[start].isLowSurrogate() || base[start].isMark()))
        --start;
    return start;
}

} // namespace

QString shortenedFileName(
    const QString& name, qsizetype differsFrom, const QFontMetricsF& metrics, double room) {
    if (metrics.horizontalAdvance(name) <= room) return name;
    const qsizetype dot = name.lastIndexOf(u'.');
    const bool hasEnding = dot > 0 && name.size() - dot <= longestEnding;
    const QString base = hasEnding ? name.left(dot) : name;
    const qsizetype tail = startOfTail(base, differsFrom);
    const QString start = metrics.elidedText(
        base.left(tail), Qt::ElideRight, room - metrics.horizontalAdvance(name.mid(tail)));
    if (start.size() > std::min(shortestStart, tail)) return start + name.mid(tail);
    // The ending tells least.
    if (hasEnding && metrics.horizontalAdvance(base + ellipsis) <= room) return base + ellipsis;
    if (metrics.horizontalAdvance(ellipsis + base.mid(tail)) <= room)
        return metrics.elidedText(
            base, Qt::ElideLeft, std::min(room, metrics.horizontalAdvance(base) - 1));
    return metrics.elidedText(tail > 0 ? ellipsis + base.mid(tail) : name, Qt::ElideMiddle, room);
}

TextLines::TextLines(const QFont& font) : _font(font), _metrics(font) {
    platform::assertMainThread();
}

void TextLines::setFont(const QFont& font) {
    platform::assertMainThread();
    _font = font;
    _metrics = QFontMetricsF(font);
    _lines.clear();
}

double TextLines::width(const QString& text) const {
    return _metrics.horizontalAdvance(shownText(text));
}

const TextLines::Line&
TextLines::line(const QString& text, double room, qsizetype differsFrom) const {
    const Key key{text, static_cast<int>(room), differsFrom};
    if (const Line* known = _lines.object(key)) return *known;
    auto line = std::make_unique<Line>();
    const QString shown = differsFrom == noFileName
                              ? _metrics.elidedText(shownText(text), Qt::ElideMiddle, key.room)
                              : shortenedFileName(shownText(text), differsFrom, _metrics, key.room);
    line->width = _metrics.horizontalAdvance(shown);
    line->text.setText(shown);
    line->text.setTextFormat(Qt::PlainText);
    line->text.setPerformanceHint(QStaticText::AggressiveCaching);
    line->text.prepare({}, _font);
    Line* kept = line.get();
    _lines.insert(key, line.release()); // the cache owns it
    return *kept;
}

void TextLines::drawCentred(QPainter& painter, const QRectF& rect, const QString& text) const {
    drawCentred(painter, rect, line(text, rect.width(), noFileName));
}

void TextLines::drawCentredFileName(
    QPainter& painter, const QRectF& rect, const QString& name, qsizetype differsFrom) const {
    drawCentred(painter, rect, line(name, rect.width(), differsFrom));
}

void TextLines::drawCentred(QPainter& painter, const QRectF& rect, const Line& shown) const {
    const double x = rect.x() + (rect.width() - shown.width) / 2;
    const double y = rect.y() + (rect.height() - _metrics.height()) / 2;
    painter.drawStaticText(QPointF(std::rint(x), std::rint(y)), shown.text);
}

double TextLines::drawLeading(QPainter& painter, const QRectF& rect, const QString& text) const {
    const Line& shown = line(text, rect.width(), noFileName);
    const double y = rect.y() + (rect.height() - _metrics.height()) / 2;
    painter.drawStaticText(QPointF(rect.x(), std::rint(y)), shown.text);
    return shown.width;
}
