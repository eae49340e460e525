#include "viewer/geometry/ZoomScales.h"

#include <gtest/gtest.h>

#include <cmath>

namespace {

TEST(ZoomScalesTest, stepsGoStrictlyUpAndDownTheTableAndComeBack) {
    for (const auto& [scale, in, out] :
         {std::tuple(0.01, 0.015, 0.01),
          {0.012, 0.015, 0.01},
          {0.6667, 1.0, 0.5},
          {0.7, 1.0, 0.6667},
          {1.0, 2.0, 0.6667},
          {8.0, 8.0, 7.0},
          {0.001, 0.01, 0.01}}) {
        EXPECT_EQ(zoomInScale(scale), in) << scale;
        EXPECT_EQ(zoomOutScale(scale), out) << scale;
    }
    // A step that went through points of a screen is left by the next one all the same.
    for (const double ratio : {1.1, 1.25, 1.5, 1.75, 3.0}) {
        double scale = minZoomScale;
        for (std::size_t step = 1; step < zoomScaleTable.size(); ++step) {
            scale = zoomInScale(scale / ratio * ratio);
            EXPECT_EQ(scale, zoomScaleTable[step]);
            EXPECT_EQ(zoomOutScale(scale / ratio * ratio), zoomScaleTable[step - 1]);
        }
    }
}

TEST(ZoomScalesTest, theSmallestScaleLeavesTwentyPointsOfTheLongestSide) {
    for (const auto& [side, ratio, scale] :
         {std::tuple(10000.0, 1.0, 0.01),
          {40.0, 1.0, 0.5},
          {10.0, 1.0, 1.0},
          {0.0, 1.0, 1.0},
          {100.0, 2.0, 0.4},
          {40.0, 2.0, 1.0}})
        EXPECT_EQ(minScaleForLongestSide(side, ratio), scale) << side;
}

TEST(ZoomScalesTest, theSliderRisesWithTheScaleAndBothGoBack) {
    for (const double least : {0.01, 0.5, 1.0}) {
        double before = -1;
        for (double scale = least; scale <= maxZoomScale; scale *= 1.01) {
            const double slider = scaleToSlider(scale, least);
            EXPECT_GT(slider, before) << scale;
            EXPECT_NEAR(sliderToScale(slider, least), scale, 1e-9);
            before = slider;
        }
        for (const auto& [slider, scale] :
             {std::pair(0.0, least),
              {45.0, 1.0},
              {50.0, 1.0},
              {55.0, 1.0},
              {100.0, 8.0},
              {-5.0, least},
              {130.0, 8.0}})
            EXPECT_DOUBLE_EQ(sliderToScale(slider, least), scale) << slider;
    }
    EXPECT_EQ(scaleToSlider(1.0, 0.01), 50);
    EXPECT_EQ(scaleToSlider(8.5, 0.01), 100);
    EXPECT_EQ(scaleToSlider(0.4, 1.0), 0); // fitted into a view of a few points
    EXPECT_EQ(snappedSlider(45), 50);
    EXPECT_EQ(snappedSlider(55.5), 55.5);
}

TEST(ZoomScalesTest, theLabelTruncatesAndTheDragIsLimitedBothWays) {
    for (const auto& [scale, percent] :
         {std::pair(0.0833, 8), {0.29, 29}, {1 / 1.1 * 1.1, 100}, {0.9999, 99}, {8.0, 800}})
        EXPECT_EQ(zoomPercent(scale), percent) << scale;
    for (const auto& [distance, factor] :
         {std::pair(150.0, 4.5),
          {300.0, 8.0},
          {900.0, 8.0},
          {0.0, 1.0},
          {-150.0, 1 / 4.5},
          {-900.0, 1 / 8.0}})
        EXPECT_DOUBLE_EQ(dragZoomFactor(distance), factor) << distance;
}

} // namespace
