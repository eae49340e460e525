#include "PointsNear.h"

#include "viewer/geometry/ImageGeometry.h"
#include "viewer/geometry/ZoomScales.h"

namespace {

const QPointF pointer(700, 40);

ImageGeometry showing(const QSizeF& imageSize, double ratio = 1.0) {
    ImageGeometry geometry;
    geometry.setViewport(ImageViewport({800, 600}, ratio));
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

ImageGeometry atActualSize(double ratio = 1.0) {
    ImageGeometry geometry = showing({4000, 3000}, ratio);
    finish(geometry, geometry.actualSize());
    return geometry;
}

TEST(ImageGeometryTest, everyPictureBeginsFittedTurnedTheItemsWayAndAtRest) {
    ImageGeometry geometry = atActualSize();
    const auto turn = geometry.rotateToAngle(90);
    const auto zoom = geometry.zoomInAtPoint();
    geometry.reset();
    EXPECT_FALSE(geometry.advance(*zoom, 0.1) || geometry.advance(*turn, 0.1));
    geometry.showImage({3000, 4000}, -90);
    EXPECT_EQ(geometry.placement().angle(), 90);
    EXPECT_EQ(geometry.placement().imageDrawRect(), QRectF(0, 0, 800, 600));
    EXPECT_FALSE(geometry.isRotating() || geometry.placement().isMoving());
    // Without a picture there is nothing to zoom.
    geometry = showing({});
    EXPECT_FALSE(geometry.zoomInAtPoint() || geometry.zoomOutAtPoint() || geometry.actualSize());
    EXPECT_FALSE(geometry.canZoomIn() || geometry.canZoomOut());
    EXPECT_FALSE(geometry.magnifyAtPoint(1, pointer));
    geometry.zoomSlide(100);
    EXPECT_TRUE(geometry.placement().isFitIn());
}

TEST(ImageGeometryTest, thePointBetweenTheFingersStaysHoweverManyEventsAPinchHas) {
    ImageGeometry geometry;
    geometry.setViewport(ImageViewport({1178, 639}, 1.0));
    geometry.showImage({1066, 1600}, 90);
    const QPointF fingers(824, 383);
    geometry.magnifyAtPoint(1, fingers); // beyond the view's edges
    const QPointF held = geometry.placement().pointToImage(fingers);
    for (int update = 0; update < 100; ++update)
        geometry.magnifyAtPoint(0.01, fingers);
    const QPointF moved = geometry.placement().pointFromImage(held) - fingers;
    EXPECT_LE(moved.manhattanLength(), 1) << moved.x() << ' ' << moved.y();
}

TEST(ImageGeometryTest, stepsWalkTheTableFromTheLastTargetUpAndBackDown) {
    for (const double ratio : {1.0, 1.25, 1.5}) {
        ImageGeometry geometry = atActualSize(ratio);
        static_cast<void>(geometry.zoomInAtPoint());
        EXPECT_EQ(finish(geometry, geometry.zoomInAtPoint()), 3.0); // two presses at once
        for (int press = 0; press < 7; ++press)
            finish(geometry, geometry.zoomInAtPoint());
        EXPECT_DOUBLE_EQ(geometry.placement().scale(), 8 / ratio);
        EXPECT_FALSE(geometry.canZoomIn() || geometry.zoomInAtPoint());
        for (int press = 0; press < 7; ++press)
            finish(geometry, geometry.zoomOutAtPoint());
        EXPECT_EQ(geometry.zoomPercent(), 100);
        for (int press = 0; press < 20; ++press)
            finish(geometry, geometry.zoomOutAtPoint());
        EXPECT_TRUE(isSameScale(geometry.placement().pixelScale(), 0.01));
        EXPECT_FALSE(geometry.canZoomOut() || geometry.zoomOutAtPoint());
    }
    ImageGeometry small = showing({100, 100});
    for (const double scale : {0.6667, 0.5, 0.3333, 0.25, 0.2, 0.2})
        EXPECT_EQ(finish(small, small.zoomOutAtPoint()), scale);
    // A giant that fits in below the limit isn't enlarged by zooming out.
    ImageGeometry giant = showing({100000, 1});
    EXPECT_EQ(finish(giant, giant.zoomOutAtPoint()), 0.008);
    EXPECT_FALSE(giant.magnifyAtPoint(-0.5, pointer));
    EXPECT_EQ(finish(giant, giant.zoomInAtPoint()), 0.01);
}

TEST(ImageGeometryTest, zoomingHoldsThePointUnderThePointerElseTheMiddle) {
    ImageGeometry geometry = atActualSize();
    const auto expectHolding = [&](const QPointF& point, const auto& zoom) {
        geometry.setDrawAnchor(geometry.placement().drawAnchor() + QPointF(37, -11));
        const QPointF seen = geometry.placement().pointToImage(point);
        const std::optional<GeometryAnimation> animation = zoom();
        EXPECT_TRUE(!animation || geometry.advance(*animation, 0.02));
        expectNear(geometry.placement().pointFromImage(seen), point, animation ? 1e-6 : 1.0);
    };
    expectHolding(pointer, [&] { return geometry.zoomInAtPoint(pointer); });
    expectHolding({400, 300}, [&] { return geometry.zoomOutAtPoint(); });
    expectHolding(pointer, [&] { return geometry.wheelZoomAtPoint(1.33, pointer); });
    expectHolding({400, 300}, [&] { return geometry.actualSize(); });
    expectHolding(pointer, [&] { return geometry.toggleActualSizeAtPoint(pointer); });
    expectHolding({400, 300}, [&] { return geometry.fitInWithAnimation(true); });
    expectHolding(pointer, [&] {
        EXPECT_TRUE(geometry.magnifyAtPoint(0.5, pointer));
        return std::nullopt;
    });
    expectHolding(pointer, [&] {
        const auto drag = geometry.beginZoomDrag(pointer);
        geometry.magnifyAtPoint(0.5, {0, 0});
        EXPECT_TRUE(geometry.zoomByDrag(drag, 60));
        return std::nullopt;
    });
}

TEST(ImageGeometryTest, aWheelGathersItsWishAndAlwaysLandsOnAStep) {
    ImageGeometry geometry = showing({4000, 3000});
    EXPECT_EQ(finish(geometry, geometry.wheelZoomAtPoint(wheelZoomFactor, pointer)), 0.3333);
    for (int event = 0; event < 12; ++event) // to 0.475
        static_cast<void>(geometry.wheelZoomAtPoint(touchpadZoomFactor, pointer));
    EXPECT_EQ(finish(geometry, geometry.wheelZoomAtPoint(wheelZoomFactor, pointer)), 0.6667);
    EXPECT_EQ(finish(geometry, geometry.wheelZoomAtPoint(1 / wheelZoomFactor, pointer)), 0.5);
    EXPECT_FALSE(geometry.wheelZoomAtPoint(1, pointer) || geometry.wheelZoomAtPoint(0, pointer));
}

TEST(ImageGeometryTest, doubleClickGoesBetweenFittedAndActualSize) {
    ImageGeometry geometry = showing({4000, 3000}, 1.5);
    EXPECT_EQ(finish(geometry, geometry.toggleActualSizeAtPoint(pointer)), 1.0);
    EXPECT_FALSE(geometry.placement().isFitIn());
    EXPECT_DOUBLE_EQ(finish(geometry, geometry.toggleActualSizeAtPoint(pointer)), 0.3);
    EXPECT_TRUE(geometry.placement().isFitIn());
    EXPECT_FALSE(showing({100, 100}).toggleActualSizeAtPoint(pointer));
}

TEST(ImageGeometryTest, fittingInGoesToWhereTheViewIsByThen) {
    ImageGeometry geometry = atActualSize();
    finish(geometry, geometry.zoomInAtPoint());
    const auto animation = geometry.fitInWithAnimation(true);
    geometry.setViewport(ImageViewport({400, 600}));
    geometry.advance(*animation, 0.499);
    EXPECT_NEAR(geometry.placement().scale(), 0.1, 0.001);
    EXPECT_DOUBLE_EQ(finish(geometry, animation), 0.1);
    EXPECT_TRUE(geometry.placement().isFitIn());
    EXPECT_FALSE(geometry.fitInWithAnimation(true));
    EXPECT_LT(finish(geometry, geometry.zoomInAtPoint()), 1) << "not on from the step before";
}

TEST(ImageGeometryTest, sliderAndDragSetTheScaleAtOnceAndEndAnAnimation) {
    ImageGeometry geometry = showing({4000, 3000}, 2.0);
    const auto zoom = geometry.zoomInAtPoint();
    EXPECT_EQ(geometry.zoomSlide(46), 50);
    EXPECT_FALSE(geometry.advance(*zoom, 0.1) || geometry.placement().isFitIn());
    EXPECT_EQ(geometry.placement().scale(), 0.5);
    EXPECT_EQ(geometry.zoomSlider(), 50);
    const auto drag = geometry.beginZoomDrag(pointer);
    for (const auto& [distance, scale] : {std::pair(150, 4.5), {900, 8.0}, {0, 1.0}}) {
        EXPECT_TRUE(geometry.zoomByDrag(drag, distance));
        EXPECT_EQ(geometry.placement().pixelScale(), scale);
    }
    EXPECT_FALSE(geometry.zoomByDrag(drag, 0));
}

TEST(ImageGeometryTest, rotationsGoTheShortWayAboutTheMiddleOneAtATime) {
    using Row = std::tuple<double, double, double>;
    for (const auto& [from, to, by] :
         {Row(180, -90, 90), Row(-90, 180, -90), Row(0, -90, -90), Row(0, 180, 180)}) {
        ImageGeometry geometry = atActualSize();
        geometry.setAngle(from);
        geometry.setDrawAnchor({390, 250});
        const QPointF seen = geometry.placement().pointToImage({400, 300});
        const auto turn = geometry.rotateToAngle(to);
        EXPECT_EQ(turn->to - turn->from, by) << from << " " << to;
        EXPECT_FALSE(geometry.rotateToAngle(0));
        EXPECT_TRUE(geometry.advance(*turn, 0.1) && geometry.placement().isMoving());
        expectNear(geometry.placement().pointFromImage(seen), {400, 300});
        finish(geometry, turn);
        EXPECT_EQ(geometry.placement().angle(), to);
        EXPECT_FALSE(geometry.placement().isMoving() || geometry.rotateToAngle(to + 360));
    }
}

TEST(ImageGeometryTest, scrollingStartsFromWhatIsShown) {
    ImageGeometry geometry = atActualSize();
    geometry.setDrawAnchor({9000, 300}); // far beyond the left edge
    geometry.setDrawAnchor(geometry.scrollByDelta({-100, 0}).stop);
    EXPECT_EQ(geometry.placement().imageDrawRect().left(), -100);
}

} // namespace
