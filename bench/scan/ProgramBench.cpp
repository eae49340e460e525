// The whole program, without a display, on generated folders: from the start of the process to the
// window, the first pictures on it and all of them, and its memory. A first visit (cold) has an
// empty catalogue; a second one (warm) finds everything in it. An argument scales the sets of
// pictures.

#include "scan/PictureSets.h"
#include "scan/ProgramVisit.h"
#include "support/Ratio.h"

#include <QCoreApplication>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

using bench::Bound;
using bench::printFigure;
using bench::Visit;
using bench::visitAgain;
using bench::visitFirst;

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const double scale = argc > 1 ? std::clamp(std::atof(argv[1]), 0.001, 10.0) : 1.0;
    const auto scaled = [&](int count) {
        return std::max(2, static_cast<int>(std::lround(count * scale)));
    };
    bool met = true;

    const bench::PictureSet twoMegapixels{
        scaled(10'000), scaled(200), bench::twoMegapixelPicture, 75};
    const Visit cold = visitFirst(twoMegapixels);
    met &= printFigure(
        "10,000 of 2 megapixels, cold: first shown after window", cold.first - cold.window, "ms",
        1000);
    printFigure("10,000 of 2 megapixels, cold: thumbnails", cold.thumbnailsPerSecond, "a-second");
    met &= printFigure(
        "10,000 of 2 megapixels, cold: longest response", cold.longestResponse, "ms", 50);
    const Visit warm = visitAgain(twoMegapixels);
    met &= printFigure("10,000 of 2 megapixels, warm: complete", warm.complete, "ms", 1500);

    const bench::PictureSet many{scaled(100'000), scaled(500), bench::smallPicture, 30};
    met &= printFigure(
        "100,000 small, cold: thumbnails", visitFirst(many).thumbnailsPerSecond, "a-second", 500,
        Bound::AtLeast);
    const Visit ofMany = visitAgain(many);
    met &= printFigure("100,000 small, warm: first screenful", ofMany.first, "ms", 500);
    met &= printFigure("100,000 small, warm: complete", ofMany.complete, "ms", 2500);
    met &= printFigure("100,000 small, warm: peak memory", ofMany.peak, "MiB", 350);

    const bench::PictureSet fewer{scaled(20'000), scaled(100), bench::smallPicture, 30};
    static_cast<void>(visitFirst(fewer));
    const Visit ofFewer = visitAgain(fewer);
    met &= printFigure("20,000 small, warm: complete", ofFewer.complete, "ms", 400);
    met &= printFigure("20,000 small, warm: peak memory", ofFewer.peak, "MiB", 150);

    bench::PictureSet travels{scaled(10'000), scaled(100), bench::smallPicture, 30};
    double nowhere = std::numeric_limits<double>::infinity();
    double everywhere = nowhere;
    double longest = nowhere;
    for (int round = 0; round < 3; ++round) {
        travels.places = 0;
        nowhere = std::min(nowhere, visitFirst(travels).whole);
        travels.places = scaled(5'000);
        const Visit visit = visitFirst(travels);
        everywhere = std::min(everywhere, visit.whole);
        longest = std::min(longest, visit.longestResponse);
    }
    met &= printFigure(
        "10,000 small in 5,000 places, cold, to none with a place", everywhere / nowhere, "times",
        1.15);
    met &= printFigure("10,000 small in 5,000 places, cold: longest response", longest, "ms", 20);

    const bench::PictureSet large{scaled(400), 4, bench::twelveMegapixelPicture, 90};
    const Visit ofLargeFirst = visitFirst(large);
    printFigure(
        "400 of 12 megapixels, cold: thumbnails", ofLargeFirst.thumbnailsPerSecond, "a-second");
    met &= printFigure(
        "400 of 12 megapixels, cold: every cell with a picture after window",
        ofLargeFirst.pictured - ofLargeFirst.window, "ms", 300);
    const Visit ofLarge = visitAgain(large);
    met &= printFigure("400 of 12 megapixels, warm: window", ofLarge.window, "ms", 150);
    met &= printFigure("400 of 12 megapixels, warm: complete", ofLarge.complete, "ms", 300);
    return met ? 0 : 1;
}
