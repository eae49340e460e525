// What the importer costs above the bare library: thumbnails, full pictures and properties of JPEG
// files, in this process and through decoder processes, and the memory that a thumbnail takes.

#include "codec/Bitmaps.h"
#include "codec/PBImageImporter.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/DecoderProcess.h"
#include "codec/process/FrameReader.h"
#include "image/BareJpeg.h"
#include "image/Photographs.h"
#include "support/ProcessStatus.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>

#include <exiv2/exiv2.hpp>

#include <thread>
#include <vector>

namespace {

constexpr int thumbnailSide = 256;
/// The strongest reduction by which both pictures are still larger than a thumbnail.
constexpr unsigned thumbnailEighths = 1;

QImage read(const QString& path, unsigned maxSize) {
    return PBImageImporter::initWithImagePath(path)->createImageWithMaxSize(maxSize, 0);
}

void makeThumbnail(const QString& path) {
    bench::keep(PBUtilities::cgImageRefToJpegData(read(path, thumbnailSide)).size());
}

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool compareDecodes(const QString& path, const char* thumbnailName, const char* fullName) {
    const QByteArray file = contents(path);
    const QImage thumbnail = read(path, thumbnailSide);
    const bool thumbnailMet = bench::printRatio(
        thumbnailName, 15,
        [&] {
            bench::keep(bench::decodeBare(file, thumbnailEighths).width());
            bench::keep(bench::encodeBare(thumbnail));
        },
        [&] { makeThumbnail(path); }, 1.15);
    const bool fullMet = bench::printRatio(
        fullName, 7, [&] { bench::keep(bench::decodeBare(file, 8).width()); },
        [&] { bench::keep(read(path, 0).width()); }, 1.15);
    return thumbnailMet && fullMet;
}

/// The least time of a thumbnail through the pool above the least time in this process, in
/// milliseconds.
double
isolationCost(const QString& path, const std::shared_ptr<codec::DecoderPool>& pool, int rounds) {
    double local = std::numeric_limits<double>::infinity();
    double isolated = local;
    for (int round = 0; round < rounds; ++round) {
        codec::setFrameReader(nullptr);
        local = std::min(local, bench::millisecondsOf([&] { makeThumbnail(path); }));
        codec::setFrameReader(pool);
        isolated = std::min(isolated, bench::millisecondsOf([&] { makeThumbnail(path); }));
    }
    codec::setFrameReader(nullptr);
    return isolated - local;
}

bool compareProperties(const QString& path, codec::DecoderPool& pool) {
    constexpr int readers = 4;
    constexpr int files = 400;
    const std::string name = path.toStdString();
    const QString type = QStringLiteral("public.jpeg");
    return bench::printRatio(
        "400 properties, isolated / bare metadata", 10,
        [&] {
            for (int file = 0; file < files; ++file) {
                const Exiv2::Image::AutoPtr image = Exiv2::ImageFactory::open(name);
                image->readMetadata();
                bench::keep(image->exifData().count());
            }
        },
        [&] {
            std::vector<std::jthread> threads;
            for (int reader = 0; reader < readers; ++reader) {
                threads.emplace_back([&] {
                    for (int file = 0; file < files / readers; ++file) {
                        QFile opened(path);
                        if (!opened.open(QIODevice::ReadOnly)) std::abort();
                        if (pool.properties(opened.handle(), type, 0, {}).status !=
                            codec::PropertiesStatus::Read)
                            std::abort();
                    }
                });
            }
        },
        3.0);
}

/// The life of the process that `measurePeak` starts: prints by how many KiB one thumbnail raised
/// its peak above what it held before; the pages of the mapped file count.
int printOwnPeak(const QString& path) {
    const long idle = bench::statusOf("VmRSS:");
    makeThumbnail(path);
    std::printf("%ld\n", bench::statusOf("VmHWM:") - idle);
    return 0;
}

bool measurePeak(const QString& path) {
    QProcess process;
    process.start(QCoreApplication::applicationFilePath(), {QStringLiteral("--peak"), path});
    if (!process.waitForFinished()) return false;
    const double peak = process.readAllStandardOutput().toDouble() / 1024;
    return peak > 0 &&
           bench::printFigure("thumbnail of 24 megapixels: peak memory", peak, "MiB", 40);
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = codec::process::runIfDecoderProcess(arguments)) return *code;
    const QCoreApplication application(argc, argv);
    if (argc == 3 && std::string_view(argv[1]) == "--peak") {
        return printOwnPeak(QFile::decodeName(argv[2]));
    }
    const QTemporaryDir folder;
    const QString twelve = bench::writePhotograph(folder, bench::twelveMegapixels);
    const QString twentyFour = bench::writePhotograph(folder, bench::twentyFourMegapixels);
    const auto pool = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings());
    pool->start();
    bool met = measurePeak(twentyFour);
    met &= compareDecodes(twelve, "thumbnail of 12 megapixels", "12 megapixels in full");
    met &= compareDecodes(twentyFour, "thumbnail of 24 megapixels", "24 megapixels in full");
    // The way through a process costs the same for every picture, but shows above the noise of the
    // machine only where the decode itself is short.
    const QString small = bench::writePhotograph(folder, {800, 600});
    met &= bench::printFigure(
        "thumbnail of 0.5 megapixels: isolated - in process", isolationCost(small, pool, 400), "ms",
        1.0);
    bench::printFigure(
        "thumbnail of 12 megapixels: isolated - in process", isolationCost(twelve, pool, 40), "ms");
    met &= compareProperties(twelve, *pool);
    return met ? 0 : 1;
}
