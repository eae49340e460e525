#include "viewer/painting/ImagePainter.h"
#include "support/Images.h"
#include "support/Support.h"
#include "viewer/state/FramePlayer.h"

#include <QPainter>

namespace {

/// Red, green, blue and white: of the corners, from the top left clockwise.
constexpr std::array colors{0xffff0000U, 0xff00ff00U, 0xff0000ffU, 0xffffffffU};

QImage corners(QSize size) {
    return support::painted(size, [size](int x, int y) {
        const bool isRight = x >= size.width() / 2;
        const bool isLower = y >= size.height() / 2;
        return colors[static_cast<std::size_t>(isLower ? 3 - isRight : isRight)];
    });
}

/// What is seen on a view of 200 x 100 points at a place of its window.
struct Painted {
    Painted(const ImageScene& scene, double ratio)
        : image(support::filled((QSizeF(200, 100) * ratio).toSize(), Qt::magenta)) {
        image.setDevicePixelRatio(ratio);
        QPainter painter(&image);
        ImagePainter::paint(painter, scene, QRectF(0, 0, 200, 100), QFont());
    }
    QRgb at(int x, int y) const { return image.pixel(x, y); }
    QImage image;
};

ImageScene sceneOf(const QImage& image, double ratio, double angle) {
    ImageScene scene;
    scene.placement = ImagePlacement::fittedIn(
        ImageViewport(QSizeF(200, 100), ratio), QSizeF(image.size()), angle);
    scene.picture = {image, QSizeF(image.size()), angle};
    return scene;
}

} // namespace

TEST(ImagePainterTest, cornersLieOnDevicePixelsAtEachTurnAndRatio) {
    const QRgb ground = ImagePainter::groundColor().rgb();
    for (const double ratio : {1.0, 1.25, 2.0}) {
        for (int turn = 0; turn < 4; ++turn) {
            // Small enough not to be scaled at any ratio: pixels are the device's.
            const QImage image = corners({60, 40});
            const ImageScene scene = sceneOf(image, ratio, 90.0 * turn);
            const Painted painted(scene, ratio);
            const QSize size = turn % 2 == 0 ? QSize(60, 40) : QSize(40, 60);
            const std::string name = std::to_string(ratio) + " " + std::to_string(turn);
            QRect seen;
            for (int y = 0; y < painted.image.height(); ++y)
                for (int x = 0; x < painted.image.width(); ++x)
                    if (painted.at(x, y) != ground) seen |= QRect(x, y, 1, 1);
            EXPECT_EQ(seen.size(), size) << name;
            const QPoint offCentre = seen.center() - painted.image.rect().center();
            EXPECT_LE(offCentre.manhattanLength(), 2) << name;
            const QPoint inside[] = {
                seen.topLeft(), seen.topRight(), seen.bottomRight(), seen.bottomLeft()};
            for (int corner = 0; corner < 4; ++corner)
                EXPECT_EQ(
                    painted.image.pixel(inside[corner]),
                    colors.at(static_cast<std::size_t>(corner - turn + 4) % 4))
                    << name << " corner " << corner;
        }
    }
}

TEST(ImagePainterTest, whatIsResampledForTheDeviceIsPaintedPixelForPixelInPlaceOfThePicture) {
    for (const double ratio : {1.0, 1.25, 2.0}) {
        ImageScene scene = sceneOf(corners({600, 400}), ratio, 0);
        const auto images =
            std::make_shared<PBImages>(std::vector<PBImage>{PBImage(scene.picture->image)}, false);
        DisplayPicture display;
        display.state = ImagePainter::displayStateOf(scene.placement, images, 0);
        display.rect = visibleRect(display.state).value();
        display.image = support::painted(
            display.rect.size(), [](int x, int y) { return qRgb(x % 256, y, (x + y) % 7 * 30); });
        scene.display = &display;
        EXPECT_EQ(Painted(scene, ratio).image.copy(display.rect), display.image) << ratio;
    }
}

TEST(ImagePainterTest, transparentPicturesLieOnQuietChequersThatTurnAndZoomDoNotBlur) {
    const QImage clear =
        support::filled({60, 40}, Qt::transparent, QImage::Format_ARGB32_Premultiplied);
    const Painted painted(sceneOf(clear, 1, 0), 1);
    std::set<QRgb> seen;
    for (int x = 70; x < 130; ++x)
        seen.insert(painted.at(x, 50));
    EXPECT_EQ(seen.size(), 2);
    for (const QRgb color : seen) {
        EXPECT_TRUE(qIsGray(color) && qGray(color) < 128) << color;
        EXPECT_GT(qGray(color), ImagePainter::groundColor().red());
    }
    EXPECT_EQ(painted.at(69, 50), ImagePainter::groundColor().rgb());
    EXPECT_NE(painted.at(70, 30), painted.at(78, 30)); // squares of 8, from the picture's corner
    EXPECT_EQ(painted.at(70, 30), painted.at(77, 37));
}

TEST(ImagePainterTest, aNeighbourEmergesAtItsPlaceAsThePictureIsPulledAway) {
    ImageScene scene = sceneOf(corners({200, 100}), 1, 0);
    scene.neighbour = {support::filled({60, 40}, Qt::white), QSizeF(60, 40), 90};
    int former = 0;
    for (const int offset : {150, 199, 400}) {
        scene.placement.setSwapOffset(offset);
        const Painted painted(scene, 1);
        const int level = qGray(painted.at(100, 25)); // it stands upright there
        EXPECT_GT(level, former) << offset;
        former = level;
        EXPECT_EQ(painted.at(75, 50), ImagePainter::groundColor().rgb()) << offset;
    }
    EXPECT_EQ(former, 255);
}

TEST(ImagePainterTest, aVersionOfAnotherShapeIsNotDistorted) {
    ImageScene scene = sceneOf(corners({200, 100}), 1, 0);
    scene.picture->image = support::filled({40, 40}, Qt::white);
    const Painted painted(scene, 1);
    EXPECT_EQ(painted.at(45, 50), ImagePainter::groundColor().rgb());
    EXPECT_EQ(painted.at(55, 50), QColor(Qt::white).rgb());
    EXPECT_EQ(ImagePainter::coveredRect({20, 10}, {4000, 1990}), QRectF(0, 0, 4000, 1990));
}

TEST(ImagePainterTest, aMessageIsOneLineInTheMiddleAlsoOverAPicture) {
    for (const bool hasPicture : {false, true}) {
        ImageScene scene = sceneOf(corners({200, 100}), 1, 0);
        if (!hasPicture) scene.picture.reset();
        const QImage without = Painted(scene, 1).image;
        scene.message = u"A text that is far too long for a view as narrow as this one is"_s;
        const QImage with = Painted(scene, 1).image;
        std::vector<int> rows;
        for (int y = 0; y < 100; ++y)
            if (with.copy(0, y, 200, 1) != without.copy(0, y, 200, 1)) rows.push_back(y);
        ASSERT_FALSE(rows.empty());
        EXPECT_GE(rows.front(), 20);
        EXPECT_LE(rows.back() - rows.front(), 40);
        EXPECT_EQ(with.copy(0, 0, 5, 100), without.copy(0, 0, 5, 100));
    }
}

TEST(FramePlayerTest, framesPlayInTheirRhythmAndWaitForWhatIsNotThere) {
    double now = 10;
    FramePlayer player([&now] { return now; });
    std::set<std::size_t> ready{0, 1};
    const FramePlayer::Frames frames{
        .count = 3,
        .delayTimeAtIndex = [](std::size_t index) { return index == 0 ? 0.01 : 0.2; },
        .isReady = [&ready](std::size_t index) { return ready.contains(index); }};
    EXPECT_FALSE(FramePlayer::Frames{}.canPlay());
    player.startPlayTimer({});
    EXPECT_FALSE(player.nextTime());
    using Row = std::tuple<double, bool, std::size_t, double>;
    for (const auto& [time, isNext, index, nextTime] : {
             Row(10, false, 0, 10.1), // too short to be meant
             Row(10.05, false, 0, 10.1),
             Row(10.13, true, 1, 10.3), // a little late: the rhythm stays
             Row(10.3, false, 1, 10.32), Row(11, true, 2, 11.2),
             Row(20, true, 0, 20.1), // far behind: nothing is hurried through
         }) {
        now = time;
        if (now == 11) ready.insert(2);
        player.startPlayTimer(frames);
        EXPECT_EQ(player.playTimerMethod(frames), isNext) << time;
        EXPECT_EQ(player.indexOfImages(), index) << time;
        EXPECT_NEAR(player.nextTime().value(), nextTime, 1e-9) << time;
    }
    now = 21;
    EXPECT_FALSE(player.playTimerMethod({})); // the version shown now does not play
    EXPECT_FALSE(player.nextTime());
    player.stopPlayTimer();
    EXPECT_EQ(player.indexOfImages(), 0);
}
