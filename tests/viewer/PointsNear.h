#pragma once

#include "support/Support.h"

/// Both points are one, to within the distance on each axis.
inline void expectNear(const QPointF& point, const QPointF& expected, double distance = 1e-6) {
    EXPECT_NEAR(point.x(), expected.x(), distance);
    EXPECT_NEAR(point.y(), expected.y(), distance);
}
