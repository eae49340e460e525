#include "viewer/feed/DisplayPictureFeed.h"

#include "codec/pixels/ReducedImage.h"
#include "support/Images.h"
#include "support/Support.h"

#include <complex>
#include <numbers>

using support::filled;
using support::painted;
using support::spinUntil;

namespace {

QImage noise(QSize size, QImage::Format format, unsigned seed) {
    std::mt19937 random(seed);
    const auto colorAt = [&](int x, int) {
        return static_cast<QRgb>(random()) | (x % 3 == 0 ? 0xff000000U : 0U);
    };
    return painted(size, colorAt, QImage::Format_ARGB32).convertToFormat(format);
}

std::shared_ptr<const PBImages> imagesOf(const QImage& image) {
    return std::make_shared<PBImages>(std::vector{PBImage(image)});
}

/// A picture at a place on the device: turned clockwise by quarters, so many device pixels for each
/// of its own, its corner there.
DisplayState
placed(const QImage& image, QSizeF fileSize, int quarters, double scale, QPointF corner) {
    const auto transform =
        QTransform::fromScale(scale, scale) * QTransform().rotate(90.0 * quarters);
    const QRectF frame = transform.mapRect(QRectF(QPointF(0, 0), fileSize));
    const QTransform moved =
        transform * QTransform::fromTranslate(corner.x() - frame.left(), corner.y() - frame.top());
    return {imagesOf(image), 0, fileSize, moved, QRect(0, 0, 40, 25)};
}

using Channels = std::array<double, 4>;

Channels channelsAt(const QImage& image, int x, int y) {
    const QRgb pixel = reinterpret_cast<const QRgb*>(image.constScanLine(y))[x];
    return {
        double(qBlue(pixel)), double(qGreen(pixel)), double(qRed(pixel)), double(qAlpha(pixel))};
}

/// What a device pixel should be where a picture is not reduced: many samples of a square as wide
/// as a pixel of the picture, round the middle; or of one point.
Channels covered(const QImage& image, const DisplayState& state, QPoint device, bool isSharp) {
    const QSizeF& size = state.imageSize;
    const QTransform toPicture =
        state.toDevicePixels.inverted() *
        QTransform::fromScale(image.width() / size.width(), image.height() / size.height());
    Channels all{};
    constexpr int samples = 16;
    for (int j = 0; j < samples; ++j)
        for (int i = 0; i < samples; ++i) {
            QPointF place = toPicture.map(QPointF(device) + QPointF(0.5, 0.5));
            if (!isSharp) place += QPointF((i + 0.5) / samples - 0.5, (j + 0.5) / samples - 0.5);
            const Channels sample = channelsAt(
                image, std::clamp(int(std::floor(place.x())), 0, image.width() - 1),
                std::clamp(int(std::floor(place.y())), 0, image.height() - 1));
            for (std::size_t channel = 0; channel < 4; ++channel)
                all[channel] += sample[channel] / (samples * samples);
        }
    return all;
}

double worstDifference(const DisplayPicture& made, const QImage& image, bool isSharp) {
    double worst = 0;
    for (int y = 0; y < made.rect.height(); ++y)
        for (int x = 0; x < made.rect.width(); ++x) {
            const Channels found = channelsAt(made.image, x, y);
            const Channels expected =
                covered(image, made.state, made.rect.topLeft() + QPoint(x, y), isSharp);
            for (std::size_t channel = 0; channel < 4; ++channel)
                worst = std::max(worst, std::abs(found[channel] - expected[channel]));
        }
    return worst;
}

/// Between the dark and the light stripes; nothing of them is cut off at black or white.
constexpr int contrast = 0x60;

/// Upright stripes, so many pixels dark and so many light, each of them `pixel` pixels wide.
QImage stripes(QSize size, int width, int pixel) {
    return painted(
        size, [&](int x, int) { return x / pixel / width % 2 == 0 ? 0xff505050U : 0xffb0b0b0U; });
}

/// The strongest of what a row of pixels shows beyond its mean and the waves that it may show (in
/// cycles a pixel), as a part of the contrast: what is left of each other wave.
double unevenness(const QImage& image, const std::vector<double>& waves) {
    constexpr int border = 8;
    const int count = image.width() - 2 * border;
    double strongest = 0;
    for (int tried = 1; tried < count / 2; ++tried) {
        const double wave = double(tried) / count;
        const bool mayBe = std::ranges::any_of(
            waves, [&](double known) { return std::abs(known - wave) < 4.0 / count; });
        if (mayBe) continue;
        std::complex<double> sum;
        double all = 0;
        for (int x = 0; x < count; ++x) {
            const double window = 0.5 - 0.5 * std::cos(2 * std::numbers::pi * (x + 0.5) / count);
            all += window;
            sum += window * qRed(image.pixel(x + border, image.height() / 2)) *
                   std::polar(1.0, 2 * std::numbers::pi * wave * x);
        }
        // Beside the mean, which the window spreads over its neighbours.
        if (tried > 2) strongest = std::max(strongest, 4 * std::abs(sum) / all / contrast);
    }
    return strongest;
}

} // namespace

TEST(DisplayPictureTest, EachDevicePixelIsWhatItCovers) {
    // The scale is that of the file, in device pixels.
    const std::tuple<QSize, QSizeF, double, bool> cases[] = {
        {{90, 70}, {90, 70}, 1.0, true},  {{20, 16}, {20, 16}, 1.7, false},
        {{20, 16}, {20, 16}, 2.0, false}, {{20, 16}, {20, 16}, 3.4, true},
        {{9, 7}, {90, 70}, 3.0, false}, // a small version
        {{1, 1}, {1, 1}, 20.0, true}};
    for (const auto& [version, file, scale, isSharp] : cases) {
        for (int quarters = 0; quarters < 4; ++quarters) {
            const auto format =
                quarters % 2 == 0 ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
            const QImage image = noise(version, format, unsigned(quarters));
            const DisplayState state = placed(image, file, quarters, scale, {-7, 3});
            const DisplayPicture made = resampledPicture(state);
            const QRectF whole = state.toDevicePixels.mapRect(QRectF(QPointF(0, 0), file));
            EXPECT_EQ(made.rect, whole.toRect().intersected(state.visible));
            ASSERT_EQ(made.image.size(), made.rect.size());
            EXPECT_EQ(made.image.format(), format);
            EXPECT_LE(worstDifference(made, image, isSharp), isSharp ? 1e-6 : 14)
                << version.width() << " at " << scale << ", " << quarters;
        }
    }
}

TEST(DisplayPictureTest, AReducedPictureKeepsEvenColoursBoundsAndPlaces) {
    for (const double scale : {0.02, 0.37, 0.86, 0.99}) {
        for (int quarters = 0; quarters < 4; ++quarters) {
            // Noise whose colours stay within its alpha, and one colour, which stays what it is.
            const QImage mixed = noise({90, 70}, QImage::Format_ARGB32_Premultiplied, 5);
            const QImage made =
                resampledPicture(placed(mixed, {90, 70}, quarters, scale, {0, 0})).image;
            for (int y = 0; y < made.height(); ++y)
                for (int x = 0; x < made.width(); ++x) {
                    const QRgb pixel = reinterpret_cast<const QRgb*>(made.constScanLine(y))[x];
                    ASSERT_LE(std::max({qRed(pixel), qGreen(pixel), qBlue(pixel)}), qAlpha(pixel));
                }
            const QColor orange(255, 128, 3);
            const DisplayPicture same = resampledPicture(
                placed(filled({90, 70}, orange), {90, 70}, quarters, scale, {-7, 3}));
            EXPECT_EQ(same.image, filled(same.image.size(), orange)) << scale;

            // A gentle slope is where it belongs, on its side and upside down, too.
            const QImage slope =
                painted({90, 70}, [](int x, int y) { return qRgb(2 * x + y, 2 * x, 3 * y); });
            const DisplayState state = placed(slope, {90, 70}, quarters, scale, {-3.4, 2.3});
            const DisplayPicture sloping = resampledPicture(state);
            const double margin = 4 / scale; // beyond it the border is repeated
            const QRectF inner(margin, margin, 90 - 2 * margin, 70 - 2 * margin);
            const QTransform toPicture = state.toDevicePixels.inverted();
            for (int y = 0; y < sloping.rect.height(); ++y)
                for (int x = 0; x < sloping.rect.width(); ++x) {
                    const QPoint device = sloping.rect.topLeft() + QPoint(x, y);
                    const QPointF place = toPicture.map(QPointF(device) + QPointF(0.5, 0.5));
                    if (!inner.contains(place)) continue;
                    const double red = 2 * (place.x() - 0.5) + place.y() - 0.5;
                    ASSERT_NEAR(qRed(sloping.image.pixel(x, y)), red, 1) << scale << quarters;
                }
        }
    }
}

TEST(DisplayPictureTest, OnlyWhatIsVisibleIsMade) {
    const QImage image = noise({300, 200}, QImage::Format_RGB32, 1);
    DisplayState state = placed(image, {3000, 2000}, 1, 0.5, {-400, -300});
    state.visible = QRect(10, 20, 200, 150);
    const DisplayPicture part = resampledPicture(state);
    EXPECT_EQ(part.rect, state.visible);
    DisplayState wider = state;
    wider.visible = QRect(-100, -100, 500, 400);
    const DisplayPicture more = resampledPicture(wider);
    EXPECT_EQ(more.image.copy(part.rect.translated(-more.rect.topLeft())), part.image);

    state.visible = QRect(5000, 0, 10, 10); // beside the picture
    EXPECT_TRUE(resampledPicture(state).image.isNull());
    state = placed(image, {300, 200}, 0, 1, {0, 0});
    state.toDevicePixels.rotate(10);
    EXPECT_FALSE(visibleRect(state));
    EXPECT_TRUE(resampledPicture(state).image.isNull());
    int rows = 0;
    const auto stops = [&] { return ++rows > 5; };
    EXPECT_TRUE(resampledPicture(placed(image, {300, 200}, 0, 1, {0, 0}), stops).image.isNull());
    EXPECT_EQ(rows, 6);
}

TEST(DisplayPictureTest, FineStripesComeOutEven) {
    // Whole, or by way of a version that was reduced before; at twice the size each pixel is two.
    for (const double version : {1.0, 0.95, 0.64}) {
        for (const double scale :
             {0.9, 0.85, 0.75, 2.0 / 3, 0.6, 0.5, 0.45, 0.37, 0.3, 0.25, 0.2}) {
            for (const auto& [width, pixel] :
                 {std::pair(1, 1), {2, 1}, {3, 1}, {1, 2}, {2, 2}, {3, 2}}) {
                const QImage image = stripes({500, 24}, width, pixel);
                const QSize size(int(500 * version), int(24 * version));
                const double reduced = scale * size.width() / 500;
                DisplayState state = placed(
                    codec::reduceImage(image, size, codec::Reduction::Filtered), {500, 24}, 0,
                    reduced, {0.3, 0.2});
                state.visible = QRect(0, 0, int(500 * reduced), int(24 * reduced));
                std::vector<double> waves;
                for (int wave = 1; wave < 2 * width * pixel; wave += 2)
                    waves.push_back(wave / (2.0 * width * pixel) / reduced);
                // What is too fine by less than an eighth still shows as single pixels.
                const bool isJustTooFine = waves.front() > 0.5 && waves.front() < 0.563;
                const double most = isJustTooFine ? 0.18 : 0.08;
                EXPECT_LE(unevenness(resampledPicture(state).image, waves), most)
                    << width << " x " << pixel << " by " << version << ", " << scale;
            }
        }
    }
}

TEST(DisplayPictureFeedTest, OnlyTheStateWantedLastIsMadeAndNothingIsKeptAlive) {
    int ready = 0;
    auto feed = std::make_unique<DisplayPictureFeed>([&] { ++ready; });
    const QImage small = noise({30, 20}, QImage::Format_RGB32, 1);
    DisplayState state = placed(small, {30, 20}, 0, 1, {0, 0});
    ASSERT_NE(feed->pictureFor(state), nullptr); // takes no time
    EXPECT_EQ(feed->pictureFor(state)->image, small);

    const QImage large = filled({2400, 1600}, Qt::green);
    DisplayState wanted = placed(large, {2400, 1600}, 0, 0.9, {0, 0});
    wanted.visible = QRect(0, 0, 2000, 1400);
    DisplayState last = wanted;
    EXPECT_EQ(feed->pictureFor(wanted), nullptr);
    EXPECT_EQ(feed->pictureFor(wanted), nullptr);
    last.visible = QRect(0, 0, 1990, 1400);
    EXPECT_EQ(feed->pictureFor(last), nullptr);
    ASSERT_TRUE(spinUntil([&] { return ready > 0; }));
    ASSERT_NE(feed->pictureFor(last), nullptr);
    EXPECT_EQ(feed->pictureFor(last)->rect, last.visible);
    EXPECT_FALSE(feed->isBusy());
    EXPECT_EQ(ready, 1);

    // Few pixels of a large picture take long, too.
    DisplayState reduced = placed(large, {2400, 1600}, 0, 0.05, {0, 0});
    reduced.visible = wanted.visible;
    EXPECT_EQ(feed->pictureFor(reduced), nullptr);
    ASSERT_TRUE(spinUntil([&] { return ready == 2; }));
    reduced.images.reset();
    ASSERT_TRUE(feed->pictureFor(wanted) == nullptr && spinUntil([&] { return ready == 3; }));
    last.images = wanted.images;

    const std::weak_ptr watched = last.images;
    last.images.reset();
    wanted.images.reset();
    EXPECT_TRUE(spinUntil([&] { return watched.expired(); }));
    wanted.images = imagesOf(large);
    EXPECT_EQ(feed->pictureFor(wanted), nullptr); // another picture at that place
    feed.reset();
    QCoreApplication::processEvents();
    EXPECT_EQ(ready, 3);
}

TEST(DisplayPictureFeedTest, AFrameStaysUntilTheNextIsMadeAndNoneIsStoppedForTheNext) {
    int ready = 0;
    DisplayPictureFeed feed([&] { ++ready; });
    std::vector<PBImage> frames;
    for (const Qt::GlobalColor color : {Qt::red, Qt::green, Qt::blue})
        frames.emplace_back(filled({1200, 800}, color), 0.1);
    DisplayState state = placed(frames.front().image(), {1200, 800}, 0, 0.9, {0, 0});
    state.images = std::make_shared<PBImages>(frames, true);
    state.visible = QRect(0, 0, 1080, 720);
    const auto colorOf = [&](std::size_t frame) {
        state.frame = frame;
        const DisplayPicture* picture = feed.pictureFor(state);
        return picture ? picture->image.pixelColor(9, 9) : QColor();
    };
    EXPECT_FALSE(colorOf(0).isValid());
    ASSERT_TRUE(spinUntil([&] { return ready == 1; }));
    EXPECT_EQ(colorOf(1), QColor(Qt::red));
    EXPECT_EQ(colorOf(2), QColor(Qt::red)); // comes before the one in the middle is made
    ASSERT_TRUE(spinUntil([&] { return ready == 2; }));
    EXPECT_EQ(colorOf(2), QColor(Qt::green));
    ASSERT_TRUE(spinUntil([&] { return ready == 3; }));
    EXPECT_EQ(colorOf(2), QColor(Qt::blue));
    EXPECT_EQ(colorOf(0), QColor(Qt::blue));
    state.visible.setWidth(1070);
    EXPECT_FALSE(colorOf(0).isValid()) << "another place";
}
