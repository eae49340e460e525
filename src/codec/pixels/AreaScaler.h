#pragma once

#include <QImage>

#include <cstdint>
#include <vector>

namespace codec {

/// Reduces a picture row by row, each result pixel being the mean of the area that it covers. Holds
/// one row of sums, whatever the height of the source. Sizes must be at least 1 and the result no
/// larger than the source in either direction.
class AreaScaler {
public:
    /// Writes into `destination` (32 bits a pixel, premultiplied or opaque), which is borrowed and
    /// must outlive this object.
    AreaScaler(QSize source, QImage& destination);

    /// The next source row, from the top; rows beyond the source's height are dropped.
    void addRow(const QRgb* row);

private:
    [[nodiscard]] std::uint64_t rowEdge(int index) const;
    void emitRow();

    int _sourceWidth;
    int _sourceHeight;
    QRgb* _target;
    std::size_t _targetStride; // pixels
    int _targetWidth;
    int _targetHeight;
    std::uint32_t _one; // weight of a whole source row
    std::uint64_t _position = 0;
    std::uint64_t _rowBegin = 0;
    int _targetRow = 0;
    std::vector<std::uint32_t> _sums;
};

/// The picture reduced to the size, which must not be larger in either direction; a null image if
/// memory for it is refused. Takes any 32-bit format that is premultiplied or opaque and keeps it.
[[nodiscard]] QImage reduceImage(const QImage& image, QSize size);

} // namespace codec
