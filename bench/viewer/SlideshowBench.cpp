// Frames a second of each transition of the slideshow at 1920 x 1200, between two photographs of 24
// megapixels, and the longest wait of the main loop meanwhile; against a bare copy of a frame.
#include "platform/tasks/MainLoop.h"
#include "support/Ratio.h"
#include "viewer/slideshow/PBSlideshowView.h"
#include "viewer/slideshow/surfaces/RasterSurface.h"
#include "viewer/slideshow/surfaces/TransitionEngine.h"
#include "viewer/slideshow/transitions/OffscreenOpenGL.h"
#include "viewer/slideshow/transitions/PlainPicture.h"
#include "viewer/slideshow/transitions/RasterTransitions.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QTimer>

#include <cstring>

namespace {

constexpr QSize viewSize(1920, 1200);
constexpr QSize photographSize(6000, 4000);
constexpr double transitionTime = 1.0; // seconds
constexpr double leastFrames = 30;     // a second
constexpr double longestWait = 30;     // milliseconds

const char* const names[transitionStyleCount] = {
    "fade",     "move in", "push", "reveal",    "copy machine", "disintegrate",
    "dissolve", "flash",   "mod",  "page curl", "ripple",       "swipe"};

/// Not flat, and never twice the same.
QImage photograph(unsigned seed) {
    QImage image(photographSize, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            seed = seed * 1664525U + 1013904223U;
            const auto grain = static_cast<int>(seed >> 28);
            row[x] = qRgb((x / 24 + grain) & 255, (y / 16 + grain) & 255, ((x + y) / 40) & 255);
        }
    }
    return image;
}

/// Copies of a frame a second: what no way of drawing can beat.
double copiesASecond(const QImage& frame) {
    QImage copy(frame.size(), frame.format());
    constexpr int rounds = 60;
    const double time = bench::millisecondsOf([&] {
        for (int round = 0; round < rounds; ++round) {
            std::memcpy(
                copy.bits(), frame.constBits(), static_cast<std::size_t>(frame.sizeInBytes()));
            bench::keep(copy.constBits());
        }
    });
    return rounds / time * 1000;
}

struct Seen {
    double frames = 0; // a second
    double wait = 0;   // milliseconds
};

/// One transition in a window, as the program does it.
Seen watch(PBSlideshowView& view, const QImage& picture) {
    const auto& surface = dynamic_cast<RasterSurface&>(view.surface());
    const int before = surface.frameCount();
    double wait = 0;
    QEventLoop loop;
    QElapsedTimer sinceFirst;
    QElapsedTimer sinceBeat;
    QTimer beat;
    QObject::connect(&beat, &QTimer::timeout, &loop, [&] {
        if (!sinceFirst.isValid() && surface.frameCount() > before) sinceFirst.start();
        if (sinceBeat.isValid())
            wait = std::max(wait, static_cast<double>(sinceBeat.nsecsElapsed()) / 1e6);
        sinceBeat.start();
    });
    beat.start(1);
    view.setAnimationDidStop([&](bool) { loop.quit(); });
    view.transitionToImage(picture, 0);
    loop.exec();
    const int frames = surface.frameCount() - before;
    return {frames / (static_cast<double>(sinceFirst.nsecsElapsed()) / 1e9), wait};
}

bool measureRaster(const QImage& one, const QImage& other) {
    PBSlideshowView view(TransitionEngine{});
    view.resize(viewSize);
    view.show();
    view.setTransitionDuration(transitionTime);
    static_cast<void>(watch(view, one));
    bool isMet = true;
    for (int style = 0; style < transitionStyleCount; ++style) {
        view.setTransitionStyle(static_cast<TransitionStyle>(style));
        const Seen seen = watch(view, style % 2 == 0 ? other : one);
        const std::string name = std::string("raster, ") + names[style];
        isMet &= bench::printFigure(
            name.c_str(), seen.frames, "frames/s", leastFrames, bench::Bound::AtLeast);
        isMet &= bench::printFigure(
            (name + ": longest wait of the main loop").c_str(), seen.wait, "ms", longestWait);
    }
    return isMet;
}

void recordOpenGL(const QImage& from, const QImage& to) {
    const auto shaders = OffscreenOpenGL::make();
    if (!shaders) {
        std::printf("OpenGL: no context can be had here\n");
        return;
    }
    std::printf("OpenGL by %s\n", qPrintable(shaders->renderer()));
    for (int style = 0; style < transitionStyleCount; ++style) {
        const auto transition = static_cast<TransitionStyle>(style);
        TransitionFrame frame{transition, 0.01, from, to, makeTransitionMap(transition, viewSize)};
        shaders->draw(frame);
        constexpr int frames = 20;
        const double time = bench::millisecondsOf([&] {
            for (int i = 1; i <= frames; ++i) {
                frame.progress = i / (frames + 1.0);
                shaders->draw(frame);
            }
        });
        bench::printFigure(
            (std::string("OpenGL, ") + names[style]).c_str(), frames / time * 1000, "frames/s");
    }
}

} // namespace

int main(int argc, char** argv) {
    if (!qEnvironmentVariableIsSet("DISPLAY") && !qEnvironmentVariableIsSet("WAYLAND_DISPLAY"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    platform::MainLoop loop;
    const QImage one = photograph(1);
    const QImage other = photograph(2).mirrored(true, false);
    const QImage from = plainPicture(one, 0, viewSize);
    const QImage to = plainPicture(other, 0, viewSize);
    bench::printFigure("floor: copies of a frame", copiesASecond(from), "frames/s");
    recordOpenGL(from, to);
    return measureRaster(one, other) ? 0 : 1;
}
