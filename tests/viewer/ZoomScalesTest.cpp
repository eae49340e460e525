#include "viewer/geometry/ZoomScales.h"

#include <gtest/gtest.h>

TEST(ZoomScalesTest, aStepIsLeftThoughItWentThroughPointsOfAScreen) {
    EXPECT_EQ(std::pair(zoomInScale(0.7), zoomOutScale(0.7)), std::pair(1.0, 0.6667));
    for (const double scale : zoomScaleTable) {
        EXPECT_EQ(zoomInScale(scale / 1.25 * 1.25), zoomInScale(scale));
        EXPECT_EQ(zoomOutScale(scale / 1.25 * 1.25), zoomOutScale(scale));
    }
}

TEST(ZoomScalesTest, theSliderRisesWithTheScaleAndBothGoBack) {
    using Row = std::pair<double, double>;
    for (const double least : {0.01, 0.5, 1.0}) {
        double before = -1;
        for (double scale = least; scale <= maxZoomScale; scale *= 1.01) {
            const double slider = scaleToSlider(scale, least);
            EXPECT_GT(slider, before) << scale;
            EXPECT_NEAR(sliderToScale(slider, least), scale, 1e-9);
            before = slider;
        }
        for (const auto& [slider, scale] :
             {Row(-5, least), Row(0, least), Row(45, 1), Row(55, 1), Row(100, 8), Row(130, 8)})
            EXPECT_DOUBLE_EQ(sliderToScale(slider, least), scale) << slider;
    }
    EXPECT_EQ(scaleToSlider(1.0, 0.01), 50);
    EXPECT_EQ(scaleToSlider(8.5, 0.01), 100);
    EXPECT_EQ(scaleToSlider(0.4, 1.0), 0); // fitted into a view of a few points
    EXPECT_EQ(snappedSlider(45), 50);
    EXPECT_EQ(snappedSlider(55.5), 55.5);
}

TEST(ZoomScalesTest, theLabelTruncatesAndTheDragIsLimitedBothWays) {
    EXPECT_EQ(zoomPercent(0.29), 29); // a hair less in binary
    EXPECT_EQ(zoomPercent(0.9999), 99);
    EXPECT_EQ(dragZoomFactor(-900), 1 / 8.0);
}
