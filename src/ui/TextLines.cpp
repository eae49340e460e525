#include "ui/TextLines.h"

#include "core/Texts.h"
#include "platform/work/MainThread.h"

#include <QPainter>

#include <cmath>
#include <memory>

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
    return _metrics.horizontalAdvance(PBUtilities::removeNewline(text));
}

const TextLines::Line& TextLines::line(const QString& text, double room) const {
    const Key key{text, static_cast<int>(room)};
    if (const Line* known = _lines.object(key)) return *known;
    auto line = std::make_unique<Line>();
    const QString shown =
        _metrics.elidedText(PBUtilities::removeNewline(text), Qt::ElideMiddle, key.room);
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
    const Line& shown = line(text, rect.width());
    const double x = rect.x() + (rect.width() - shown.width) / 2;
    const double y = rect.y() + (rect.height() - _metrics.height()) / 2;
    painter.drawStaticText(QPointF(std::rint(x), std::rint(y)), shown.text);
}

double TextLines::drawLeading(QPainter& painter, const QRectF& rect, const QString& text) const {
    const Line& shown = line(text, rect.width());
    const double y = rect.y() + (rect.height() - _metrics.height()) / 2;
    painter.drawStaticText(QPointF(rect.x(), std::rint(y)), shown.text);
    return shown.width;
}
