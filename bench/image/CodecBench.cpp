// What the large view needs of the decoders: a picture that the user waits for beside thumbnails,
// animations in one pass, and stops that take no time.

#include "codec/PBImageImporter.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/DecoderProcess.h"
#include "formatpictures/Encoders.h"
#include "image/Photographs.h"
#include "support/Ratio.h"

#include <QCoreApplication>
#include <QFile>

#include <algorithm>
#include <cstring>
#include <thread>
#include <vector>

#include <gif_lib.h>

namespace {

constexpr QSize hundredMegapixels{11600, 8700};
constexpr QSize filmSize{640, 480};
constexpr int filmFrames = 200;

codec::DecodeRequest focusRequest() {
    codec::DecodeRequest request;
    request.urgency = codec::Urgency::Focus;
    return request;
}

double decodeFocus(const QString& path) {
    return bench::millisecondsOf([&] {
        const auto result = PBImageImporter::initWithImagePath(path)->readImage(focusRequest(), {});
        if (result.status != codec::ReadStatus::Decoded) std::abort();
        bench::keep(result.frame.image.constBits());
    });
}

/// Threads that make thumbnails of the picture without a pause, as building and decoding ahead do.
class Thumbnails {
public:
    explicit Thumbnails(const QString& path) {
        for (int thread = 0; thread < 4; ++thread) {
            _threads.emplace_back([path](const std::stop_token& stop) {
                while (!stop.stop_requested()) {
                    const auto importer = PBImageImporter::initWithImagePath(path);
                    bench::keep(importer->createImageWithMaxSize(256, 0, stop).width());
                }
            });
        }
    }

private:
    std::vector<std::jthread> _threads;
};

bool compareUrgency(const QString& large, const QString& small) {
    return bench::printRatio(
        "24 megapixels beside thumbnails / alone", 7, [&] { return decodeFocus(large); },
        [&] {
            const Thumbnails beside(small);
            // All processes are at it.
            for (int round = 0; round < 3; ++round)
                bench::keep(decodeFocus(small));
            return decodeFocus(large);
        },
        1.25);
}

/// Each frame of the film drawn upon those before it and copied out, by the library alone.
void playBare(const QByteArray& bytes) {
    struct Reader {
        const QByteArray& bytes;
        qsizetype position = 0;
    } reader{bytes};
    GifFileType* file = DGifOpen(
        &reader,
        [](GifFileType* opened, GifByteType* target, int length) {
            auto* from = static_cast<Reader*>(opened->UserData);
            const auto count = std::min<qsizetype>(length, from->bytes.size() - from->position);
            std::memcpy(
                target, from->bytes.constData() + from->position, static_cast<std::size_t>(count));
            from->position += count;
            return static_cast<int>(count);
        },
        nullptr);
    if (!file) std::abort();
    QImage canvas(filmSize, QImage::Format_RGB32);
    GifRecordType type = UNDEFINED_RECORD_TYPE;
    while (DGifGetRecordType(file, &type) == GIF_OK && type != TERMINATE_RECORD_TYPE) {
        if (type == EXTENSION_RECORD_TYPE) {
            int code = 0;
            GifByteType* block = nullptr;
            DGifGetExtension(file, &code, &block);
            while (block)
                DGifGetExtensionNext(file, &block);
            continue;
        }
        DGifGetImageDesc(file);
        const GifImageDesc area = file->Image;
        std::vector<GifPixelType> row(static_cast<std::size_t>(area.Width));
        for (int y = 0; y < area.Height; ++y) {
            DGifGetLine(file, row.data(), area.Width);
            auto* target = reinterpret_cast<QRgb*>(canvas.scanLine(area.Top + y)) + area.Left;
            for (const GifPixelType index : row) {
                const GifColorType& colour = file->SColorMap->Colors[index];
                *target++ = qRgb(colour.Red, colour.Green, colour.Blue);
            }
        }
        bench::keep(canvas.copy().constBits());
    }
    DGifCloseFile(file, nullptr);
}

bool comparePlay(const QTemporaryDir& folder) {
    const QByteArray film = formatpictures::gifFilm(filmSize, filmFrames);
    const QString path = folder.filePath(QStringLiteral("film.gif"));
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(film) != film.size()) return false;
    file.close();
    return bench::printRatio(
        "200 frames of 640 x 480 / one bare pass", 5, [&] { playBare(film); },
        [&] {
            const auto opened =
                PBImageImporter::initWithImagePath(path)->openSequence(focusRequest(), {});
            if (!opened.sequence || opened.sequence->frameCount() != filmFrames) std::abort();
            for (int frame = 0; frame < filmFrames; ++frame) {
                const auto next = opened.sequence->next({});
                if (next.status != codec::SequenceStatus::Decoded) std::abort();
                bench::keep(next.frame.image.constBits());
            }
        },
        8.0);
}

/// Stops a decode of the picture at places all over it.
bool measureStops(const QString& path, const char* name) {
    const double whole = decodeFocus(path);
    constexpr int stops = 20;
    std::vector<double> latencies;
    double after = 0; // of a small request right behind each stop: long where the process is gone
    for (int index = 0; index < stops; ++index) {
        std::stop_source stop;
        std::jthread decoding([&] {
            const auto result = PBImageImporter::initWithImagePath(path)->readImage(
                focusRequest(), stop.get_token());
            bench::keep(result.status);
        });
        std::this_thread::sleep_for(
            std::chrono::duration<double, std::milli>(whole * index / (stops + 2)));
        latencies.push_back(bench::millisecondsOf([&] {
            stop.request_stop();
            decoding.join();
        }));
        after += bench::millisecondsOf([&] {
            const auto importer = PBImageImporter::initWithImagePath(path);
            importer->setUrgency(codec::Urgency::Focus);
            bench::keep(importer->imageCount());
        });
    }
    std::ranges::sort(latencies);
    const std::string row = std::string("stop of ") + name;
    bench::printFigure((row + ": median").c_str(), latencies[stops / 2], "ms");
    bench::printFigure((row + ": next answer").c_str(), after / stops, "ms");
    return bench::printFigure((row + ": worst").c_str(), latencies.back(), "ms", 20);
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = codec::process::runIfDecoderProcess(arguments)) return *code;
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const auto pool = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings());
    pool->start();
    codec::setFrameReader(pool);
    const QString twelve = bench::writePhotograph(folder, bench::twelveMegapixels);
    bool met = compareUrgency(bench::writePhotograph(folder, bench::twentyFourMegapixels), twelve);
    met &= comparePlay(folder);
    // Others may be named, of formats that have no encoder here.
    if (argc == 1)
        met &= measureStops(
            bench::writePhotograph(folder, hundredMegapixels), "100 megapixels of JPEG");
    for (int index = 1; index < argc; ++index) {
        std::printf("%s: %.1f ms\n", argv[index], decodeFocus(QFile::decodeName(argv[index])));
        met &= measureStops(QFile::decodeName(argv[index]), "a picture that was named");
    }
    codec::setFrameReader(nullptr);
    return met ? 0 : 1;
}
