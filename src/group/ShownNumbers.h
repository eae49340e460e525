#pragma once

#include <optional>

/// How numbers of metadata are rounded where they are shown. Values that read alike are one group.
namespace group {

/// Two decimals, halves away from zero.
[[nodiscard]] double roundedToHundredths(double value);

/// The divisor of an exposure in seconds that is shown as a fraction of a second: whole, below 100
/// with one decimal. Nothing for one that is shown in seconds, as cameras do from 0.3 s on where it
/// is no simple fraction.
[[nodiscard]] std::optional<double> exposureDivisor(double seconds);

/// The exposure, in seconds, that the shown text says.
[[nodiscard]] double exposureAsShown(double seconds);

} // namespace group
