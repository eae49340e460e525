#include "viewer/feed/DisplayPictureFeed.h"

#include "support/Support.h"

using support::spinUntil;

namespace {

QImage noise(QSize size, QImage::Format format, unsigned seed) {
    std::mt19937 random(seed);
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, static_cast<QRgb>(random()) | (x % 3 == 0 ? 0xff000000U : 0U));
    return image.convertToFormat(format);
}

std::shared_ptr<const PBImages> imagesOf(const QImage& image) {
    return std::make_shared<PBImages>(std::vector{PBImage(image)});
}

/// A picture at a place on the device: turned clockwise by quarters, so many device pixels for each
/// of its own, its corner there.
DisplayState
placed(const QImage& image, QSizeF fileSize, int quarters, double scale, QPointF corner) {
    QTransform transform;
    transform.rotate(90.0 * quarters);
    transform.scale(scale, scale);
    const QRectF frame = transform.mapRect(QRectF(QPointF(0, 0), fileSize));
    const QTransform moved =
        transform * QTransform::fromTranslate(corner.x() - frame.left(), corner.y() - frame.top());
    return {imagesOf(image), 0, fileSize, moved, QRect(0, 0, 40, 25)};
}

using Channels = std::array<double, 4>;

/// What a device pixel should be: many samples of what it covers.
Channels covered(const QImage& image, const DisplayState& state, QPoint device, bool isSharp) {
    const QTransform toPicture =
        (QTransform::fromScale(
             state.imageSize.width() / image.width(), state.imageSize.height() / image.height()) *
         state.toDevicePixels)
            .inverted();
    const auto channelsAt = [&](int x, int y) {
        const QRgb pixel = reinterpret_cast<const QRgb*>(image.constScanLine(
            std::clamp(y, 0, image.height() - 1)))[std::clamp(x, 0, image.width() - 1)];
        return Channels{
            double(qBlue(pixel)), double(qGreen(pixel)), double(qRed(pixel)),
            double(qAlpha(pixel))};
    };
    const double pixels = 1 / std::sqrt(std::abs(toPicture.determinant()));
    Channels all{};
    constexpr int samples = 16;
    for (int j = 0; j < samples; ++j)
        for (int i = 0; i < samples; ++i) {
            QPointF place = toPicture.map(
                QPointF(device) +
                QPointF(isSharp ? 0.5 : (i + 0.5) / samples, isSharp ? 0.5 : (j + 0.5) / samples));
            if (!isSharp && pixels >= 1) // a square as wide as a pixel, round the middle
                place = toPicture.map(QPointF(device) + QPointF(0.5, 0.5)) +
                        QPointF((i + 0.5) / samples - 0.5, (j + 0.5) / samples - 0.5);
            const Channels sample =
                channelsAt(int(std::floor(place.x())), int(std::floor(place.y())));
            for (std::size_t channel = 0; channel < 4; ++channel)
                all[channel] += sample[channel] / (samples * samples);
        }
    return all;
}

double worstDifference(
    const DisplayPicture& made, const QImage& image, const DisplayState& state, bool isSharp) {
    double worst = 0;
    for (int y = 0; y < made.rect.height(); ++y)
        for (int x = 0; x < made.rect.width(); ++x) {
            const QRgb pixel = reinterpret_cast<const QRgb*>(made.image.constScanLine(y))[x];
            const Channels found{
                double(qBlue(pixel)), double(qGreen(pixel)), double(qRed(pixel)),
                double(qAlpha(pixel))};
            const Channels expected =
                covered(image, state, made.rect.topLeft() + QPoint(x, y), isSharp);
            for (std::size_t channel = 0; channel < 4; ++channel)
                worst = std::max(worst, std::abs(found[channel] - expected[channel]));
        }
    return worst;
}

} // namespace

TEST(DisplayPictureTest, EachDevicePixelIsWhatItCovers) {
    const struct {
        QSize version;
        QSizeF file;
        double scale; ///< device pixels for each of the file
        bool isSharp;
    } cases[] = {
        {{90, 70}, {90, 70}, 0.37, false},  {{90, 70}, {90, 70}, 0.99, false},
        {{90, 70}, {90, 70}, 1.0, true},    {{20, 16}, {20, 16}, 1.7, false},
        {{20, 16}, {20, 16}, 2.0, false},   {{20, 16}, {20, 16}, 3.4, true},
        {{45, 35}, {90, 70}, 0.37, false},  {{9, 7}, {90, 70}, 3.0, false}, // a small version
        {{300, 60}, {300, 60}, 0.2, false}, {{1, 1}, {1, 1}, 20.0, true}};
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
            EXPECT_LE(worstDifference(made, image, state, isSharp), isSharp ? 1e-6 : 14)
                << version.width() << " at " << scale << ", " << quarters;
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
    EXPECT_TRUE(resampledPicture(placed(image, {300, 200}, 0, 1, {0, 0}), [&] {
                    return ++rows > 5;
                }).image.isNull());
    EXPECT_EQ(rows, 6);
}

TEST(DisplayPictureTest, FineStripesComeOutEven) {
    QImage stripes(1000, 100, QImage::Format_RGB32);
    for (int y = 0; y < 100; ++y)
        for (int x = 0; x < 1000; ++x)
            stripes.setPixel(x, y, x % 2 == 0 ? 0xff000000U : 0xffffffffU);
    DisplayState state = placed(stripes, {1000, 100}, 0, 0.13, {0, 0});
    state.visible = QRect(0, 0, 130, 13);
    const QImage made = resampledPicture(state).image;
    int darkest = 255;
    int brightest = 0;
    for (int x = 0; x < made.width(); ++x) {
        darkest = std::min(darkest, qRed(made.pixel(x, 6)));
        brightest = std::max(brightest, qRed(made.pixel(x, 6)));
    }
    EXPECT_LE(brightest - darkest, 34); // an eighth of a pixel more or less
}

TEST(DisplayPictureFeedTest, OnlyTheStateWantedLastIsMadeAndNothingIsKeptAlive) {
    int ready = 0;
    auto feed = std::make_unique<DisplayPictureFeed>([&] { ++ready; });
    const QImage small = noise({30, 20}, QImage::Format_RGB32, 1);
    DisplayState state = placed(small, {30, 20}, 0, 1, {0, 0});
    ASSERT_NE(feed->pictureFor(state), nullptr); // takes no time
    EXPECT_EQ(feed->pictureFor(state)->image, small);

    QImage large(2400, 1600, QImage::Format_RGB32);
    large.fill(Qt::green);
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
