#pragma once

#include <QSize>
#include <QString>
#include <QTemporaryDir>

namespace bench {

inline constexpr QSize twelveMegapixels{4000, 3000};
inline constexpr QSize twentyFourMegapixels{6000, 4000};

/// Writes a JPEG file as cameras make them (soft gradients, edges and the noise of a sensor, at
/// quality 90), with about the metadata that a camera and a photographer's program write. The same
/// bytes on every run. Answers its path.
[[nodiscard]] QString writePhotograph(const QTemporaryDir& folder, QSize size);

} // namespace bench
