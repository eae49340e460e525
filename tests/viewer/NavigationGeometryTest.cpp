#include "PointsNear.h"

#include "viewer/geometry/NavigationGeometry.h"

namespace {

const ImageViewport bounds({200, 200});

ImagePlacement zoomed(const QSizeF& imageSize, double scale, double angle = 0) {
    ImagePlacement large = ImagePlacement::fittedIn(ImageViewport({800, 600}), imageSize, angle);
    large.setFitIn(false);
    large.setScale(scale);
    return large;
}

TEST(NavigationGeometryTest, theMarkIsTheVisiblePartWithinThePictureAndTheMiniature) {
    ImagePlacement large = zoomed({4000, 3000}, 1.0, 90);
    EXPECT_EQ(
        NavigationGeometry(bounds, large).imagePolygon().boundingRect(), QRectF(25, 0, 150, 200));
    for (const auto& [anchor, mark] :
         {std::pair(QPointF(400, 300), QRectF(80, 85, 40, 30)),
          {QPointF(9000, 9000), QRectF(25, 1, 40, 29)},
          {QPointF(-9000, -9000), QRectF(135, 170, 40, 29)}}) {
        large.setDrawAnchor(anchor);
        EXPECT_EQ(NavigationGeometry(bounds, large).visiblePolygon().boundingRect(), mark);
    }
    // The view shows more than the height of a panorama.
    large = zoomed({20000, 2000}, 0.1);
    large.setDrawAnchor({9000, 0});
    EXPECT_EQ(
        NavigationGeometry(bounds, large).visiblePolygon().boundingRect(), QRectF(1, 90, 79, 20));
}

TEST(NavigationGeometryTest, draggingTheMarkMovesThePictureByTheSamePart) {
    for (const double angle : {0.0, 90.0, 180.0}) {
        ImagePlacement large = zoomed({4000, 3000}, 1.0, angle);
        const NavigationGeometry before(bounds, large);
        large.setDrawAnchor(before.draggedDrawAnchor(large.drawAnchor(), {90, 90}, {100, 85}));
        const NavigationGeometry after(bounds, large);
        expectNear(after.grabRect().center() - before.grabRect().center(), {10, -5});
    }
}

TEST(NavigationGeometryTest, aTinyMarkCanBeTakenHoldOf) {
    const NavigationGeometry navigation(bounds, zoomed({20000, 2000}, 8.0));
    EXPECT_EQ(navigation.visiblePolygon().boundingRect().width(), 1);
    EXPECT_EQ(navigation.grabRect(), QRectF(94, 94, 12, 12));
    const QRectF point = NavigationGeometry(ImageViewport({1, 1}), zoomed({40, 30}, 8.0))
                             .visiblePolygon()
                             .boundingRect();
    EXPECT_EQ(point, QRectF(0, 0, 0, 0)); // its limits pass each other
}

} // namespace
