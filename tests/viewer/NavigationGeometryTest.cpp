#include "viewer/geometry/NavigationGeometry.h"

#include <gtest/gtest.h>

namespace {

ImagePlacement zoomed(const QSizeF& imageSize, double pixelScale, double angle) {
    ImagePlacement large = ImagePlacement::fittedIn(ImageViewport({800, 600}), imageSize, angle);
    large.setFitIn(false);
    large.setPixelScale(pixelScale);
    return large;
}

TEST(NavigationGeometryTest, theMarkIsTheVisiblePartAndStaysWithinTheMiniature) {
    ImagePlacement large = zoomed({4000, 3000}, 1.0, 90);
    const ImageViewport bounds({200, 200});
    const NavigationGeometry middle(bounds, large);
    EXPECT_EQ(middle.scale(), 0.05);
    EXPECT_EQ(middle.imagePolygon().boundingRect(), QRectF(25, 0, 150, 200));
    EXPECT_EQ(middle.visiblePolygon().boundingRect(), QRectF(80, 85, 40, 30));
    large.setDrawAnchor({9000, 9000});
    EXPECT_EQ(
        NavigationGeometry(bounds, large).visiblePolygon().boundingRect(), QRectF(25, 1, 40, 29));
    large.setDrawAnchor({-9000, -9000});
    EXPECT_EQ(
        NavigationGeometry(bounds, large).visiblePolygon().boundingRect(),
        QRectF(135, 170, 40, 29));
}

TEST(NavigationGeometryTest, draggingTheMarkMovesThePictureByTheSamePart) {
    for (const double angle : {0.0, 90.0, 180.0}) {
        ImagePlacement large = zoomed({4000, 3000}, 1.0, angle);
        const NavigationGeometry before(ImageViewport({200, 200}), large);
        large.setDrawAnchor(before.draggedDrawAnchor(large.drawAnchor(), {90, 90}, {100, 85}));
        const NavigationGeometry after(ImageViewport({200, 200}), large);
        const QPointF moved = after.visiblePolygon().boundingRect().topLeft() -
                              before.visiblePolygon().boundingRect().topLeft();
        EXPECT_NEAR(moved.x(), 10, 1e-6) << angle;
        EXPECT_NEAR(moved.y(), -5, 1e-6) << angle;
    }
}

TEST(NavigationGeometryTest, aTinyMarkCanBeTakenHoldOf) {
    const NavigationGeometry navigation(ImageViewport({200, 200}), zoomed({20000, 2000}, 8.0, 0));
    EXPECT_EQ(navigation.visiblePolygon().boundingRect().width(), 1);
    EXPECT_EQ(navigation.grabRect().size(), QSizeF(12, 12));
    EXPECT_EQ(navigation.grabRect().center(), QPointF(100, 100));
    // A miniature of a point still has a mark.
    EXPECT_FALSE(NavigationGeometry(ImageViewport({1, 1}), zoomed({40, 30}, 8.0, 0))
                     .visiblePolygon()
                     .isEmpty());
}

} // namespace
