#pragma once

#include "codec/pixels/AxisMap.h"
#include "codec/pixels/RowScaler.h"

#include <QImage>

#include <cstdint>
#include <functional>
#include <vector>

namespace codec {

/// Makes rows of device pixels out of rows of a picture, through two maps. Keeps as many rows as
/// one device pixel takes, each reduced to the device's columns. Pixels have four samples,
/// premultiplied or opaque.
template <typename Sample>
class RowResampler {
public:
    /// `hasAlpha`: the fourth sample bounds the others.
    RowResampler(AxisMap columns, AxisMap rows, bool hasAlpha);

    [[nodiscard]] const AxisMap& rows() const { return _rows; }
    /// Takes the row (all of it, from the picture's first column) unless it is kept already.
    void setRow(int row, const Sample* samples);
    /// The device pixels of that index into the row map; its rows were set, and no others that lie
    /// `mostWeights` or more beyond them.
    void makeRow(int index, Sample* target);

private:
    [[nodiscard]] float* kept(int row);

    AxisMap _columns;
    AxisMap _rows;
    bool _hasAlpha;
    std::size_t _width; // of a row that is kept, in samples
    std::vector<int> _keptRows;
    std::vector<float> _kept;
    std::vector<float> _source;
    std::vector<const float*> _summed; // rows
};

/// Reduces a picture row by row as `AxisMap::Mode::Filtered` does: slower than `BasicAreaScaler`,
/// for pictures that are looked at. The sizes are as there.
template <typename Sample>
class FilteredScaler final : public RowScaler {
public:
    /// Writes into `destination` (samples of that size), which is borrowed and must outlive this
    /// object.
    FilteredScaler(QSize source, QImage& destination);

    void addRow(const void* row) override;

private:
    RowResampler<Sample> _resampler;
    Sample* _target;
    std::size_t _targetStride; // samples
    int _sourceHeight;
    int _row = 0;
    int _targetRow = 0;
};

/// The picture (32 bits a pixel, premultiplied or opaque) through both maps, in its own format.
/// Null when memory is refused or it was stopped, which is asked for each row.
[[nodiscard]] QImage resampled(
    const QImage& image, const AxisMap& columns, const AxisMap& rows,
    const std::function<bool()>& isStopped);

} // namespace codec
