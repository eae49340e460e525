#include "group/ShownNumbers.h"

#include <cmath>

namespace group {

namespace {

/// Beyond this, hundredths no longer fit into 64 bits, nor are there any in a double.
constexpr double maximalRounded = 9.0e16;

/// What rounds to 0.3 s is written so, and no longer as a fraction.
constexpr double leastInSeconds = 0.295;

} // namespace

double roundedToHundredths(double value) {
    if (!(std::abs(value) < maximalRounded)) return value;
    if (value == 0) return value;
    return std::trunc((value + (value > 0 ? 0.005 : -0.005)) * 100) / 100;
}

std::optional<double> exposureDivisor(double seconds) {
    // A broken file's exposure of nothing, or of less, has no fraction to be shown as.
    if (!(seconds > 0 && seconds < 1)) return std::nullopt;
    const double divisor = 1 / seconds;
    const double tenths = std::round(divisor * 10) / 10;
    const bool isSimple = tenths == std::round(tenths) && tenths >= 2;
    if (seconds >= leastInSeconds && !isSimple) return std::nullopt;
    return tenths < 100 ? tenths : std::round(divisor);
}

double exposureAsShown(double seconds) {
    if (const auto divisor = exposureDivisor(seconds)) return 1 / *divisor;
    if (seconds < 60 || !std::isfinite(seconds)) return roundedToHundredths(seconds);
    return roundedToHundredths(seconds / 60) * 60;
}

} // namespace group
