#pragma once

namespace marks {

/// A photograph has from no star to so many.
inline constexpr int mostStars = 5;

} // namespace marks
