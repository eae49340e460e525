#include "PointsNear.h"

#include "viewer/geometry/ImagePlacement.h"
#include "viewer/geometry/ImageTransform.h"
#include "viewer/geometry/NavigationGeometry.h"

namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
const ImageViewport plainView({800, 600});

/// Not fitted, with its middle in the middle of the view.
ImagePlacement zoomed(
    const QSizeF& imageSize, const ImageViewport& viewport, double pixelScale, double angle = 0) {
    ImagePlacement placement = ImagePlacement::fittedIn(viewport, imageSize, angle);
    placement.setFitIn(false);
    placement.setPixelScale(pixelScale);
    placement.centerAnchor();
    return placement;
}

TEST(ImageTransformTest, anglesAreThoseOfTheHalfTurnEitherWay) {
    for (const auto& [angle, normal] :
         {std::pair(-90, -90), {450, 90}, {360, 0}, {-270, 90}, {270, -90}, {180, 180}})
        EXPECT_EQ(PBUtilities::normalizeAngle(angle), normal) << angle;
    EXPECT_EQ(PBUtilities::normalizeAngle(-1e-20), 0);
}

TEST(ImageTransformTest, theTurnedBoundsAreWhatFits) {
    const auto fitting = [](double angle, const QSizeF& size, bool fitInSmall = false) {
        return PBUtilities::fitInScaleWithAngle(angle, size, {800, 600}, fitInSmall);
    };
    EXPECT_DOUBLE_EQ(fitting(45, {4000, 3000}), 600 / (7000 * std::sqrt(0.5)));
    EXPECT_DOUBLE_EQ(fitting(90, {100000, 1}), 0.006);

    EXPECT_DOUBLE_EQ(fitting(0, {100, 100}, true), 6.0);
}

TEST(ImagePlacementTest, theViewIsTheDevicePixelsThatItCovers) {
    const ImageViewport viewport({801, 600}, 1.25, {201, 0});
    EXPECT_EQ(viewport.pixelSize(), QSizeF(1002, 750)); // 251.25 to 1252.5
    expectNear(viewport.rect().topLeft(), {-0.2, 0});
    QPointF point(17.3, 5.9);
    for (int times = 0; times < 3; ++times) {
        point = viewport.roundPoint(point); // a corner of a pixel stays one
        expectNear(point, {272 / 1.25 - 201, 5.6});
    }
    EXPECT_EQ(plainView.roundPoint({3.9, -0.1}), QPointF(3, -1));
}

TEST(ImagePlacementTest, whateverIsAnchoredStaysThereAtEveryScaleAndAngle) {
    for (const double ratio : {1.0, 1.25, 1.5, 2.0}) {
        for (const double angle : {0.0, 90.0, 180.0, -90.0, 37.0}) {
            ImagePlacement placement =
                zoomed({4000, 3000}, ImageViewport({801, 603}, ratio, {37, 11}), 1.0, angle);
            const QPointF pointer(250, 199.4);
            const QPointF seen = placement.pointToImage(pointer);
            placement.anchorAt(pointer);
            expectNear(placement.pointToImage(pointer), seen);
            expectNear(placement.drawAnchor(), placement.viewport().roundPoint(pointer));
            placement.setMoving(true);
            placement.setPixelScale(3.3);
            expectNear(placement.pointFromImage(placement.imageAnchor()), placement.drawAnchor());
        }
    }
}

/// One axis of a picture that was pulled beyond an edge: no gap, and no more hidden than need be.
void expectHeld(double start, double end, double view, double pixel, bool pulledBack) {
    if (end - start <= view) {
        EXPECT_NEAR(start + end, view, 1.001 * pixel);
    } else if (pulledBack) {
        EXPECT_GT(end, view - 1e-6);
        EXPECT_LT(end, view + pixel - 1e-6);
    } else {
        EXPECT_NEAR(start, 0, 1e-6);
    }
}

TEST(ImagePlacementTest, aPictureLeavesNoGapThatNeedNotBeAndRestsOnDevicePixels) {
    const QPointF origin(201, 33);
    for (const double ratio : {1.0, 1.25, 1.5, 1.75, 2.0}) {
        const ImageViewport viewport({801, 603}, ratio, origin);
        for (const double angle : {0.0, 90.0, 180.0, -90.0}) {
            for (const double scale : {0.013, 0.1999, 0.2513, 0.5, 1.0, 3.0}) {
                ImagePlacement placement = zoomed({3999, 2999}, viewport, scale, angle);
                for (const double pull : {-9e5, 9e5}) {
                    placement.setDrawAnchor({pull, -pull});
                    const QRectF frame = placement.imageDrawRect();
                    const QPointF corner = (frame.topLeft() + origin) * ratio;
                    expectNear(corner, {std::rint(corner.x()), std::rint(corner.y())});
                    const QRectF view = viewport.rect();
                    const QRectF held = frame.translated(-view.topLeft());
                    expectHeld(held.left(), held.right(), view.width(), 1 / ratio, pull < 0);
                    expectHeld(held.top(), held.bottom(), view.height(), 1 / ratio, pull > 0);
                }
            }
        }
        ImagePlacement placement = zoomed({3999, 2999}, viewport, 1.37);
        const QPointF anchor = placement.drawAnchor();
        const QPointF start = placement.imageDrawRect().topLeft();
        for (double step = -2; step <= 2; step += 0.1) { // pans go by whole pixels
            placement.setDrawAnchor(anchor + QPointF(step, 0));
            const QPointF moved = (placement.imageDrawRect().topLeft() - start) * ratio;
            expectNear(moved, {std::floor(step * ratio + 1e-6), 0});
        }
    }
}

TEST(ImagePlacementTest, actualSizeIsADevicePixelForEachPixelAndLimitsGoByIt) {
    for (const double ratio : {1.0, 1.5, 2.0}) {
        ImagePlacement placement = zoomed({50, 100}, ImageViewport({1000, 800}, ratio), 1.0);
        EXPECT_DOUBLE_EQ(placement.scale(), 1 / ratio);
        EXPECT_DOUBLE_EQ(placement.fitInScale(), 1 / ratio);
        EXPECT_DOUBLE_EQ(placement.maxScale(), 8 / ratio);
        EXPECT_DOUBLE_EQ(placement.minScale(), 0.2); // 20 points
        EXPECT_DOUBLE_EQ(placement.imageDrawRect().height(), 100 / ratio);
        for (const double scale : {8.0, 8.01}) {
            placement.setScale(scale); // fills the height
            EXPECT_EQ(placement.shouldShowNavigation(), scale > 8);
        }
    }
}

TEST(ImagePlacementTest, aPictureThatFitsInFollowsTheViewTheAngleAndItsSize) {
    ImagePlacement placement = ImagePlacement::fittedIn(plainView, {4000, 3000}, 0);
    EXPECT_EQ(placement.imageDrawRect(), QRectF(0, 0, 800, 600));
    EXPECT_FALSE(placement.tryMoveDrawAnchorToPoint({0, 0}));
    placement.setDrawAnchor({0, 0});
    EXPECT_EQ(placement.drawAnchor(), QPointF(400, 300));
    placement.setAngle(90);
    EXPECT_EQ(placement.imageDrawRect(), QRectF(175, 0, 450, 600));
    placement.setViewport(ImageViewport({450, 601}));
    EXPECT_EQ(placement.imageDrawRect(), QRectF(0, 1, 450, 600));
    placement.setImageSize({100, 50});
    EXPECT_EQ(placement.imageDrawRect(), QRectF(200, 251, 50, 100));
    placement = ImagePlacement::fittedIn(plainView, {400, 300}, 0);
    placement.setSwapOffset(900); // a swipe moves no anchor
    EXPECT_EQ(placement.imageDrawRect(), QRectF(-700, 150, 700, 300));
    const ImagePlacement before = placement;
    placement.centerAnchor();
    EXPECT_EQ(placement, before);
}

TEST(ImagePlacementTest, aZoomedPictureKeepsItsPlaceInAnotherViewAndAtAnotherSize) {
    ImagePlacement placement = zoomed({4000, 3000}, plainView, 1.0);
    placement.setDrawAnchor({300, 250});
    const QRectF before = placement.imageDrawRect();
    for (const QSizeF& size : {QSizeF(1, 1), QSizeF(0, 0), QSizeF(800, 600)})
        placement.setViewport(ImageViewport(size));
    EXPECT_EQ(placement.imageDrawRect(), before);
    const QPointF middle = placement.pointToImage({400, 300});
    placement.setViewport(ImageViewport({800, 600}, 2.0));
    EXPECT_EQ(placement.scale(), 0.5);
    expectNear(placement.pointToImage({400, 300}), middle);
    placement.setImageSize({8000, 1500});
    expectNear(placement.imageAnchor(), {middle.x() * 2, middle.y() / 2});
    placement.setPixelScale(0.01);
    placement.setImageSize({80, 30});
    EXPECT_EQ(placement.scale(), 0.25);
}

TEST(ImagePlacementTest, aMoveThatTheEdgesHoldIsNone) {
    ImagePlacement placement = zoomed({4000, 3000}, plainView, 1.0);
    EXPECT_TRUE(placement.tryMoveDrawAnchorToPoint({9000, 300}));
    EXPECT_FALSE(placement.tryMoveDrawAnchorToPoint({9050, 300}));
    placement.setPixelScale(8.0);
    placement.centerAnchor();
    EXPECT_TRUE(placement.tryMoveDrawAnchorToPoint({399, 300})); // an eighth of a pixel
}

TEST(ImagePlacementTest, numbersWithoutSenseChangeNothing) {
    ImagePlacement placement = zoomed({4000, 3000}, plainView, 1.0);
    const ImagePlacement before = placement;
    placement.setScale(0);
    for (const double bad : {nan, std::numeric_limits<double>::infinity()}) {
        placement.setScale(bad);
        placement.setAngle(bad);
        placement.setSwapOffset(bad);
        placement.setDrawAnchor({bad, 0});
        placement.setImageAnchor({0, bad});
        placement.anchorAt({bad, bad});
        EXPECT_FALSE(placement.tryMoveDrawAnchorToPoint({bad, 0}));
    }
    EXPECT_EQ(placement, before);
    placement.setImageSize({nan, 30});
    placement.setPixelScale(2);
    EXPECT_FALSE(placement.hasImage() || placement.shouldShowNavigation());
    EXPECT_TRUE(ImageViewport({nan, 600}).isEmpty());
    EXPECT_EQ(ImageViewport({800, 600}, nan, {nan, 0}), plainView);
    for (const QSizeF& size : {QSizeF(0, 0), QSizeF(1, 100000)}) {
        placement = ImagePlacement::fittedIn(ImageViewport(size, 1.5), size, 90);
        EXPECT_GT(placement.fitInScale(), 0);
        expectNear(placement.pointFromImage(placement.pointToImage({3, 4})), {3, 4});
    }
}

const ImageViewport miniature({200, 200});

QRectF markOf(const ImagePlacement& placement, const ImageViewport& view = miniature) {
    return NavigationGeometry(view, placement).visiblePolygon().boundingRect();
}

TEST(NavigationGeometryTest, theMarkIsTheVisiblePartWithinThePictureAndTheMiniature) {
    ImagePlacement large = zoomed({4000, 3000}, plainView, 1.0, 90);
    const NavigationGeometry whole(miniature, large);
    EXPECT_EQ(whole.imagePolygon().boundingRect(), QRectF(25, 0, 150, 200));
    for (const auto& [anchor, mark] :
         {std::pair(QPointF(400, 300), QRectF(80, 85, 40, 30)),
          {QPointF(9000, 9000), QRectF(25, 1, 40, 29)},
          {QPointF(-9000, -9000), QRectF(135, 170, 40, 29)}}) {
        large.setDrawAnchor(anchor);
        EXPECT_EQ(markOf(large), mark);
    }
    // The view shows more than the height of a panorama.
    large = zoomed({20000, 2000}, plainView, 0.1);
    large.setDrawAnchor({9000, 0});
    EXPECT_EQ(markOf(large), QRectF(1, 90, 79, 20));
    // A tiny mark can be taken hold of.
    large = zoomed({20000, 2000}, plainView, 8.0);
    EXPECT_EQ(markOf(large).width(), 1);
    EXPECT_EQ(NavigationGeometry(miniature, large).grabRect(), QRectF(94, 94, 12, 12));
    // In a miniature of a point its limits pass each other.
    EXPECT_EQ(markOf(zoomed({40, 30}, plainView, 8.0), ImageViewport({1, 1})), QRectF(0, 0, 0, 0));
}

TEST(NavigationGeometryTest, draggingTheMarkMovesThePictureByTheSamePart) {
    for (const double angle : {0.0, 90.0, 180.0}) {
        ImagePlacement large = zoomed({4000, 3000}, plainView, 1.0, angle);
        const NavigationGeometry before(miniature, large);
        large.setDrawAnchor(before.draggedDrawAnchor(large.drawAnchor(), {90, 90}, {100, 85}));
        const NavigationGeometry after(miniature, large);
        expectNear(after.grabRect().center() - before.grabRect().center(), {10, -5});
    }
}

} // namespace
