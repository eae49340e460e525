#pragma once

#include "codec/pixels/Colour.h"
#include "codec/pixels/ReducedImage.h"

#include <QSize>

#include <cstdint>
#include <vector>

namespace codec {

/// Averages square blocks of 16-bit samples before their colours are converted: converting deep
/// pictures costs far more than adding them up. Blocks at the right and lower edges are cut off.
class SampleReducer {
public:
    /// The side of the blocks for a result of the wanted size: leaves at least twice its pixels in
    /// each direction, four times for a filter; 1 where there is nothing to gain, or averaging
    /// would be wrong (straight alpha).
    [[nodiscard]] static int
    chooseBlock(QSize decoded, QSize wanted, const PixelLayout& layout, Reduction reduction);

    SampleReducer(QSize decoded, int channels, int block);

    /// Of what comes out.
    [[nodiscard]] QSize size() const { return _size; }
    /// True when a row is ready.
    bool addRow(const std::uint16_t* row);
    /// The rows that came since the last one that was ready; false if there are none.
    bool flush();
    /// The row that is ready.
    [[nodiscard]] const std::uint16_t* row() const { return _row.data(); }

private:
    int _sourceWidth;
    int _channels;
    int _block;
    QSize _size;
    int _rows = 0; // in the sums
    std::vector<std::uint32_t> _sums;
    std::vector<std::uint16_t> _row;
};

} // namespace codec
