#include "image/StandIn.h"

#include "codec/pixels/Rounding.h"

#include <QRect>

#include <algorithm>
#include <cmath>

namespace {

/// Sides of small pictures are rounded to whole pixels, and often to multiples of 8.
constexpr double shapeTolerance = 0.03;
/// Bars come out of a compression that blurs them.
constexpr int darkest = 48;

bool isSameShape(const QSizeF& size, const QSizeF& other) {
    const double ratio = (size.width() / size.height()) / (other.width() / other.height());
    return std::abs(ratio - 1) <= shapeTolerance;
}

bool isDark(const QImage& image, const QRect& part) {
    for (int y = part.top(); y <= part.bottom(); ++y)
        for (int x = part.left(); x <= part.right(); ++x) {
            const QRgb pixel = image.pixel(x, y);
            if (std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)}) > darkest) return false;
        }
    return true;
}

/// The largest part of the photograph's shape in the middle, on whole pixels.
QRect middlePart(const QSize& size, const QSizeF& photograph) {
    const double scale =
        std::min(size.width() / photograph.width(), size.height() / photograph.height());
    const QSize part(
        std::max(1, codec::rounded<int>(photograph.width() * scale)),
        std::max(1, codec::rounded<int>(photograph.height() * scale)));
    const QSize inside = part.boundedTo(size);
    return {
        QPoint((size.width() - inside.width()) / 2, (size.height() - inside.height()) / 2), inside};
}

} // namespace

QImage standInFor(const QImage& embedded, const QSizeF& photograph) {
    if (embedded.isNull() || photograph.isEmpty()) return embedded;
    if (isSameShape(embedded.size(), photograph)) return embedded;
    const QRect part = middlePart(embedded.size(), photograph);
    const QRect all = embedded.rect();
    const bool hasBars = part.width() == all.width()
                             ? isDark(embedded, {0, 0, all.width(), part.top()}) &&
                                   isDark(embedded, all.adjusted(0, part.bottom() + 1, 0, 0))
                             : isDark(embedded, {0, 0, part.left(), all.height()}) &&
                                   isDark(embedded, all.adjusted(part.right() + 1, 0, 0, 0));
    if (!hasBars) return {};
    // The lines next to the bars are half dark.
    const QRect clear =
        part.width() == all.width() ? part.adjusted(0, 1, 0, -1) : part.adjusted(1, 0, -1, 0);
    return clear.isEmpty() ? QImage() : embedded.copy(clear);
}
