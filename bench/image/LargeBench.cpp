// What the large view waits for, without the view: a step to a picture that is not ready against
// the bare library, what a held key begins, what stays in memory after many steps, and the picture
// at rest.

#include "codec/PBImageImporterManager.h"
#include "codec/process/DecoderPool.h"
#include "codec/process/DecoderProcess.h"
#include "group/PBImageFileItem.h"
#include "image/BareJpeg.h"
#include "image/Photographs.h"
#include "image/large/LargeImageRequests.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/tasks/MainLoop.h"
#include "support/ProcessStatus.h"
#include "support/Ratio.h"
#include "viewer/feed/DisplayPicture.h"

#include <QCoreApplication>
#include <QFile>

#include <thread>

namespace {

constexpr double screenSide = 1920;
constexpr double mebibyte = 1024.0 * 1024.0;

/// Mapped pages count as this process's memory only once they were read, as painting does.
void touch(const QImage& image) {
    constexpr qsizetype page = 4096;
    for (qsizetype at = 0; at < image.sizeInBytes(); at += page)
        bench::keep(image.constBits()[at]);
}

/// A display without a window, over photographs of one size.
class Display final : public PBLoadImageDelegate {
public:
    Display(PBImageImporterManager& importers, QString path, QSize size, int count)
        : _buffer({.loadImageManager = _line}),
          _requests(_line, _buffer, importers, [path](const PBImageFileItem&) { return path; }) {
        _line.setScreen({.maxScreenSize = screenSide, .colorSpace = {}});
        for (int index = 0; index < count; ++index) {
            items.push_back(PBImageFileItem::imageFileItemWithId(
                index + 1, 1, QStringLiteral("photograph.jpg"), 1, index));
            items.back()->setImageSize(size);
        }
        zoom = _line.screen().fitInScaleForImageSize(size);
    }

    void loadImageFinished(
        const PBLoadImageOperation&, const LoadedImages& images, double scale,
        const std::shared_ptr<PBImageFileItem>& item, std::int64_t index) override {
        if (images.images) touch(images.images->firstImage());
        _requests.keepLoadedImages(images, scale, {item, index});
    }
    /// As the large view steps.
    void show(int index, int neighbours) {
        const int count = static_cast<int>(items.size());
        std::vector<IndexedImage> ahead;
        std::vector kept{items[static_cast<std::size_t>(index)]};
        for (int next = index + 1; next <= std::min(index + neighbours, count - 1); ++next) {
            ahead.push_back({items[static_cast<std::size_t>(next)], next});
            kept.push_back(ahead.back().item);
        }
        if (_focus) clearUnFitInImages(*_focus, screenSide);
        _focus = kept.front();
        _line.cancelAllOperationExceptContextObjs(kept, index);
        _requests.requestForZoom({kept.front(), index}, zoom, *this);
        _requests.tryPreloadNextOrPrevImage(ahead, *this);
    }
    void waitForFocus() const {
        while (_requests.imageForZoom(*_focus, zoom).needsLoad())
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    void waitForAll() const {
        while (_line.operationCount() != 0)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    void clear() { _buffer.clearBuffer(); }
    [[nodiscard]] PBLoadImageManager& line() { return _line; }
    [[nodiscard]] double heldMebibytes() const {
        return static_cast<double>(_buffer.byteCount()) / mebibyte;
    }

    std::vector<std::shared_ptr<PBImageFileItem>> items;
    double zoom = 1;

private:
    PBLoadImageManager _line;
    PBImageBufferManager _buffer;
    LargeImageRequests _requests;
    std::shared_ptr<PBImageFileItem> _focus;
};

QByteArray contents(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

double residentMebibytes() {
    return static_cast<double>(bench::statusOf("VmRSS:")) / 1024;
}

/// The sharp picture within 1.15 times the bare decode and 25 ms.
bool compareStep(
    PBImageImporterManager& importers, const QString& path, QSize size, const char* name) {
    constexpr int rounds = 9;
    const QByteArray file = contents(path);
    // The library's strongest reduction that leaves enough pixels.
    const unsigned eighths =
        static_cast<unsigned>(std::ceil(8 * screenSide / std::max(size.width(), size.height())));
    Display display(importers, path, size, rounds);
    double bare = std::numeric_limits<double>::infinity();
    double step = bare;
    for (int round = 0; round < rounds; ++round) {
        bare = std::min(bare, bench::millisecondsOf([&] {
                            bench::keep(bench::decodeBare(file, std::min(eighths, 8U)).width());
                        }));
        display.line().steppingDidEnd();
        step = std::min(step, bench::millisecondsOf([&] {
                            display.show(round, 0);
                            display.line().steppingDidEnd();
                            display.waitForFocus();
                        }));
    }
    std::printf("%-52s bare %9.3f ms  step %9.3f ms\n", name, bare, step);
    return bench::printFigure("  above 1.15 times the bare decode", step - 1.15 * bare, "ms", 25);
}

/// A key held at 30 a second over 300 photographs.
bool holdKey(PBImageImporterManager& importers, const QString& path, QSize size) {
    constexpr int steps = 300;
    constexpr auto interval = std::chrono::milliseconds(33);
    Display display(importers, path, size, steps);
    display.show(0, 7);
    display.waitForFocus();
    const auto before = display.line().figures();
    auto next = std::chrono::steady_clock::now();
    double worst = 0;
    for (int index = 1; index < steps; ++index) {
        worst = std::max(worst, bench::millisecondsOf([&] { display.show(index, 7); }));
        next += interval;
        while (std::chrono::steady_clock::now() < next) {
            worst =
                std::max(worst, bench::millisecondsOf([] { QCoreApplication::processEvents(); }));
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
    }
    const auto after = display.line().figures();
    const double last = bench::millisecondsOf([&] {
        display.line().steppingDidEnd();
        display.waitForFocus();
    });
    const auto begun = static_cast<double>(after.begun - before.begun);
    // One may have run when the key went down.
    const double stopped = std::max(0.0, static_cast<double>(after.stopped - before.stopped) - 1);
    bench::printFigure("held key: decodes begun over 300 pictures", begun, "decodes");
    bool met = bench::printFigure(
        "held key: stopped half-way of those begun", stopped / std::max(begun, 1.0), "share",
        1.0 / 3);
    met &= bench::printFigure("held key: longest wait of the main loop", worst, "ms", 20);
    bench::printFigure("held key: sharp after it was let go", last, "ms");
    return met;
}

bool measureMemory(PBImageImporterManager& importers, const QString& path, QSize size) {
    constexpr int steps = 500;
    const double before = residentMebibytes();
    Display display(importers, path, size, 40);
    int index = 0;
    for (int step = 0; step < steps; ++step) {
        index = step % 78 < 39 ? step % 78 : 78 - step % 78;
        display.show(index, 7);
        if (step % 4 == 0) display.waitForFocus();
    }
    display.waitForAll();
    const double held = display.heldMebibytes();
    bool met = bench::printFigure(
        "memory after 500 steps above 1.1 times what is held",
        residentMebibytes() - before - 1.1 * held, "MiB", 60);
    display.clear();
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(2);
    while (residentMebibytes() - before > 10 && std::chrono::steady_clock::now() < end)
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    met &= bench::printFigure(
        "memory after leaving, above that of before", residentMebibytes() - before, "MiB", 10);
    return met;
}

/// The picture at rest on a view of 1920 x 1200.
void measureRest() {
    QImage image(2250, 1500, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    const auto images = std::make_shared<PBImages>(std::vector{PBImage(image)});
    for (const double scale : {0.8, 1.0, 1.5, 4.0}) {
        const DisplayState state{
            images, 0, image.size(), QTransform::fromScale(scale, scale), QRect(0, 0, 1920, 1200)};
        double least = std::numeric_limits<double>::infinity();
        for (int round = 0; round < 7; ++round)
            least = std::min(least, bench::millisecondsOf([&] {
                                 bench::keep(resampledPicture(state).image.width());
                             }));
        const std::string name = "picture at rest at " + std::to_string(int(scale * 100)) + " %";
        bench::printFigure(name.c_str(), least, "ms");
    }
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = codec::process::runIfDecoderProcess(arguments)) return *code;
    const QCoreApplication application(argc, argv);
    const platform::MainLoop loop;
    const QTemporaryDir folder;
    const auto pool = std::make_shared<codec::DecoderPool>(codec::DecoderPool::Settings());
    codec::setFrameReader(pool);
    pool->start();
    PBImageImporterManager importers;
    const QString twelve = bench::writePhotograph(folder, bench::twelveMegapixels);
    const QString twentyFour = bench::writePhotograph(folder, bench::twentyFourMegapixels);
    constexpr QSize hundredMegapixels(11648, 8736);
    const QString hundred = bench::writePhotograph(folder, hundredMegapixels);
    if (argc > 1 && std::string_view(argv[1]) == "--memory")
        return measureMemory(importers, twelve, bench::twelveMegapixels) ? 0 : 1;
    bool met = compareStep(importers, twelve, bench::twelveMegapixels, "step to 12 megapixels");
    met &= compareStep(importers, twentyFour, bench::twentyFourMegapixels, "step to 24 megapixels");
    met &= compareStep(importers, hundred, hundredMegapixels, "step to 100 megapixels");
    met &= holdKey(importers, twentyFour, bench::twentyFourMegapixels);
    met &= measureMemory(importers, twelve, bench::twelveMegapixels);
    measureRest();
    codec::setFrameReader(codec::noReader());
    return met ? 0 : 1;
}
