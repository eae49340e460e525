#pragma once

#include "browser/layout/BrowserMetrics.h"

#include <cmath>
#include <optional>

/// The first row of a view from which on a step of scrolling by `distance` points moves what is
/// drawn already, so that only a strip has to be painted; none where all has to be. Rows are points
/// below the view's top, which stands `top` points below that of its window, at `pixelRatio` pixels
/// a point. It lies below the sticky head, under which something else lies after each step, and
/// both the step and the row's place in the window are whole numbers of pixels. Any thread.
[[nodiscard]] inline std::optional<int>
firstMovableRow(double distance, double pixelRatio, int top, int height) {
    const auto isWhole = [](double number) { return number == std::floor(number); };
    if (!isWhole(distance) || !isWhole(distance * pixelRatio)) return std::nullopt;
    constexpr auto head = static_cast<int>(BrowserMetrics::headHeight);
    for (int row = head; row < 2 * head; ++row) {
        if (!isWhole((top + row) * pixelRatio)) continue;
        if (std::abs(distance) >= height - row) break;
        return row;
    }
    return std::nullopt;
}
