#pragma once

#include <algorithm>

#include <QtGlobal>

/// How one picture of a slideshow gives way to the next, by the number in the settings.
enum class TransitionStyle : int {
    Fade = 0,         ///< one shines through the other
    MoveIn = 1,       ///< the new one slides over the old one from the left
    Push = 2,         ///< the new one pushes the old one out to the right
    Reveal = 3,       ///< the old one slides off to the right
    CopyMachine = 4,  ///< a bar of light passes over, and leaves the new one behind it
    Disintegrate = 5, ///< the old one falls into clouds, whose shadows lie on the new one
    Dissolve = 6,     ///< the old one falls into grains
    Flash = 7,        ///< a flash of light with rays
    Mod = 8,          ///< holes in a turned grid grow together
    PageCurl = 9,     ///< the old one is turned over like a page, from the lower right corner
    Ripple = 10,      ///< a ring of water runs outwards from the middle
    Swipe = 11        ///< a soft edge passes over from the right
};

inline constexpr int transitionStyleCount = 12;

/// The style of a number, the nearest where there is none of it.
[[nodiscard]] constexpr TransitionStyle transitionStyleOf(qint64 number) {
    return static_cast<TransitionStyle>(
        std::clamp<qint64>(number, 0, qint64{transitionStyleCount} - 1));
}
