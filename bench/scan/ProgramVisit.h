#pragma once

#include "scan/PictureSets.h"

namespace bench {

/// One run of the program, without a display, until nothing is left to do.
struct Visit {
    double window;   ///< milliseconds from the start of the process
    double first;    ///< first pictures on the screen, likewise
    double complete; ///< all of them, likewise
    double pictured; ///< every cell on show has a picture, likewise
    double thumbnailsPerSecond;
    double longestResponse; ///< milliseconds until the window answers to a key, at the worst
    double peak;            ///< MiB
    double whole;           ///< milliseconds of the process
};

/// The folder that holds the catalogue of a set.
[[nodiscard]] QString profileOf(const PictureSet& set);

/// With an empty catalogue. Ends this process where the run fails or does not show all pictures.
[[nodiscard]] Visit visitFirst(const PictureSet& set);

/// With the catalogue of the former visit: the least of each figure over some runs.
[[nodiscard]] Visit visitAgain(const PictureSet& set, int rounds = 5);

} // namespace bench
