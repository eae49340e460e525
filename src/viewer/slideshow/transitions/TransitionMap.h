#pragma once

#include "viewer/slideshow/transitions/TransitionStyle.h"

#include <QImage>
#include <QSize>

#include <cstdint>
#include <memory>
#include <vector>

/// One value for each pixel of a view, 0 to 65535, in rows from the top: when a pixel changes over
/// (`Disintegrate`, `Dissolve`, `Mod`), how bright a ray of light is there (`Flash`).
struct TransitionMap {
    QSize size;
    std::vector<std::uint16_t> values;

    [[nodiscard]] const std::uint16_t* row(int y) const {
        return values.data() + static_cast<std::size_t>(y) * static_cast<std::size_t>(size.width());
    }
};

/// The map of a style on a view of that size, in device pixels; nullptr for styles without one, and
/// for an empty size. Costs some tens of milliseconds for a large screen. Any thread.
[[nodiscard]] std::shared_ptr<const TransitionMap>
makeTransitionMap(TransitionStyle style, const QSize& size);

/// The picture "transitionmask": clouds, that of `Disintegrate`. 8-bit grey. Any thread.
[[nodiscard]] const QImage& transitionMaskImage();
/// The picture "restrictedshine": what lies over a surface that leans to the right by -1 to 1 from
/// its left to its right edge, and down likewise. Clear in the middle. ARGB32. Any thread.
[[nodiscard]] const QImage& restrictedShineImage();
