// What a scan costs above the work that nobody can spare: the catalogue pass above a status call
// and a select, the disk pass above reading properties and inserting rows, thumbnails above the
// bare decode; the time to the first publication, and memory. An argument scales the sets of
// pictures: 0.01 is quick.

#include "codec/PBImageImporter.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/DecoderProcess.h"
#include "codec/process/FrameReader.h"
#include "image/BareJpeg.h"
#include "scan/BareCatalogue.h"
#include "scan/HeadlessScan.h"
#include "scan/PictureSets.h"
#include "support/ProcessStatus.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <thread>
#include <vector>

namespace {

constexpr int thumbnailSide = 256;
constexpr unsigned thumbnailEighths = 1; // of 12 megapixels: still larger than a thumbnail

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool compareColdPass(const bench::PictureSet& set, const QString& reference) {
    const QString root = set.folder();
    const QStringList files = bench::filesBelow(root);
    return bench::printRatio(
        "disk pass / properties read bare and bare inserts", 2,
        [&] { return bench::readAndInsert(reference + QStringLiteral("/files.db"), files); },
        [&] {
            const QTemporaryDir profile;
            bench::HeadlessScan scan(profile.path(), root);
            return bench::millisecondsOf([&] { scan.scan(false); });
        },
        1.6);
}

bool compareWarmPass(const bench::PictureSet& set, const QString& profile) {
    const QString root = set.folder();
    const QStringList files = bench::filesBelow(root);
    double firstPublication = std::numeric_limits<double>::infinity();
    const bool met = bench::printRatio(
        "catalogue pass / status calls and bare select", 7,
        [&] { return bench::statAndSelect(profile + QStringLiteral("/files.db"), files); },
        [&] {
            bench::HeadlessScan scan(profile, root);
            scan.scan(true);
            scan.waitForThumbnails();
            firstPublication = std::min(firstPublication, scan.figures().firstPublication.load());
            return scan.figures().cataloguePass.load();
        },
        4.0);
    return bench::printFigure("first publication of a warm start", firstPublication, "ms", 150) &&
           met;
}

/// The life of the process that `measureMemory` starts: what a warm scan leaves behind, in KiB.
int printOwnMemory(const QString& profile, const QString& pictures) {
    bench::HeadlessScan scan(profile, pictures);
    const long idle = bench::statusOf("VmRSS:");
    scan.scan(true);
    scan.waitForThumbnails();
    std::printf("%ld %ld\n", bench::statusOf("VmRSS:") - idle, bench::statusOf("VmHWM:") - idle);
    return 0;
}

bool measureMemory(const bench::PictureSet& set, const QString& profile) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start(
        QCoreApplication::applicationFilePath(),
        {QStringLiteral("--memory"), profile, set.folder()});
    if (!process.waitForFinished(-1) || process.exitCode() != 0) return false;
    const QByteArrayList figures = process.readAllStandardOutput().simplified().split(' ');
    bench::printFigure("memory above idle at its highest", figures.last().toDouble() / 1024, "MiB");
    return bench::printFigure(
        "memory above idle after a warm scan", figures.first().toDouble() / 1024, "MiB", 120);
}

/// The floor of the images' bench on every core at once: pictures that are in memory are decoded at
/// the library's strongest reduction and thumbnails are encoded, on as many threads as there are
/// cores, with no scaling, no other process and no database. A few pictures stand for all.
double bareThumbnails(const QStringList& files, int cores) {
    const qsizetype sample = std::min<qsizetype>(files.size(), 192);
    const auto importer = PBImageImporter::initWithImagePath(files.front());
    const QImage thumbnail = importer->createImageWithMaxSize(thumbnailSide, 0);
    std::vector<QByteArray> pictures;
    for (qsizetype index = 0; index < sample; ++index)
        pictures.push_back(contents(files[index]));
    std::atomic<std::size_t> next = 0;
    const double spent = bench::millisecondsOf([&] {
        std::vector<std::jthread> threads;
        for (int core = 0; core < cores; ++core) {
            threads.emplace_back([&] {
                for (std::size_t index = next++; index < pictures.size(); index = next++) {
                    bench::keep(bench::decodeBare(pictures[index], thumbnailEighths).width());
                    bench::keep(bench::encodeBare(thumbnail));
                }
            });
        }
    });
    return spent * static_cast<double>(files.size()) / static_cast<double>(sample);
}

bool compareThumbnails(const bench::PictureSet& set) {
    const QString root = set.folder();
    const QStringList files = bench::filesBelow(root);
    const int cores = static_cast<int>(std::thread::hardware_concurrency());
    quint64 missing = 0;
    const bool met = bench::printRatio(
        "thumbnails of 12 megapixels / bare ones on all cores", 3,
        [&] { return bareThumbnails(files, cores); },
        [&] {
            const QTemporaryDir profile;
            bench::HeadlessScan scan(profile.path(), root);
            const double spent = bench::millisecondsOf([&] {
                scan.scan(true);
                scan.waitForThumbnails();
            });
            missing += static_cast<quint64>(files.size()) - scan.thumbnails().built;
            return spent;
        },
        1.3);
    if (missing != 0) std::printf("%llu thumbnails were not built\n", missing);
    return met && missing == 0;
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = codec::process::runIfDecoderProcess(arguments)) return *code;
    const QCoreApplication application(argc, argv);
    const auto pool = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings());
    codec::setFrameReader(pool);
    if (argc == 4 && std::string_view(argv[1]) == "--memory")
        return printOwnMemory(QFile::decodeName(argv[2]), QFile::decodeName(argv[3]));

    const double scale = argc > 1 ? std::clamp(std::atof(argv[1]), 0.001, 10.0) : 1.0;
    const auto scaled = [&](int count) { return static_cast<int>(std::lround(count * scale)); };
    const bench::PictureSet small{
        scaled(100'000), std::max(1, scaled(500)), bench::smallPicture, 30};
    const bench::PictureSet large{std::max(2, scaled(400)), 4, bench::twelveMegapixelPicture, 90};
    const std::string_view only = argc > 2 ? argv[2] : "";
    const auto isWanted = [&](std::string_view part) { return only.empty() || only == part; };
    pool->start();
    bool met = true;
    if (isWanted("thumbnails")) met &= compareThumbnails(large);
    if (only == "thumbnails") return met ? 0 : 1;

    const QTemporaryDir profile;
    {
        bench::HeadlessScan scan(profile.path(), small.folder());
        scan.scan(false);
    }
    bench::fillThumbnails(
        profile.filePath(QStringLiteral("files.db")),
        profile.filePath(QStringLiteral("thumbnail.db")));
    if (isWanted("memory")) met &= measureMemory(small, profile.path());
    if (isWanted("warm")) met &= compareWarmPass(small, profile.path());
    if (isWanted("cold")) met &= compareColdPass(small, profile.path());
    codec::setFrameReader(nullptr);
    return met ? 0 : 1;
}
