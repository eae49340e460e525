#include "support/Images.h"
#include "support/Support.h"
#include "viewer/slideshow/transitions/OffscreenOpenGL.h"
#include "viewer/slideshow/transitions/PlainPicture.h"
#include "viewer/slideshow/transitions/RasterTransitions.h"

#include <QProcess>

using support::differenceOf;

namespace {

constexpr QSize viewSize(320, 200);

/// Smooth, without two parts alike, and different in every corner.
QImage sample(int seed, QSize size = viewSize) {
    const auto wave = [](double place) {
        return static_cast<int>(127.5 + 127.5 * std::sin(place));
    };
    return support::painted(size, [&](int x, int y) {
        const double across = x * 6.0 / size.width() + seed;
        const double down = y * 4.0 / size.height() + seed;
        return qRgb(wave(across * 1.7 + down), wave(down * 2.3 - across), wave(across));
    });
}

/// The frame of a transition from the first sample to the second.
TransitionFrame frameAt(int style, double progress) {
    static const QImage from = sample(1);
    static const QImage to = sample(4);
    const auto transition = static_cast<TransitionStyle>(style);
    return {transition, progress, from, to, makeTransitionMap(transition, viewSize)};
}

TEST(RasterTransitionsTest, everyTransitionBeginsAndEndsGentlyInItsOwnWayAndIsOneInPieces) {
    std::vector<QImage> halves;
    for (int style = 0; style < transitionStyleCount; ++style) {
        const TransitionFrame frame = frameAt(style, 0);
        const auto at = [style](double progress) {
            return RasterTransitions::paintedFrame(frameAt(style, progress));
        };
        EXPECT_EQ(differenceOf(at(0), frame.from).most, 0) << style;
        EXPECT_EQ(differenceOf(at(1), frame.to).most, 0) << style;
        // Not by a jump at the very ends.
        EXPECT_LT(differenceOf(at(0.001), frame.from).mean, 1.5) << style;
        EXPECT_LT(differenceOf(at(0.999), frame.to).mean, 1.5) << style;
        for (double progress = 0; progress < 0.99; progress += 0.05)
            EXPECT_LT(differenceOf(at(progress), at(progress + 0.05)).mean, 40) << style;
        for (const QImage& other : halves)
            EXPECT_GT(differenceOf(at(0.5), other).mean, 8)
                << style << " and " << &other - &halves[0];
        halves.push_back(at(0.5));

        QImage pieces(viewSize, QImage::Format_RGB32);
        const RasterTransitions::Target target = RasterTransitions::targetOf(pieces);
        const int half = viewSize.height() / 2;
        for (const auto& [first, end] : {std::pair(half, viewSize.height()), {0, 1}, {1, half}})
            RasterTransitions::paintRows(frameAt(style, 0.37), target, first, end);
        EXPECT_EQ(pieces, at(0.37)) << style << " in pieces";
    }
}

TEST(PlainPictureTest, picturesLieInTheMiddleTurnedReducedAndNeverEnlarged) {
    QImage picture = support::filled({40, 20}, Qt::blue);
    const QRgb red = qRgb(255, 0, 0);
    const QRgb blue = qRgb(0, 0, 255);
    const QRgb black = qRgb(0, 0, 0);
    picture.setPixel(0, 0, red);
    using Row = std::tuple<double, QPoint, QPoint>;
    // Where the corner that was the upper left one comes to lie, and the last pixel opposite.
    for (const auto& [angle, corner, opposite] :
         {Row(0, {30, 20}, {69, 39}), Row(90, {59, 10}, {40, 49}), Row(-90, {40, 49}, {59, 10}),
          Row(180, {69, 39}, {30, 20})}) {
        const QImage view = plainPicture(picture, angle, {100, 60});
        const QPoint outwards((corner.x() > opposite.x()) * 2 - 1, 0);
        const std::array seen{
            view.pixel(corner), view.pixel(opposite), view.pixel(corner + outwards)};
        EXPECT_EQ(seen, (std::array{red, blue, black})) << angle;
    }
    const QImage reduced = plainPicture(picture, 90, {100, 20});
    const std::array across{reduced.pixel(44, 10), reduced.pixel(45, 19), reduced.pixel(55, 10)};
    EXPECT_EQ(across, (std::array{black, blue, black}));
    const QImage clear = support::filled({10, 10}, QColor(255, 255, 255, 0), QImage::Format_ARGB32);
    for (const QImage& nothing : {clear, QImage()})
        EXPECT_EQ(plainPicture(nothing, 0, {30, 30}), support::filled({30, 30}, Qt::black));
}

/// Runs the present test again on a display of its own.
void rerunWithDisplay() {
    QProcess server;
    server.start(u"Xvfb"_s, {u"-displayfd"_s, u"1"_s, u"-nolisten"_s, u"tcp"_s});
    while (!server.canReadLine())
        if (!server.waitForReadyRead(60'000)) GTEST_SKIP() << "there is no display server";
    QProcess self;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"DISPLAY"_s, u':' + QString::fromLatin1(server.readLine().trimmed()));
    environment.insert(u"VELMORA_ON_DISPLAY"_s, u"1"_s);
    // What the driver keeps can't be named: it is unloaded by then.
    environment.insert(
        u"ASAN_OPTIONS"_s, environment.value(u"ASAN_OPTIONS"_s) + u":detect_leaks=0"_s);
    self.setProcessEnvironment(environment);
    self.setProcessChannelMode(QProcess::ForwardedChannels);
    self.start(
        QFileInfo(u"/proc/self/exe"_s).symLinkTarget(),
        {u"--gtest_filter="_s + support::presentTest()});
    EXPECT_TRUE(self.waitForFinished(120'000) && self.exitCode() == 0);
    server.terminate();
    server.waitForFinished();
}

TEST(OpenGLTransitionsTest, shadersShowTheSameAsRowsAndThePlainPicturesAtTheEnds) {
    if (!qEnvironmentVariableIsSet("VELMORA_ON_DISPLAY")) return rerunWithDisplay();
    const auto shaders = OffscreenOpenGL::make();
    if (!shaders) GTEST_SKIP() << "no context can be had";
    for (int style = 0; style < transitionStyleCount; ++style) {
        const TransitionFrame frame = frameAt(style, 0);
        const auto at = [&](double progress) {
            return shaders->paintedFrame(frameAt(style, progress));
        };
        EXPECT_LE(differenceOf(at(0), frame.from).most, 2) << style;
        EXPECT_LE(differenceOf(at(1), frame.to).most, 2) << style;
        for (const double progress : {0.001, 0.2, 0.5, 0.8, 0.999}) {
            const QImage rows = RasterTransitions::paintedFrame(frameAt(style, progress));
            EXPECT_LT(differenceOf(at(progress), rows).mean, 1.0) << style << " at " << progress;
        }
    }
    // Other pictures of another size, and the new one as the old one of the next.
    const QSize small(200, 120);
    for (const auto& [from, to] : {std::pair(2, 3), {3, 5}, {3, 2}}) {
        TransitionFrame frame = frameAt(0, 0.25);
        frame.from = sample(from, small);
        frame.to = sample(to, small);
        const QImage rows = RasterTransitions::paintedFrame(frame);
        EXPECT_LT(differenceOf(shaders->paintedFrame(frame), rows).mean, 1.0);
    }
}

TEST(OpenGLTransitionsTest, withoutAContextThereIsNoEngineAndNoHarm) {
    if (qEnvironmentVariableIsSet("DISPLAY")) GTEST_SKIP() << "there is a display";
    EXPECT_EQ(OffscreenOpenGL::make(), nullptr);
}

} // namespace
