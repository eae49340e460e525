#pragma once

#include "codec/pixels/ColumnMeans.h"
#include "codec/pixels/RowScaler.h"

#include <QImage>

#include <cstdint>
#include <type_traits>
#include <vector>

namespace codec {

/// Reduces a picture row by row, each result pixel being the mean of the area that it covers. Holds
/// one row of sums, whatever the height of the source. Sizes must be at least 1 and the result no
/// larger than the source in either direction.
///
/// `Sum` holds any sample times the weight of all rows of one result row, exactly.
template <typename Sample, typename Sum>
class BasicAreaScaler final : public RowScaler {
public:
    /// Writes into `destination` (samples of that size), which is borrowed and must outlive this
    /// object.
    BasicAreaScaler(QSize source, QImage& destination);

    void addRow(const void* row) override;

private:
    using Means = std::conditional_t<
        std::is_same_v<Sum, std::uint16_t>, SlightColumnMeans, ColumnMeans<Sample, Sum>>;

    [[nodiscard]] std::int64_t rowEdge(int index) const;
    void addWeighted(const Sample* samples, std::uint16_t weight);
    void emitRow();

    int _sourceHeight;
    Sample* _target;
    std::size_t _targetStride; // samples
    int _targetHeight;
    std::uint16_t _one; // weight of a whole source row
    std::int64_t _position = 0;
    std::int64_t _rowBegin = 0;
    int _targetRow = 0;
    std::vector<Sum> _sums;
    Means _means;
};

using AreaScaler = BasicAreaScaler<std::uint8_t, std::int32_t>;
/// Several times as quick, for no more than two source rows and columns to a result pixel.
using SlightAreaScaler = BasicAreaScaler<std::uint8_t, std::uint16_t>;
/// For 16 bits a sample.
using DeepAreaScaler = BasicAreaScaler<std::uint16_t, double>;

} // namespace codec
