// What a collection costs as it grows: the rate of a first visit to 3,000 small photographs in one
// folder, and to 100,000 in many, against the least work for them on all cores; and a second visit
// to a million. The million takes a first visit of some minutes; an argument scales the sets of
// pictures.

#include "codec/PBImageImporter.h"
#include "image/BareJpeg.h"
#include "scan/BareCatalogue.h"
#include "scan/PictureSets.h"
#include "scan/ProgramVisit.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdlib>
#include <thread>
#include <vector>

namespace {

using bench::Bound;
using bench::printFigure;

constexpr QSize quarterOfVga(320, 240);
constexpr int thumbnailSide = 256;
constexpr unsigned allEighths = 8;

QByteArray contents(const QString& path) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) std::abort();
    return file.readAll();
}

/// What a disk takes is no part of the rates: all are taken with the files in memory.
void readOnce(const bench::PictureSet& set) {
    for (const QString& file : bench::filesBelow(set.folder()))
        bench::keep(contents(file));
}

/// So many photographs a second are read, decoded, scaled and encoded again, while their properties
/// are read and inserted, on all cores and without any other process.
double bareRate(const bench::PictureSet& set) {
    const QStringList files = bench::filesBelow(set.folder());
    const QString catalogue = bench::profileOf(set) + QStringLiteral("/files.db");
    std::atomic<qsizetype> next = 0;
    const double spent = bench::millisecondsOf([&] {
        std::vector<std::jthread> threads;
        for (unsigned core = 0; core < std::thread::hardware_concurrency(); ++core) {
            threads.emplace_back([&] {
                for (qsizetype index = next++; index < files.size(); index = next++) {
                    const QImage whole = bench::decodeBare(contents(files[index]), allEighths);
                    const QImage scaled = whole.scaled(
                        thumbnailSide, thumbnailSide, Qt::KeepAspectRatio,
                        Qt::SmoothTransformation);
                    bench::keep(bench::encodeBare(scaled));
                }
            });
        }
        bench::keep(bench::readAndInsert(catalogue, files));
    });
    return static_cast<double>(files.size()) / spent * 1000;
}

} // namespace

int main(int argc, char** argv) {
    const QCoreApplication application(argc, argv);
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const double scale = argc > 1 ? std::clamp(std::atof(argv[1]), 0.001, 1.0) : 1.0;
    const auto scaled = [&](int count) {
        return std::max(2, static_cast<int>(std::lround(count * scale)));
    };
    bool met = true;

    const bench::PictureSet few{scaled(3'000), 1, quarterOfVga, 90};
    readOnce(few);
    double rateOfFew = 0;
    for (int round = 0; round < 3; ++round)
        rateOfFew = std::max(rateOfFew, bench::visitFirst(few).thumbnailsPerSecond);
    const double floor = bareRate(few);
    const bench::PictureSet many{scaled(100'000), scaled(615), quarterOfVga, 90};
    readOnce(many);
    const double rateOfMany = bench::visitFirst(many).thumbnailsPerSecond;
    printFigure("3,000 of 320x240, bare on all cores", floor, "a-second");
    printFigure("3,000 of 320x240, cold: thumbnails", rateOfFew, "a-second");
    printFigure("100,000 of 320x240, cold: thumbnails", rateOfMany, "a-second");
    met &= printFigure(
        "100,000 of 320x240, cold, to 3,000", rateOfMany / rateOfFew, "times", 0.9, Bound::AtLeast);
    met &= printFigure(
        "100,000 of 320x240, cold, to the bare rate", rateOfMany / floor, "times", 0.65,
        Bound::AtLeast);

    const bench::PictureSet million{scaled(1'000'000), scaled(1'000), bench::smallPicture, 30, 0,
                                    scaled(1'000)};
    const bench::Visit cold = bench::visitFirst(million);
    printFigure("1,000,000 linked, cold: thumbnails", cold.thumbnailsPerSecond, "a-second");
    printFigure("1,000,000 linked, cold: longest response", cold.longestResponse, "ms");
    const bench::Visit warm = bench::visitAgain(million, 3);
    met &= printFigure("1,000,000 linked, warm: first screenful", warm.first, "ms", 400);
    met &= printFigure("1,000,000 linked, warm: complete", warm.complete, "ms", 7000);
    met &= printFigure("1,000,000 linked, warm: peak memory", warm.peak, "MiB", 450);
    met &= printFigure("1,000,000 linked, warm: longest response", warm.longestResponse, "ms", 50);
    return met ? 0 : 1;
}
