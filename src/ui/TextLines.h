#pragma once

#include <QCache>
#include <QFont>
#include <QFontMetricsF>
#include <QHash>
#include <QStaticText>
#include <QString>

class QPainter;
class QRectF;

/// A name of a file in the room that there is. Kept of it is what tells it from its neighbours,
/// from the position `differsFrom` on or, where that is 0, its last number; then the ending, and
/// least of all the start.
[[nodiscard]] QString shortenedFileName(
    const QString& name, qsizetype differsFrom, const QFontMetricsF& metrics, double room);

/// Single lines of text in one font, shortened in the middle where they are too long, and kept laid
/// out from one paint to the next. Characters that would turn the direction of a text are shown as
/// unknown ones. Main thread.
class TextLines {
public:
    explicit TextLines(const QFont& font);

    [[nodiscard]] const QFont& font() const { return _font; }
    void setFont(const QFont& font);
    /// How many lines are kept; more than are on show at once.
    void setCapacity(qsizetype lines) { _lines.setMaxCost(lines); }
    /// The width of the whole text, in points.
    [[nodiscard]] double width(const QString& text) const;
    [[nodiscard]] double height() const { return _metrics.height(); }
    /// Draws in the painter's pen and this font, centred in the rectangle or from its leading edge.
    void drawCentred(QPainter& painter, const QRectF& rect, const QString& text) const;
    /// The same for the name of a file, as `shortenedFileName` has it.
    void drawCentredFileName(
        QPainter& painter, const QRectF& rect, const QString& name, qsizetype differsFrom) const;
    /// Answers the width that was taken.
    double drawLeading(QPainter& painter, const QRectF& rect, const QString& text) const;

private:
    struct Line {
        QStaticText text;
        double width = 0;
    };
    struct Key {
        QString text;
        int room;
        qsizetype differsFrom; // -1 for what is no name of a file
        friend bool operator==(const Key&, const Key&) = default;
        friend size_t qHash(const Key& key, size_t seed) {
            return qHashMulti(seed, key.text, key.room, key.differsFrom);
        }
    };
    [[nodiscard]] const Line& line(const QString& text, double room, qsizetype differsFrom) const;
    void drawCentred(QPainter& painter, const QRectF& rect, const Line& shown) const;

    QFont _font;
    QFontMetricsF _metrics;
    mutable QCache<Key, Line> _lines{500};
};
