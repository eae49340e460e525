#pragma once

#include "codec/pixels/RowScaler.h"

#include <QImage>

#include <cstdint>
#include <vector>

namespace codec {

/// Reduces a picture row by row, each result pixel being the mean of the area that it covers. Holds
/// one row of sums, whatever the height of the source. Sizes must be at least 1 and the result no
/// larger than the source in either direction.
template <typename Sample, typename Sum>
class BasicAreaScaler final : public RowScaler {
public:
    /// Writes into `destination` (samples of that size), which is borrowed and must outlive this
    /// object.
    BasicAreaScaler(QSize source, QImage& destination);

    void addRow(const void* row) override;

private:
    [[nodiscard]] std::uint64_t rowEdge(int index) const;
    void emitRow();

    int _sourceWidth;
    int _sourceHeight;
    Sample* _target;
    std::size_t _targetStride; // samples
    int _targetWidth;
    int _targetHeight;
    std::uint32_t _one; // weight of a whole source row
    std::uint64_t _position = 0;
    std::uint64_t _rowBegin = 0;
    int _targetRow = 0;
    std::vector<Sum> _sums;
};

/// For 8 bits a sample; the sums of a result row fit into 32.
using AreaScaler = BasicAreaScaler<std::uint8_t, std::uint32_t>;
/// For 16 bits a sample.
using DeepAreaScaler = BasicAreaScaler<std::uint16_t, std::uint64_t>;

} // namespace codec
