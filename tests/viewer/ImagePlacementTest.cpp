#include "viewer/geometry/ImagePlacement.h"
#include "viewer/geometry/ImageTransform.h"
#include "viewer/geometry/ZoomScales.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

ImagePlacement placementOf(
    const QSizeF& imageSize, const ImageViewport& viewport, double pixelScale, double angle = 0) {
    ImagePlacement placement;
    placement.setViewport(viewport);
    placement.setImageSize(imageSize);
    placement.setAngle(angle);
    placement.setPixelScale(pixelScale);
    placement.centerAnchor();
    return placement;
}

double distance(const QPointF& one, const QPointF& other) {
    return std::hypot(one.x() - other.x(), one.y() - other.y());
}

/// How far the point is from the next device pixel of the window, on the worse axis.
double offGrid(const QPointF& point, double ratio, const QPointF& origin) {
    const QPointF pixels = (point + origin) * ratio;
    return std::max(
        std::abs(pixels.x() - std::rint(pixels.x())), std::abs(pixels.y() - std::rint(pixels.y())));
}

TEST(ImageTransformTest, anglesAreQuarterTurnsWithMinusNinety) {
    for (const auto& [angle, normal] :
         {std::pair(-90, -90), {450, 90}, {360, 0}, {-270, 90}, {270, -90}, {180, 180}, {45, 45}})
        EXPECT_EQ(PBUtilities::normalizeAngle(angle), normal) << angle;
    EXPECT_EQ(PBUtilities::normalizeAngle(-1e-20), 0);
}

TEST(ImageTransformTest, theImageAnchorLandsOnTheDrawAnchorAndPositiveAnglesTurnClockwise) {
    const QPointF image(30, 20), draw(400, 300);
    for (const double angle : {0.0, 90.0, 180.0, -90.0, 33.0}) {
        const QTransform transform = PBUtilities::transformWithImageAnchor(image, draw, angle, 2.0);
        EXPECT_LT(distance(transform.map(image), draw), 1e-9);
        EXPECT_NEAR(distance(transform.map(image + QPointF(3, 4)), draw), 10, 1e-9);
    }
    const QTransform quarter = PBUtilities::transformWithImageAnchor(image, draw, 90, 2.0);
    EXPECT_EQ(quarter.map(image + QPointF(10, 0)), draw + QPointF(0, 20));
    EXPECT_EQ(
        PBUtilities::imageFrameWithTransform(quarter, QSizeF(100, 50)),
        QRectF(400 - 60, 300 - 60, 100, 200));
}

TEST(ImageTransformTest, theTurnedBoundsAreWhatFits) {
    const QSizeF photograph(4000, 3000), view(800, 600);
    for (const auto& [angle, size, small, scale] :
         {std::tuple(0.0, photograph, false, 0.2),
          {90.0, photograph, false, 0.15},
          {45.0, photograph, false, 600 / (7000 * std::sqrt(0.5))},
          {0.0, QSizeF(100, 100), false, 1.0},
          {0.0, QSizeF(100, 100), true, 6.0},
          {0.0, QSizeF(0, 0), true, 1.0},
          {90.0, QSizeF(100000, 1), false, 0.006}})
        EXPECT_DOUBLE_EQ(PBUtilities::fitInScaleWithAngle(angle, size, view, small), scale);
}

TEST(ImagePlacementTest, whateverIsAnchoredStaysThereAtEveryScaleAndAngle) {
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        for (const double angle : {0.0, 90.0, 180.0, -90.0, 37.0}) {
            ImagePlacement placement =
                placementOf({4000, 3000}, ImageViewport({801, 603}, ratio, {37, 11}), 1.0, angle);
            for (const QPointF& pointer : {QPointF(401, 300), QPointF(250, 199.4)}) {
                const QPointF seen = placement.pointToImage(pointer);
                placement.anchorAt(pointer);
                EXPECT_LT(distance(placement.pointToImage(pointer), seen), 1e-6);
                const QPointF held = placement.imageAnchor();
                placement.setMoving(true);
                placement.setPixelScale(3.3);
                EXPECT_LT(distance(placement.pointFromImage(held), placement.drawAnchor()), 1e-6);
                placement.setMoving(false);
                EXPECT_LT(distance(placement.pointFromImage(held), pointer) * ratio, 3)
                    << ratio << " " << angle;
            }
        }
    }
}

TEST(ImagePlacementTest, aPictureLeavesNoGapThatNeedNotBeAndRestsOnDevicePixels) {
    const QPointF origin(201, 33);
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0}) {
        const ImageViewport viewport({801, 603}, ratio, origin);
        const QRectF view = viewport.rect();
        for (const double angle : {0.0, 90.0, 180.0, -90.0}) {
            for (const double scale : {0.013, 0.1999, 0.2513, 0.5, 1.0, 3.0}) {
                for (const QPointF& to : {QPointF(-9e5, -9e5), {9e5, 9e5}, {50, -9e5}, {333, 77}}) {
                    ImagePlacement placement = placementOf({3999, 2999}, viewport, scale, angle);
                    placement.setDrawAnchor(to);
                    const QRectF frame = placement.imageDrawRect();
                    EXPECT_LT(offGrid(frame.topLeft(), ratio, origin), 1e-6);
                    const auto expectAxis = [&](double start, double end, double from,
                                                double till) {
                        if (end - start > till - from) {
                            EXPECT_LT(start, from + 1e-6);
                            EXPECT_GT(end, till - 1e-6);
                        } else {
                            EXPECT_NEAR(start + end, from + till, 1.001 / ratio);
                            EXPECT_GT(start, from - 1e-6);
                            EXPECT_LT(end, till + 1e-6);
                        }
                    };
                    expectAxis(frame.left(), frame.right(), view.left(), view.right());
                    expectAxis(frame.top(), frame.bottom(), view.top(), view.bottom());
                }
            }
        }
    }
}

TEST(ImagePlacementTest, theViewIsTheDevicePixelsThatItCovers) {
    const ImageViewport viewport({801, 600}, 1.25, {201, 0});
    EXPECT_EQ(viewport.pixelSize(), QSizeF(1002, 750)); // 251.25 to 1252.5
    EXPECT_LT(distance(viewport.rect().topLeft(), {-0.2, 0}), 1e-9);
    QPointF point(17.3, 5.9);
    for (int times = 0; times < 3; ++times) {
        point = viewport.roundPoint(point); // a corner of a pixel stays
        EXPECT_LT(distance(point, {272 / 1.25 - 201, 5.6}), 1e-9);
    }
    EXPECT_EQ(ImageViewport({9, 9}).roundPoint({3.9, -0.1}), QPointF(3, -1));
    EXPECT_TRUE(ImageViewport({nan, 600}).isEmpty());
    EXPECT_EQ(ImageViewport({800, 600}, nan, {nan, 0}).rect(), QRectF(0, 0, 800, 600));
}

TEST(ImagePlacementTest, actualSizeIsADevicePixelForEachPixelAndLimitsGoByIt) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        ImagePlacement placement = placementOf({100, 100}, ImageViewport({1000, 800}, ratio), 1.0);
        EXPECT_DOUBLE_EQ(placement.scale(), 1 / ratio);
        EXPECT_DOUBLE_EQ(placement.fitInScale(), 1 / ratio);
        EXPECT_DOUBLE_EQ(placement.maxScale(), 8 / ratio);
        EXPECT_DOUBLE_EQ(placement.minScale(), 0.2); // 20 points
        EXPECT_DOUBLE_EQ(placement.imageDrawRect().width(), 100 / ratio);
        placement.setPixelScale(maxZoomScale);
        EXPECT_FALSE(ratio == 1.0 && placement.shouldShowNavigation());
    }
}

TEST(ImagePlacementTest, aPictureThatFitsInFollowsTheViewAngleAndSize) {
    ImagePlacement placement = placementOf({4000, 3000}, ImageViewport({800, 600}), 1.0);
    placement.setFitIn(true);
    EXPECT_EQ(placement.imageDrawRect(), QRectF(0, 0, 800, 600));
    placement.setAngle(90);
    EXPECT_EQ(placement.imageDrawRect(), QRectF(175, 0, 450, 600));
    placement.setViewport(ImageViewport({450, 601}));
    EXPECT_EQ(placement.imageDrawRect(), QRectF(0, 1, 450, 600));
    placement.setImageSize({100, 50});
    EXPECT_EQ(placement.imageDrawRect(), QRectF(200, 251, 50, 100));
    EXPECT_FALSE(placement.shouldShowNavigation());
    const ImagePlacement before = placement;
    placement.setViewport(ImageViewport({0, 0}));
    placement.setViewport(before.viewport());
    EXPECT_EQ(placement, before);
}

TEST(ImagePlacementTest, aZoomedPictureStaysWhereItIsWhenTheViewChanges) {
    ImagePlacement placement = placementOf({4000, 3000}, ImageViewport({800, 600}), 1.0);
    placement.setDrawAnchor({300, 250});
    const QRectF before = placement.imageDrawRect();
    for (const QSizeF& size : {QSizeF(1, 1), QSizeF(0, 0), QSizeF(800, 600)})
        placement.setViewport(ImageViewport(size));
    EXPECT_EQ(placement.imageDrawRect(), before);

    const QPointF middle = placement.pointToImage({400, 300});
    placement.setViewport(ImageViewport({800, 600}, 2.0));
    EXPECT_EQ(placement.scale(), 0.5);
    EXPECT_LT(distance(placement.pointToImage({400, 300}), middle), 1e-6);
}

TEST(ImagePlacementTest, anotherSizeOfThePictureKeepsTheSpotAtTheAnchor) {
    ImagePlacement placement = placementOf({4000, 3000}, ImageViewport({800, 600}), 1.0);
    placement.setDrawAnchor({-600, 300});
    placement.centerAnchor();
    const QPointF spot = placement.imageAnchor();
    placement.setImageSize({8000, 1500});
    EXPECT_EQ(placement.imageAnchor(), QPointF(spot.x() * 2, spot.y() / 2));
    placement.setPixelScale(0.01);
    placement.setImageSize({40, 30});
    EXPECT_EQ(placement.scale(), 0.5);
    placement.setImageSize({nan, 30});
    EXPECT_FALSE(placement.hasImage() || placement.shouldShowNavigation());
}

TEST(ImagePlacementTest, aMoveThatTheEdgesHoldChangesNothing) {
    ImagePlacement placement = placementOf({4000, 3000}, ImageViewport({800, 600}), 1.0);
    EXPECT_TRUE(placement.tryMoveDrawAnchorToPoint({9000, 300}));
    EXPECT_EQ(placement.imageDrawRect().left(), 0);
    EXPECT_FALSE(placement.tryMoveDrawAnchorToPoint({9050, 300}));
    placement.setPixelScale(8.0);
    placement.centerAnchor();
    EXPECT_TRUE(placement.tryMoveDrawAnchorToPoint({399, 300})); // an eighth of a pixel
    placement.setFitIn(true);
    const QRectF fitted = placement.imageDrawRect();
    EXPECT_FALSE(placement.tryMoveDrawAnchorToPoint({0, 0}));
    EXPECT_TRUE(placement.isFitIn());
    EXPECT_EQ(placement.imageDrawRect(), fitted);
}

TEST(ImagePlacementTest, pansOfAnyLengthMoveByWholeDevicePixels) {
    for (const double ratio : {1.0, 1.25, 1.5}) {
        ImagePlacement placement =
            placementOf({3999, 2999}, ImageViewport({801, 603}, ratio, {3, 7}), 1.37);
        const QPointF anchor = placement.drawAnchor();
        const QPointF start = placement.imageDrawRect().topLeft();
        for (double step = -2; step <= 2; step += 0.1) {
            placement.setDrawAnchor(anchor + QPointF(step, -step));
            const QPointF moved = (placement.imageDrawRect().topLeft() - start) * ratio;
            EXPECT_NEAR(moved.x(), std::floor(step * ratio + 1e-6), 1e-6);
            EXPECT_NEAR(moved.y(), std::floor(-step * ratio + 1e-6), 1e-6);
        }
    }
}

TEST(ImagePlacementTest, theVisiblePartOfATurnedPictureIsTilted) {
    ImagePlacement placement = placementOf({4000, 3000}, ImageViewport({800, 600}), 1.0, 90);
    placement.setDrawAnchor({400, 9000});
    const QPolygonF upright = placement.visibleRectInImage();
    EXPECT_EQ(upright.at(0).x(), 0); // the view's top is the picture's left
    EXPECT_EQ(upright.at(1) - upright.at(0), QPointF(600, 0));
    EXPECT_EQ(upright.at(3) - upright.at(0), QPointF(0, -800));
    placement.setAngle(45);
    const QPointF side =
        placement.visibleRectInImage().at(3) - placement.visibleRectInImage().at(0);
    EXPECT_NEAR(side.x(), 800 * std::sqrt(0.5), 1e-6);
    EXPECT_NEAR(side.y(), -800 * std::sqrt(0.5), 1e-6);
}

TEST(ImagePlacementTest, aSwipePullsThePictureWithoutMovingItsAnchors) {
    ImagePlacement placement = placementOf({400, 300}, ImageViewport({800, 600}), 1.0);
    placement.setSwapOffset(900);
    EXPECT_EQ(placement.imageDrawRect().left(), 200 - 900);
    EXPECT_EQ(placement.imageDrawRect().right(), 0);
    const ImagePlacement before = placement;
    placement.centerAnchor();
    EXPECT_EQ(placement, before);
}

TEST(ImagePlacementTest, numbersWithoutSenseChangeNothing) {
    ImagePlacement placement = placementOf({4000, 3000}, ImageViewport({800, 600}), 1.0);
    const ImagePlacement before = placement;
    for (const double bad : {nan, std::numeric_limits<double>::infinity(), 0.0, -1.0}) {
        placement.setScale(bad);
        if (std::isfinite(bad)) continue;
        placement.setAngle(bad);
        placement.setSwapOffset(bad);
        placement.setDrawAnchor({bad, 0});
        placement.setImageAnchor({0, bad});
        placement.anchorAt({bad, bad});
        EXPECT_FALSE(placement.tryMoveDrawAnchorToPoint({bad, 0}));
    }
    EXPECT_EQ(placement, before);
    for (const QSizeF& size : {QSizeF(0, 0), QSizeF(1, 1), QSizeF(100000, 1), QSizeF(1, 100000)}) {
        for (const double side : {0.0, 1.0, 7.0, 900.0}) {
            placement = placementOf(size, ImageViewport({side, side}, 1.5), 1.0, 90);
            placement.setFitIn(true);
            EXPECT_GT(placement.scale(), 0);
            const QPointF back = placement.pointFromImage(placement.pointToImage({3, 4}));
            EXPECT_LT(distance(back, {3, 4}), 1e-6) << size.width() << " " << side;
            EXPECT_LE(placement.minScale(), placement.maxScale());
        }
    }
}

} // namespace
