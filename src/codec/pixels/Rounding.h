#pragma once

namespace codec {

/// The nearest whole number, halves up, of one that is not negative: without the call and the
/// rounding mode of `std::lround`, which cost in loops over samples.
template <typename Integer, typename Real>
[[nodiscard]] constexpr Integer rounded(Real notNegative) {
    const Real above = notNegative + Real(0.5);
    return static_cast<Integer>(above);
}

} // namespace codec
