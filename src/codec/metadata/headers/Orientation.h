#pragma once

#include <array>

namespace codec::headers {

/// The EXIF orientation (1 to 8) of turning or mirroring a picture by `first`, and the result by
/// `second`. A value out of range counts as 1.
[[nodiscard]] constexpr int composeOrientations(int first, int second) {
    // Each orientation as the matrix (a b; c d) that takes a stored point, x to the right and y
    // down from the centre, to where it is shown.
    struct Matrix {
        int a, b, c, d;
        constexpr bool operator==(const Matrix&) const = default;
    };
    constexpr std::array<Matrix, 8> matrices = {{
        {1, 0, 0, 1},
        {-1, 0, 0, 1},
        {-1, 0, 0, -1},
        {1, 0, 0, -1},
        {0, 1, 1, 0},
        {0, -1, 1, 0},
        {0, -1, -1, 0},
        {0, 1, -1, 0},
    }};
    const auto matrix = [&matrices](int orientation) {
        return orientation >= 1 && orientation <= 8
                   ? matrices[static_cast<std::size_t>(orientation - 1)]
                   : matrices[0];
    };
    const Matrix inner = matrix(first);
    const Matrix outer = matrix(second);
    const Matrix product{
        outer.a * inner.a + outer.b * inner.c, outer.a * inner.b + outer.b * inner.d,
        outer.c * inner.a + outer.d * inner.c, outer.c * inner.b + outer.d * inner.d};
    for (std::size_t position = 0; position < matrices.size(); ++position) {
        if (matrices[position] == product) return static_cast<int>(position) + 1;
    }
    return 1;
}

} // namespace codec::headers
