#pragma once

#include <QImage>

#include <cstdint>
#include <memory>

namespace codec {

class RowScaler;

/// How a picture is made smaller.
enum class Reduction : std::uint8_t {
    Mean,     ///< each pixel is the mean of what it covers: for thumbnails
    Filtered, ///< nothing is left of what is too fine: for pictures that are looked at
};

/// For rows of the source's size, into `destination`, whose format says how many bits a sample has,
/// and which must outlive the scaler. Sizes are at least 1, the destination's no larger.
[[nodiscard]] std::unique_ptr<RowScaler>
makeScaler(QSize source, QImage& destination, Reduction reduction);

/// The picture reduced to the size, which must not be larger in either direction; a null image if
/// memory for it is refused. Takes any 32-bit format that is premultiplied or opaque and keeps it.
[[nodiscard]] QImage
reduceImage(const QImage& image, QSize size, Reduction reduction = Reduction::Mean);

} // namespace codec
