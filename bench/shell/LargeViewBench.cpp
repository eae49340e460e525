// The large view in the whole program, without a display, on generated photographs of 12 and 24
// megapixels: from a key to what is painted, and frames of motions. An argument scales the number
// of steps.

#include "app/ApplicationController.h"
#include "browser/PBImageBrowserView.h"
#include "codec/process/DecoderProcess.h"
#include "group/PBImageFileItem.h"
#include "image/BareJpeg.h"
#include "image/large/PBImageBufferManager.h"
#include "image/large/PBLoadImageManager.h"
#include "platform/program/StandardFolders.h"
#include "platform/tasks/MainLoop.h"
#include "scan/PictureSets.h"
#include "shell/PBMainWindowController.h"
#include "shell/large/LargeView.h"
#include "support/ProcessStatus.h"
#include "support/Ratio.h"
#include "viewer/PBImageView.h"

#include <QApplication>
#include <QFile>
#include <QKeyEvent>
#include <QMainWindow>
#include <QPaintEvent>
#include <QTemporaryDir>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <thread>

namespace {

using bench::millisecondsOf;
using bench::printFigure;
using Clock = std::chrono::steady_clock;

/// Of the screen, and of the window that fills it.
constexpr QSize windowSize(1920, 1200);

/// Counts the paints of a widget, and the points that they cover.
class PaintCount final : public QObject {
public:
    explicit PaintCount(QWidget& widget) { widget.installEventFilter(this); }
    int count = 0;
    double area = 0;

protected:
    bool eventFilter(QObject*, QEvent* event) override {
        if (event->type() != QEvent::Paint) return false;
        ++count;
        for (const QRect& rect : static_cast<QPaintEvent*>(event)->region())
            area += 1.0 * rect.width() * rect.height();
        return false;
    }
};

double mebibytes(qint64 bytes) {
    return static_cast<double>(bytes) / (1024.0 * 1024.0);
}

class Bench {
public:
    explicit Bench(const bench::PictureSet& set) {
        platform::StandardFolders::setProfile(_profile.path());
        _controller.awakeFromNib();
        window().window().resize(windowSize);
        _controller.applicationDidFinishLaunching();
        if (!_controller.addFolders({set.folder()})) std::abort();
        run([&] {
            return _controller.isIdle() &&
                   browser().selection().itemCount(FoldedLeaves::Included) == set.pictures;
        });
    }
    ~Bench() { _controller.applicationWillTerminate(); }

    PBMainWindowController& window() { return _controller.mainWindowController(); }
    LargeView& large() { return window().largeView(); }
    PBImageView& view() { return large().controller().imageView(); }
    PBImageBrowserView& browser() { return *window().window().findChild<PBImageBrowserView*>(); }
    /// Above what the pictures that may live take, by a tenth of these.
    double excessMebibytes(double before) {
        const qint64 held = _controller.shellServices().imageBufferManager.byteCount();
        return residentMebibytes() - before - 1.1 * mebibytes(held);
    }
    /// What this process takes, but for thumbnails, which the browser keeps, too.
    double residentMebibytes() {
        qint64 thumbnails = 0;
        const auto& leaves = browser().leaves();
        for (std::int64_t group = 0; group < leaves.leafCount(); ++group)
            for (std::int64_t place = 0; place < leaves.imageFileCount(group); ++place)
                thumbnails += leaves.imageFileAtIndex({group, place})->thumbnailRef().sizeInBytes();
        return static_cast<double>(bench::statusOf("VmRSS:")) / 1024 - mebibytes(thumbnails);
    }
    /// All photographs as one list, the first in focus.
    void enterAll() {
        browser().selection().selectAll(FoldedLeaves::Included);
        large().view_BrowserView();
        settle();
    }
    const PBLoadImageManager& line() { return _controller.shellServices().loadImageManager; }

    /// Lets the loop run until the condition holds; answers its longest turn in milliseconds.
    double run(const std::function<bool()>& condition) {
        double longest = 0;
        for (const auto end = Clock::now() + std::chrono::minutes(10); !condition();) {
            if (Clock::now() > end) std::abort();
            longest = std::max(longest, millisecondsOf([] { QCoreApplication::processEvents(); }));
            std::this_thread::sleep_for(std::chrono::microseconds(200));
        }
        return longest;
    }
    [[nodiscard]] bool isSharp() {
        return view().isAtRest() && view().painted() == PBImageView::Painted::FitIn;
    }
    void settle() {
        run([this] { return _controller.isIdle() && isSharp(); });
    }
    void press(int key) { send(QEvent::KeyPress, key); }
    void release(int key) { send(QEvent::KeyRelease, key); }
    /// Milliseconds from the act to the first paint of the widget that follows it.
    double untilPainted(QWidget& widget, const std::function<void()>& act) {
        PaintCount paints(widget);
        return millisecondsOf([&] {
            act();
            while (paints.count == 0)
                QCoreApplication::processEvents();
        });
    }
    /// The same photographs go before this bench: forth, and back where there are no more.
    int nextKey() {
        const PhotoBin& bin = large().controller().bin();
        if (!bin.canNext()) _key = Qt::Key_Left;
        if (!bin.canPrev()) _key = Qt::Key_Right;
        return _key;
    }

private:
    void send(QEvent::Type type, int key) {
        QWidget* target = QApplication::focusWidget();
        if (!target) target = &large().controller().thumbnailView();
        QKeyEvent event(type, key, Qt::NoModifier);
        QApplication::sendEvent(target, &event);
    }

    QTemporaryDir _profile;
    ApplicationController _controller;
    int _key = Qt::Key_Right;
};

bool measureWays(Bench& bench) {
    double enter = 0;
    double leave = 0;
    for (int round = 0; round < 5; ++round) {
        enter = std::max(enter, bench.untilPainted(bench.view(), [&] {
            bench.large().enterToLargeView({0, round});
        }));
        bench.settle();
        leave = std::max(leave, bench.untilPainted(bench.browser(), [&] {
            bench.large().view_ThumbnailView();
        }));
        bench.run([&] { return bench.browser().isVisible(); });
    }
    bool met = printFigure("enter the large view: first paint, worst of 5", enter, "ms", 50);
    met &= printFigure("leave it: first paint of the browser, worst of 5", leave, "ms", 50);
    return met;
}

bool measureReadySteps(Bench& bench, int steps) {
    std::vector<double> times;
    for (int step = 0; step < steps; ++step) {
        bench.settle();
        times.push_back(bench.untilPainted(bench.view(), [&] { bench.press(bench.nextKey()); }));
    }
    std::ranges::sort(times);
    const auto at99 = static_cast<std::size_t>(std::ceil(0.99 * steps)) - 1;
    bool met =
        printFigure("step to a ready neighbour: key to paint, 99 of 100", times[at99], "ms", 16);
    met &= printFigure("step to a ready neighbour: key to paint, worst", times.back(), "ms", 40);
    return met;
}

/// The library alone, to a picture that is large enough for the screen.
double bareDecode(const QString& path, QSize size) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) std::abort();
    const QByteArray bytes = file.readAll();
    const auto eighths = static_cast<unsigned>(std::ceil(8.0 * windowSize.width() / size.width()));
    double least = std::numeric_limits<double>::infinity();
    for (int round = 0; round < 5; ++round)
        least = std::min(
            least, millisecondsOf([&] { bench::keep(bench::decodeBare(bytes, eighths).width()); }));
    return least;
}

/// Thirty times a second; answers the longest wait of the loop.
double holdKey(Bench& bench, int steps) {
    double longest = 0;
    const auto start = Clock::now();
    for (int step = 0; step < steps; ++step) {
        longest = std::max(longest, millisecondsOf([&] { bench.press(bench.nextKey()); }));
        const auto next = start + (step + 1) * std::chrono::milliseconds(33);
        longest = std::max(longest, bench.run([&] { return Clock::now() >= next; }));
    }
    return longest;
}

/// Until the picture is sharp at which the key was let go; the least of those that were not ready.
double timeToSharp(Bench& bench) {
    double least = std::numeric_limits<double>::infinity();
    for (int round = 0; round < 8; ++round) {
        const bool isReady = bench.isSharp();
        const double time = millisecondsOf([&] {
            bench.release(bench.nextKey());
            bench.run([&] { return bench.isSharp(); });
        });
        if (!isReady) least = std::min(least, time);
        bench.settle();
        holdKey(bench, 20);
    }
    return least;
}

bool measureHeldKey(Bench& bench, int steps, double bare) {
    bench.settle();
    const PBLoadImageManager::Figures before = bench.line().figures();
    PaintCount paints(bench.view());
    const double longest = holdKey(bench, steps);
    const int painted = paints.count;
    const PBLoadImageManager::Figures after = bench.line().figures();
    const double last = timeToSharp(bench);
    const auto begun = static_cast<double>(std::max<std::uint64_t>(1, after.begun - before.begun));
    // One may have begun before the haste showed.
    const double stopped = std::max(0.0, static_cast<double>(after.stopped - before.stopped) - 1);
    bool met =
        printFigure("a key held: steps without a paint", std::max(0, steps - painted), "steps", 0);
    met &= printFigure("a key held: longest wait of the loop", longest, "ms", 20);
    met &=
        printFigure("a key held: decodes stopped, of those begun", stopped / begun, "times", 0.334);
    printFigure("a key held: decodes begun", begun, "decodes");
    printFigure("a key held: sharp after it was let go", last, "ms");
    met &= printFigure("  above 1.15 times the bare decode", last - 1.15 * bare, "ms", 25);
    return met;
}

/// To photographs that nothing was loaded of.
bool measureFarSteps(Bench& bench, int steps) {
    double worst = 0;
    for (int step = 0; step < steps; ++step) {
        bench.settle();
        worst = std::max(worst, bench.untilPainted(bench.view(), [&] {
            bench.press(step % 2 == 0 ? Qt::Key_End : Qt::Key_Home);
        }));
    }
    bench.settle();
    return printFigure("step to one that is not ready: key to paint, worst", worst, "ms", 16);
}

/// The turns of the loop in which the view paints, in milliseconds, until it comes to rest.
void watchFrames(Bench& bench, const PaintCount& paints, std::vector<double>& times) {
    bench.run([&, seen = paints.count]() mutable {
        const double turn = millisecondsOf([] { QCoreApplication::processEvents(); });
        if (paints.count != std::exchange(seen, paints.count)) times.push_back(turn);
        return bench.view().isAtRest();
    });
}

bool printFrames(const char* name, std::vector<double> times) {
    if (times.empty()) return false;
    std::ranges::sort(times);
    const std::string title = name;
    bool met = printFigure((title + ": frame, median").c_str(), times[times.size() / 2], "ms", 6);
    met &= printFigure((title + ": frame, worst").c_str(), times.back(), "ms", 16);
    return met;
}

bool measureMotions(Bench& bench) {
    PBImageView& view = bench.view();
    const auto isOriginal = [&] {
        return view.isAtRest() && view.painted() == PBImageView::Painted::Original;
    };
    view.actualSize();
    bench.run(isOriginal);
    std::vector<double> frames;
    const PaintCount paints(view);
    constexpr int rounds = 12;
    for (int round = 0; round < rounds; ++round) {
        const double way = round % 2 == 0 ? 400 : -400;
        view.scrollByDelta({way, way / 2});
        watchFrames(bench, paints, frames);
    }
    const double share = paints.area / (paints.count * 1.0 * view.width() * view.height());
    bool met = printFrames("panning at 100 % of 24 megapixels", std::exchange(frames, {}));
    met &= printFigure("panning: painted anew of the view", share, "share", 0.5);
    for (int round = 0; round < rounds; ++round) {
        if (round % 4 < 2)
            view.zoomInAtPoint(QPointF(300, 200));
        else
            view.zoomOutAtPoint(QPointF(300, 200));
        watchFrames(bench, paints, frames);
    }
    met &= printFrames("zooming at 100 % of 24 megapixels", frames);
    return met;
}

} // namespace

int main(int argc, char** argv) {
    const std::span arguments(argv, static_cast<std::size_t>(argc));
    if (const auto code = codec::process::runIfDecoderProcess(arguments)) return *code;
    const QTemporaryDir folder;
    QFile screens(folder.filePath(QStringLiteral("screens.json")));
    if (!screens.open(QIODevice::WriteOnly)) std::abort();
    screens.write(QStringLiteral(R"({"screens": [{"name": "bench", "x": 0, "y": 0, "width": %1,
        "height": %2, "logicalDpi": 96, "logicalBaseDpi": 96, "dpr": 1}]})")
                      .arg(windowSize.width())
                      .arg(windowSize.height())
                      .toUtf8());
    screens.close();
    qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + screens.fileName().toLocal8Bit());
    const QApplication application(argc, argv);
    platform::MainLoop loop;
    const double scale = argc > 1 ? std::clamp(std::atof(argv[1]), 0.05, 10.0) : 1.0;
    const auto scaled = [&](int count) { return std::max(5, static_cast<int>(count * scale)); };

    bool met = true;
    {
        Bench large({4, 1, QSize(6000, 4000), 90});
        large.large().enterToLargeView({0, 0});
        large.settle();
        met &= measureMotions(large);
    }
    {
        Bench bench({60, 1, bench::twelveMegapixelPicture, 90});
        const double before = bench.residentMebibytes();
        met &= measureWays(bench);
        bench.enterAll();
        met &= measureReadySteps(bench, scaled(200));
        met &= measureFarSteps(bench, 6);
        for (int step = 0; step < scaled(500); ++step)
            bench.press(bench.nextKey());
        bench.settle();
        met &= printFigure(
            "memory after the steps, above 1.1 times what is held", bench.excessMebibytes(before),
            "MiB", 60);
        bench.large().view_ThumbnailView();
        // Pictures go on a thread of their own.
        const auto end = Clock::now() + std::chrono::seconds(3);
        bench.run([&] { return bench.residentMebibytes() - before <= 10 || Clock::now() > end; });
        met &= printFigure(
            "memory after leaving, above before", bench.residentMebibytes() - before, "MiB", 10);
    }
    const bench::PictureSet many{300, 1, bench::twelveMegapixelPicture, 90, 0, 60};
    Bench bench(many);
    bench.enterAll();
    const double bare = bareDecode(bench::filesBelow(many.folder()).first(), many.size);
    met &= measureHeldKey(bench, scaled(299), bare);
    return met ? 0 : 1;
}
