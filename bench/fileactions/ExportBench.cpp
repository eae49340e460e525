// What an export of many costs above its parts: photographs of 24 megapixels as JPEG files of 2,048
// pixels at quality 90, read in decoder processes and with their metadata, against the library's
// decode with its own reduction, the toolkit's scaling and encoding, on as many threads. An
// argument scales their number: 0.1 is quick.

#include "codec/PBImageImporterManager.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/DecoderProcess.h"
#include "codec/process/FrameReader.h"
#include "fileactions/Transfers.h"
#include "fileactions/export/ExportAhead.h"
#include "fileactions/export/PictureExport.h"
#include "image/BareJpeg.h"
#include "image/Photographs.h"
#include "platform/tasks/Cores.h"
#include "support/Ratio.h"
#include "support/Require.h"

#include <QDir>
#include <QFile>
#include <QGuiApplication>

#include <atomic>
#include <cstdlib>
#include <span>
#include <thread>

using bench::require;

namespace {

constexpr int photographs = 50;
constexpr int side = 2048;
constexpr int quality = 90;
constexpr int rounds = 3;
constexpr double target = 1.2;
/// The strongest of the library's reductions that leaves enough pixels.
constexpr unsigned eighths = 3;

void exportBare(const QString& path, const QString& to) {
    QFile file(path);
    require(file.open(QIODevice::ReadOnly), "reading");
    const QImage image = bench::decodeBare(file.readAll(), eighths);
    require(
        image.scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation)
            .save(to, "JPEG", quality),
        "writing");
}

} // namespace

int main(int argumentCount, char** arguments) {
    const auto asDecoder = codec::process::runIfDecoderProcess(
        std::span(arguments, static_cast<std::size_t>(argumentCount)));
    if (asDecoder) return *asDecoder;
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argumentCount, arguments);
    const double scale = argumentCount > 1 ? std::atof(arguments[1]) : 1.0;
    const auto count = std::max<std::size_t>(1, static_cast<std::size_t>(photographs * scale));
    const QTemporaryDir folder;
    const QString path = bench::writePhotograph(folder, bench::twentyFourMegapixels);
    const QString to = folder.filePath(QStringLiteral("to"));
    const int threads = std::min(platform::usableCores(), static_cast<int>(count));
    const auto nameOf = [](std::size_t number) {
        return QStringLiteral("%1.jpg").arg(number).toLatin1();
    };
    const auto prepare = [&to] {
        require(QDir(to).removeRecursively() && QDir().mkpath(to), "emptying the folder");
    };

    const auto bare = [&] {
        prepare();
        return bench::millisecondsOf([&] {
            std::atomic<std::size_t> next = 0;
            std::vector<std::jthread> workers;
            for (int thread = 0; thread < threads; ++thread)
                workers.emplace_back([&] {
                    for (std::size_t number = next++; number < count; number = next++)
                        exportBare(path, to + u'/' + QString::fromLatin1(nameOf(number)));
                });
        });
    };

    const auto pool = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings{});
    codec::setFrameReader(pool);
    PBImageImporterManager importers;
    const auto byUs = [&] {
        prepare();
        bench::Transfers transfers(folder);
        return bench::millisecondsOf([&] {
            fileactions::PictureExport pictures(
                importers, {.type = QStringLiteral("public.jpeg"),
                            .quality = quality / 100.0,
                            .maxSize = side});
            fileactions::ExportAhead ahead(
                count, threads, [&](std::size_t /*index*/, const std::stop_token& stop) {
                    return pictures.make(path, 0, stop);
                });
            fileactions::TransferPlan plan;
            for (std::size_t number = 0; number < count; ++number) {
                plan.addFile(
                    {.source = QFile::encodeName(path),
                     .folder = QFile::encodeName(to),
                     .name = nameOf(number),
                     .make = [&ahead, number](const std::stop_token& stop, QByteArray& content) {
                         auto picture = ahead.take(number, stop);
                         content = std::move(picture.content);
                         return picture.error;
                     }});
            }
            require(transfers.run(plan) == count, "exporting");
        });
    };
    const bool isMet = bench::printRatio(
        "export of photographs against decode, scale, encode", rounds, bare, byUs, target);
    codec::setFrameReader(nullptr);
    return isMet ? 0 : 1;
}
