#pragma once

#include <QSizeF>

#include <limits>

namespace group {

/// Width times height, cut to a whole number; 0 for a size that is not one, the largest number for
/// one beyond it.
[[nodiscard]] inline quint64 pixelCount(QSizeF size) {
    // 2^64: the first double that no longer fits.
    constexpr double limit = 18446744073709551616.0;
    const double area = size.width() * size.height();
    if (!(area > 0)) return 0;
    return area >= limit ? std::numeric_limits<quint64>::max() : static_cast<quint64>(area);
}

} // namespace group
