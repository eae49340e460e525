#include "viewer/geometry/ImageGeometry.h"
#include "viewer/geometry/ZoomScales.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

const ImageViewport view({800, 600});

ImageGeometry showing(const QSizeF& imageSize, const ImageViewport& viewport = view) {
    ImageGeometry geometry;
    geometry.setViewport(viewport);
    geometry.showImage(imageSize, 0);
    return geometry;
}

/// Runs it to its end, if there is one, and tells what is then shown in device pixels.
double finish(ImageGeometry& geometry, const std::optional<GeometryAnimation>& animation) {
    if (animation) {
        EXPECT_TRUE(geometry.advance(*animation, animation->duration * 0.99));
        EXPECT_FALSE(geometry.advance(*animation, animation->duration));
    }
    return geometry.placement().pixelScale();
}

TEST(GeometryAnimationTest, motionsRiseFromTheirStartToTheirEndAndAreQuickAtFirst) {
    double before = 0;
    for (int step = 1; step <= 100; ++step) {
        EXPECT_GT(easeOut(step / 100.0), before);
        EXPECT_GE(easeOut(step / 100.0), step / 100.0);
        before = easeOut(step / 100.0);
    }
    EXPECT_NEAR(easeOut(0.3425), 0.5, 1e-9);
    EXPECT_EQ(easeOut(-1), 0);
    EXPECT_EQ(easeOut(2), 1);
    const ScrollAnimation scroll{{100, 0}, {200, -50}};
    EXPECT_EQ(scroll.valueAt(-1), QPointF(100, 0));
    EXPECT_EQ(scroll.valueAt(0.25), QPointF(180, -40)); // 0.75 / 0.9375
    EXPECT_EQ(scroll.valueAt(0.5), scroll.stop);
}

TEST(ImageGeometryTest, everyPictureBeginsFittedAndTurnedTheItemsWay) {
    ImageGeometry geometry = showing({4000, 3000});
    static_cast<void>(geometry.cwRotate());
    finish(geometry, geometry.actualSize());
    geometry.showImage({3000, 4000}, -90);
    EXPECT_EQ(geometry.placement().angle(), 90);
    EXPECT_EQ(geometry.placement().imageDrawRect(), QRectF(0, 0, 800, 600));
    EXPECT_FALSE(geometry.isRotating());
}

TEST(ImageGeometryTest, stepsWalkTheTableFromTheLastTargetUpAndBackDown) {
    for (const double ratio : {1.0, 1.25, 1.5}) {
        ImageGeometry geometry = showing({4000, 3000}, ImageViewport({800, 600}, ratio));
        finish(geometry, geometry.actualSize());
        static_cast<void>(geometry.zoomInAtPoint());
        EXPECT_EQ(finish(geometry, geometry.zoomInAtPoint()), 3.0); // two presses at once
        for (int press = 0; press < 7; ++press)
            finish(geometry, geometry.zoomInAtPoint());
        EXPECT_DOUBLE_EQ(geometry.placement().scale(), 8 / ratio);
        EXPECT_FALSE(geometry.canZoomIn() || geometry.zoomInAtPoint());
        for (int press = 0; press < 7; ++press)
            finish(geometry, geometry.zoomOutAtPoint());
        EXPECT_TRUE(isSameScale(geometry.placement().pixelScale(), 1.0));
        for (int press = 0; press < 20; ++press)
            finish(geometry, geometry.zoomOutAtPoint());
        EXPECT_TRUE(isSameScale(geometry.placement().pixelScale(), 0.01));
        EXPECT_FALSE(geometry.canZoomOut() || geometry.zoomOutAtPoint());
    }
    // A giant that fits in below the limit isn't enlarged by zooming out.
    ImageGeometry giant = showing({100000, 1});
    EXPECT_EQ(finish(giant, giant.zoomOutAtPoint()), 0.008);
    EXPECT_FALSE(giant.magnifyAtPoint(-0.5, {0, 0}));
    EXPECT_EQ(finish(giant, giant.zoomInAtPoint()), 0.01);
}

TEST(ImageGeometryTest, aStepHoldsThePointUnderThePointer) {
    ImageGeometry geometry = showing({4000, 3000});
    finish(geometry, geometry.actualSize());
    geometry.setDrawAnchor({100, 700});
    const QPointF pointer(700, 40);
    const QPointF seen = geometry.placement().pointToImage(pointer);
    for (const auto& animation :
         {geometry.zoomInAtPoint(pointer), geometry.wheelZoomAtPoint(wheelZoomFactor, pointer)}) {
        geometry.advance(*animation, 0.2);
        const QPointF now = geometry.placement().pointFromImage(seen);
        EXPECT_LT(std::hypot(now.x() - pointer.x(), now.y() - pointer.y()), 1e-6);
    }
    geometry.magnifyAtPoint(0.5, pointer);
    const QPointF now = geometry.placement().pointFromImage(seen);
    EXPECT_LT(std::hypot(now.x() - pointer.x(), now.y() - pointer.y()), 1.0);
}

TEST(ImageGeometryTest, aWheelGathersItsWishAndAlwaysLandsOnAStep) {
    ImageGeometry geometry = showing({4000, 3000});
    EXPECT_EQ(finish(geometry, geometry.wheelZoomAtPoint(wheelZoomFactor, {9, 9})), 0.3333);
    EXPECT_EQ(geometry.zoomDirection(), 0);
    static_cast<void>(geometry.wheelZoomAtPoint(wheelZoomFactor, {9, 9})); // 0.443
    EXPECT_EQ(finish(geometry, geometry.wheelZoomAtPoint(wheelZoomFactor, {9, 9})), 0.6667);
    EXPECT_EQ(finish(geometry, geometry.wheelZoomAtPoint(1 / wheelZoomFactor, {9, 9})), 0.5);
    EXPECT_FALSE(geometry.wheelZoomAtPoint(1, {9, 9}) || geometry.wheelZoomAtPoint(0, {9, 9}));
}

TEST(ImageGeometryTest, doubleClickGoesBetweenFittedAndActualSize) {
    ImageGeometry geometry = showing({4000, 3000}, ImageViewport({800, 600}, 1.5));
    EXPECT_EQ(finish(geometry, geometry.toggleActualSizeAtPoint({700, 500})), 1.0);
    EXPECT_FALSE(geometry.placement().isFitIn());
    EXPECT_EQ(geometry.zoomPercent(), 100);
    EXPECT_DOUBLE_EQ(finish(geometry, geometry.toggleActualSizeAtPoint({700, 500})), 0.3);
    EXPECT_TRUE(geometry.placement().isFitIn());
    ImageGeometry small = showing({100, 100});
    EXPECT_FALSE(small.toggleActualSizeAtPoint({400, 300}));
    small.magnifyAtPoint(1, {400, 300});
    EXPECT_EQ(finish(small, small.toggleActualSizeAtPoint({400, 300})), 1.0);
    EXPECT_TRUE(small.placement().isFitIn());
}

TEST(ImageGeometryTest, fittingInLandsWhereTheViewIsByThen) {
    ImageGeometry geometry = showing({4000, 3000});
    finish(geometry, geometry.actualSize());
    const auto animation = geometry.fitInWithAnimation(true);
    ASSERT_TRUE(animation);
    geometry.setViewport(ImageViewport({400, 600}));
    EXPECT_DOUBLE_EQ(finish(geometry, animation), 0.1);
    EXPECT_TRUE(geometry.placement().isFitIn());
    EXPECT_FALSE(geometry.fitInWithAnimation(true));
}

TEST(ImageGeometryTest, anAnimationThatWasReplacedChangesNothing) {
    ImageGeometry geometry = showing({4000, 3000});
    const auto zoom = geometry.zoomInAtPoint();
    const auto turn = geometry.cwRotate();
    geometry.zoomSlide(50);
    EXPECT_FALSE(geometry.advance(*zoom, 0.1));
    EXPECT_TRUE(geometry.advance(*turn, 0.1));
    EXPECT_EQ(geometry.placement().scale(), 1.0);
    geometry.showImage({400, 300}, 0);
    EXPECT_FALSE(geometry.advance(*turn, 0.1));
    EXPECT_EQ(geometry.placement().angle(), 0);
    EXPECT_FALSE(geometry.placement().isMoving());
}

TEST(ImageGeometryTest, rotationsGoTheShortWayAboutTheMiddleOneAtATime) {
    for (const auto& [from, to, middle] :
         {std::tuple(180.0, -90.0, 225.0),
          {-90.0, 180.0, 225.0},
          {0.0, -90.0, 315.0},
          {-90.0, 0.0, 315.0},
          {90.0, 180.0, 135.0},
          {0.0, 180.0, 90.0}}) {
        ImageGeometry geometry = showing({4000, 3000});
        finish(geometry, geometry.actualSize());
        geometry.setAngle(from);
        geometry.setDrawAnchor({390, 250});
        const QPointF seen = geometry.placement().pointToImage({400, 300});
        auto turn = geometry.rotateToAngle(to);
        ASSERT_TRUE(turn);
        EXPECT_FALSE(geometry.rotateToAngle(0) || geometry.cwRotate() || geometry.ccwRotate());
        const GeometryAnimation half{
            .property = turn->property,
            .from = (turn->from + turn->to) / 2,
            .to = turn->to,
            .duration = 1,
            .serial = turn->serial};
        geometry.advance(half, 0);
        EXPECT_EQ(geometry.placement().angle(), middle) << from << " " << to;
        const QPointF now = geometry.placement().pointFromImage(seen);
        EXPECT_LT(std::hypot(now.x() - 400, now.y() - 300), 1e-6);
        finish(geometry, turn);
        EXPECT_EQ(geometry.placement().angle(), to);
        EXPECT_FALSE(geometry.isRotating() || geometry.rotateToAngle(to + 360));
    }
    ImageGeometry geometry = showing({4000, 3000});
    for (const double angle : {90.0, 180.0, -90.0, 0.0}) {
        finish(geometry, geometry.cwRotate());
        EXPECT_EQ(geometry.placement().angle(), angle);
        EXPECT_TRUE(geometry.placement().isFitIn());
    }
    finish(geometry, geometry.ccwRotate());
    EXPECT_EQ(geometry.placement().angle(), -90);
}

TEST(ImageGeometryTest, sliderAndDragSetTheScaleAtOnceFromWhereTheyBegan) {
    ImageGeometry geometry = showing({4000, 3000}, ImageViewport({800, 600}, 2.0));
    EXPECT_EQ(geometry.zoomSlide(46), 50);
    EXPECT_EQ(geometry.placement().scale(), 0.5);
    EXPECT_EQ(geometry.zoomSlider(), 50);
    const QPointF press(600, 100);
    const QPointF seen = geometry.placement().pointToImage(press);
    const auto drag = geometry.beginZoomDrag(press);
    EXPECT_TRUE(geometry.zoomByDrag(drag, 150));
    EXPECT_EQ(geometry.placement().pixelScale(), 4.5);
    const QPointF now = geometry.placement().pointFromImage(seen);
    EXPECT_LT(std::hypot(now.x() - 600, now.y() - 100), 1.0);
    EXPECT_TRUE(geometry.zoomByDrag(drag, 900));
    EXPECT_EQ(geometry.placement().pixelScale(), 8.0);
    EXPECT_FALSE(geometry.zoomByDrag(drag, 400));
}

TEST(ImageGeometryTest, scrollingStartsFromWhatIsShown) {
    ImageGeometry geometry = showing({4000, 3000});
    finish(geometry, geometry.actualSize());
    geometry.setDrawAnchor({9000, 300}); // far beyond the left edge
    geometry.setDrawAnchor(geometry.scrollByDelta({-100, 0}).stop);
    EXPECT_EQ(geometry.placement().imageDrawRect().left(), -100);
}

} // namespace
