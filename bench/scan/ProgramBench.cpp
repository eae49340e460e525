// The whole program, without a display, on generated folders: from the start of the process to the
// window, the first pictures on it and all of them, and its memory. A first visit (cold) has an
// empty catalogue; a second one (warm) finds everything in it. An argument scales the sets of
// pictures.

#include "scan/PictureSets.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <string>

namespace {

using bench::Bound;
using bench::printFigure;

struct Visit {
    double window;   ///< milliseconds from the start of the process
    double first;    ///< first pictures on the screen, likewise
    double complete; ///< all of them, likewise
    double thumbnailsPerSecond;
    double longestResponse; ///< milliseconds until the window answers to a key, at the worst
    double peak;            ///< MiB
    double whole;           ///< milliseconds of the process, until nothing is left to do
};

Visit run(const bench::PictureSet& set, const QString& profile, bool isFirst) {
    QStringList arguments{
        QStringLiteral("--profile"), profile, QStringLiteral("--until-idle"),
        QStringLiteral("--stats"), QStringLiteral("-")};
    if (isFirst) arguments += {QStringLiteral("--add"), set.folder()};
    QElapsedTimer whole;
    whole.start();
    QProcess program;
    program.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    program.start(QCoreApplication::applicationDirPath() + QStringLiteral("/velmora"), arguments);
    if (!program.waitForFinished(-1) || program.exitCode() != 0) std::abort();
    const auto elapsed = static_cast<double>(whole.elapsed());
    const QJsonObject stats = QJsonDocument::fromJson(program.readAllStandardOutput()).object();
    const auto figure = [&](const char* name) {
        return stats[QLatin1StringView(name)].toDouble(std::nan(""));
    };
    if (figure("items") != set.pictures) {
        std::fprintf(stderr, "%g of %d pictures are shown\n", figure("items"), set.pictures);
        std::abort();
    }
    const double begin = figure("scan_begin_ms");
    return {
        figure("first_window_ms"),
        begin + figure("first_shown_ms"),
        begin + figure("last_shown_ms"),
        figure("thumbnails_built") / figure("thumbnails_done_ms") * 1000,
        figure("longest_response_ms"),
        figure("peak_rss_kib") / 1024,
        elapsed};
}

QString profileOf(const bench::PictureSet& set) {
    return set.folder() + QStringLiteral(".profile");
}

Visit visitFirst(const bench::PictureSet& set) {
    QDir(profileOf(set)).removeRecursively();
    return run(set, profileOf(set), true);
}

/// The least of each figure over some visits.
Visit visitAgain(const bench::PictureSet& set) {
    Visit least = run(set, profileOf(set), false);
    for (int round = 0; round < 4; ++round) {
        const Visit next = run(set, profileOf(set), false);
        least.window = std::min(least.window, next.window);
        least.first = std::min(least.first, next.first);
        least.complete = std::min(least.complete, next.complete);
        least.peak = std::min(least.peak, next.peak);
    }
    return least;
}

} // namespace

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
    printFigure(
        "400 of 12 megapixels, cold: thumbnails", visitFirst(large).thumbnailsPerSecond,
        "a-second");
    const Visit ofLarge = visitAgain(large);
    met &= printFigure("400 of 12 megapixels, warm: window", ofLarge.window, "ms", 150);
    met &= printFigure("400 of 12 megapixels, warm: complete", ofLarge.complete, "ms", 300);
    return met ? 0 : 1;
}
